#include "Models/AppSettings.h"
#include "Models/UserDefaults.h"
#include "Services/SSH/ConnectionTest.h"
#include "Services/SSH/MasterSSHConnection.h"
#include "Services/SSH/SSHArgumentStrategy.h"
#include "Services/SSH/SSHConnectionPool.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

// The vectors are written as one line; no element of them holds a blank but the command, which is given apart.
QStringList words(const QString &line, const std::optional<QString> &command = u"echo 'a b'"_s)
{
    QStringList list = line.split(u' ', Qt::SkipEmptyParts);
    if (command) {
        list += *command;
    }
    return list;
}

Server serverWith(AuthMethod method)
{
    Server server;
    server.host = u"db.internal"_s;
    server.port = 2222;
    server.username = u"ops"_s;
    server.authMethod = method;
    server.privateKeyPath = method == AuthMethod::PublicKey ? std::optional(u"/keys/id with blank"_s) : std::nullopt;
    return server;
}

} // namespace

class TestSSHArguments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void keyServer();
    void passwordServer();
    void agentServer();
    void fallback();
    void pooled();
    void master();
    void connectTimeoutIsReplacedOnce();
    void refusals();
    void retryOptionsStandBeforeTheDestination();

private:
    std::unique_ptr<QTemporaryDir> m_directory;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<AppSettings> m_settings;
};

void TestSSHArguments::init()
{
    m_settings.reset();
    m_directory = std::make_unique<QTemporaryDir>();
    m_defaults = std::make_unique<UserDefaults>(m_directory->path());
    m_settings = std::make_unique<AppSettings>(*m_defaults);
}

void TestSSHArguments::keyServer()
{
    Server server = serverWith(AuthMethod::PublicKey);
    const KeyAuthStrategy strategy;
    const QStringList key{u"-i"_s, u"/keys/id with blank"_s};
    const QString common =
        u"-o LogLevel=QUIET -o ConnectTimeout=30 -o ServerAliveInterval=60 -o ServerAliveCountMax=5 "_s;

    QCOMPARE(strategy.buildArguments(server, u"echo 'a b'"_s, *m_settings, false, u"QUIET"_s),
             key + words(common + u"-o StrictHostKeyChecking=accept-new -o PasswordAuthentication=no "
                                  "-o PreferredAuthentications=publickey -o BatchMode=no -p 2222 ops@db.internal"_s));

    m_settings->setUseCompression(true);
    m_settings->setVerifyHostKeys(false);
    server.forwardAgent = true;
    QCOMPARE(strategy.buildArguments(server, std::nullopt, *m_settings, true, u"QUIET"_s),
             key + words(common +
                             u"-o Compression=yes -o StrictHostKeyChecking=no -o UserKnownHostsFile=/dev/null "
                             "-o GlobalKnownHostsFile=/dev/null -o PasswordAuthentication=no "
                             "-o PreferredAuthentications=publickey -o BatchMode=no -o ForwardAgent=yes -t -p 2222 "
                             "ops@db.internal"_s,
                         std::nullopt));
}

void TestSSHArguments::passwordServer()
{
    m_settings->setSshTimeout(7);
    m_settings->setKeepAliveInterval(11);
    m_settings->setUseCompression(true);
    Server server = serverWith(AuthMethod::Password);
    server.forwardAgent = true;
    QCOMPARE(PasswordAuthStrategy().buildArguments(server, u"echo 'a b'"_s, *m_settings, true, u"ERROR"_s),
             words(u"-o LogLevel=ERROR -o ConnectTimeout=7 -o ServerAliveInterval=11 -o ServerAliveCountMax=5 "
                   "-o BatchMode=no -o PasswordAuthentication=yes -o PubkeyAuthentication=no "
                   "-o PreferredAuthentications=password -o Compression=yes -o StrictHostKeyChecking=accept-new "
                   "-o ForwardAgent=yes -t -p 2222 ops@db.internal"_s));
}

void TestSSHArguments::agentServer()
{
    Server server = serverWith(AuthMethod::SshAgent);
    const QString head = u"-o LogLevel=ERROR -o ConnectTimeout=30 -o ServerAliveInterval=60 -o ServerAliveCountMax=5 "
                         "-o StrictHostKeyChecking=accept-new -o PreferredAuthentications=publickey "
                         "-o IdentitiesOnly=no "_s;
    QCOMPARE(AgentAuthStrategy().buildArguments(server, u"echo 'a b'"_s, *m_settings, false, u"ERROR"_s),
             words(head + u"-o ForwardAgent=no -p 2222 ops@db.internal"_s));
    server.forwardAgent = true;
    QCOMPARE(AgentAuthStrategy().buildArguments(server, u"echo 'a b'"_s, *m_settings, true, u"ERROR"_s),
             words(head + u"-o ForwardAgent=yes -t -p 2222 ops@db.internal"_s));
}

void TestSSHArguments::fallback()
{
    const SSHArgumentBuilder builder;
    const auto unknown = static_cast<AuthMethod>(99);
    QCOMPARE(builder.strategyFor(unknown).buildArguments(serverWith(AuthMethod::Password), u"echo 'a b'"_s,
                                                         *m_settings, true, u"INFO"_s),
             words(u"-o LogLevel=INFO -o ConnectTimeout=30 -o ServerAliveInterval=60 -o ServerAliveCountMax=5 "
                   "-o StrictHostKeyChecking=accept-new -t -p 2222 ops@db.internal"_s));
}

