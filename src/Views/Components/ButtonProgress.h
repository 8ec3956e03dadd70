#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

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

    bool isActive() const { return m_frames.isActive(); }

private:
    void showFrame();

    const Theme &m_theme;
    QPushButton &m_button;
    QTimer m_frames;
    QElapsedTimer m_clock;
};
