#include "Services/Monitoring/MonitoredFixture.h"

#include "Services/Commands/NetworkCommands.h"
#include "Services/Commands/SystemCommands.h"
#include "Services/Monitoring/MetricsSampler.h"

#include <QCoroTask>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class TestMetricsSampler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aSampleIsTheCommandsInTheirOrder();
    void startTakesTwoSamplesAndThenOneAtEachTick();
    void rates_data();
    void rates();
    void aFailedReadingMovesTheTime();
    void whatComesLaterBeginsAtZero();
    void failedCommandsGiveZeros();
    void sixtySamplesAreKept();
    void onlyOneSampleAtATime();
    void aServerThatIsLostLeavesTheHistory_data();
    void aServerThatIsLostLeavesTheHistory();
    void stopAndStartBeginAnew();
    void theOwnerMayGoAtAnyMoment();

private:
    void sample() { QCoro::waitFor(m_sampler->fetchMetrics()); }

    // The rates of the first interface and device in a sample `milliseconds` after another one.
    MetricsSnapshot sampleAfter(qint64 milliseconds)
    {
        m_rig->clock.advance(milliseconds);
        sample();
        return m_sampler->currentMetrics().value_or(MetricsSnapshot());
    }

    QHash<QString, CommandResult> m_answers;
    std::unique_ptr<MonitoredFixture> m_rig;
    std::unique_ptr<MetricsSampler> m_sampler;

    const QString m_cpu = GetCPUUsageCommand().commandString();
    const QString m_memory = GetMemoryMetricsCommand().commandString();
    const QString m_network = GetNetworkMetricsCommand().commandString();
    const QString m_disk = GetDiskIOMetricsCommand().commandString();
    const QString m_gpu = GetGPUMetricsCommand().commandString();
};

void TestMetricsSampler::init()
{
    m_sampler.reset();
    m_rig = std::make_unique<MonitoredFixture>();
    const auto said = [](const QByteArray &output) { return ScriptedServer::said(output); };
    m_answers = {{m_cpu, said("12.5\n")},
                 {m_memory, said("TOTAL:100|USED:40|FREE:10|SHARED:3|CACHE:50|AVAILABLE:60\n")},
                 {m_network, said("lo|9|9|9|9|9|9\neth0|1000|10|1|2000|20|2\n")},
                 {m_disk, said("vda|100|200\n")},
                 {m_gpu, said("MIXED_VENDOR_START\nVENDOR:INTEL\n{}\nVENDOR_END\nMIXED_VENDOR_END\n")}};
    m_rig->scripted.setAnswer([this](const QString &line) { return m_answers.value(line); });
    m_sampler = std::make_unique<MetricsSampler>(m_rig->monitored());
}

void TestMetricsSampler::aSampleIsTheCommandsInTheirOrder()
{
    sample();
    QCOMPARE(m_rig->scripted.lines(), (QStringList{m_cpu, m_memory, m_network, m_disk}));
    const MetricsSnapshot first = *m_sampler->currentMetrics();
    QCOMPARE(first.timestamp, m_rig->clock.now());
    QCOMPARE(first.cpuUsage, 12.5);
    QCOMPARE(first.memoryUsage.available, 60);
    QCOMPARE(first.networkMetrics.interfaces.size(), 1);
    const NetworkInterface eth0 = first.networkMetrics.interfaces.first();
    QCOMPARE(eth0.name, u"eth0"_s);
    QCOMPARE(eth0.receiveBytesPerSec, 0);
    QCOMPARE(eth0.receivePacketsPerSec, 10);
    QCOMPARE(eth0.transmitErrors, 2);
    QCOMPARE(first.diskIOMetrics.devices, (QList<DiskIODevice>{{u"vda"_s, 0, 0}}));
    QVERIFY(first.diskMetrics.isEmpty() && first.loadAverage == LoadAverage());
    QVERIFY(first.gpuMetrics && first.gpuMetrics->gpus.isEmpty());

    m_sampler->startMonitoring(); // from now on graphics processors belong to it
    QCOMPARE(m_sampler->currentMetrics()->gpuMetrics->gpus.size(), 1);
    QVERIFY(m_sampler->gpuMetrics() == m_sampler->currentMetrics()->gpuMetrics);
    m_sampler->stopMonitoring();
    m_answers[m_gpu].exitCode = 1;
    sample(); // the answer that is known
    QCOMPARE(m_sampler->currentMetrics()->gpuMetrics->gpus.size(), 1);
}

