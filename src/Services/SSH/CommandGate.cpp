#include "Services/SSH/CommandGate.h"

#include <algorithm>

QCoro::Task<CommandGate::Pass> CommandGate::enter()
{
    if (m_running < m_limit && m_waiting.empty()) {
        co_return makePass();
    }
    OneShot<Pass> admission(nullptr);
    m_waiting.push_back(admission.completer());
    co_return co_await admission.wait();
}

void CommandGate::learnFrom(const QByteArray &error)
{
    // The words of ssh's mux client (mux.c, mux_client_request_session) about an SSH_MSG_CHANNEL_OPEN_FAILURE.
    if (error.contains("Session open refused by peer")) {
        m_limit = std::clamp(m_running - 1, 1, m_limit);
    }
}

CommandGate::Pass CommandGate::makePass()
{
    ++m_running;
    return {nullptr, [gate = shared_from_this()](void *) { gate->leave(); }};
}

void CommandGate::leave()
{
    --m_running;
    // One loop admits, however many commands end while it does: a long queue whose commands all end at once must not
    // become a deep recursion.
    if (m_isAdmitting) {
        return;
    }
    m_isAdmitting = true;
    while (m_running < m_limit && !m_waiting.empty()) {
        const OneShot<Pass>::Completer next = std::move(m_waiting.front());
        m_waiting.pop_front();
        next.complete(makePass());
    }
    m_isAdmitting = false;
}
