#include "Models/NavigationHistory.h"

#include "Helpers/Clock.h"

NavigationHistory::NavigationHistory(const Clock &clock, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
{
}

QString NavigationHistory::idText(const QUuid &id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

std::optional<NavigationState> NavigationHistory::currentState() const
{
    return m_currentIndex >= 0 && m_currentIndex < m_history.size() ? std::optional(m_history.at(m_currentIndex))
                                                                    : std::nullopt;
}

void NavigationHistory::navigateToState(const QString &serverId, const QString &serverName, const QString &tab)
{
    const NavigationState state{serverId, serverName, tab, m_clock.now()};
    m_serverTabCache.insert(serverId, tab);
    const auto current = currentState();
    if (current && current->isSamePlace(state)) {
        return;
    }
    m_history.resize(m_currentIndex + 1);
    m_history.append(state);
    if (m_history.size() > kMaxHistorySize) {
        m_history.removeFirst();
    }
    m_currentIndex = m_history.size() - 1;
    Q_EMIT changed();
}

std::optional<NavigationState> NavigationHistory::goBack()
{
    if (!canGoBack()) {
        return std::nullopt;
    }
    --m_currentIndex;
    Q_EMIT changed();
    return currentState();
}

std::optional<NavigationState> NavigationHistory::goForward()
{
    if (!canGoForward()) {
        return std::nullopt;
    }
    ++m_currentIndex;
    Q_EMIT changed();
    return currentState();
}

std::optional<QString> NavigationHistory::getCachedTab(const QString &serverId) const
{
    const auto cached = m_serverTabCache.constFind(serverId);
    return cached == m_serverTabCache.cend() ? std::nullopt : std::optional(*cached);
}

void NavigationHistory::removeCachedTab(const QString &serverId)
{
    m_serverTabCache.remove(serverId);
}
