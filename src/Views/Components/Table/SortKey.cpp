#include "Views/Components/Table/SortKey.h"

#include <QLocale>
#include <cmath>
#include <limits>

double SortKey::ordered(double number)
{
    return std::isnan(number) ? -std::numeric_limits<double>::infinity() : number;
}

SortKey SortKey::natural(const QString &text)
{
    static const QCollator collator = [] {
        // Qt's collator of the locale "C" knows no digits.
        const QLocale locale;
        QCollator made(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
        made.setNumericMode(true);
        made.setCaseSensitivity(Qt::CaseInsensitive);
        return made;
    }();
    return SortKey(collator.sortKey(text));
}

int SortKey::compare(const SortKey &a, const SortKey &b)
{
    if (a.m_key.index() != b.m_key.index()) {
        return a.m_key.index() < b.m_key.index() ? -1 : 1;
    }
    if (const auto *number = std::get_if<double>(&a.m_key)) {
        const double other = std::get<double>(b.m_key);
        return *number < other ? -1 : *number > other ? 1 : 0;
    }
    if (const auto *text = std::get_if<QString>(&a.m_key)) {
        return text->compare(std::get<QString>(b.m_key));
    }
    if (const auto *key = std::get_if<QCollatorSortKey>(&a.m_key)) {
        return key->compare(std::get<QCollatorSortKey>(b.m_key));
    }
    return 0;
}
