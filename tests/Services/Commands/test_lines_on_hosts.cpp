#include "Helpers/ShellQuote.h"
#include "rig/HostSession.h"

#include "Services/Commands/CronCommands.h"
#include "Services/Commands/DockerCommands.h"
#include "Services/Commands/FileCommands.h"
#include "Services/Commands/NetworkCommands.h"
#include "Services/Commands/PackageCommands.h"
#include "Services/Commands/ProcessCommands.h"
#include "Services/Commands/ServiceCommands.h"
#include "Services/Commands/SystemCommands.h"
#include "Services/Commands/UserCommands.h"
#include "Services/Parsers/MetricsParser.h"
#include "Services/Parsers/ProcessParser.h"
#include "Services/Parsers/ServiceParser.h"
#include "Services/Parsers/StorageDeviceParser.h"
#include "Services/Parsers/SystemInfoParser.h"

#include <QProcess>
#include <QScopeGuard>
#include <QTest>
#include <algorithm>
#include <map>

using namespace Qt::StringLiterals;

/// The catalogue's lines on whole systems, through the program's transport. What they and their parsers tell is
/// compared with what the system says by another road; what they change is looked up there.
class TestLinesOnHosts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void facts_data();
    void facts();
    void processes_data();
    void processes();
    void services_data();
    void services();
    void aServiceFromItsFileToItsEnd();
    void anAccountFromItsBeginToItsEnd();
    void containers_data();
    void containers();
    void packages();
    void cronJobs();
    void ports();
    void smallestHost();
    void sudo();

private:
    // The session with a role's host, opened once.
    HostSession *session(const QString &role)
    {
        const std::optional<RigHost> host = m_hosts.find(role);
        std::unique_ptr<HostSession> &kept = m_sessions[role];
        if (host && !kept) {
            kept = std::make_unique<HostSession>(*host);
        }
        return kept.get();
    }

    RigHosts m_hosts;
    std::map<QString, std::unique_ptr<HostSession>> m_sessions;
};

#define NEEDS_HOST(name, role)                                                                                       \
    HostSession *const name##Found = session(role);                                                                  \
    if (!name##Found) {                                                                                              \
        QSKIP(qPrintable(m_hosts.reason(role)));                                                                     \
    }                                                                                                                \
    HostSession &name = *name##Found // NOLINT(bugprone-macro-parentheses): the name that is declared

void TestLinesOnHosts::facts_data()
{
    QTest::addColumn<QString>("role");
    for (const auto &role : {u"systemd"_s, u"nosudo"_s, u"german"_s, u"tcsh"_s, u"dnf"_s, u"busybox"_s}) {
        QTest::newRow(qPrintable(role)) << role;
    }
}

void TestLinesOnHosts::facts()
{
    QFETCH(QString, role);
    NEEDS_HOST(host, role);
    const auto fact = [&host](const QString &line) {
        return QString::fromUtf8(host.says(line).split('\n').last()); // a greeting may stand before it
    };
    const CommandResult told = host.run(SystemInfoCommand());
    QCOMPARE(told.exitCode, 0);
    const SystemInfo info = SystemInfoParser::parse(told.output, QDateTime::currentDateTimeUtc());
    QCOMPARE(info.hostname, fact(u"cat /proc/sys/kernel/hostname"_s));
    QCOMPARE(info.kernel, fact(u"cat /proc/sys/kernel/osrelease"_s));
    QCOMPARE(info.cpuCount, fact(u"grep -c ^processor /proc/cpuinfo"_s));
    QVERIFY(!info.uptime.isEmpty() && !info.osVersion.isEmpty());
    QCOMPARE(info.cpuInfo.isEmpty(), role == u"busybox"); // it has no lscpu
    QCOMPARE(info.loadAverage.split(u' ').size(), 3);
    const QString mounts = QString::fromUtf8(host.says(u"cat /proc/mounts"_s));
    QVERIFY(!info.diskUsage.isEmpty());
    for (const DiskInfo &disk : info.diskUsage) {
        QVERIFY2(mounts.contains(u' ' + disk.mountPoint + u' '), qPrintable(disk.mountPoint));
        QVERIFY(disk.usePercent.endsWith(u'%') || disk.usePercent == u"-");
    }
    const QString devices = fact(u"ls /sys/class/block | tr '\\n' ' '"_s);
    const CommandResult listed = host.run(StorageDevicesCommand());
    QCOMPARE(listed.exitCode, 0);
    for (const StorageDevice &device : StorageDeviceParser::parse(listed.output)) {
        QVERIFY2(devices.split(u' ').contains(device.name), qPrintable(device.name));
    }
}

