#include "TerminalEmulator/PseudoTerminal.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

// Children on a pseudo terminal, and vt-host around them.
class TestPseudoTerminal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theChildFindsATerminalOfItsSize();
    void theChildStartsClean();
    void aParentWithoutItsDescriptorsGivesThemToItsChild();
    void whatCannotStartSaysWhy();
    void aChildThatDoesNotReadBlocksNobody();
    void readsAheadOfItsUser();
    void readingAheadEndsAtAnyTime();
    void vtHostAnswersAndEndsLikeItsCommand();

private:
    /// What a shell command writes until it ends, and its status.
    static QByteArray run(const std::string &command, int &status, std::vector<std::string> environment = {})
    {
        vt::PseudoTerminal pty;
        QByteArray out;
        if (pty.open(33, 7) != 0 || pty.spawn({"/bin/sh", {"-c", command}, std::move(environment), "/"}) != 0) {
            return "not started";
        }
        char buffer[4096];
        while (true) {
            struct pollfd watched = {pty.master(), POLLIN, 0};
            if (::poll(&watched, 1, 10'000) <= 0) {
                return "timeout";
            }
            const ssize_t count = pty.read(buffer, sizeof buffer);
            if (count == 0) {
                break;
            }
            out.append(buffer, count > 0 ? static_cast<int>(count) : 0);
        }
        for (int tries = 0; tries < 1000 && !pty.hasExited(status); ++tries) {
            ::usleep(5000);
        }
        return out.replace("\r\n", "\n");
    }
};

void TestPseudoTerminal::theChildFindsATerminalOfItsSize()
{
    int status = 0;
    QCOMPARE(
        run("stty size; tty -s && echo tty; pwd; echo $NAME; exit 5", status, {"NAME=value", "PATH=/usr/bin:/bin"}),
        "7 33\ntty\n/\nvalue\n");
    QCOMPARE(WEXITSTATUS(status), 5);
}

void TestPseudoTerminal::theChildStartsClean()
{
    // An ignored and a blocked signal, and a descriptor without close-on-exec, must not get through.
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigprocmask(SIG_BLOCK, &blocked, &before);
    const auto handler = std::signal(SIGUSR2, SIG_IGN);
    const int leak = ::dup(0);
    int status = 0;
    const QByteArray state =
        run("grep -E '^Sig(Blk|Ign):' /proc/self/status | cut -f2; ls /proc/$$/fd | tr '\\n' ' '; "
            "[ $(ps -o sid= -p $$) = $$ ] && echo leader",
            status);
    ::close(leak);
    std::signal(SIGUSR2, handler);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    const QList<QByteArray> lines = state.split('\n');
    QCOMPARE(lines.value(0).toULongLong(nullptr, 16), 0ull);
    QCOMPARE(lines.value(1).toULongLong(nullptr, 16), 0ull);
    QVERIFY2(lines.value(2).startsWith("0 1 2 "), state.constData());
    QVERIFY2(!lines.value(2).contains(QByteArray::number(leak)) || leak < 3, state.constData());
    QVERIFY2(state.contains("leader"), state.constData());
}

void TestPseudoTerminal::aParentWithoutItsDescriptorsGivesThemToItsChild()
{
    // The pair and the report of a failed start then take the places of the three.
    const pid_t pid = ::fork();
    QVERIFY(pid >= 0);
    if (pid == 0) {
        ::close(0);
        ::close(1);
        ::close(2);
        int status = 0;
        const QByteArray found = run("[ -t 0 ] && [ -t 1 ] && [ -t 2 ] && echo all; exit 5", status);
        vt::PseudoTerminal pty;
        const bool told = pty.open(80, 24) == 0 && pty.spawn({"/nowhere/at-all", {}, {}, {}}) == ENOENT;
        ::_exit(found == "all\n" && WEXITSTATUS(status) == 5 ? (told ? 0 : 2) : 1);
    }
    int status = 0;
    QCOMPARE(::waitpid(pid, &status, 0), pid);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 0);
}

void TestPseudoTerminal::whatCannotStartSaysWhy()
{
    vt::PseudoTerminal pty;
    QCOMPARE(pty.spawn({"/bin/true", {}, {}, {}}), EBADF);
    QCOMPARE(pty.open(80, 24), 0);
    QCOMPARE(pty.spawn({"/nowhere/at-all", {}, {}, {}}), ENOENT);
    QCOMPARE(pty.spawn({"/bin/true", {}, {}, "/nowhere"}), ENOENT);
    QCOMPARE(pty.spawn({"/etc/passwd", {}, {}, {}}), EACCES);
    QCOMPARE(pty.spawn({"true", {}, {}, {}}), 0);
}

void TestPseudoTerminal::aChildThatDoesNotReadBlocksNobody()
{
    vt::PseudoTerminal pty;
    QCOMPARE(pty.open(80, 24), 0);
    QCOMPARE(pty.spawn({"/bin/sh", {"-c", "stty raw -echo; sleep 30"}, {}, {}}), 0);
    QElapsedTimer timer;
    timer.start();
    const std::string block(1 << 20, 'x');
    int taken = 0;
    while (taken < 100 && pty.write(block)) {
        ++taken;
    }
    QVERIFY(timer.elapsed() < 5000);
    QVERIFY(pty.hasPending());
    QVERIFY(taken < 100);
    ::kill(pty.child(), SIGKILL);
    int status = 0;
    bool ended = false;
    QTRY_VERIFY((ended = ended || pty.hasExited(status)));
    QCOMPARE(WTERMSIG(status), SIGKILL);
}

