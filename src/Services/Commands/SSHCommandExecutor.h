#pragma once

#include "Services/Commands/SSHCommand.h"

#include <QObject>

/// Runs command objects and times them. One belongs to each session manager.
class SSHCommandExecutor : public QObject
{
    Q_OBJECT

public:
    /// True while `execute` runs. When runs overlap, the first to end clears it.
    bool isExecuting() const { return m_isExecuting; }

    /// Runs the command through `manager`, which outlives the task.
    QCoro::Task<CommandExecutionResult> execute(std::shared_ptr<const SSHCommand> command, Server server,
                                                CommandSSHManager &manager);

Q_SIGNALS:
    void isExecutingChanged(bool isExecuting);

private:
    void setExecuting(bool isExecuting);

    bool m_isExecuting = false;
};
