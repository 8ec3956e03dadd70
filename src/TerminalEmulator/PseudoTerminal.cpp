#include "TerminalEmulator/PseudoTerminal.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vt
{

namespace
{

/// The path of a program as execvp(3) would find it; the name itself if it is nowhere, so that execve says why.
std::string find(const std::string &program)
{
    if (program.find('/') != std::string::npos) {
        return program;
    }
    const char *path = std::getenv("PATH");
    std::string_view rest = path ? path : "/usr/local/bin:/usr/bin:/bin";
    while (!rest.empty()) {
        const size_t end = rest.find(':');
        const std::string candidate = std::string(rest.substr(0, end)) + '/' + program;
        if (::access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return program;
}

/// What the child does between fork and exec. Only async-signal-safe calls (signal-safety(7)).
[[noreturn]] void become(const char *path, char *const *argv, char *const *envp, const char *folder, int slave,
                         int report)
{
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action = {};
        action.sa_handler = SIG_DFL;
        ::sigaction(number, &action, nullptr);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    // Of a parent without its standard descriptors these may be among the three that are replaced now.
    slave = slave > 2 ? slave : ::fcntl(slave, F_DUPFD_CLOEXEC, 3);
    report = report > 2 ? report : ::fcntl(report, F_DUPFD_CLOEXEC, 3);
    bool good = ::setsid() >= 0 && ::ioctl(slave, TIOCSCTTY, 0) == 0;
    for (int descriptor = 0; good && descriptor <= 2; ++descriptor) {
        good = ::dup2(slave, descriptor) >= 0;
    }
    good = good && (*folder == '\0' || ::chdir(folder) == 0);
    if (good) {
        // The report's end closes itself when exec succeeds.
        ::close_range(3, ~0u, CLOSE_RANGE_CLOEXEC);
        ::execve(path, argv, envp);
    }
    const int error = errno;
    [[maybe_unused]] const ssize_t written = ::write(report, &error, sizeof error);
    ::_exit(127);
}

std::vector<char *> pointers(std::vector<std::string> &texts)
{
    std::vector<char *> result;
    result.reserve(texts.size() + 1);
    for (std::string &each : texts) {
        result.push_back(each.data());
    }
    result.push_back(nullptr);
    return result;
}

} // namespace

PseudoTerminal::~PseudoTerminal()
{
    close();
}

int PseudoTerminal::open(int columns, int rows)
{
    close();
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    char name[128];
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0 ||
        ::ptsname_r(m_master, name, sizeof name) != 0) {
        const int error = errno;
        close();
        return error;
    }
    m_slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_slave < 0) {
        const int error = errno;
        close();
        return error;
    }
    return setSize(columns, rows);
}

void PseudoTerminal::close()
{
    closeSlave();
    m_ahead.reset(); // before its descriptor goes
    m_isReadingAhead = false;
    if (m_master >= 0) {
        ::close(m_master);
        m_master = -1;
    }
    m_pending.clear();
    m_sent = 0;
}

void PseudoTerminal::closeSlave()
{
    if (m_slave >= 0) {
        ::close(m_slave);
        m_slave = -1;
    }
}

int PseudoTerminal::setSize(int columns, int rows, int pixelWidth, int pixelHeight)
{
    const auto narrow = [](int value) {
        return static_cast<unsigned short>(value < 0 ? 0 : value > 65535 ? 65535 : value);
    };
    struct winsize size = {};
    size.ws_col = narrow(columns);
    size.ws_row = narrow(rows);
    size.ws_xpixel = narrow(pixelWidth);
    size.ws_ypixel = narrow(pixelHeight);
    return ::ioctl(m_master, TIOCSWINSZ, &size) == 0 ? 0 : errno;
}

int PseudoTerminal::spawn(const Command &command)
{
    int report[2];
    if (m_slave < 0) {
        return EBADF;
    }
    if (::pipe2(report, O_CLOEXEC) != 0) {
        return errno;
    }
    std::string path = find(command.program);
    std::vector<std::string> arguments = command.arguments;
    arguments.insert(arguments.begin(), command.program);
    std::vector<std::string> environment = command.environment;
    const std::vector<char *> argv = pointers(arguments);
    const std::vector<char *> own = pointers(environment);
    char *const *envp = environment.empty() ? environ : own.data();

    const pid_t pid = ::fork();
    if (pid == 0) {
        become(path.c_str(), argv.data(), envp, command.workingDirectory.c_str(), m_slave, report[1]);
    }
    const int forkError = errno;
    ::close(report[1]);
    if (pid < 0) {
        ::close(report[0]);
        return forkError;
    }
    int error = 0;
    ssize_t count;
    do {
        count = ::read(report[0], &error, sizeof error);
    } while (count < 0 && errno == EINTR);
    ::close(report[0]);
    if (count == static_cast<ssize_t>(sizeof error)) {
        ::waitpid(pid, nullptr, 0);
        return error;
    }
    m_child = pid;
    closeSlave();
    return 0;
}

void PseudoTerminal::readAhead()
{
    if (!m_ahead && m_master >= 0) {
        m_ahead = ReadAhead::of(m_master);
        m_isReadingAhead = m_ahead != nullptr;
    }
}

void PseudoTerminal::endReadAhead()
{
    if (m_isReadingAhead) {
        m_ahead->stop();
        m_isReadingAhead = false;
    }
}

ssize_t PseudoTerminal::read(char *buffer, size_t size)
{
    if (m_ahead) {
        const ssize_t held = m_ahead->read(buffer, size);
        if (held >= 0 || m_isReadingAhead) {
            return held;
        }
    }
    while (true) {
        const ssize_t count = ::read(m_master, buffer, size);
        if (count >= 0) {
            return count;
        }
        if (errno == EAGAIN) {
            return -1;
        }
        if (errno != EINTR) {
            return 0; // EIO: nobody holds the far side any more
        }
    }
}

bool PseudoTerminal::write(std::string_view bytes)
{
    if (m_pending.size() - m_sent + bytes.size() > MaxPending) {
        return false;
    }
    m_pending.append(bytes);
    flush();
    return true;
}

bool PseudoTerminal::flush()
{
    while (m_sent < m_pending.size()) {
        const ssize_t count = ::write(m_master, m_pending.data() + m_sent, m_pending.size() - m_sent);
        if (count > 0) {
            m_sent += static_cast<size_t>(count);
        } else if (count < 0 && errno == EINTR) {
            continue;
        } else {
            break;
        }
    }
    if (m_sent == m_pending.size() || m_sent > 65536) {
        m_pending.erase(0, m_sent);
        m_sent = 0;
    }
    return m_pending.empty();
}

bool PseudoTerminal::hasExited(int &status)
{
    if (m_child <= 0 || ::waitpid(m_child, &status, WNOHANG) != m_child) {
        return false;
    }
    m_child = -1;
    return true;
}

} // namespace vt
