#pragma once

#include "Helpers/DisplayText.h"

#include <QString>

class QWidget;

/// What a server says is text and nothing else, wherever it is shown.
namespace PlainText
{

using DisplayText::oneLine;

/// The beginning of `text` on one line, as long as is fit to be quoted in a sentence.
QString excerpt(const QString &text);

/// `text` for a control that would take "&" for the mark of a key.
QString withoutMnemonic(const QString &text);

/// Sets a tooltip that shows `text` as it stands. Qt takes a tooltip that looks like markup for markup.
void setToolTip(QWidget &widget, const QString &text);

/// `text` as a tooltip that Qt shows as it stands.
QString toolTip(const QString &text);

} // namespace PlainText
