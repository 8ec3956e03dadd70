#pragma once

#include "Helpers/ManualClock.h"
#include "Helpers/OneShot.h"
#include "Models/AppSettings.h"
#include "Models/ServerStore.h"
#include "Models/UserDefaults.h"
#include "Services/Children/ChildProcesses.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/Commands/ServerListEffects.h"
#include "Services/SSH/AskpassHelper.h"
#include "Services/SSH/HostKeys.h"
#include "Services/SSH/KeychainManager.h"
#include "Services/SSH/MemorySecretStore.h"
#include "Services/SSH/RuntimeDirectory.h"
#include "Services/SSH/SSHConnectionPool.h"
#include "Services/SSH/SSHLauncher.h"
#include "Services/SSH/SSHProcessTracker.h"

#include <QFile>
#include <QTemporaryDir>

/// A server without a network. Logins are answered by a script in ssh's place, commands by the test, in its order.
class FakeTransport
{
public:
    struct Call {
        QString command;
        OneShot<CommandResult>::Completer completer;
    };

    FakeTransport()
        : defaults(m_directory.filePath(QStringLiteral("profile")))
        , settings(defaults)
        , runtimeDirectory(m_directory.filePath(QStringLiteral("run")))
        , askpass(runtimeDirectory)
        , launcher(children, tracker, askpass, writeScript())
        , pool(launcher, settings, runtimeDirectory)
        , keychain(secrets, clock)
        , manager({launcher, keychain, settings, prompt}, pool,
                  [this](const Server &, const auto &, const auto &) { return std::make_shared<Connection>(calls); })
        , store(defaults, clock, &m_effects)
    {
        setLogin(true);
    }

    ~FakeTransport()
    {
        letLoginsEnd();
        children.shutdown();
        while (!calls.isEmpty()) { // whoever is resumed by the drop may ask for more
            calls.takeFirst();
        }
    }

    /// From now on logins end so, with this on standard error.
    void setLogin(bool succeeds, const QByteArray &error = {})
    {
        write("reply",
              "cat <<'END' >&2\n" + error + "\nEND\n" + (succeeds ? "echo SSH_CONNECTION_SUCCESS" : "exit 255"));
    }

    /// From now on the client does this: a shell text that runs in a directory of its own. What askpass would give it
    /// is in the file "secret" there.
    void setReply(const QByteArray &shell) { write("reply", shell); }

    /// The last secret that a login was tried with; empty for none.
    QByteArray triedSecret() const
    {
        QFile file(m_directory.filePath(QStringLiteral("secret")));
        return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
    }

    /// Logins that are begun now end only after letLoginsEnd().
    void holdLogins() { write("hold", {}); }

    void letLoginsEnd() { QFile::remove(m_directory.filePath(QStringLiteral("hold"))); }

    /// How many logins were begun.
    int logins() const
    {
        QFile file(m_directory.filePath(QStringLiteral("logins")));
        return file.open(QIODevice::ReadOnly) ? static_cast<int>(file.readAll().count('\n')) : 0;
    }

    /// Answers the oldest call that has no answer yet.
    void answer(const QByteArray &output, int exitCode = 0, const QByteArray &error = {})
    {
        const Call call = calls.takeFirst();
        call.completer.complete(CommandResult{output, error, exitCode, call.command});
    }

    /// A record in the store.
    Server add(const QString &name, AuthMethod method = AuthMethod::PublicKey)
    {
        Server server;
        server.name = name;
        server.host = QStringLiteral("server.example");
        server.username = QStringLiteral("ops");
        server.authMethod = method;
        if (method == AuthMethod::PublicKey) {
            server.privateKeyPath = QStringLiteral("/key");
        }
        store.addServer(server);
        return server;
    }

private:
    struct Connection : SSHConnection {
        explicit Connection(QList<Call> &queue)
            : calls(queue)
        {
        }

        QCoro::Task<CommandResult> executeCommand(ShellLine command, std::optional<double>) override
        {
            OneShot<CommandResult> result(CommandResult{});
            calls.append({command.text, result.completer()});
            return result.wait();
        }

        void cleanup() override {}

        QList<Call> &calls;
    };

    void write(const char *name, const QByteArray &content)
    {
        QFile file(m_directory.filePath(QLatin1StringView(name)));
        if (file.open(QIODevice::WriteOnly)) {
            file.write(content);
        }
    }

    QString writeScript()
    {
        const QString path = m_directory.filePath(QStringLiteral("ssh"));
        const QByteArray place = m_directory.path().toUtf8();
        write("ssh", "#!/bin/sh\ncd " + place +
                         " || exit 1\necho >>logins\nreply=$(cat reply)\n"
                         "[ -z \"$SSH_ASKPASS\" ] || \"$SSH_ASKPASS\" >secret\n"
                         "while [ -e hold ]; do sleep 0.01; done\neval \"$reply\"\n");
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }

    struct NoPrompt : HostKeyPrompt {
        QCoro::Task<bool> askToRetry(HostKeyConflict) override { co_return false; }
    };

    QTemporaryDir m_directory;

public:
    QList<Call> calls;
    ManualClock clock;
    UserDefaults defaults;
    AppSettings settings;
    RuntimeDirectory runtimeDirectory;
    AskpassHelper askpass;
    ChildProcesses children;
    SSHProcessTracker tracker;
    SSHLauncher launcher;
    SSHConnectionPool pool;
    MemorySecretStore secrets;
    KeychainManager keychain;
    NoPrompt prompt;
    CommandSSHManager manager;

private:
    ServerListEffects m_effects{manager, nullptr};

public:
    ServerStore store;
};
