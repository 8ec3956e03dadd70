#pragma once

#include "TerminalEmulator/ReadAhead.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace vt
{

/// A pair of pseudo terminal descriptors and, perhaps, a child on the far one (pty(7)). Reading and writing never
/// block: what the child does not take yet is kept and goes out with flush(). All descriptors are close-on-exec.
class PseudoTerminal
{
public:
    struct Command {
        std::string program;                  ///< a path, or a name to be found in PATH
        std::vector<std::string> arguments;   ///< after the program's name
        std::vector<std::string> environment; ///< "NAME=value"; empty: that of this process
        std::string workingDirectory;         ///< empty: that of this process
    };

    /// Bytes that may wait for a child that does not read; beyond that write() refuses.
    static constexpr size_t MaxPending = 16 << 20;

    PseudoTerminal() = default;
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal &) = delete;
    PseudoTerminal &operator=(const PseudoTerminal &) = delete;

    /// Opens a pair of the given size in cells. Returns 0 or an errno.
    int open(int columns, int rows);
    void close();

    /// The near descriptor, to be watched for writing while hasPending(), and for reading unless readAhead() was
    /// called; -1 if closed.
    int master() const { return m_master; }

    /// The far descriptor, for a child started otherwise; close it with closeSlave() once the child has it.
    int slave() const { return m_slave; }

    void closeSlave();

    /// TIOCSWINSZ: the children on it get SIGWINCH. Pixels may be 0. Returns 0 or an errno.
    int setSize(int columns, int rows, int pixelWidth = 0, int pixelHeight = 0);

    /// Starts a child on the far side: leader of a session of its own with the pair as controlling terminal, default
    /// signal handling, no signal blocked, and no descriptor but 0 to 2. Closes the far side here. Returns 0 or the
    /// errno of what failed, execve included.
    int spawn(const Command &command);

    pid_t child() const { return m_child; }

    /// From now on output is read by a thread, up to ReadAhead::MaxHeld bytes ahead of read(): a child that writes
    /// much does not wait for what is done with it. Nothing happens if the system has no thread to give.
    void readAhead();
    /// Ends that. What was read so far still comes first.
    void endReadAhead();

    /// To be watched for reading, instead of master(). Another one after readAhead() and endReadAhead().
    int readable() const { return m_isReadingAhead ? m_ahead->descriptor() : m_master; }

    /// Reads what is there, at most `size` bytes: the count, 0 at the end (also when the last child closed its side),
    /// or -1 with nothing to read now.
    ssize_t read(char *buffer, size_t size);
    /// Sends bytes to the child, or keeps what does not go out now. False if too much waits already.
    bool write(std::string_view bytes);
    /// Sends what waits. False if some still does.
    bool flush();

    bool hasPending() const { return m_sent < m_pending.size(); }

    /// Whether the child ended; then `status` is that of waitpid(2). Reaps it.
    bool hasExited(int &status);

private:
    int m_master = -1;
    int m_slave = -1;
    pid_t m_child = -1;
    std::unique_ptr<ReadAhead> m_ahead;
    bool m_isReadingAhead = false;
    std::string m_pending;
    size_t m_sent = 0;
};

} // namespace vt
