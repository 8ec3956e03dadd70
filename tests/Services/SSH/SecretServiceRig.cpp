#include "Services/SSH/SecretServiceRig.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace
{

using Paths = QList<QDBusObjectPath>;

constexpr int kStartMs = 10'000;
constexpr auto kSecrets = "org.freedesktop.secrets"_L1;
constexpr auto kPrompter = "org.gnome.keyring.SystemPrompter"_L1;
constexpr auto kCollection = "/org/freedesktop/secrets/collection/fake"_L1;

// The structure (oayays) of the Secret Service API: session, parameters, value, content type.
struct WireSecret {
    QDBusObjectPath session;
    QByteArray parameters;
    QByteArray value;
    QString contentType;
};

QDBusArgument &operator<<(QDBusArgument &out, const WireSecret &secret)
{
    out.beginStructure();
    out << secret.session << secret.parameters << secret.value << secret.contentType;
    out.endStructure();
    return out;
}

const QDBusArgument &operator>>(const QDBusArgument &in, WireSecret &secret)
{
    in.beginStructure();
    in >> secret.session >> secret.parameters >> secret.value >> secret.contentType;
    in.endStructure();
    return in; // NOLINT(bugprone-return-const-ref-from-parameter): the form that QtDBus asks for
}

using Texts = QMap<QString, QString>;

// A test that is aborted must not leave its daemons behind.
void endWithTheTest(QProcess &process)
{
    process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
}

} // namespace

Q_DECLARE_METATYPE(WireSecret)

bool PrivateBus::start()
{
    const QString socket = m_directory.filePath(u"bus"_s);
    QFile configuration(m_directory.filePath(u"bus.conf"_s));
    if (!configuration.open(QIODevice::WriteOnly)) {
        m_error = configuration.errorString();
        return false;
    }
    configuration.write("<busconfig><type>session</type><listen>unix:path=" + QFile::encodeName(socket) +
                        "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\" "
                        "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
    configuration.close();
    endWithTheTest(m_daemon);
    m_daemon.setProcessEnvironment(environment(m_directory.path()));
    m_daemon.setStandardErrorFile(QProcess::nullDevice());
    m_daemon.start(u"dbus-daemon"_s,
                   {u"--nofork"_s, u"--print-address"_s, u"--config-file="_s + configuration.fileName()});
    if (!m_daemon.waitForStarted() || !m_daemon.waitForReadyRead(kStartMs)) {
        m_error = m_daemon.errorString();
        return false;
    }
    m_address = u"unix:path="_s + socket;
    return true;
}

void PrivateBus::stop()
{
    if (m_daemon.state() != QProcess::NotRunning) {
        m_daemon.terminate();
        m_daemon.waitForFinished();
    }
}

QProcessEnvironment PrivateBus::environment(const QString &home) const
{
    QProcessEnvironment environment;
    environment.insert(u"PATH"_s, qEnvironmentVariable("PATH"));
    environment.insert(u"HOME"_s, home);
    environment.insert(u"XDG_RUNTIME_DIR"_s, home);
    environment.insert(u"XDG_DATA_HOME"_s, home);
    environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_address);
    return environment;
}

bool PrivateBus::isInstalled()
{
    return !QStandardPaths::findExecutable(u"dbus-daemon"_s).isEmpty();
}

bool KeyringDaemon::isInstalled()
{
    return !QStandardPaths::findExecutable(u"gnome-keyring-daemon"_s).isEmpty();
}

bool KeyringDaemon::start(bool withCollection)
{
    endWithTheTest(m_process);
    m_process.setProcessEnvironment(m_bus.environment(m_home.path()));
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(u"gnome-keyring-daemon"_s,
                    {u"--foreground"_s, u"--components=secrets"_s, withCollection ? u"--unlock"_s : u"--start"_s});
    m_process.write("password of the login collection");
    m_process.closeWriteChannel();
    const QDBusConnection bus = QDBusConnection::connectToBus(m_bus.address(), u"watch"_s);
    return QTest::qWaitFor([&] { return bus.interface()->isServiceRegistered(kSecrets).value(); }, kStartMs);
}

