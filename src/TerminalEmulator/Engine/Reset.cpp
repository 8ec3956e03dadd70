#include "TerminalEmulator/Engine/Emulation.h"

namespace vt
{

/// DECSTR: what an application may have left behind, but not the screen.
void Emulation::softReset()
{
    for (const Mode each :
         {Mode::Insert, Mode::Origin, Mode::Autowrap, Mode::ReverseWrap, Mode::ReverseWrapExtended,
          Mode::CursorVisible, Mode::KeyboardLocked, Mode::CursorKeys, Mode::NationalSets, Mode::LeftRightMargins,
          Mode::KeypadApplication, Mode::MoreFix, Mode::CursorBlink, Mode::RightToLeft}) {
        store(each, initialState(each));
    }
    m_keypadApplication = false;
    m_keyOptions = {};
    resetMargins();
    m_charsets = {};
    m_preferredSet = Charset::DecSupplemental;
    m_singleShift = 0;
    m_protection = Protection::Off;
    m_pen = {};
    m_pen.link = m_currentLink = 0;
    m_penStack.clear();
    m_bellVolumes = {};
    penChanged();
    m_cursorStyle = 0;
    m_attributeExtent = 0;
    m_checksumFlags = 0;
    activateStatusDisplay(false);
    (isAlternate() ? m_alternate : m_main).saved = {};
    m_pendingWrap = false;
    updateTextPath();
    emitEvent({Event::Kind::ModesChanged, {}, {}});
}

void Emulation::decstr(const Sequence & /*s*/)
{
    softReset();
}

void Emulation::ris(const Sequence & /*s*/)
{
    fullReset();
    clearHistory();
}

/// The state of a new terminal of the same size; the history stays.
void Emulation::fullReset()
{
    const bool was132 = mode(Mode::Columns132);
    for (size_t each = 0; each < m_modes.size(); ++each) {
        m_modes[each] = initialState(static_cast<Mode>(each));
    }
    m_savedModes = m_modes;
    if (was132) {
        requestSize(80, rows());
    }
    m_grid = &m_main.grid;
    m_level = 5;
    m_eightBitReplies = false;
    m_parser.setEightBitControls(false);
    m_parser.setUtf8(true);
    m_parser.setVt52(false);
    softReset();
    for (Screen *screen : {&m_main, &m_alternate}) {
        for (int y = 0; y < rows(); ++y) {
            screen->grid.clearRow(y, Cell{});
        }
        screen->saved = {};
        screen->keyboardStack = {0};
    }
    while (!m_marks.empty() && m_marks.back().position.line >= screenTop()) {
        m_marks.pop_back();
    }
    m_x = 0;
    m_y = 0;
    m_lastPrinted = 0;
    m_decodeNeed = 0;
    m_segmenter.reset();
    m_afterPrepend = false;
    resetTabs();
    m_palette.reset();
    m_paletteStack.clear();
    m_paletteDepth = 0;
    m_titleModes = 0;
    m_titleStack = {};
    m_titleDepth = 0;
    m_locator = {};
    m_statusDisplay = 0;
    m_naturalTop.reset();
    m_window.fullScreen = false;
    m_window.restoreColumns = 0;
    m_allDamaged = true;
    emitEvent({Event::Kind::PaletteChanged, {}, {}});
}

} // namespace vt
