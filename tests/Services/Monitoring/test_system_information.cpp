#include "Services/Monitoring/MonitoredFixture.h"

#include "Services/Commands/SystemCommands.h"
#include "Services/Monitoring/SystemInformation.h"

#include <QCoroTask>
#include <QTest>

using namespace Qt::StringLiterals;

class TestSystemInformation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void asksBothLinesAndTells();
    void aYoungCompleteRecordIsEnough();
    void whatIsOldOrIncompleteIsAskedFor_data();
    void whatIsOldOrIncompleteIsAskedFor();
    void failuresKeepWhatWasThere();
    void theNewestRefreshCounts();
    void theOwnerMayGoAtAnyMoment();

private:
    CommandResult answer(const QString &line) const
    {
        return line == SystemInfoCommand().commandString() ? m_facts : m_devices;
    }

    CommandResult m_facts;
    CommandResult m_devices;
    std::unique_ptr<MonitoredFixture> m_rig;
    std::unique_ptr<SystemInformation> m_information;
};

void TestSystemInformation::init()
{
    m_facts = ScriptedServer::said("=== HOSTNAME ===\nweb-01\n=== DISK ===\n/dev/vda1 98G 41G 52G 45% /\n");
    m_devices = ScriptedServer::said(R"({"blockdevices":[]})");
    m_information.reset();
    m_rig = std::make_unique<MonitoredFixture>();
    m_rig->scripted.setAnswer([this](const QString &line) { return answer(line); });
    m_information = std::make_unique<SystemInformation>(m_rig->monitored());
}

void TestSystemInformation::asksBothLinesAndTells()
{
    QList<bool> refreshing;
    connect(m_information.get(), &SystemInformation::changed, this,
            [&] { refreshing.append(m_information->isRefreshing()); });
    QCoro::waitFor(m_information->refreshSystemInfoIfNeeded());
    QCOMPARE(m_rig->scripted.lines(),
             (QStringList{SystemInfoCommand().commandString(), StorageDevicesCommand().commandString()}));
    const SystemInfo info = *m_information->systemInfo();
    QCOMPARE(info.hostname, u"web-01"_s);
    QCOMPARE(info.diskUsage.size(), 1);
    QCOMPARE(info.lastUpdated, m_rig->clock.now());
    QVERIFY(info.storageDevices && info.storageDevices->isEmpty());
    QCOMPARE(refreshing, (QList<bool>{true, false}));
    QCOMPARE(m_rig->record().systemInfo, std::optional(info));

    m_rig->setConnected(false);
    QCoro::waitFor(m_information->refreshSystemInfo());
    QCoro::waitFor(m_information->refreshSystemInfoIfNeeded());
    QCOMPARE(m_rig->scripted.lines().size(), 2);
}

void TestSystemInformation::aYoungCompleteRecordIsEnough()
{
    m_rig->setSystemInfo(
        SystemInfo{.hostname = u"kept"_s, .lastUpdated = m_rig->clock.now(), .storageDevices = {{}}});
    m_rig->clock.advance(299'999);
    QCoro::waitFor(m_information->refreshSystemInfoIfNeeded());
    QVERIFY(m_rig->scripted.lines().isEmpty());
    QCOMPARE(m_information->systemInfo()->hostname, u"kept"_s);
}

void TestSystemInformation::whatIsOldOrIncompleteIsAskedFor_data()
{
    QTest::addColumn<std::optional<SystemInfo>>("kept");
    const QDateTime now = ManualClock().now();
    QTest::newRow("nothing") << std::optional<SystemInfo>();
    QTest::newRow("old") << std::optional(SystemInfo{.lastUpdated = now.addSecs(-300), .storageDevices = {{}}});
    QTest::newRow("no devices") << std::optional(SystemInfo{.lastUpdated = now});
    QTest::newRow("no date") << std::optional(SystemInfo{.storageDevices = {{}}});
}

void TestSystemInformation::whatIsOldOrIncompleteIsAskedFor()
{
    QFETCH(std::optional<SystemInfo>, kept);
    m_rig->setSystemInfo(kept);
    QCoro::waitFor(m_information->refreshSystemInfoIfNeeded());
    QCOMPARE(m_information->systemInfo()->hostname, u"web-01"_s);
}

void TestSystemInformation::failuresKeepWhatWasThere()
{
    m_devices.exitCode = 1;
    QCoro::waitFor(m_information->refreshSystemInfo());
    QVERIFY(!m_information->systemInfo()->storageDevices);
    QCOMPARE(m_information->systemInfo()->hostname, u"web-01"_s);

    m_facts = {"=== HOSTNAME ===\nhalf\n", "lost", CommandResult::kSshFailed, {}};
    QVERIFY(!m_information->refreshError());
    QCoro::waitFor(m_information->refreshSystemInfo());
    QCOMPARE(m_information->systemInfo()->hostname, u"web-01"_s);
    QCOMPARE(m_rig->record().systemInfo->hostname, u"web-01"_s);
    QCOMPARE(m_information->refreshError(), std::optional(u"lost"_s));
    QVERIFY(!m_information->isRefreshing());
}

void TestSystemInformation::theNewestRefreshCounts()
{
    m_rig->scripted.hold();
    auto first = m_information->refreshSystemInfo();
    auto second = m_information->refreshSystemInfo();
    m_rig->scripted.release(true);
    QVERIFY(!m_information->isRefreshing());
    QVERIFY(m_information->systemInfo());
    QCOMPARE(m_rig->scripted.lines().size(), 3); // the older one stopped after its first line

    m_rig->scripted.hold();
    auto cancelled = m_information->refreshSystemInfo();
    m_information->cancel();
    QVERIFY(!m_information->isRefreshing());
    m_facts = ScriptedServer::said("=== HOSTNAME ===\nlate\n");
    m_rig->scripted.release();
    QCOMPARE(m_information->systemInfo()->hostname, u"web-01"_s);
}

void TestSystemInformation::theOwnerMayGoAtAnyMoment()
{
    for (const int linesBefore : {1, 2}) {
        init();
        m_rig->scripted.hold();
        auto refresh = m_information->refreshSystemInfo();
        if (linesBefore == 2) {
            m_rig->scripted.step();
        }
        QCOMPARE(m_rig->scripted.lines().size(), linesBefore);
        m_information.reset();
        m_rig->scripted.release();
        QCoro::waitFor(refresh);
    }
    // Who hears of the new record may be who ends it.
    init();
    connect(&m_rig->store, &ServerStore::serverUpdated, this, [this] { m_information.reset(); });
    QCoro::waitFor(m_information->refreshSystemInfo());
    QVERIFY(!m_information);
}

QTEST_GUILESS_MAIN(TestSystemInformation)
#include "test_system_information.moc"
