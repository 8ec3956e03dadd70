#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include <QCoroTask>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

/// Master connections to a real server: how many logins the server counts tells what the pool did.
class TestConnectionPool : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void commandsShareOneLogin();
    void commandsThatStartTogetherMakeOneLogin();
    void manyCommandsLoseNone();
    void aDeletedSocketIsNoticed();
    void theHealthCheckForgetsTheDead();
    void changedSettingsMakeAFreshMaster();
    void closingCutsOffALoginUnderWay();
    void switchedOff();
    void aFailedMasterFallsBack();
    void noPlaceForSockets();
    void twoPoolsDoNotMeet();

private:
    /// Runs `true` and tells how many logins that took.
    int loginsFor(const Server &server);

    RigSshd m_sshd;
    Server m_server;
    std::unique_ptr<TestTransport> m_transport;
};

void TestConnectionPool::initTestCase()
{
    QVERIFY2(m_sshd.up(), qPrintable(m_sshd.error()));
}

void TestConnectionPool::init()
{
    m_transport = std::make_unique<TestTransport>();
    m_server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
}

void TestConnectionPool::cleanup()
{
    m_transport->quit();
    QCOMPARE(m_transport->controlSockets(), QStringList());
    m_transport.reset();
}

int TestConnectionPool::loginsFor(const Server &server)
{
    const int before = m_sshd.logins();
    return m_transport->run(server, u"true"_s, 20).succeeded() ? m_sshd.logins() - before : -1;
}

void TestConnectionPool::commandsShareOneLogin()
{
    QCOMPARE(loginsFor(m_server), 1);
    QCOMPARE(loginsFor(m_server), 0);
    QCOMPARE(m_transport->pool.count(), 1);
    QCOMPARE(m_transport->controlSockets().size(), 1);
    QVERIFY(QRegularExpression(u"^ssh_[0-9A-F]{8}$"_s).match(m_transport->controlSockets().first()).hasMatch());
    Server other = m_server;
    other.id = QUuid::createUuid();
    QCOMPARE(loginsFor(other), 1);
    m_transport->pool.closeConnection(m_server);
    QCOMPARE(m_transport->controlSockets().size(), 1);
    QCOMPARE(loginsFor(other), 0);
    QCOMPARE(loginsFor(m_server), 1);
}

void TestConnectionPool::commandsThatStartTogetherMakeOneLogin()
{
    const int before = m_sshd.logins();
    std::vector<QCoro::Task<CommandResult>> running;
    for (int i = 0; i < 12; ++i) {
        running.push_back(m_transport->manager.executeCommand(u"echo %1"_s.arg(i), m_server, false, 30.0));
    }
    for (size_t i = 0; i < running.size(); ++i) {
        QCOMPARE(QCoro::waitFor(running[i]).output, QByteArray::number(static_cast<int>(i)) + '\n');
    }
    QCOMPARE(m_sshd.logins() - before, 1);
}

void TestConnectionPool::manyCommandsLoseNone()
{
    // 64 over one master, of which the server would take ten: each reports how many sessions stood beside it.
    std::vector<QCoro::Task<CommandResult>> running;
    for (int i = 0; i < 64; ++i) {
        running.push_back(m_transport->manager.executeCommand(u"echo start-%1; sleep 0.2; echo end-%1"_s.arg(i),
                                                              m_server, false, 5.0));
    }
    for (size_t i = 0; i < running.size(); ++i) {
        const CommandResult result = QCoro::waitFor(running[i]);
        QVERIFY2(result.succeeded(), result.error.constData());
        const QByteArray number = QByteArray::number(static_cast<int>(i));
        QCOMPARE(result.output, "start-" + number + "\nend-" + number + '\n');
    }
}

void TestConnectionPool::aDeletedSocketIsNoticed()
{
    QCOMPARE(loginsFor(m_server), 1);
    QVERIFY(
        QFile::remove(m_transport->runtimeDirectory.controlPathDirectory() + m_transport->controlSockets().first()));
    QCOMPARE(loginsFor(m_server), 1);
    QCOMPARE(loginsFor(m_server), 0);
}

