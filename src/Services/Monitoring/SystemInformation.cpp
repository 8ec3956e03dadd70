#include "Services/Monitoring/SystemInformation.h"

#include "Helpers/Clock.h"
#include "Helpers/Log.h"
#include "Models/ServerStore.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/Parsers/StorageDeviceParser.h"
#include "Services/Parsers/SystemInfoParser.h"
#include "Services/SSH/ConnectionTest.h"

using namespace Qt::StringLiterals;

namespace
{

QString twoDecimals(double seconds)
{
    return QString::number(seconds, 'f', 2);
}

} // namespace

SystemInformation::SystemInformation(const MonitoredServer &server, QObject *parent)
    : QObject(parent)
    , m_server(server)
{
}

void SystemInformation::setSystemInfo(std::optional<SystemInfo> systemInfo)
{
    if (m_systemInfo != systemInfo) {
        m_systemInfo = std::move(systemInfo);
        Q_EMIT changed();
    }
}

QCoro::Task<> SystemInformation::refreshSystemInfoIfNeeded()
{
    const std::optional<Server> server = m_server.connected();
    if (!server) {
        co_return;
    }
    if (server->systemInfo && server->systemInfo->storageDevices && server->systemInfo->lastUpdated.isValid()) {
        const qint64 age = server->systemInfo->lastUpdated.secsTo(m_server.clock.now());
        if (age < kCacheLifetime) {
            Log::info(u"Using cached system info (age: %1s)"_s.arg(age), Log::Category::Performance);
            setSystemInfo(server->systemInfo);
            co_return;
        }
        Log::info(u"Cache expired (age: %1s), refreshing..."_s.arg(age), Log::Category::Performance);
    }
    co_await refreshSystemInfo();
}

QCoro::Task<> SystemInformation::refreshSystemInfo()
{
    const std::optional<Server> server = m_server.connected();
    if (!server) {
        co_return;
    }
    co_await refresh(this, *server);
}

QCoro::Task<> SystemInformation::refresh(QPointer<SystemInformation> self, Server server)
{
    CommandSSHManager *const manager = &self->m_server.manager;
    const quint64 request = ++self->m_newestRequest;
    const auto isWanted = [self, request] { return self && self->m_newestRequest == request; };
    self->m_isRefreshing = true;
    Q_EMIT self->changed();

    const CommandExecutionResult run = co_await manager->getSystemInfoUsingCommands(server);
    Log::info(
        u"Command Pattern: %1 executed in %2s"_s.arg(run.command->description(), twoDecimals(run.executionTime)),
        Log::Category::Performance);
    if (!isWanted()) {
        co_return;
    }
    const CommandExecutionResult storageRun = co_await manager->getStorageDevicesUsingCommands(server);
    Log::info(u"Storage devices fetched in %1s"_s.arg(twoDecimals(storageRun.executionTime)),
              Log::Category::Performance);
    if (isWanted()) {
        self->finish(server, run.result, storageRun.result);
    }
}

void SystemInformation::finish(const Server &server, const CommandResult &result, const CommandResult &storageResult)
{
    const std::optional<SystemInfo> fresh =
        parseSystemInfoFromCommandResult(result, storageResult, m_server.clock.now());
    m_isRefreshing = false;
    m_refreshError = fresh ? std::nullopt : std::optional(ConnectionTest::reason(QString::fromUtf8(result.error)));
    const QPointer<SystemInformation> self(this); // the store's listeners may end the owner
    if (fresh) {
        m_systemInfo = fresh;
        m_server.store.updateServerSystemInfo(server, *fresh);
    }
    if (self) {
        Q_EMIT changed();
    }
}

void SystemInformation::cancel()
{
    ++m_newestRequest;
    if (std::exchange(m_isRefreshing, false)) {
        Q_EMIT changed();
    }
}

std::optional<SystemInfo> SystemInformation::parseSystemInfoFromCommandResult(
    const CommandResult &result, const std::optional<CommandResult> &storageResult, const QDateTime &now)
{
    if (!result.succeeded()) {
        Log::error(u"Command execution failed: "_s + QString::fromUtf8(result.error), Log::Category::Ssh);
        return std::nullopt;
    }
    SystemInfo info = SystemInfoParser::parse(result.output, now);
    if (storageResult && storageResult->succeeded()) {
        info.storageDevices = StorageDeviceParser::parse(storageResult->output);
    }
    return info;
}
