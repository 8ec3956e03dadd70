#pragma once

#include <QObject>

class Motion;
class QPushButton;
class Theme;

/// Lets a primary button show that what it began is under way: a circle turns before its words. Meanwhile pressing it
/// should do nothing; disabled it would lose the keyboard.
class ButtonProgress : public QObject
{
    Q_OBJECT

public:
    /// Belongs to `button`, which has no icon of its own; the room for the circle is there from the beginning.
    ButtonProgress(const Theme &theme, QPushButton &button);

    void setActive(bool isActive);

    bool isActive() const;

private:
    void showFrame();

    const Theme &m_theme;
    QPushButton &m_button;
    Motion *m_motion;
};
