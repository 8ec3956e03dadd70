#pragma once

#include "Services/Terminal/TerminalSessions.h"
#include "Views/Terminal/HostedTerminalView.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <memory>

/// What became of a terminal's session so far.
struct TerminalSessionState {
    bool hasConnectedOnce = false;
    bool isCurrentlyConnected = false;
    bool shouldShowReconnect = false;
};

/// What happened in a terminal while it was not on show.
enum class TerminalNews { None, Output, Bell };

/// All terminals of the program: one for each server whose terminal section was shown, and those that the operator
/// opened beside it. They belong to nobody else, so they outlive every page that shows them; they end with
/// cleanupServer() and cleanupAll(), and not before.
///
/// A terminal has an identifier; that of a server's first one is the server's own. One object for the process.
class GlobalTerminalSessionManager : public QObject, public TerminalSessions
{
    Q_OBJECT

public:
    using Coordinator = HostedTerminalView::Coordinator;

    struct Terminal {
        HostedTerminalView *terminal = nullptr;
        Coordinator *coordinator = nullptr;
    };

    explicit GlobalTerminalSessionManager(const Coordinator::Services &services);
    ~GlobalTerminalSessionManager() override;

    /// The server's first terminal; made, and connected at the next turn of the event loop, if there is none. One
    /// that is there gets the record for its next session.
    Terminal getOrCreateTerminal(const Server &server);

    /// One more terminal of the server, likewise, and its identifier.
    QUuid openTerminal(const Server &server);

    /// Ends a terminal that was opened by openTerminal().
    void closeTerminal(const QUuid &terminalId);

    /// The terminals of a server in the order of their making.
    QList<QUuid> terminalsOf(const QUuid &serverId) const { return m_order.value(serverId); }

    /// Null for what is not there.
    Terminal terminal(const QUuid &terminalId) const;

    TerminalSessionState sessionState(const QUuid &terminalId) const;

    /// The colours that a terminal was made with, or has been given since.
    TerminalColorScheme terminalColorScheme(const QUuid &terminalId) const;

    /// Which of a server's terminals is on show, or comes on show with its section.
    QUuid currentTerminal(const QUuid &serverId) const { return m_current.value(serverId, serverId); }

    void setCurrentTerminal(const QUuid &serverId, const QUuid &terminalId);

    /// Starts a session unless one runs.
    void connectTerminalIfNeeded(const QUuid &terminalId);

    /// Gives the keyboard to the server's current terminal if it is on show.
    void focusTerminal(const QUuid &serverId);

    void serverSettingsChanged(const Server &server) override;
    void cleanupServer(const QUuid &id) override;
    void cleanupAll() override;

    /// The most important news of the server's terminals. What is on show has none.
    TerminalNews news(const QUuid &serverId) const;
    TerminalNews terminalNews(const QUuid &terminalId) const;

Q_SIGNALS:
    /// The client of a terminal of this server runs, or has ended by itself.
    void terminalConnected(const QUuid &serverId);
    void terminalDisconnected(const QUuid &serverId);

    /// A terminal came or went, or has another title.
    void terminalsChanged(const QUuid &serverId);

    /// Another connection state, or a request for the clipboard.
    void terminalChanged(const QUuid &serverId, const QUuid &terminalId);

    void newsChanged(const QUuid &serverId);

private:
    struct Entry {
        QUuid serverId;
        std::unique_ptr<HostedTerminalView> terminal;
        TerminalSessionState state;
        TerminalNews news = TerminalNews::None;
    };

    Entry *entry(const QUuid &terminalId) const;
    void create(const QUuid &terminalId, const Server &server);
    void watch(HostedTerminalView &view, const QUuid &terminalId, const QUuid &serverId);
    void setState(const QUuid &terminalId, TerminalConnectionState state);
    void note(const QUuid &terminalId, TerminalNews news);
    void drop(const QUuid &terminalId);
    void applySettings();

    Coordinator::Services m_services;
    QHash<QUuid, std::shared_ptr<Entry>> m_terminals;
    QHash<QUuid, QList<QUuid>> m_order; // by server
    QHash<QUuid, QUuid> m_current;      // by server
};
