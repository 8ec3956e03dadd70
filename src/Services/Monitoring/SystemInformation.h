#pragma once

#include "Services/Monitoring/MonitoredServer.h"
#include "Services/SSH/CommandResult.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <optional>

/// What one server is: the slow facts, which change rarely and are therefore kept in its record for 300 seconds.
/// Belongs to a view model and may go away at any moment; what was asked for then comes to nothing.
class SystemInformation : public QObject
{
    Q_OBJECT

public:
    /// Facts younger than this, in seconds, are not asked for again.
    static constexpr qint64 kCacheLifetime = 300;

    explicit SystemInformation(const MonitoredServer &server, QObject *parent = nullptr);

    /// What is to be shown: the record's until fresh facts come.
    const std::optional<SystemInfo> &systemInfo() const { return m_systemInfo; }

    void setSystemInfo(std::optional<SystemInfo> systemInfo);

    bool isRefreshing() const { return m_isRefreshing; }

    /// Why the newest run failed, in one line of the other side's words, which may be none; nothing when it did not.
    const std::optional<QString> &refreshError() const { return m_refreshError; }

    /// Shows the facts of the record if they are complete and young, else asks the server. Nothing happens while the
    /// server is not connected.
    QCoro::Task<> refreshSystemInfoIfNeeded();

    /// Asks the server. Its answer becomes systemInfo() and goes into the stored record; without one both stay. Of
    /// several runs that overlap the newest counts.
    QCoro::Task<> refreshSystemInfo();

    /// What is being asked for is no longer wanted.
    void cancel();

    /// The facts in the outcomes of SystemInfoCommand and of StorageDevicesCommand, the second of which may be
    /// missing or have failed; nothing if the first failed. `now` becomes the time of the update.
    static std::optional<SystemInfo>
    parseSystemInfoFromCommandResult(const CommandResult &result, const std::optional<CommandResult> &storageResult,
                                     const QDateTime &now);

Q_SIGNALS:
    /// systemInfo(), isRefreshing() or refreshError() are different now.
    void changed();

private:
    static QCoro::Task<> refresh(QPointer<SystemInformation> self, Server server);
    void finish(const Server &server, const CommandResult &result, const CommandResult &storageResult);

    MonitoredServer m_server;
    std::optional<SystemInfo> m_systemInfo;
    std::optional<QString> m_refreshError;
    bool m_isRefreshing = false;
    quint64 m_newestRequest = 0;
};