void KeyringDaemon::stop()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.terminate();
        m_process.waitForFinished();
    }
}

bool KeyringDaemon::lock()
{
    QDBusConnection bus = QDBusConnection::connectToBus(m_bus.address(), u"watch"_s);
    const auto call = [&bus](const QString &member, const QVariant &argument) {
        QDBusMessage message = QDBusMessage::createMethodCall(kSecrets, u"/org/freedesktop/secrets"_s,
                                                              u"org.freedesktop.Secret.Service"_s, member);
        message << argument;
        return bus.call(message);
    };
    const QDBusMessage alias = call(u"ReadAlias"_s, u"default"_s);
    const auto path = alias.arguments().value(0).value<QDBusObjectPath>();
    return call(u"Lock"_s, QVariant::fromValue(Paths{path})).type() == QDBusMessage::ReplyMessage;
}

RefusingPrompter::RefusingPrompter(const QString &busAddress)
    : m_connection(QDBusConnection::connectToBus(busAddress, u"prompter"_s))
{
    m_connection.registerVirtualObject(u"/org/gnome/keyring/Prompter"_s, this);
    m_connection.registerService(kPrompter);
}

RefusingPrompter::~RefusingPrompter()
{
    QDBusConnection::disconnectFromBus(u"prompter"_s);
}

// The protocol of libgcr's prompters: each question is a PerformPrompt, and each readiness for the next is told to
// the callback object by PromptReady with the answer to the last one.
bool RefusingPrompter::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    const auto tell = [&](const QString &member, const QVariantList &arguments) {
        const QString callback = message.arguments().value(0).value<QDBusObjectPath>().path();
        QDBusMessage told = QDBusMessage::createMethodCall(message.service(), callback,
                                                           u"org.gnome.keyring.internal.Prompter.Callback"_s, member);
        told.setArguments(arguments);
        connection.send(message.createReply());
        connection.send(told);
    };
    if (message.member() == "BeginPrompting"_L1) {
        tell(u"PromptReady"_s, {QString(), QVariantMap(), QString()});
    } else if (message.member() == "PerformPrompt"_L1) {
        ++m_prompts;
        tell(u"PromptReady"_s, {u"no"_s, QVariantMap(), QString()});
    } else if (message.member() == "StopPrompting"_L1) {
        tell(u"PromptDone"_s, {});
    } else {
        return false;
    }
    return true;
}

FakeSecretService::FakeSecretService(const QString &busAddress)
    : m_connection(QDBusConnection::connectToBus(busAddress, u"fake"_s))
{
    qDBusRegisterMetaType<WireSecret>();
    qDBusRegisterMetaType<Texts>();
    m_connection.registerVirtualObject(u"/org/freedesktop/secrets"_s, this, QDBusConnection::SubPath);
    m_connection.registerService(kSecrets);
}

FakeSecretService::~FakeSecretService()
{
    vanish();
}

void FakeSecretService::vanish()
{
    QDBusConnection::disconnectFromBus(u"fake"_s);
    m_connection = QDBusConnection(QString());
}

void FakeSecretService::addItem(const QString &account, const QByteArray &secret)
{
    m_items.insert(kCollection + u'/' + QString::number(m_items.size()), {account, secret});
}

bool FakeSecretService::handleMessage(const QDBusMessage &message, const QDBusConnection & /*connection*/)
{
    const QDBusMessage reply = answer(message);
    const auto send = [this, reply] { m_connection.send(reply); };
    if (isSlow) {
        QTimer::singleShot(delayMs, this, send);
    } else {
        send();
    }
    return true;
}

