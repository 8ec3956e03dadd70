#include "rig/RigSshd.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
struct Answer {
    int code = -1;
    QString output;
    QString error;
};

QProcessEnvironment plainEnvironment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"SSH_AUTH_SOCK"_s);
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    return environment;
}

void start(QProcess &ssh, const QStringList &arguments, const QProcessEnvironment &environment = plainEnvironment())
{
    ssh.setProcessEnvironment(environment);
    ssh.start(u"/usr/bin/ssh"_s, arguments);
    ssh.closeWriteChannel();
}

Answer finish(QProcess &ssh)
{
    if (!ssh.waitForFinished(20'000)) {
        return {-1, {}, ssh.errorString()};
    }
    return {ssh.exitCode(), QString::fromUtf8(ssh.readAllStandardOutput()),
            QString::fromUtf8(ssh.readAllStandardError())};
}

Answer ssh(const QStringList &arguments, const QProcessEnvironment &environment = plainEnvironment())
{
    QProcess child;
    start(child, arguments, environment);
    return finish(child);
}

bool isAlive(qint64 pid)
{
    QFile stat(u"/proc/%1/stat"_s.arg(pid));
    // A dead child stays as a zombie until whoever inherited it looks.
    return stat.open(QIODevice::ReadOnly) && !stat.readAll().contains(") Z ");
}
} // namespace

class TestRigSshd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void keyLogsIn();
    void passphraseIsAskedFor();
    void agentHoldsAKeyOfItsOwn();
    void eleventhSessionIsRefused();
    void newHostKeyIsNoticed();
    void stoppedDaemonGivesNoGreeting();
    void sessionIsDroppedInTheMiddle();
    void accountsForSudo();
    void passwords_data();
    void passwords();
    void nothingIsLeft();
    void nothingIsLeftAfterACrash();

private:
    QStringList with(QStringList arguments, const QString &command) const { return arguments << command; }

    /// The environment in which ssh takes the secret from a script.
    QProcessEnvironment answering(const QString &secret);

    RigSshd m_sshd;
    QTemporaryDir m_scratch;
};

void TestRigSshd::initTestCase()
{
    QVERIFY2(m_sshd.up(RigSshd::isRoot() ? RigSshd::Accounts::Created : RigSshd::Accounts::Present),
             qPrintable(m_sshd.error()));
}

void TestRigSshd::cleanup()
{
    m_sshd.resume();
    QVERIFY2(m_sshd.trust(), qPrintable(m_sshd.error()));
}

QProcessEnvironment TestRigSshd::answering(const QString &secret)
{
    const QString answer = m_scratch.filePath(u"answer"_s);
    QFile file(answer);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        file.write(secret.toUtf8());
    }
    const QString script = m_scratch.filePath(u"askpass.sh"_s);
    QFile askpass(script);
    if (askpass.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        askpass.write("#!/bin/sh\nexec cat '" + answer.toUtf8() + "'\n");
        askpass.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }
    QProcessEnvironment environment = plainEnvironment();
    environment.insert(u"SSH_ASKPASS"_s, script);
    environment.insert(u"SSH_ASKPASS_REQUIRE"_s, u"force"_s);
    environment.insert(u"DISPLAY"_s, u":0"_s);
    return environment;
}

void TestRigSshd::keyLogsIn()
{
    const int before = m_sshd.logins();
    const Answer answer = ssh(with(m_sshd.sshArguments(m_sshd.key()), u"id -un"_s));
    QCOMPARE(answer.output, m_sshd.user() + u'\n');
    QCOMPARE(answer.code, 0);
    QCOMPARE(m_sshd.logins(), before + 1);
    QCOMPARE(ssh(with(m_sshd.sshArguments(u"/dev/null"_s), u"true"_s)).code, 255);
    QCOMPARE(m_sshd.logins(), before + 1);
}

void TestRigSshd::passphraseIsAskedFor()
{
    const QStringList arguments = with(m_sshd.sshArguments(m_sshd.passphraseKey()), u"echo in"_s);
    QCOMPARE(ssh(arguments, answering(m_sshd.passphrase())).output, u"in\n"_s);
    QCOMPARE(ssh(arguments, answering(u"wrong"_s)).code, 255);
}

