#pragma once

#include <QObject>

class AppSettings;
class AskpassHelper;
class ChildProcesses;
class DesktopAppearance;
class SSHConnectionPool;
class SSHProcessTracker;
class SecretStore;
class TerminalSessions;
class Theme;
class UserDefaults;

/// What happens when the program has started, when it ends, and when the desktop or a preference changes its look.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// All of it outlives the delegate.
    struct Services {
        UserDefaults &defaults;
        const AppSettings &settings;
        Theme &theme;
        DesktopAppearance &desktop;
        TerminalSessions &terminals;
        SSHConnectionPool &pool;
        SSHProcessTracker &tracker;
        ChildProcesses &children;
        SecretStore &secrets;
        AskpassHelper &askpass;
    };

    explicit AppDelegate(const Services &services);

    /// Before the window is shown: the look it begins with.
    void applicationDidFinishLaunching();

    /// Ends everything that the program started, and leaves no secret on the disk. Whoever waits for a command or a
    /// secret is resumed with a failure before this returns.
    void applicationWillTerminate();

private:
    void applyAppearanceMode();

    Services m_services;
};