void TestSSHArguments::pooled()
{
    Server server = serverWith(AuthMethod::PublicKey);
    server.forwardAgent = true;
    QCOMPARE(
        PooledConnectionStrategy(u"/run/s"_s).buildArguments(server, u"echo 'a b'"_s, *m_settings, true, u"ERROR"_s),
        words(u"-S /run/s -o LogLevel=ERROR -o ControlMaster=no -o ForwardAgent=yes -t -p 2222 ops@db.internal"_s));
    // A lease's own vector differs: no ControlMaster, and the terminal before the agent.
    const SSHPooledConnection lease{server.id, u"/run/s"_s, server, nullptr};
    QCOMPARE(lease.buildCommandArguments(u"echo 'a b'"_s, true),
             words(u"-S /run/s -o LogLevel=ERROR -t -o ForwardAgent=yes -p 2222 ops@db.internal"_s));
}

void TestSSHArguments::master()
{
    m_settings->setSshTimeout(99); // a master's own values don't follow the settings
    m_settings->setUseCompression(true);
    const QString head = u"-M -S /run/s -o ControlPersist=300s -o LogLevel=ERROR -o ConnectTimeout=10 "
                         "-o ServerAliveInterval=30 -o ServerAliveCountMax=3 -o BatchMode=no "_s;
    const QString tail = u" -o StrictHostKeyChecking=accept-new -o Compression=yes -p 2222 ops@db.internal"_s;
    const std::optional<QString> echo = u"echo 'SSH_MASTER_ESTABLISHED'"_s;
    const auto built = [&](const Server &server) {
        return MasterSSHConnection::buildMasterArguments(server, u"/run/s"_s, *m_settings);
    };
    Server server = serverWith(AuthMethod::PublicKey);
    server.privateKeyPath = u"/keys/id"_s;
    const QString keyOptions = u"-o PasswordAuthentication=no -o PreferredAuthentications=publickey"_s;
    QCOMPARE(built(server), words(head + u"-i /keys/id "_s + keyOptions + tail, echo));
    server.privateKeyPath.reset();
    QCOMPARE(built(server), words(head + keyOptions + tail, echo));
    QCOMPARE(built(serverWith(AuthMethod::Password)),
             words(head +
                       u"-o PasswordAuthentication=yes -o PubkeyAuthentication=no "
                       "-o PreferredAuthentications=password"_s +
                       tail,
                   echo));
    QCOMPARE(built(serverWith(AuthMethod::SshAgent)),
             words(head + keyOptions + u" -o IdentitiesOnly=no"_s + tail, echo));
}

void TestSSHArguments::connectTimeoutIsReplacedOnce()
{
    const QStringList arguments = PasswordAuthStrategy().buildArguments(
        serverWith(AuthMethod::Password), u"ConnectTimeout=1"_s, *m_settings, false, u"QUIET"_s);
    const QStringList limited = SSHArguments::withConnectTimeout(arguments, 2.5);
    QCOMPARE(limited.count(u"ConnectTimeout=2"_s), 1);
    QCOMPARE(limited.last(), u"ConnectTimeout=1"_s);
    QCOMPARE(limited.size(), arguments.size());
}

void TestSSHArguments::refusals()
{
    Server server = serverWith(AuthMethod::PublicKey);
    QVERIFY(!SSHArguments::refusalFor(server));
    server.privateKeyPath.reset();
    QCOMPARE(SSHArguments::refusalFor(server), u"SSH key path is required for key authentication"_s);
    server = serverWith(AuthMethod::SshAgent);
    server.username = u"-oProxyCommand=touch /tmp/x"_s;
    QVERIFY(SSHArguments::refusalFor(server)->contains(u"Username"_s));
    server.username = u"ops"_s;
    server.host = u"-V"_s;
    QVERIFY(SSHArguments::refusalFor(server)->contains(u"Host"_s));
}

void TestSSHArguments::retryOptionsStandBeforeTheDestination()
{
    m_settings->setVerifyHostKeys(false);
    Server server = serverWith(AuthMethod::PublicKey);
    server.privateKeyPath = u"-odd@key"_s;
    const QStringList stripped = ConnectionTest::withoutHostKeyOptions(
        KeyAuthStrategy().buildArguments(server, u"echo root@x"_s, *m_settings, false, u"ERROR"_s));
    QVERIFY(!stripped.join(u' ').contains(u"HostKey"_s));
    QVERIFY(!stripped.join(u' ').contains(u"KnownHosts"_s));
    const QStringList retried =
        ConnectionTest::withOptionsBeforeDestination(stripped, {u"StrictHostKeyChecking=accept-new"_s});
    QCOMPARE(retried.mid(retried.size() - 4),
             (QStringList{u"-o"_s, u"StrictHostKeyChecking=accept-new"_s, u"ops@db.internal"_s, u"echo root@x"_s}));
}

QTEST_GUILESS_MAIN(TestSSHArguments)
#include "test_ssh_arguments.moc"
