#include "Services/SSH/Keyring/PromptingSecretService.h"

#include <libsecret/secret.h>

#include <QByteArray>

#include <utility>

namespace
{

constexpr const char *kPromptInterface = "org.freedesktop.Secret.Prompt";

// One prompt under way, as its task's data. Whatever can end it holds a reference to the task; the first one counts.
struct Prompt {
    GDBusConnection *bus = nullptr;
    QByteArray service; // the unique name of who asks
    QByteArray path;
    const GVariantType *resultType = nullptr; // libsecret's own, a constant
    guint completion = 0;
    guint watch = 0;
    gulong cancellation = 0;
    bool isDone = false;
};

Prompt &promptOf(GTask *task)
{
    return *static_cast<Prompt *>(g_task_get_task_data(task));
}

gpointer retained(GTask *task)
{
    return g_object_ref(task);
}

void release(gpointer task)
{
    g_object_unref(task);
}

// True for the first of the events that can end the prompt; then the others are not listened to any more.
bool concludes(GTask *task)
{
    Prompt &prompt = promptOf(task);
    if (std::exchange(prompt.isDone, true)) {
        return false;
    }
    if (prompt.completion != 0) {
        g_dbus_connection_signal_unsubscribe(prompt.bus, prompt.completion);
    }
    if (prompt.watch != 0) {
        g_bus_unwatch_name(prompt.watch);
    }
    // Not g_cancellable_disconnect, which waits for the handler that may be running right now.
    if (GCancellable *const cancellable = g_task_get_cancellable(task); cancellable && prompt.cancellation != 0) {
        g_signal_handler_disconnect(cancellable, prompt.cancellation);
    }
    return true;
}

void completed(GDBusConnection * /*bus*/, const gchar * /*sender*/, const gchar * /*path*/,
               const gchar * /*interface*/, const gchar * /*signal*/, GVariant *arguments, gpointer data)
{
    auto *const task = static_cast<GTask *>(data);
    if (!concludes(task)) {
        return;
    }
    gboolean dismissed = FALSE;
    GVariant *result = nullptr;
    if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(bv)"))) {
        g_variant_get(arguments, "(bv)", &dismissed, &result);
    }
    const GVariantType *const wanted = promptOf(task).resultType;
    if (result && !dismissed && (!wanted || g_variant_is_of_type(result, wanted))) {
        g_task_return_pointer(task, std::exchange(result, nullptr),
                              [](gpointer v) { g_variant_unref(static_cast<GVariant *>(v)); });
    } else if (dismissed) {
        g_task_return_new_error(task, G_IO_ERROR, G_IO_ERROR_FAILED_HANDLED, "the prompt was dismissed");
    } else {
        g_task_return_new_error(task, SECRET_ERROR, SECRET_ERROR_PROTOCOL, "unexpected result of a prompt");
    }
    if (result) {
        g_variant_unref(result);
    }
}

void vanished(GDBusConnection * /*bus*/, const gchar * /*name*/, gpointer data)
{
    auto *const task = static_cast<GTask *>(data);
    if (concludes(task)) {
        g_task_return_new_error(task, G_IO_ERROR, G_IO_ERROR_CLOSED, "the secret service left the bus");
    }
}

void cancelled(GCancellable * /*cancellable*/, gpointer data)
{
    auto *const task = static_cast<GTask *>(data);
    if (concludes(task)) {
        const Prompt &prompt = promptOf(task);
        g_dbus_connection_call(prompt.bus, prompt.service.constData(), prompt.path.constData(), kPromptInterface,
                               "Dismiss", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
        g_task_return_new_error(task, G_IO_ERROR, G_IO_ERROR_CANCELLED, "cancelled");
    }
}

// The service acknowledges the question at once and tells the answer later by the signal. `data` owns a reference.
void acknowledged(GObject *bus, GAsyncResult *result, gpointer data)
{
    auto *const task = static_cast<GTask *>(data);
    GError *error = nullptr;
    GVariant *const reply = g_dbus_connection_call_finish(reinterpret_cast<GDBusConnection *>(bus), result, &error);
    if (reply) {
        g_variant_unref(reply);
    } else if (concludes(task)) {
        g_task_return_error(task, error);
    } else {
        g_error_free(error);
    }
    g_object_unref(task);
}

void promptAsync(SecretService *self, SecretPrompt *object, const GVariantType *returnType, GCancellable *cancellable,
                 GAsyncReadyCallback callback, gpointer userData)
{
    GTask *const task = g_task_new(self, cancellable, callback, userData);
    auto *const prompt = new Prompt;
    g_task_set_task_data(task, prompt, [](gpointer p) { delete static_cast<Prompt *>(p); });
    gchar *const owner = g_dbus_proxy_get_name_owner(G_DBUS_PROXY(self));
    prompt->bus = g_dbus_proxy_get_connection(G_DBUS_PROXY(self));
    prompt->service = owner;
    prompt->path = g_dbus_proxy_get_object_path(G_DBUS_PROXY(object));
    prompt->resultType = returnType;
    g_free(owner);

    if (prompt->service.isEmpty()) {
        vanished(nullptr, nullptr, task);
    } else {
        prompt->completion = g_dbus_connection_signal_subscribe(
            prompt->bus, prompt->service.constData(), kPromptInterface, "Completed", prompt->path.constData(),
            nullptr, G_DBUS_SIGNAL_FLAGS_NONE, completed, retained(task), release);
        prompt->watch =
            g_bus_watch_name_on_connection(prompt->bus, prompt->service.constData(), G_BUS_NAME_WATCHER_FLAGS_NONE,
                                           nullptr, vanished, retained(task), release);
        // No window id: the keyring's question stands on its own.
        g_dbus_connection_call(prompt->bus, prompt->service.constData(), prompt->path.constData(), kPromptInterface,
                               "Prompt", g_variant_new("(s)", ""), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
                               acknowledged, retained(task));
        if (cancellable) {
            // If it is cancelled already, the handler runs in here, and there is nothing to disconnect.
            const gulong handler = g_cancellable_connect(cancellable, G_CALLBACK(cancelled), retained(task), release);
            prompt->cancellation = handler;
        }
    }
    g_object_unref(task);
}

GVariant *promptFinish(SecretService * /*self*/, GAsyncResult *result, GError **error)
{
    return static_cast<GVariant *>(g_task_propagate_pointer(G_TASK(result), error));
}

void initializeClass(gpointer pointer, gpointer /*data*/)
{
    auto *const type = static_cast<SecretServiceClass *>(pointer);
    type->prompt_async = promptAsync;
    type->prompt_finish = promptFinish;
}

} // namespace

GType promptingSecretServiceType()
{
    static const GType type =
        g_type_register_static_simple(SECRET_TYPE_SERVICE, "TarnwellSecretService", sizeof(SecretServiceClass),
                                      initializeClass, sizeof(SecretService), nullptr, GTypeFlags(0));
    return type;
}