void TestMetricsSampler::startTakesTwoSamplesAndThenOneAtEachTick()
{
    QElapsedTimer clock;
    clock.start();
    m_sampler->startMonitoring();
    m_sampler->startMonitoring();
    QCOMPARE(m_sampler->metricsHistory().size(), 1);
    QVERIFY(QTest::qWaitFor([this] { return m_sampler->metricsHistory().size() == 2; }));
    QVERIFY(clock.elapsed() >= 900 && clock.elapsed() < 2700);
    QVERIFY(QTest::qWaitFor([this] { return m_sampler->metricsHistory().size() == 3; }));
    QVERIFY(clock.elapsed() >= 2800 && clock.elapsed() < 5500);
    m_sampler->stopMonitoring();
    QVERIFY(!m_sampler->isMonitoring());
    QTest::qWait(3200);
    QCOMPARE(m_sampler->metricsHistory().size(), 3);
    QVERIFY(m_sampler->currentMetrics());
}

void TestMetricsSampler::rates_data()
{
    QTest::addColumn<QByteArray>("network");
    QTest::addColumn<QByteArray>("disk");
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<qint64>("received");
    QTest::addColumn<qint64>("transmitted");
    QTest::addColumn<double>("read");
    QTest::addColumn<double>("written");
    const auto row = [](const char *name, const QByteArray &network, const QByteArray &disk, qint64 milliseconds,
                        qint64 received, qint64 transmitted, double read, double written) {
        QTest::newRow(name) << network << disk << milliseconds << received << transmitted << read << written;
    };
    row("rising", "eth0|1999|0|0|5000|0|0", "vda|103|200", 2000, 499, 1500, 768.0, 0.0);
    row("idle", "eth0|1000|0|0|2000|0|0", "vda|100|200", 3000, 0, 0, 0.0, 0.0);
    row("fallen", "eth0|10|0|0|9000|0|0", "vda|0|202", 1000, 0, 7000, 0.0, 1024.0);
    row("no time passed", "eth0|9999|0|0|9999|0|0", "vda|999|999", 0, 0, 0, 0.0, 0.0);
    row("clock set back", "eth0|9999|0|0|9999|0|0", "vda|999|999", -5000, 0, 0, 0.0, 0.0);
    row("the widest span", "eth0|9223372036854775807|0|0|-9223372036854775808|0|0", "vda|9223372036854775807|200", 1,
        9223372036854775807, 0, 512.0 * 9223372036854775707.0 / 0.001, 0.0);
}

void TestMetricsSampler::rates()
{
    QFETCH(QByteArray, network);
    QFETCH(QByteArray, disk);
    QFETCH(qint64, milliseconds);
    QFETCH(qint64, received);
    QFETCH(qint64, transmitted);
    QFETCH(double, read);
    QFETCH(double, written);
    sample();
    m_answers[m_network].output = network;
    m_answers[m_disk].output = disk;
    const MetricsSnapshot second = sampleAfter(milliseconds);
    QCOMPARE(second.networkMetrics.interfaces.first().receiveBytesPerSec, received);
    QCOMPARE(second.networkMetrics.interfaces.first().transmitBytesPerSec, transmitted);
    QCOMPARE(second.diskIOMetrics.devices.first().readBytesPerSec, read);
    QCOMPARE(second.diskIOMetrics.devices.first().writeBytesPerSec, written);
}

void TestMetricsSampler::aFailedReadingMovesTheTime()
{
    sample();
    m_answers[m_network] = ScriptedServer::said("eth0|1500|0|0|2000|0|0", 1);
    QVERIFY(sampleAfter(4000).networkMetrics.interfaces.isEmpty());
    m_answers[m_network].exitCode = 0;
    QCOMPARE(sampleAfter(1000).networkMetrics.interfaces.first().receiveBytesPerSec, 500);
}

void TestMetricsSampler::whatComesLaterBeginsAtZero()
{
    sample();
    m_answers[m_network].output = "veth1|7000|0|0|7000|0|0";
    m_answers[m_disk].output = "sdb|7000|7000";
    const MetricsSnapshot second = sampleAfter(1000);
    QCOMPARE(second.networkMetrics.interfaces.first().receiveBytesPerSec, 0);
    QCOMPARE(second.diskIOMetrics.devices.first().readBytesPerSec, 0.0);
    // Nor does what was away for a while count what it did meanwhile.
    m_answers[m_network].output = "eth0|9000|0|0|9000|0|0";
    QCOMPARE(sampleAfter(1000).networkMetrics.interfaces.first().receiveBytesPerSec, 0);
}

