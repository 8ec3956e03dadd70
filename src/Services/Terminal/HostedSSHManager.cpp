#include "Services/Terminal/HostedSSHManager.h"

#include "Helpers/Log.h"
#include "Helpers/Tasks.h"
#include "Models/AppSettings.h"
#include "Services/SSH/SSHLauncher.h"
#include "Services/SSH/SSHProcessTracker.h"
#include "Services/Terminal/TerminalChild.h"
#include "Services/Terminal/Utf8Prefix.h"

#include <QFile>
#include <QTimer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kMaxCells = 1'000;
constexpr int kMaxIterations = 1'000;
constexpr qsizetype kBlock = 65'536;
constexpr qsizetype kMostAtOnce = 1'048'576;         // of one turn of the event loop
constexpr qsizetype kMostAtTheEnd = 2 * kMostAtOnce; // read ahead already, and kept by the system
constexpr qsizetype kMostReplies = 65'536;

constexpr QByteArrayView kReplacement = "\uFFFD";
constexpr QByteArrayView kBoldRed = "\r\n\x1b[1;31m";
constexpr QByteArrayView kRed = "\r\n\x1b[31m";
constexpr QByteArrayView kYellow = "\r\n\x1b[1;33m";
constexpr QByteArrayView kPlain = "\x1b[0m\r\n";

constexpr auto kAskpassVariable = "SSH_ASKPASS"_L1;

QByteArray coloredLine(QByteArrayView color, const QString &words)
{
    return color.toByteArray() + words.toUtf8() + kPlain.toByteArray();
}

int clampedCells(int cells)
{
    return std::clamp(cells, 1, kMaxCells);
}

} // namespace

HostedSSHManager::HostedSSHManager(const Dependencies &dependencies, BaseSSHManager &sshManager, Server server)
    : BaseSSHManager(dependencies)
    , m_sshManager(sshManager)
    , m_server(std::move(server))
{
}

HostedSSHManager::~HostedSSHManager()
{
    forceDisconnect();
}

int HostedSSHManager::masterFD() const
{
    return m_sshProcess != nullptr ? m_sshProcess->descriptor() : -1;
}

void HostedSSHManager::connect(TerminalSize size)
{
    if (m_connectionState != TerminalConnectionState::disconnected || m_hasCleanedUp) {
        return;
    }
    m_size = {clampedCells(size.columns), clampedCells(size.rows)};
    m_pendingUTF8Data.clear();
    setConnectionState(TerminalConnectionState::connecting);
    if (m_server.authMethod != AuthMethod::Password) {
        start(std::nullopt);
        return;
    }
    // Asked of the manager that outlives its tasks: this object may go while the keychain is being opened.
    whenDone(m_sshManager.getSessionPassword(m_server), this, [this](const std::optional<QString> &password) {
        if (!m_hasCleanedUp) {
            start(password);
        }
    });
}

void HostedSSHManager::start(const std::optional<QString> &password)
{
    if (const std::optional<QString> refusal = SSHArguments::refusalFor(m_server)) {
        fail(kRed, tr("Failed to start SSH: %1").arg(*refusal));
        return;
    }
    m_sshProcess = new TerminalChild(this);
    QObject::connect(m_sshProcess, &TerminalChild::readable, this, &HostedSSHManager::readOutput);
    QObject::connect(m_sshProcess, &TerminalChild::exited, this, &HostedSSHManager::handleProcessTermination);
    if (const int error = m_sshProcess->open(m_size.columns, m_size.rows); error != 0) {
        fail(kBoldRed, tr("Failed to create pseudoterminal (error %1: %2)").arg(error).arg(qt_error_string(error)));
        return;
    }
    const QStringList arguments =
        sshArgumentBuilder()
            .strategyFor(m_server.authMethod)
            .buildArguments(m_server, std::nullopt, m_dependencies.settings, true, u"QUIET"_s);
    SSHLauncher &launcher = m_dependencies.launcher;
    if (const int error = m_sshProcess->start(launcher.sshPath(), arguments, environment(password)); error != 0) {
        fail(kRed, tr("Failed to start SSH: %1").arg(qt_error_string(error)));
        return;
    }
    m_processId = m_sshProcess->processId();
    launcher.tracker().trackTarnwellProcess(m_processId);
    m_sshProcess->setReading(true);
    setConnectionState(TerminalConnectionState::connected);
    Q_EMIT terminalConnected(m_server.id);
}

// The operator's own, locale included: unlike a command's output, nobody here parses what comes back.
QProcessEnvironment HostedSSHManager::environment(const std::optional<QString> &password)
{
    QProcessEnvironment result = QProcessEnvironment::systemEnvironment();
    result.insert(u"TERM"_s, u"xterm-256color"_s);
    result.insert(u"COLUMNS"_s, QString::number(m_size.columns));
    result.insert(u"LINES"_s, QString::number(m_size.rows));
    if (!password) {
        return result;
    }
    result.remove(kAskpassVariable);
    result = m_dependencies.launcher.withAskpass(result, password);
    if (result.contains(kAskpassVariable)) {
        m_askpassScriptPath = result.value(kAskpassVariable);
    }
    return result;
}

