#pragma once

#include "Services/SSH/BaseSSHManager.h"

#include <QByteArray>
#include <functional>
#include <sys/types.h>

class TerminalChild;

enum class TerminalConnectionState { disconnected, connecting, connected };

/// One terminal session: the client on a pseudo terminal, from connect() to its end. A session is connected once the
/// client runs; what it asks and what goes wrong is shown in the terminal. For another connection make another
/// object.
///
/// Output comes as fast as it is taken and waits with the client otherwise; input is kept until the client takes it.
/// Main thread. May be deleted at any time, though not from inside of its own calls; the client ends with it.
class HostedSSHManager : public BaseSSHManager
{
    Q_OBJECT

public:
    struct TerminalSize {
        int columns = 80;
        int rows = 24;
    };

    /// Gets output as UTF-8, whole characters only, each byte once and in order.
    using OutputHandler = std::function<void(QByteArrayView text)>;

    /// The secret typed for the server in this run comes from `sshManager`, which outlives this object.
    HostedSSHManager(const Dependencies &dependencies, BaseSSHManager &sshManager, Server server);
    ~HostedSSHManager() override;

    const Server &server() const { return m_server; }

    void setOutputHandler(OutputHandler handler) { m_outputHandler = std::move(handler); }

    /// While this gives false, output is left with the client; asked again at the next turn of the event loop.
    void setWantsOutput(std::function<bool()> wantsOutput) { m_wantsOutput = std::move(wantsOutput); }

    TerminalConnectionState connectionState() const { return m_connectionState; }

    /// The client's process, or -1.
    pid_t processId() const { return m_processId; }

    /// The near descriptor of the pseudo terminal, or -1.
    int masterFD() const;

    /// The askpass script of this session while it stands.
    const std::optional<QString> &askpassScriptPath() const { return m_askpassScriptPath; }

    /// Starts the client. Nothing happens if it runs already, or was ended by forceDisconnect().
    void connect(TerminalSize size);

    /// What the operator typed or pasted. Nothing of it is lost while the session lasts.
    void send(QByteArrayView bytes);

    /// What the terminal answers to a query of the application. Dropped while much of it waits: a server that asks
    /// and does not listen must not fill the memory.
    void sendReply(QByteArrayView bytes);

    /// Each clamped to 1 to 1000. Without a pseudo terminal nothing happens.
    void resizeTerminal(int columns, int rows);

    /// Ends the client: SIGTERM, SIGKILL after 25 ms. A second call does nothing.
    void forceDisconnect();

    /// For the quitting program: the client and its process group are gone when this returns.
    void endNow();

Q_SIGNALS:
    void connectionStateChanged(TerminalConnectionState state);

    /// The client runs.
    void terminalConnected(const QUuid &serverId);

    /// The client ended by itself.
    void terminalDisconnected(const QUuid &serverId);

private:
    void start(const std::optional<QString> &password);
    QProcessEnvironment environment(const std::optional<QString> &password);
    void fail(QByteArrayView color, const QString &words);
    void readOutput();
    void pauseReading();
    void emitPendingOutput(bool flush);
    bool emitSomeOutput(bool flush);
    void handleProcessTermination();
    void closeTerminal();
    void setConnectionState(TerminalConnectionState state);

    BaseSSHManager &m_sshManager;
    Server m_server;
    OutputHandler m_outputHandler;
    std::function<bool()> m_wantsOutput;
    TerminalChild *m_sshProcess = nullptr; // a child object of this one
    pid_t m_processId = -1;
    TerminalSize m_size;
    QByteArray m_pendingUTF8Data;
    TerminalConnectionState m_connectionState = TerminalConnectionState::disconnected;
    std::optional<QString> m_askpassScriptPath;
    bool m_hasCleanedUp = false;
};
