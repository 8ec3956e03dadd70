#pragma once

#include <QString>

#include <functional>

class QMimeData;
class QWidget;

namespace vt
{

/// Whether a text does more than type when a shell takes it as typed: it has several lines or control characters.
bool isRiskyPaste(const QString &text);

/// What a drop or the clipboard is as text: files by their names, quoted for a shell and with blanks between. Empty
/// if it is neither.
QString pasteText(const QMimeData &data);

/// A name as one word of a shell.
QString shellQuoted(const QString &name);

/// Asks in a window-modal dialog over `parent` and calls `answer` once.
void askToPaste(QWidget *parent, const QString &text, const std::function<void(bool)> &answer);

} // namespace vt
