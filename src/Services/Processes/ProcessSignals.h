#pragma once

#include "Models/ProcessInfo.h"
#include "Models/Server.h"
#include "Services/Commands/ProcessCommands.h"

#include <QByteArrayView>
#include <QCoroTask>
#include <optional>

class CommandSSHManager;

/// The start of a process, which tells it from a later one with the same number.
struct ProcessStart {
    qint64 ticks = 0;      ///< since the server's own start
    double secondsAgo = 0; ///< by the server's clock

    bool operator==(const ProcessStart &) const = default;

    /// Out of what ProcessStartCommand prints; nothing if the process is not there.
    static std::optional<ProcessStart> parse(QByteArrayView output, qint64 pid);
};

/// Signals to processes. `manager` outlives the tasks.
namespace ProcessSignals
{

/// What came of the ask for a start time.
struct StartAnswer {
    std::optional<ProcessStart> start; ///< nothing if the process is not there, or nobody answered
    bool isAnswered = false;
    QString error; ///< why nobody did, in the words of the other side; may be empty
};

enum class Outcome {
    Sent,
    AnotherProcess, ///< the process has ended, and its number may belong to another one; nothing was sent
    Refused,
};

struct Answer {
    Outcome outcome = Outcome::Refused;
    QString error; ///< the server's words; empty unless refused
};

/// What is asked of a process: a signal by its name, or without one what KillProcessCommand does.
struct Request {
    ProcessInfo process;
    std::optional<ProcessSignal> signal;
};

QCoro::Task<StartAnswer> findStart(CommandSSHManager &manager, Server server, qint64 pid);

/// Sends what is asked for, if `startTicks` is still the start of the process with that number.
QCoro::Task<Answer> send(CommandSSHManager &manager, Server server, Request request, qint64 startTicks);

/// KillProcessCommand gets sudo where the server is set so, and never for processes of the login or of root. Signals
/// by name get it for root's too.
bool usesSudo(const Server &server, const Request &request);

} // namespace ProcessSignals