void TestLinesOnHosts::processes_data()
{
    QTest::addColumn<QString>("role");
    for (const auto &role : {u"systemd"_s, u"german"_s, u"tcsh"_s, u"dnf"_s}) {
        QTest::newRow(qPrintable(role)) << role;
    }
}

void TestLinesOnHosts::processes()
{
    QFETCH(QString, role);
    NEEDS_HOST(host, role);
    const auto read = [&host] { return ProcessParser::parse(host.run(ProcessListCommand()).output); };
    const QList<ProcessInfo> found = read();
    // What a line says behind its mark: the greeting of an account's shell stands before it, with or without an
    // answer.
    const auto answer = [&host](const QString &line) {
        const QByteArray said = host.says(u"echo ::mark::; "_s + line);
        const qsizetype mark = said.indexOf("::mark::");
        return mark < 0 ? QByteArray() : said.sliced(mark + 8).trimmed();
    };
    // Of those that live through it all, what /proc says.
    int compared = 0;
    for (const ProcessInfo &process : found) {
        if (compared == 8) {
            break;
        }
        const QByteArray status = answer(u"grep ^VmRSS /proc/%1/status"_s.arg(process.pid));
        const QByteArray line = answer(u"tr '\\0' ' ' </proc/%1/cmdline"_s.arg(process.pid));
        if (!line.isEmpty() && !status.isEmpty()) {
            QVERIFY2(line.simplified().endsWith(process.command.toUtf8().simplified()),
                     qPrintable(process.command + u" / "_s + QString::fromUtf8(line)));
            const double rss = status.simplified().split(' ').value(1).toDouble();
            QVERIFY(qAbs(process.rssMemoryKBDouble() - rss) <= 0.2 * rss + 4096);
            ++compared;
        }
    }
    QVERIFY(compared >= 3);
    const auto first = std::ranges::find(found, u"1"_s, &ProcessInfo::pid);
    QVERIFY(first != found.end() && first->user == u"root");
    QVERIFY(std::ranges::is_sorted(found, std::ranges::greater(), &ProcessInfo::cpuDouble));

    // A process that is ended is gone from the list.
    if (role == u"systemd") {
        const QString pid = QString::fromUtf8(host.says(u"sleep 3011 >/dev/null 2>&1 & echo $!"_s));
        QVERIFY(std::ranges::count(read(), u"sleep 3011"_s, &ProcessInfo::command) == 1);
        QCOMPARE(host.run(KillProcessCommand(pid.toLongLong(), true)).exitCode, 0);
        QVERIFY(std::ranges::count(read(), u"sleep 3011"_s, &ProcessInfo::command) == 0);
    }
}

void TestLinesOnHosts::services_data()
{
    QTest::addColumn<QString>("role");
    QTest::addColumn<bool>("useSudo");
    QTest::newRow("systemd") << u"systemd"_s << false;
    QTest::newRow("systemd, sudo") << u"systemd"_s << true;
    QTest::newRow("without sudo") << u"nosudo"_s << false;
    QTest::newRow("German") << u"german"_s << false;
    QTest::newRow("dnf") << u"dnf"_s << true;
}

