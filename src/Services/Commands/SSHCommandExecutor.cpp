#include "Services/Commands/SSHCommandExecutor.h"

#include "Helpers/Log.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;

QCoro::Task<CommandExecutionResult> SSHCommandExecutor::execute(std::shared_ptr<const SSHCommand> command,
                                                                Server server, CommandSSHManager &manager)
{
    setExecuting(true);
    CommandExecutionResult run{
        .command = command, .result = {}, .timestamp = QDateTime::currentDateTimeUtc(), .serverId = server.id};
    QElapsedTimer clock;
    clock.start();
    Log::info(u"SSHCommandExecutor: Executing "_s + rawText(command->category()) + u" command: "_s +
              command->description());
    run.result = co_await command->execute(manager, std::move(server));
    run.executionTime = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    setExecuting(false);
    Log::info(u"SSHCommandExecutor: Command completed in %1s with exit code %2"_s
                  .arg(QString::number(run.executionTime, 'f', 2))
                  .arg(run.result.exitCode));
    co_return run;
}

void SSHCommandExecutor::setExecuting(bool isExecuting)
{
    if (std::exchange(m_isExecuting, isExecuting) != isExecuting) {
        Q_EMIT isExecutingChanged(isExecuting);
    }
}
