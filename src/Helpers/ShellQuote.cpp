#include "Helpers/ShellQuote.h"

using namespace Qt::StringLiterals;

QString quoteRule(const QString &value)
{
    return QString(value).replace(u'\'', u"'\\''"_s);
}

QString shellQuoted(const QString &value)
{
    return u'\'' + quoteRule(value) + u'\'';
}
