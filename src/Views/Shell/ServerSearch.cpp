#include "Views/Shell/ServerSearch.h"

#include "Models/Server.h"

#include <algorithm>
#include <utility>

namespace
{

// Nobody types these. A label is kKey, the key, kEnd, the value and kEnd.
constexpr QChar kEnd(u'\0');
constexpr QChar kKey(u'\1');

bool isAscii(const QString &text)
{
    return std::ranges::all_of(text, [](QChar c) { return c.unicode() < 0x80; });
}

} // namespace

ServerSearch::ServerSearch(const QLocale &locale)
    : m_locale(locale)
    , m_hasPlainAscii(locale.language() != QLocale::Turkish && locale.language() != QLocale::Azerbaijani)
{
}

QString ServerSearch::folded(QString text) const
{
    if (m_hasPlainAscii && isAscii(text)) {
        return std::move(text).toLower();
    }
    // By way of the upper case, which also makes two letters of those that stand for two.
    const QString upper = m_locale.toUpper(text.normalized(QString::NormalizationForm_C));
    return m_locale.toLower(upper).toCaseFolded();
}

bool ServerSearch::setText(const QString &text)
{
    // A match of a longer text, as a whole or as key and value, is one of each text that it begins with.
    const QString before = std::exchange(m_whole, folded(text));
    const bool narrows = m_whole.startsWith(before);
    m_text = text;
    const qsizetype colon = text.indexOf(u':');
    m_key = colon < 0 ? QString() : kKey + folded(text.left(colon)) + kEnd;
    m_value = colon < 0 ? QString() : folded(text.mid(colon + 1));
    return narrows;
}

const QString &ServerSearch::lineOf(qsizetype row, const Server &server)
{
    if (m_lines.size() <= row) {
        m_lines.resize(row + 1);
    }
    QString &line = m_lines[row];
    if (line.isNull()) {
        QString texts;
        texts.reserve(128);
        texts.append(server.name).append(kEnd).append(server.host).append(kEnd).append(server.username).append(kEnd);
        for (const auto &[key, value] : server.labels.asKeyValueRange()) {
            texts.append(kKey).append(key).append(kEnd).append(value).append(kEnd);
        }
        line = folded(std::move(texts));
    }
    return line;
}

bool ServerSearch::matches(qsizetype row, const Server &server)
{
    if (!isActive()) {
        return true;
    }
    const QString &line = lineOf(row, server);
    if (line.contains(m_whole)) {
        return true;
    }
    // Keys that differ in case only are several.
    for (qsizetype at = m_key.isEmpty() ? -1 : line.indexOf(m_key); at >= 0; at = line.indexOf(m_key, at + 1)) {
        const qsizetype begin = at + m_key.size();
        if (QStringView(line).sliced(begin, line.indexOf(kEnd, begin) - begin).contains(m_value)) {
            return true;
        }
    }
    return false;
}

void ServerSearch::rowsInserted(qsizetype first, qsizetype count)
{
    if (first < m_lines.size()) {
        m_lines.insert(first, count, {});
    }
}

void ServerSearch::rowRemoved(qsizetype row)
{
    if (row < m_lines.size()) {
        m_lines.removeAt(row);
    }
}

void ServerSearch::rowChanged(qsizetype row)
{
    if (row < m_lines.size()) {
        m_lines[row] = QString();
    }
}
