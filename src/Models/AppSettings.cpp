#include "Models/AppSettings.h"

#include "Models/UserDefaults.h"

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kLaunchAtLogin = "launchAtLogin"_L1;
constexpr auto kAutomaticUpdates = "automaticUpdates"_L1;
constexpr auto kAppearanceMode = "appearanceMode"_L1;
constexpr auto kSshTimeout = "sshTimeout"_L1;
constexpr auto kKeepAliveInterval = "keepAliveInterval"_L1;
constexpr auto kUseCompression = "useCompression"_L1;
constexpr auto kVerifyHostKeys = "verifyHostKeys"_L1;
constexpr auto kUseConnectionPooling = "useConnectionPooling"_L1;
constexpr auto kTerminalFontFamily = "terminalFontFamily"_L1;
constexpr auto kTerminalFontSize = "terminalFontSize"_L1;
constexpr auto kTerminalColorScheme = "terminalColorScheme"_L1;

constexpr int kDefaultSshTimeout = 30;
constexpr int kDefaultKeepAliveInterval = 60;
constexpr int kDefaultTerminalFontSize = 13;

int storedInt(const UserDefaults &defaults, QLatin1StringView key, int fallback)
{
    const qint64 stored = defaults.integer(key).value_or(fallback);
    return static_cast<int>(
        std::clamp<qint64>(stored, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

template<HasRawText Enum>
Enum storedCase(const UserDefaults &defaults, QLatin1StringView key, Enum fallback)
{
    return fromRawText<Enum>(defaults.text(key).value_or(QString())).value_or(fallback);
}

int boundedFontSize(int points)
{
    return std::clamp(points, AppSettings::kMinimumTerminalFontSize, AppSettings::kMaximumTerminalFontSize);
}

} // namespace

QString displayName(AppearanceMode mode)
{
    switch (mode) {
    case AppearanceMode::System:
        return u"System"_s;
    case AppearanceMode::Light:
        return u"Light"_s;
    case AppearanceMode::Dark:
        return u"Dark"_s;
    }
    return {};
}

QString displayName(TerminalColorScheme scheme)
{
    switch (scheme) {
    case TerminalColorScheme::Default:
        return u"Default"_s;
    case TerminalColorScheme::Dark:
        return u"Dark"_s;
    case TerminalColorScheme::Light:
        return u"Light"_s;
    case TerminalColorScheme::SolarizedDark:
        return u"Solarized Dark"_s;
    case TerminalColorScheme::SolarizedLight:
        return u"Solarized Light"_s;
    }
    return {};
}

AppSettings::AppSettings(UserDefaults &defaults, QObject *parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_launchAtLogin(defaults.boolean(kLaunchAtLogin).value_or(false))
    , m_automaticUpdates(defaults.boolean(kAutomaticUpdates).value_or(true))
    , m_appearanceMode(storedCase(defaults, kAppearanceMode, AppearanceMode::System))
    , m_sshTimeout(storedInt(defaults, kSshTimeout, kDefaultSshTimeout))
    , m_keepAliveInterval(storedInt(defaults, kKeepAliveInterval, kDefaultKeepAliveInterval))
    , m_useCompression(defaults.boolean(kUseCompression).value_or(false))
    , m_verifyHostKeys(defaults.boolean(kVerifyHostKeys).value_or(true))
    , m_useConnectionPooling(defaults.boolean(kUseConnectionPooling).value_or(true))
    , m_terminalFontFamily(defaults.text(kTerminalFontFamily).value_or(u"SF Mono"_s))
    , m_terminalFontSize(boundedFontSize(storedInt(defaults, kTerminalFontSize, kDefaultTerminalFontSize)))
    , m_terminalColorScheme(storedCase(defaults, kTerminalColorScheme, TerminalColorScheme::Default))
{
}

QStringList AppSettings::offeredTerminalFontFamilies()
{
    return {u"SF Mono"_s, u"Monaco"_s, u"Menlo"_s, u"Courier New"_s};
}

void AppSettings::setLaunchAtLogin(bool value)
{
    if (std::exchange(m_launchAtLogin, value) != value) {
        m_defaults.setBoolean(kLaunchAtLogin, value);
        Q_EMIT launchAtLoginChanged(value);
    }
}

void AppSettings::setAutomaticUpdates(bool value)
{
    if (std::exchange(m_automaticUpdates, value) != value) {
        m_defaults.setBoolean(kAutomaticUpdates, value);
        Q_EMIT automaticUpdatesChanged(value);
    }
}

void AppSettings::setAppearanceMode(AppearanceMode value)
{
    if (std::exchange(m_appearanceMode, value) != value) {
        m_defaults.setText(kAppearanceMode, rawText(value));
        Q_EMIT appearanceModeChanged(value);
    }
}

void AppSettings::setSshTimeout(int seconds)
{
    if (std::exchange(m_sshTimeout, seconds) != seconds) {
        m_defaults.setInteger(kSshTimeout, seconds);
        Q_EMIT sshTimeoutChanged(seconds);
    }
}

void AppSettings::setKeepAliveInterval(int seconds)
{
    if (std::exchange(m_keepAliveInterval, seconds) != seconds) {
        m_defaults.setInteger(kKeepAliveInterval, seconds);
        Q_EMIT keepAliveIntervalChanged(seconds);
    }
}

void AppSettings::setUseCompression(bool value)
{
    if (std::exchange(m_useCompression, value) != value) {
        m_defaults.setBoolean(kUseCompression, value);
        Q_EMIT useCompressionChanged(value);
    }
}

void AppSettings::setVerifyHostKeys(bool value)
{
    if (std::exchange(m_verifyHostKeys, value) != value) {
        m_defaults.setBoolean(kVerifyHostKeys, value);
        Q_EMIT verifyHostKeysChanged(value);
    }
}

void AppSettings::setUseConnectionPooling(bool value)
{
    if (std::exchange(m_useConnectionPooling, value) != value) {
        m_defaults.setBoolean(kUseConnectionPooling, value);
        Q_EMIT useConnectionPoolingChanged(value);
    }
}

void AppSettings::setTerminalFontFamily(const QString &value)
{
    if (m_terminalFontFamily != value) {
        m_terminalFontFamily = value;
        m_defaults.setText(kTerminalFontFamily, value);
        Q_EMIT terminalFontFamilyChanged(value);
    }
}

void AppSettings::setTerminalFontSize(int points)
{
    const int size = boundedFontSize(points);
    if (std::exchange(m_terminalFontSize, size) != size) {
        m_defaults.setInteger(kTerminalFontSize, size);
        Q_EMIT terminalFontSizeChanged(size);
    }
}

void AppSettings::setTerminalColorScheme(TerminalColorScheme value)
{
    if (std::exchange(m_terminalColorScheme, value) != value) {
        m_defaults.setText(kTerminalColorScheme, rawText(value));
        Q_EMIT terminalColorSchemeChanged(value);
    }
}
