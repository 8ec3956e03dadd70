#include "Services/Children/ChildProcesses.h"

#include <QCoroTask>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <cerrno>
#include <csignal>

using namespace Qt::StringLiterals;

namespace
{

ChildSetup helper(const QStringList &arguments)
{
    ChildSetup setup;
    setup.program = QStringLiteral(CHILD_HELPER);
    setup.arguments = arguments;
    return setup;
}

bool isGone(qint64 pid)
{
    return ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH;
}

} // namespace

class TestChildProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runsToItsEnd_data();
    void runsToItsEnd();
    void keepsArgumentsApart();
    void drainsBothPipes();
    void feedsStandardInput();
    void tellsWhyNothingRan();
    void timeLimitEndsAChild();
    void stubbornChildIsKilled();
    void endsWithTheChildAndNotWithItsHeirs();
    void leadsASessionOfItsOwn();
    void shutdownResumesEveryTask();
    void shutdownIsFlatForLongChains();
};

void TestChildProcess::runsToItsEnd_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("success") << QStringList{u"exit"_s, u"0"_s} << 0;
    QTest::newRow("failure") << QStringList{u"exit"_s, u"255"_s} << 255;
    QTest::newRow("signal") << QStringList{u"crash"_s} << SIGSEGV;
}

void TestChildProcess::runsToItsEnd()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const int, exitCode);
    ChildProcesses children;
    const ChildOutcome outcome = QCoro::waitFor(children.run(helper(arguments)));
    QCOMPARE(outcome.kind, ChildOutcome::Kind::Exited);
    QCOMPARE(outcome.exitCode, exitCode);
    if (arguments.first() == "exit"_L1) {
        QCOMPARE(outcome.error, "to error");
    }
    QCOMPARE(children.count(), 0);
}

void TestChildProcess::keepsArgumentsApart()
{
    ChildProcesses children;
    const ChildOutcome outcome =
        QCoro::waitFor(children.run(helper({u"arguments"_s, u"a b"_s, u""_s, u"'$(x)\"\\"_s, u"-ü\n"_s})));
    QCOMPARE(QString::fromUtf8(outcome.output), u"[a b][]['$(x)\"\\][-ü\n]"_s);
}

void TestChildProcess::drainsBothPipes()
{
    constexpr qsizetype kBytes = 32 * 1024 * 1024;
    ChildProcesses children;
    ChildSetup setup = helper({u"spew"_s, QString::number(kBytes)});
    setup.timeLimit = 60;
    const ChildOutcome outcome = QCoro::waitFor(children.run(setup));
    QCOMPARE(outcome.kind, ChildOutcome::Kind::Exited);
    QCOMPARE(outcome.output.size(), kBytes);
    QCOMPARE(outcome.error.size(), kBytes);
    QCOMPARE(outcome.output.count('o'), kBytes);
    QCOMPARE(outcome.error.count('e'), kBytes);
}

void TestChildProcess::feedsStandardInput()
{
    ChildProcesses children;
    ChildSetup setup = helper({u"cat"_s});
    QCOMPARE(QCoro::waitFor(children.run(setup)).output, QByteArray());
    setup.input = QByteArray(1'000'000, 'i');
    QCOMPARE(QCoro::waitFor(children.run(setup)).output, setup.input);
}

void TestChildProcess::tellsWhyNothingRan()
{
    ChildProcesses children;
    int started = 0;
    ChildSetup setup;
    setup.program = u"/nonexistent/ssh"_s;
    setup.timeLimit = 30;
    setup.onStarted = [&](qint64) { ++started; };
    const ChildOutcome outcome = QCoro::waitFor(children.run(setup));
    QCOMPARE(outcome.kind, ChildOutcome::Kind::FailedToStart);
    QCOMPARE(outcome.exitCode, -1);
    QVERIFY(!outcome.reason.isEmpty());
    QCOMPARE(started, 0);
    QCOMPARE(children.count(), 0);
}

