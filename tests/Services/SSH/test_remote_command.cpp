#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include <QCoroTask>
#include <QElapsedTimer>
#include <QTest>

using namespace Qt::StringLiterals;

/// One line to a real server and back, over each road: with a login of its own and over a master.
class TestRemoteCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void keyLogin_data() { roads(); }

    void keyLogin();

    void keyWithPassphrase_data() { roads(); }

    void keyWithPassphrase();

    void agent_data() { roads(); }

    void agent();
    void passwords_data();
    void passwords();

    void wrongPassword_data() { roads(); }

    void wrongPassword();
    void passwordServerWithoutPassword();

    void outputThatIsNoText_data() { roads(); }

    void outputThatIsNoText();

    void muchOutput_data() { roads(); }

    void muchOutput();

    void timeLimit_data() { roads(); }

    void timeLimit();

    void serverDropsTheLine_data() { roads(); }

    void serverDropsTheLine();
    void serverDoesNotAnswer();
    void closedAndRefused();
    void missingClient();
    void theServerSpeaksEnglish();

private:
    static void roads();

    /// The transport, set up for the data row's road.
    TestTransport &transport();

    RigSshd m_sshd;
    std::unique_ptr<TestTransport> m_transport;
};

void TestRemoteCommand::roads()
{
    QTest::addColumn<bool>("pooled");
    QTest::newRow("unpooled") << false;
    QTest::newRow("pooled") << true;
}

TestTransport &TestRemoteCommand::transport()
{
    QFETCH(const bool, pooled);
    m_transport->settings.setUseConnectionPooling(pooled);
    return *m_transport;
}

void TestRemoteCommand::initTestCase()
{
    QVERIFY2(m_sshd.up(RigSshd::isRoot() ? RigSshd::Accounts::Created : RigSshd::Accounts::Present),
             qPrintable(m_sshd.error()));
}

void TestRemoteCommand::init()
{
    m_transport = std::make_unique<TestTransport>();
}

void TestRemoteCommand::cleanup()
{
    m_transport->quit();
    QCOMPARE(m_transport->askpassScripts(), QStringList());
    QCOMPARE(m_transport->controlSockets(), QStringList());
    m_transport.reset();
}

void TestRemoteCommand::keyLogin()
{
    const Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
    const QString line = u"printf '%s' \"a  b\" 'ü$x'; echo to-error >&2; exit 7"_s;
    const CommandResult result = transport().run(server, line);
    QCOMPARE(QString::fromUtf8(result.output), u"a  bü$x"_s);
    QCOMPARE(result.error, "to-error\n");
    QCOMPARE(result.exitCode, 7);
    QCOMPARE(result.command, line);
}

void TestRemoteCommand::keyWithPassphrase()
{
    Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
    server.privateKeyPath = m_sshd.passphraseKey();
    TestTransport &road = transport();
    QCOMPARE(road.run(server, u"true"_s).exitCode, CommandResult::kSshFailed);

    QVERIFY(
        QCoro::waitFor(road.keychain.savePassword(KeychainManager::passphraseAccount(server), m_sshd.passphrase())));
    QCOMPARE(road.run(server, u"echo in"_s).output, "in\n");
}

void TestRemoteCommand::agent()
{
    const QString socket = m_sshd.agentSocket();
    QVERIFY2(!socket.isEmpty(), qPrintable(m_sshd.error()));
    const QByteArray before = qgetenv("SSH_AUTH_SOCK");
    qputenv("SSH_AUTH_SOCK", socket.toUtf8());
    const CommandResult result = transport().run(TestTransport::server(m_sshd, AuthMethod::SshAgent), u"echo in"_s);
    qputenv("SSH_AUTH_SOCK", before);
    QCOMPARE(result.output, "in\n");
}

