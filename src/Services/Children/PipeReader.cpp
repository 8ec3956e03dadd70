#include "Services/Children/PipeReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

// Fewer turns of the event loop for a long output than with the usual 64 KiB, pipe(7). An unprivileged process may
// ask for this much (/proc/sys/fs/pipe-max-size); where the system refuses, the usual size stays.
constexpr int kPipeSize = 1024 * 1024;

} // namespace

PipeReader::~PipeReader()
{
    closeWriteEnd();
    m_notifier.reset();
    if (m_readEnd >= 0) {
        ::close(m_readEnd);
    }
}

bool PipeReader::open()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        m_error = qt_error_string(errno);
        return false;
    }
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
    ::fcntl(m_readEnd, F_SETFL, O_NONBLOCK); // only our end: the child expects to block
    ::fcntl(m_writeEnd, F_SETPIPE_SZ, kPipeSize);
    return true;
}

void PipeReader::start()
{
    closeWriteEnd();
    m_notifier = std::make_unique<QSocketNotifier>(m_readEnd, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &PipeReader::onReadable);
}

void PipeReader::drain()
{
    // Not until the end of the stream: an heir of the child may hold the pipe open and write for ever.
    for (qsizetype left = available(); left > 0;) {
        const ssize_t taken = m_text.readFrom(m_readEnd, left);
        if (taken <= 0) {
            return;
        }
        left -= taken;
    }
}

void PipeReader::onReadable()
{
    const ssize_t taken = m_text.readFrom(m_readEnd, std::max<qsizetype>(available(), 1));
    const bool isOver = taken == 0 || (taken < 0 && errno != EAGAIN && errno != EINTR);
    if (isOver) {
        m_notifier->setEnabled(false);
    }
}

qsizetype PipeReader::available() const
{
    int bytes = 0;
    return m_readEnd >= 0 && ::ioctl(m_readEnd, FIONREAD, &bytes) == 0 ? bytes : 0;
}

void PipeReader::closeWriteEnd()
{
    if (m_writeEnd >= 0) {
        ::close(std::exchange(m_writeEnd, -1));
    }
}
