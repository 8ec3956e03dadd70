#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <sys/types.h>
#include <thread>

namespace vt
{

/// Reads a descriptor in a thread of its own, ahead of whoever uses the bytes: a child that writes much waits neither
/// for their parsing nor for their painting. All members are for one thread, that of the user.
class ReadAhead
{
public:
    static constexpr size_t MaxHeld = 1 << 20; ///< bytes read ahead; with so many the writer waits

    /// Begins. `source` must not block, and must stay open as long as the object. Null if the system has no
    /// descriptors or no thread to give.
    static std::unique_ptr<ReadAhead> of(int source);
    ~ReadAhead();
    ReadAhead(const ReadAhead &) = delete;
    ReadAhead &operator=(const ReadAhead &) = delete;

    /// To be watched for reading: read() has something to say.
    int descriptor() const { return m_told; }

    /// Takes what was read, at most `size` bytes: the count, 0 at the end, or -1 with nothing there now.
    ssize_t read(char *buffer, size_t size);

    /// Reads no further. What was read can still be taken.
    void stop();

private:
    ReadAhead() = default;

    void run();
    bool waitForRoom();
    bool waitForBytes(int timeout) const;
    void hold(const char *bytes, size_t size);
    void tell();

    int m_source = -1;
    int m_told = -1;    ///< eventfd(2), counts while somebody is to read()
    int m_control = -1; ///< eventfd(2), wakes the thread
    std::thread m_thread;
    std::mutex m_lock; ///< of all below
    std::unique_ptr<char[]> m_ring;
    size_t m_begin = 0;
    size_t m_held = 0;
    bool m_isTold = false;
    bool m_isFull = false; ///< the thread waits for room
    bool m_hasEnded = false;
    bool m_stops = false;
};

} // namespace vt
