#include "Views/Terminal/HostedTerminalCoordinator.h"

#include "Helpers/Log.h"
#include "TerminalEmulator/View/TerminalWidget.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/PlainText.h"
#include "Views/Terminal/TerminalLook.h"

#include <QClipboard>
#include <QGuiApplication>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kClearScreen = "\x1b[2J\x1b[H"_L1;
constexpr qsizetype kPreviewLines = 6;
constexpr qsizetype kPreviewWidth = 80;

// The beginning of a text, with its control characters as blanks.
QString preview(const QString &text)
{
    QStringList lines;
    qsizetype at = 0;
    while (at <= text.size() && lines.size() < kPreviewLines) {
        const qsizetype end = text.indexOf(u'\n', at);
        const QString line = PlainText::oneLine(text.sliced(at, (end < 0 ? text.size() : end) - at));
        lines += line.size() > kPreviewWidth ? line.left(kPreviewWidth) + u'\u2026' : line;
        at = end < 0 ? text.size() + 1 : end + 1;
    }
    if (at <= text.size()) {
        lines += u"\u2026"_s;
    }
    return lines.join(u'\n');
}

} // namespace

HostedTerminalCoordinator::HostedTerminalCoordinator(vt::TerminalWidget &terminal, Server server,
                                                     const Services &services)
    : m_terminal(terminal)
    , m_server(std::move(server))
    , m_services(services)
{
}

HostedTerminalCoordinator::~HostedTerminalCoordinator()
{
    end();
}

TerminalConnectionState HostedTerminalCoordinator::connectionState() const
{
    return m_hostedSSHManager != nullptr ? m_hostedSSHManager->connectionState()
                                         : TerminalConnectionState::disconnected;
}

TerminalColorScheme HostedTerminalCoordinator::colorScheme() const
{
    return m_lastAppliedColorScheme.value_or(m_services.settings.terminalColorScheme());
}

void HostedTerminalCoordinator::applySettings()
{
    const AppSettings &settings = m_services.settings;
    const QString family = settings.terminalFontFamily();
    const int size = settings.terminalFontSize();
    if (m_lastAppliedFontFamily != family || m_lastAppliedFontSize != size) {
        m_lastAppliedFontFamily = family;
        m_lastAppliedFontSize = size;
        m_terminal.setTerminalFont(TerminalLook::font(family, size));
    }
    const TerminalColorScheme scheme = settings.terminalColorScheme();
    if (m_lastAppliedColorScheme != scheme) {
        m_lastAppliedColorScheme = scheme;
        m_terminal.setColors(TerminalLook::colors(scheme, m_services.theme));
    }
}

void HostedTerminalCoordinator::applyTheme()
{
    m_lastAppliedColorScheme.reset();
    applySettings();
}

void HostedTerminalCoordinator::setupSSHConnection()
{
    end();
    m_mayWriteClipboard = false;
    if (std::exchange(m_clipboardRequest, std::nullopt)) {
        Q_EMIT clipboardRequestChanged();
    }
    m_hostedSSHManager = new HostedSSHManager(m_services.ssh, m_services.sshManager, m_server);
    m_hostedSSHManager->setParent(this);
    HostedSSHManager &session = *m_hostedSSHManager;
    session.setOutputHandler([this](QByteArrayView text) {
        m_terminal.feed(text);
        Q_EMIT outputArrived();
    });
    session.setWantsOutput([this] { return m_terminal.wantsOutput(); });
    QObject::connect(&session, &HostedSSHManager::connectionStateChanged, this,
                     &HostedTerminalCoordinator::connectionStateChanged);
    QObject::connect(&session, &HostedSSHManager::terminalConnected, this,
                     &HostedTerminalCoordinator::terminalConnected);
    QObject::connect(&session, &HostedSSHManager::terminalDisconnected, this,
                     &HostedTerminalCoordinator::terminalDisconnected);
    session.connect({m_terminal.columns(), m_terminal.rows()});
}

void HostedTerminalCoordinator::reconnect()
{
    feedText(kClearScreen);
    const QString name = m_server.name.isEmpty() ? tr("server") : m_server.name;
    feedText(u"\x1b[1;33m\u25c9 "_s + tr("Reconnecting to %1...").arg(PlainText::oneLine(name)) + u"\x1b[0m\r\n"_s);
    setupSSHConnection();
}

void HostedTerminalCoordinator::cleanup()
{
    const QString name = m_server.name.isEmpty() ? u"unknown"_s : m_server.name;
    Log::info(u"Cleaning up terminal of "_s + name, Log::Category::Terminal);
    feedText(kClearScreen);
    end();
}

void HostedTerminalCoordinator::endNow()
{
    if (m_hostedSSHManager != nullptr) {
        m_hostedSSHManager->endNow();
    }
    end();
}

// The session goes a turn later: this may run inside of one of its signals.
void HostedTerminalCoordinator::end()
{
    if (m_hostedSSHManager != nullptr) {
        m_hostedSSHManager->forceDisconnect();
        m_hostedSSHManager->disconnect(this);
        std::exchange(m_hostedSSHManager, nullptr)->deleteLater();
    }
}

void HostedTerminalCoordinator::feedText(const QString &text)
{
    m_terminal.feed(text.toUtf8());
}

void HostedTerminalCoordinator::answerClipboardRequest(ClipboardAnswer answer)
{
    if (!m_clipboardRequest) {
        return;
    }
    const QString text = *std::exchange(m_clipboardRequest, std::nullopt);
    if (answer != ClipboardAnswer::No) {
        QGuiApplication::clipboard()->setText(text);
    }
    m_mayWriteClipboard = answer == ClipboardAnswer::Always;
    Q_EMIT clipboardRequestChanged();
}

void HostedTerminalCoordinator::terminalSends(const QByteArray &bytes)
{
    if (m_hostedSSHManager != nullptr) {
        m_hostedSSHManager->send(bytes);
    }
}

void HostedTerminalCoordinator::terminalReplies(const QByteArray &bytes)
{
    if (m_hostedSSHManager != nullptr) {
        m_hostedSSHManager->sendReply(bytes);
    }
}

void HostedTerminalCoordinator::terminalResized(int columns, int rows, QSize pixels)
{
    Q_UNUSED(pixels)
    if (m_hostedSSHManager != nullptr) {
        m_hostedSSHManager->resizeTerminal(columns, rows);
    }
}

bool HostedTerminalCoordinator::terminalMayWriteClipboard(const QString &text)
{
    if (!m_mayWriteClipboard && !m_clipboardRequest) {
        m_clipboardRequest = text;
        Q_EMIT clipboardRequestChanged();
    }
    return m_mayWriteClipboard;
}

bool HostedTerminalCoordinator::terminalAsksToPaste(const QString &text, const std::function<void(bool)> &answer)
{
    constexpr qsizetype kPaste = 1;
    auto *const question = new AlertDialog(m_services.theme,
                                           {.title = tr("Paste Several Lines?"),
                                            .text = tr("The shell may run them at once:") + u"\n\n"_s + preview(text),
                                            .buttons = {{tr("Cancel")}, {tr("Paste"), ButtonKind::Primary}}},
                                           &m_terminal);
    connect(question, &AlertDialog::answered, &m_terminal, [answer](qsizetype button) { answer(button == kPaste); });
    question->open();
    return true;
}