void TestRigSshd::agentHoldsAKeyOfItsOwn()
{
    const QString socket = m_sshd.agentSocket();
    QVERIFY2(!socket.isEmpty(), qPrintable(m_sshd.error()));
    QCOMPARE(m_sshd.agentSocket(), socket);
    const QStringList arguments =
        with(QStringList{u"-o"_s, u"BatchMode=yes"_s} + m_sshd.sshArguments({}), u"echo in"_s);
    QCOMPARE(ssh(arguments).code, 255);
    QProcessEnvironment environment = plainEnvironment();
    environment.insert(u"SSH_AUTH_SOCK"_s, socket);
    QCOMPARE(ssh(arguments, environment).output, u"in\n"_s);
}

void TestRigSshd::eleventhSessionIsRefused()
{
    const QString socket = m_scratch.filePath(u"m"_s);
    QProcess master;
    start(master, QStringList{u"-M"_s, u"-S"_s, socket, u"-N"_s} + m_sshd.sshArguments(m_sshd.key()));
    QTRY_VERIFY(QFile::exists(socket));
    const QStringList attach = QStringList{u"-S"_s, socket} + m_sshd.sshArguments({});
    std::vector<std::unique_ptr<QProcess>> sessions;
    for (int i = 0; i < 10; ++i) {
        sessions.push_back(std::make_unique<QProcess>());
        start(*sessions.back(), with(attach, u"echo in; exec sleep 60"_s));
        QVERIFY(sessions.back()->waitForReadyRead());
    }
    const Answer eleventh = ssh(
        with(QStringList{u"-o"_s, u"ControlMaster=no"_s, u"-o"_s, u"ProxyCommand=false"_s} + attach, u"echo in"_s));
    QVERIFY2(eleventh.error.contains("Session open refused"_L1), qPrintable(eleventh.error));
    for (const auto &session : sessions) {
        session->kill();
        session->waitForFinished();
    }
    master.terminate();
    master.waitForFinished();
}

void TestRigSshd::newHostKeyIsNoticed()
{
    const QStringList arguments = with(m_sshd.sshArguments(m_sshd.key()), u"echo in"_s);
    const int port = m_sshd.port();
    QVERIFY2(m_sshd.rekey(), qPrintable(m_sshd.error()));
    QCOMPARE(m_sshd.port(), port);
    const Answer changed = ssh(arguments);
    QCOMPARE(changed.code, 255);
    QVERIFY2(changed.error.contains("REMOTE HOST IDENTIFICATION HAS CHANGED"_L1), qPrintable(changed.error));
    QVERIFY(m_sshd.trust());
    QCOMPARE(ssh(arguments).output, u"in\n"_s);
}

void TestRigSshd::stoppedDaemonGivesNoGreeting()
{
    QProcess open;
    start(open, with(m_sshd.sshArguments(m_sshd.key()), u"echo in; read wait; echo out"_s));
    QVERIFY(open.waitForReadyRead());
    QVERIFY(m_sshd.hang());
    const QStringList impatient{u"-o"_s, u"ConnectTimeout=1"_s};
    const QStringList arguments = with(m_sshd.sshArguments(m_sshd.key()), u"echo in"_s);
    const Answer answer = ssh(impatient + arguments);
    QCOMPARE(answer.code, 255);
    QVERIFY2(answer.error.contains("timed out during banner exchange"_L1), qPrintable(answer.error));
    // What was open goes on: its standard input has ended, so the command does.
    QCOMPARE(finish(open).output, u"in\nout\n"_s);
    QVERIFY(m_sshd.resume());
    QCOMPARE(ssh(arguments).output, u"in\n"_s);
}

void TestRigSshd::sessionIsDroppedInTheMiddle()
{
    QProcess child;
    start(child, with(m_sshd.sshArguments(m_sshd.key()), u"echo $$; exec sleep 60"_s));
    QVERIFY(child.waitForReadyRead());
    const qint64 remote = child.readAllStandardOutput().trimmed().toLongLong();
    QVERIFY(isAlive(remote));
    QVERIFY(m_sshd.drop());
    QCOMPARE(finish(child).code, 255);
    QTRY_VERIFY(!isAlive(remote));
    QVERIFY(isAlive(m_sshd.pid()));
}

