#pragma once

#include "Services/Children/ChildProcess.h"

#include <QCoroTask>
#include <QPointer>
#include <memory>
#include <vector>

/// A running child that its starter wants to steer. Null once the child has ended.
using ChildHandle = QPointer<ChildProcess>;

/// Every child of this program: starts them, owns them while they run, and ends them all when the program ends.
/// One object for the process; it outlives every task that waits for a child.
class ChildProcesses : public QObject
{
    Q_OBJECT

public:
    ChildProcesses() = default;
    ~ChildProcesses() override;

    /// Runs a child to its end. Never fails otherwise than by the outcome's kind. `handle`, if given, is set while
    /// the child runs.
    QCoro::Task<ChildOutcome> run(ChildSetup setup, std::shared_ptr<ChildHandle> handle = {});

    /// How many children run.
    qsizetype count() const { return static_cast<qsizetype>(m_children.size()); }

    /// Ends all children at once and refuses new ones: every waiting task is resumed with Cancelled before this
    /// returns, and whatever such a task starts is cancelled too.
    void shutdown();

private:
    void retire(const ChildProcess *child);

    std::vector<std::unique_ptr<ChildProcess>> m_children;
    std::vector<std::unique_ptr<ChildProcess>> m_ended; // deleted once their own signal handlers have returned
    bool m_isShutDown = false;
};