void TestRemoteCommand::passwords_data()
{
    QTest::addColumn<bool>("pooled");
    QTest::addColumn<QString>("password");
    const QList<std::pair<const char *, QString>> secrets{
        {"plain", u"correct horse"_s},        {"quotes", u"it's \"it\""_s},      {"backslash", u"a\\b\\\\c\\"_s},
        {"dollar", u"$HOME $(id) ${x"_s},     {"back-quote", u"`id`"_s},         {"blanks", u"  two  blanks  "_s},
        {"non-ASCII", u"pässwörd 日本 🙂"_s}, {"looks like an option", u"-n"_s}, {"bang", u"!! !x"_s}};
    for (const auto &[name, password] : secrets) {
        QTest::addRow("unpooled, %s", name) << false << password;
        QTest::addRow("pooled, %s", name) << true << password;
    }
}

void TestRemoteCommand::passwords()
{
    RIG_NEEDS_ROOT();
    QFETCH(const QString, password);
    QVERIFY2(m_sshd.setPassword(password), qPrintable(m_sshd.error()));
    const Server server = TestTransport::server(m_sshd, AuthMethod::Password, m_sshd.passwordAccount());
    QVERIFY(QCoro::waitFor(m_transport->keychain.savePassword(server, password)));
    const CommandResult result = transport().run(server, u"id -un"_s);
    QVERIFY2(result.succeeded(), result.error.constData());
    QCOMPARE(QString::fromUtf8(result.output).trimmed(), m_sshd.passwordAccount());
}

void TestRemoteCommand::wrongPassword()
{
    RIG_NEEDS_ROOT();
    const Server server = TestTransport::server(m_sshd, AuthMethod::Password, m_sshd.passwordAccount());
    QVERIFY(QCoro::waitFor(m_transport->keychain.savePassword(server, u"not this one"_s)));
    const CommandResult result = transport().run(server, u"id"_s, 20);
    QCOMPARE(result.exitCode, CommandResult::kSshFailed);
    QCOMPARE(result.output, "");
}

void TestRemoteCommand::passwordServerWithoutPassword()
{
    QElapsedTimer clock;
    clock.start();
    m_transport->settings.setUseConnectionPooling(false);
    const CommandResult result = m_transport->run(TestTransport::server(m_sshd, AuthMethod::Password), u"id"_s, 20);
    QCOMPARE(result.exitCode, CommandResult::kSshFailed);
    QVERIFY(clock.elapsed() < 15000); // it neither asks on a terminal nor waits for an answer
}

void TestRemoteCommand::outputThatIsNoText()
{
    const CommandResult result = transport().run(TestTransport::server(m_sshd, AuthMethod::PublicKey),
                                                 u"printf 'ok\\377'; printf '\\303\\050' >&2; exit 3"_s);
    QCOMPARE(result.output, "");
    QCOMPARE(result.error, "");
    QCOMPARE(result.exitCode, 3);
}

void TestRemoteCommand::muchOutput()
{
    constexpr qsizetype kBytes = 200 * 1000 * 1000;
    const CommandResult result = transport().run(
        TestTransport::server(m_sshd, AuthMethod::PublicKey),
        u"head -c %1 /dev/zero | tr '\\0' x; head -c 1000000 /dev/zero | tr '\\0' y >&2"_s.arg(kBytes), 100);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.output.size(), kBytes);
    QCOMPARE(result.error.size(), 1000000);
}

void TestRemoteCommand::timeLimit()
{
    const Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
    TestTransport &road = transport();
    QCOMPARE(road.run(server, u"echo warm"_s).output, "warm\n");
    QElapsedTimer clock;
    clock.start();
    const CommandResult result = road.run(server, u"echo begun; echo warned >&2; sleep 30"_s, 2.5);
    QCOMPARE(result.exitCode, CommandResult::kTimedOut);
    QVERIFY2(result.error.startsWith("Command execution timed out after 2.5 seconds\n"), result.error.constData());
    QVERIFY(result.error.contains("warned"));
    QCOMPARE(result.output, "begun\n");
    QVERIFY2(clock.elapsed() >= 2500 && clock.elapsed() < 6000, qPrintable(QString::number(clock.elapsed())));
}