void TestConnectionPool::theHealthCheckForgetsTheDead()
{
    QCOMPARE(loginsFor(m_server), 1);
    m_transport->pool.performHealthCheck();
    QCOMPARE(m_transport->pool.count(), 1);
    QVERIFY(
        QFile::remove(m_transport->runtimeDirectory.controlPathDirectory() + m_transport->controlSockets().first()));
    m_transport->pool.performHealthCheck();
    QCOMPARE(m_transport->pool.count(), 0);
}

void TestConnectionPool::changedSettingsMakeAFreshMaster()
{
    QCOMPARE(loginsFor(m_server), 1);
    m_transport->manager.invalidateServerCache(m_server);
    QCOMPARE(m_transport->pool.count(), 0);
    QCOMPARE(loginsFor(m_server), 1);
}

void TestConnectionPool::closingCutsOffALoginUnderWay()
{
    QVERIFY2(m_sshd.hang(), qPrintable(m_sshd.error()));
    auto running = m_transport->manager.executeCommand(u"echo late"_s, m_server, false, 20.0);
    QTRY_COMPARE(m_transport->children.count(), 1);
    m_transport->pool.closeConnection(m_server);
    QVERIFY2(m_sshd.resume(), qPrintable(m_sshd.error()));
    QCOMPARE(QCoro::waitFor(running).output, "late\n"); // by a login of its own
    QCOMPARE(m_transport->pool.count(), 0);
    QCOMPARE(m_transport->controlSockets(), QStringList());
}

void TestConnectionPool::switchedOff()
{
    m_transport->settings.setUseConnectionPooling(false);
    QCOMPARE(loginsFor(m_server), 1);
    QCOMPARE(loginsFor(m_server), 1);
    QCOMPARE(m_transport->controlSockets(), QStringList());
}

void TestConnectionPool::aFailedMasterFallsBack()
{
    m_server.privateKeyPath = m_sshd.passphraseKey(); // locked
    std::vector<QCoro::Task<CommandResult>> running;
    for (int i = 0; i < 3; ++i) {
        running.push_back(m_transport->manager.executeCommand(u"true"_s, m_server, false, 20.0));
    }
    for (auto &each : running) {
        QCOMPARE(QCoro::waitFor(each).exitCode, CommandResult::kSshFailed);
    }
    QCOMPARE(m_transport->pool.count(), 0);
}

void TestConnectionPool::noPlaceForSockets()
{
    // Two ways to have none: a directory that is refused, and one so deep that a socket's address would not hold it.
    QTemporaryDir place;
    QFile file(place.filePath(u"file"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    for (const QString &path : {place.filePath(u"file"_s), place.filePath(QString(80, u'd'))}) {
        RuntimeDirectory directory(path);
        SSHConnectionPool pool(m_transport->launcher, m_transport->settings, directory);
        QVERIFY(!QCoro::waitFor(pool.getConnection(m_server, {}, {})));
        SystemSSHConnection connection({m_transport->launcher, pool, m_transport->settings}, m_server, {}, {});
        QCOMPARE(QCoro::waitFor(connection.executeCommand(u"echo in"_s, 20.0)).output, "in\n");
    }
}

void TestConnectionPool::twoPoolsDoNotMeet()
{
    QCOMPARE(loginsFor(m_server), 1);
    SSHConnectionPool other(m_transport->launcher, m_transport->settings, m_transport->runtimeDirectory);
    QVERIFY(QCoro::waitFor(other.getConnection(m_server, {}, {})));
    QCOMPARE(m_transport->controlSockets().size(), 2);
    other.cleanup();
    QCOMPARE(loginsFor(m_server), 0);
}

QTEST_GUILESS_MAIN(TestConnectionPool)
#include "test_connection_pool.moc"