void TestLinesOnHosts::services()
{
    QFETCH(QString, role);
    QFETCH(bool, useSudo);
    NEEDS_HOST(host, role);
    const QList<ServiceInfo> services = ServiceParser::parse(host.run(ServiceListCommand(useSudo)).output);
    QVERIFY(services.size() > 20);
    QHash<QString, QHash<QString, QString>> told;
    for (const QString &block :
         QString::fromUtf8(
             host.says(u"systemctl show --type=service --all -p Id,LoadState,ActiveState,SubState '*.service'"_s))
             .split(u"\n\n"_s)) {
        QHash<QString, QString> values;
        for (const QString &line : block.split(u'\n')) {
            values.insert(line.section(u'=', 0, 0), line.section(u'=', 1));
        }
        told.insert(values.value(u"Id"_s), values);
    }
    int compared = 0;
    for (const ServiceInfo &service : services) {
        const auto values = told.constFind(service.name + u".service"_s);
        const bool isRestless = service.name.contains(u"flap"_s) || service.name.contains(u"apt-"_s);
        if (values == told.constEnd() || isRestless) {
            continue;
        }
        ++compared;
        const QString active = values->value(u"ActiveState"_s);
        const QString sub = values->value(u"SubState"_s);
        const bool isUp = active == u"active" && (sub == u"running" || sub == u"exited");
        QCOMPARE(service.status, isUp                  ? ServiceStatus::Active
                                 : active == u"failed" ? ServiceStatus::Failed
                                                       : ServiceStatus::Inactive);
        QCOMPARE(service.enabled, values->value(u"LoadState"_s) == u"loaded");
    }
    QVERIFY(compared > 20);
}

void TestLinesOnHosts::aServiceFromItsFileToItsEnd()
{
    NEEDS_HOST(host, u"systemd"_s);
    const QString name = uR"(tw-test@it's "$x".service)"_s;
    const QString path = uR"(/etc/systemd/system/tw-test@.service)"_s;
    const QString content = u"[Unit]\nDescription=It's \"%i\" of $(id) é\n[Service]\nExecStart=/bin/sleep 1000\n"
                            "[Install]\nWantedBy=multi-user.target\n"_s;
    const QString unit = u"tw-test@x.service"_s;
    const auto state = [&](const char *verb) {
        return host.says(u"systemctl "_s + QString::fromLatin1(verb) + u' ' + unit);
    };

    QCOMPARE(host.run(CreateServiceFileCommand(path, content)).exitCode, 0);
    QCOMPARE(host.run(u"cat "_s + path).output, content.toUtf8());
    QCOMPARE(host.run(ReloadSystemdCommand()).exitCode, 0);
    QCOMPARE(host.run(StartServiceCommand(unit)).exitCode, 0);
    QCOMPARE(state("is-active"), "active");
    const QByteArray pid = host.says(u"systemctl show -p MainPID "_s + unit);
    QCOMPARE(host.run(RestartServiceCommand(unit)).exitCode, 0);
    QVERIFY(host.says(u"systemctl show -p MainPID "_s + unit) != pid);
    QCOMPARE(host.run(EnableServiceCommand(unit)).exitCode, 0);
    QCOMPARE(state("is-enabled"), "enabled");
    QCOMPARE(host.run(DisableServiceCommand(unit)).exitCode, 0);
    QCOMPARE(state("is-enabled"), "disabled");
    QCOMPARE(host.run(StopServiceCommand(unit)).exitCode, 0);
    QCOMPARE(state("is-active"), "inactive");
    // systemctl(1) escapes what a unit's name cannot hold: all of it is one argument.
    const QString listing = u"systemctl list-units --plain --no-legend 'tw-test@*'"_s;
    QCOMPARE(host.run(StartServiceCommand(name)).exitCode, 0);
    QVERIFY(host.says(listing).startsWith(R"(tw-test@it\x27s\x20\x22\x24x\x22.service)"));
    QCOMPARE(host.run(StopServiceCommand(name)).exitCode, 0);
    QCOMPARE(host.says(listing), "");
    host.run(u"sudo rm "_s + path);
    host.run(ReloadSystemdCommand());
}

