#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include "Services/Terminal/HostedSSHManager.h"

#include <QCoroTask>
#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <csignal>
#include <sys/types.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kClosed = "\r\n\x1b[1;33m\u25c9 Connection closed\x1b[0m\r\n";
constexpr int kPatience = 15'000;

// The clients that this program started and that are not waited for yet.
QList<pid_t> clients()
{
    QList<pid_t> found;
    for (const QString &name : QDir(u"/proc"_s).entryList({u"[0-9]*"_s}, QDir::Dirs)) {
        QFile stat(u"/proc/%1/stat"_s.arg(name));
        if (stat.open(QIODevice::ReadOnly)) {
            const QByteArray line = stat.readAll();
            const bool isMine = line.mid(line.lastIndexOf(')') + 2).split(' ').value(1).toInt() == ::getpid();
            if (isMine && line.contains("(ssh)")) {
                found.append(name.toInt());
            }
        }
    }
    return found;
}

/// A session and what it has shown.
class Session
{
public:
    Session(TestTransport &transport, const Server &server, SSHLauncher *launcher = nullptr)
        : manager(
              {launcher ? *launcher : transport.launcher, transport.keychain, transport.settings, transport.prompt},
              transport.manager, server)
        , connected(&manager, &HostedSSHManager::terminalConnected)
        , disconnected(&manager, &HostedSSHManager::terminalDisconnected)
        , states(&manager, &HostedSSHManager::connectionStateChanged)
    {
        manager.setOutputHandler([this](QByteArrayView text) {
            allValid = allValid && text.isValidUtf8();
            output += text;
        });
    }

    bool shows(const QByteArray &text, int patience = kPatience) const
    {
        return QTest::qWaitFor([&] { return output.contains(text); }, patience);
    }

    /// Connects and waits for the shell.
    bool open(HostedSSHManager::TerminalSize size = {})
    {
        manager.connect(size);
        return says("echo re''ady", "ready");
    }

    /// Types a line, and waits for what it prints.
    bool says(const QByteArray &line, const QByteArray &text)
    {
        manager.send(line + '\n');
        return shows(text);
    }

    bool closes(int patience = kPatience) const
    {
        return QTest::qWaitFor([&] { return !disconnected.isEmpty(); }, patience);
    }

    QByteArray output;
    bool allValid = true;
    HostedSSHManager manager;
    QSignalSpy connected;
    QSignalSpy disconnected;
    QSignalSpy states;
};

/// The longest time for which the event loop did not turn.
class Stalls : public QObject
{
public:
    Stalls()
    {
        m_timer.callOnTimeout(this, [this] { longest = std::max(longest, m_clock.restart()); });
        m_clock.start();
        m_timer.start(1);
    }

    qint64 longest = 0;

private:
    QElapsedTimer m_clock;
    QTimer m_timer;
};

} // namespace

/// Terminal sessions against a real daemon: what goes in, what comes out, and how they end.
class TestHostedSSHManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void lifeOfASession();
    void sizes();
    void charactersArriveWhole();
    void nothingIsLostAtTheEnd();
    void killedClient();
    void forcedEnd();
    void stoppedClient();
    void endAtOnce();
    void pasteToAShellThatDoesNotRead();
    void typedAhead();
    void outputWaitsWithTheClient();
    void interrupt();
    void passPhraseIsAskedOnTheTerminal();
    void unknownHostIsAskedOnTheTerminal();
    void interruptBeforeLogin();
    void password();
    void wrongPassword();
    void deletedWhileTheKeychainOpens();
    void cannotStart();

private:
    RigSshd m_sshd;
    Server m_server;
    std::unique_ptr<TestTransport> m_transport;
};

void TestHostedSSHManager::initTestCase()
{
    QVERIFY2(m_sshd.up(RigSshd::isRoot() ? RigSshd::Accounts::Created : RigSshd::Accounts::Present),
             qPrintable(m_sshd.error()));
}

void TestHostedSSHManager::init()
{
    m_transport = std::make_unique<TestTransport>();
    m_server = TestTransport::server(m_sshd, AuthMethod::PublicKey, m_sshd.plainAccount());
}

void TestHostedSSHManager::cleanup()
{
    QTRY_COMPARE(clients(), QList<pid_t>());
    QCOMPARE(m_transport->tracker.count(), 0);
    QCOMPARE(m_transport->askpassScripts(), QStringList());
}

