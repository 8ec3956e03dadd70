#include "Services/Parsers/Recorded.h"

#include "Services/Parsers/MetricsParser.h"

#include <QTest>
#include <limits>

using namespace Qt::StringLiterals;

class TestMetricsParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cpuUsage_data();
    void cpuUsage();
    void memory_data();
    void memory();
    void network();
    void diskIO();
    void tenMegabytes();
};

void TestMetricsParser::cpuUsage_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<double>("percent");
    QTest::newRow("ordinary") << QByteArray("12.5\n") << 12.5;
    QTest::newRow("CRLF, blanks") << QByteArray("  7\r\n\r\n") << 7.0;
    QTest::newRow("sum of shares") << QByteArray("412.3") << 412.3;
    QTest::newRow("below zero") << QByteArray("-0.5") << -0.5;
    QTest::newRow("greeting before it") << QByteArray("Willkommen auf full\n100\n") << 100.0;
    QTest::newRow("empty") << QByteArray() << 0.0;
    QTest::newRow("warning") << QByteArray("mpstat: command is deprecated\n") << 0.0;
    QTest::newRow("not finite") << QByteArray("nan\n") << 0.0;
    QTest::newRow("refused") << QByteArray("sh: 3: cannot create /tmp/.cpu1: Permission denied\n") << 0.0;
}

void TestMetricsParser::cpuUsage()
{
    QFETCH(QByteArray, output);
    QFETCH(double, percent);
    QCOMPARE(MetricsParser::cpuUsage(output), percent);
}

void TestMetricsParser::memory_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<MemoryMetrics>("memory");
    const MemoryMetrics main{.total = 100, .used = 40, .free = 10, .available = 60, .cached = 50};
    MemoryMetrics both = main;
    both.swapTotal = 9;
    both.swapUsed = 4;
    both.swapFree = 5;
    const QByteArray line("TOTAL:100|USED:40|FREE:10|SHARED:3|CACHE:50|AVAILABLE:60");
    const QByteArray swap("SWAP_TOTAL:9|SWAP_USED:4|SWAP_FREE:5");
    QTest::newRow("both") << QByteArray(line + '\n' + swap + '\n') << both;
    QTest::newRow("CRLF") << QByteArray(line + "\r\n" + swap + "\r\n") << both;
    QTest::newRow("no swap") << QByteArray(line + '\n') << main;
    QTest::newRow("greeting before it") << QByteArray("hello\n" + line + '\n' + swap) << both;
    QTest::newRow("swap without values") << QByteArray(line + "\nSWAP_TOTAL:|SWAP_USED:x|SWAP_FREE:9:9\n") << main;
    QTest::newRow("odd pieces") << QByteArray("TOTAL:100|USED|FREE:1:2|:|CACHE:9223372036854775808|\n")
                                << MemoryMetrics{.total = 100};
    QTest::newRow("empty") << QByteArray() << MemoryMetrics();
    QTest::newRow("refused") << QByteArray("free: Permission denied\n") << MemoryMetrics();
    // free(1) in German leaves no blank behind its label, so that awk counts its columns from the second on.
    QTest::newRow("recorded in German") << recorded("memory_german.txt")
                                        << MemoryMetrics{.total = 1385164800,
                                                         .used = 18643464192,
                                                         .free = 9928704,
                                                         .cached = 23891345408};
}

void TestMetricsParser::memory()
{
    QFETCH(QByteArray, output);
    QFETCH(MemoryMetrics, memory);
    QVERIFY(MetricsParser::memory(output) == memory);
}

void TestMetricsParser::network()
{
    const auto interfaces = MetricsParser::network(recorded("network_dnf.txt"));
    QCOMPARE(interfaces.size(), 3);
    QCOMPARE(interfaces[0].name, u"eth0"_s);
    QCOMPARE(interfaces[0].receivedBytes, 30937);
    QCOMPARE(interfaces[0].receivedPackets, 162);
    QCOMPARE(interfaces[0].transmittedBytes, 38128);
    QCOMPARE(interfaces[0].transmittedPackets, 113);

    const auto odd =
        MetricsParser::network("lo|1|2|3|4|5|6\n\nshort|1|2|3|4|5\n lo|a|2|3|4|5|\r\nwide|1|2|3|4|5|6|7\n"
                               "big|9223372036854775807|2|3|-9223372036854775808|5|6");
    QCOMPARE(odd.size(), 3);
    QCOMPARE(odd[0].name, u" lo"_s);
    QCOMPARE(odd[0].receivedBytes, 0);
    QCOMPARE(odd[0].transmitErrors, 0);
    QCOMPARE(odd[1].transmitErrors, 6);
    QCOMPARE(odd[2].receivedBytes, std::numeric_limits<qint64>::max());
    QCOMPARE(odd[2].transmittedBytes, std::numeric_limits<qint64>::min());
}

void TestMetricsParser::diskIO()
{
    const auto devices = MetricsParser::diskIO(" vda | 12 |34\r\n\nvda1|x|7|8\nshort|1\ndisk0|0|0");
    QCOMPARE(devices.size(), 3);
    QCOMPARE(devices[0].name, u"vda"_s);
    QCOMPARE(devices[0].sectorsRead, 12);
    QCOMPARE(devices[0].sectorsWritten, 34);
    QCOMPARE(devices[1].sectorsRead, 0);
    QCOMPARE(devices[1].sectorsWritten, 7);
    QCOMPARE(devices[2].name, u"disk0"_s);
}

void TestMetricsParser::tenMegabytes()
{
    const QByteArray oneLine(10'000'000, '|');
    QCOMPARE(MetricsParser::network(oneLine).size(), 1);
    QCOMPARE(MetricsParser::diskIO(oneLine).size(), 1);
    QVERIFY(MetricsParser::memory("TOTAL:" + oneLine) == MemoryMetrics());
    QCOMPARE(MetricsParser::cpuUsage(QByteArray(10'000'000, '7')), 0.0); // too great a number
    const QByteArray manyLines = QByteArray("e|1|2|3|4|5|6\n").repeated(700'000);
    QCOMPARE(MetricsParser::network(manyLines).size(), MetricsParser::kMostCounters);
    QCOMPARE(MetricsParser::diskIO(manyLines).size(), MetricsParser::kMostCounters);
}

QTEST_GUILESS_MAIN(TestMetricsParser)
#include "test_metrics_parser.moc"
