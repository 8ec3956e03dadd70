#include "Services/SSH/SSHConnectionPool.h"

#include "Helpers/Log.h"
#include "Models/AppSettings.h"
#include "Services/SSH/RuntimeDirectory.h"
#include "Services/SSH/SSHArgumentStrategy.h"
#include "Services/SSH/SSHLauncher.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <chrono>
#include <sys/un.h>

using namespace Qt::StringLiterals;

namespace
{

// ssh binds the socket under a temporary name of 17 more characters first (mux.c, muxserver_listen), and the address
// ends with a NUL (unix(7)).
constexpr qsizetype kTemporaryNameLength = 17;
constexpr qsizetype kLongestControlPath = sizeof(sockaddr_un::sun_path) - 1 - kTemporaryNameLength;

void log(const QString &message)
{
    Log::info(message, Log::Category::Connection);
}

SSHPooledConnection leaseOn(const MasterSSHConnection &master, const Server &server)
{
    return {server.id, master.controlPath(), server, master.gate()};
}

} // namespace

QStringList SSHPooledConnection::buildCommandArguments(const QString &command, bool includeTerminal) const
{
    QStringList arguments{u"-S"_s, controlPath};
    SSHArguments::addOption(arguments, u"LogLevel=ERROR"_s);
    if (includeTerminal) {
        arguments += u"-t"_s;
    }
    if (server.forwardAgent) {
        SSHArguments::addOption(arguments, u"ForwardAgent=yes"_s);
    }
    SSHArguments::addDestination(arguments, server, command);
    return arguments;
}

SSHConnectionPool::SSHConnectionPool(SSHLauncher &launcher, const AppSettings &settings, RuntimeDirectory &directory)
    : m_launcher(launcher)
    , m_settings(settings)
    , m_directory(directory)
    // Another running program that uses the same directory gets other paths for the same servers.
    , m_pathSeed(static_cast<size_t>(QRandomGenerator::global()->generate64()))
{
    setupControlPathDirectory();
    connect(&m_healthCheckTimer, &QTimer::timeout, this, &SSHConnectionPool::performHealthCheck);
    m_healthCheckTimer.start(std::chrono::seconds(kHealthCheckSeconds));
}

bool SSHConnectionPool::setupControlPathDirectory()
{
    const QString path = m_directory.controlPathDirectory();
    if (QDir(path).exists() && m_directory.ensureControlPathDirectory()) {
        log(u"Control path directory exists: "_s + path);
        return true;
    }
    if (m_directory.ensureControlPathDirectory()) {
        log(u"Created control path directory at: "_s + path);
        return true;
    }
    Log::error(u"Failed to create control path directory: "_s + path + u' ' + m_directory.refusal(),
               Log::Category::Connection);
    return false;
}

QString SSHConnectionPool::generateControlPath(const Server &server) const
{
    const QString key =
        u"%1:%2:%3"_s.arg(server.host).arg(server.port).arg(server.id.toString(QUuid::WithoutBraces).toUpper());
    const auto digits = static_cast<quint32>(qHash(key, m_pathSeed));
    return m_directory.controlPathDirectory() + u"ssh_"_s +
           QString::number(digits, 16).toUpper().rightJustified(8, u'0');
}

QCoro::Task<std::optional<SSHPooledConnection>>
SSHConnectionPool::getConnection(Server server, std::optional<QString> password, std::optional<QString> passphrase)
{
    if (const auto master = m_masterConnections.value(server.id); master && master->isUsable()) {
        log(u"Using existing master connection for "_s + server.name);
        co_return leaseOn(*master, server);
    }
    if (const auto pending = m_pending.value(server.id)) {
        OneShot<bool> ready(false);
        pending->waiting.push_back(ready.completer());
        co_await ready.wait();
    } else {
        co_await createMasterConnection(server, std::move(password), std::move(passphrase));
    }
    const auto master = m_masterConnections.value(server.id);
    co_return master && master->isUsable() ? std::optional(leaseOn(*master, server)) : std::nullopt;
}

QCoro::Task<void> SSHConnectionPool::createMasterConnection(Server server, std::optional<QString> password,
                                                            std::optional<QString> passphrase)
{
    log(u"Creating new master connection for "_s + server.name);
    const QString path = generateControlPath(server);
    if (!setupControlPathDirectory()) {
        co_return;
    }
    if (QFile::encodeName(path).size() > kLongestControlPath) {
        Log::warning(u"No pooled connection: too long for a socket's address: "_s + path, Log::Category::Connection);
        co_return;
    }
    log(u"Control path will be: "_s + path);
    const auto master = std::make_shared<MasterSSHConnection>(m_launcher, m_settings, server, path,
                                                              std::move(password), std::move(passphrase));
    const auto pending = std::make_shared<Pending>(Pending{master, {}});
    m_pending.insert(server.id, pending);
    const bool isEstablished = co_await master->establish();
    if (isEstablished && !master->isClosed()) {
        log(u"Master connection established for "_s + server.name);
        m_masterConnections.insert(server.id, master);
    } else {
        log(u"Failed to establish master connection for "_s + server.name);
        master->cleanup();
    }
    // Closed meanwhile, the entry is gone or already another login's.
    if (m_pending.value(server.id) == pending) {
        m_pending.remove(server.id);
    }
    for (const OneShot<bool>::Completer &waiter : std::exchange(pending->waiting, {})) {
        waiter.complete(true);
    }
}

void SSHConnectionPool::closeConnection(const Server &server)
{
    // A login under way is cut off; who waits for it gets its answer at once and a later command starts afresh.
    if (const auto pending = m_pending.take(server.id)) {
        pending->master->cleanup();
        pending->waiting.clear();
    }
    if (const auto master = m_masterConnections.take(server.id)) {
        log(u"Closing master connection for "_s + server.name);
        master->cleanup();
    }
}

void SSHConnectionPool::closeAllConnections()
{
    for (const auto &pending : std::exchange(m_pending, {})) {
        pending->master->cleanup();
    }
    for (const auto &master : std::exchange(m_masterConnections, {})) {
        log(u"Closing master connection for "_s + master->server().name);
        master->cleanup();
    }
}

void SSHConnectionPool::performHealthCheck()
{
    for (const QUuid &id : m_masterConnections.keys()) {
        if (!m_masterConnections.value(id)->isUsable()) {
            log(u"Dead connection detected for server "_s + id.toString(QUuid::WithoutBraces).toUpper());
            m_masterConnections.take(id)->cleanup();
        }
    }
}

void SSHConnectionPool::cleanup()
{
    m_healthCheckTimer.stop();
    closeAllConnections();
    m_directory.removeControlPathDirectory();
}
