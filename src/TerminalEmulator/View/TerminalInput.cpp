#include "TerminalEmulator/View/KeyTranslation.h"
#include "TerminalEmulator/View/TerminalWidgetState.h"

#include <QClipboard>
#include <QCursor>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>

namespace vt
{

bool TerminalWidget::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride: {
        const auto &key = static_cast<const QKeyEvent &>(*event);
        if (commandOf(key) != ViewCommand::None || isShellKey(key)) {
            event->accept();
            return true;
        }
        break;
    }
    case QEvent::ScreenChangeInternal:
        // The pixel ratio may be another there.
        QMetaObject::invokeMethod(this, [this] { m_state->makeFont(); }, Qt::QueuedConnection);
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

/// Tab belongs to the application.
bool TerminalWidget::focusNextPrevChild(bool next)
{
    Q_UNUSED(next)
    return false;
}

void TerminalWidget::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Control && underMouse()) {
        m_state->hover(mapFromGlobal(QPointF(QCursor::pos())), true);
    }
    if (m_state->run(*event)) {
        return;
    }
    const std::string bytes = m_state->terminal.encodeKey(toKeyEvent(*event));
    if (bytes.empty()) {
        event->ignore();
        return;
    }
    m_state->typed();
    m_state->send(bytes);
}

void TerminalWidget::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Control) {
        m_state->hover({}, false);
    }
    // A key that repeats comes up in between only on paper.
    if (!event->isAutoRepeat()) {
        m_state->send(m_state->terminal.encodeKey(toKeyEvent(*event)));
    }
}

void TerminalWidget::State::typed()
{
    if (!follows) {
        scrollTo(terminal.screenTop());
    }
    showCursor();
}

/// What the key does to the view; false if it goes to the application.
bool TerminalWidget::State::run(const QKeyEvent &event)
{
    const ViewCommand command = commandOf(event);
    const bool scrolls = command >= ViewCommand::PageUp;
    // A program with a screen of its own has no scrollback, and gets the keys.
    if (command == ViewCommand::None || (scrolls && terminal.isAlternateScreen())) {
        return false;
    }
    const int page = std::max(1, terminal.rows() - 1);
    switch (command) {
    case ViewCommand::Copy:
        widget->copy();
        break;
    case ViewCommand::Paste:
        widget->paste();
        break;
    case ViewCommand::PasteSelection:
        widget->pasteText(QGuiApplication::clipboard()->text(
            QGuiApplication::clipboard()->supportsSelection() ? QClipboard::Selection : QClipboard::Clipboard));
        break;
    case ViewCommand::Find:
        Q_EMIT widget->findRequested();
        break;
    case ViewCommand::ZoomIn:
        widget->zoom(1);
        break;
    case ViewCommand::ZoomOut:
        widget->zoom(-1);
        break;
    case ViewCommand::ZoomReset:
        widget->resetZoom();
        break;
    case ViewCommand::PageUp:
        widget->scrollBy(-page);
        break;
    case ViewCommand::PageDown:
        widget->scrollBy(page);
        break;
    case ViewCommand::LineUp:
        widget->scrollBy(-1);
        break;
    case ViewCommand::LineDown:
        widget->scrollBy(1);
        break;
    case ViewCommand::Top:
        scrollTo(terminal.firstLine());
        break;
    case ViewCommand::Bottom:
        scrollTo(terminal.screenTop());
        break;
    default:
        return false;
    }
    return true;
}

// ---- input methods -----------------------------------------------------------------------------------------------

void TerminalWidget::inputMethodEvent(QInputMethodEvent *event)
{
    QString text = event->commitString();
    m_state->preedit = event->preeditString();
    m_state->preeditCursor = static_cast<int>(m_state->preedit.size());
    const QList<QInputMethodEvent::Attribute> attributes = event->attributes();
    for (const QInputMethodEvent::Attribute &each : attributes) {
        if (each.type == QInputMethodEvent::Cursor) {
            m_state->preeditCursor = each.start;
        }
    }
    erase_if(text, [](QChar each) { return each.unicode() < 0x20 || each.unicode() == 0x7f; });
    if (!text.isEmpty()) {
        m_state->typed();
        m_state->send(text.toStdString());
    }
    m_state->touchCursor();
    update(m_state->toWidget(m_state->drawnCursor));
    event->accept();
}

QVariant TerminalWidget::inputMethodQuery(Qt::InputMethodQuery query) const
{
    switch (query) {
    case Qt::ImEnabled:
        return true;
    case Qt::ImHints:
        return static_cast<int>(Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase);
    case Qt::ImCursorRectangle: {
        const QRegion place = m_state->toWidget(m_state->cursorRect());
        return place.boundingRect();
    }
    case Qt::ImFont:
        return m_state->font;
    default:
        return QWidget::inputMethodQuery(query);
    }
}

} // namespace vt
