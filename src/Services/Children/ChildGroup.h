#pragma once

#include "Services/Children/ChildProcesses.h"

#include <memory>
#include <vector>

/// Children that are started for one purpose and end together.
class ChildGroup
{
public:
    /// `handle` is that of a child that is about to be started.
    void add(std::shared_ptr<ChildHandle> handle);

    /// Ends those that run at once: whoever waits for one has been resumed with Cancelled when this returns. What
    /// would be started after it is to be refused.
    void end();

    bool isEnded() const { return m_isEnded; }

private:
    std::vector<std::shared_ptr<ChildHandle>> m_handles;
    bool m_isEnded = false;
};
