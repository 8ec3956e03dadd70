#include "Views/Theme/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QPointer>
#include <QThreadPool>
#include <QUuid>
#include <functional>

using namespace Qt::StringLiterals;

namespace
{

const QString kService = u"org.freedesktop.portal.Desktop"_s;
const QString kPath = u"/org/freedesktop/portal/desktop"_s;
const QString kInterface = u"org.freedesktop.portal.Settings"_s;
const QString kGroup = u"org.freedesktop.appearance"_s;
const QString kKey = u"color-scheme"_s;
constexpr uint kDark = 1;
constexpr int kTimeLimit = 5000; // ms

// `Read` wraps its value into one more variant than the signal does.
bool meansDark(QVariant value)
{
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value.toUInt() == kDark;
}

} // namespace

/// Receives the portal's signal, which is bound to a slot by its text.
class PortalListener : public QObject
{
    Q_OBJECT

public:
    PortalListener(QObject *parent, std::function<void(bool)> then)
        : QObject(parent)
        , m_then(std::move(then))
    {
    }

public Q_SLOTS:

    void onSettingChanged(const QString &group, const QString &key, const QDBusVariant &value)
    {
        if (group == kGroup && key == kKey) {
            m_then(meansDark(QVariant::fromValue(value)));
        }
    }

private:
    std::function<void(bool)> m_then;
};

DesktopAppearance::DesktopAppearance(QObject *parent)
    : QObject(parent)
{
}

DesktopAppearance::~DesktopAppearance()
{
    if (!m_connectionName.isEmpty()) {
        QDBusConnection::disconnectFromBus(m_connectionName);
    }
}

void DesktopAppearance::start()
{
    const QPointer<DesktopAppearance> self(this);
    QThreadPool::globalInstance()->start([self] {
        const QString name = u"tarnwell-appearance-"_s + QUuid::createUuid().toString(QUuid::Id128);
        const bool isConnected = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name).isConnected();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, name, isConnected] {
                if (self && isConnected) {
                    self->listen(name);
                } else {
                    QDBusConnection::disconnectFromBus(name);
                    if (self) {
                        self->set(false);
                    }
                }
            },
            Qt::QueuedConnection);
    });
}

void DesktopAppearance::listen(const QString &connectionName)
{
    m_connectionName = connectionName;
    QDBusConnection bus(connectionName);
    // Without the service's name in the match the bus isn't asked, synchronously, for its owner.
    qRegisterMetaType<QDBusVariant>(); // without it Qt finds no slot that takes one
    auto *listener = new PortalListener(this, [this](bool isDark) { set(isDark); });
    bus.connect(QString(), kPath, kInterface, u"SettingChanged"_s, listener,
                SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface, u"Read"_s);
    call << kGroup << kKey;
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, kTimeLimit), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *done) {
        const QDBusPendingReply<QDBusVariant> reply = *done;
        done->deleteLater();
        if (reply.isValid()) {
            set(meansDark(QVariant::fromValue(reply.value())));
        } else if (!m_prefersDark) {
            set(false);
        }
    });
}

void DesktopAppearance::set(bool prefersDark)
{
    if (m_prefersDark != prefersDark) {
        m_prefersDark = prefersDark;
        Q_EMIT prefersDarkChanged(prefersDark);
    }
}

#include "DesktopAppearance.moc"
