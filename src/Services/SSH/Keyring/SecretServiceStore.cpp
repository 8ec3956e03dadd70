#include "Services/SSH/Keyring/SecretServiceStore.h"

#include "Services/SSH/Keyring/GioCalls.h"
#include "Services/SSH/Keyring/PromptingSecretService.h"

#include <libsecret/secret.h>

#include <QFile>
#include <QList>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

/// What the operations share: their calls, and the session with the service that they use.
struct SecretServiceLink {
    GioCalls calls;
    GObjectPtr<SecretService> service;
    QByteArray owner; // with whom the session was opened, as a unique name
};

namespace
{

using Link = std::shared_ptr<SecretServiceLink>;
using Bus = GObjectPtr<GDBusConnection>;
using Service = GObjectPtr<SecretService>;
using Item = GObjectPtr<SecretItem>;
using Attributes = std::shared_ptr<GHashTable>;

constexpr int kBusAnswerMs = 2000;

// A GError that a finish function fills.
class Error
{
public:
    Error() = default;
    Error(const Error &) = delete;
    Error &operator=(const Error &) = delete;

    ~Error() { g_clear_error(&m_error); }

    GError **out() { return &m_error; }

    bool isSet() const { return m_error != nullptr; }

    // Whether a prompt was dismissed, see PromptingSecretService.
    bool isRefusal() const { return g_error_matches(m_error, G_IO_ERROR, G_IO_ERROR_FAILED_HANDLED); }