void TestRigSshd::accountsForSudo()
{
    RIG_NEEDS_ROOT();
    const QString command = u"sudo -n id -u; wc -c <.bashrc"_s;
    QCOMPARE(ssh(with(m_sshd.sshArguments(m_sshd.key(), m_sshd.sudoAccount()), command)).output, u"0\n0\n"_s);
    const Answer plain = ssh(with(m_sshd.sshArguments(m_sshd.key(), m_sshd.plainAccount()), command));
    QCOMPARE(plain.output, u"0\n"_s);
    QVERIFY2(plain.error.contains("password is required"_L1), qPrintable(plain.error));
}

void TestRigSshd::passwords_data()
{
    QTest::addColumn<QString>("secret");
    QTest::newRow("plain") << u"secret0"_s;
    QTest::newRow("quotes") << u"a\"b'c"_s;
    QTest::newRow("shell") << u"\\$HOME `id` $(id)"_s;
    QTest::newRow("blanks") << u"  two  blanks "_s;
    QTest::newRow("beyond ASCII") << u"pässwörd 日本 🙂"_s;
}

void TestRigSshd::passwords()
{
    RIG_NEEDS_ROOT();
    QFETCH(QString, secret);
    QVERIFY2(m_sshd.setPassword(secret), qPrintable(m_sshd.error()));
    const QStringList arguments =
        with(QStringList{u"-o"_s, u"PreferredAuthentications=password"_s, u"-o"_s, u"NumberOfPasswordPrompts=1"_s} +
                 m_sshd.sshArguments({}, m_sshd.passwordAccount()),
             u"id -un"_s);
    QCOMPARE(ssh(arguments, answering(m_sshd.password())).output, m_sshd.passwordAccount() + u'\n');
    QCOMPARE(ssh(arguments, answering(secret + u'x')).code, 255);
}

void TestRigSshd::nothingIsLeft()
{
    RigSshd other;
    QVERIFY2(other.up(RigSshd::isRoot() ? RigSshd::Accounts::Created : RigSshd::Accounts::Present),
             qPrintable(other.error()));
    QProcess child;
    start(child, with(other.sshArguments(other.key(), other.plainAccount()), u"echo $$; exec sleep 60"_s));
    QVERIFY(child.waitForReadyRead());
    const qint64 remote = child.readAllStandardOutput().trimmed().toLongLong();
    const QString detach = u"setsid sleep 60 >/dev/null 2>&1 </dev/null & echo $!"_s;
    const qint64 detached = ssh(with(other.sshArguments(other.key()), detach)).output.trimmed().toLongLong();
    QVERIFY(isAlive(detached));
    const QString directory = other.directory();
    const QString account = other.plainAccount();
    const qint64 pid = other.pid();
    QVERIFY(other.hang(true));
    other.down();
    child.waitForFinished();
    QTRY_VERIFY(!isAlive(remote) && !isAlive(detached) && !isAlive(pid));
    QVERIFY(!QFile::exists(directory));
    QVERIFY(account.isEmpty() || !QFile::exists(u"/home/"_s + account));
}

void TestRigSshd::nothingIsLeftAfterACrash()
{
    // Another process owns this daemon, and dies.
    QProcess owner;
    owner.start(u"sleep"_s, {u"60"_s});
    QVERIFY(owner.waitForStarted());
    const QString directory = m_scratch.filePath(u"owned"_s);
    QProcess script;
    script.start(RigSshd::script(), {u"up"_s, directory, u"--owner"_s, QString::number(owner.processId())});
    QVERIFY(script.waitForFinished());
    QCOMPARE(script.exitCode(), 0);
    QVERIFY(QFile::exists(directory + "/env"_L1));
    owner.kill();
    owner.waitForFinished();
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(directory), 10'000);
}

QTEST_GUILESS_MAIN(TestRigSshd)
#include "test_rig_sshd.moc"
