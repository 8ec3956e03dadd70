#include "Services/Commands/CronCommands.h"
#include "Services/Commands/NetworkCommands.h"
#include "Services/Commands/PackageCommands.h"
#include "Services/Commands/ProcessCommands.h"
#include "Services/Commands/SystemCommands.h"
#include "Services/Commands/UserCommands.h"
#include "Services/Parsers/GPUMetricsParser.h"
#include "Services/Parsers/MetricsParser.h"
#include "Services/Parsers/ProcessParser.h"
#include "Services/Parsers/StorageDeviceParser.h"
#include "Services/Parsers/SystemInfoParser.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The columns of the lines of a file under /proc, by the column with the name.
QHash<QString, QList<QByteArray>> table(const QString &path, qsizetype nameColumn)
{
    QHash<QString, QList<QByteArray>> rows;
    for (const QByteArray &line : contentOf(path).replace(':', ' ').split('\n')) {
        const QList<QByteArray> columns = line.simplified().split(' ');
        if (columns.size() > nameColumn && !columns[nameColumn].isEmpty()) {
            rows.insert(QString::fromUtf8(columns[nameColumn]), columns);
        }
    }
    return rows;
}

} // namespace

/// The lines that only read, run on this machine by each shell; what their parsers make of them is compared with
/// /proc, read here before and after.
class TestReadingLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data();
    void facts();
    void processorLoad();
    void memory();
    void interfaces();
    void disks();
    void graphicsProcessors();
    void processes();
    void accountsJobsAndPackages();

private:
    QByteArray output(const BaseSSHCommand &command)
    {
        QFETCH_GLOBAL(QString, shell);
        QProcess process;
        process.start(shell, {u"-c"_s, command.commandString()});
        process.closeWriteChannel();
        process.waitForFinished();
        m_exitCode = process.exitCode();
        return process.readAllStandardOutput();
    }

    int m_exitCode = -1;
};

void TestReadingLines::initTestCase_data()
{
    QTest::addColumn<QString>("shell");
    for (const char *shell : {"/bin/sh", "/bin/dash", "/bin/bash"}) {
        QTest::newRow(shell) << QString::fromLatin1(shell);
    }
}

void TestReadingLines::facts()
{
    const SystemInfo info = SystemInfoParser::parse(output(SystemInfoCommand()), QDateTime());
    QCOMPARE(m_exitCode, 0);
    QCOMPARE(info.hostname, QSysInfo::machineHostName());
    QCOMPARE(info.kernel, QSysInfo::kernelVersion());
    QCOMPARE(info.loadAverage.split(u' ').size(), 3);
    QVERIFY(info.cpuCount.toInt() > 0 && !info.osVersion.isEmpty() && !info.memoryTotal.isEmpty());
    for (const StorageDevice &device : StorageDeviceParser::parse(output(StorageDevicesCommand()))) {
        QVERIFY(QFile::exists(u"/sys/class/block/"_s + device.name));
    }
}

void TestReadingLines::processorLoad()
{
    const QByteArray told = output(GetCPUUsageCommand());
    bool isNumber = false;
    const double percent = told.trimmed().toDouble(&isNumber);
    QVERIFY2(isNumber && percent >= 0 && percent <= 100, told.constData());
    QCOMPARE(MetricsParser::cpuUsage(told), percent);
    QTRY_VERIFY(!QFile::exists(u"/tmp/.cpu1"_s) && !QFile::exists(u"/tmp/.cpu2"_s)); // others may be at it
}

void TestReadingLines::memory()
{
    const MemoryMetrics memory = MetricsParser::memory(output(GetMemoryMetricsCommand()));
    const auto bytes = [info = table(u"/proc/meminfo"_s, 0)](const QString &name) {
        return info.value(name).value(1).toLongLong() * 1024;
    };
    QCOMPARE(memory.total, bytes(u"MemTotal"_s));
    QCOMPARE(memory.swapTotal, bytes(u"SwapTotal"_s));
    QVERIFY(qAbs(memory.available - bytes(u"MemAvailable"_s)) < memory.total / 10);
    QVERIFY(memory.used > 0 && memory.used < memory.total);
}

