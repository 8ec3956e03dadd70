#include "Services/Parsers/ProcessParser.h"

#include "Helpers/Text.h"

namespace
{

// The columns of ps(1), "aux": USER PID %CPU %MEM VSZ RSS TTY STAT START TIME COMMAND.
enum Column : size_t { User, Pid, Cpu, Memory, Rss = 5, Start = 8, ColumnsBeforeCommand = 10 };

// Most processes of a server belong to a few users and take no share of anything: a text that the line before had in
// the same column is shared with it.
class SharedText
{
public:
    QString of(QByteArrayView bytes)
    {
        if (bytes != m_bytes) {
            m_bytes = bytes;
            m_text = Text::fromUtf8(bytes);
        }
        return m_text;
    }

private:
    QByteArrayView m_bytes;
    QString m_text;
};

} // namespace

QList<ProcessInfo> ProcessParser::parse(QByteArrayView output)
{
    QList<ProcessInfo> processes;
    SharedText user;
    SharedText cpu;
    SharedText memory;
    SharedText start;
    bool isHeading = true;
    for (const QByteArrayView line : Text::lines(output)) {
        if (std::exchange(isHeading, false)) {
            continue;
        }
        const auto [column, found, rest] = Text::firstFields<ColumnsBeforeCommand>(Text::trimmed(line));
        const QByteArrayView command = Text::trimmed(rest);
        if (command.empty() || !Text::decimalInteger(column[Pid])) {
            continue;
        }
        processes.append({.pid = Text::fromUtf8(column[Pid]),
                          .user = user.of(column[User]),
                          .cpu = cpu.of(column[Cpu]),
                          .memory = memory.of(column[Memory]),
                          .rssMemoryKB = Text::fromUtf8(column[Rss]),
                          .command = command.contains("  ") ? Text::joinedFields(command) : Text::fromUtf8(command),
                          .startTime = start.of(column[Start])});
    }
    return processes;
}
