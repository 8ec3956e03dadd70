#pragma once

#include "Models/AppSettings.h"
#include "Services/Terminal/HostedSSHManager.h"
#include "TerminalEmulator/View/TerminalDelegate.h"

#include <QObject>
#include <optional>

class Theme;

namespace vt
{
class TerminalWidget;
}

/// Stands between one terminal on screen and its session: output goes one way, keys and sizes the other, and the
/// preferences of the moment are applied. A session that ended leaves the terminal as it is, for the next one.
class HostedTerminalCoordinator : public QObject, public vt::TerminalDelegate
{
    Q_OBJECT

public:
    /// All of it outlives the coordinator.
    struct Services {
        BaseSSHManager::Dependencies ssh;
        BaseSSHManager &sshManager; ///< keeps the secrets of the run
        const AppSettings &settings;
        const Theme &theme;
    };

    /// `terminal` owns this object.
    HostedTerminalCoordinator(vt::TerminalWidget &terminal, Server server, const Services &services);
    ~HostedTerminalCoordinator() override;

    const Server &server() const { return m_server; }

    /// For the next session; the present one is not touched.
    void setServer(const Server &server) { m_server = server; }

    /// The session, or null before the first and after cleanup().
    HostedSSHManager *hostedSSHManager() const { return m_hostedSSHManager; }

    TerminalConnectionState connectionState() const;

    /// Font and colours of the settings, each only if it is another than the one applied last.
    void applySettings();

    /// Likewise, after the theme has changed.
    void applyTheme();

    TerminalColorScheme colorScheme() const;

    /// A new session, in place of any other.
    void setupSSHConnection();

    /// The same with a clear screen and a line that says so.
    void reconnect();

    /// Ends the session and clears the screen.
    void cleanup();

    /// For the quitting program: the client is gone when this returns.
    void endNow();

    /// The text that the server wants to have in the clipboard, until it is answered or the session is replaced.
    /// Others that come meanwhile are dropped, so that the answer is about what was on show.
    const std::optional<QString> &clipboardRequest() const { return m_clipboardRequest; }

    enum class ClipboardAnswer { No, Once, Always };

    /// Answers the request on show; `Always` holds for this session.
    void answerClipboardRequest(ClipboardAnswer answer);

    void terminalSends(const QByteArray &bytes) override;
    void terminalReplies(const QByteArray &bytes) override;
    void terminalResized(int columns, int rows, QSize pixels) override;
    bool terminalMayWriteClipboard(const QString &text) override;
    bool terminalAsksToPaste(const QString &text, const std::function<void(bool)> &answer) override;

Q_SIGNALS:
    void connectionStateChanged(TerminalConnectionState state);
    void terminalConnected();
    void terminalDisconnected();
    void outputArrived();
    void clipboardRequestChanged();

private:
    void end();
    void feedText(const QString &text);

    vt::TerminalWidget &m_terminal;
    Server m_server;
    Services m_services;
    HostedSSHManager *m_hostedSSHManager = nullptr; // a child object of this one
    std::optional<QString> m_lastAppliedFontFamily;
    std::optional<int> m_lastAppliedFontSize;
    std::optional<TerminalColorScheme> m_lastAppliedColorScheme;
    std::optional<QString> m_clipboardRequest;
    bool m_mayWriteClipboard = false;
};
