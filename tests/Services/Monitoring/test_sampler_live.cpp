#include "rig/HostSession.h"
#include "rig/RigSshd.h"

#include "Models/ServerStore.h"
#include "Services/Monitoring/MetricsSampler.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <atomic>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

// Keeps what it was asked for: of each sample its beginning, the times of the network's and of the disks' reading,
// and its end.
class NotingClock final : public Clock
{
public:
    QDateTime now() const override
    {
        m_told.append(QDateTime::currentDateTimeUtc());
        return m_told.last();
    }

    // Seconds between the readings of the last two samples.
    double betweenReadings(qsizetype reading) const
    {
        const qsizetype second = m_told.size() - kTimes + reading;
        return static_cast<double>(m_told.at(second - kTimes).msecsTo(m_told.at(second))) / 1000;
    }

private:
    static constexpr qsizetype kTimes = 4; // of one sample

    mutable QList<QDateTime> m_told;
};

constexpr qsizetype kNetwork = 1;
constexpr qsizetype kDisk = 2;

// A server of its own store, sampled through the program's transport.
class Sampled
{
public:
    Sampled(CommandSSHManager &manager, Server server)
    {
        server.isConnected = true;
        store.addServer(server);
        sampler = std::make_unique<MetricsSampler>(MonitoredServer{manager, store, clock, server.id});
    }

    MetricsSnapshot sample()
    {
        QCoro::waitFor(sampler->fetchMetrics());
        return sampler->currentMetrics().value_or(MetricsSnapshot());
    }

private:
    QTemporaryDir m_directory;
    UserDefaults m_defaults{m_directory.path()};
    SystemClock m_storeClock;

public:
    NotingClock clock;
    ServerStore store{m_defaults, m_storeClock};
    std::unique_ptr<MetricsSampler> sampler;
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Bytes written by device, of /proc/diskstats (Documentation/admin-guide/iostats.rst of the kernel).
QHash<QString, qint64> writtenBytes()
{
    QHash<QString, qint64> written;
    for (const QByteArray &line : contentOf(u"/proc/diskstats"_s).split('\n')) {
        const QList<QByteArray> columns = line.simplified().split(' ');
        if (columns.size() > 9) {
            written.insert(QString::fromLatin1(columns[2]), columns[9].toLongLong() * 512);
        }
    }
    return written;
}

bool writeThrough(const QString &path, qint64 megabytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    QByteArray block(1'000'000, '\0');
    for (qint64 i = 0; i < megabytes; ++i) {
        for (char &c : block) {
            c = static_cast<char>(rand()); // nothing that a file system could squeeze
        }
        file.write(block);
    }
    return file.flush() && fsync(file.handle()) == 0;
}

} // namespace

/// Load that the test makes itself shows in the figures.
class TestSamplerLive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void figuresAreThoseOfProc();
    void aBusyMachine();
    void aFileWritten();
    void bytesSent();

private:
    RigSshd m_sshd;
    std::unique_ptr<TestTransport> m_transport;
    std::unique_ptr<Sampled> m_sampled;
};

void TestSamplerLive::initTestCase()
{
    QVERIFY2(m_sshd.up(), qPrintable(m_sshd.error()));
    m_transport = std::make_unique<TestTransport>();
    m_sampled = std::make_unique<Sampled>(m_transport->manager, TestTransport::server(m_sshd, AuthMethod::PublicKey));
}

void TestSamplerLive::figuresAreThoseOfProc()
{
    const MetricsSnapshot sample = m_sampled->sample();
    QHash<QByteArray, qint64> memory;
    for (const QByteArray &line : contentOf(u"/proc/meminfo"_s).split('\n')) {
        memory.insert(line.split(':').first(), line.simplified().split(' ').value(1).toLongLong() * 1024);
    }
    QCOMPARE(sample.memoryUsage.total, memory["MemTotal"]);
    QCOMPARE(sample.memoryUsage.swapTotal, memory["SwapTotal"]);
    QVERIFY(qAbs(sample.memoryUsage.available - memory["MemAvailable"]) < memory["MemTotal"] / 10);

    QStringList interfaces;
    for (const NetworkInterface &interface : sample.networkMetrics.interfaces) {
        interfaces.append(interface.name);
        const QString counter = u"/sys/class/net/%1/statistics/rx_packets"_s.arg(interface.name);
        QVERIFY(contentOf(counter).trimmed().toLongLong() >= interface.receivePacketsPerSec);
    }
    QStringList known = QDir(u"/sys/class/net"_s).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    known.removeIf(
        [](const QString &name) { return name == u"lo" || !QFileInfo(u"/sys/class/net/"_s + name).isDir(); });
    interfaces.sort();
    known.sort();
    QCOMPARE(interfaces, known);
    for (const DiskIODevice &device : sample.diskIOMetrics.devices) {
        QVERIFY2(QFile::exists(u"/sys/class/block/"_s + device.deviceName), qPrintable(device.deviceName));
    }
    QVERIFY(!sample.diskIOMetrics.devices.isEmpty());
}

