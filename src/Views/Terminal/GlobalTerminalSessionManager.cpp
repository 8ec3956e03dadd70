#include "Views/Terminal/GlobalTerminalSessionManager.h"

#include "Helpers/Log.h"
#include "Views/Theme/Theme.h"

#include <QDesktopServices>
#include <QTimer>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

GlobalTerminalSessionManager::GlobalTerminalSessionManager(const Coordinator::Services &services)
    : m_services(services)
{
    const AppSettings &settings = services.settings;
    connect(&settings, &AppSettings::terminalFontFamilyChanged, this, &GlobalTerminalSessionManager::applySettings);
    connect(&settings, &AppSettings::terminalFontSizeChanged, this, &GlobalTerminalSessionManager::applySettings);
    connect(&settings, &AppSettings::terminalColorSchemeChanged, this, &GlobalTerminalSessionManager::applySettings);
    connect(&services.theme, &Theme::changed, this, [this] {
        for (const std::shared_ptr<Entry> &each : std::as_const(m_terminals)) {
            each->terminal->coordinator().applyTheme();
        }
    });
}

GlobalTerminalSessionManager::~GlobalTerminalSessionManager()
{
    cleanupAll();
}

GlobalTerminalSessionManager::Entry *GlobalTerminalSessionManager::entry(const QUuid &terminalId) const
{
    return m_terminals.value(terminalId).get();
}

GlobalTerminalSessionManager::Terminal GlobalTerminalSessionManager::terminal(const QUuid &terminalId) const
{
    const Entry *const found = entry(terminalId);
    return found ? Terminal{found->terminal.get(), &found->terminal->coordinator()} : Terminal();
}

GlobalTerminalSessionManager::Terminal GlobalTerminalSessionManager::getOrCreateTerminal(const Server &server)
{
    if (Entry *const found = entry(server.id)) {
        found->terminal->coordinator().setServer(server);
        QTimer::singleShot(0, found->terminal.get(), &HostedTerminalView::redisplay);
    } else {
        create(server.id, server);
    }
    return terminal(server.id);
}

QUuid GlobalTerminalSessionManager::openTerminal(const Server &server)
{
    const QUuid id = QUuid::createUuid();
    create(id, server);
    return id;
}

void GlobalTerminalSessionManager::create(const QUuid &terminalId, const Server &server)
{
    const auto made = std::make_shared<Entry>();
    made->serverId = server.id;
    made->terminal = std::make_unique<HostedTerminalView>(server, m_services);
    m_terminals.insert(terminalId, made);
    m_order[server.id].append(terminalId);
    watch(*made->terminal, terminalId, server.id);
    QTimer::singleShot(0, made->terminal.get(), [this, terminalId] { connectTerminalIfNeeded(terminalId); });
    Q_EMIT terminalsChanged(server.id);
}

void GlobalTerminalSessionManager::watch(HostedTerminalView &view, const QUuid &terminalId, const QUuid &serverId)
{
    const Coordinator *const coordinator = &view.coordinator();
    connect(coordinator, &Coordinator::connectionStateChanged, this,
            [this, terminalId](TerminalConnectionState state) { setState(terminalId, state); });
    connect(coordinator, &Coordinator::terminalConnected, this,
            [this, serverId] { Q_EMIT terminalConnected(serverId); });
    connect(coordinator, &Coordinator::terminalDisconnected, this,
            [this, serverId] { Q_EMIT terminalDisconnected(serverId); });
    connect(coordinator, &Coordinator::clipboardRequestChanged, this,
            [this, serverId, terminalId] { Q_EMIT terminalChanged(serverId, terminalId); });
    connect(coordinator, &Coordinator::outputArrived, this,
            [this, terminalId] { note(terminalId, TerminalNews::Output); });
    connect(&view, &HostedTerminalView::bellRang, this, [this, terminalId] { note(terminalId, TerminalNews::Bell); });
    connect(&view, &HostedTerminalView::shown, this, [this, terminalId] { note(terminalId, TerminalNews::None); });
    connect(&view, &HostedTerminalView::linkActivated, this, [](const QUrl &url) { QDesktopServices::openUrl(url); });
    connect(&view, &HostedTerminalView::titleChanged, this, [this, serverId] { Q_EMIT terminalsChanged(serverId); });
}

void GlobalTerminalSessionManager::setState(const QUuid &terminalId, TerminalConnectionState connection)
{
    Entry *const found = entry(terminalId);
    if (found == nullptr) {
        return;
    }
    TerminalSessionState &state = found->state;
    switch (connection) {
    case TerminalConnectionState::connecting:
        state.shouldShowReconnect = false;
        break;
    case TerminalConnectionState::connected:
        state = {.hasConnectedOnce = true, .isCurrentlyConnected = true, .shouldShowReconnect = false};
        break;
    case TerminalConnectionState::disconnected:
        // After a client that never started nothing was closed: the terminal tells why.
        state.isCurrentlyConnected = false;
        state.shouldShowReconnect = state.hasConnectedOnce;
        break;
    }
    Q_EMIT terminalChanged(found->serverId, terminalId);
}

