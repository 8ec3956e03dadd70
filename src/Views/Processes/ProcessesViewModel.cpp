#include "Views/Processes/ProcessesViewModel.h"

#include "Helpers/Clock.h"
#include "Helpers/DisplayText.h"
#include "Helpers/Log.h"
#include "Helpers/Text.h"
#include "Models/ServerStore.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/Parsers/ProcessParser.h"
#include "Views/Components/SectionNavigation.h"

using namespace Qt::StringLiterals;

using ProcessSignals::Outcome;

namespace
{

constexpr double kHighCPU = 10.0; // percent
constexpr double kHighMemory = 5.0;
constexpr qsizetype kLongestCommand = 160;

// By how much the age of a process may seem shorter than that of the list: ticks are rounded, clocks drift.
constexpr double kClockSlack = 1.0; // seconds
constexpr double kClockDrift = 0.001;

bool isAbove(const QString &number, double limit)
{
    return Text::decimalNumber(number).value_or(0.0) > limit;
}

bool passesFilter(const ProcessInfo &process, ProcessFilter filter, const QString &username)
{
    switch (filter) {
    case ProcessFilter::All:
        return true;
    case ProcessFilter::HighCPU:
        return isAbove(process.cpu, kHighCPU);
    case ProcessFilter::HighMemory:
        return isAbove(process.memory, kHighMemory);
    case ProcessFilter::MyProcesses:
        return process.user == username;
    case ProcessFilter::SystemProcesses:
        return process.user == "root"_L1 || process.user == "systemd"_L1 || process.user == "daemon"_L1;
    case ProcessFilter::RunningServices:
        return ProcessesViewModel::isServiceProcess(process);
    }
    return true;
}

bool matchesSearch(const ProcessInfo &process, const QString &text)
{
    return text.isEmpty() || process.command.contains(text, Qt::CaseInsensitive) ||
           process.user.contains(text, Qt::CaseInsensitive) || process.pid.contains(text, Qt::CaseInsensitive);
}

// The command stands in the sentence as far as there is room for it, and else below as a whole.
RowQuestion killQuestion(const ProcessInfo &process, std::optional<ProcessSignal> signal, const QString &label)
{
    const QString whole = DisplayText::oneLine(process.command);
    const bool isLong = whole.size() > kLongestCommand;
    const QString command = isLong ? whole.left(kLongestCommand) + u'…' : whole;
    RowQuestion question{
        .title = label,
        .text =
            signal
                ? ProcessesViewModel::tr("Are you sure you want to send %1 to process %2 (%3)?")
                      .arg(rawText(*signal), process.pid, command)
                : ProcessesViewModel::tr("Are you sure you want to kill process %1 (%2)?").arg(process.pid, command),
        .confirm = label,
        .detail = ProcessesViewModel::tr("User: %1").arg(DisplayText::oneLine(process.user))};
    if (isLong) {
        question.detail += u"\n"_s + ProcessesViewModel::tr("Command: %1").arg(whole);
    }
    return question;
}

// What is to be said of an answer; nothing if the signal was sent.
QString complaintOn(const QString &pid, const ProcessSignals::Answer &answer)
{
    switch (answer.outcome) {
    case Outcome::Sent:
        break;
    case Outcome::AnotherProcess:
        return ProcessesViewModel::tr("Nothing was sent: process %1 has ended, and its number may belong to another "
                                      "one now.")
            .arg(pid);
    case Outcome::Refused:
        return answer.error.isEmpty() ? ProcessesViewModel::tr("The server refused the signal.") : answer.error;
    }
    return {};
}

std::optional<ToneName> warningAbove(double value, double limit)
{
    return value > limit ? std::optional(ToneName::Orange) : std::nullopt;
}

} // namespace

ProcessesViewModel::ProcessesViewModel(const MonitoredServer &server, SectionNavigation &navigation,
                                       std::chrono::milliseconds interval, QObject *parent)
    : TableSectionViewModel(server,
                            {.title = tr("Processes"),
                             .search = tr("Search processes..."),
                             .loading = tr("Loading processes..."),
                             .failure = {tr("Failed to Load Processes"), tr("Unable to retrieve process list"), {}}},
                            interval, parent)
    , m_table(declaration(navigation))
{
    setTable(m_table,
             {tr("All"), tr("High CPU"), tr("High Memory"), tr("My Processes"), tr("System"), tr("Services")});
    connect(&navigation, &SectionNavigation::processRequested, this, &ProcessesViewModel::showProcess);
}