void TestReadingLines::interfaces()
{
    const auto before = table(u"/proc/net/dev"_s, 0);
    const auto interfaces = MetricsParser::network(output(GetNetworkMetricsCommand()));
    const auto after = table(u"/proc/net/dev"_s, 0);
    for (const MetricsParser::NetworkCounters &counters : interfaces) {
        const auto isBetween = [&](qint64 value, qsizetype column) {
            return value >= before[counters.name].value(column).toLongLong() &&
                   value <= after[counters.name].value(column).toLongLong();
        };
        QVERIFY(isBetween(counters.receivedBytes, 1) && isBetween(counters.receivedPackets, 2) &&
                isBetween(counters.receiveErrors, 3) && isBetween(counters.transmittedBytes, 9) &&
                isBetween(counters.transmittedPackets, 10) && isBetween(counters.transmitErrors, 11));
    }
    QCOMPARE(interfaces.size(), before.size() - 3); // two headings, and the loopback interface
}

void TestReadingLines::disks()
{
    const auto before = table(u"/proc/diskstats"_s, 2);
    const auto devices = MetricsParser::diskIO(output(GetDiskIOMetricsCommand()));
    const auto after = table(u"/proc/diskstats"_s, 2);
    for (const MetricsParser::DiskCounters &counters : devices) {
        const auto isBetween = [&](qint64 value, qsizetype column) {
            return value >= before[counters.name].value(column).toLongLong() &&
                   value <= after[counters.name].value(column).toLongLong();
        };
        QVERIFY(isBetween(counters.sectorsRead, 5) && isBetween(counters.sectorsWritten, 9));
    }
    QCOMPARE(devices.size(), std::ranges::count_if(before, [](const QList<QByteArray> &columns) {
                 return columns.size() > 4 && columns[3] != "0" && !columns[2].startsWith("loop");
             }));
}

void TestReadingLines::graphicsProcessors()
{
    const auto metrics = GPUMetricsParser::parse(output(GetGPUMetricsCommand()));
    QCOMPARE(m_exitCode, 0);
    QVERIFY(metrics);
    QCOMPARE(metrics->gpus.isEmpty(), !QFile::exists(u"/dev/nvidia0"_s) && !QFile::exists(u"/dev/kfd"_s));
}

void TestReadingLines::processes()
{
    const QList<ProcessInfo> processes = ProcessParser::parse(output(ProcessListCommand()));
    const auto self = std::ranges::find(processes, QCoreApplication::applicationPid(), &ProcessInfo::pidInt);
    QVERIFY(self != processes.end());
    QCOMPARE(self->command, QCoreApplication::arguments().join(u' ').simplified());
    const double pages = contentOf(u"/proc/self/statm"_s).split(' ').value(1).toDouble();
    QVERIFY(qAbs(self->rssMemoryKBDouble() - pages * 4) < pages);
}

void TestReadingLines::accountsJobsAndPackages()
{
    QCOMPARE(output(ListUsersCommand()), contentOf(u"/etc/passwd"_s));
    QCOMPARE(output(GetSystemCrontabCommand()), contentOf(u"/etc/crontab"_s));
    qint64 bytes = 0;
    for (const QFileInfo &file : QDir(u"/etc/cron.d"_s).entryInfoList(QDir::Files | QDir::Hidden)) {
        bytes += file.isSymLink() ? 0 : file.size();
    }
    QCOMPARE(output(GetCronDCommand()).size(), bytes);
    const bool hasCrontab = !QStandardPaths::findExecutable(u"crontab"_s).isEmpty();
    QCOMPARE(output(CheckCrontabAvailableCommand()), hasCrontab ? "CRONTAB_AVAILABLE\n" : "CRONTAB_NOT_FOUND\n");
    QCOMPARE(output(DetectDnfCommand()).trimmed(), QStandardPaths::findExecutable(u"dnf"_s).toUtf8());
    QCOMPARE(output(DetectAptCommand()).trimmed(), QStandardPaths::findExecutable(u"apt"_s).toUtf8());
}

QTEST_GUILESS_MAIN(TestReadingLines)
#include "test_reading_lines.moc"