    SecretStatus status() const
    {
        if (g_error_matches(m_error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED)) {
            return SecretStatus::InteractionNotAllowed;
        }
        if (g_error_matches(m_error, SECRET_ERROR, SECRET_ERROR_NO_SUCH_OBJECT)) {
            return SecretStatus::ItemNotFound;
        }
        if (g_error_matches(m_error, G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED) ||
            g_error_matches(m_error, G_DBUS_ERROR, G_DBUS_ERROR_AUTH_FAILED)) {
            return SecretStatus::AuthFailed;
        }
        return SecretStatus::Failed;
    }

private:
    GError *m_error = nullptr;
};

const SecretSchema &schema()
{
    static const SecretSchema value{"com.ostlerworks.tarnwell.Password",
                                    SECRET_SCHEMA_NONE,
                                    {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                     {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                     {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                                    0,
                                    nullptr,
                                    nullptr,
                                    nullptr,
                                    nullptr,
                                    nullptr,
                                    nullptr,
                                    nullptr};
    return value;
}

Attributes attributesOf(const QString &account)
{
    return {secret_attributes_build(&schema(), "service", kSecretServiceAttribute.data(), "account",
                                    account.toUtf8().constData(), nullptr),
            &g_hash_table_unref};
}

// Without a named bus GIO would start one by dbus-launch, and block while it does.
bool isSessionBusNamed()
{
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty()) {
        return !address.startsWith("autolaunch:");
    }
    const QByteArray socket = qgetenv("XDG_RUNTIME_DIR") + "/bus";
    struct stat s;
    return socket.startsWith("/") && stat(socket.constData(), &s) == 0 && S_ISSOCK(s.st_mode) && s.st_uid == getuid();
}

QCoro::Task<Bus> sessionBus(Link link)
{
    if (!isSessionBusNamed()) {
        co_return Bus();
    }
    const auto result = co_await link->calls.call([](GCancellable *c, GAsyncReadyCallback ready, gpointer data) {
        g_bus_get(G_BUS_TYPE_SESSION, c, ready, data);
    });
    if (!result) {
        co_return Bus();
    }
    Error error;
    const Bus bus = adoptObject(g_bus_get_finish(result.get(), error.out()));
    if (bus) {
        // GIO would end this program together with the bus, in the middle of whatever it does.
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    }
    co_return bus;
}

// Who owned the service's name when it was last heard of; empty if nobody does.
QByteArray ownerOf(const Service &service)
{
    gchar *const owner = g_dbus_proxy_get_name_owner(G_DBUS_PROXY(service.get()));
    const QByteArray name(owner);
    g_free(owner);
    return name;
}

QCoro::Task<Service> openService(Link link)
{
    link->calls.catchUp();
    // A session belongs to the process that opened it: after a restart of the keyring it is worth nothing.
    if (link->service && !link->owner.isEmpty() && ownerOf(link->service) == link->owner) {
        co_return link->service;
    }
    if (!co_await sessionBus(link)) {
        co_return Service();
    }
    const auto result = co_await link->calls.call([](GCancellable *c, GAsyncReadyCallback ready, gpointer data) {
        secret_service_open(promptingSecretServiceType(), nullptr, SECRET_SERVICE_OPEN_SESSION, c, ready, data);
    });
    if (!result) {
        co_return Service();
    }
    Error error;
    const Service service = adoptObject(secret_service_open_finish(result.get(), error.out()));
    link->service = service;
    link->owner = service ? ownerOf(service) : QByteArray();
    co_return service;
}

struct Search {
    SecretStatus status = SecretStatus::Failed;
    QList<Item> items; // with Success at least one
};

// Finds items by their attributes, which stay readable while they are locked.
QCoro::Task<Search> search(Link link, Service service, QString account, SecretSearchFlags flags)
{
    const Attributes attributes = attributesOf(account);
    const auto result = co_await link->calls.call([&](GCancellable *c, GAsyncReadyCallback ready, gpointer data) {
        secret_service_search(service.get(), &schema(), attributes.get(), flags, c, ready, data);
    });
    if (!result) {
        co_return Search{};
    }
    Error error;
    GList *const list = secret_service_search_finish(service.get(), result.get(), error.out());
    Search found;
    for (const GList *node = list; node; node = node->next) {
        found.items.append(adoptObject(static_cast<SecretItem *>(node->data)));
    }
    g_list_free(list);
    if (error.isSet()) {
        found.status = error.status();
    } else {
        found.status = found.items.isEmpty() ? SecretStatus::ItemNotFound : SecretStatus::Success;
    }
    co_return found;
}

// The unique name of who owns `name` on the bus; empty if nobody does.
QCoro::Task<QByteArray> ownerOfName(Link link, Service service, QByteArray name)
{
    GDBusConnection *const bus = g_dbus_proxy_get_connection(G_DBUS_PROXY(service.get()));
    const auto result = co_await link->calls.call([&](GCancellable *c, GAsyncReadyCallback ready, gpointer data) {
        g_dbus_connection_call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                               "GetNameOwner", g_variant_new("(s)", name.constData()), G_VARIANT_TYPE("(s)"),
                               G_DBUS_CALL_FLAGS_NONE, kBusAnswerMs, c, ready, data);
    });
    if (!result) {
        co_return QByteArray();
    }
    Error error;
    QByteArray owner;
    if (GVariant *const reply = g_dbus_connection_call_finish(bus, result.get(), error.out())) {
        const char *text = nullptr;
        g_variant_get(reply, "(&s)", &text);
        owner = text;
        g_variant_unref(reply);
    }
    co_return owner;
}

// Why a prompt was dismissed. The Secret Service API knows one answer for a user who refused and for a prompt that
// could not be shown. gnome-keyring shows it through a second program that stays on the bus for seconds after a
// prompt: if it isn't there, nobody was asked.
QCoro::Task<SecretStatus> reasonOfRefusal(Link link, Service service)
{
    const QByteArray keyring = ownerOf(service);
    const bool isGnomeKeyring = co_await ownerOfName(link, service, "org.gnome.keyring") == keyring;
    if (isGnomeKeyring && (co_await ownerOfName(link, service, "org.gnome.keyring.SystemPrompter")).isEmpty()) {
        co_return SecretStatus::InteractionNotAllowed;
    }
    co_return SecretStatus::UserCanceled;
}

// Unlocks one item or collection. The service asks the user, for as long as that takes.
QCoro::Task<SecretStatus> unlock(Link link, Service service, GObjectPtr<GDBusProxy> object)
{
    GList one{object.get(), nullptr, nullptr};
    const auto result = co_await link->calls.call([&](GCancellable *c, GAsyncReadyCallback ready, gpointer data) {
        secret_service_unlock(service.get(), &one, c, ready, data);
    });
    if (!result) {
        co_return SecretStatus::Failed;
    }
    Error error;
    const int count = secret_service_unlock_finish(service.get(), result.get(), nullptr, error.out());
    if (error.isSet()) {
        co_return error.isRefusal() ? co_await reasonOfRefusal(link, service) : error.status();
    }
    // Nothing unlocked and nobody asked.
    co_return count > 0 ? SecretStatus::Success : SecretStatus::InteractionNotAllowed;
}

QCoro::Task<SecretStatus> unlockItem(Link link, Service service, Item item)
{
    if (!secret_item_get_locked(item.get())) {
        co_return SecretStatus::Success;
    }
    co_return co_await unlock(link, service, {item, G_DBUS_PROXY(item.get())});
}

// Success too if there is no default collection: storing makes one.
QCoro::Task<SecretStatus> unlockDefaultCollection(Link link, Service service)
{
    const auto result = co_await link->calls.call([&](GCancellable *c, GAsyncReadyCallback ready, gpointer data) {
        secret_collection_for_alias(service.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, c, ready, data);
    });
    if (!result) {
        co_return SecretStatus::Failed;
    }
    Error error;
    const auto collection = adoptObject(secret_collection_for_alias_finish(result.get(), error.out()));
    if (error.isSet()) {
        co_return error.status();
    }
    if (!collection || !secret_collection_get_locked(collection.get())) {
        co_return SecretStatus::Success;
    }
    co_return co_await unlock(link, service, {collection, G_DBUS_PROXY(collection.get())});
}

QCoro::Task<SecretStatus> storeItem(Link link, QString account, QByteArray secret)
{
    // In libsecret's own memory, which is not paged out and is wiped when it is freed.
    const std::shared_ptr<SecretValue> value(secret_value_new(secret.constData(), secret.size(), "text/plain"),
                                             [](SecretValue *v) { secret_value_unref(v); });
    secret.clear();
    const Service service = co_await openService(link);
    if (!service) {
        co_return SecretStatus::Failed;
    }
    const SecretStatus unlocked = co_await unlockDefaultCollection(link, service);
    if (unlocked != SecretStatus::Success) {
        co_return unlocked;
    }
    const Attributes attributes = attributesOf(account);
    const QByteArray label = "Tarnwell: " + account.toUtf8();
    const auto result = co_await link->calls.call([&](GCancellable *c, GAsyncReadyCallback ready, gpointer data) {
        secret_service_store(service.get(), &schema(), attributes.get(), SECRET_COLLECTION_DEFAULT, label.constData(),
                             value.get(), c, ready, data);
    });
    if (!result) {
        co_return SecretStatus::Failed;
    }
    Error error;
    if (secret_service_store_finish(service.get(), result.get(), error.out())) {
        co_return SecretStatus::Success;
    }
    // A refusal: there was no keyring yet, and the user was asked for the password of a new one.
    co_return error.isRefusal() ? co_await reasonOfRefusal(link, service) : error.status();
}

QCoro::Task<SecretMatch> findItem(Link link, QString account, bool wantData)
{
    const Service service = co_await openService(link);
    if (!service) {
        co_return SecretMatch{};
    }
    const Search found = co_await search(link, service, account, SECRET_SEARCH_NONE);
    if (found.status != SecretStatus::Success || !wantData) {
        co_return SecretMatch{found.status, {}};
    }
    const Item item = found.items.first();
    const SecretStatus unlocked = co_await unlockItem(link, service, item);
    if (unlocked != SecretStatus::Success) {
        co_return SecretMatch{unlocked, {}};
    }
    const auto result = co_await link->calls.call([&](GCancellable *c, GAsyncReadyCallback ready, gpointer data) {
        secret_item_load_secret(item.get(), c, ready, data);
    });
    if (!result) {
        co_return SecretMatch{};
    }
    Error error;
    secret_item_load_secret_finish(item.get(), result.get(), error.out());
    SecretValue *const value = error.isSet() ? nullptr : secret_item_get_secret(item.get());
    if (!value) {
        co_return SecretMatch{error.status(), {}};
    }
    gsize size = 0;
    const char *const bytes = secret_value_get(value, &size);
    SecretMatch match{SecretStatus::Success, QByteArray(bytes, static_cast<qsizetype>(size))};
    secret_value_unref(value);
    co_return match;
}

QCoro::Task<SecretStatus> removeItems(Link link, QString account)
{
    const Service service = co_await openService(link);
    if (!service) {
        co_return SecretStatus::Failed;
    }
    const Search found = co_await search(link, service, account, SECRET_SEARCH_ALL);
    if (found.status != SecretStatus::Success) {
        co_return found.status;
    }
    for (const Item &item : found.items) {
        const SecretStatus unlocked = co_await unlockItem(link, service, item);
        if (unlocked != SecretStatus::Success) {
            co_return unlocked;
        }
        const auto result = co_await link->calls.call([&](GCancellable *c, GAsyncReadyCallback ready, gpointer data) {
            secret_item_delete(item.get(), c, ready, data);
        });
        if (!result) {
            co_return SecretStatus::Failed;
        }
        Error error;
        secret_item_delete_finish(item.get(), result.get(), error.out());
        if (error.isSet() && error.status() != SecretStatus::ItemNotFound) {
            co_return error.isRefusal() ? co_await reasonOfRefusal(link, service) : error.status();
        }
    }
    co_return SecretStatus::Success;
}

QCoro::Task<bool> serviceAnswers(Link link)
{
    const Bus bus = co_await sessionBus(link);
    if (!bus) {
        co_return false;
    }
    const auto result = co_await link->calls.call([&](GCancellable *c, GAsyncReadyCallback ready, gpointer data) {
        g_dbus_connection_call(bus.get(), "org.freedesktop.secrets", "/org/freedesktop/secrets",
                               "org.freedesktop.DBus.Properties", "Get",
                               g_variant_new("(ss)", "org.freedesktop.Secret.Service", "Collections"),
                               G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE, -1, c, ready, data);
    });
    if (!result) {
        co_return false;
    }
    Error error;
    GVariant *const reply = g_dbus_connection_call_finish(bus.get(), result.get(), error.out());
    if (reply) {
        g_variant_unref(reply);
    }
    co_return reply != nullptr;
}

} // namespace

SecretServiceStore::SecretServiceStore()
    : m_link(std::make_shared<SecretServiceLink>())
    , m_probe(std::make_shared<SecretServiceLink>())
{
}

SecretServiceStore::~SecretServiceStore()
{
    m_probe->calls.close();
    m_link->calls.close();
}

QCoro::Task<bool> SecretServiceStore::answers(std::chrono::milliseconds limit)
{
    QTimer::singleShot(limit, [probe = std::weak_ptr(m_probe)] {
        if (const auto link = probe.lock()) {
            link->calls.cancelAll();
        }
    });
    return serviceAnswers(m_probe);
}

QCoro::Task<SecretStatus> SecretServiceStore::add(QString account, QByteArray secret)
{
    return storeItem(m_link, std::move(account), std::move(secret));
}

QCoro::Task<SecretMatch> SecretServiceStore::copyMatching(QString account, bool wantData)
{
    return findItem(m_link, std::move(account), wantData);
}

QCoro::Task<SecretStatus> SecretServiceStore::remove(QString account)
{
    return removeItems(m_link, std::move(account));
}

void SecretServiceStore::cancelAll()
{
    m_link->calls.cancelAll();
}
