#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QHash>
#include <QProcess>
#include <QTemporaryDir>
#include <QVariantMap>

#include <memory>

/// A session bus of the test's own, in a private directory.
class PrivateBus
{
public:
    static bool isInstalled();

    /// False, with `error`, if the bus doesn't come up.
    bool start();
    void stop();

    QString error() const { return m_error; }

    QString address() const { return m_address; }

    /// An environment in which a program sees this bus and `home`, and nothing of the user's.
    QProcessEnvironment environment(const QString &home) const;

private:
    QTemporaryDir m_directory;
    QProcess m_daemon;
    QString m_address;
    QString m_error;
};

/// A real gnome-keyring-daemon with keyrings of its own, without anything that could show a prompt.
class KeyringDaemon
{
public:
    explicit KeyringDaemon(const PrivateBus &bus)
        : m_bus(bus)
    {
    }

    ~KeyringDaemon() { stop(); }

    static bool isInstalled();

    /// With an unlocked default collection, or with none at all. True once it owns its name on the bus.
    bool start(bool withCollection = true);
    void stop();

    /// Locks the default collection.
    bool lock();

private:
    const PrivateBus &m_bus;
    QTemporaryDir m_home;
    QProcess m_process;
};

/// Answers gnome-keyring's prompts as a user who always refuses.
class RefusingPrompter : public QDBusVirtualObject
{
public:
    explicit RefusingPrompter(const QString &busAddress);
    ~RefusingPrompter() override;

    int prompts() const { return m_prompts; }

    QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    QDBusConnection m_connection;
    int m_prompts = 0;
};

/// A Secret Service with one locked collection, whose answers the test chooses. Sessions are unencrypted.
class FakeSecretService : public QDBusVirtualObject
{
public:
    enum class User { Unlocks, Refuses, IsAway };

    explicit FakeSecretService(const QString &busAddress);
    ~FakeSecretService() override;

    User user = User::Unlocks;
    int delayMs = 0; ///< the user's, and that of each answer while `isSlow`
    bool isSlow = false;
    bool deniesAccess = false;
    int prompts = 0;
    int dismissals = 0; ///< prompts that the client took back

    /// Puts a locked item there.
    void addItem(const QString &account, const QByteArray &secret);

    /// Leaves the bus at once, with its questions open.
    void vanish();

    QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    struct Item {
        QString account;
        QByteArray secret;
    };

    QDBusMessage answer(const QDBusMessage &message);
    QDBusMessage answerProperties(const QDBusMessage &message) const;
    QDBusMessage search(const QDBusMessage &message) const;
    QVariantMap properties(const QString &path) const;
    void ask(const QString &prompt, const QString &client);

    QDBusConnection m_connection;
    QHash<QString, Item> m_items; // by object path
    bool m_isLocked = true;
};
