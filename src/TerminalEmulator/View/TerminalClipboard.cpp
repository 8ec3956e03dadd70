#include "TerminalEmulator/View/Pasting.h"
#include "TerminalEmulator/View/TerminalWidgetState.h"

#include <QClipboard>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>

namespace vt
{

bool TerminalWidget::hasSelection() const
{
    return m_state->terminal.selection().has_value();
}

QString TerminalWidget::selectedText() const
{
    return QString::fromStdString(m_state->terminal.selectedText());
}

void TerminalWidget::selectAll()
{
    m_state->terminal.selectAll();
    m_state->requestFrame();
    Q_EMIT selectionChanged();
}

void TerminalWidget::select(Position first, Position last)
{
    m_state->terminal.startSelection(first, SelectionKind::Character);
    m_state->terminal.extendSelection(last);
    m_state->requestFrame();
    Q_EMIT selectionChanged();
}

void TerminalWidget::clearSelection()
{
    m_state->terminal.clearSelection();
    m_state->requestFrame();
    Q_EMIT selectionChanged();
}

void TerminalWidget::copy()
{
    if (hasSelection()) {
        QGuiApplication::clipboard()->setText(selectedText());
    }
}

void TerminalWidget::paste()
{
    if (const QMimeData *data = QGuiApplication::clipboard()->mimeData()) {
        pasteText(vt::pasteText(*data));
    }
}

void TerminalWidget::pasteText(const QString &text)
{
    if (text.isEmpty()) {
        return;
    }
    if (m_state->terminal.isBracketedPaste() || !isRiskyPaste(text)) {
        m_state->pasteNow(text);
        return;
    }
    const std::function<void(bool)> answer = [view = QPointer(this), text](bool agreed) {
        if (view && agreed) {
            view->m_state->pasteNow(text);
        }
    };
    if (!m_state->delegate || !m_state->delegate->terminalAsksToPaste(text, answer)) {
        askToPaste(this, text, answer);
    }
}

void TerminalWidget::State::pasteNow(const QString &text)
{
    typed();
    send(terminal.encodePaste(text.toStdString()));
}

/// OSC 52: only where the host agrees, and only what is text.
void TerminalWidget::State::writeClipboard(const std::string &text, const std::string &target)
{
    constexpr size_t MaxText = 1 << 20;
    if (!delegate || text.size() > MaxText) {
        return;
    }
    const QString written = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    if (!delegate->terminalMayWriteClipboard(written)) {
        return;
    }
    QClipboard *clipboard = QGuiApplication::clipboard();
    const bool primary = target.find('p') != std::string::npos && target.find('c') == std::string::npos;
    if (!primary || clipboard->supportsSelection()) {
        clipboard->setText(written, primary ? QClipboard::Selection : QClipboard::Clipboard);
    }
}

void TerminalWidget::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls() || event->mimeData()->hasText()) {
        event->acceptProposedAction();
    }
}

void TerminalWidget::dropEvent(QDropEvent *event)
{
    event->setDropAction(Qt::CopyAction);
    event->accept();
    pasteText(vt::pasteText(*event->mimeData()));
    setFocus(Qt::MouseFocusReason);
}

} // namespace vt
