#pragma once

#include <QObject>
#include <functional>

class QWidget;

/// Calls back once, after a window has been painted for the first time. What can wait until then starts from here.
class FirstPaint : public QObject
{
    Q_OBJECT

public:
    /// Lives until the call or the window's end.
    FirstPaint(QWidget &window, std::function<void()> then);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    std::function<void()> m_then;
};
