#include "Services/Commands/StandIns.h"

#include "Services/Commands/CronCommands.h"
#include "Services/Commands/DockerCommands.h"
#include "Services/Commands/NetworkCommands.h"
#include "Services/Commands/PackageCommands.h"
#include "Services/Commands/ProcessCommands.h"
#include "Services/Commands/ServiceCommands.h"
#include "Services/Commands/SystemCommands.h"
#include "Services/Commands/UserCommands.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

// What another user of the server may have called something.
const QString kHostile = u"it's \"$(touch ran)\" `touch ran` ; touch ran & * ~ \\ #\n-x é"_s;

const QString kOrdinary = u"web@1.service"_s;

} // namespace

/// The lines that change something, or call what this machine may lack, given to stand-ins by real shells: each tool
/// gets the arguments that are meant for it and no other tool is run.
class TestLinesToTools : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void calls_data();
    void calls();
    void theServiceListThroughSudo();
    void aServiceListThatFails();

private:
    std::unique_ptr<StandIns> m_tools;
};

void TestLinesToTools::initTestCase()
{
    m_tools = std::make_unique<StandIns>(
        u"sudo systemctl docker podman useradd userdel usermod chpasswd tee crontab ss netstat apt dpkg dnf rpm "
        "nvidia-smi amd-smi rocm-smi intel_gpu_top mpstat lsblk timeout which kill"_s.split(u' '));
}

void TestLinesToTools::calls_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("calls");
    const auto row = [](const char *name, const BaseSSHCommand &command, const QStringList &calls) {
        QTest::newRow(name) << command.commandString() << calls;
    };
    // sudo itself, and what it runs.
    const auto sudo = [](const QString &call) { return QStringList{u"sudo|"_s + call, call}; };

    for (const QString &name : {kOrdinary, kHostile}) {
        row("start service", StartServiceCommand(name), sudo(u"systemctl|start|"_s + name));
        row("stop service", StopServiceCommand(name), sudo(u"systemctl|stop|"_s + name));
        row("restart service", RestartServiceCommand(name), sudo(u"systemctl|restart|"_s + name));
        row("enable service", EnableServiceCommand(name), sudo(u"systemctl|enable|"_s + name));
        row("disable service", DisableServiceCommand(name), sudo(u"systemctl|disable|"_s + name));
        row("service file", CreateServiceFileCommand(name, u"[Unit]\n"_s + kHostile),
            {u"sudo|tee|"_s + name, u"tee|"_s + name + u"|<[Unit]\n"_s + kHostile});

        row("add user", AddUserCommand(name, kHostile, true, u"/bin/"_s + name),
            sudo(u"useradd|-m|-c|%1|-s|/bin/%2|%2"_s.arg(kHostile, name)));
        row("add user, bare", AddUserCommand(name, QString(), false, u"/bin/sh"_s),
            sudo(u"useradd|-s|/bin/sh|"_s + name));
        row("delete user and home", DeleteUserCommand(name, true), sudo(u"userdel|-r|"_s + name));
        row("delete user", DeleteUserCommand(name, false), sudo(u"userdel|"_s + name));
        row("add to group", AddUserToGroupCommand(name, kHostile), sudo(u"usermod|-aG|%1|%2"_s.arg(kHostile, name)));
        row("passwordless sudo", EnablePasswordlessSudoCommand(name),
            {u"sudo|tee|/etc/sudoers.d/"_s + name,
             u"tee|/etc/sudoers.d/%1|<%1 ALL=(ALL) NOPASSWD:ALL\n"_s.arg(name)});
        row("password", SetUserPasswordCommand(u"eve"_s, name),
            {u"sudo|chpasswd"_s, u"chpasswd|<eve:%1\n"_s.arg(name)});
        row("install crontab", InstallCrontabCommand(name), {u"crontab|"_s + name});

        for (const ContainerRuntime runtime : {ContainerRuntime::Docker, ContainerRuntime::Podman}) {
            const QString program = rawText(runtime) + u'|';
            row("start container", DockerStartContainerCommand(name, runtime), {program + u"start|"_s + name});
            row("stop container", DockerStopContainerCommand(name, runtime), {program + u"stop|"_s + name});
            row("restart container", DockerRestartContainerCommand(name, runtime), {program + u"restart|"_s + name});
            row("remove container", DockerRemoveContainerCommand(name, runtime), {program + u"rm|"_s + name});
            row("inspect container", DockerInspectContainerCommand(name, runtime), {program + u"inspect|"_s + name});
            row("remove image", DockerRemoveImageCommand(name, runtime), {program + u"rmi|"_s + name});
            row("remove network", DockerRemoveNetworkCommand(name, runtime), {program + u"network|rm|"_s + name});
            row("container logs", dockerContainerLogs(name, 100, true, runtime),
                {program + u"logs|-t|--tail|100|"_s + name});
            row("all container logs", dockerContainerLogs(name, 0, false, runtime), {program + u"logs|"_s + name});
            row("container details", dockerDetailsAndStats(name, runtime),
                {program +
                     u"stats|--no-stream|--format|{{.CPUPerc}}|{{.MemUsage}}|{{.MemPerc}}|{{.NetIO}}|{{.BlockIO}}|{{.PIDs}}|"_s +
                     name,
                 program + u"inspect|"_s + name});
        }
    }
    row("reload systemd", ReloadSystemdCommand(), sudo(u"systemctl|daemon-reload"_s));
    row("kill with sudo", KillProcessCommand(4194305, true), sudo(u"kill|4194305"_s));
    row("sudo check", CheckPasswordlessSudoCommand(), {u"sudo|-n|echo|SUDO_TEST_OK"_s});
    const QString units =
        u"timeout|10|systemctl|list-units|--type=service|--all|--no-pager|--no-legend|--plain|--no-ask-password"_s;
    row("services", ServiceListCommand(false), {units});
    row("docker service", DockerServiceStatusCommand(), {u"systemctl|is-active|docker"_s});
    row("where docker is", WhichDockerCommand(), {u"which|docker"_s});
    for (const ContainerRuntime runtime : {ContainerRuntime::Docker, ContainerRuntime::Podman}) {
        const QString program = rawText(runtime) + u'|';
        const bool isPodman = runtime == ContainerRuntime::Podman;
        row("containers", DockerListContainersCommand(runtime), {program + u"ps|-a|--format|{{json .}}"_s});
        row("containers in columns", dockerFallbackListing(runtime),
            {program + u"ps|-a|--format|{{.ID}}|{{.Names}}|{{.Image}}|{{.Status}}|{{.Ports}}|{{.CreatedAt}}"_s});
        row("images", DockerListImagesCommand(runtime),
            {program + u"images|--format|{{.ID}}|{{.Repository}}|{{.Tag}}|{{.ID}}|{{.CreatedAt}}|{{.Size}}"_s});
        row("volumes", DockerListVolumesCommand(runtime),
            {program + u"volume|ls|--format|{{.Name}}|{{.Driver}}|{{.Scope}}"_s});
        row("networks", DockerListNetworksCommand(runtime),
            {program + u"network|ls|--format|{{.ID}}|{{.Name}}|{{.Driver}}|"_s +
             (isPodman ? u"|"_s : u"{{.Scope}}|{{.CreatedAt}}"_s)});
    }
    row("run container",
        DockerRunContainerCommand({u"podman"_s, u"run"_s, u"-d"_s, u"8080:80"_s, u"FOO=a 'b' $x *"_s, u"img"_s},
                                  ContainerRuntime::Podman),
        {u"podman|run|-d|8080:80|FOO=a 'b' $x *|img"_s});
    row("ports", GetPortsCommand(false), {u"ss|-tulpn"_s});
    row("ports of netstat", GetPortsCommand(true), {u"netstat|-tulpn"_s});
    row("devices", StorageDevicesCommand(), {u"lsblk|-l|--json"_s});
    row("apt packages", AptCountPackagesCommand(), {u"apt|list"_s});
    row("dpkg packages", DpkgCountInstalledCommand(), {u"dpkg|-l"_s});
    row("dnf packages", DnfCountAvailableCommand(), {u"dnf|list|available"_s});
    row("rpm packages", RpmCountInstalledCommand(), {u"rpm|-qa"_s});
    row("user crontab", GetUserCrontabCommand(), {u"crontab|-l"_s});
    row("root crontab", GetRootCrontabCommand(), sudo(u"crontab|-l|-u|root"_s));
    row("processor load by mpstat", GetCPUUsageCommand(), {u"mpstat|1|1"_s});
    row("graphics processors", GetGPUMetricsCommand(),
        {u"nvidia-smi|--query-gpu=index,name,temperature.gpu,utilization.gpu,memory.total,memory.used,memory.free,"
         "power.draw,power.limit,fan.speed,clocks.current.graphics,clocks.current.memory|--format=csv,noheader"_s,
         u"amd-smi|metric|--json"_s, u"sudo|intel_gpu_top|-J|-d|-m|-e|-c|-t"_s,
         u"intel_gpu_top|-J|-d|-m|-e|-c|-t"_s});
}