/// Everything up to the end, as it comes.
static QByteArray readAll(vt::PseudoTerminal &pty)
{
    QByteArray out;
    char buffer[10'000];
    while (true) {
        struct pollfd watched = {pty.readable(), POLLIN, 0};
        if (::poll(&watched, 1, 10'000) <= 0) {
            return "timeout";
        }
        const ssize_t count = pty.read(buffer, sizeof buffer);
        if (count == 0) {
            return out;
        }
        out.append(buffer, std::max<qsizetype>(count, 0));
    }
}

static QByteArray numbers(int last)
{
    QByteArray out;
    for (int each = 1; each <= last; ++each) {
        out += QByteArray::number(each) + '\n';
    }
    return out;
}

void TestPseudoTerminal::readsAheadOfItsUser()
{
    // What fits is taken from a child although nobody reads it; then the child waits. All of it comes, in order.
    for (const auto &[last, fits] : {std::pair{100'000, true}, std::pair{500'000, false}}) {
        vt::PseudoTerminal pty;
        QCOMPARE(pty.open(80, 24), 0);
        QCOMPARE(pty.spawn({"/bin/sh", {"-c", "stty -opost; exec seq " + std::to_string(last)}, {}, {}}), 0);
        pty.readAhead();
        int status = 0;
        QCOMPARE(QTest::qWaitFor([&] { return pty.hasExited(status); }, fits ? 10'000 : 500), fits);
        QVERIFY(readAll(pty) == numbers(last));
        QCOMPARE(pty.read(nullptr, 0), 0);
    }
    // One who is told takes what is there, and is told again only of more.
    vt::PseudoTerminal pty;
    QCOMPARE(pty.open(80, 24), 0);
    QCOMPARE(pty.spawn({"/bin/sh", {"-c", "stty -echo; echo one; read x; echo two; read x"}, {}, {}}), 0);
    pty.readAhead();
    for (const char *each : {"one\r\n", "two\r\n"}) {
        struct pollfd watched = {pty.readable(), POLLIN, 0};
        QCOMPARE(::poll(&watched, 1, 10'000), 1);
        char buffer[100];
        QCOMPARE(pty.read(buffer, sizeof buffer), 5);
        QCOMPARE(QByteArray(buffer, 5), each);
        QCOMPARE(::poll(&watched, 1, 20), 0);
        QCOMPARE(pty.read(buffer, sizeof buffer), -1);
        QVERIFY(pty.write("\n"));
    }
}

void TestPseudoTerminal::readingAheadEndsAtAnyTime()
{
    for (int wait = 0; wait < 12; ++wait) {
        vt::PseudoTerminal pty;
        QCOMPARE(pty.open(80, 24), 0);
        QCOMPARE(pty.spawn({"/bin/sh", {"-c", "stty -opost; exec seq 400000"}, {}, {}}), 0);
        pty.readAhead();
        QTest::qSleep(5 * wait);
        pty.endReadAhead();
        QVERIFY(readAll(pty) == numbers(400'000));
    }
    for (int wait = 0; wait < 12; ++wait) {
        vt::PseudoTerminal pty;
        QCOMPARE(pty.open(80, 24), 0);
        QCOMPARE(pty.spawn({"/usr/bin/yes", {}, {}, {}}), 0);
        pty.readAhead();
        QTest::qSleep(3 * wait);
        pty.close();
        QCOMPARE(pty.readable(), -1);
        int status = 0;
        QVERIFY(QTest::qWaitFor([&] { return pty.hasExited(status); }));
    }
}

void TestPseudoTerminal::vtHostAnswersAndEndsLikeItsCommand()
{
    const auto host = [](const QStringList &arguments) {
        QProcess process;
        process.start(QStringLiteral(TARNWELL_VT_HOST), arguments);
        process.waitForFinished(20'000);
        return std::pair{process.readAllStandardOutput(), process.exitCode()};
    };
    const auto [screen, code] = host({QStringLiteral("--size"), QStringLiteral("30x5"), QStringLiteral("--dump"),
                                      QStringLiteral("--"), QStringLiteral("/bin/sh"), QStringLiteral("-c"),
                                      QStringLiteral("stty raw -echo; printf '\\033[3;5H\\033[6n'; "
                                                     "head -c 6 | tr -d '\\033'; stty size; exit 4")});
    QCOMPARE(screen, "\n\n    [3;5R5 30\n");
    QCOMPARE(code, 4);
    QCOMPARE(
        host({QStringLiteral("--"), QStringLiteral("/bin/sh"), QStringLiteral("-c"), QStringLiteral("kill -9 $$")})
            .second,
        128 + 9);
    QCOMPARE(host({QStringLiteral("--"), QStringLiteral("/nowhere")}).second, 127);
    // One that is left behind and goes on writing does not keep it. It ends when nobody takes what it writes.
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(host({QStringLiteral("--"), QStringLiteral("/bin/sh"), QStringLiteral("-c"),
                   QStringLiteral("trap '' HUP; (while printf .; do sleep 0.005; done) & sleep 0.1; exit 3")})
                 .second,
             3);
    QVERIFY2(timer.elapsed() < 10'000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(host({QStringLiteral("--size"), QStringLiteral("x")}).second, 2);
}

QTEST_GUILESS_MAIN(TestPseudoTerminal)
#include "test_pseudo_terminal.moc"