RecordTableDeclaration<ProcessInfo> ProcessesViewModel::declaration(SectionNavigation &navigation)
{
    using Column = RecordColumn<ProcessInfo>;
    return {
        .name = tr("Processes"),
        .identity = &ProcessInfo::pid,
        .rowIdentifier = [](const ProcessInfo &process) { return u"row_pid_"_s + process.pid; },
        .columns = {Column{.title = tr("PID"),
                           .text = &ProcessInfo::pid,
                           .sortKey = &ProcessInfo::pidInt,
                           .align = CellAlign::Right,
                           .width = 80},
                    Column{.title = tr("User"), .text = &ProcessInfo::user},
                    Column{.title = tr("CPU %"),
                           .text = &ProcessInfo::cpu,
                           .sortKey = &ProcessInfo::cpuDouble,
                           .align = CellAlign::Right,
                           .width = 90,
                           .tone = [](const ProcessInfo &p) { return warningAbove(p.cpuDouble(), kHighCPU); }},
                    Column{.title = tr("Mem %"),
                           .text = &ProcessInfo::memory,
                           .sortKey = &ProcessInfo::memoryDouble,
                           .align = CellAlign::Right,
                           .width = 90,
                           .tone = [](const ProcessInfo &p) { return warningAbove(p.memoryDouble(), kHighMemory); }},
                    Column{.title = tr("Mem MB"),
                           .text = &ProcessInfo::memoryMB,
                           .sortKey = &ProcessInfo::rssMemoryKBDouble,
                           .align = CellAlign::Right,
                           .width = 110},
                    Column{.title = tr("Command"),
                           .text = &ProcessInfo::command,
                           .style = CellStyle::Mono,
                           .stretches = true}},
        .actions = {signalAction(std::nullopt, tr("Kill Process")),
                    signalAction(ProcessSignal::Terminate, tr("Send TERM")),
                    signalAction(ProcessSignal::Kill, tr("Send KILL")),
                    signalAction(ProcessSignal::Stop, tr("Send STOP")),
                    signalAction(ProcessSignal::Continue, tr("Send CONT")),
                    signalAction(ProcessSignal::HangUp, tr("Send HUP")),
                    {.label = tr("Show Ports"),
                     .icon = IconName::Plug,
                     .startsGroup = true,
                     .run = [&navigation](const ProcessInfo &process) { navigation.showPorts(process.pidInt()); }}},
        .tieKey = &ProcessInfo::pidInt,
        .sortColumn = 2,
        .sortOrder = Qt::DescendingOrder,
    };
}

RecordAction<ProcessInfo> ProcessesViewModel::signalAction(std::optional<ProcessSignal> signal, const QString &label)
{
    const bool ends = !signal || *signal == ProcessSignal::Terminate || *signal == ProcessSignal::Kill;
    return {.label = label,
            .icon = signal ? std::nullopt : std::optional(IconName::Close),
            .isDestructive = ends,
            .isButton = !signal,
            .startsGroup = signal == ProcessSignal::Terminate,
            .isEnabled = [](const ProcessInfo &process) { return process.pidInt() > 0; },
            .question = [this, signal, label](const ProcessInfo &process) -> std::optional<RowQuestion> {
                askToKill(process, signal);
                RowQuestion question = killQuestion(process, signal, label);
                question.cancelled = [this] { cancelKill(); };
                return question;
            },
            .run = [this](const ProcessInfo &process) { killProcess(process); }};
}

bool ProcessesViewModel::isServiceProcess(const ProcessInfo &process)
{
    const QString &command = process.command;
    return command.contains("systemd"_L1) || command.contains("service"_L1) ||
           (process.user == "root"_L1 && (command.contains("/usr/sbin/"_L1) || command.contains("/usr/bin/"_L1)));
}

// --- reading -------------------------------------------------------------------------------------------------------

void ProcessesViewModel::read(const Server &server)
{
    load(monitored().manager.executeSSHCommand(ProcessListCommand(), server),
         [this](const CommandExecutionResult &run) { parseProcessesFromCommandResult(run.result); });
}