void TestHostedSSHManager::lifeOfASession()
{
    Session session(*m_transport, m_server);
    QCOMPARE(session.manager.masterFD(), -1);
    session.manager.send("lost\n");
    QVERIFY(session.open({100, 30}));
    QCOMPARE(session.manager.connectionState(), TerminalConnectionState::connected);
    QCOMPARE(session.connected.count(), 1);
    QCOMPARE(session.connected.at(0).at(0).toUuid(), m_server.id);
    QCOMPARE(m_transport->tracker.count(), 1);
    const pid_t pid = session.manager.processId();
    QCOMPARE(::getsid(pid), pid);

    session.manager.connect({});
    QCOMPARE(session.manager.processId(), pid);
    QVERIFY(session.says("echo \"<$TERM|$(tty | cut -c1-9)>\"", "<xterm-256color|/dev/pts/>"));

    session.manager.send("exit\n");
    QVERIFY(session.closes());
    QVERIFY(session.output.endsWith(kClosed));
    QCOMPARE(session.disconnected.at(0).at(0).toUuid(), m_server.id);
    QCOMPARE(session.states.count(), 3);
    QCOMPARE(session.manager.masterFD(), -1);
    QCOMPARE(session.manager.processId(), -1);
    QVERIFY(::kill(pid, 0) != 0);
    session.manager.send("lost\n");
    session.manager.resizeTerminal(10, 10);
}

void TestHostedSSHManager::sizes()
{
    Session session(*m_transport, m_server);
    QVERIFY(session.open({100, 30}));
    QVERIFY(session.says("stty size", "30 100\r\n"));
    session.manager.resizeTerminal(132, 43);
    QVERIFY(session.says("stty size", "43 132\r\n"));
    session.manager.resizeTerminal(5000, 0);
    QVERIFY(session.says("stty size", "1 1000\r\n"));
    session.manager.resizeTerminal(-1, 1001);
    QVERIFY(session.says("stty size | tr ' ' -", "1000-1"));
}

void TestHostedSSHManager::charactersArriveWhole()
{
    Session session(*m_transport, m_server);
    QVERIFY(session.open());
    QVERIFY(session.says(R"(printf 'a\342'; sleep 0.1; printf '\202'; sleep 0.1; printf '\254z\n')", "a\u20acz"));
    QVERIFY(session.says(R"(printf 'b\377\300c\n')", "bc"));
    // More undecodable bytes than are skipped at once, and nothing behind them is lost.
    QVERIFY(session.says(R"(head -c 300000 /dev/zero | tr '\0' '\377'; echo af''ter)", "after"));
    QVERIFY(session.says("head -c 300000 /dev/urandom; reset; echo ba''ck", "back"));
    QVERIFY(session.allValid);
    // A character that never ends is not kept back for ever.
    session.manager.send("printf 'x\\342\\202'; exec kill -9 $$\n");
    QVERIFY(session.closes());
    QVERIFY(session.output.contains("x\uFFFD"));
    QVERIFY(session.output.endsWith(kClosed));
}

void TestHostedSSHManager::nothingIsLostAtTheEnd()
{
    Session session(*m_transport, m_server);
    QVERIFY(session.open());
    session.manager.send("stty -opost; echo st''art; exec seq 1 300000\n");
    QVERIFY(session.closes());
    const qsizetype at = session.output.indexOf("start\n1\n2\n3\n");
    QVERIFY(at > 0);
    QByteArray expected = "start\n";
    for (int i = 1; i <= 300'000; ++i) {
        expected += QByteArray::number(i) + '\n';
    }
    QVERIFY(session.output.mid(at) == expected + kClosed);
}

void TestHostedSSHManager::killedClient()
{
    Session session(*m_transport, m_server);
    QVERIFY(session.open());
    ::kill(session.manager.processId(), SIGKILL);
    QVERIFY(session.closes());
    QVERIFY(session.output.endsWith(kClosed));
    session.manager.forceDisconnect();
    QCOMPARE(session.states.count(), 3);
}

void TestHostedSSHManager::forcedEnd()
{
    Session session(*m_transport, m_server);
    QVERIFY(session.open());
    const pid_t pid = session.manager.processId();
    session.manager.forceDisconnect();
    session.manager.forceDisconnect();
    QCOMPARE(session.manager.connectionState(), TerminalConnectionState::disconnected);
    QCOMPARE(session.manager.masterFD(), -1);
    QCOMPARE(m_transport->tracker.count(), 0);
    QTRY_VERIFY(::kill(pid, 0) != 0);
    QTest::qWait(50);
    QCOMPARE(session.states.count(), 3);
    QCOMPARE(session.disconnected.count(), 0);
    session.manager.connect({});
    QCOMPARE(session.manager.connectionState(), TerminalConnectionState::disconnected);
}

