#include "Helpers/DisplayText.h"

QString DisplayText::oneLine(const QString &text)
{
    const auto isShown = [](QChar c) {
        if (c >= u' ' && c < u'\u007F') {
            return true;
        }
        const auto category = c.category();
        return category != QChar::Other_Control && category != QChar::Separator_Line &&
               category != QChar::Separator_Paragraph && !(c >= u'\u202A' && c <= u'\u202E') &&
               !(c >= u'\u2066' && c <= u'\u2069');
    };
    QString line = text;
    for (qsizetype i = 0; i < line.size(); ++i) {
        if (!isShown(text.at(i))) {
            line[i] = u' ';
        }
    }
    return line;
}