void HostedSSHManager::fail(QByteArrayView color, const QString &words)
{
    closeTerminal();
    Log::error(words, Log::Category::Terminal);
    if (m_outputHandler) {
        m_outputHandler(coloredLine(color, u"\u2717 "_s + words));
    }
    setConnectionState(TerminalConnectionState::disconnected);
}

void HostedSSHManager::send(QByteArrayView bytes)
{
    if (m_sshProcess != nullptr) {
        m_sshProcess->send(bytes);
    }
}

void HostedSSHManager::sendReply(QByteArrayView bytes)
{
    if (m_sshProcess != nullptr && m_sshProcess->pending() < kMostReplies) {
        m_sshProcess->send(bytes);
    }
}

void HostedSSHManager::resizeTerminal(int columns, int rows)
{
    m_size = {clampedCells(columns), clampedCells(rows)};
    if (masterFD() < 0) {
        return;
    }
    if (const int error = m_sshProcess->resize(m_size.columns, m_size.rows); error != 0) {
        Log::warning(u"resizeTerminal: "_s + qt_error_string(error), Log::Category::Terminal);
    }
}

void HostedSSHManager::readOutput()
{
    for (qsizetype taken = 0; taken < kMostAtOnce;) {
        if (m_wantsOutput && !m_wantsOutput()) {
            pauseReading();
            return;
        }
        const qsizetype before = m_pendingUTF8Data.size();
        const bool goesOn = m_sshProcess->read(m_pendingUTF8Data, kBlock);
        const qsizetype count = m_pendingUTF8Data.size() - before;
        if (!goesOn) {
            m_sshProcess->setReading(false); // the child's exit is told by itself
        }
        emitPendingOutput(false);
        if (!goesOn || count == 0 || m_sshProcess == nullptr) {
            return;
        }
        taken += count;
    }
}

// Without this the descriptor would wake the event loop again and again for bytes that nobody takes yet.
void HostedSSHManager::pauseReading()
{
    m_sshProcess->setReading(false);
    QTimer::singleShot(0, m_sshProcess, [this] { m_sshProcess->setReading(true); });
}

void HostedSSHManager::emitPendingOutput(bool flush)
{
    while (emitSomeOutput(flush)) {
    }
}

// True when it gave up before it came to the end.
bool HostedSSHManager::emitSomeOutput(bool flush)
{
    const QByteArray bytes = std::exchange(m_pendingUTF8Data, {});
    const QByteArrayView all = bytes;
    const auto emitText = [this](QByteArrayView text) {
        if (!text.isEmpty() && m_outputHandler) {
            m_outputHandler(text);
        }
    };
    qsizetype at = 0;
    for (int iterations = 0; at < all.size(); ++iterations, ++at) {
        if (iterations == kMaxIterations) {
            Log::verbose(u"emitPendingOutput: Exceeded max iterations (1000) while processing pendingUTF8Data. "
                         "Possible invalid UTF-8 data."_s,
                         Log::Category::Terminal);
            break;
        }
        const Utf8Prefix prefix = Utf8Prefix::of(all.sliced(at));
        emitText(all.sliced(at, prefix.length));
        at += prefix.length;
        if (prefix.isCut) {
            emitText(flush ? kReplacement : QByteArrayView());
            m_pendingUTF8Data = flush ? QByteArray() : all.sliced(at).toByteArray();
            return false;
        }
    }
    m_pendingUTF8Data = all.sliced(std::min(at, all.size())).toByteArray();
    return !m_pendingUTF8Data.isEmpty();
}

void HostedSSHManager::handleProcessTermination()
{
    if (m_connectionState == TerminalConnectionState::disconnected) {
        return;
    }
    // What the client wrote last, but no more: an heir of the client may write for ever.
    m_sshProcess->read(m_pendingUTF8Data, kMostAtTheEnd);
    emitPendingOutput(true);
    closeTerminal();
    if (m_outputHandler) {
        m_outputHandler(coloredLine(kYellow, u"\u25c9 "_s + tr("Connection closed")));
    }
    setConnectionState(TerminalConnectionState::disconnected);
    Q_EMIT terminalDisconnected(m_server.id);
}

void HostedSSHManager::forceDisconnect()
{
    if (std::exchange(m_hasCleanedUp, true)) {
        return;
    }
    closeTerminal();
    setConnectionState(TerminalConnectionState::disconnected);
}

void HostedSSHManager::endNow()
{
    if (m_sshProcess != nullptr) {
        m_sshProcess->endNow();
    }
    forceDisconnect();
}

// The process object goes later: this may run inside of one of its signals.
void HostedSSHManager::closeTerminal()
{
    if (m_sshProcess != nullptr) {
        m_sshProcess->end();
        std::exchange(m_sshProcess, nullptr)->deleteLater();
    }
    if (m_processId > 0) {
        m_dependencies.launcher.tracker().untrackTarnwellProcess(std::exchange(m_processId, -1));
    }
    if (m_askpassScriptPath) {
        QFile::remove(*m_askpassScriptPath);
        m_askpassScriptPath.reset();
    }
}

void HostedSSHManager::setConnectionState(TerminalConnectionState state)
{
    if (std::exchange(m_connectionState, state) != state) {
        Q_EMIT connectionStateChanged(state);
    }
}