void TestLinesToTools::calls()
{
    QFETCH(QString, line);
    QFETCH(QStringList, calls);
    for (const QString &shell : {u"/bin/sh"_s, u"/bin/dash"_s, u"/bin/bash"_s}) {
        QCOMPARE(m_tools->calls(shell, line), calls);
    }
}

void TestLinesToTools::theServiceListThroughSudo()
{
    // sudo takes the whole inner text as one word of bash, up to the quotes of its own echo.
    const QStringList calls = m_tools->calls(u"/bin/sh"_s, ServiceListCommand(true).commandString());
    QCOMPARE(calls.size(), 2);
    QVERIFY(calls.first().startsWith("sudo|bash|-c|SYSTEMD_COLORS=0 command -v timeout"_L1));
    QCOMPARE(m_tools->exitCode, 0);
}

void TestLinesToTools::aServiceListThatFails()
{
    // Without timeout(1) systemctl is never asked, and of the message its first word comes back.
    QTemporaryDir onlyBash;
    QVERIFY(QFile::link(u"/bin/bash"_s, onlyBash.filePath(u"bash"_s)));
    QProcess shell;
    QProcessEnvironment environment;
    environment.insert(u"PATH"_s, onlyBash.path());
    shell.setProcessEnvironment(environment);
    shell.start(u"/bin/sh"_s, {u"-c"_s, ServiceListCommand(false).commandString()});
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.readAllStandardOutput(), "ERROR:\n");
    QCOMPARE(shell.exitCode(), 0);
}

QTEST_GUILESS_MAIN(TestLinesToTools)
#include "test_lines_to_tools.moc"
