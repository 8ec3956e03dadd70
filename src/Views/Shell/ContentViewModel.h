#pragma once

#include "Models/MainTab.h"
#include "Models/NavigationHistory.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QUuid>

class CommandSSHManager;
class ServerStore;
class TerminalSessions;

/// What happened in a section while it was not on show.
enum class SectionMark { None, News, Attention };

/// What ties the window together: which section of which server is on show, the way back and forward, and the
/// disconnect. The selected server itself is the store's.
///
/// A change of the selection or of the section is handled when the operation that caused it is complete, and is told
/// once, by placeChanged.
class ContentViewModel : public QObject
{
    Q_OBJECT

public:
    /// Up to this width of the window the layout is the compact one.
    static constexpr int kCompactWidth = 1024;

    /// All of it outlives the model. `terminals` may be null.
    ContentViewModel(ServerStore &store, CommandSSHManager &manager, const Clock &clock, TerminalSessions *terminals,
                     QObject *parent = nullptr);

    const NavigationHistory &navigationHistory() const { return m_history; }

    MainTab selectedTab() const { return m_selectedTab; }

    void setSelectedTab(MainTab tab);

    /// The same for a click on an entry of the section list, after which a terminal takes the keyboard once more.
    void chooseTab(MainTab tab);

    /// Of the selected server's sections.
    SectionMark mark(MainTab tab) const { return m_marks.value(tab); }

    void setMark(MainTab tab, SectionMark mark);

    /// Whether a connection is being made to this server.
    bool isConnecting(const QUuid &serverId) const;

    /// From a step back or forward until the end of that turn of the event loop: nothing is recorded meanwhile.
    bool isNavigatingFromHistory() const { return m_isNavigatingFromHistory; }

    /// Servers whose terminal section has been on show at least once.
    const QSet<QUuid> &terminalVisitedServers() const { return m_terminalVisitedServers; }

    /// Whether the terminal of the selected server is on show.
    bool isTerminalVisible() const;

    bool isSidebarVisible() const { return m_isSidebarVisible; }

    void setSidebarVisible(bool isVisible);

    bool isCompactMode() const { return m_isCompactMode; }

    /// The window has this width now, in device-independent pixels.
    void setWidth(int width);

    /// Goes up by one for each time that the search field of the server list should take the keyboard.
    int searchFocusTrigger() const { return m_searchFocusTrigger; }

    bool showingAddServer() const { return m_showingAddServer; }

    void setShowingAddServer(bool isShowing);

    bool showingDisconnectAlert() const { return m_showingDisconnectAlert; }

    /// Asking needs a selected server.
    void setShowingDisconnectAlert(bool isShowing);

    /// The words of that question.
    QString disconnectQuestion() const;

public Q_SLOTS:
    /// One step in the history; nothing at its ends.
    void goBack();
    void goForward();

    void focusGlobalSearch();
    void toggleSidebarVisibility();

    /// Ends the session of the selected server and leaves it; without one nothing happens.
    void disconnectServer();

public:
    /// Shows a place of the history, or the dashboard of its server if that is not connected. A place whose server
    /// is no more changes nothing.
    void handleNavigation(const QString &serverId, const QString &serverName, const QString &tab);

Q_SIGNALS:
    /// Another server or another section is on show.
    void placeChanged();
    void markChanged(MainTab tab);
    void isConnectingChanged(const QUuid &serverId);
    void isSidebarVisibleChanged();
    void isCompactModeChanged();
    void searchFocusTriggerChanged();
    void showingAddServerChanged(bool isShowing);
    void showingDisconnectAlertChanged(bool isShowing);

    /// The terminal section of this server came on show; its terminal should have the keyboard.
    void terminalFocusRequested(const QUuid &serverId);

private:
    void settle();
    void selectionChanged(const QUuid &before);
    void tabChanged();
    void visitTerminal();
    void requestTerminalFocus(int afterMs);
    void recordPlace();
    void show(const std::optional<NavigationState> &state);
    QUuid selectedId() const;

    ServerStore &m_store;
    CommandSSHManager &m_manager;
    TerminalSessions *m_terminals;
    NavigationHistory m_history;
    MainTab m_selectedTab = MainTab::Dashboard;
    QUuid m_handledServer; // what the change handlers have seen
    MainTab m_handledTab = MainTab::Dashboard;
    bool m_isChanging = false;
    bool m_isNavigatingFromHistory = false;
    bool m_isSidebarVisible = true;
    bool m_isCompactMode = false;
    bool m_showingDisconnectAlert = false;
    bool m_showingAddServer = false;
    int m_searchFocusTrigger = 0;
    QSet<QUuid> m_terminalVisitedServers;
    QHash<MainTab, SectionMark> m_marks;
};