void TestChildProcess::timeLimitEndsAChild()
{
    ChildProcesses children;
    ChildSetup setup = helper({u"sleep"_s});
    setup.timeLimit = 0.3;
    QElapsedTimer clock;
    clock.start();
    const ChildOutcome outcome = QCoro::waitFor(children.run(setup));
    QCOMPARE(outcome.kind, ChildOutcome::Kind::TimedOut);
    QCOMPARE(outcome.output, "begun");
    QVERIFY2(clock.elapsed() >= 300 && clock.elapsed() < 1900, qPrintable(QString::number(clock.elapsed())));
}

void TestChildProcess::stubbornChildIsKilled()
{
    ChildProcesses children;
    qint64 pid = 0;
    ChildSetup setup = helper({u"stubborn"_s});
    setup.timeLimit = 0.5;
    setup.onStarted = [&](qint64 started) { pid = started; };
    QElapsedTimer clock;
    clock.start();
    const ChildOutcome outcome = QCoro::waitFor(children.run(setup));
    QCOMPARE(outcome.kind, ChildOutcome::Kind::TimedOut);
    QCOMPARE(outcome.exitCode, SIGKILL);
    QVERIFY2(clock.elapsed() >= 2500 && clock.elapsed() < 6000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(isGone(pid));
}

void TestChildProcess::endsWithTheChildAndNotWithItsHeirs()
{
    ChildProcesses children;
    QElapsedTimer clock;
    clock.start();
    const ChildOutcome outcome = QCoro::waitFor(children.run(helper({u"heir"_s})));
    QCOMPARE(outcome.kind, ChildOutcome::Kind::Exited);
    QCOMPARE(outcome.output, "parent");
    QVERIFY(clock.elapsed() < 4000);
}

void TestChildProcess::leadsASessionOfItsOwn()
{
    ChildProcesses children;
    QCOMPARE(QCoro::waitFor(children.run(helper({u"session"_s}))).output, "leader");
}

void TestChildProcess::shutdownResumesEveryTask()
{
    ChildProcesses children;
    std::vector<qint64> pids;
    int cancelled = 0;
    for (int i = 0; i < 50; ++i) {
        ChildSetup setup = helper({u"stubborn"_s});
        setup.onStarted = [&](qint64 pid) { pids.push_back(pid); };
        children.run(setup).then(
            [&](const ChildOutcome &outcome) { cancelled += outcome.kind == ChildOutcome::Kind::Cancelled ? 1 : 0; });
    }
    QTRY_COMPARE_WITH_TIMEOUT(pids.size(), 50U, 30000);
    // One that has not even been reported as started.
    children.run(helper({u"sleep"_s})).then([&](const ChildOutcome &) { ++cancelled; });
    children.shutdown();
    QCOMPARE(cancelled, 51);
    for (const qint64 pid : pids) {
        QVERIFY(isGone(pid));
    }
    const ChildOutcome refused = QCoro::waitFor(children.run(helper({u"exit"_s, u"0"_s})));
    QCOMPARE(refused.kind, ChildOutcome::Kind::Cancelled);
}

void TestChildProcess::shutdownIsFlatForLongChains()
{
    // A task that answers each cancellation with another child must not keep the program from ending.
    ChildProcesses children;
    int runs = 0;
    const auto chain = [](ChildProcesses &all, int &count) -> QCoro::Task<> {
        while (count < 100'000) {
            ++count;
            if ((co_await all.run(helper({u"sleep"_s}))).kind == ChildOutcome::Kind::Cancelled && count > 1000) {
                break;
            }
        }
    };
    const auto task = chain(children, runs);
    children.shutdown();
    QCOMPARE(runs, 1001);
    QVERIFY(task.isReady());
}

QTEST_GUILESS_MAIN(TestChildProcess)
#include "test_child_process.moc"
