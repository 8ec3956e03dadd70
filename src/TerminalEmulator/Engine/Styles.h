#pragma once

#include "TerminalEmulator/Engine/Cell.h"

#include <cstddef>
#include <vector>

namespace vt
{

/// Every style in use, once. Cells name it by number; number 0 is the default style.
class Styles
{
public:
    Styles();

    /// The number of `style`; a new one if it was not known.
    StyleId intern(const Style &style);

    /// The style of a number; the default style for a number that is not in use (any more).
    const Style &operator[](StyleId id) const { return id < m_styles.size() ? m_styles[id] : m_styles[0]; }

    size_t size() const { return m_styles.size(); }

    /// Whether enough was added since the last sweep for another one to pay.
    bool wantsSweep() const { return m_styles.size() >= m_sweepAt; }

    /// Keeps the styles whose entry in `used` (indexed by number) is true, and returns for each old number its new
    /// one. The caller renames every number it holds.
    std::vector<StyleId> sweep(const std::vector<bool> &used);

private:
    static uint64_t hashOf(const Style &style);
    void place(StyleId id);
    void grow();

    std::vector<Style> m_styles;
    std::vector<StyleId> m_slots; ///< open addressing; 0 is free (the default style is never looked up here)
    size_t m_sweepAt = 8192;
};

} // namespace vt