void TestLinesOnHosts::anAccountFromItsBeginToItsEnd()
{
    NEEDS_HOST(host, u"systemd"_s);
    const QString user = u"tw-test"_s;
    const auto shadow = [&] { return host.says(u"sudo getent shadow "_s + user).split(':').value(1); };
    const auto cleanUp =
        qScopeGuard([&] { host.run(u"sudo userdel -rf tw-test; sudo rm -f /etc/sudoers.d/tw-test"_s); });

    QCOMPARE(host.run(AddUserCommand(user, u"O'Brien \"$HOME\" é"_s, true, u"/bin/bash"_s)).exitCode, 0);
    const QByteArray all = host.run(ListUsersCommand()).output;
    QVERIFY2(all.contains("O'Brien \"$HOME\" é:/home/tw-test:/bin/bash\n"), all.constData());
    QCOMPARE(host.says(u"ls -d /home/tw-test"_s), "/home/tw-test");

    const QByteArray locked = shadow();
    const QString password = u"it's \"$(id)\" `id` é #:"_s;
    QCOMPARE(host.run(SetUserPasswordCommand(user, password)).exitCode, 0);
    const QByteArray first = shadow();
    QVERIFY(first != locked && first.startsWith("$"));
    // The stored hash is that of exactly this password: crypt(3) of it gives the same.
    QProcess crypt;
    crypt.start(u"perl"_s, {u"-e"_s, u"print crypt($ARGV[0], $ARGV[1])"_s, password, QString::fromLatin1(first)});
    if (crypt.waitForFinished() && crypt.exitCode() == 0) {
        QCOMPARE(crypt.readAllStandardOutput(), first);
    }

    QCOMPARE(host.run(AddUserToGroupCommand(user, u"audio"_s)).exitCode, 0);
    QVERIFY(host.says(u"id -nG "_s + user).split(' ').contains("audio"));
    QCOMPARE(host.run(EnablePasswordlessSudoCommand(user)).exitCode, 0);
    QCOMPARE(host.says(u"sudo cat /etc/sudoers.d/"_s + user), "tw-test ALL=(ALL) NOPASSWD:ALL");
    QCOMPARE(host.says(u"sudo su tw-test -c 'sudo -n id -u'"_s), "0");
    QCOMPARE(host.run(DeleteUserCommand(user, true)).exitCode, 0);
    QVERIFY(!host.run(ListUsersCommand()).output.contains("tw-test"));
    QVERIFY(host.run(u"ls -d /home/tw-test"_s).exitCode != 0);
}

void TestLinesOnHosts::containers_data()
{
    QTest::addColumn<ContainerRuntime>("runtime");
    QTest::addColumn<bool>("useSudo");
    QTest::newRow("docker") << ContainerRuntime::Docker << false;
    QTest::newRow("podman") << ContainerRuntime::Podman << true;
}

