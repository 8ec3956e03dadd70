#pragma once

#include "Helpers/Clock.h"
#include "Models/AppSettings.h"
#include "Models/UserDefaults.h"
#include "Services/Children/ChildProcesses.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/SSH/AskpassHelper.h"
#include "Services/SSH/HostKeys.h"
#include "Services/SSH/KeychainManager.h"
#include "Services/SSH/MemorySecretStore.h"
#include "Services/SSH/RuntimeDirectory.h"
#include "Services/SSH/SSHConnectionPool.h"
#include "Services/SSH/SSHLauncher.h"
#include "Services/SSH/SSHProcessTracker.h"

#include <QTemporaryDir>
#include <functional>

class RigSshd;

/// Answers the question about a host key from a script, and keeps what was asked.
class ScriptedHostKeyPrompt : public HostKeyPrompt
{
public:
    QCoro::Task<bool> askToRetry(HostKeyConflict conflict) override
    {
        asked.append(conflict);
        if (onAsked) {
            onAsked();
        }
        co_return answer;
    }

    bool answer = false;
    std::function<void()> onAsked;
    QList<HostKeyConflict> asked;
};

/// The whole transport of the program as one object for tests, with nothing of the user's own: settings, sockets,
/// scripts and known hosts stand in a directory of its own, secrets in memory.
class TestTransport
{
public:
    TestTransport();
    ~TestTransport();

    /// A record for an account (empty: the present user) of the rig's daemon.
    static Server server(const RigSshd &sshd, AuthMethod method, const QString &account = {});

    /// Runs a line to its end in a nested event loop.
    CommandResult run(const Server &server, const QString &line, std::optional<double> timeout = std::nullopt);

    /// The askpass scripts and control sockets that stand at the moment.
    QStringList askpassScripts() const;
    QStringList controlSockets() const;

    /// Ends everything as the quitting program does.
    void quit();

private:
    static QString writeSSHWrapper(const QTemporaryDir &directory);

    QTemporaryDir m_directory;

public:
    QString sshPath; ///< /usr/bin/ssh without the user's configuration, with knownHosts()
    UserDefaults defaults;
    AppSettings settings;
    RuntimeDirectory runtimeDirectory;
    AskpassHelper askpass;
    ChildProcesses children;
    SSHProcessTracker tracker;
    SSHLauncher launcher;
    SSHConnectionPool pool;
    MemorySecretStore secrets;
    SystemClock clock;
    KeychainManager keychain;
    ScriptedHostKeyPrompt prompt;
    CommandSSHManager manager;

    QString knownHosts() const { return m_directory.filePath(QStringLiteral("known_hosts")); }
};
