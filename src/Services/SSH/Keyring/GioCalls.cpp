#include "Services/SSH/Keyring/GioCalls.h"

#include <QAbstractEventDispatcher>

#include <algorithm>
#include <chrono>

namespace
{

constexpr std::chrono::milliseconds kPumpInterval{10};
constexpr int kIterationsPerPump = 100;

bool dispatcherRunsGlib()
{
    const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    return dispatcher && dispatcher->inherits("QEventDispatcherGlib");
}

void runContext()
{
    for (int i = 0; i < kIterationsPerPump && g_main_context_iteration(nullptr, FALSE); ++i) {
    }
}

} // namespace

struct GioCalls::State {
    QList<Call *> calls; // each is deleted by its callback, which GIO always calls
    QTimer pump;
    bool isClosed = false;
};

GioCalls::GioCalls()
    : m_state(std::make_shared<State>())
{
    m_state->pump.setInterval(kPumpInterval);
    QObject::connect(&m_state->pump, &QTimer::timeout, &runContext);
}

GioCalls::~GioCalls()
{
    close();
}

void GioCalls::catchUp()
{
    if (!dispatcherRunsGlib() && !m_state->pump.isActive()) {
        runContext();
    }
}

GioCalls::Call *GioCalls::begin(const OneShot<Result> &shot)
{
    if (m_state->isClosed) {
        return nullptr;
    }
    if (!dispatcherRunsGlib()) {
        m_state->pump.start();
    }
    auto *const call = new Call{m_state, adoptObject(g_cancellable_new()), shot.completer()};
    m_state->calls.append(call);
    return call;
}

void GioCalls::ready(GObject * /*source*/, GAsyncResult *result, gpointer data)
{
    const std::unique_ptr<Call> call(static_cast<Call *>(data));
    call->state->calls.removeOne(call.get());
    if (call->state->calls.isEmpty()) {
        call->state->pump.stop();
    }
    g_object_ref(result);
    call->done.complete(adoptObject(result));
}

void GioCalls::cancelAll()
{
    // A waiter may destroy this object, start further calls, or let callbacks come in.
    const std::shared_ptr<State> state = m_state;
    const auto next = [&state] {
        return std::find_if(state->calls.begin(), state->calls.end(), [](const Call *c) { return !c->isCancelled; });
    };
    for (auto it = next(); it != state->calls.end(); it = next()) {
        Call *const call = *it;
        call->isCancelled = true;
        const GObjectPtr<GCancellable> cancellable = call->cancellable;
        const OneShot<Result>::Completer done = call->done;
        g_cancellable_cancel(cancellable.get());
        done.complete(nullptr);
    }
}

void GioCalls::close()
{
    m_state->isClosed = true;
    cancelAll();
}
