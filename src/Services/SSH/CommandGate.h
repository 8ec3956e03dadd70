#pragma once

#include "Helpers/OneShot.h"

#include <QByteArray>
#include <QCoroTask>
#include <deque>
#include <memory>

/// Lets a bounded number of commands run at once over one master connection; the others wait in the order in which
/// they came. A server refuses sessions beyond its MaxSessions (sshd_config(5), by default 10).
class CommandGate : public std::enable_shared_from_this<CommandGate>
{
public:
    static constexpr int kLimit = 8;

    /// The right to run one command; dropping it lets the next one in.
    using Pass = std::shared_ptr<void>;

    /// A pass, as soon as there is room.
    QCoro::Task<Pass> enter();

    /// A server that allows fewer sessions says so in the client's error text; from then on no more run at once than
    /// it had taken.
    void learnFrom(const QByteArray &error);

    int running() const { return m_running; }

    int limit() const { return m_limit; }

private:
    Pass makePass();
    void leave();

    int m_limit = kLimit;
    int m_running = 0;
    bool m_isAdmitting = false;
    std::deque<OneShot<Pass>::Completer> m_waiting;
};
