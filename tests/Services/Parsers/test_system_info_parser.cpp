#include "Services/Parsers/SystemInfoParser.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

const QDateTime kNow(QDate(2026, 3, 1), QTime(12, 0), Qt::UTC);

constexpr auto kWhole = R"(=== HOSTNAME ===
web-01
=== OS ===
  Debian GNU/Linux 12 (bookworm)
=== KERNEL ===
6.1.0-28-amd64
=== UPTIME ===
up 3 weeks, 2 days
=== CPU ===
AMD EPYC 7763 64-Core Processor
=== CPU_COUNT ===
8
=== MEMORY ===
7.6Gi
=== DISK ===
Filesystem      Size  Used Avail Use% Mounted on
/dev/vda1        98G   41G   52G  45% /
tmpfs           3.9G     0  3.9G   0% /run/user dir

/dev/mapper/very-long-name-that-wraps
                 98G   41G   52G  45% /data
=== LOAD ===
0.52 0.58 0.59
=== BLOCK_DEVICES ===
sda
)";

} // namespace

class TestSystemInfoParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aWholeOutput();
    void nothing();
    void oddSections_data();
    void oddSections();
    void diskLines_data();
    void diskLines();
    void hugeOutputsTakeLinearTime_data();
    void hugeOutputsTakeLinearTime();
};

void TestSystemInfoParser::aWholeOutput()
{
    for (const QByteArray &output : {QByteArray(kWhole), QByteArray(kWhole).replace("\n", "\r\n")}) {
        const SystemInfo info = SystemInfoParser::parse(output, kNow);
        const SystemInfo expected{.hostname = u"web-01"_s,
                                  .osVersion = u"Debian GNU/Linux 12 (bookworm)"_s,
                                  .kernel = u"6.1.0-28-amd64"_s,
                                  .uptime = u"up 3 weeks, 2 days"_s,
                                  .cpuInfo = u"AMD EPYC 7763 64-Core Processor"_s,
                                  .cpuCount = u"8"_s,
                                  .memoryTotal = u"7.6Gi"_s,
                                  .diskUsage = {{u"/dev/vda1"_s, u"98G"_s, u"41G"_s, u"52G"_s, u"45%"_s, u"/"_s},
                                                {u"tmpfs"_s, u"3.9G"_s, u"0"_s, u"3.9G"_s, u"0%"_s, u"/run/user"_s}},
                                  .loadAverage = u"0.52 0.58 0.59"_s,
                                  .lastUpdated = kNow};
        QCOMPARE(info.diskUsage, expected.diskUsage);
        QVERIFY(info == expected);
    }
}

void TestSystemInfoParser::nothing()
{
    QVERIFY(SystemInfoParser::parse({}, kNow) == SystemInfo{.lastUpdated = kNow});
    QVERIFY(SystemInfoParser::parse(" \n=== \n=== ===\n", kNow) == SystemInfo{.lastUpdated = kNow});
}

void TestSystemInfoParser::oddSections_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QString>("hostname");
    QTest::newRow("later wins") << QByteArray("=== HOSTNAME ===\na\n=== HOSTNAME ===\nb\n") << u"b"_s;
    QTest::newRow("only a heading") << QByteArray("=== HOSTNAME ===\na\n=== HOSTNAME ===\n") << u""_s;
    QTest::newRow("second line only") << QByteArray("=== HOSTNAME ===\n\ta \nb\n") << u"a"_s;
    QTest::newRow("text before it") << QByteArray("Welcome!\n=== HOSTNAME ===\na\n") << u"a"_s;
    QTest::newRow("value with a separator") << QByteArray("=== HOSTNAME ===\na === b\n=== OS ===\nx\n") << u"a"_s;
    QTest::newRow("five signs") << QByteArray("===== HOSTNAME =====\na") << u""_s;
    QTest::newRow("lower case") << QByteArray("=== hostname ===\na") << u""_s;
    QTest::newRow("no closing signs") << QByteArray("=== HOSTNAME\na") << u"a"_s;
    QTest::newRow("blanks before the key") << QByteArray("===  \n HOSTNAME ===\na") << u"a"_s;
    QTest::newRow("invalid UTF-8") << QByteArray("=== HOSTNAME ===\na\xff\xc3") << u"a\ufffd\ufffd"_s;
    QTest::newRow("NUL") << QByteArray("=== HOSTNAME ===\na\0b", 20) << u"a\0b"_s;
}

void TestSystemInfoParser::oddSections()
{
    QFETCH(QByteArray, output);
    QTEST(SystemInfoParser::parse(output, kNow).hostname, "hostname");
}

void TestSystemInfoParser::diskLines_data()
{
    QTest::addColumn<int>("entries");
    QTest::newRow("a b c d e f") << 1;
    QTest::newRow("  a  b  c  d  e  f g h ") << 1;
    QTest::newRow("a b c d e") << 0;
    QTest::newRow("a b c d e Mounted on f") << 0;
    QTest::newRow("Size Used Avail d e f") << 0;
    QTest::newRow("Filesystem Size Used Available d f") << 0;
    QTest::newRow("Size Used c d e f") << 1;
    QTest::newRow("Dateisystem Größe Benutzt Verf. Verw% Eingehängt auf") << 0;
    QTest::newRow("a b c d 45% f") << 1;
    QTest::newRow("a b c d - f") << 1;
    QTest::newRow("a\tb\tc\td\te\tf") << 0;
}

void TestSystemInfoParser::diskLines()
{
    const QList<DiskInfo> disks = SystemInfoParser::parseDiskUsage(QTest::currentDataTag());
    QTEST(static_cast<int>(disks.size()), "entries");
    if (!disks.isEmpty()) {
        QCOMPARE(disks.first().mountPoint, u"f"_s);
    }
}

void TestSystemInfoParser::hugeOutputsTakeLinearTime_data()
{
    QTest::addColumn<QByteArray>("pattern");
    for (const char *pattern : {"a", " ", "\n", "=== ", "=", " ===", "=== DISK ===\n", "\n ", "=== A ===\n"}) {
        QTest::newRow(pattern) << QByteArray(pattern);
    }
}

// Anything quadratic would run into the test's time limit.
void TestSystemInfoParser::hugeOutputsTakeLinearTime()
{
    QFETCH(QByteArray, pattern);
    const QByteArray noise = pattern.repeated(1'000'000 / pattern.size());
    QCOMPARE(SystemInfoParser::parse(noise + "\n=== HOSTNAME ===\nhere\n", kNow).hostname, u"here"_s);
    const QByteArray oneLine =
        "=== HOSTNAME ===\nx" + QByteArray(pattern).replace('\n', ' ').repeated(200'000) + "\n" + noise;
    QVERIFY(SystemInfoParser::parse(oneLine, kNow).hostname.startsWith(u'x'));
}

QTEST_GUILESS_MAIN(TestSystemInfoParser)
#include "test_system_info_parser.moc"
