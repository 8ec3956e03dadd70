#pragma once

#include "Models/Server.h"
#include "Services/Children/ChildProcesses.h"
#include "Services/SSH/CommandGate.h"

#include <QCoroTask>
#include <QStringList>
#include <memory>
#include <optional>

class AppSettings;
class SSHLauncher;

/// One OpenSSH master: the client that logged in once and, after that, stays in the background behind its control
/// socket. Held by shared_ptr; a task that uses it keeps it alive.
class MasterSSHConnection
{
public:
    MasterSSHConnection(SSHLauncher &launcher, const AppSettings &settings, Server server, QString controlPath,
                        std::optional<QString> password, std::optional<QString> passphrase);

    /// Logs in. True when the far side answered and the control socket stands. There is no time limit but the
    /// client's ConnectTimeout. Whoever calls holds this object until the task is done.
    QCoro::Task<bool> establish();

    /// Makes the master unusable: ends a login that is under way and removes the socket.
    void cleanup();

    /// Established, not cleaned up, and its socket is there.
    bool isUsable() const;

    bool isClosed() const { return m_isClosed; }

    const Server &server() const { return m_server; }

    QString controlPath() const { return m_controlPath; }

    std::shared_ptr<CommandGate> gate() const { return m_gate; }

    /// The client's arguments for the login.
    static QStringList buildMasterArguments(const Server &server, const QString &controlPath,
                                            const AppSettings &settings);

private:
    SSHLauncher &m_launcher;
    const AppSettings &m_settings;
    Server m_server;
    QString m_controlPath;
    std::optional<QString> m_password;
    std::optional<QString> m_passphrase;
    std::shared_ptr<CommandGate> m_gate = std::make_shared<CommandGate>();
    std::shared_ptr<ChildHandle> m_masterProcess = std::make_shared<ChildHandle>();
    bool m_isEstablished = false;
    bool m_isClosed = false;
};
