#pragma once

#include "rig/RigHosts.h"
#include "rig/TestTransport.h"

#include <QCoroTask>

/// A full host, reached by the program's own transport.
class HostSession
{
public:
    explicit HostSession(const RigHost &host)
    {
        m_server.name = host.role;
        m_server.host = host.address;
        m_server.port = host.port;
        m_server.username = host.user;
        m_server.authMethod = AuthMethod::PublicKey;
        m_server.privateKeyPath = host.key;
        m_server.isConnected = true;
    }

    const Server &server() const { return m_server; }

    CommandResult run(const QString &line, bool useSudo = false)
    {
        return QCoro::waitFor(transport.manager.executeCommand(line, m_server, useSudo, 60.0));
    }

    CommandResult run(const BaseSSHCommand &command, bool useSudo = false)
    {
        return run(command.commandString(), useSudo);
    }

    /// What a line prints, without white space around it.
    QByteArray says(const QString &line, bool useSudo = false) { return run(line, useSudo).output.trimmed(); }

    TestTransport transport;

private:
    Server m_server;
};
