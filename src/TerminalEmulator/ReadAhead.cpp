#include "TerminalEmulator/ReadAhead.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace vt
{

namespace
{

using Clock = std::chrono::steady_clock;

// The system hands out a page at a time. To wake somebody for each costs more than to parse it, so during a flood it
// is done once for so many bytes, or for so much time; after a silence at once.
constexpr size_t Page = 4096;
constexpr size_t ManyBytes = 1 << 18;
constexpr int TellPause = 1; // milliseconds

void signalTo(int event)
{
    ::eventfd_write(event, 1);
}

void clear(int event)
{
    eventfd_t count = 0;
    ::eventfd_read(event, &count);
}

} // namespace

std::unique_ptr<ReadAhead> ReadAhead::of(int source)
{
    std::unique_ptr<ReadAhead> made(new ReadAhead);
    made->m_source = source;
    made->m_told = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    made->m_control = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (made->m_told < 0 || made->m_control < 0) {
        return nullptr;
    }
    made->m_ring = std::make_unique_for_overwrite<char[]>(MaxHeld);
    // Signals of the process are handled where it expects them.
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        made->m_thread = std::thread(&ReadAhead::run, made.get());
    } catch (const std::system_error &) {
        made.reset();
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return made;
}

ReadAhead::~ReadAhead()
{
    stop();
    for (const int each : {m_told, m_control}) {
        if (each >= 0) {
            ::close(each);
        }
    }
}

void ReadAhead::stop()
{
    if (m_thread.joinable()) {
        {
            const std::scoped_lock lock(m_lock);
            m_stops = true;
        }
        signalTo(m_control);
        m_thread.join();
    }
}

ssize_t ReadAhead::read(char *buffer, size_t size)
{
    const std::scoped_lock lock(m_lock);
    if (m_held == 0) {
        return m_hasEnded ? 0 : -1;
    }
    const size_t count = std::min(size, m_held);
    const size_t straight = std::min(count, MaxHeld - m_begin);
    std::memcpy(buffer, &m_ring[m_begin], straight);
    std::memcpy(buffer + straight, &m_ring[0], count - straight);
    m_begin = (m_begin + count) % MaxHeld;
    m_held -= count;
    if (m_held == 0) {
        m_begin = 0; // little output touches little memory
        if (m_isTold && !m_hasEnded) {
            m_isTold = false;
            clear(m_told);
        }
    }
    if (m_isFull && m_held <= MaxHeld / 2) {
        m_isFull = false;
        signalTo(m_control);
    }
    return static_cast<ssize_t>(count);
}

// ---- the thread --------------------------------------------------------------------------------------------------

void ReadAhead::run()
{
    std::array<char, Page> page;
    Clock::time_point lastTold;
    while (waitForRoom()) {
        const ssize_t count = ::read(m_source, page.data(), page.size());
        if (count > 0) {
            hold(page.data(), static_cast<size_t>(count));
        } else if (count < 0 && errno == EAGAIN) {
            const bool soon = Clock::now() - lastTold < std::chrono::milliseconds(TellPause);
            if (!soon || !waitForBytes(TellPause)) {
                tell();
                lastTold = Clock::now();
                waitForBytes(-1);
            }
        } else if (count == 0 || errno != EINTR) {
            break; // EIO: nobody holds the far side any more
        }
    }
    {
        const std::scoped_lock lock(m_lock);
        m_hasEnded = !m_stops;
    }
    tell();
}

/// False if nothing more is to be read.
bool ReadAhead::waitForRoom()
{
    while (true) {
        {
            const std::scoped_lock lock(m_lock);
            m_isFull = MaxHeld - m_held < Page;
            if (m_stops || !m_isFull) {
                return !m_stops;
            }
        }
        struct pollfd watched = {m_control, POLLIN, 0};
        ::poll(&watched, 1, -1);
        clear(m_control);
    }
}

/// False if nothing came within so many milliseconds.
bool ReadAhead::waitForBytes(int timeout) const
{
    std::array<struct pollfd, 2> watched = {{{m_source, POLLIN, 0}, {m_control, POLLIN, 0}}};
    const bool came = ::poll(watched.data(), watched.size(), timeout) > 0;
    if (watched[1].revents != 0) {
        clear(m_control);
    }
    return came;
}

void ReadAhead::hold(const char *bytes, size_t size)
{
    bool isMuch = false;
    {
        const std::scoped_lock lock(m_lock);
        const size_t end = (m_begin + m_held) % MaxHeld;
        const size_t straight = std::min(size, MaxHeld - end);
        std::memcpy(&m_ring[end], bytes, straight);
        std::memcpy(&m_ring[0], bytes + straight, size - straight);
        m_held += size;
        isMuch = m_held >= ManyBytes;
    }
    if (isMuch) {
        tell();
    }
}

void ReadAhead::tell()
{
    const std::scoped_lock lock(m_lock);
    if (!m_isTold && (m_held > 0 || m_hasEnded)) {
        m_isTold = true;
        signalTo(m_told);
    }
}

} // namespace vt
