#include "Services/Terminal/TerminalChild.h"

#include "TerminalEmulator/PseudoTerminal.h"

#include <QThreadPool>

#include <algorithm>
#include <csignal>
#include <string_view>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace
{

constexpr useconds_t kTermWait = 25'000;
constexpr useconds_t kReapPause = 1'000;
constexpr int kReapTries = 1'000;
constexpr int kExitPollMs = 100;
constexpr int kLineModePollMs = 20;
constexpr qsizetype kPiece = 65'536;
constexpr int kPiecesAtOnce = 8;

// While the terminal takes input line by line the system keeps no more than 4095 bytes of it and drops the rest. So
// much may be typed ahead; more waits until the child reads byte by byte.
constexpr qsizetype kMostTypedAhead = 1'024;

bool isReaped(pid_t pid)
{
    return ::waitpid(pid, nullptr, WNOHANG) != 0;
}

void reap(pid_t pid)
{
    for (int i = 0; i < kReapTries && !isReaped(pid); ++i) {
        ::usleep(kReapPause);
    }
}

// A person can answer questions: lines are edited and echoed, and both ends of a line mean the same.
int setLineMode(int slave)
{
    struct termios attributes = {};
    if (::tcgetattr(slave, &attributes) != 0) {
        return errno;
    }
    attributes.c_oflag |= ONLCR;
    attributes.c_iflag |= ICRNL;
    attributes.c_lflag |= ICANON | ISIG | ECHO | ECHOE | ECHOK | ECHONL;
    return ::tcsetattr(slave, TCSANOW, &attributes) == 0 ? 0 : errno;
}

// These may run inside of the notifier's own signal, so it stays its owner's for a moment.
void retire(QSocketNotifier *&notifier)
{
    if (notifier != nullptr) {
        notifier->setEnabled(false);
        std::exchange(notifier, nullptr)->deleteLater();
    }
}

} // namespace

TerminalChild::TerminalChild(QObject *parent)
    : QObject(parent)
    , m_terminal(std::make_unique<vt::PseudoTerminal>())
{
    m_exitPoll.setInterval(kExitPollMs);
    m_lineModePoll.setInterval(kLineModePollMs);
    connect(&m_exitPoll, &QTimer::timeout, this, &TerminalChild::checkExit);
    connect(&m_lineModePoll, &QTimer::timeout, this, &TerminalChild::sendPending);
}

TerminalChild::~TerminalChild()
{
    end();
}

int TerminalChild::open(int columns, int rows)
{
    const int error = m_terminal->open(columns, rows);
    return error != 0 ? error : setLineMode(m_terminal->slave());
}

int TerminalChild::start(const QString &program, const QStringList &arguments, const QProcessEnvironment &environment)
{
    vt::PseudoTerminal::Command command;
    command.program = program.toStdString();
    for (const QString &argument : arguments) {
        command.arguments.push_back(argument.toStdString());
    }
    for (const QString &variable : environment.toStringList()) {
        command.environment.push_back(variable.toStdString());
    }
    if (const int error = m_terminal->spawn(command); error != 0) {
        m_terminal->close();
        return error;
    }
    m_pid = m_terminal->child();
    m_terminal->readAhead();
    watchOutput(false);
    m_writable = new QSocketNotifier(m_terminal->master(), QSocketNotifier::Write, this);
    m_writable->setEnabled(false);
    connect(m_writable, &QSocketNotifier::activated, this, &TerminalChild::sendPending);
    watchExit();
    return 0;
}

int TerminalChild::descriptor() const
{
    return m_terminal->master();
}

void TerminalChild::watchOutput(bool isReading)
{
    m_readable = new QSocketNotifier(m_terminal->readable(), QSocketNotifier::Read, this);
    m_readable->setEnabled(isReading);
    connect(m_readable, &QSocketNotifier::activated, this, &TerminalChild::readable);
}

