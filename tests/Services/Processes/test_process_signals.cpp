#include "rig/HostSession.h"
#include "rig/ScriptedServer.h"

#include "Services/Processes/ProcessSignals.h"

#include <QProcess>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <limits>
#include <unistd.h>

using namespace Qt::StringLiterals;

using ProcessSignals::Outcome;
using ProcessSignals::Request;

namespace
{

Request request(qint64 pid, std::optional<ProcessSignal> signal = std::nullopt, const QString &user = u"eve"_s)
{
    return {ProcessInfo{.pid = QString::number(pid), .user = user}, signal};
}

// A line in a shell of this machine.
CommandResult runIn(const QString &shell, const QString &line)
{
    QProcess process;
    process.start(shell, {u"-c"_s, line});
    process.waitForFinished();
    return {process.readAllStandardOutput(), process.readAllStandardError(), process.exitCode(), line};
}

} // namespace

class TestProcessSignals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startTimes_data();
    void startTimes();
    void whoGetsSudo_data();
    void whoGetsSudo();
    void answers();
    void lines();
    void realProcesses_data();
    void realProcesses();
    void hosts_data();
    void hosts();
};

void TestProcessSignals::startTimes_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<std::optional<ProcessStart>>("start");
    const auto found = [](qint64 ticks, double seconds) { return std::optional(ProcessStart{ticks, seconds}); };
    QTest::newRow("plain") << QByteArray("7 100\nself 350\n") << found(100, 2.5);
    QTest::newRow("behind a greeting") << QByteArray("7 bells\nWillkommen\n") << std::optional<ProcessStart>();
    QTest::newRow("gone") << QByteArray("7\nself 350\n") << std::optional<ProcessStart>();
    QTest::newRow("no clock") << QByteArray("7 100\nself\n") << std::optional<ProcessStart>();
    QTest::newRow("another's") << QByteArray("77 100\nself 350\n") << std::optional<ProcessStart>();
    QTest::newRow("empty") << QByteArray() << std::optional<ProcessStart>();
    QTest::newRow("largest") << QByteArray("7 -9223372036854775808\nself 9223372036854775807")
                             << found(std::numeric_limits<qint64>::min(), 18446744073709551615.0 / 100);
}

void TestProcessSignals::startTimes()
{
    QFETCH(QByteArray, output);
    QTEST(ProcessStart::parse(output, 7), "start");
}

void TestProcessSignals::whoGetsSudo_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("login");
    QTest::addColumn<bool>("kill");
    QTest::addColumn<bool>("byName");
    QTest::newRow("own") << u"ada"_s << u"ada"_s << false << false;
    QTest::newRow("another's") << u"eve"_s << u"ada"_s << true << true;
    QTest::newRow("root's") << u"root"_s << u"ada"_s << false << true;
    QTest::newRow("root's own") << u"root"_s << u"root"_s << false << false;
    QTest::newRow("another's, as root") << u"eve"_s << u"root"_s << true << false;
}

void TestProcessSignals::whoGetsSudo()
{
    QFETCH(QString, user);
    QFETCH(QString, login);
    Server server = ScriptedServer::server();
    server.username = login;
    QVERIFY(!usesSudo(server, request(7, {}, user)));
    QVERIFY(!usesSudo(server, request(7, ProcessSignal::Kill, user)));
    server.useSudo = true;
    QTEST(usesSudo(server, request(7, {}, user)), "kill");
    QTEST(usesSudo(server, request(7, ProcessSignal::Kill, user)), "byName");
}

void TestProcessSignals::answers()
{
    ScriptedServer scripted;
    const auto send = [&](qint32 exitCode, const QByteArray &error) {
        scripted.setAnswer([=](const QString &line) { return CommandResult{{}, error, exitCode, line}; });
        return QCoro::waitFor(ProcessSignals::send(scripted.manager, ScriptedServer::server(), request(7), 100));
    };
    QCOMPARE(send(0, "a warning").outcome, Outcome::Sent);
    QCOMPARE(send(GuardedProcessCommand::kAnotherProcess, {}).outcome, Outcome::AnotherProcess);
    const auto refused = send(1, "kill: (7) - Operation not permitted\n");
    QCOMPARE(refused.outcome, Outcome::Refused);
    QCOMPARE(refused.error, u"kill: (7) - Operation not permitted"_s);

    scripted.setAnswer([](const QString &) { return CommandResult{{}, "Connection closed\n", 255, {}}; });
    const auto start = QCoro::waitFor(ProcessSignals::findStart(scripted.manager, ScriptedServer::server(), 7));
    QVERIFY(!start.start && !start.isAnswered);
    QCOMPARE(start.error, u"Connection closed"_s);
}

void TestProcessSignals::lines()
{
    QVERIFY(GuardedProcessCommand(KillProcessCommand(7, true), 7, 1).commandString().endsWith(u"' && sudo kill 7"_s));
    QCOMPARE(SignalProcessCommand(7, ProcessSignal::Stop, false).commandString(), u"kill -STOP 7"_s);
    QCOMPARE(SignalProcessCommand(7, ProcessSignal::HangUp, true).commandString(), u"sudo kill -HUP 7"_s);
    QCOMPARE(GuardedProcessCommand(KillProcessCommand(7, false), 7, 1).description(), u"Kill process 7"_s);
}

