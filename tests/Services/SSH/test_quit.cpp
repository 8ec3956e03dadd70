#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include <QCoroTask>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <csignal>
#include <linux/sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

/// The end of the program with work under way: nothing of it stays behind, and no task stays unanswered.
class TestQuit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void leavesNothingBehind_data();
    void leavesNothingBehind();
    void neverSignalsAnotherProcess();

private:
    RigSshd m_sshd;
};

namespace
{

// The children of this process that have not been reaped, proc(5).
QByteArray childrenOfThisProcess()
{
    QFile file(u"/proc/self/task/%1/children"_s.arg(::gettid()));
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray("unreadable");
}

// A process that sleeps, with the number `wanted` if that is not 0 and the kernel lets us choose, clone3(2).
pid_t sleeper(pid_t wanted)
{
    clone_args arguments{};
    arguments.exit_signal = SIGCHLD;
    arguments.set_tid = wanted == 0 ? 0 : reinterpret_cast<quintptr>(&wanted);
    arguments.set_tid_size = wanted == 0 ? 0 : 1;
    const auto pid = static_cast<pid_t>(::syscall(SYS_clone3, &arguments, sizeof(arguments)));
    if (pid == 0) {
        ::signal(SIGTERM, SIG_DFL); // not QtTest's handler
        ::sleep(60);
        ::_exit(0);
    }
    return pid;
}

bool endedBySignal(pid_t child)
{
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFSIGNALED(status);
}

} // namespace

void TestQuit::initTestCase()
{
    QVERIFY2(m_sshd.up(), qPrintable(m_sshd.error()));
}

void TestQuit::leavesNothingBehind_data()
{
    QTest::addColumn<bool>("pooled");
    QTest::addColumn<bool>("hangs");
    QTest::newRow("logins of their own") << false << false;
    QTest::newRow("over a master") << true << false;
    QTest::newRow("during the login") << true << true;
}

void TestQuit::leavesNothingBehind()
{
    QFETCH(const bool, pooled);
    QFETCH(const bool, hangs);
    TestTransport transport;
    transport.settings.setUseConnectionPooling(pooled);
    Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
    server.privateKeyPath = m_sshd.passphraseKey(); // so that there are askpass scripts as well
    QVERIFY(QCoro::waitFor(
        transport.keychain.savePassword(KeychainManager::passphraseAccount(server), m_sshd.passphrase())));
    if (hangs) {
        QVERIFY2(m_sshd.hang(), qPrintable(m_sshd.error()));
    }
    int answered = 0;
    int cancelled = 0;
    for (int i = 0; i < 50; ++i) {
        transport.manager.executeCommand(u"echo begun; exec sleep 60"_s, server, false)
            .then([&](const CommandResult &result) {
                ++answered;
                cancelled += result.exitCode == CommandResult::kNotRun ? 1 : 0;
            });
    }
    QTRY_VERIFY_WITH_TIMEOUT(transport.children.count() >= (hangs ? 1 : 8), 30000);
    QTest::qWait(1000);
    QCOMPARE(answered, 0);

    QElapsedTimer clock;
    clock.start();
    transport.quit();
    QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(answered, 50);
    QCOMPARE(cancelled, 50);
    QCOMPARE(childrenOfThisProcess(), "");
    QCOMPARE(
        QDir(transport.runtimeDirectory.path()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
        QStringList{u"lock"_s});
    if (hangs) {
        QVERIFY2(m_sshd.resume(), qPrintable(m_sshd.error()));
    }
}

void TestQuit::neverSignalsAnotherProcess()
{
    if (!RigSshd::isRoot()) {
        QSKIP("needs root: a process with a chosen number is made");
    }
    SSHProcessTracker tracker;
    const pid_t child = sleeper(0);
    tracker.trackTarnwellProcess(child);
    tracker.forceKillTarnwellProcesses();
    QVERIFY(endedBySignal(child));
    QCOMPARE(tracker.count(), 0);
    tracker.trackTarnwellProcess(child);
    QCOMPARE(tracker.count(), 0); // gone: there is nothing to track

    // The number of a child that ended unnoticed is given to another process.
    const pid_t tracked = sleeper(0);
    tracker.trackTarnwellProcess(tracked);
    ::kill(tracked, SIGKILL);
    QVERIFY(endedBySignal(tracked));
    ::usleep(50'000); // the start time counts in hundredths of a second
    const pid_t stranger = sleeper(tracked);
    if (stranger != tracked) {
        QSKIP("the kernel gives no process a chosen number here");
    }
    tracker.forceKillTarnwellProcesses();
    int status = 0;
    QCOMPARE(::waitpid(stranger, &status, WNOHANG), 0); // still runs
    ::kill(stranger, SIGKILL);
    QVERIFY(endedBySignal(stranger));
}

QTEST_GUILESS_MAIN(TestQuit)
#include "test_quit.moc"