void TestSamplerLive::aBusyMachine()
{
    std::atomic<bool> isDone = false;
    std::vector<std::thread> loops;
    loops.reserve(static_cast<size_t>(QThread::idealThreadCount()));
    for (int i = 0; i < QThread::idealThreadCount(); ++i) {
        loops.emplace_back([&isDone] {
            while (!isDone) {
            }
        });
    }
    const double busy = m_sampled->sample().cpuUsage;
    isDone = true;
    for (std::thread &loop : loops) {
        loop.join();
    }
    QVERIFY2(busy >= 90 && busy <= 100, qPrintable(QString::number(busy)));
}

void TestSamplerLive::aFileWritten()
{
    constexpr qint64 kMegabytes = 64;
    QTemporaryDir folder(QDir::current().filePath(u"live-XXXXXX"_s));
    const auto first = writtenBytes();
    QElapsedTimer watch;
    watch.start();
    m_sampled->sample();
    const auto before = writtenBytes();
    QVERIFY(writeThrough(folder.filePath(u"file"_s), kMegabytes));
    const auto after = writtenBytes();
    const MetricsSnapshot sample = m_sampled->sample();
    const double wall = static_cast<double>(watch.elapsed()) / 1000;
    const auto last = writtenBytes();

    const double elapsed = m_sampled->clock.betweenReadings(kDisk);
    QVERIFY(elapsed > 0 && elapsed <= wall);
    bool isShown = false;
    for (const DiskIODevice &device : sample.diskIOMetrics.devices) {
        const QString name = device.deviceName;
        const double told = device.writeBytesPerSec * elapsed;
        const auto inside = static_cast<double>(after.value(name) - before.value(name));
        const auto outside = static_cast<double>(last.value(name) - first.value(name));
        QVERIFY2(told >= 0.9 * inside && told <= 1.1 * outside,
                 qPrintable(u"%1: %2, between %3 and %4"_s.arg(name).arg(told).arg(inside).arg(outside)));
        isShown = isShown || told >= 0.9e6 * kMegabytes;
    }
    if (!isShown) {
        QSKIP("files of this folder are on no disk of this machine");
    }
}

void TestSamplerLive::bytesSent()
{
    // The loopback interface is no part of a sample, so the bytes go to a host of its own.
    constexpr qint64 kBytes = 30'000'000;
    const RigHosts hosts;
    RIG_NEEDS_HOST(host, hosts, u"systemd"_s);
    HostSession session(host);
    Sampled sampled(session.transport.manager, session.server());
    sampled.sample();
    QProcess sender;
    sender.start(u"/usr/bin/ssh"_s, host.sshArguments() + QStringList{u"cat >/dev/null"_s});
    sender.write(QByteArray(kBytes, 'x'));
    sender.closeWriteChannel();
    QVERIFY(sender.waitForFinished(60'000) && sender.exitCode() == 0);
    const MetricsSnapshot sample = sampled.sample();
    const double elapsed = sampled.clock.betweenReadings(kNetwork);
    double told = 0;
    for (const NetworkInterface &interface : sample.networkMetrics.interfaces) {
        told = qMax(told, static_cast<double>(interface.receiveBytesPerSec) * elapsed);
    }
    QVERIFY2(qAbs(told - kBytes) <= 0.1 * kBytes, qPrintable(QString::number(told)));
}

QTEST_GUILESS_MAIN(TestSamplerLive)
#include "test_sampler_live.moc"
