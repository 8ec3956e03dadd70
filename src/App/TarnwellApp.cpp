#include "App/TarnwellApp.h"

#include "App/AppDelegate.h"
#include "App/AppState.h"
#include "App/Constants.h"
#include "App/StartMeasure.h"
#include "App/WindowPictures.h"
#include "Helpers/Clock.h"
#include "Helpers/Tasks.h"
#include "Models/AppSettings.h"
#include "Models/ServerStore.h"
#include "Models/UserDefaults.h"
#include "Services/Children/ChildProcesses.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/Commands/ServerListEffects.h"
#include "Services/LoginItem.h"
#include "Services/SSH/AskpassHelper.h"
#include "Services/SSH/KeychainManager.h"
#include "Services/SSH/RuntimeDirectory.h"
#include "Services/SSH/SSHConnectionPool.h"
#include "Services/SSH/SSHLauncher.h"
#include "Services/SSH/SSHProcessTracker.h"
#include "Services/SSH/SessionSecretStore.h"
#include "Views/Components/FirstPaint.h"
#include "Views/Shell/AboutView.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/HostKeyDialog.h"
#include "Views/Shell/MainMenu.h"
#include "Views/Shell/Sections.h"
#include "Views/Shell/WindowLayout.h"
#include "Views/Terminal/GlobalTerminalSessionManager.h"
#include "Views/Theme/DesktopAppearance.h"
#include "Views/Theme/Theme.h"

#include <QGuiApplication>
#include <QPointer>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

QStringList loginCommand(const CommandLine &line)
{
    QStringList command{QCoreApplication::applicationFilePath()};
    if (!line.profileDirectory.isEmpty()) {
        command << u"--profile"_s << line.profileDirectory;
    }
    return command;
}

} // namespace

/// Every object that there is one of, in the order in which they are made; they go in the opposite order.
struct TarnwellApp::Objects {
    Objects(const CommandLine &line, RuntimeDirectory &directory)
        : defaults(line.profile())
        , settings(defaults)
        , loginItem(LoginItem::defaultDirectory(), loginCommand(line))
        , runtimeDirectory(directory)
        , askpass(runtimeDirectory)
        , launcher(children, tracker, askpass)
        , pool(launcher, settings, runtimeDirectory)
        , keychain(secrets, clock)
        , hostKeyDialog(theme)
        , manager({launcher, keychain, settings, hostKeyDialog}, pool)
        , terminals({{launcher, keychain, settings, hostKeyDialog}, manager, settings, theme})
        , serverListEffects(manager, &terminals)
        , store(defaults, clock, &serverListEffects)
        , state{&store}
        , delegate({defaults, settings, theme, desktop, terminals, pool, tracker, children, secrets, askpass})
    {
        theme.install();
        delegate.applicationDidFinishLaunching();
        const Sections::IconPreparation icons(theme.tokens().dim, qGuiApp->devicePixelRatio());
        window = std::make_unique<ContentView>(theme, ContentView::Services{store, manager, clock, &terminals});
    }

    SystemClock clock;
    UserDefaults defaults;
    AppSettings settings;
    LoginItem loginItem;

    RuntimeDirectory &runtimeDirectory;
    AskpassHelper askpass;
    ChildProcesses children;
    SSHProcessTracker tracker;
    SSHLauncher launcher;
    SSHConnectionPool pool;
    SessionSecretStore secrets;
    KeychainManager keychain;

    Theme theme;
    DesktopAppearance desktop;
    HostKeyDialog hostKeyDialog;

    CommandSSHManager manager;
    GlobalTerminalSessionManager terminals;
    ServerListEffects serverListEffects;
    ServerStore store;
    AppState state;
    AppDelegate delegate;
    std::unique_ptr<ContentView> window;
    QPointer<AboutView> about;
    std::unique_ptr<WindowPictures> pictures;
};

TarnwellApp::TarnwellApp(const CommandLine &line, RuntimeDirectory &runtimeDirectory)
    : m_line(line)
    , m_objects(std::make_unique<Objects>(line, runtimeDirectory))
{
    wire();
}

TarnwellApp::~TarnwellApp() = default;

ContentView &TarnwellApp::window() const
{
    return *m_objects->window;
}

Theme &TarnwellApp::theme() const
{
    return m_objects->theme;
}

const AppState &TarnwellApp::state() const
{
    return m_objects->state;
}

void TarnwellApp::wire()
{
    Objects &o = *m_objects;
    connect(qApp, &QCoreApplication::aboutToQuit, &o.delegate, &AppDelegate::applicationWillTerminate);
    connect(&o.settings, &AppSettings::useConnectionPoolingChanged, &o.pool, [&o](bool isUsed) {
        if (!isUsed) {
            o.pool.closeAllConnections();
        }
    });
    connect(&o.settings, &AppSettings::launchAtLoginChanged, this,
            [&o](bool isEnabled) { o.loginItem.setEnabled(isEnabled); });
    connect(&o.window->menu(), &MainMenu::aboutRequested, this, &TarnwellApp::openAbout);
    connect(&o.defaults, &UserDefaults::noticeAvailable, o.window.get(),
            [&o] { o.window->addNotice(o.defaults.notice()); });
}

void TarnwellApp::start()
{
    Objects &o = *m_objects;
    o.window->addNotice(o.defaults.notice());
    o.window->addNotice(o.runtimeDirectory.refusal());
    if (m_line.isOrdinary()) {
        new WindowLayout(*o.window, o.defaults);
    }
    new FirstPaint(*o.window, [this] { afterFirstPaint(); });
    o.window->show();
}

void TarnwellApp::raiseWindow(const QByteArray &activationToken)
{
    if (!activationToken.isEmpty()) {
        qputenv("XDG_ACTIVATION_TOKEN", activationToken); // Qt uses it up with the next activation
    }
    ContentView &window = *m_objects->window;
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

void TarnwellApp::end()
{
    QCoreApplication::exit(0);
}

void TarnwellApp::openAbout()
{
    Objects &o = *m_objects;
    if (!o.about) {
        o.about = new AboutView(o.theme,
                                {{tr("Website"), QUrl(Constants::kWebsite)},
                                 {tr("Documentation"), QUrl(Constants::kDocumentation)},
                                 {tr("Support"), QUrl(Constants::kSupport)}},
                                o.window.get());
    }
    o.about->show();
    o.about->raise();
    o.about->activateWindow();
}

void TarnwellApp::afterFirstPaint()
{
    Objects &o = *m_objects;
    if (m_line.measuresStart) {
        std::fputs(qPrintable(StartMeasure::now().line() + u'\n'), stdout);
        QCoreApplication::quit();
        return;
    }
    if (m_line.renderDirectory) {
        o.pictures =
            std::make_unique<WindowPictures>(*o.window, o.theme, *o.state.serverStore, *m_line.renderDirectory);
        connect(o.pictures.get(), &WindowPictures::finished, qApp, [](int code) { QCoreApplication::exit(code); });
        o.pictures->start();
        return;
    }
    o.desktop.start();
    whenDone(o.secrets.notice(), o.window.get(),
             [window = o.window.get()](const QString &notice) { window->addNotice(notice); });
}
