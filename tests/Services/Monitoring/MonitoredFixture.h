#pragma once

#include "Helpers/ManualClock.h"
#include "rig/ScriptedServer.h"

#include "Models/ServerStore.h"
#include "Services/Monitoring/MonitoredServer.h"

#include <QTemporaryDir>

/// A connected server in a store of its own, played by the test.
class MonitoredFixture
{
public:
    MonitoredFixture()
    {
        m_server.isConnected = true;
        store.addServer(m_server);
    }

    MonitoredServer monitored() { return {scripted.manager, store, clock, m_server.id}; }

    Server record() const { return *store.server(m_server.id); }

    void setConnected(bool isConnected) { store.updateServerConnection(m_server, isConnected); }

    void setSystemInfo(const std::optional<SystemInfo> &info)
    {
        Server changed = record();
        changed.systemInfo = info;
        store.updateServer(changed);
    }

private:
    QTemporaryDir m_directory;
    Server m_server = ScriptedServer::server();
    UserDefaults m_defaults{m_directory.path()};

public:
    ManualClock clock;
    ServerStore store{m_defaults, clock};
    ScriptedServer scripted;
};
