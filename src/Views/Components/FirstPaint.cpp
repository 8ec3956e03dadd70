#include "Views/Components/FirstPaint.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>

FirstPaint::FirstPaint(QWidget &window, std::function<void()> then)
    : QObject(&window)
    , m_then(std::move(then))
{
    window.installEventFilter(this);
}

bool FirstPaint::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Paint) {
        watched->removeEventFilter(this);
        // The children are painted and the whole is shown before the event loop turns again.
        QTimer::singleShot(0, this, [this] {
            m_then();
            deleteLater();
        });
    }
    return false;
}
