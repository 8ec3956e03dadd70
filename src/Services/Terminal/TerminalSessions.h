#pragma once

#include <QUuid>

struct Server;

/// What the rest of the program asks of the terminals, wherever they are shown.
class TerminalSessions
{
public:
    virtual ~TerminalSessions() = default;

    /// Another record of a server: its terminals use it from their next session on.
    virtual void serverSettingsChanged(const Server &server) = 0;

    /// Ends every terminal of this server and forgets it; without one nothing happens.
    virtual void cleanupServer(const QUuid &id) = 0;

    /// For the quitting program: no terminal's client runs when this returns.
    virtual void cleanupAll() = 0;
};
