#pragma once

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QUuid>
#include <optional>

class Clock;

/// A place that was visited: a section of a server.
struct NavigationState {
    QString serverId; ///< as NavigationHistory::idText gives it
    QString serverName;
    QString tab;         ///< a MainTab's raw text
    QDateTime timestamp; ///< of the visit, UTC

    /// The name and the time take no part.
    bool isSamePlace(const NavigationState &other) const { return serverId == other.serverId && tab == other.tab; }
};

/// Where the operator has been, as the steps back and forward see it, and the section last shown of each server. Not
/// kept between runs. Lives on the main thread.
class NavigationHistory : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype kMaxHistorySize = 20;

    /// `clock` outlives the history.
    explicit NavigationHistory(const Clock &clock, QObject *parent = nullptr);

    /// The text that stands for a server here: its identifier in capital letters, without braces.
    static QString idText(const QUuid &id);

    const QList<NavigationState> &history() const { return m_history; }

    /// Of the present place; -1 before the first visit.
    qsizetype currentIndex() const { return m_currentIndex; }

    bool canGoBack() const { return m_currentIndex > 0; }

    bool canGoForward() const { return m_currentIndex < m_history.size() - 1; }

    std::optional<NavigationState> currentState() const;

    /// Records a visit. One of the present place again only refreshes the cached section; a new place drops all that
    /// lay ahead, and the oldest entry when there are more than kMaxHistorySize.
    void navigateToState(const QString &serverId, const QString &serverName, const QString &tab);

    /// Steps, and returns the place to show; nothing, and no step, at the end of the list.
    std::optional<NavigationState> goBack();
    std::optional<NavigationState> goForward();

    /// The section last shown of a server.
    std::optional<QString> getCachedTab(const QString &serverId) const;
    void removeCachedTab(const QString &serverId);

Q_SIGNALS:
    /// canGoBack, canGoForward or the present place is different now.
    void changed();

private:
    const Clock &m_clock;
    QList<NavigationState> m_history;
    qsizetype m_currentIndex = -1;
    QHash<QString, QString> m_serverTabCache;
};
