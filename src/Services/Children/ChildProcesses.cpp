#include "Services/Children/ChildProcesses.h"

#include "Helpers/OneShot.h"

#include <algorithm>

ChildProcesses::~ChildProcesses()
{
    shutdown();
}

QCoro::Task<ChildOutcome> ChildProcesses::run(ChildSetup setup, std::shared_ptr<ChildHandle> handle)
{
    if (m_isShutDown) {
        co_return ChildOutcome{.reason = tr("The application is ending")};
    }
    OneShot<ChildOutcome> ending(ChildOutcome{});
    {
        auto child = std::make_unique<ChildProcess>(
            std::move(setup), [this, done = ending.completer()](const ChildProcess *ended, ChildOutcome outcome) {
                retire(ended);
                done.complete(std::move(outcome));
            });
        ChildProcess *const raw = child.get();
        m_children.push_back(std::move(child));
        if (handle) {
            *handle = raw;
        }
        raw->start();
    }
    co_return co_await ending.wait();
}

void ChildProcesses::retire(const ChildProcess *child)
{
    const auto found = std::ranges::find(m_children, child, &std::unique_ptr<ChildProcess>::get);
    if (found == m_children.end()) {
        return;
    }
    m_ended.push_back(std::move(*found));
    m_children.erase(found);
    QTimer::singleShot(0, this, [this] { m_ended.clear(); });
}

void ChildProcesses::shutdown()
{
    m_isShutDown = true;
    while (!m_children.empty()) {
        const std::unique_ptr<ChildProcess> child = std::move(m_children.back());
        m_children.pop_back();
        child->abandon();
    }
}
