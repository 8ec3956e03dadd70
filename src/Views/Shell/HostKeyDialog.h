#pragma once

#include "Services/SSH/HostKeys.h"

class Theme;

/// Puts a host key that could not be verified before the operator: a sheet on the window in use, never a nested event
/// loop. Several questions may be open at once.
class HostKeyDialog : public HostKeyPrompt
{
public:
    /// `theme` outlives the questions.
    explicit HostKeyDialog(const Theme &theme);

    QCoro::Task<bool> askToRetry(HostKeyConflict conflict) override;

private:
    const Theme &m_theme;
};
