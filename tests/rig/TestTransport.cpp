#include "rig/TestTransport.h"

#include "rig/RigSshd.h"

#include <QCoroTask>
#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

TestTransport::TestTransport()
    : sshPath(writeSSHWrapper(m_directory))
    , defaults(m_directory.filePath(u"profile"_s))
    , settings(defaults)
    , runtimeDirectory(m_directory.filePath(u"run"_s))
    , askpass(runtimeDirectory)
    , launcher(children, tracker, askpass, sshPath)
    , pool(launcher, settings, runtimeDirectory)
    , keychain(secrets, clock)
    , manager({launcher, keychain, settings, prompt}, pool)
{
}

TestTransport::~TestTransport()
{
    quit();
}

QString TestTransport::writeSSHWrapper(const QTemporaryDir &directory)
{
    // Of several values for an option ssh takes the first. Where the program says that no host is to be known, that
    // stands; else known hosts are kept here.
    const QString path = directory.filePath(u"ssh"_s);
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write("#!/bin/sh\ncase \" $* \" in *UserKnownHostsFile=*) exec /usr/bin/ssh -F none \"$@\";; esac\n"
                   "exec /usr/bin/ssh -F none -o UserKnownHostsFile=" +
                   directory.filePath(u"known_hosts"_s).toUtf8() + " -o GlobalKnownHostsFile=/dev/null \"$@\"\n");
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    return path;
}

Server TestTransport::server(const RigSshd &sshd, AuthMethod method, const QString &account)
{
    Server server;
    server.name = u"rig"_s;
    server.host = sshd.host();
    server.port = sshd.port();
    server.username = account.isEmpty() ? sshd.user() : account;
    server.authMethod = method;
    if (method == AuthMethod::PublicKey) {
        server.privateKeyPath = sshd.key();
    }
    return server;
}

CommandResult TestTransport::run(const Server &server, const QString &line, std::optional<double> timeout)
{
    return QCoro::waitFor(manager.executeCommand(line, server, false, timeout));
}

QStringList TestTransport::askpassScripts() const
{
    return QDir(runtimeDirectory.path()).entryList({RuntimeDirectory::kAskpassPattern}, QDir::Files);
}

QStringList TestTransport::controlSockets() const
{
    return QDir(runtimeDirectory.controlPathDirectory()).entryList({u"ssh_*"_s}, QDir::System | QDir::Files);
}

void TestTransport::quit()
{
    pool.cleanup();
    tracker.forceKillTarnwellProcesses();
    children.shutdown();
    askpass.removeAll();
}