void ProcessesViewModel::parseProcessesFromCommandResult(const CommandResult &result)
{
    if (!result.succeeded()) {
        const QString error = QString::fromUtf8(result.error.trimmed());
        Log::error(u"Process command execution failed: "_s + error, Log::Category::Processes);
        setLoadError(error.isEmpty() ? tr("Failed to load processes") : error);
    }
    m_table.setRecords(result.succeeded() ? ProcessParser::parse(result.output) : QList<ProcessInfo>());
}

void ProcessesViewModel::applyFilter()
{
    const std::optional<Server> record = monitored().store.server(monitored().id);
    m_table.setFilter([text = searchText(), filter = activeFilter(),
                       username = record ? record->username : QString()](const ProcessInfo &process) {
        return matchesSearch(process, text) && passesFilter(process, filter, username);
    });
}

TableSectionViewModel::Message ProcessesViewModel::emptiness() const
{
    return {tr("No Results"), noMatch(tr("No processes match '%1'"), tr("The server lists no processes")), {}};
}

void ProcessesViewModel::showProcess(qint64 pid)
{
    const QString identity = QString::number(pid);
    if (m_table.rowOf(identity) < 0) {
        setSearchText({});
        setActiveFilterIndex(0);
    }
    m_table.requestSelection(identity);
    if (!m_table.find(identity)) {
        refreshProcesses();
    }
}

// --- signals -------------------------------------------------------------------------------------------------------

std::optional<ProcessInfo> ProcessesViewModel::processToKill() const
{
    return m_asked ? std::optional(m_asked->request.process) : std::nullopt;
}

void ProcessesViewModel::askToKill(const ProcessInfo &process, std::optional<ProcessSignal> signal)
{
    m_asked.reset();
    const std::optional<Server> record = monitored().connected();
    const qint64 pid = process.pidInt();
    if (!record || pid <= 0) {
        return;
    }
    const auto kill = std::make_shared<Kill>();
    kill->session = session();
    kill->request = {process, signal};
    kill->listedSecondsAgo = static_cast<double>(lastUpdated().msecsTo(monitored().clock.now())) / 1000;
    m_asked = kill;
    whenDone(ProcessSignals::findStart(monitored().manager, *record, pid), this,
             [this, kill](const ProcessSignals::StartAnswer &answer) {
                 kill->start = answer;
                 if (kill->isConfirmed) {
                     send(kill);
                 }
             });
}

void ProcessesViewModel::killProcess(const ProcessInfo &process)
{
    const std::shared_ptr<Kill> kill = std::exchange(m_asked, nullptr);
    if (!kill || kill->request.process.pid != process.pid) {
        return;
    }
    kill->isConfirmed = true;
    m_killing.insert(process.pid);
    m_table.setBusy(process.pid, true);
    Q_EMIT changed();
    if (kill->start) {
        send(kill);
    }
}

void ProcessesViewModel::send(const std::shared_ptr<Kill> &kill)
{
    const QString &pid = kill->request.process.pid;
    const std::optional<ProcessStart> start = kill->start->start;
    const std::optional<Server> record = monitored().connected();
    const double youngest = kill->listedSecondsAgo * (1 - kClockDrift) - kClockSlack;
    if (!record || kill->session != session()) {
        finish(*kill, tr("Nothing was sent to process %1: the connection was lost.").arg(pid));
    } else if (!kill->start->isAnswered) {
        const QString &error = kill->start->error;
        finish(*kill, tr("Nothing was sent to process %1: %2")
                          .arg(pid, error.isEmpty() ? tr("the server did not answer.") : error));
    } else if (!start || start->secondsAgo < youngest) {
        finish(*kill, complaintOn(pid, {Outcome::AnotherProcess, {}}));
        refreshProcesses();
    } else {
        whenDone(ProcessSignals::send(monitored().manager, *record, kill->request, start->ticks), this,
                 [this, kill](const ProcessSignals::Answer &answer) {
                     finish(*kill, complaintOn(kill->request.process.pid, answer));
                     if (answer.outcome != Outcome::Refused) {
                         refreshProcesses();
                     }
                 });
    }
}

void ProcessesViewModel::finish(const Kill &kill, const QString &complaint)
{
    const QString &pid = kill.request.process.pid;
    if (kill.session == session()) {
        m_killing.remove(pid);
        m_table.setBusy(pid, false);
    }
    if (!complaint.isEmpty()) {
        complain(pid, complaint);
    }
    Q_EMIT changed();
}

void ProcessesViewModel::forget()
{
    m_asked.reset();
    m_killing.clear();
}
