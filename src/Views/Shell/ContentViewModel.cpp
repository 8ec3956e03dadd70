#include "Views/Shell/ContentViewModel.h"

#include "Models/ServerStore.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/Terminal/TerminalSessions.h"

#include <QScopedValueRollback>
#include <QTimer>

namespace
{

// A terminal takes the keyboard when its page has come up, and once more when a click has settled.
constexpr int kTerminalFocusMs = 100;
constexpr int kTerminalFocusAfterClickMs = 200;

} // namespace

ContentViewModel::ContentViewModel(ServerStore &store, CommandSSHManager &manager, const Clock &clock,
                                   TerminalSessions *terminals, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_manager(manager)
    , m_terminals(terminals)
    , m_history(clock)
    , m_handledServer(selectedId())
{
    connect(&manager, &CommandSSHManager::serverConnectingChanged, this, &ContentViewModel::isConnectingChanged);
    connect(&store, &ServerStore::selectedServerChanged, this, [this] {
        if (!m_isChanging) {
            settle();
        }
    });
}

QUuid ContentViewModel::selectedId() const
{
    return m_store.selectedServer() ? m_store.selectedServer()->id : QUuid();
}

bool ContentViewModel::isTerminalVisible() const
{
    return m_selectedTab == MainTab::Terminal && m_terminalVisitedServers.contains(selectedId());
}

bool ContentViewModel::isConnecting(const QUuid &serverId) const
{
    return m_manager.isConnecting(serverId);
}

void ContentViewModel::setSelectedTab(MainTab tab)
{
    m_selectedTab = tab;
    settle();
}

void ContentViewModel::chooseTab(MainTab tab)
{
    setSelectedTab(tab);
    if (tab == MainTab::Terminal && m_store.selectedServer()) {
        requestTerminalFocus(kTerminalFocusAfterClickMs);
    }
}

void ContentViewModel::setMark(MainTab tab, SectionMark mark)
{
    if (std::exchange(m_marks[tab], mark) != mark) {
        Q_EMIT markChanged(tab);
    }
}

// Runs the change handlers for what is different since they ran the last time.
void ContentViewModel::settle()
{
    const QUuid before = m_handledServer;
    const bool isOtherServer = before != selectedId();
    if (isOtherServer) {
        m_handledServer = selectedId();
        selectionChanged(before);
    }
    const bool isOtherTab = std::exchange(m_handledTab, m_selectedTab) != m_selectedTab;
    if (isOtherTab) {
        tabChanged();
    }
    if (isOtherServer || isOtherTab) {
        Q_EMIT placeChanged();
    }
}

void ContentViewModel::selectionChanged(const QUuid &before)
{
    const auto &server = m_store.selectedServer();
    if (!server || m_isNavigatingFromHistory) {
        return;
    }
    const auto cached = m_history.getCachedTab(NavigationHistory::idText(server->id));
    const auto cachedTab = cached ? fromRawText<MainTab>(*cached) : std::nullopt;
    if (cachedTab && server->isConnected) {
        m_selectedTab = *cachedTab;
    } else if (!server->isConnected && server->id != before) {
        m_selectedTab = MainTab::Dashboard;
    }
    recordPlace();
    if (m_selectedTab == MainTab::Terminal) {
        visitTerminal();
    }
}

void ContentViewModel::tabChanged()
{
    if (!m_store.selectedServer()) {
        return;
    }
    if (!m_isNavigatingFromHistory) {
        recordPlace();
    }
    if (m_selectedTab == MainTab::Terminal) {
        visitTerminal();
    }
}

void ContentViewModel::recordPlace()
{
    const Server &server = *m_store.selectedServer();
    m_history.navigateToState(NavigationHistory::idText(server.id), server.name, rawText(m_selectedTab));
}

void ContentViewModel::visitTerminal()
{
    m_terminalVisitedServers.insert(selectedId());
    requestTerminalFocus(kTerminalFocusMs);
}

void ContentViewModel::requestTerminalFocus(int afterMs)
{
    QTimer::singleShot(afterMs, this, [this, id = selectedId()] { Q_EMIT terminalFocusRequested(id); });
}

void ContentViewModel::goBack()
{
    show(m_history.goBack());
}

void ContentViewModel::goForward()
{
    show(m_history.goForward());
}

void ContentViewModel::show(const std::optional<NavigationState> &state)
{
    if (state) {
        handleNavigation(state->serverId, state->serverName, state->tab);
    }
}

void ContentViewModel::handleNavigation(const QString &serverId, const QString &serverName, const QString &tab)
{
    m_isNavigatingFromHistory = true;
    // The handlers still find it true; so does what other objects do in this turn of the event loop.
    QMetaObject::invokeMethod(this, [this] { m_isNavigatingFromHistory = false; }, Qt::QueuedConnection);

    const std::optional<Server> server = m_store.server(QUuid::fromString(serverId));
    if (!server) {
        return;
    }
    {
        const QScopedValueRollback changing(m_isChanging, true);
        const QUuid before = selectedId();
        m_store.setSelectedServer(server);
        if (!server->isConnected && before != server->id) {
            m_selectedTab = MainTab::Dashboard;
        } else if (const auto found = fromRawText<MainTab>(tab)) {
            m_selectedTab = *found;
            m_history.navigateToState(serverId, serverName, tab); // is the present place already
        }
    }
    settle();
}

void ContentViewModel::disconnectServer()
{
    const std::optional<Server> server = m_store.selectedServer();
    if (!server) {
        return;
    }
    {
        const QScopedValueRollback changing(m_isChanging, true);
        m_manager.disconnect(*server);
        if (m_terminals) {
            m_terminals->cleanupServer(server->id);
        }
        m_store.updateServerConnection(*server, false);
        m_history.removeCachedTab(NavigationHistory::idText(server->id));
        m_selectedTab = MainTab::Dashboard;
        m_store.setSelectedServer(std::nullopt);
    }
    settle();
}

QString ContentViewModel::disconnectQuestion() const
{
    const auto &server = m_store.selectedServer();
    const bool hasName = server && !server->name.isEmpty();
    return tr("Are you sure you want to disconnect from %1? Any existing terminal sessions will be closed.")
        .arg(hasName ? server->name : tr("this server"));
}

void ContentViewModel::setShowingDisconnectAlert(bool isShowing)
{
    if (isShowing != m_showingDisconnectAlert && (!isShowing || m_store.selectedServer())) {
        m_showingDisconnectAlert = isShowing;
        Q_EMIT showingDisconnectAlertChanged(isShowing);
    }
}

void ContentViewModel::setShowingAddServer(bool isShowing)
{
    if (std::exchange(m_showingAddServer, isShowing) != isShowing) {
        Q_EMIT showingAddServerChanged(isShowing);
    }
}

void ContentViewModel::setSidebarVisible(bool isVisible)
{
    if (std::exchange(m_isSidebarVisible, isVisible) != isVisible) {
        Q_EMIT isSidebarVisibleChanged();
    }
}

void ContentViewModel::setWidth(int width)
{
    const bool isCompact = width <= kCompactWidth;
    if (std::exchange(m_isCompactMode, isCompact) != isCompact) {
        Q_EMIT isCompactModeChanged();
    }
}

void ContentViewModel::focusGlobalSearch()
{
    ++m_searchFocusTrigger;
    Q_EMIT searchFocusTriggerChanged();
}

void ContentViewModel::toggleSidebarVisibility()
{
    setSidebarVisible(!m_isSidebarVisible);
}