void TestLinesOnHosts::containers()
{
    QFETCH(ContainerRuntime, runtime);
    QFETCH(bool, useSudo);
    NEEDS_HOST(host, u"systemd"_s);
    const QString program = rawText(runtime);
    const auto run = [&](const BaseSSHCommand &command) { return host.run(command, useSudo); };
    const auto says = [&](const QString &line) { return host.says(program + u' ' + line, useSudo); };
    const QString name = u"tw-test"_s;
    const QString image =
        QString::fromUtf8(says(u"images --format '{{.Repository}}:{{.Tag}}'"_s).split('\n').value(0));
    QVERIFY(!image.isEmpty());
    const auto state = [&] { return says(u"inspect -f '{{.State.Running}}' "_s + name); };
    const auto cleanUp = qScopeGuard([&] {
        says(u"rm -f "_s + name);
        says(u"network rm tw-net"_s);
    });

    const DockerRunContainerCommand create({program, u"run"_s, u"-d"_s, u"--name"_s, name, u"-e"_s, u"A=b $c *"_s,
                                            image, u"busybox"_s, u"sh"_s, u"-c"_s, u"echo \"$A\"; sleep 1000"_s},
                                           runtime);
    const CommandResult created = run(create);
    QVERIFY2(created.exitCode == 0, created.output.constData());
    QCOMPARE(state(), "true");
    const QByteArray listed = run(DockerListContainersCommand(runtime)).output;
    // podman(1) makes one array of what is one object a line with docker(1).
    QVERIFY(listed.startsWith(runtime == ContainerRuntime::Docker ? '{' : '[') && listed.contains("tw-test"));
    QVERIFY(run(dockerFallbackListing(runtime)).output.contains("|tw-test|"));
    QVERIFY(run(DockerInspectContainerCommand(name, runtime)).output.trimmed().startsWith('['));
    QTRY_COMPARE(run(dockerContainerLogs(name, 10, false, runtime)).output, "b $c *\n");
    const QByteArray details =
        host.run(u"sudo sh -c "_s + shellQuoted(dockerDetailsAndStats(name, runtime).commandString())).output;
    QVERIFY2(details.startsWith("===STATS_START===\n") &&
                 details.contains("\n===STATS_END===\n===INSPECT_START===\n["),
             details.constData());
    QVERIFY(!details.contains("STATS_ERROR") && details.endsWith("===INSPECT_END===\n"));
    QCOMPARE(run(DockerStopContainerCommand(name + u" -t 0"_s, runtime)).exitCode != 0,
             true); // one name, not an option
    says(u"kill "_s + name);
    QTRY_COMPARE(state(), "false");
    QCOMPARE(run(DockerStartContainerCommand(name, runtime)).exitCode, 0);
    QCOMPARE(state(), "true");
    says(u"kill "_s + name);
    QCOMPARE(run(DockerRestartContainerCommand(name, runtime)).exitCode, 0);
    QCOMPARE(state(), "true");
    says(u"kill "_s + name);
    QCOMPARE(run(DockerStopContainerCommand(name, runtime)).exitCode, 0);
    QCOMPARE(run(DockerRemoveContainerCommand(name, runtime)).exitCode, 0);
    QVERIFY(!run(DockerListContainersCommand(runtime)).output.contains("tw-test"));

    const QList<QByteArray> firstImage = run(DockerListImagesCommand(runtime)).output.split('\n').value(0).split('|');
    QCOMPARE(firstImage.size(), 6);
    QCOMPARE(QByteArray(firstImage[1] + ':' + firstImage[2]), image.toUtf8());
    QCOMPARE(firstImage[0], firstImage[3]);
    says(u"tag %1 tw-image:1"_s.arg(image));
    QCOMPARE(run(DockerRemoveImageCommand(u"tw-image:1"_s, runtime)).exitCode, 0);
    says(u"network create tw-net"_s);
    const QByteArray networks = run(DockerListNetworksCommand(runtime)).output;
    QVERIFY(networks.contains("|tw-net|bridge|"));
    QCOMPARE(networks.split('\n').value(0).count('|'), 4);
    QCOMPARE(run(DockerRemoveNetworkCommand(u"tw-net"_s, runtime)).exitCode, 0);
    QCOMPARE(run(DockerListVolumesCommand(runtime)).exitCode, 0);
}

void TestLinesOnHosts::packages()
{
    NEEDS_HOST(apt, u"systemd"_s);
    QCOMPARE(apt.says(DetectAptCommand().commandString()), "/usr/bin/apt");
    QVERIFY(apt.run(DetectDnfCommand()).exitCode != 0);
    QCOMPARE(apt.says(DpkgCountInstalledCommand().commandString()),
             apt.says(u"grep -c '^Status: install ok installed' /var/lib/dpkg/status"_s));
    QVERIFY(apt.says(AptCountPackagesCommand().commandString()).toInt() > 0);
    NEEDS_HOST(dnf, u"dnf"_s);
    QCOMPARE(dnf.says(DetectDnfCommand().commandString()), "/usr/bin/dnf");
    QVERIFY(dnf.run(DetectAptCommand()).exitCode != 0);
    QCOMPARE(dnf.says(RpmCountInstalledCommand().commandString()).toInt(),
             dnf.says(u"rpm -qa --qf .; echo"_s).size());
    QVERIFY(dnf.says(DnfCountAvailableCommand().commandString()).toInt() > 0);
}

void TestLinesOnHosts::cronJobs()
{
    NEEDS_HOST(host, u"systemd"_s);
    QCOMPARE(host.says(CheckCrontabAvailableCommand().commandString()), "CRONTAB_AVAILABLE");
    QCOMPARE(host.run(GetSystemCrontabCommand()).output, host.run(u"cat /etc/crontab"_s).output);
    QVERIFY(host.run(GetCronDCommand()).output.size() ==
            host.says(u"cat /etc/cron.d/* /etc/cron.d/.[!.]* | wc -c"_s).toInt());
    QCOMPARE(host.run(GetRootCrontabCommand()).output, host.run(u"sudo crontab -l"_s).output);

    const QByteArray before = host.run(GetUserCrontabCommand()).output;
    const QString temp = u"/tmp/tw test 'jobs'"_s;
    const QString jobs = QString::fromUtf8(before) + u"7 7 * * * echo \"$HOME\" 'it\\'s' `id` # tw-test"_s;
    QCOMPARE(host.run(WriteTempFileCommand(jobs, temp)).exitCode, 0);
    QCOMPARE(host.run(InstallCrontabCommand(temp)).exitCode, 0);
    QCOMPARE(host.run(GetUserCrontabCommand()).output, jobs.toUtf8() + '\n');
    QCOMPARE(host.run(u"sudo cat /var/spool/cron/crontabs/%1 | grep -c tw-test"_s.arg(host.server().username)).output,
             "1\n");
    host.run(WriteTempFileCommand(QString::fromUtf8(before).chopped(1), temp));
    host.run(InstallCrontabCommand(temp));
    QCOMPARE(host.run(RemoveTempFileCommand(temp)).exitCode, 0);
    QCOMPARE(host.run(GetUserCrontabCommand()).output, before);
    QVERIFY(host.run(u"ls /tmp/tw*jobs*"_s).exitCode != 0);
}

