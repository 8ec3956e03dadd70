#pragma once

#include "Models/ProcessInfo.h"
#include "Services/Processes/ProcessSignals.h"
#include "Views/Components/Table/RecordTableModel.h"
#include "Views/Components/TableSectionViewModel.h"

#include <QSet>
#include <memory>

class SectionNavigation;

/// Which processes are on show; the labels are the view model's filters, in the same order.
enum class ProcessFilter { All, HighCPU, HighMemory, MyProcesses, SystemProcesses, RunningServices };

/// The processes of one server, and signals to them.
///
/// A signal is asked about first. When the question opens, the start time of the process is looked up; the line that
/// sends the signal sends it only to the process that started then. A start that is younger than the list on show is
/// that of another process, too. Nothing is sent over another connection than that of the question.
class ProcessesViewModel : public TableSectionViewModel
{
    Q_OBJECT

public:
    /// `server` and `navigation` outlive the model.
    ProcessesViewModel(const MonitoredServer &server, SectionNavigation &navigation,
                       std::chrono::milliseconds interval = std::chrono::seconds(3), QObject *parent = nullptr);

    /// All of them, in the server's order.
    QList<ProcessInfo> processes() const { return m_table.records(); }

    /// Those on show, in the order of their rows.
    QList<ProcessInfo> filteredProcesses() const { return m_table.shownRecords(); }

    ProcessFilter activeFilter() const { return static_cast<ProcessFilter>(activeFilterIndex()); }

    const ProcessInfo *selectedProcess() const { return m_table.selected(); }

    /// What the question is about while it is asked.
    bool showingKillAlert() const { return m_asked != nullptr; }

    std::optional<ProcessInfo> processToKill() const;

    /// Processes to which a signal is under way.
    const QSet<QString> &killingProcessPids() const { return m_killing; }

    /// A part of the system: the command names systemd or a service, or root runs it out of a folder of programs.
    static bool isServiceProcess(const ProcessInfo &process);

    /// The question begins: looks up the start time. Without a signal what is asked for is KillProcessCommand.
    void askToKill(const ProcessInfo &process, std::optional<ProcessSignal> signal);

    void cancelKill() { m_asked.reset(); }

    /// The question was answered with yes.
    void killProcess(const ProcessInfo &process);

public Q_SLOTS:

    void refreshProcesses() { refresh(); }

    /// Selects the process, which may not be in the list yet.
    void showProcess(qint64 pid);

protected:
    void read(const Server &server) override;
    void applyFilter() override;
    Message emptiness() const override;
    void forget() override;

private:
    struct Kill {
        quint64 session = 0;
        ProcessSignals::Request request;
        double listedSecondsAgo = 0;
        std::optional<ProcessSignals::StartAnswer> start;
        bool isConfirmed = false;
    };

    RecordTableDeclaration<ProcessInfo> declaration(SectionNavigation &navigation);
    RecordAction<ProcessInfo> signalAction(std::optional<ProcessSignal> signal, const QString &label);
    void parseProcessesFromCommandResult(const CommandResult &result);
    void send(const std::shared_ptr<Kill> &kill);
    void finish(const Kill &kill, const QString &complaint);

    RecordTableModel<ProcessInfo> m_table;
    std::shared_ptr<Kill> m_asked;
    QSet<QString> m_killing;
};
