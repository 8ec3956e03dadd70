#pragma once

#include "rig/HostSession.h"
#include "rig/RigSshd.h"

#include "Models/ServerStore.h"
#include "Services/Monitoring/MonitoredServer.h"
#include "Views/Components/SectionNavigation.h"

#include <QTemporaryDir>

/// What a section needs around it on a real server, reached by the program's transport.
class LiveSection
{
public:
    explicit LiveSection(Server server)
        : m_server(std::move(server))
    {
        m_server.isConnected = true;
        store.addServer(m_server);
    }

    explicit LiveSection(const RigSshd &sshd)
        : LiveSection(TestTransport::server(sshd, AuthMethod::PublicKey))
    {
    }

    explicit LiveSection(const RigHost &host)
        : LiveSection(HostSession(host).server())
    {
    }

    MonitoredServer monitored() { return {transport.manager, store, m_clock, m_server.id}; }

    CommandResult run(const QString &line) { return transport.run(m_server, line); }

    /// The last line that a line prints: a greeting may stand before it.
    QString says(const QString &line) { return QString::fromUtf8(run(line).output.trimmed().split('\n').last()); }

private:
    Server m_server;
    QTemporaryDir m_folder;
    UserDefaults m_defaults{m_folder.path()};
    SystemClock m_clock;

public:
    TestTransport transport;
    ServerStore store{m_defaults, m_clock};
    SectionNavigation navigation;
};
