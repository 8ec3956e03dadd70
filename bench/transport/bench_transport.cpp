// What a command costs over the client itself: a pooled command against a shell loop of `ssh -S`, and a large output
// against the client writing into a pipe.

#include "../Measure.h"

#include "Helpers/ShellQuote.h"
#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kRounds = 10;
constexpr int kCommandsPerRound = 20;
constexpr int kOutputRounds = 5;
constexpr qint64 kOutputBytes = 100'000'000;

// The pool logs in through the test's wrapper; what is measured is the client itself, without a shell before it.
struct Bench {
    RigSshd sshd;
    TestTransport transport;
    Server server;
    SSHLauncher launcher{transport.children, transport.tracker, transport.askpass};
    std::optional<SSHPooledConnection> lease;

    bool prepare()
    {
        if (!sshd.up()) {
            std::fprintf(stderr, "%s\n", qPrintable(sshd.error()));
            return false;
        }
        server = TestTransport::server(sshd, AuthMethod::PublicKey);
        lease = QCoro::waitFor(transport.pool.getConnection(server, {}, {}));
        return lease.has_value();
    }

    CommandResult run(const QString &line)
    {
        SystemSSHConnection connection({launcher, transport.pool, transport.settings}, server, {}, {});
        return QCoro::waitFor(connection.executeCommand(line, std::nullopt));
    }

    QString shellLine(const QString &command) const
    {
        QStringList words{u"/usr/bin/ssh"_s};
        for (const QString &argument : lease->buildCommandArguments(command, false)) {
            words += shellQuoted(argument);
        }
        return words.join(u' ');
    }
};

// Returns the wall time of a shell script in milliseconds.
double shellMilliseconds(const QString &script)
{
    return Measure::milliseconds([&] {
        QProcess shell;
        shell.setStandardInputFile(QProcess::nullDevice());
        shell.start(u"/bin/sh"_s, {u"-c"_s, script});
        shell.waitForFinished(-1);
        if (shell.exitCode() != 0) {
            std::fprintf(stderr, "the shell loop failed: %s\n", shell.readAllStandardError().constData());
        }
    });
}

void pooledCommand(Bench &bench)
{
    const QString loop =
        u"i=0; while [ $i -lt %1 ]; do out=$(%2 </dev/null) || exit 1; i=$((i+1)); done"_s.arg(kCommandsPerRound)
            .arg(bench.shellLine(u"echo x"_s));
    const auto sides = Measure::alternate(
        kRounds,
        [&] {
            return Measure::milliseconds([&] {
                       for (int i = 0; i < kCommandsPerRound; ++i) {
                           if (bench.run(u"echo x"_s).output != "x\n") {
                               std::fprintf(stderr, "a command was lost\n");
                           }
                       }
                   }) /
                   kCommandsPerRound;
        },
        [&] { return shellMilliseconds(loop) / kCommandsPerRound; });
    Measure::report("pooled command / ssh -S in a shell loop", sides, "ms", 1.10);
}

void largeOutput(Bench &bench)
{
    const QString line = u"head -c %1 /dev/zero | tr '\\0' x"_s.arg(kOutputBytes);
    double worstMemory = 0;
    const auto sides = Measure::alternate(
        kOutputRounds,
        [&] {
            Measure::resetPeakMemory();
            const qint64 before = Measure::statusKilobytes("VmHWM");
            const double time = Measure::milliseconds([&] {
                if (bench.run(line).output.size() != kOutputBytes) {
                    std::fprintf(stderr, "output was lost\n");
                }
            });
            const auto grown = static_cast<double>((Measure::statusKilobytes("VmHWM") - before) * 1024);
            worstMemory = std::max(worstMemory, grown / kOutputBytes);
            return time;
        },
        [&] { return shellMilliseconds(bench.shellLine(line) + u" </dev/null | cat >/dev/null"_s); });
    Measure::report("100 MB of output / ssh into a pipe", sides, "ms", 1.15);
    std::printf("100 MB of output: peak memory %.2f times the output (wanted at most 2)\n", worstMemory);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    Bench bench;
    if (!bench.prepare()) {
        return 1;
    }
    pooledCommand(bench);
    largeOutput(bench);
    return 0;
}
