#pragma once

#include "TerminalEmulator/Engine/Grid.h"
#include "TerminalEmulator/Engine/Keys.h"

#include <optional>
#include <string>

namespace vt
{

/// The locator of DEC's terminals (VT420 programmer reference, "Locator"): a mouse that an application asks for its
/// position, or that reports its buttons or that it left a rectangle. A report is the rest of a control sequence
/// after CSI; empty if there is nothing to report.
class Locator
{
public:
    bool isEnabled() const { return m_enabled; }

    /// DECELR: 0 off, 1 on, 2 on until the first report. Units are cells, or pixels with `unit` 1.
    void enable(int how, int unit);
    /// DECSLE: 0 only what is asked for, 1 and 3 buttons going down and up as well, 2 and 4 not any more.
    void select(int events);
    /// DECEFR: one report as soon as the pointer is outside. Counted from 1 in the current unit; a side of 0 is
    /// where the pointer is.
    void filter(const Area &area);
    /// DECRQLP.
    std::string request();
    std::string event(const MouseEvent &event);

private:
    std::string report(int event);

    bool m_enabled = false;
    bool m_once = false;
    bool m_pixels = false;
    bool m_downs = false;
    bool m_ups = false;
    std::optional<Area> m_filter;
    int m_buttons = 0; ///< held down: 1 right, 2 middle, 4 left
    int m_row = 1;
    int m_column = 1;
};

} // namespace vt
