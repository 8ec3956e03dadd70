#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include "Services/Commands/SystemCommands.h"

#include <QCoroTask>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

// What a refresh of the record gives.
QCoro::Task<std::optional<Server>> give(std::optional<Server> record)
{
    co_return record;
}

} // namespace

/// Connecting, its failures in words, host keys, and what the manager remembers of a server.
class TestSessionManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void connectsAndForgets();
    void wrongPassword();
    void noPassword();
    void lockedKey();
    void refusedKey();
    void refusedRecords();
    void refreshCallbackWins();
    void unknownHost();
    void changedHost();
    void changedHostDeclined();
    void overridesWinUntilDisconnect();
    void sudoProbe();
    void sudoPrefixesTheFirstCommand();
    void executionResult();

private:
    bool connectTo(const Server &server, std::optional<QString> password = {}, std::optional<QString> passphrase = {},
                   ServerRefresh refresh = {})
    {
        return QCoro::waitFor(m_transport->manager.connect(server, password, passphrase, refresh));
    }

    QString connectionError() const { return m_transport->manager.connectionError().value_or(u"(absent)"_s); }

    RigSshd m_sshd;
    Server m_server;
    std::unique_ptr<TestTransport> m_transport;
};

void TestSessionManager::initTestCase()
{
    QVERIFY2(m_sshd.up(RigSshd::isRoot() ? RigSshd::Accounts::Created : RigSshd::Accounts::Present),
             qPrintable(m_sshd.error()));
}

void TestSessionManager::init()
{
    m_transport = std::make_unique<TestTransport>();
    m_server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
}

void TestSessionManager::connectsAndForgets()
{
    RIG_NEEDS_ROOT();
    m_server = TestTransport::server(m_sshd, AuthMethod::Password, m_sshd.passwordAccount());
    QSignalSpy connecting(&m_transport->manager, &CommandSSHManager::isConnectingChanged);
    QVERIFY(connectTo(m_server, m_sshd.password()));
    QCOMPARE(connecting.size(), 2);
    QCOMPARE(connectionError(), u"(absent)"_s);
    QCOMPARE(m_transport->run(m_server, u"echo in"_s, 20).output, "in\n");

    m_transport->manager.disconnect(m_server);
    QVERIFY(!connectTo(m_server)); // a typed password is not kept
    QVERIFY(connectTo(m_server, m_sshd.password()));
}

void TestSessionManager::wrongPassword()
{
    RIG_NEEDS_ROOT();
    m_server = TestTransport::server(m_sshd, AuthMethod::Password, m_sshd.passwordAccount());
    QVERIFY(!connectTo(m_server, u"wrong"_s));
    QCOMPARE(connectionError(), u"Failed to connect. Please check your password and try again."_s);
    QVERIFY(!m_transport->manager.isConnecting());
    const int logins = m_sshd.logins();
    QVERIFY(!connectTo(m_server)); // the wrong one was dropped, so nothing is tried
    QCOMPARE(m_sshd.logins(), logins);
}

void TestSessionManager::noPassword()
{
    m_server = TestTransport::server(m_sshd, AuthMethod::Password);
    QVERIFY(!connectTo(m_server));
    QCOMPARE(connectionError(), u"Failed to connect. Please check your password and try again."_s);
}

void TestSessionManager::lockedKey()
{
    m_server.privateKeyPath = m_sshd.passphraseKey();
    for (const auto &passphrase : {std::optional(u"not it"_s), std::optional<QString>()}) {
        const ConnectionOutcome outcome =
            QCoro::waitFor(m_transport->manager.attemptConnection(m_server, {}, passphrase));
        QVERIFY(!outcome.succeeded && outcome.isKeyLocked && outcome.isPassphraseNeeded);
        QCOMPARE(connectionError(),
                 u"SSH key requires a passphrase. Please enter the passphrase for your SSH key."_s);
        QVERIFY2(outcome.reason.contains(u"Permission denied"_s) || outcome.reason.contains(u"passphrase"_s),
                 qPrintable(outcome.reason));
    }
    // A server that is not there says nothing about the key.
    Server away = m_server;
    away.port = 1;
    const ConnectionOutcome outcome = QCoro::waitFor(m_transport->manager.attemptConnection(away));
    QVERIFY(!outcome.isKeyLocked && !outcome.isPassphraseNeeded);
    QVERIFY2(outcome.reason.contains(u"Connection refused"_s), qPrintable(outcome.reason));
    QVERIFY(connectTo(m_server, {}, m_sshd.passphrase()));
    m_transport->manager.disconnect(m_server);
    QVERIFY(connectTo(m_server)); // a pass phrase stays known
    QVERIFY(!QCoro::waitFor(m_transport->manager.isPassphraseNeeded(m_server)));
}

void TestSessionManager::refusedKey()
{
    m_server.privateKeyPath = u"/nonexistent/key"_s;
    QVERIFY(!connectTo(m_server));
    QCOMPARE(connectionError(),
             u"Failed to authenticate with SSH key. Please check your key path and permissions."_s);
}

void TestSessionManager::refusedRecords()
{
    const int logins = m_sshd.logins();
    m_server.privateKeyPath.reset();
    QVERIFY(!connectTo(m_server));
    QCOMPARE(connectionError(), u"SSH key path is required for key authentication"_s);
    m_server = TestTransport::server(m_sshd, AuthMethod::SshAgent);
    m_server.username = u"-lroot"_s;
    QVERIFY(!connectTo(m_server));
    QVERIFY(connectionError().contains(u"Username"_s));
    QCOMPARE(m_sshd.logins(), logins);
}

