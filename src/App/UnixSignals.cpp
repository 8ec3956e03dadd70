#include "App/UnixSignals.h"

#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

// The handler may use nothing but what signal-safety(7) allows, so it only writes into a pipe.
volatile int g_pipe = -1;

void onSignal(int)
{
    const int error = errno;
    const char byte = 0;
    // A full pipe already says it.
    [[maybe_unused]] const ssize_t written = write(g_pipe, &byte, 1);
    errno = error;
}

} // namespace

UnixSignals::UnixSignals(QObject *parent)
    : QObject(parent)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    m_read = ends[0];
    g_pipe = ends[1];
    auto *notifier = new QSocketNotifier(m_read, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        std::array<char, 16> bytes{};
        while (read(m_read, bytes.data(), bytes.size()) > 0) {
        }
        Q_EMIT endRequested();
    });
    struct sigaction action = {};
    action.sa_handler = &onSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : kSignals) {
        sigaction(signal, &action, nullptr);
    }
}

UnixSignals::~UnixSignals()
{
    if (m_read >= 0) {
        for (const int signal : kSignals) {
            std::signal(signal, SIG_DFL);
        }
        close(m_read);
        close(std::exchange(const_cast<int &>(g_pipe), -1));
    }
}
