#include "Services/Parsers/Recorded.h"

#include "Services/Parsers/StorageDeviceParser.h"
#include "Services/Parsers/SystemInfoParser.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// The facts that the full hosts told.
class TestRecordedFacts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void facts_data();
    void facts();
    void devices();
};

void TestRecordedFacts::facts_data()
{
    QTest::addColumn<SystemInfo>("expected"); // with the first and the last file system
    QTest::addColumn<int>("fileSystems");
    const SystemInfo debian{.hostname = u"full"_s,
                            .osVersion = u"Debian GNU/Linux 12 (bookworm)"_s,
                            .kernel = u"6.18.44-fc-v657"_s,
                            .uptime = u"up 1 hour, 58 minutes"_s,
                            .cpuInfo = u"AMD EPYC"_s,
                            .cpuCount = u"2"_s,
                            .memoryTotal = u"23Gi"_s,
                            .diskUsage = {{u"rig-full"_s, u"252G"_s, u"27G"_s, u"70G"_s, u"28%"_s, u"/"_s},
                                          {u"tmpfs"_s, u"2.4G"_s, u"0"_s, u"2.4G"_s, u"0%"_s, u"/run/user/1003"_s}},
                            .loadAverage = u"6.60 6.49 5.60"_s};
    QTest::newRow("facts_debian.txt") << debian << 12;

    // A greeting, a translated heading of df, and a "Mem:" that is called otherwise.
    SystemInfo german = debian;
    german.uptime = u"up 1 hour, 59 minutes"_s;
    german.memoryTotal = u""_s;
    german.diskUsage.last().size = german.diskUsage.last().available = u"2,4G"_s;
    QTest::newRow("facts_german.txt") << german << 12;

    SystemInfo dnf = debian;
    dnf.hostname = u"dnfhost"_s;
    dnf.osVersion = u"Rig Linux 9.4 (Test Bench)"_s;
    dnf.uptime = u"up 1 hour, 59 minutes"_s;
    dnf.loadAverage = u"6.79 6.54 5.62"_s;
    dnf.diskUsage = {{u"rig-dnf"_s, u"252G"_s, u"27G"_s, u"70G"_s, u"28%"_s, u"/"_s},
                     {u"tmpfs"_s, u"2.4G"_s, u"0"_s, u"2.4G"_s, u"0%"_s, u"/run/user/1000"_s}};
    QTest::newRow("facts_dnf.txt") << dnf << 9;

    QTest::newRow("facts_busybox.txt")
        << SystemInfo{.hostname = u"bare"_s,
                      .osVersion = u"Linux"_s,
                      .kernel = u"6.18.44-fc-v657"_s,
                      .uptime = u"08:46:41 up  1:59,  0 users,  load average: 6.79, 6.53, 5.62"_s,
                      .cpuInfo = u""_s,
                      .cpuCount = u"2"_s,
                      .memoryTotal = u"23.5G"_s,
                      .diskUsage = {{u"rig-bare"_s, u"252.0G"_s, u"26.5G"_s, u"69.2G"_s, u"28%"_s, u"/"_s},
                                    {u"tmpfs"_s, u"11.8G"_s, u"0"_s, u"11.8G"_s, u"0%"_s, u"/dev"_s}},
                      .loadAverage = u"6.79 6.54 5.62"_s}
        << 2;
}

void TestRecordedFacts::facts()
{
    QFETCH(SystemInfo, expected);
    QFETCH(int, fileSystems);
    SystemInfo info = SystemInfoParser::parse(recorded(QTest::currentDataTag()), QDateTime());
    QCOMPARE(info.diskUsage.size(), fileSystems);
    info.diskUsage = {info.diskUsage.first(), info.diskUsage.last()};
    QCOMPARE(info.diskUsage.first().mountPoint, u"/"_s);
    QVERIFY(info.diskUsage == expected.diskUsage);
    for (const auto field :
         {&SystemInfo::hostname, &SystemInfo::osVersion, &SystemInfo::kernel, &SystemInfo::uptime,
          &SystemInfo::cpuInfo, &SystemInfo::cpuCount, &SystemInfo::memoryTotal, &SystemInfo::loadAverage}) {
        QCOMPARE(info.*field, expected.*field);
    }
}

void TestRecordedFacts::devices()
{
    const QList<StorageDevice> devices = StorageDeviceParser::parse(recorded("devices_debian.txt"));
    QCOMPARE(devices.size(), 2);
    QVERIFY(devices[0] == (StorageDevice{u"zram0"_s, u"253:0"_s, false, u"0B"_s, false, u"disk"_s, {std::nullopt}}));
    QCOMPARE(devices[1].size, u"256G"_s);
    QCOMPARE(devices[1].mountpoints.size(), 7);
    QCOMPARE(devices[1].mountpoints[1], std::optional(u"/var/lib/docker"_s));
    // Behind the greeting of a login script too.
    QVERIFY(StorageDeviceParser::parse(recorded("devices_german.txt")) == devices);
}

QTEST_GUILESS_MAIN(TestRecordedFacts)
#include "test_recorded_facts.moc"
