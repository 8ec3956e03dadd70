#pragma once

#include <QByteArray>
#include <QSize>
#include <QString>

#include <functional>

namespace vt
{

/// Whoever stands behind a TerminalWidget: what the application gets, and what only the host can decide. Called on
/// the main thread. The widget must not be deleted from inside of a call (deleteLater() is fine).
class TerminalDelegate
{
public:
    TerminalDelegate() = default;
    virtual ~TerminalDelegate() = default;
    TerminalDelegate(const TerminalDelegate &) = delete;
    TerminalDelegate &operator=(const TerminalDelegate &) = delete;

    /// Bytes for the application: keys, pasted text, mouse reports, answers to its queries. Written as they
    /// come.
    virtual void terminalSends(const QByteArray &bytes) = 0;

    /// Of these, the answers to queries: a host may drop them where the application asks and does not read.
    virtual void terminalReplies(const QByteArray &bytes) { terminalSends(bytes); }

    /// The size in cells is another: by layout, zoom or TerminalWidget::resizeGrid(). `pixels` are the device's.
    virtual void terminalResized(int columns, int rows, QSize pixels) = 0;

    /// The application wants to put a text into the clipboard (OSC 52). Asked each time.
    virtual bool terminalMayWriteClipboard(const QString &text)
    {
        Q_UNUSED(text)
        return false;
    }

    /// A text that is about to be pasted has several lines or control characters, and the application takes it as
    /// typed. Shows a question and calls `answer` once, with whether to paste; false leaves the question to the
    /// widget.
    virtual bool terminalAsksToPaste(const QString &text, const std::function<void(bool)> &answer)
    {
        Q_UNUSED(text)
        Q_UNUSED(answer)
        return false;
    }
};

} // namespace vt