void TestSessionManager::refreshCallbackWins()
{
    const Server good = m_server;
    m_server.port = 1;
    QVERIFY(connectTo(m_server, {}, {}, [good] { return give(good); }));
    QCOMPARE(m_transport->run(m_server, u"echo in"_s, 20).output, "in\n"); // the newest record, not the screen's
    QVERIFY(!connectTo(m_server, {}, {}, [] { return give(std::nullopt); }));
}

void TestSessionManager::unknownHost()
{
    QVERIFY(connectTo(m_server));
    QFile known(m_transport->knownHosts());
    QVERIFY(known.open(QIODevice::ReadOnly));
    QVERIFY(known.readAll().contains("[127.0.0.1]:"));
    QVERIFY(m_transport->prompt.asked.isEmpty());
}

void TestSessionManager::changedHost()
{
    QVERIFY(connectTo(m_server));
    m_transport->manager.disconnect(m_server);
    QVERIFY2(m_sshd.rekey(), qPrintable(m_sshd.error()));

    // The operator agrees without having removed the old key: passed over for the test, still refused afterwards.
    m_transport->prompt.answer = true;
    QVERIFY(connectTo(m_server));
    QCOMPARE(m_transport->prompt.asked.size(), 1);
    QVERIFY(m_transport->prompt.asked.first().body.contains(u"has changed since your last connection"_s));
    QVERIFY(m_transport->prompt.asked.first().hint.contains(u"remove line 1."_s));
    QCOMPARE(m_transport->run(m_server, u"echo in"_s, 20).exitCode, CommandResult::kSshFailed);

    // The operator runs the command and agrees.
    m_transport->prompt.onAsked = [this] { QFile::remove(m_transport->knownHosts()); };
    QVERIFY(connectTo(m_server));
    QCOMPARE(m_transport->run(m_server, u"echo in"_s, 20).output, "in\n");
    QVERIFY(connectTo(m_server));
    QCOMPARE(m_transport->prompt.asked.size(), 2);
}

void TestSessionManager::changedHostDeclined()
{
    QVERIFY(connectTo(m_server));
    m_transport->manager.disconnect(m_server);
    QVERIFY2(m_sshd.rekey(), qPrintable(m_sshd.error()));
    QVERIFY(!connectTo(m_server));
    QCOMPARE(m_transport->prompt.asked.size(), 1);
    // Without verification nobody is asked.
    m_transport->settings.setVerifyHostKeys(false);
    QVERIFY(connectTo(m_server));
    QCOMPARE(m_transport->prompt.asked.size(), 1);
}

void TestSessionManager::overridesWinUntilDisconnect()
{
    QVERIFY(connectTo(m_server));
    Server stale = m_server;
    stale.port = 1;
    QCOMPARE(m_transport->run(stale, u"echo in"_s, 20).output, "in\n");
    m_transport->manager.disconnect(m_server);
    QCOMPARE(m_transport->run(stale, u"echo in"_s, 20).exitCode, CommandResult::kSshFailed);
    m_transport->manager.invalidateServerCache(m_server);
    QCOMPARE(m_transport->run(stale, u"echo in"_s, 20).output, "in\n");
}

void TestSessionManager::sudoProbe()
{
    RIG_NEEDS_ROOT();
    const auto probe = [this](const QString &account) {
        Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey, account);
        server.id = QUuid::createUuidV5(QUuid(), account);
        return QCoro::waitFor(m_transport->manager.checkPasswordlessSudo(server));
    };
    QCOMPARE(probe(m_sshd.sudoAccount()), (PasswordlessSudo{true, true}));
    QCOMPARE(probe(m_sshd.plainAccount()), (PasswordlessSudo{false, true}));
    m_server.port = 1;
    QCOMPARE(QCoro::waitFor(m_transport->manager.checkPasswordlessSudo(m_server)), PasswordlessSudo());

    // Both answers are remembered: they hold even where no command could run.
    m_transport->pool.closeAllConnections();
    QVERIFY2(m_sshd.hang(), qPrintable(m_sshd.error()));
    QCOMPARE(probe(m_sshd.sudoAccount()), (PasswordlessSudo{true, true}));
    QCOMPARE(probe(m_sshd.plainAccount()), (PasswordlessSudo{false, true}));
    QVERIFY2(m_sshd.resume(), qPrintable(m_sshd.error()));
}

void TestSessionManager::sudoPrefixesTheFirstCommand()
{
    RIG_NEEDS_ROOT();
    m_server = TestTransport::server(m_sshd, AuthMethod::PublicKey, m_sshd.sudoAccount());
    const CommandResult result =
        QCoro::waitFor(m_transport->manager.executeCommand(u"id -un && id -un"_s, m_server, true, 20.0));
    QCOMPARE(QString::fromUtf8(result.output), u"root\n%1\n"_s.arg(m_sshd.sudoAccount()));
}

void TestSessionManager::executionResult()
{
    const CommandExecutionResult run = QCoro::waitFor(
        m_transport->manager.executeSSHCommand(CustomCommand(u"sleep 0.3; exit 4"_s, u"wait"_s), m_server));
    QCOMPARE(run.result.exitCode, 4);
    QCOMPARE(run.serverId, m_server.id);
    QVERIFY(run.executionTime >= 0.3);
    QVERIFY(!m_transport->manager.commandExecutor().isExecuting());
    m_server.privateKeyPath.reset();
    const CommandExecutionResult refused =
        QCoro::waitFor(m_transport->manager.executeSSHCommand(StorageDevicesCommand(), m_server));
    QCOMPARE(refused.result.exitCode, CommandResult::kNotRun);
    QVERIFY(refused.executionTime > 0);
}

QTEST_GUILESS_MAIN(TestSessionManager)
#include "test_session_manager.moc"
