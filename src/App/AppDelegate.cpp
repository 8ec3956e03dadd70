#include "App/AppDelegate.h"

#include "App/Constants.h"
#include "Models/AppSettings.h"
#include "Models/UserDefaults.h"
#include "Services/Children/ChildProcesses.h"
#include "Services/SSH/AskpassHelper.h"
#include "Services/SSH/SSHConnectionPool.h"
#include "Services/SSH/SSHProcessTracker.h"
#include "Services/SSH/SecretStore.h"
#include "Services/Terminal/TerminalSessions.h"
#include "Views/Theme/DesktopAppearance.h"
#include "Views/Theme/Theme.h"

AppDelegate::AppDelegate(const Services &services)
    : m_services(services)
{
    connect(&services.settings, &AppSettings::appearanceModeChanged, this, &AppDelegate::applyAppearanceMode);
    connect(&services.desktop, &DesktopAppearance::prefersDarkChanged, this, [this](bool prefersDark) {
        if (m_services.defaults.boolean(Constants::kDesktopPrefersDarkKey).value_or(false) != prefersDark) {
            m_services.defaults.setBoolean(Constants::kDesktopPrefersDarkKey, prefersDark);
        }
        applyAppearanceMode();
    });
}

void AppDelegate::applicationDidFinishLaunching()
{
    applyAppearanceMode();
}

void AppDelegate::applyAppearanceMode()
{
    switch (m_services.settings.appearanceMode()) {
    case AppearanceMode::Light:
        m_services.theme.setDark(false);
        return;
    case AppearanceMode::Dark:
        m_services.theme.setDark(true);
        return;
    case AppearanceMode::System:
        break;
    }
    const bool remembered = m_services.defaults.boolean(Constants::kDesktopPrefersDarkKey).value_or(false);
    m_services.theme.setDark(m_services.desktop.prefersDark().value_or(remembered));
}

void AppDelegate::applicationWillTerminate()
{
    m_services.terminals.cleanupAll();
    m_services.pool.cleanup();
    m_services.tracker.forceKillTarnwellProcesses();
    m_services.children.shutdown();
    m_services.secrets.cancelAll();
    m_services.askpass.removeAll();
}
