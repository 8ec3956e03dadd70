#pragma once

#include <QObject>
#include <QRect>

class ContentView;
class UserDefaults;

/// Keeps the main window's size, place and lists between runs: written when the window closes.
class WindowLayout : public QObject
{
    Q_OBJECT

public:
    /// Both outlive this object. Before the window is shown: gives it what was kept. Its place only if all of it is
    /// on a screen, its size only as far as the screen has room.
    WindowLayout(ContentView &window, UserDefaults &defaults);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void restore();
    void save();

    ContentView &m_window;
    UserDefaults &m_defaults;
    QRect m_place; // where the window is when it has its own size
};
