#include "Services/Parsers/ProcessParser.h"

#include "Services/Parsers/SharedText.h"

namespace
{

// The columns of ps(1), "aux": USER PID %CPU %MEM VSZ RSS TTY STAT START TIME COMMAND.
enum Column : size_t { User, Pid, Cpu, Memory, Rss = 5, Start = 8, ColumnsBeforeCommand = 10 };

} // namespace

QList<ProcessInfo> ProcessParser::parse(QByteArrayView output)
{
    QList<ProcessInfo> processes;
    // Most processes of a server belong to a few users and take no share of anything.
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
        if (processes.size() == kMostProcesses) {
            break;
        }
    }
    return processes;
}
