#include "Services/Parsers/Recorded.h"

#include "Services/Parsers/ProcessParser.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kHeading = "USER         PID %CPU %MEM    VSZ   RSS TTY      STAT START   TIME COMMAND\n";

} // namespace

class TestProcessParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordedLists();
    void aLine_data();
    void aLine();
    void whatIsNoProcess_data();
    void whatIsNoProcess();
    void hostileSizes();
};

void TestProcessParser::recordedLists()
{
    const QList<ProcessInfo> debian = ProcessParser::parse(recorded("processes_debian.txt"));
    QCOMPARE(debian.size(), 37);
    QCOMPARE(debian.at(0), (ProcessInfo{.pid = u"892"_s,
                                        .user = u"root"_s,
                                        .cpu = u"9.8"_s,
                                        .memory = u"0.0"_s,
                                        .rssMemoryKB = u"972"_s,
                                        .command = u"/bin/busybox sh -c while :; do :; done & while busybox sleep 1; "
                                                   "do busybox date; done"_s,
                                        .startTime = u"08:12"_s}));
    QCOMPARE(debian.at(3).command, u"/usr/sbin/dockerd -H fd:// --containerd=/run/containerd/containerd.sock"_s);
    QCOMPARE(debian.at(3).rssMemoryKB, u"87860"_s);
    QCOMPARE(debian.last().command, u"ps aux --sort=-%cpu"_s);

    // A greeting before the heading is no process.
    const QList<ProcessInfo> german = ProcessParser::parse(recorded("processes_german.txt"));
    QCOMPARE(german.size(), 41);
    QCOMPARE(german.at(1).user, u"heidi"_s);
}

void TestProcessParser::aLine_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<ProcessInfo>("process");
    const ProcessInfo sleep{.pid = u"7"_s,
                            .user = u"www-data"_s,
                            .cpu = u"99.9"_s,
                            .memory = u"0.1"_s,
                            .rssMemoryKB = u"512"_s,
                            .command = u"sleep 60 x"_s,
                            .startTime = u"Nov20"_s};
    const auto with = [&sleep](QString ProcessInfo::*field, const QString &value) {
        ProcessInfo process = sleep;
        process.*field = value;
        return process;
    };
    QTest::newRow("plain") << QByteArray("www-data 7 99.9 0.1 9 512 ? Ss Nov20 0:00 sleep 60 x") << sleep;
    QTest::newRow("runs of blanks, carriage return")
        << QByteArray("  www-data   7 99.9 0.1 9 512 ? Ss Nov20 0:00 sleep   60    x  \r") << sleep;
    QTest::newRow("kernel thread") << QByteArray("www-data 7 99.9 0.1 9 512 ? Ss Nov20 0:00 [kworker/0:1-events]")
                                   << with(&ProcessInfo::command, u"[kworker/0:1-events]"_s);
    QTest::newRow("comma as point") << QByteArray("www-data 7 99,9 0.1 9 512 ? Ss Nov20 0:00 sleep 60 x")
                                    << with(&ProcessInfo::cpu, u"99,9"_s);
    QTest::newRow("signed pid") << QByteArray("www-data +7 99.9 0.1 9 512 ? Ss Nov20 0:00 sleep 60 x")
                                << with(&ProcessInfo::pid, u"+7"_s);
    QTest::newRow("markup and umlauts") << QByteArray("www-data 7 99.9 0.1 9 512 ? Ss Nov20 0:00 <b>ü</b>")
                                        << with(&ProcessInfo::command, u"<b>ü</b>"_s);
    QTest::newRow("no UTF-8") << QByteArray("www-data 7 99.9 0.1 9 512 ? Ss Nov20 0:00 \xff")
                              << with(&ProcessInfo::command, u"\ufffd"_s);
}

void TestProcessParser::aLine()
{
    QFETCH(QByteArray, line);
    QFETCH(ProcessInfo, process);
    QCOMPARE(ProcessParser::parse(kHeading + line), QList<ProcessInfo>{process});
    QCOMPARE(ProcessParser::parse(kHeading + line + '\n' + line + '\n'), (QList<ProcessInfo>{process, process}));
}

void TestProcessParser::whatIsNoProcess_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("the first line never counts") << QByteArray("root 1 0.0 0.0 9 8 ? Ss 08:12 0:00 init\n");
    QTest::newRow("ten columns") << kHeading + QByteArray("root 1 0.0 0.0 9 8 ? Ss 08:12 0:00 \n");
    QTest::newRow("pid is a word") << kHeading + QByteArray("root one 0.0 0.0 9 8 ? Ss 08:12 0:00 init\n");
    QTest::newRow("pid overflows") << kHeading +
                                          QByteArray("root 9223372036854775808 0.0 0.0 9 8 ? Ss 08:12 0:00 init\n");
    QTest::newRow("cut") << kHeading + QByteArray("root 1 0.0 0.0 9 8");
    QTest::newRow("refused") << QByteArray("bash: ps: Permission denied\nbash: ps: Permission denied\n");
}

void TestProcessParser::whatIsNoProcess()
{
    QFETCH(QByteArray, output);
    QVERIFY(ProcessParser::parse(output).isEmpty());
}

void TestProcessParser::hostileSizes()
{
    const QByteArray line("root 1 0.0 0.0 9 8 ? Ss 08:12 0:00 ");
    const QByteArray words = QByteArray("a  ").repeated(10'000'000 / 3);
    const QList<ProcessInfo> processes = ProcessParser::parse(kHeading + line + words);
    QCOMPARE(processes.size(), 1);
    QCOMPARE(processes.first().command.size(), 2 * (10'000'000 / 3) - 1);
    QVERIFY(ProcessParser::parse(kHeading + QByteArray(10'000'000, ' ')).isEmpty());
    const QByteArray many = QByteArray("a 1 0 0 0 0 ? S 1 0 x\n").repeated(300'000);
    QCOMPARE(ProcessParser::parse(kHeading + many).size(), ProcessParser::kMostProcesses);
}

QTEST_GUILESS_MAIN(TestProcessParser)
#include "test_process_parser.moc"
