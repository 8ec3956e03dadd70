#include "Views/Dashboard/DashboardFigures.h"

#include <QTest>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

GPUMetrics gpus(const QList<double> &utilizations)
{
    GPUMetrics metrics;
    for (const double utilization : utilizations) {
        metrics.gpus.append({.index = static_cast<int>(metrics.gpus.size()), .utilization = utilization});
    }
    return metrics;
}

MetricsSnapshot withGPUs(const std::optional<GPUMetrics> &metrics)
{
    MetricsSnapshot snapshot;
    snapshot.gpuMetrics = metrics;
    return snapshot;
}

} // namespace

/// The figures of the cards, and their words.
class TestDashboardFigures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rates_data();
    void rates();
    void memory();
    void sums();
    void graphicsProcessors();
    void chartData();
    void ages();
};

void TestDashboardFigures::rates_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << 0.0 << u"0 B/s"_s;
    QTest::newRow("bytes") << 50.0 / 1048576 << u"50 B/s"_s;
    QTest::newRow("the last in bytes") << 0.0999 / 1024 << u"102 B/s"_s;
    QTest::newRow("the first in KB") << 0.1 / 1024 << u"0.1 KB/s"_s;
    QTest::newRow("KB") << 0.005 << u"5.1 KB/s"_s;
    QTest::newRow("the last in KB") << 0.00999 << u"10.2 KB/s"_s;
    QTest::newRow("the first in MB") << 0.01 << u"0.010 MB/s"_s;
    QTest::newRow("below a tenth") << 0.0999 << u"0.100 MB/s"_s;
    QTest::newRow("a tenth") << 0.1 << u"0.10 MB/s"_s;
    QTest::newRow("below one") << 0.994 << u"0.99 MB/s"_s;
    QTest::newRow("one") << 1.0 << u"1.0 MB/s"_s;
    QTest::newRow("many") << 1234.56 << u"1234.6 MB/s"_s;
}

void TestDashboardFigures::rates()
{
    QFETCH(double, rate);
    QTEST(DashboardFigures::formatRate(rate), "text");
}

void TestDashboardFigures::memory()
{
    constexpr qint64 kGi = qint64(1) << 30;
    const MemoryMetrics half{.total = 32 * kGi, .used = 8 * kGi};
    QCOMPARE(DashboardFigures::memoryPercent(half), 25.0);
    QCOMPARE(DashboardFigures::memoryText(half), u"8.0 of 32.0 GiB"_s);
    QCOMPARE(DashboardFigures::memoryText({.total = kGi / 2, .used = kGi / 8}), u"128.0 of 512.0 MiB"_s);
    QCOMPARE(DashboardFigures::memoryPercent({.total = 0, .used = kGi}), 0.0);
    QCOMPARE(DashboardFigures::memoryText({}), QString());
    QCOMPARE(DashboardFigures::figure(61.94, u"%"_s), u"61.9%"_s);
}

void TestDashboardFigures::sums()
{
    constexpr qint64 kMi = qint64(1) << 20;
    constexpr qint64 kMost = std::numeric_limits<qint64>::max();
    NetworkMetrics network;
    QCOMPARE(DashboardFigures::receiveRate(network), 0.0);
    network.interfaces = {{.receiveBytesPerSec = kMi, .transmitBytesPerSec = 3 * kMi},
                          {.receiveBytesPerSec = kMi / 2, .transmitBytesPerSec = 0}};
    QCOMPARE(DashboardFigures::receiveRate(network), 1.5);
    QCOMPARE(DashboardFigures::transmitRate(network), 3.0);
    network.interfaces = {{.receiveBytesPerSec = kMost}, {.receiveBytesPerSec = kMost}};
    QVERIFY(DashboardFigures::receiveRate(network) > 1e13); // and no overflow

    // A disk and its partition both count.
    const DiskIOMetrics disks{{{.deviceName = u"sda"_s, .readBytesPerSec = 1048576, .writeBytesPerSec = 524288},
                               {.deviceName = u"sda1"_s, .readBytesPerSec = 1048576, .writeBytesPerSec = 0}}};
    QCOMPARE(DashboardFigures::readRate(disks), 2.0);
    QCOMPARE(DashboardFigures::writeRate(disks), 0.5);
}

void TestDashboardFigures::graphicsProcessors()
{
    QCOMPARE(DashboardFigures::averageUtilization({}), 0.0);
    QCOMPARE(DashboardFigures::averageUtilization(gpus({20, 40, 90})), 50.0);
    QCOMPARE(DashboardFigures::utilizationText(7), u"  7%"_s);
    QCOMPARE(DashboardFigures::utilizationText(100), u"100%"_s);

    QVERIFY(!DashboardFigures::haveSimilarUtilization({}));
    QVERIFY(!DashboardFigures::haveSimilarUtilization(gpus({50}))); // one is not similar to anything
    QVERIFY(DashboardFigures::haveSimilarUtilization(gpus({50, 52, 55})));
    QVERIFY(!DashboardFigures::haveSimilarUtilization(gpus({50, 52, 55.5})));

    QCOMPARE(DashboardFigures::moreGPUs(gpus({1, 2, 3, 4})), QString());
    QCOMPARE(DashboardFigures::moreGPUs(gpus({1, 2, 3, 4, 5, 6, 7, 8})), u"... and 4 more"_s);

    GPUDevice gpu{.memoryTotal = qint64(24) << 30, .memoryUsed = qint64(8) << 30};
    QCOMPARE(DashboardFigures::gpuMemoryText(gpu), u"8.0 of 24.0 GiB"_s);
    QCOMPARE(DashboardFigures::gpuDetails(gpu), QString());
    gpu.temperature = 54;
    gpu.powerDraw = 220.4;
    gpu.coreFrequency = 1410;
    QCOMPARE(DashboardFigures::gpuDetails(gpu), u"54 °C  ·  220 W  ·  Core 1410 MHz"_s);
    gpu.powerLimit = 300;
    QVERIFY(DashboardFigures::gpuDetails(gpu).contains(u"220 / 300 W"_s));
}

void TestDashboardFigures::chartData()
{
    const auto points = DashboardFigures::buildChartData(
        {withGPUs(gpus({10, 20})), withGPUs(std::nullopt), withGPUs(gpus({})), withGPUs(gpus({30}))});
    QCOMPARE(points.size(), 3);
    QCOMPARE(points.at(1).gpuIndex, 1);
    QCOMPARE(points.at(1).timeIndex, 0);
    QCOMPARE(points.at(1).value, 20.0);
    QCOMPARE(points.at(2).gpuIndex, 0);
    QCOMPARE(points.at(2).timeIndex, 3);
}

void TestDashboardFigures::ages()
{
    const QDateTime taken(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC);
    const auto after = [&](qint64 seconds) { return DashboardFigures::age(taken, taken.addSecs(seconds)); };
    QCOMPARE(after(0), u"now"_s);
    QCOMPARE(after(-5), u"now"_s); // the clock was set back
    QCOMPARE(after(59), u"59 s ago"_s);
    QCOMPARE(after(179), u"2 min ago"_s);
    QCOMPARE(after(7200), u"2 h ago"_s);
}

QTEST_GUILESS_MAIN(TestDashboardFigures)
#include "test_dashboard_figures.moc"
