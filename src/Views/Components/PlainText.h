#pragma once

#include <QString>

class QWidget;

/// What a server says is text and nothing else, wherever it is shown.
namespace PlainText
{

/// `text` on one line: each control character, line end and override of the writing direction becomes a blank.
QString oneLine(const QString &text);

/// Sets a tooltip that shows `text` as it stands. Qt takes a tooltip that looks like markup for markup.
void setToolTip(QWidget &widget, const QString &text);

/// `text` as a tooltip that Qt shows as it stands.
QString toolTip(const QString &text);

} // namespace PlainText
