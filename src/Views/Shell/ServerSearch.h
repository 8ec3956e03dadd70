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

    /// True if what matches is among what matched before.
    bool setText(const QString &text);

    QString text() const { return m_text; }

    /// Without a text every server matches.
    bool isActive() const { return !m_text.isEmpty(); }

    bool matches(qsizetype row, const Server &server);

    void rowsInserted(qsizetype first, qsizetype count);
    void rowRemoved(qsizetype row);
    void rowChanged(qsizetype row);

private:
    QString folded(QString text) const;
    const QString &lineOf(qsizetype row, const Server &server);

    QLocale m_locale;
    bool m_hasPlainAscii; // whether ASCII letters fold as they do in most languages
    QString m_text;
    QString m_whole; // without case, as all that follows
    QString m_key;   // with the marks around it; empty if no key is asked for
    QString m_value;
    QList<QString> m_lines; // all texts of a row's server with marks between; null for one that is not known yet
};
