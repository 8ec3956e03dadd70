#include "Views/Components/PlainText.h"

#include <QTextDocument>
#include <QWidget>

using namespace Qt::StringLiterals;

QString PlainText::toolTip(const QString &text)
{
    return text.isEmpty() ? QString() : u"<qt>"_s + text.toHtmlEscaped().replace(u'\n', "<br>"_L1) + u"</qt>"_s;
}

void PlainText::setToolTip(QWidget &widget, const QString &text)
{
    widget.setToolTip(toolTip(text));
}
