#pragma once

#include "Models/RawText.h"

#include <QObject>
#include <QString>
#include <QStringList>

class UserDefaults;

enum class AppearanceMode { System, Light, Dark };
enum class TerminalColorScheme { Default, Dark, Light, SolarizedDark, SolarizedLight };

template<>
struct RawTexts<AppearanceMode> {
    static constexpr std::array all{std::pair{AppearanceMode::System, QStringView(u"system")},
                                    std::pair{AppearanceMode::Light, QStringView(u"light")},
                                    std::pair{AppearanceMode::Dark, QStringView(u"dark")}};
};

template<>
struct RawTexts<TerminalColorScheme> {
    static constexpr std::array all{std::pair{TerminalColorScheme::Default, QStringView(u"default")},
                                    std::pair{TerminalColorScheme::Dark, QStringView(u"dark")},
                                    std::pair{TerminalColorScheme::Light, QStringView(u"light")},
                                    std::pair{TerminalColorScheme::SolarizedDark, QStringView(u"solarized_dark")},
                                    std::pair{TerminalColorScheme::SolarizedLight, QStringView(u"solarized_light")}};
};

/// The name under which a choice is offered, for instance "Solarized Dark".
QString displayName(AppearanceMode mode);
QString displayName(TerminalColorScheme scheme);

/// The operator's preferences. Each is read from the defaults once, at construction, where an absent value or one of
/// another type gives the preference's default; each setter stores a changed value at once and then tells it.
/// What a change causes (the login item, the appearance, closing pooled connections) is done by who listens.
class AppSettings : public QObject
{
    Q_OBJECT

public:
    /// `defaults` must outlive this object.
    explicit AppSettings(UserDefaults &defaults, QObject *parent = nullptr);

    bool launchAtLogin() const { return m_launchAtLogin; }

    bool automaticUpdates() const { return m_automaticUpdates; }

    AppearanceMode appearanceMode() const { return m_appearanceMode; }

    int sshTimeout() const { return m_sshTimeout; } ///< seconds; any integer

    int keepAliveInterval() const { return m_keepAliveInterval; } ///< seconds; any integer

    bool useCompression() const { return m_useCompression; }

    bool verifyHostKeys() const { return m_verifyHostKeys; }

    bool useConnectionPooling() const { return m_useConnectionPooling; }

    QString terminalFontFamily() const { return m_terminalFontFamily; }

    int terminalFontSize() const { return m_terminalFontSize; } ///< points

    TerminalColorScheme terminalColorScheme() const { return m_terminalColorScheme; }

    /// The families that the settings offer.
    static QStringList offeredTerminalFontFamilies();
    static constexpr int kMinimumTerminalFontSize = 8;
    static constexpr int kMaximumTerminalFontSize = 48;

public Q_SLOTS:
    void setLaunchAtLogin(bool value);
    void setAutomaticUpdates(bool value);
    void setAppearanceMode(AppearanceMode value);
    void setSshTimeout(int seconds);
    void setKeepAliveInterval(int seconds);
    void setUseCompression(bool value);
    void setVerifyHostKeys(bool value);
    void setUseConnectionPooling(bool value);
    void setTerminalFontFamily(const QString &value);
    void setTerminalFontSize(int points);
    void setTerminalColorScheme(TerminalColorScheme value);

Q_SIGNALS:
    void launchAtLoginChanged(bool value);
    void automaticUpdatesChanged(bool value);
    void appearanceModeChanged(AppearanceMode value);
    void sshTimeoutChanged(int seconds);
    void keepAliveIntervalChanged(int seconds);
    void useCompressionChanged(bool value);
    void verifyHostKeysChanged(bool value);
    void useConnectionPoolingChanged(bool value);
    void terminalFontFamilyChanged(const QString &value);
    void terminalFontSizeChanged(int points);
    void terminalColorSchemeChanged(TerminalColorScheme value);

private:
    UserDefaults &m_defaults;
    bool m_launchAtLogin;
    bool m_automaticUpdates;
    AppearanceMode m_appearanceMode;
    int m_sshTimeout;
    int m_keepAliveInterval;
    bool m_useCompression;
    bool m_verifyHostKeys;
    bool m_useConnectionPooling;
    QString m_terminalFontFamily;
    int m_terminalFontSize;
    TerminalColorScheme m_terminalColorScheme;
};
