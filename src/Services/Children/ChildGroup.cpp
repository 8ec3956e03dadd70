#include "Services/Children/ChildGroup.h"

#include <utility>

void ChildGroup::add(std::shared_ptr<ChildHandle> handle)
{
    std::erase_if(m_handles, [](const std::shared_ptr<ChildHandle> &ended) { return !*ended; });
    m_handles.push_back(std::move(handle));
}

void ChildGroup::end()
{
    m_isEnded = true;
    for (const std::shared_ptr<ChildHandle> &handle : std::exchange(m_handles, {})) {
        if (*handle) {
            (*handle)->abandon();
        }
    }
}
