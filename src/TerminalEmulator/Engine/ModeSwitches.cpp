#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>

namespace vt
{

namespace
{

bool isMouse(Mode mode)
{
    return mode == Mode::MouseX10 || mode == Mode::Mouse1000 || mode == Mode::Mouse1001 || mode == Mode::Mouse1002 ||
           mode == Mode::Mouse1003;
}

bool isMouseEncoding(Mode mode)
{
    return mode == Mode::MouseUtf8 || mode == Mode::MouseSgr || mode == Mode::MouseUrxvt || mode == Mode::MousePixels;
}

/// Switching it changes the page or moves the cursor on it.
bool isOfPage(Mode mode)
{
    return mode == Mode::Columns132 || mode == Mode::AltScreen47 || mode == Mode::AltScreen1047 ||
           mode == Mode::AltScreen1049 || mode == Mode::AltScreenAllowed || mode == Mode::SaveCursor1048 ||
           mode == Mode::Origin || mode == Mode::LeftRightMargins;
}

} // namespace

void Emulation::setAlternate(bool on)
{
    if (on == isAlternate() || (on && !mode(Mode::AltScreenAllowed))) {
        return;
    }
    m_grid = on ? &m_alternate.grid : &m_main.grid;
    store(Mode::AltScreen47, on);
    m_allDamaged = true;
    m_grid->touchAll();
    m_segmenter.reset();
}

/// DECCOLM: 80 or 132 columns, if the application was allowed to ask (mode 40).
void Emulation::setColumns132(bool on)
{
    if (!mode(Mode::Allow132)) {
        return;
    }
    store(Mode::Columns132, on);
    requestSize(on ? 132 : 80, rows());
    store(Mode::LeftRightMargins, false);
    resetMargins();
    if (!mode(Mode::NoClearOnColumns)) {
        eraseDisplay(2, Erase::Plain);
    }
    moveTo(0, 0);
}

void Emulation::setMouseMode(Mode which, bool on)
{
    const auto others = isMouse(which) ? isMouse : isMouseEncoding;
    for (int each = 0; each < static_cast<int>(Mode::Count); ++each) {
        if (others(static_cast<Mode>(each))) {
            store(static_cast<Mode>(each), false);
        }
    }
    store(which, on);
    emitEvent({Event::Kind::ModesChanged, {}, {}});
}

void Emulation::setMode(Mode which, bool on)
{
    if (isMouse(which) || isMouseEncoding(which)) {
        setMouseMode(which, on);
        return;
    }
    if (m_statusDisplayActive && isOfPage(which)) {
        return;
    }
    switch (which) {
    case Mode::Columns132:
        setColumns132(on);
        return;
    case Mode::AltScreen47:
        setAlternate(on);
        return;
    case Mode::AltScreen1047:
        if (!on && isAlternate()) {
            eraseDisplay(2, Erase::Plain);
        }
        setAlternate(on);
        store(which, isAlternate());
        return;
    case Mode::SaveCursor1048:
        on ? saveCursor() : restoreCursor();
        store(which, on);
        return;
    case Mode::AltScreen1049:
        // Entering twice saves and clears twice, leaving twice restores twice.
        if (on && mode(Mode::AltScreenAllowed)) {
            saveCursor();
            setAlternate(true);
            eraseDisplay(2, Erase::Plain);
        } else if (!on && mode(Mode::AltScreenAllowed)) {
            setAlternate(false);
            restoreCursor();
        }
        store(which, isAlternate());
        return;
    default:
        break;
    }
    store(which, on);
    switch (which) {
    case Mode::Insert:
        updateTextPath();
        break;
    case Mode::Origin:
        address(0, 0);
        break;
    case Mode::Ansi:
        m_parser.setVt52(!on);
        break;
    case Mode::LeftRightMargins:
        m_left = 0;
        m_right = columns() - 1;
        break;
    case Mode::AltScreenAllowed:
        if (!on && isAlternate()) {
            setAlternate(false);
        }
        break;
    case Mode::ReverseScreen:
    case Mode::CursorVisible:
    case Mode::CursorBlink:
        m_allDamaged = m_allDamaged || which == Mode::ReverseScreen;
        m_grid->touch(m_y);
        break;
    case Mode::KeypadApplication:
        m_keypadApplication = on;
        break;
    case Mode::NationalSets:
        updateTextPath();
        break;
    case Mode::SizeReports:
        if (on) {
            replyCsi("48;" + std::to_string(rows()) + ';' + std::to_string(columns()) + ';' +
                     std::to_string(rows() * m_options.cellHeight) + ';' +
                     std::to_string(columns() * m_options.cellWidth) + 't');
        }
        break;
    default:
        break;
    }
    emitEvent({Event::Kind::ModesChanged, {}, {}});
}

void Emulation::sm(const Sequence &s)
{
    for (int at = 0; at < s.count; ++at) {
        const ModeInfo *info = modeInfo(s.value(at), false);
        if (info && info->kind == ModeInfo::Settable) {
            setMode(info->mode, true);
        }
    }
}

void Emulation::rm(const Sequence &s)
{
    for (int at = 0; at < s.count; ++at) {
        const ModeInfo *info = modeInfo(s.value(at), false);
        if (info && info->kind == ModeInfo::Settable) {
            setMode(info->mode, false);
        }
    }
}

void Emulation::decset(const Sequence &s)
{
    for (int at = 0; at < s.count; ++at) {
        const ModeInfo *info = modeInfo(s.value(at), true);
        if (info && info->kind == ModeInfo::Settable && m_level >= info->level) {
            setMode(info->mode, true);
        }
    }
}

void Emulation::decrst(const Sequence &s)
{
    for (int at = 0; at < s.count; ++at) {
        const ModeInfo *info = modeInfo(s.value(at), true);
        if (info && info->kind == ModeInfo::Settable && m_level >= info->level) {
            setMode(info->mode, false);
        }
    }
}

void Emulation::xtsave(const Sequence &s)
{
    for (int at = 0; at < s.count; ++at) {
        const ModeInfo *info = modeInfo(s.value(at), true);
        if (info && info->kind == ModeInfo::Settable) {
            if (info->mode == Mode::SaveCursor1048) {
                saveCursor();
            }
            const bool screen = info->mode == Mode::AltScreen1047 || info->mode == Mode::AltScreen1049;
            m_savedModes[static_cast<size_t>(info->mode)] = screen ? isAlternate() : mode(info->mode);
        }
    }
}

void Emulation::xtrestore(const Sequence &s)
{
    for (int at = 0; at < s.count; ++at) {
        const ModeInfo *info = modeInfo(s.value(at), true);
        if (info && info->kind == ModeInfo::Settable) {
            if (info->mode == Mode::SaveCursor1048) {
                if (!m_statusDisplayActive) {
                    restoreCursor();
                }
            } else if (m_savedModes[static_cast<size_t>(info->mode)] != mode(info->mode)) {
                setMode(info->mode, m_savedModes[static_cast<size_t>(info->mode)]);
            }
        }
    }
}

/// DECRPM: 0 not known, 1 set, 2 reset, 3 always set, 4 always reset.
void Emulation::decrqm(const Sequence &s)
{
    const int number = s.value(0);
    const ModeInfo *info = modeInfo(number, s.prefix == '?');
    int state = 0;
    if (info && m_level >= info->level) {
        const bool screen = info->mode == Mode::AltScreen1047 || info->mode == Mode::AltScreen1049;
        state = info->kind == ModeInfo::AlwaysSet             ? 3
                : info->kind == ModeInfo::AlwaysReset         ? 4
                : (screen ? isAlternate() : mode(info->mode)) ? 1
                                                              : 2;
    }
    replyCsi((s.prefix == '?' ? "?" : "") + std::to_string(number) + ';' + std::to_string(state) + "$y");
}

/// DECSCL: the VT level, 61 to 65, and unless the second number is 1, answers with eight-bit controls. A soft reset
/// goes with it.
void Emulation::decscl(const Sequence &s)
{
    const int level = s.value(0) - 60;
    if (level < 1 || level > 5) {
        return;
    }
    softReset();
    m_level = level;
    m_eightBitReplies = level >= 2 && s.value(1) != 1;
    m_parser.setEightBitControls(m_eightBitReplies);
}

void Emulation::s7c1t(const Sequence & /*s*/)
{
    m_eightBitReplies = false;
}

void Emulation::s8c1t(const Sequence & /*s*/)
{
    // An application that wants them sends them too; before that, such bytes can only be broken UTF-8.
    if (m_level >= 2) {
        m_eightBitReplies = true;
        m_parser.setEightBitControls(true);
    }
}

void Emulation::deckpam(const Sequence & /*s*/)
{
    m_keypadApplication = true;
    store(Mode::KeypadApplication, true);
    emitEvent({Event::Kind::ModesChanged, {}, {}});
}

void Emulation::deckpnm(const Sequence & /*s*/)
{
    m_keypadApplication = false;
    store(Mode::KeypadApplication, false);
    emitEvent({Event::Kind::ModesChanged, {}, {}});
}

/// SCS: the first intermediate tells the slot and the size of the set, the rest names it.
void Emulation::designate(const Sequence &s)
{
    static constexpr std::string_view Slots = "()*+-./";
    const size_t slot = Slots.find(s.intermediates[0]);
    if (slot == std::string_view::npos) {
        return;
    }
    const bool is96 = slot >= 4;
    char name[2] = {s.final, 0};
    size_t length = 1;
    if (s.intermediateCount == 2) {
        name[0] = s.intermediates[1];
        name[1] = s.final;
        length = 2;
    }
    bool found = s.final == '<' && length == 1;
    const Charset set = found ? m_preferredSet : charsetFor({name, length}, is96, found);
    if (found) {
        m_charsets.designated[is96 ? slot - 3 : slot] = set;
        updateTextPath();
    }
}

void Emulation::lockingShift(const Sequence &s)
{
    switch (s.final) {
    case 'n':
        m_charsets.left = 2;
        break;
    case 'o':
        m_charsets.left = 3;
        break;
    case '~':
        m_charsets.right = 1;
        break;
    case '}':
        m_charsets.right = 2;
        break;
    case '|':
        m_charsets.right = 3;
        break;
    default:
        break;
    }
    updateTextPath();
}

void Emulation::singleShift(const Sequence &s)
{
    m_singleShift = s.final == 'N' ? 2 : 3;
    updateTextPath();
}

/// DOCS: "%G" UTF-8, "%@" back to one byte a character (ISO 2022).
void Emulation::docs(const Sequence &s)
{
    m_parser.setUtf8(s.final == 'G');
    m_decodeNeed = 0;
}

/// XTMODKEYS: without a value a resource gets the one it began with, without anything all do.
void Emulation::xtmodkeys(const Sequence &s)
{
    const auto which = static_cast<size_t>(s.value(0));
    if (s.count == 0) {
        m_keyOptions.modify = KeyOptions().modify;
    } else if (which < KeyOptions::Count) {
        m_keyOptions.modify[which] = std::min(s.value(1, KeyOptions().modify[which]), 3);
    }
}

/// XTUNMODKEYS: function keys, unless another resource is named.
void Emulation::xtunmodkeys(const Sequence &s)
{
    const auto which = static_cast<size_t>(s.value(0, KeyOptions::FunctionKeys));
    if (which < KeyOptions::Count) {
        m_keyOptions.modify[which] = -1;
    }
}

void Emulation::xtqmodkeys(const Sequence &s)
{
    const auto which = static_cast<size_t>(s.value(0));
    if (which < KeyOptions::Count) {
        // A disabled one has no value.
        const int value = m_keyOptions.modify[which];
        replyCsi('>' + std::to_string(which) + (value < 0 ? "" : ';' + std::to_string(value)) + 'm');
    }
}

/// XTFMTKEYS: the form of a modified key, 1 being "CSI code ; modifiers u".
void Emulation::xtfmtkeys(const Sequence &s)
{
    const auto which = static_cast<size_t>(s.value(0));
    if (s.count == 0) {
        m_keyOptions.format = {};
    } else if (which < KeyOptions::Count) {
        m_keyOptions.format[which] = std::min(s.value(1), 1);
    }
}

void Emulation::xtqfmtkeys(const Sequence &s)
{
    const auto which = static_cast<size_t>(s.value(0));
    if (which < KeyOptions::Count) {
        replyCsi('>' + std::to_string(which) + ';' + std::to_string(m_keyOptions.format[which]) + 'f');
    }
}

int Emulation::keyboardFlags() const
{
    return (isAlternate() ? m_alternate : m_main).keyboardStack.back();
}

void Emulation::keyboardQuery(const Sequence & /*s*/)
{
    replyCsi("?" + std::to_string(keyboardFlags()) + 'u');
}

void Emulation::keyboardPush(const Sequence &s)
{
    std::vector<int> &stack = (isAlternate() ? m_alternate : m_main).keyboardStack;
    if (stack.size() >= 16) {
        stack.erase(stack.begin() + 1);
    }
    stack.push_back(s.value(0) & 31);
}

void Emulation::keyboardPop(const Sequence &s)
{
    std::vector<int> &stack = (isAlternate() ? m_alternate : m_main).keyboardStack;
    for (int count = std::min(s.atLeastOne(0), 16); count > 0 && stack.size() > 1; --count) {
        stack.pop_back();
    }
    if (stack.size() == 1) {
        stack[0] = 0;
    }
}

void Emulation::keyboardSet(const Sequence &s)
{
    int &flags = (isAlternate() ? m_alternate : m_main).keyboardStack.back();
    const int given = s.value(0) & 31;
    switch (s.value(1, 1)) {
    case 1:
        flags = given;
        break;
    case 2:
        flags |= given;
        break;
    case 3:
        flags &= ~given;
        break;
    default:
        break;
    }
}

} // namespace vt
