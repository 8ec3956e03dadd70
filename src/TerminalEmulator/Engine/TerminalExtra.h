#pragma once

#include "TerminalEmulator/Engine/Emulation.h"
#include "TerminalEmulator/Engine/SearchModel.h"
#include "TerminalEmulator/Engine/SelectionModel.h"
#include "TerminalEmulator/Engine/Terminal.h"

namespace vt
{

/// What Terminal keeps beside the emulation.
struct Terminal::Extra {
    explicit Extra(Emulation &emulation)
        : selection(emulation)
        , search(emulation)
    {
    }

    CursorState lastCursor;
    SelectionModel selection;
    SearchModel search;
};

} // namespace vt
