#pragma once

#include "Helpers/OneShot.h"

#include <QList>
#include <QTimer>

#include <gio/gio.h>
#include <memory>

/// A GObject, owned. Null where a call gave none.
template<typename T>
using GObjectPtr = std::shared_ptr<T>;

/// Takes over the caller's reference.
template<typename T>
GObjectPtr<T> adoptObject(T *object)
{
    return object ? GObjectPtr<T>(object, [](T *o) { g_object_unref(o); }) : nullptr;
}

/// Asynchronous GIO calls as tasks, cancelled together.
///
/// GIO delivers results through GLib's default main context. Qt's usual event dispatcher on Linux runs that context;
/// where another one is in use (QT_NO_GLIB=1), a timer runs it while calls are under way.
class GioCalls
{
public:
    /// What a "..._finish" function takes; null if the call was cancelled.
    using Result = GObjectPtr<GAsyncResult>;

    GioCalls();
    /// As `close`.
    ~GioCalls();
    GioCalls(const GioCalls &) = delete;
    GioCalls &operator=(const GioCalls &) = delete;

    /// Starts a call by `start(GCancellable *, GAsyncReadyCallback, gpointer)`, which passes all three on.
    template<typename Start>
    QCoro::Task<Result> call(Start start)
    {
        OneShot<Result> shot(nullptr);
        if (Call *const begun = begin(shot)) {
            start(begun->cancellable.get(), &GioCalls::ready, static_cast<gpointer>(begun));
        }
        return shot.wait();
    }

    /// Without GLib's event loop: delivers what came in while no call was under way, for instance that a service
    /// went. To be called before GIO is asked for what it knows.
    void catchUp();

    /// Cancels what is under way. Whoever waits has been resumed, with null, when this returns; what GIO still
    /// has to clean up, it does later from the event loop.
    void cancelAll();

    /// Cancels, and gives null to every later call too.
    void close();

private:
    struct State;

    struct Call {
        std::shared_ptr<State> state; // outlives this object, for the callback
        GObjectPtr<GCancellable> cancellable;
        OneShot<Result>::Completer done;
        bool isCancelled = false;
    };

    Call *begin(const OneShot<Result> &shot);
    static void ready(GObject *source, GAsyncResult *result, gpointer data);

    std::shared_ptr<State> m_state;
};