void TestHostedSSHManager::stoppedClient()
{
    // It takes no SIGTERM; its owner goes meanwhile.
    auto session = std::make_unique<Session>(*m_transport, m_server);
    QVERIFY(session->open());
    const pid_t pid = session->manager.processId();
    ::kill(pid, SIGSTOP);
    QElapsedTimer clock;
    clock.start();
    session.reset();
    QVERIFY(clock.elapsed() < 25);
    QTRY_VERIFY(::kill(pid, 0) != 0);
}

void TestHostedSSHManager::endAtOnce()
{
    Session session(*m_transport, m_server);
    QVERIFY(session.open());
    const pid_t pid = session.manager.processId();
    ::kill(pid, SIGSTOP);
    session.manager.endNow();
    QVERIFY(::kill(pid, 0) != 0);
    QCOMPARE(m_transport->tracker.count(), 0);
    QCOMPARE(session.disconnected.count(), 0);
}

void TestHostedSSHManager::pasteToAShellThatDoesNotRead()
{
    constexpr int kSize = 10'000'000;
    QByteArray paste(kSize, Qt::Uninitialized);
    std::generate(paste.begin(), paste.end(), [i = 0]() mutable { return static_cast<char>('a' + i++ % 23); });
    const QByteArray sum = QCryptographicHash::hash(paste, QCryptographicHash::Md5).toHex();

    Session session(*m_transport, m_server);
    QVERIFY(session.open());
    QVERIFY(session.says("stty raw -echo; echo wait''ing; sleep 1; head -c 10000000 | md5sum", "waiting"));
    Stalls stalls;
    session.manager.send(paste.first(kSize / 2));
    session.manager.send(paste.sliced(kSize / 2));
    QTest::qWait(300);
    QVERIFY2(stalls.longest < 400, qPrintable(QString::number(stalls.longest)));
    QVERIFY(session.shows(sum));
    QVERIFY2(stalls.longest < 400, qPrintable(QString::number(stalls.longest)));
}

void TestHostedSSHManager::typedAhead()
{
    // Longer than the system keeps of a line that nobody has read yet, before the client has even logged in.
    QByteArray lines;
    for (int i = 0; i < 500; ++i) {
        lines += "line " + QByteArray::number(i) + " of a long paste\n";
    }
    QVERIFY(lines.size() > 8192);
    const QByteArray sum = QCryptographicHash::hash(lines, QCryptographicHash::Md5).toHex();
    Session session(*m_transport, m_server);
    session.manager.connect({});
    session.manager.send("cat <<'END' | md5sum\n" + lines + "END\n");
    QVERIFY(session.shows(sum));
}

void TestHostedSSHManager::outputWaitsWithTheClient()
{
    Session session(*m_transport, m_server);
    bool wanted = true;
    session.manager.setWantsOutput([&] { return wanted; });
    QVERIFY(session.open());
    wanted = false;
    const qsizetype before = session.output.size();
    session.manager.send("seq 1 1000000; echo do''ne\n");
    Stalls stalls;
    QTest::qWait(500);
    QCOMPARE(session.output.size(), before);
    QVERIFY(stalls.longest < 400);
    wanted = true;
    QVERIFY(session.shows("done"));
    QVERIFY(session.output.contains("\r\n999999\r\n1000000\r\ndone"));
}

