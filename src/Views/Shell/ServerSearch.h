#pragma once

#include <QList>
#include <QLocale>
#include <QString>

struct Server;

/// Which servers of a list match what was typed: by name, host, user name, a label's key or value, or "key:value".
/// Upper and lower case are the same, by the rules of the locale. A server is known by its row; the owner tells when
/// rows come, go or change.
class ServerSearch
{
public:
    explicit ServerSearch(const QLocale &locale = QLocale());

    void setText(const QString &text);

    QString text() const { return m_text; }

    /// Without a text every server matches.
    bool isActive() const { return !m_text.isEmpty(); }

    bool matches(qsizetype row, const Server &server);

    void rowsInserted(qsizetype first, qsizetype count);
    void rowRemoved(qsizetype row);
    void rowChanged(qsizetype row);

private:
    // A server's texts without case. The labels begin behind the first three; key and value take turns.
    struct Words {
        bool isKnown = false;
        QString line; // all texts, each ended by a character that nobody types
        QList<QString> labels;
    };

    QString folded(const QString &text) const;
    const Words &wordsOf(qsizetype row, const Server &server);

    QLocale m_locale;
    bool m_hasPlainAscii; // whether ASCII letters fold as they do in most languages
    QString m_text;
    QString m_whole;
    QString m_key;
    QString m_value;
    bool m_isPair = false;
    QList<Words> m_words;
};