void TestMetricsSampler::failedCommandsGiveZeros()
{
    for (CommandResult &answer : m_answers) {
        answer.exitCode = 127;
    }
    sample();
    QCOMPARE(m_sampler->metricsHistory().size(), 1);
    QCOMPARE(m_sampler->currentMetrics()->cpuUsage, 0.0);
    QVERIFY(m_sampler->currentMetrics()->memoryUsage == MemoryMetrics());
    QVERIFY(!QCoro::waitFor(m_sampler->getGPUMetrics()));
    m_answers[m_gpu] = ScriptedServer::said("what?");
    QVERIFY(!QCoro::waitFor(m_sampler->getGPUMetrics()));
}

void TestMetricsSampler::sixtySamplesAreKept()
{
    for (int i = 0; i < 63; ++i) {
        m_answers[m_cpu].output = QByteArray::number(i);
        sample();
    }
    QCOMPARE(m_sampler->metricsHistory().size(), 60);
    QCOMPARE(m_sampler->metricsHistory().first().cpuUsage, 3.0);
    QCOMPARE(m_sampler->metricsHistory().last().cpuUsage, 62.0);
}

void TestMetricsSampler::onlyOneSampleAtATime()
{
    m_rig->scripted.hold();
    auto first = m_sampler->fetchMetrics();
    auto second = m_sampler->fetchMetrics();
    m_rig->scripted.step();
    auto third = m_sampler->fetchMetrics();
    m_rig->scripted.release();
    QCOMPARE(m_rig->scripted.lines(), (QStringList{m_cpu, m_memory, m_network, m_disk}));
    QCOMPARE(m_sampler->metricsHistory().size(), 1);
    sample();
    QCOMPARE(m_sampler->metricsHistory().size(), 2);
}

void TestMetricsSampler::aServerThatIsLostLeavesTheHistory_data()
{
    QTest::addColumn<int>("commandsBefore");
    QTest::addColumn<qint32>("exitCode"); // of the command that meets the loss; 0: the record tells it
    for (int commands = 0; commands < 4; ++commands) {
        for (const qint32 code : {0, CommandResult::kSshFailed, CommandResult::kNotRun}) {
            QTest::addRow("command %d, %d", commands, code) << commands << code;
        }
    }
}

void TestMetricsSampler::aServerThatIsLostLeavesTheHistory()
{
    QFETCH(int, commandsBefore);
    QFETCH(qint32, exitCode);
    sample();
    const QUuid before = m_sampler->currentMetrics()->id;
    m_rig->scripted.hold();
    auto lost = m_sampler->fetchMetrics();
    for (int i = 0; i < commandsBefore; ++i) {
        m_rig->scripted.step();
    }
    if (exitCode == 0) {
        m_rig->setConnected(false);
    } else {
        for (CommandResult &answer : m_answers) {
            answer.exitCode = exitCode;
        }
    }
    m_rig->scripted.release();
    QCOMPARE(m_rig->scripted.lines().size(), 4 + commandsBefore + 1);
    QCOMPARE(m_sampler->metricsHistory().size(), 1);
    QCOMPARE(m_sampler->currentMetrics()->id, before);

    m_rig->setConnected(true);
    for (CommandResult &answer : m_answers) {
        answer.exitCode = 0;
    }
    sample();
    QCOMPARE(m_sampler->metricsHistory().size(), 2);
}

void TestMetricsSampler::stopAndStartBeginAnew()
{
    m_sampler->startMonitoring();
    m_sampler->stopMonitoring();
    m_answers[m_network].output = "eth0|9000|0|0|9000|0|0";
    m_rig->clock.advance(1000);
    m_sampler->startMonitoring();
    QCOMPARE(m_sampler->metricsHistory().size(), 2);
    QCOMPARE(m_sampler->currentMetrics()->networkMetrics.interfaces.first().receiveBytesPerSec, 0);
}

void TestMetricsSampler::theOwnerMayGoAtAnyMoment()
{
    for (int commands = 0; commands < 6; ++commands) {
        init();
        m_rig->scripted.hold();
        m_sampler->startMonitoring(); // one line for graphics processors alone, and a sample
        for (int i = 0; i < commands; ++i) {
            m_rig->scripted.step();
        }
        m_sampler.reset();
        m_rig->scripted.release();
        QCOMPARE(m_rig->scripted.waiting(), 0);
    }
    // Or by what its own signals cause.
    init();
    connect(m_sampler.get(), &MetricsSampler::gpuMetricsChanged, this, [this] { m_sampler.reset(); });
    m_sampler->startMonitoring();
    QVERIFY(!m_sampler);
    init();
    connect(m_sampler.get(), &MetricsSampler::sampled, this, [this] { m_sampler.reset(); });
    auto last = m_sampler->fetchMetrics();
    QVERIFY(!m_sampler);
}

QTEST_GUILESS_MAIN(TestMetricsSampler)
#include "test_metrics_sampler.moc"
