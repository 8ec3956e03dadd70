#include "Helpers/ShellQuote.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

bool isPlain(QChar c)
{
    const char16_t code = c.unicode();
    return (code >= u'a' && code <= u'z') || (code >= u'A' && code <= u'Z') || (code >= u'0' && code <= u'9') ||
           u"_@%+=:,./-"_s.contains(c);
}

} // namespace

QString quoteRule(const QString &value)
{
    return QString(value).replace(u'\'', u"'\\''"_s);
}

QString shellQuoted(const QString &value)
{
    return u'\'' + quoteRule(value) + u'\'';
}

QString shellWord(const QString &value)
{
    return !value.isEmpty() && std::ranges::all_of(value, isPlain) ? value : shellQuoted(value);
}