void TestLinesOnHosts::ports()
{
    NEEDS_HOST(host, u"systemd"_s);
    // The socket of sshd, as /proc/net/tcp has it: port 22 in hexadecimal, state 0A is listening.
    QVERIFY(host.says(u"grep -c ':0016 .* 0A ' /proc/net/tcp"_s).toInt() > 0);
    for (const bool useNetstat : {false, true}) {
        const CommandResult listed = host.run(GetPortsCommand(useNetstat));
        QCOMPARE(listed.exitCode, 0);
        QVERIFY(listed.output.contains(":22 "));
    }
    QCOMPARE(host.says(DockerServiceStatusCommand().commandString()), "active");
    QCOMPARE(host.says(WhichDockerCommand().commandString()), host.says(u"command -v docker"_s));
}

void TestLinesOnHosts::smallestHost()
{
    NEEDS_HOST(host, u"busybox"_s);
    const QString folder = u"/tmp/tw it's $(id)"_s;
    host.run(u"mkdir "_s + shellQuoted(folder));
    QCOMPARE(host.run(WriteTempFileCommand(u"a\nb"_s, folder + u"/é"_s)).exitCode, 0);
    QVERIFY(host.run(ListFilesCommand(folder)).output.contains("é\n"));
    QCOMPARE(host.run(ReadFileCommand(folder + u"/é"_s, 10)).output, "a\nb\n");
    QCOMPARE(host.run(DeleteFileCommand(folder)).exitCode, 0);
    QVERIFY(host.run(u"ls -d "_s + shellQuoted(folder)).exitCode != 0);

    QCOMPARE(host.says(CheckCrontabAvailableCommand().commandString()), "CRONTAB_AVAILABLE");
    // Its ps knows no order and it has no bash: both lists stay empty, and nothing hangs.
    QVERIFY(ProcessParser::parse(host.run(ProcessListCommand()).output).isEmpty());
    QVERIFY(ServiceParser::parse(host.run(ServiceListCommand(false)).output).isEmpty());
    const double cpu = MetricsParser::cpuUsage(host.run(GetCPUUsageCommand()).output);
    QVERIFY(cpu >= 0 && cpu <= 100);
    const MemoryMetrics memory = MetricsParser::memory(host.run(GetMemoryMetricsCommand()).output);
    const QByteArray total = host.says(u"grep ^MemTotal /proc/meminfo"_s).simplified().split(' ').value(1);
    QCOMPARE(memory.total, total.toLongLong() * 1024);
    QCOMPARE(MetricsParser::network(host.run(GetNetworkMetricsCommand()).output).size(),
             host.says(u"ls /sys/class/net | grep -vc '^lo$'"_s).toInt());
}

void TestLinesOnHosts::sudo()
{
    NEEDS_HOST(host, u"systemd"_s);
    QCOMPARE(host.says(CheckPasswordlessSudoCommand().commandString()), "SUDO_TEST_OK");
    NEEDS_HOST(without, u"nosudo"_s);
    QVERIFY(without.run(CheckPasswordlessSudoCommand()).exitCode != 0);
    QVERIFY(without.run(StartServiceCommand(u"cron"_s)).exitCode != 0);
}

QTEST_GUILESS_MAIN(TestLinesOnHosts)
#include "test_lines_on_hosts.moc"