QDBusMessage FakeSecretService::answer(const QDBusMessage &message)
{
    const QString member = message.member();
    const QDBusObjectPath none(u"/"_s);
    if (message.interface() == "org.freedesktop.DBus.Properties"_L1) {
        return answerProperties(message);
    }
    if (member == "OpenSession"_L1) {
        if (message.arguments().value(0).toString() != "plain"_L1) {
            return message.createErrorReply(QDBusError::NotSupported, u"plain only"_s);
        }
        return message.createReply({QVariant::fromValue(QDBusVariant(QString())),
                                    QVariant::fromValue(QDBusObjectPath(u"/org/freedesktop/secrets/session/1"_s))});
    }
    if (member == "SearchItems"_L1) {
        return search(message);
    }
    if (member == "Unlock"_L1) {
        return message.createReply({QVariant::fromValue(Paths()),
                                    QVariant::fromValue(QDBusObjectPath(u"/org/freedesktop/secrets/prompt/1"_s))});
    }
    if (member == "Prompt"_L1) {
        ++prompts;
        if (user != User::IsAway) {
            QTimer::singleShot(delayMs, this,
                               [this, path = message.path(), to = message.service()] { ask(path, to); });
        }
        return message.createReply();
    }
    if (member == "Dismiss"_L1) {
        ++dismissals;
        return message.createReply();
    }
    if (member == "GetSecret"_L1) {
        const WireSecret secret{message.arguments().value(0).value<QDBusObjectPath>(),
                                {},
                                m_items.value(message.path()).secret,
                                u"text/plain"_s};
        return message.createReply(QVariant::fromValue(secret));
    }
    if (member == "Delete"_L1) {
        m_items.remove(message.path());
        return message.createReply(QVariant::fromValue(none));
    }
    return message.createErrorReply(QDBusError::UnknownMethod, member);
}

QDBusMessage FakeSecretService::answerProperties(const QDBusMessage &message) const
{
    const QVariantMap all = properties(message.path());
    if (message.member() == "GetAll"_L1) {
        return message.createReply(all);
    }
    return message.createReply(QVariant::fromValue(QDBusVariant(all.value(message.arguments().value(1).toString()))));
}

QVariantMap FakeSecretService::properties(const QString &path) const
{
    const auto item = m_items.constFind(path);
    if (item == m_items.constEnd()) {
        return {{u"Collections"_s, QVariant::fromValue(Paths{QDBusObjectPath(kCollection)})}};
    }
    return {{u"Locked"_s, m_isLocked},
            {u"Attributes"_s, QVariant::fromValue(Texts{{u"account"_s, item->account}})},
            {u"Label"_s, item->account},
            {u"Created"_s, QVariant::fromValue(quint64(1))},
            {u"Modified"_s, QVariant::fromValue(quint64(1))}};
}

QDBusMessage FakeSecretService::search(const QDBusMessage &message) const
{
    if (deniesAccess) {
        return message.createErrorReply(QDBusError::AccessDenied, u"not you"_s);
    }
    const auto wanted = qdbus_cast<Texts>(message.arguments().value(0));
    Paths found;
    for (auto it = m_items.cbegin(); it != m_items.cend(); ++it) {
        if (it->account == wanted.value(u"account"_s)) {
            found += QDBusObjectPath(it.key());
        }
    }
    return message.createReply(
        {QVariant::fromValue(m_isLocked ? Paths() : found), QVariant::fromValue(m_isLocked ? found : Paths())});
}

void FakeSecretService::ask(const QString &prompt, const QString &client)
{
    m_isLocked = m_isLocked && user == User::Refuses;
    Paths unlocked;
    for (auto it = m_items.keyBegin(); !m_isLocked && it != m_items.keyEnd(); ++it) {
        unlocked += QDBusObjectPath(*it);
    }
    QDBusMessage done =
        QDBusMessage::createTargetedSignal(client, prompt, u"org.freedesktop.Secret.Prompt"_s, u"Completed"_s);
    done.setArguments({m_isLocked, QVariant::fromValue(QDBusVariant(QVariant::fromValue(unlocked)))});
    m_connection.send(done);
}
