#include "Views/Components/PlainText.h"

#include <QTextDocument>
#include <QWidget>

using namespace Qt::StringLiterals;

QString PlainText::oneLine(const QString &text)
{
    const auto isShown = [](QChar c) {
        const auto category = c.category();
        return category != QChar::Other_Control && category != QChar::Separator_Line &&
               category != QChar::Separator_Paragraph && !(c >= u'\u202A' && c <= u'\u202E') &&
               !(c >= u'\u2066' && c <= u'\u2069');
    };
    QString line = text;
    for (QChar &c : line) {
        if (!isShown(c)) {
            c = u' ';
        }
    }
    return line;
}

QString PlainText::toolTip(const QString &text)
{
    return text.isEmpty() ? QString() : u"<qt>"_s + text.toHtmlEscaped().replace(u'\n', "<br>"_L1) + u"</qt>"_s;
}

void PlainText::setToolTip(QWidget &widget, const QString &text)
{
    widget.setToolTip(toolTip(text));
}