TerminalSessionState GlobalTerminalSessionManager::sessionState(const QUuid &terminalId) const
{
    const Entry *const found = entry(terminalId);
    return found ? found->state : TerminalSessionState();
}

TerminalColorScheme GlobalTerminalSessionManager::terminalColorScheme(const QUuid &terminalId) const
{
    const Entry *const found = entry(terminalId);
    return found ? found->terminal->coordinator().colorScheme() : m_services.settings.terminalColorScheme();
}

void GlobalTerminalSessionManager::setCurrentTerminal(const QUuid &serverId, const QUuid &terminalId)
{
    m_current.insert(serverId, terminalId);
}

void GlobalTerminalSessionManager::connectTerminalIfNeeded(const QUuid &terminalId)
{
    Coordinator *const coordinator = terminal(terminalId).coordinator;
    if (coordinator && coordinator->connectionState() == TerminalConnectionState::disconnected) {
        coordinator->setupSSHConnection();
    }
}

void GlobalTerminalSessionManager::focusTerminal(const QUuid &serverId)
{
    HostedTerminalView *const view = terminal(currentTerminal(serverId)).terminal;
    if (view == nullptr || view->parentWidget() == nullptr || !view->isVisible() || !view->isEnabled()) {
        Log::debug(u"Terminal not ready for focus"_s, Log::Category::Terminal);
        return;
    }
    view->setFocus();
}

void GlobalTerminalSessionManager::serverSettingsChanged(const Server &server)
{
    for (const QUuid &id : terminalsOf(server.id)) {
        if (Coordinator *const coordinator = terminal(id).coordinator) {
            coordinator->setServer(server);
        }
    }
}

void GlobalTerminalSessionManager::drop(const QUuid &terminalId)
{
    const std::shared_ptr<Entry> dropped = m_terminals.take(terminalId);
    if (!dropped) {
        return;
    }
    HostedTerminalView *const view = dropped->terminal.release();
    view->disconnect(this);
    view->coordinator().disconnect(this);
    view->coordinator().cleanup();
    view->hide();
    view->setParent(nullptr);
    view->deleteLater();
}

void GlobalTerminalSessionManager::closeTerminal(const QUuid &terminalId)
{
    const Entry *const found = entry(terminalId);
    if (found == nullptr || terminalId == found->serverId) {
        return;
    }
    const QUuid serverId = found->serverId;
    m_order[serverId].removeOne(terminalId);
    if (currentTerminal(serverId) == terminalId) {
        m_current.remove(serverId);
    }
    drop(terminalId);
    Q_EMIT terminalsChanged(serverId);
    Q_EMIT newsChanged(serverId);
}

void GlobalTerminalSessionManager::cleanupServer(const QUuid &id)
{
    const QList<QUuid> terminals = m_order.take(id);
    m_current.remove(id);
    for (const QUuid &each : terminals) {
        drop(each);
    }
    if (!terminals.isEmpty()) {
        Q_EMIT terminalsChanged(id);
        Q_EMIT newsChanged(id);
    }
}

void GlobalTerminalSessionManager::cleanupAll()
{
    const QHash<QUuid, std::shared_ptr<Entry>> terminals = std::exchange(m_terminals, {});
    m_order.clear();
    m_current.clear();
    for (const std::shared_ptr<Entry> &each : terminals) {
        each->terminal->coordinator().disconnect(this);
        each->terminal->coordinator().endNow();
    }
}

void GlobalTerminalSessionManager::note(const QUuid &terminalId, TerminalNews news)
{
    Entry *const found = entry(terminalId);
    if (found == nullptr) {
        return;
    }
    const TerminalNews now = found->terminal->isVisible() ? TerminalNews::None : std::max(found->news, news);
    if (std::exchange(found->news, now) != now) {
        Q_EMIT newsChanged(found->serverId);
    }
}

TerminalNews GlobalTerminalSessionManager::terminalNews(const QUuid &terminalId) const
{
    const Entry *const found = entry(terminalId);
    return found ? found->news : TerminalNews::None;
}

TerminalNews GlobalTerminalSessionManager::news(const QUuid &serverId) const
{
    TerminalNews news = TerminalNews::None;
    for (const QUuid &id : terminalsOf(serverId)) {
        news = std::max(news, terminalNews(id));
    }
    return news;
}

void GlobalTerminalSessionManager::applySettings()
{
    for (const std::shared_ptr<Entry> &each : std::as_const(m_terminals)) {
        each->terminal->coordinator().applySettings();
    }
}
