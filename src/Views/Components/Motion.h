#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class QWidget;

/// Repaints a widget in which something moves, thirty times a second, while it moves and the widget is on show.
class Motion : public QObject
{
    Q_OBJECT

public:
    /// The widget's own: its parent.
    explicit Motion(QWidget &widget);

    /// True if that is a change. The movement begins anew each time.
    bool setActive(bool isActive);

    bool isActive() const { return m_isActive; }

    /// How much of the present turn has passed, from 0 to below 1.
    double phase(int periodMs) const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    /// The next picture is due.
    void frame();

private:
    void follow();

    QWidget &m_widget;
    QTimer m_frames;
    QElapsedTimer m_clock;
    bool m_isActive = false;
};
