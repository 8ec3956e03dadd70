#include "Services/SSH/SecretServiceRig.h"
#include "Views/Theme/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

/// The settings portal of a desktop, as far as it is asked.
class FakePortal : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    explicit FakePortal(const QString &address)
        : m_bus(QDBusConnection::connectToBus(address, u"fake portal"_s))
    {
        m_bus.registerObject(u"/org/freedesktop/portal/desktop"_s, this, QDBusConnection::ExportAllSlots);
        m_bus.registerService(u"org.freedesktop.portal.Desktop"_s);
    }

    ~FakePortal() override { QDBusConnection::disconnectFromBus(u"fake portal"_s); }

    void change(const QString &key, uint value)
    {
        QDBusMessage changed = QDBusMessage::createSignal(u"/org/freedesktop/portal/desktop"_s,
                                                          u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
        changed << u"org.freedesktop.appearance"_s << key << QVariant::fromValue(QDBusVariant(value));
        m_bus.send(changed);
    }

    uint scheme = 0;

public Q_SLOTS:

    // As the portal does: a variant in a variant.
    QDBusVariant Read(const QString &group, const QString &key)
    {
        const bool isKnown = group == "org.freedesktop.appearance"_L1 && key == "color-scheme"_L1;
        return QDBusVariant(QVariant::fromValue(QDBusVariant(isKnown ? scheme : 99U)));
    }

private:
    QDBusConnection m_bus;
};

class TestDesktopAppearance : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        QVERIFY2(m_bus.start(), qPrintable(m_bus.error()));
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toUtf8());
    }

    void cleanupTestCase() { m_bus.stop(); }

    void followsThePortal();
    void isLightWithoutAPortal();
    void isLightWithoutABus();
    void mayGoBeforeTheAnswer();

private:
    PrivateBus m_bus;
};

void TestDesktopAppearance::followsThePortal()
{
    FakePortal portal(m_bus.address());
    portal.scheme = 1;
    DesktopAppearance appearance;
    QSignalSpy changes(&appearance, &DesktopAppearance::prefersDarkChanged);
    QVERIFY(!appearance.prefersDark());
    appearance.start();
    QVERIFY(changes.wait());
    QCOMPARE(appearance.prefersDark(), true);

    portal.change(u"color-scheme"_s, 2);
    QVERIFY(changes.wait());
    QCOMPARE(appearance.prefersDark(), false);
    portal.change(u"accent-color"_s, 1);
    portal.change(u"color-scheme"_s, 0);
    portal.change(u"color-scheme"_s, 1);
    QVERIFY(changes.wait());
    QCOMPARE(appearance.prefersDark(), true);
    QCOMPARE(changes.size(), 3); // what did not change it was not told
}

void TestDesktopAppearance::isLightWithoutAPortal()
{
    DesktopAppearance appearance;
    QSignalSpy changes(&appearance, &DesktopAppearance::prefersDarkChanged);
    appearance.start();
    QVERIFY(changes.wait());
    QCOMPARE(appearance.prefersDark(), false);
}

void TestDesktopAppearance::isLightWithoutABus()
{
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
    DesktopAppearance appearance;
    QSignalSpy changes(&appearance, &DesktopAppearance::prefersDarkChanged);
    appearance.start();
    QVERIFY(changes.wait());
    QCOMPARE(appearance.prefersDark(), false);
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toUtf8());
}

void TestDesktopAppearance::mayGoBeforeTheAnswer()
{
    FakePortal portal(m_bus.address());
    for (int i = 0; i < 20; ++i) {
        DesktopAppearance appearance;
        appearance.start();
        QTest::qWait(i);
    }
    QTest::qWait(50);
}

QTEST_GUILESS_MAIN(TestDesktopAppearance)
#include "test_desktop_appearance.moc"
