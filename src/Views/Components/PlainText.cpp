#include "Views/Components/PlainText.h"

#include <QTextDocument>
#include <QWidget>

using namespace Qt::StringLiterals;

QString PlainText::excerpt(const QString &text)
{
    constexpr qsizetype kLongest = 120;
    const QString line = oneLine(text);
    return line.size() > kLongest ? line.left(kLongest) + u'…' : line;
}

QString PlainText::withoutMnemonic(const QString &text)
{
    return QString(text).replace(u'&', "&&"_L1);
}

QString PlainText::toolTip(const QString &text)
{
    return text.isEmpty() ? QString() : u"<qt>"_s + text.toHtmlEscaped().replace(u'\n', "<br>"_L1) + u"</qt>"_s;
}

void PlainText::setToolTip(QWidget &widget, const QString &text)
{
    widget.setToolTip(toolTip(text));
}
