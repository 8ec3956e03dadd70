#include "Views/Shell/ServerSearch.h"

#include "Models/Server.h"

#include <algorithm>

namespace
{

constexpr QChar kEnd(u'\0');

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

QString ServerSearch::folded(const QString &text) const
{
    if (m_hasPlainAscii && isAscii(text)) {
        return text.toLower();
    }
    // By way of the upper case, which also makes two letters of those that stand for two.
    const QString upper = m_locale.toUpper(text.normalized(QString::NormalizationForm_C));
    return m_locale.toLower(upper).toCaseFolded();
}

void ServerSearch::setText(const QString &text)
{
    m_text = text;
    m_whole = folded(text);
    const qsizetype colon = text.indexOf(u':');
    m_isPair = colon >= 0;
    m_key = m_isPair ? folded(text.left(colon)) : QString();
    m_value = m_isPair ? folded(text.mid(colon + 1)) : QString();
}

const ServerSearch::Words &ServerSearch::wordsOf(qsizetype row, const Server &server)
{
    if (m_words.size() <= row) {
        m_words.resize(row + 1);
    }
    Words &words = m_words[row];
    if (!words.isKnown) {
        words.isKnown = true;
        words.line = folded(server.name + kEnd + server.host + kEnd + server.username + kEnd);
        for (const auto &[key, value] : server.labels.asKeyValueRange()) {
            words.labels << folded(key) << folded(value);
            words.line += words.labels.at(words.labels.size() - 2) + kEnd + words.labels.constLast() + kEnd;
        }
    }
    return words;
}

bool ServerSearch::matches(qsizetype row, const Server &server)
{
    if (!isActive()) {
        return true;
    }
    const Words &words = wordsOf(row, server);
    if (words.line.contains(m_whole)) {
        return true;
    }
    for (qsizetype i = 0; m_isPair && i + 1 < words.labels.size(); i += 2) {
        if (words.labels.at(i) == m_key && words.labels.at(i + 1).contains(m_value)) {
            return true;
        }
    }
    return false;
}

void ServerSearch::rowsInserted(qsizetype first, qsizetype count)
{
    if (first < m_words.size()) {
        m_words.insert(first, count, {});
    }
}

void ServerSearch::rowRemoved(qsizetype row)
{
    if (row < m_words.size()) {
        m_words.removeAt(row);
    }
}

void ServerSearch::rowChanged(qsizetype row)
{
    if (row < m_words.size()) {
        m_words[row] = {};
    }
}
