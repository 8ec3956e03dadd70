#include "Models/AppSettings.h"
#include "Models/UserDefaults.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <limits>

using namespace Qt::StringLiterals;

class TestAppSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void defaultsHoldWhereNothingFitsIsStored_data();
    void defaultsHoldWhereNothingFitsIsStored();
    void eachChangeIsStoredAndToldOnce();
    void storedValuesAreRead();
    void fontSizesAreBounded();
    void choicesHaveNames();

private:
    std::unique_ptr<QTemporaryDir> m_directory;
    std::unique_ptr<UserDefaults> m_defaults;
};

void TestAppSettings::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    m_defaults = std::make_unique<UserDefaults>(m_directory->path());
}

void TestAppSettings::defaultsHoldWhereNothingFitsIsStored_data()
{
    QTest::addColumn<bool>("otherTypesAreStored");
    QTest::newRow("nothing stored") << false;
    QTest::newRow("other types stored") << true;
}

void TestAppSettings::defaultsHoldWhereNothingFitsIsStored()
{
    QFETCH(bool, otherTypesAreStored);
    if (otherTypesAreStored) {
        for (const auto &key : {u"launchAtLogin"_s, u"automaticUpdates"_s, u"useCompression"_s, u"verifyHostKeys"_s,
                                u"useConnectionPooling"_s, u"terminalFontFamily"_s}) {
            m_defaults->setInteger(key, 1);
        }
        for (const auto &key : {u"sshTimeout"_s, u"keepAliveInterval"_s, u"terminalFontSize"_s}) {
            m_defaults->setText(key, u"10"_s);
        }
        m_defaults->setText(u"appearanceMode"_s, u"Dark"_s);
        m_defaults->setText(u"terminalColorScheme"_s, u"neon"_s);
    }
    const AppSettings settings(*m_defaults);
    QCOMPARE(settings.launchAtLogin(), false);
    QCOMPARE(settings.automaticUpdates(), true);
    QCOMPARE(settings.appearanceMode(), AppearanceMode::System);
    QCOMPARE(settings.sshTimeout(), 30);
    QCOMPARE(settings.keepAliveInterval(), 60);
    QCOMPARE(settings.useCompression(), false);
    QCOMPARE(settings.verifyHostKeys(), true);
    QCOMPARE(settings.useConnectionPooling(), true);
    QCOMPARE(settings.terminalFontFamily(), u"SF Mono"_s);
    QCOMPARE(settings.terminalFontSize(), 13);
    QCOMPARE(settings.terminalColorScheme(), TerminalColorScheme::Default);
}

void TestAppSettings::eachChangeIsStoredAndToldOnce()
{
    AppSettings settings(*m_defaults);
    const auto isToldOnce = [&](auto signal, const std::function<void()> &set, const auto &isStored) {
        QSignalSpy spy(&settings, signal);
        set();
        set();
        return spy.size() == 1 && isStored(UserDefaults(m_directory->path()));
    };
    const auto boolean = [](const QString &key, bool value) {
        return [=](const UserDefaults &stored) { return stored.boolean(key) == value; };
    };
    const auto integer = [](const QString &key, qint64 value) {
        return [=](const UserDefaults &stored) { return stored.integer(key) == value; };
    };
    const auto text = [](const QString &key, const QString &value) {
        return [=](const UserDefaults &stored) { return stored.text(key) == value; };
    };
    QVERIFY(isToldOnce(
        &AppSettings::launchAtLoginChanged, [&] { settings.setLaunchAtLogin(true); },
        boolean(u"launchAtLogin"_s, true)));
    QVERIFY(isToldOnce(
        &AppSettings::automaticUpdatesChanged, [&] { settings.setAutomaticUpdates(false); },
        boolean(u"automaticUpdates"_s, false)));
    QVERIFY(isToldOnce(
        &AppSettings::appearanceModeChanged, [&] { settings.setAppearanceMode(AppearanceMode::Dark); },
        text(u"appearanceMode"_s, u"dark"_s)));
    QVERIFY(isToldOnce(
        &AppSettings::sshTimeoutChanged, [&] { settings.setSshTimeout(-5); }, integer(u"sshTimeout"_s, -5)));
    QVERIFY(isToldOnce(
        &AppSettings::keepAliveIntervalChanged, [&] { settings.setKeepAliveInterval(0); },
        integer(u"keepAliveInterval"_s, 0)));
    QVERIFY(isToldOnce(
        &AppSettings::useCompressionChanged, [&] { settings.setUseCompression(true); },
        boolean(u"useCompression"_s, true)));
    QVERIFY(isToldOnce(
        &AppSettings::verifyHostKeysChanged, [&] { settings.setVerifyHostKeys(false); },
        boolean(u"verifyHostKeys"_s, false)));
    QVERIFY(isToldOnce(
        &AppSettings::useConnectionPoolingChanged, [&] { settings.setUseConnectionPooling(false); },
        boolean(u"useConnectionPooling"_s, false)));
    QVERIFY(isToldOnce(
        &AppSettings::terminalFontFamilyChanged, [&] { settings.setTerminalFontFamily(u"Menlo"_s); },
        text(u"terminalFontFamily"_s, u"Menlo"_s)));
    QVERIFY(isToldOnce(
        &AppSettings::terminalFontSizeChanged, [&] { settings.setTerminalFontSize(20); },
        integer(u"terminalFontSize"_s, 20)));
    QVERIFY(isToldOnce(
        &AppSettings::terminalColorSchemeChanged,
        [&] { settings.setTerminalColorScheme(TerminalColorScheme::SolarizedLight); },
        text(u"terminalColorScheme"_s, u"solarized_light"_s)));
}

void TestAppSettings::storedValuesAreRead()
{
    m_defaults->setBoolean(u"useConnectionPooling"_s, false);
    m_defaults->setInteger(u"sshTimeout"_s, std::numeric_limits<qint64>::max());
    m_defaults->setText(u"terminalColorScheme"_s, u"solarized_dark"_s);
    m_defaults->setText(u"appearanceMode"_s, u"light"_s);
    const AppSettings settings(*m_defaults);
    QCOMPARE(settings.useConnectionPooling(), false);
    QCOMPARE(settings.sshTimeout(), std::numeric_limits<int>::max());
    QCOMPARE(settings.terminalColorScheme(), TerminalColorScheme::SolarizedDark);
    QCOMPARE(settings.appearanceMode(), AppearanceMode::Light);
}

void TestAppSettings::fontSizesAreBounded()
{
    m_defaults->setInteger(u"terminalFontSize"_s, 0);
    AppSettings settings(*m_defaults);
    QCOMPARE(settings.terminalFontSize(), 8);
    settings.setTerminalFontSize(1000);
    QCOMPARE(settings.terminalFontSize(), 48);
}

void TestAppSettings::choicesHaveNames()
{
    QStringList names;
    for (const TerminalColorScheme scheme : allCases<TerminalColorScheme>()) {
        names.append(displayName(scheme));
    }
    QCOMPARE(names, (QStringList{u"Default"_s, u"Dark"_s, u"Light"_s, u"Solarized Dark"_s, u"Solarized Light"_s}));
    QCOMPARE(displayName(AppearanceMode::System), u"System"_s);
}

QTEST_GUILESS_MAIN(TestAppSettings)
#include "test_app_settings.moc"