void TestHostedSSHManager::interrupt()
{
    Session session(*m_transport, m_server);
    QVERIFY(session.open());
    QVERIFY(session.says("PS1='he''re> '; yes", "y\r\ny\r\ny\r\n"));
    QTest::qWait(500);
    session.output.clear();
    QElapsedTimer clock;
    clock.start();
    session.manager.send("\x03");
    QVERIFY(session.shows("here> "));
    QVERIFY2(clock.elapsed() < 500, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(session.says("echo al''ive", "alive"));
}

void TestHostedSSHManager::passPhraseIsAskedOnTheTerminal()
{
    m_server.privateKeyPath = m_sshd.passphraseKey();
    Session session(*m_transport, m_server);
    session.manager.connect({});
    QVERIFY(session.shows("Enter passphrase for key"));
    session.manager.send("wrong\r");
    QTRY_COMPARE(session.output.count("Enter passphrase for key"), 2);
    session.manager.send(m_sshd.passphrase().toUtf8() + '\r');
    QVERIFY(session.shows("$ ")); // the client drops what is typed before
    QVERIFY(session.says("echo in''side", "inside"));
    QVERIFY(!session.output.contains(m_sshd.passphrase().toUtf8()));
}

void TestHostedSSHManager::unknownHostIsAskedOnTheTerminal()
{
    // Of several values the client takes the first: this is an operator whose system asks.
    QTemporaryDir directory;
    const QString path = directory.filePath(u"ssh"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\nexec " + m_transport->sshPath.toUtf8() + " -o StrictHostKeyChecking=ask \"$@\"\n");
    file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    file.close();
    SSHLauncher launcher(m_transport->children, m_transport->tracker, m_transport->askpass, path);

    Session session(*m_transport, m_server, &launcher);
    session.manager.connect({});
    QVERIFY(session.shows("authenticity of host"));
    QVERIFY(session.shows("(yes/no"));
    session.manager.send("yes\r");
    QVERIFY(session.shows("$ "));
    QVERIFY(session.says("echo in''side", "inside"));
    QFile known(m_transport->knownHosts());
    QVERIFY(known.open(QIODevice::ReadOnly) && !known.readAll().isEmpty());
}

void TestHostedSSHManager::interruptBeforeLogin()
{
    m_server.privateKeyPath = m_sshd.passphraseKey();
    Session session(*m_transport, m_server);
    session.manager.connect({});
    QVERIFY(session.shows("Enter passphrase for key"));
    session.manager.send("\x03");
    QVERIFY(session.closes());
}

void TestHostedSSHManager::password()
{
    RIG_NEEDS_ROOT();
    const Server server = TestTransport::server(m_sshd, AuthMethod::Password, m_sshd.passwordAccount());
    QVERIFY(QCoro::waitFor(m_transport->manager.testConnection(server, m_sshd.password(), {}, {})).success);
    m_transport->askpass.removeAll();
    Session session(*m_transport, server);
    session.manager.connect({});
    QTRY_VERIFY(session.manager.askpassScriptPath());
    QCOMPARE(m_transport->askpassScripts().size(), 1);
    QVERIFY(session.says("echo in''side", "inside"));
    QVERIFY(!session.output.contains("assword"));
    session.manager.forceDisconnect();
    QCOMPARE(m_transport->askpassScripts(), QStringList());
}

void TestHostedSSHManager::wrongPassword()
{
    RIG_NEEDS_ROOT();
    const Server server = TestTransport::server(m_sshd, AuthMethod::Password, m_sshd.passwordAccount());
    QVERIFY(!QCoro::waitFor(m_transport->manager.testConnection(server, u"another"_s, {}, {})).success);
    m_transport->askpass.removeAll();
    Session session(*m_transport, server);
    session.manager.connect({});
    QVERIFY(session.closes(30'000));
    QCOMPARE(session.output, QByteArray(kClosed));
    QVERIFY(!session.manager.askpassScriptPath());
}

void TestHostedSSHManager::deletedWhileTheKeychainOpens()
{
    const Server server = TestTransport::server(m_sshd, AuthMethod::Password, m_sshd.plainAccount());
    {
        Session session(*m_transport, server);
        session.manager.connect({});
        session.manager.forceDisconnect();
        QCOMPARE(session.manager.connectionState(), TerminalConnectionState::disconnected);
        QTest::qWait(50);
        QCOMPARE(session.manager.processId(), -1);
    }
    Session session(*m_transport, server);
    session.manager.connect({});
}

void TestHostedSSHManager::cannotStart()
{
    SSHLauncher launcher(m_transport->children, m_transport->tracker, m_transport->askpass, u"/nowhere/ssh"_s);
    Session session(*m_transport, m_server, &launcher);
    session.manager.connect({});
    QCOMPARE(session.output,
             QByteArray("\r\n\x1b[31m\u2717 Failed to start SSH: No such file or directory\x1b[0m\r\n"));
    QCOMPARE(session.manager.connectionState(), TerminalConnectionState::disconnected);
    QCOMPARE(session.connected.count() + session.disconnected.count(), 0);

    m_server.username = u"-oProxyCommand=true"_s;
    Session refused(*m_transport, m_server);
    refused.manager.connect({});
    QVERIFY(refused.output.contains("Failed to start SSH: "));
    QCOMPARE(refused.manager.processId(), -1);
}

QTEST_GUILESS_MAIN(TestHostedSSHManager)
#include "test_hosted_ssh_manager.moc"
