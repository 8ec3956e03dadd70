#pragma once

#include "Models/Server.h"
#include "Services/SSH/CommandResult.h"
#include "Services/SSH/ShellLine.h"

#include <QCoroTask>
#include <QDateTime>
#include <QString>
#include <QUuid>
#include <memory>
#include <optional>

class CommandSSHManager;

/// What kind of work a command does.
enum class CommandCategory { System, Processes, Services, Files, Docker, Network, Users, Packages, Cron, Custom };

template<>
struct RawTexts<CommandCategory> {
    static constexpr std::array all{std::pair{CommandCategory::System, QStringView(u"System")},
                                    std::pair{CommandCategory::Processes, QStringView(u"Processes")},
                                    std::pair{CommandCategory::Services, QStringView(u"Services")},
                                    std::pair{CommandCategory::Files, QStringView(u"Files")},
                                    std::pair{CommandCategory::Docker, QStringView(u"Docker")},
                                    std::pair{CommandCategory::Network, QStringView(u"Network")},
                                    std::pair{CommandCategory::Users, QStringView(u"Users")},
                                    std::pair{CommandCategory::Packages, QStringView(u"Packages")},
                                    std::pair{CommandCategory::Cron, QStringView(u"Cron")},
                                    std::pair{CommandCategory::Custom, QStringView(u"Custom")}};
};

/// One remote operation: the shell text, and what the system needs to know around it.
class SSHCommand
{
public:
    virtual ~SSHCommand() = default;

    /// Human wording of the operation, for logs.
    virtual QString description() const = 0;
    virtual CommandCategory category() const = 0;

    /// Seconds; absent means no time limit on the run.
    virtual std::optional<double> timeout() const = 0;

    /// Runs the operation. The caller keeps this object and the manager alive until the task is done.
    virtual QCoro::Task<CommandResult> execute(CommandSSHManager &manager, Server server) const = 0;
};

/// A command that is one complete shell line. The catalogue's classes only fill its fields.
class BaseSSHCommand : public SSHCommand
{
public:
    struct Fields {
        QString description;
        CommandCategory category = CommandCategory::Custom;
        QString commandString;                        ///< complete: no placeholders remain
        bool isReversible = false;                    ///< whether the operation can be undone
        std::optional<double> timeout = std::nullopt; ///< seconds
        bool isConfidential = false;                  ///< the line holds a secret: no log shows it
    };

    explicit BaseSSHCommand(Fields fields)
        : m_fields(std::move(fields))
    {
    }

    BaseSSHCommand(const BaseSSHCommand &) = default;
    BaseSSHCommand(BaseSSHCommand &&) = default;
    BaseSSHCommand &operator=(const BaseSSHCommand &) = delete;
    BaseSSHCommand &operator=(BaseSSHCommand &&) = delete;
    ~BaseSSHCommand() override; ///< wipes a confidential line

    QUuid id() const { return m_id; }

    QString description() const override { return m_fields.description; }

    CommandCategory category() const override { return m_fields.category; }

    std::optional<double> timeout() const override { return m_fields.timeout; }

    bool isReversible() const { return m_fields.isReversible; }

    bool isConfidential() const { return m_fields.isConfidential; }

    QString commandString() const { return m_fields.commandString; }

    QCoro::Task<CommandResult> execute(CommandSSHManager &manager, Server server) const override;

private:
    QUuid m_id = QUuid::createUuid();
    Fields m_fields;
};

/// A line that a screen composes itself.
class CustomCommand : public BaseSSHCommand
{
public:
    CustomCommand(const QString &commandString, const QString &description,
                  CommandCategory category = CommandCategory::Custom)
        : BaseSSHCommand({.description = description, .category = category, .commandString = commandString})
    {
    }
};

/// A run of a command object.
struct CommandExecutionResult {
    std::shared_ptr<const SSHCommand> command;
    CommandResult result;
    double executionTime = 0; ///< seconds of wall time
    QDateTime timestamp;      ///< when the run began
    QUuid serverId;
};