void TestRemoteCommand::serverDropsTheLine()
{
    const Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
    TestTransport &road = transport();
    auto running = road.manager.executeCommand(u"echo begun; sleep 60"_s, server, false, 50.0);
    QTest::qWait(1500);
    QVERIFY2(m_sshd.drop(), qPrintable(m_sshd.error()));
    const CommandResult result = QCoro::waitFor(running);
    QCOMPARE(result.exitCode, CommandResult::kSshFailed);
    QCOMPARE(result.output, "begun\n");
    QCOMPARE(road.run(server, u"echo again"_s, 20).output, "again\n");
}

void TestRemoteCommand::serverDoesNotAnswer()
{
    m_transport->settings.setUseConnectionPooling(false);
    QVERIFY2(m_sshd.hang(), qPrintable(m_sshd.error()));
    QElapsedTimer clock;
    clock.start();
    const CommandResult result =
        m_transport->run(TestTransport::server(m_sshd, AuthMethod::PublicKey), u"true"_s, 2.0);
    QVERIFY2(m_sshd.resume(), qPrintable(m_sshd.error()));
    QVERIFY2(result.exitCode == CommandResult::kTimedOut || result.exitCode == CommandResult::kSshFailed,
             qPrintable(QString::number(result.exitCode)));
    QVERIFY(clock.elapsed() < 6000);
}

void TestRemoteCommand::closedAndRefused()
{
    const Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
    const SystemSSHConnection::Transport parts{m_transport->launcher, m_transport->pool, m_transport->settings};
    const auto runOn = [&](const Server &target, bool closes) {
        SystemSSHConnection connection(parts, target, {}, {});
        if (closes) {
            connection.cleanup();
        }
        return QCoro::waitFor(connection.executeCommand(u"echo ran"_s, std::nullopt));
    };
    const int logins = m_sshd.logins();
    QCOMPARE(runOn(server, true), (CommandResult{"", "Connection closed", -1, u"echo ran"_s}));

    Server option = server;
    option.username = u"-oProxyCommand=true"_s;
    QCOMPARE(runOn(option, false).exitCode, CommandResult::kNotRun);
    QVERIFY(runOn(option, false).error.contains("Username"));
    option = server;
    option.host = u"-oProxyCommand=true"_s;
    QVERIFY(runOn(option, false).error.contains("Host"));
    Server keyless = server;
    keyless.privateKeyPath.reset();
    QCOMPARE(runOn(keyless, false),
             (CommandResult{"", "SSH key path is required for key authentication", -1, u"echo ran"_s}));
    QCOMPARE(m_sshd.logins(), logins);
}

void TestRemoteCommand::missingClient()
{
    SSHLauncher launcher(m_transport->children, m_transport->tracker, m_transport->askpass, u"/nonexistent/ssh"_s);
    SSHConnectionPool pool(launcher, m_transport->settings, m_transport->runtimeDirectory);
    SystemSSHConnection connection({launcher, pool, m_transport->settings},
                                   TestTransport::server(m_sshd, AuthMethod::PublicKey), {}, {});
    const CommandResult result = QCoro::waitFor(connection.executeCommand(u"true"_s, 5.0));
    QCOMPARE(result.exitCode, CommandResult::kNotRun);
    QVERIFY(!result.error.isEmpty());
}

void TestRemoteCommand::theServerSpeaksEnglish()
{
    QProcessEnvironment base;
    base.insert(u"LANG"_s, u"en_GB.UTF-8"_s);
    base.insert(u"LC_ALL"_s, u"de_DE.UTF-8"_s);
    base.insert(u"LANGUAGE"_s, u"de:en"_s);
    base.insert(u"LC_TIME"_s, u"de_DE.UTF-8"_s);
    base.insert(u"LC_CTYPE"_s, u"fr_FR.UTF-8"_s);
    const QProcessEnvironment children = SSHLauncher::commandEnvironment(base);
    QStringList variables = children.toStringList();
    variables.sort();
    QCOMPARE(variables, (QStringList{u"LANG=de_DE.UTF-8"_s, u"LC_CTYPE=fr_FR.UTF-8"_s, u"LC_MESSAGES=C"_s,
                                     u"LC_NUMERIC=C"_s, u"LC_TIME=C"_s}));
}

QTEST_GUILESS_MAIN(TestRemoteCommand)
#include "test_remote_command.moc"