void TerminalChild::watchExit()
{
    m_pidDescriptor = static_cast<int>(::syscall(SYS_pidfd_open, m_pid, 0));
    if (m_pidDescriptor < 0) {
        m_exitPoll.start(); // a system or a sandbox without pidfd_open(2)
        return;
    }
    m_exit = new QSocketNotifier(m_pidDescriptor, QSocketNotifier::Read, this);
    connect(m_exit, &QSocketNotifier::activated, this, &TerminalChild::checkExit);
}

void TerminalChild::checkExit()
{
    if (m_pid <= 0 || !isReaped(m_pid)) {
        return;
    }
    release();
    // What the child wrote last is read without waiting for a thread to do it.
    const bool isReading = m_readable->isEnabled();
    retire(m_readable);
    m_terminal->endReadAhead();
    watchOutput(isReading);
    Q_EMIT exited();
}

// Forgets the child; what it wrote can still be read.
pid_t TerminalChild::release()
{
    m_exitPoll.stop();
    m_lineModePoll.stop();
    retire(m_writable);
    retire(m_exit);
    m_outgoing.clear();
    m_pending = 0;
    if (m_pidDescriptor >= 0) {
        ::close(std::exchange(m_pidDescriptor, -1));
    }
    return std::exchange(m_pid, -1);
}

bool TerminalChild::read(QByteArray &bytes, qsizetype most)
{
    const qsizetype before = bytes.size();
    qsizetype taken = 0;
    ssize_t count = 1;
    bytes.resize(before + most);
    while (taken < most && count > 0) {
        count = m_terminal->read(bytes.data() + before + taken, static_cast<size_t>(most - taken));
        taken += std::max<ssize_t>(count, 0);
    }
    bytes.resize(before + taken);
    return count != 0;
}

void TerminalChild::setReading(bool isReading)
{
    if (m_readable) {
        m_readable->setEnabled(isReading);
    }
}

void TerminalChild::send(QByteArrayView bytes)
{
    if (m_pid <= 0) {
        return;
    }
    for (qsizetype at = 0; at < bytes.size(); at += kPiece) {
        m_outgoing.push_back(bytes.sliced(at, std::min(kPiece, bytes.size() - at)).toByteArray());
    }
    m_pending += bytes.size();
    sendPending();
}

bool TerminalChild::takesLinesOnly() const
{
    struct termios attributes = {};
    return ::tcgetattr(m_terminal->master(), &attributes) == 0 && (attributes.c_lflag & ICANON) != 0;
}

void TerminalChild::sendPending()
{
    const bool waits = m_pending > kMostTypedAhead && takesLinesOnly();
    if (waits) {
        m_lineModePoll.start();
    } else {
        m_lineModePoll.stop();
    }
    // A child that reads as fast as this writes must not keep the event loop waiting.
    for (int pieces = 0; !waits && pieces < kPiecesAtOnce && m_terminal->flush() && !m_outgoing.empty(); ++pieces) {
        const QByteArray &piece = m_outgoing.front();
        m_terminal->write(std::string_view(piece.data(), static_cast<size_t>(piece.size())));
        m_pending -= piece.size();
        m_outgoing.pop_front();
    }
    m_writable->setEnabled(m_terminal->hasPending() || (!waits && !m_outgoing.empty()));
}

int TerminalChild::resize(int columns, int rows)
{
    const int error = m_terminal->setSize(columns, rows);
    if (m_pid > 0) {
        ::kill(m_pid, SIGWINCH);
    }
    return error;
}

void TerminalChild::close()
{
    retire(m_readable);
    m_terminal->close();
}

void TerminalChild::end()
{
    const pid_t pid = release();
    close();
    if (pid <= 0) {
        return;
    }
    ::kill(pid, SIGTERM);
    // The program's end waits for this pool. The number stays the child's own until it was waited for.
    QThreadPool::globalInstance()->start([pid] {
        ::usleep(kTermWait);
        if (!isReaped(pid)) {
            ::kill(pid, SIGKILL);
            reap(pid);
        }
    });
}

void TerminalChild::endNow()
{
    const pid_t pid = release();
    close();
    if (pid > 0) {
        ::kill(pid, SIGTERM);
        ::kill(pid, SIGKILL);
        ::kill(-pid, SIGKILL);
        reap(pid);
    }
}
