// What a terminal session costs over the client itself: `cat` of 100 MB into a terminal on show against `ssh` writing
// the same into a file; and how long an input waits, and Ctrl+C takes, while output floods in.

#include "../Measure.h"

#include "Helpers/ShellQuote.h"
#include "TerminalEmulator/Engine/Terminal.h"
#include "Views/Terminal/GlobalTerminalSessionManager.h"
#include "Views/Theme/Theme.h"
#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include <QApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdlib>
#include <functional>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kRounds = 5;
constexpr int kWaits = 100;
constexpr int kPauseMs = 7;
constexpr int kInterrupts = 9;
constexpr int kPatienceMs = 60'000;
constexpr qint64 kBytes = 100'000'000;

struct Bench {
    RigSshd sshd;
    Theme theme;
    TestTransport transport;
    GlobalTerminalSessionManager terminals{
        {{transport.launcher, transport.keychain, transport.settings, transport.prompt},
         transport.manager,
         transport.settings,
         theme}};
    Server server;
    QTemporaryDir directory;
    QString file = directory.filePath(u"file"_s);

    HostedTerminalView &view() { return *terminals.terminal(server.id).terminal; }

    void type(const QByteArray &line) { view().coordinator().terminalSends(line); }

    QString screen()
    {
        const vt::Terminal &terminal = view().terminal();
        const vt::Position last{terminal.screenTop() + terminal.rows() - 1, terminal.columns() - 1};
        return QString::fromStdString(terminal.text({terminal.screenTop(), 0}, last));
    }

    // Ends the program when it takes too long: a shell that behaves otherwise is no measure of anything.
    void run(const std::function<bool()> &isOver)
    {
        QTimer patience;
        patience.setSingleShot(true);
        patience.callOnTimeout(qApp, [this] {
            std::fprintf(stderr, "too long, at:\n%s\n", qPrintable(screen()));
            std::exit(1);
        });
        patience.start(kPatienceMs);
        while (!isOver()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    void await(const QString &text)
    {
        run([&] { return screen().contains(text); });
    }

    bool prepare()
    {
        // Lines as a log has them.
        QFile lines(file);
        if (!sshd.up() || !lines.open(QIODevice::WriteOnly)) {
            std::fprintf(stderr, "%s\n", qPrintable(sshd.error() + lines.errorString()));
            return false;
        }
        QByteArray block;
        for (int i = 0; block.size() < 1'000'000; ++i) {
            block += "Oct 08 03:12:44 web-01 nginx[" + QByteArray::number(2209 + i % 7) + "]: 10.0.4." +
                     QByteArray::number(i % 250) + " - GET /index/" + QByteArray::number(i) + ".html 200 \u2013 ok\n";
        }
        while (lines.size() < kBytes) {
            lines.write(block);
        }
        lines.close();
        server = TestTransport::server(sshd, AuthMethod::PublicKey);
        HostedTerminalView &terminal = *terminals.getOrCreateTerminal(server).terminal;
        terminal.resize(872, 700);
        terminal.show();
        await(u"~"_s); // a prompt
        type("PS1='he''re> '; clear\r");
        await(u"here>"_s);
        return true;
    }
};

double shellMilliseconds(const QString &script)
{
    return Measure::milliseconds([&] {
        QProcess shell;
        shell.setStandardInputFile(QProcess::nullDevice());
        shell.start(u"/bin/sh"_s, {u"-c"_s, script});
        shell.waitForFinished(-1);
    });
}

void bigFile(Bench &bench)
{
    QStringList words{u"/usr/bin/ssh"_s};
    for (const QString &argument : bench.sshd.sshArguments(bench.sshd.key())) {
        words += shellQuoted(argument);
    }
    const QString client = words.join(u' ');
    const QString copy = shellQuoted(bench.directory.filePath(u"copy"_s));
    const QString cat = shellQuoted(u"cat "_s + shellQuoted(bench.file));
    int round = 0;
    const auto terminal = [&] {
        const QByteArray number = QByteArray::number(++round);
        return Measure::milliseconds([&] {
            bench.type("cat " + shellQuoted(bench.file).toUtf8() + "; echo do''ne-" + number + '\r');
            bench.await(QString::fromUtf8("done-" + number));
        });
    };
    const auto sides = Measure::alternate(kRounds, terminal,
                                          [&] { return shellMilliseconds(client + u' ' + cat + u" > "_s + copy); });
    Measure::report("cat of 100 MB into the terminal / ssh into a file", sides, "ms", 1.5);
    // With a terminal on the far side, as every session has one: the daemon gets no more than a page at a time of it.
    const auto sidesTty = Measure::alternate(
        kRounds, terminal, [&] { return shellMilliseconds(client + u" -tt "_s + cat + u" > "_s + copy); });
    Measure::report("the same / ssh -tt into a file", sidesTty, "ms", 1.5);
    std::printf("resident at its peak: %lld MiB\n", Measure::statusKilobytes("VmHWM") / 1024);
}

void flood(Bench &bench)
{
    std::vector<double> waits;
    std::vector<double> interrupts;
    for (int i = 0; i < kInterrupts; ++i) {
        bench.type("clear; yes\r");
        bench.run([&] {
            const QString screen = bench.screen();
            return !screen.contains(u"here>"_s) && screen.count(u'y') >= bench.view().rows() - 1;
        });
        for (int j = 0; j < kWaits; ++j) {
            QElapsedTimer pause; // in which the flood goes on
            pause.start();
            bench.run([&] { return pause.elapsed() >= kPauseMs; });
            waits.push_back(Measure::milliseconds([&] {
                bool isHandled = false;
                QMetaObject::invokeMethod(qApp, [&] { isHandled = true; }, Qt::QueuedConnection);
                bench.run([&] { return isHandled; });
            }));
        }
        interrupts.push_back(Measure::milliseconds([&] {
            bench.type("\x03");
            bench.await(u"here>"_s);
        }));
    }
    std::ranges::sort(waits);
    std::printf("input under a flood: waits %.1f ms, 99 of 100 at most %.1f, all at most %.1f (wanted at most 50)\n",
                Measure::median(waits), waits[waits.size() * 99 / 100], std::ranges::max(waits));
    std::printf("Ctrl+C under a flood: stops it in %.0f ms, at most %.0f (wanted at most 500)\n",
                Measure::median(interrupts), std::ranges::max(interrupts));
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    Bench bench;
    bench.theme.install();
    if (!bench.prepare()) {
        return 1;
    }
    flood(bench);
    bigFile(bench);
    return 0;
}