void TestProcessSignals::realProcesses_data()
{
    QTest::addColumn<QString>("shell");
    QTest::addColumn<QString>("name");
    // The kernel keeps 15 bytes of a process's name, which stands before the start time.
    for (const auto &shell : {u"dash"_s, u"bash"_s, u"tcsh"_s, u"fish"_s, u"zsh"_s}) {
        QTest::newRow(qPrintable(shell)) << shell << u"sleep"_s;
    }
    for (const auto &name : {u"a b) R 1 2"_s, u"x) \n) S (1 2"_s, u") 1 1 1 1 1 1 1"_s}) {
        QTest::newRow(qPrintable(name)) << u"dash"_s << name;
    }
    QTest::newRow("no UTF-8") << u"dash"_s << QString(u"no UTF-8"_s);
}

void TestProcessSignals::realProcesses()
{
    QFETCH(QString, shell);
    QFETCH(QString, name);
    if (QStandardPaths::findExecutable(shell).isEmpty()) {
        QSKIP("this shell is not installed");
    }
    const QTemporaryDir folder;
    const QByteArray path =
        (folder.path() + u'/').toUtf8() + (name == u"no UTF-8"_s ? QByteArray("\xff) \xfe\xc3") : name.toUtf8());
    QCOMPARE(::symlink("/bin/sleep", path.constData()), 0);
    QProcess victim;
    victim.start(u"/bin/sh"_s, {u"-c"_s, u"for f in \"$1\"/*; do exec \"$f\" 60; done"_s, u"sh"_s, folder.path()});
    QVERIFY(victim.waitForStarted());
    const auto cleanUp = qScopeGuard([&] {
        victim.kill();
        victim.waitForFinished();
    });
    const auto status = [&] {
        QFile file(u"/proc/%1/stat"_s.arg(victim.processId()));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const qint64 pid = victim.processId();
    QTRY_VERIFY(!status().contains("(sh)"));

    const auto start = ProcessStart::parse(runIn(shell, ProcessStartCommand(pid).commandString()).output, pid);
    QVERIFY(start && start->secondsAgo >= 0 && start->secondsAgo < 30);
    const QByteArray fields = status();
    QCOMPARE(fields.mid(fields.lastIndexOf(')') + 2).split(' ').value(19).toLongLong(), start->ticks);

    const auto stop = SignalProcessCommand(pid, ProcessSignal::Stop, false);
    const auto kill = KillProcessCommand(pid, false);
    const auto run = [&](const BaseSSHCommand &command, qint64 ticks) {
        return runIn(shell, GuardedProcessCommand(command, pid, ticks).commandString()).exitCode;
    };
    QCOMPARE(run(kill, start->ticks + 1), GuardedProcessCommand::kAnotherProcess);
    QCOMPARE(victim.state(), QProcess::Running);
    QCOMPARE(run(stop, start->ticks), 0);
    QTRY_VERIFY(status().contains(") T "));
    QCOMPARE(run(SignalProcessCommand(pid, ProcessSignal::Continue, false), start->ticks), 0);
    QTRY_VERIFY(status().contains(") S "));
    QCOMPARE(run(kill, start->ticks), 0);
    QVERIFY(victim.waitForFinished());
    QCOMPARE(victim.exitStatus(), QProcess::CrashExit);
    QCOMPARE(run(kill, start->ticks), GuardedProcessCommand::kAnotherProcess);
}

void TestProcessSignals::hosts_data()
{
    QTest::addColumn<QString>("role");
    for (const auto &role : {u"systemd"_s, u"german"_s, u"tcsh"_s, u"dnf"_s, u"busybox"_s}) {
        QTest::newRow(qPrintable(role)) << role;
    }
}

void TestProcessSignals::hosts()
{
    QFETCH(QString, role);
    const RigHosts rig;
    RIG_NEEDS_HOST(host, rig, role);
    HostSession session(host);
    // A greeting may stand before what the line prints.
    const QByteArray printed = session.says(u"sh -c 'sleep 300 >/dev/null 2>&1 </dev/null & echo $!'"_s);
    const qint64 pid = printed.split('\n').last().toLongLong();
    QVERIFY2(pid > 1, printed.constData());
    const auto lives = [&] { return session.run(u"kill -0 %1"_s.arg(pid)).exitCode == 0; };
    QVERIFY(lives());

    CommandSSHManager &manager = session.transport.manager;
    const auto start = QCoro::waitFor(ProcessSignals::findStart(manager, session.server(), pid)).start;
    QVERIFY(start && start->secondsAgo >= 0 && start->secondsAgo < 60);
    const auto send = [&](const Request &what, qint64 ticks) {
        return QCoro::waitFor(ProcessSignals::send(manager, session.server(), what, ticks)).outcome;
    };
    QCOMPARE(send(request(pid), start->ticks - 1), Outcome::AnotherProcess);
    QVERIFY(lives());
    QCOMPARE(send(request(pid, ProcessSignal::HangUp), start->ticks), Outcome::Sent);
    QTRY_VERIFY(!lives());
    QCOMPARE(send(request(pid), start->ticks), Outcome::AnotherProcess);
    if (role != u"busybox"_s) { // where everything belongs to root or to nobody
        const auto init = QCoro::waitFor(ProcessSignals::findStart(manager, session.server(), 1)).start;
        const auto refused = QCoro::waitFor(
            ProcessSignals::send(manager, session.server(), request(1, ProcessSignal::HangUp), init->ticks));
        QCOMPARE(refused.outcome, Outcome::Refused);
        QVERIFY(!refused.error.isEmpty());
    }
}

QTEST_GUILESS_MAIN(TestProcessSignals)
#include "test_process_signals.moc"
