#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_map>

namespace vt
{

namespace
{

constexpr uint32_t csi(char final, char prefix = 0, char first = 0)
{
    return Sequence::key(prefix, first, 0, final);
}

constexpr uint32_t esc(char final, char first = 0)
{
    return Sequence::key(0, first, 0, final);
}

constexpr size_t MaxEvents = 4096;

/// Whether a control function is about the page: its text, its margins or the cursor on it.
bool touchesPage(uint32_t key, bool isEscape)
{
    struct Group {
        uint32_t key; ///< of its members, without the final byte
        bool isEscape;
        std::string_view finals;
    };

    static constexpr Group Groups[] = {
        {csi(0), false, "@ABCDEFGHIJKLMPSTXZ^`abdefrsu"},
        {csi(0, '?'), false, "JK"},
        {csi(0, 0, ' '), false, "@A"},
        {csi(0, 0, '$'), false, "rtvxz{"},
        {csi(0, 0, '\''), false, "}~"},
        {esc(0), true, "6789DEHM"},
        {esc(0, '#'), true, "34568"},
    };
    return std::any_of(std::begin(Groups), std::end(Groups), [&](const Group &group) {
        return group.key == (key & ~0xffu) && group.isEscape == isEscape &&
               group.finals.find(static_cast<char>(key & 0xff)) != std::string_view::npos;
    });
}

} // namespace

const std::vector<Emulation::Entry> &Emulation::controlTable()
{
    static const std::vector<Entry> table = {
        {csi('@'), 1, &Emulation::ich},
        {csi('@', 0, ' '), 1, &Emulation::sl},
        {csi('A'), 1, &Emulation::cuu},
        {csi('A', 0, ' '), 1, &Emulation::sr},
        {csi('B'), 1, &Emulation::cud},
        {csi('C'), 1, &Emulation::cuf},
        {csi('D'), 1, &Emulation::cub},
        {csi('E'), 1, &Emulation::cnl},
        {csi('F'), 1, &Emulation::cpl},
        {csi('G'), 1, &Emulation::cha},
        {csi('H'), 1, &Emulation::cup},
        {csi('I'), 1, &Emulation::cht},
        {csi('J'), 1, &Emulation::ed},
        {csi('J', '?'), 2, &Emulation::decsed},
        {csi('K'), 1, &Emulation::el},
        {csi('K', '?'), 2, &Emulation::decsel},
        {csi('L'), 1, &Emulation::il},
        {csi('M'), 1, &Emulation::dl},
        {csi('P'), 1, &Emulation::dch},
        {csi('S'), 1, &Emulation::su},
        {csi('T'), 1, &Emulation::sd},
        {csi('T', '>'), 1, &Emulation::titleModesReset},
        {csi('W', '?'), 1, &Emulation::decst8c},
        {csi('X'), 1, &Emulation::ech},
        {csi('Z'), 1, &Emulation::cbt},
        {csi('^'), 1, &Emulation::sd},
        {csi('`'), 1, &Emulation::cha},
        {csi('a'), 1, &Emulation::hpr},
        {csi('b'), 1, &Emulation::rep},
        {csi('c'), 1, &Emulation::da1},
        {csi('c', '>'), 2, &Emulation::da2},
        {csi('c', '='), 3, &Emulation::da3},
        {csi('d'), 1, &Emulation::vpa},
        {csi('e'), 1, &Emulation::vpr},
        {csi('f'), 1, &Emulation::cup},
        {csi('f', '>'), 1, &Emulation::xtfmtkeys},
        {csi('g'), 1, &Emulation::tbc},
        {csi('g', '?'), 1, &Emulation::xtqfmtkeys},
        {csi('h'), 1, &Emulation::sm},
        {csi('h', '?'), 1, &Emulation::decset},
        {csi('l'), 1, &Emulation::rm},
        {csi('l', '?'), 1, &Emulation::decrst},
        {csi('m'), 1, &Emulation::sgr},
        {csi('m', '>'), 1, &Emulation::xtmodkeys},
        {csi('m', '?'), 1, &Emulation::xtqmodkeys},
        {csi('n'), 1, &Emulation::dsr},
        {csi('n', '>'), 1, &Emulation::xtunmodkeys},
        {csi('n', '?'), 1, &Emulation::decdsr},
        {csi('p', 0, '!'), 1, &Emulation::decstr},
        {csi('p', 0, '"'), 1, &Emulation::decscl},
        {csi('p', 0, '$'), 3, &Emulation::decrqm},
        {csi('p', '?', '$'), 3, &Emulation::decrqm},
        {csi('q', 0, ' '), 1, &Emulation::decscusr},
        {csi('q', 0, '"'), 2, &Emulation::decsca},
        {csi('q', '>'), 1, &Emulation::xtversion},
        {csi('r'), 1, &Emulation::decstbm},
        {csi('r', '?'), 1, &Emulation::xtrestore},
        {csi('r', 0, '$'), 4, &Emulation::deccara},
        {csi('s'), 1, &Emulation::decslrm},
        {csi('s', '?'), 1, &Emulation::xtsave},
        {csi('t'), 1, &Emulation::windowOperation},
        {csi('t', '>'), 1, &Emulation::titleModes},
        {csi('t', 0, '$'), 4, &Emulation::decrara},
        {csi('u'), 1, &Emulation::scorc},
        {csi('u', '?'), 1, &Emulation::keyboardQuery},
        {csi('u', '>'), 1, &Emulation::keyboardPush},
        {csi('u', '<'), 1, &Emulation::keyboardPop},
        {csi('u', '='), 1, &Emulation::keyboardSet},
        {csi('t', 0, ' '), 3, &Emulation::bellVolume},
        {csi('u', 0, ' '), 3, &Emulation::bellVolume},
        {csi('u', 0, '&'), 3, &Emulation::decrqupss},
        {csi('u', 0, '$'), 3, &Emulation::decrqtsr},
        {csi('P', 0, '#'), 1, &Emulation::pushColors},
        {csi('Q', 0, '#'), 1, &Emulation::popColors},
        {csi('R', 0, '#'), 1, &Emulation::reportColors},
        {csi('v', 0, '$'), 4, &Emulation::deccra},
        {csi('v', 0, '"'), 3, &Emulation::decrqde},
        {csi('w', 0, '$'), 3, &Emulation::decrqpsr},
        {csi('x'), 1, &Emulation::decreqtparm},
        {csi('x', 0, '$'), 4, &Emulation::decfra},
        {csi('x', 0, '*'), 4, &Emulation::decsace},
        {csi('y', 0, '*'), 4, &Emulation::decrqcra},
        {csi('y', 0, '#'), 1, &Emulation::xtchecksum},
        {csi('z', 0, '$'), 4, &Emulation::decera},
        {csi('z', 0, '\''), 4, &Emulation::decelr},
        {csi('{', 0, '\''), 4, &Emulation::decsle},
        {csi('w', 0, '\''), 4, &Emulation::decefr},
        {csi('{', 0, '$'), 4, &Emulation::decsera},
        {csi('{', 0, '#'), 1, &Emulation::pushSgr},
        {csi('p', 0, '#'), 1, &Emulation::pushSgr},
        {csi('|', 0, '#'), 1, &Emulation::reportSgr},
        {csi('|', 0, '$'), 3, &Emulation::decscpp},
        {csi('|', 0, '*'), 4, &Emulation::decsnls},
        {csi('|', 0, '\''), 4, &Emulation::decrqlp},
        {csi('}', 0, '#'), 1, &Emulation::popSgr},
        {csi('q', 0, '#'), 1, &Emulation::popSgr},
        {csi('}', 0, '\''), 4, &Emulation::decic},
        {csi('}', 0, '$'), 2, &Emulation::decsasd},
        {csi('~', 0, '\''), 4, &Emulation::decdc},
        {csi('~', 0, '$'), 2, &Emulation::decssdt},
    };
    return table;
}

const std::vector<Emulation::Entry> &Emulation::escapeTable()
{
    static const std::vector<Entry> table = {
        {esc('6'), 4, &Emulation::decbi},         {esc('7'), 1, &Emulation::decsc},
        {esc('8'), 1, &Emulation::decrc},         {esc('9'), 4, &Emulation::decfi},
        {esc('='), 1, &Emulation::deckpam},       {esc('>'), 1, &Emulation::deckpnm},
        {esc('D'), 1, &Emulation::ind},           {esc('E'), 1, &Emulation::nel},
        {esc('H'), 1, &Emulation::hts},           {esc('M'), 1, &Emulation::ri},
        {esc('N'), 1, &Emulation::singleShift},   {esc('O'), 1, &Emulation::singleShift},
        {esc('V'), 1, &Emulation::spa},           {esc('W'), 1, &Emulation::epa},
        {esc('Z'), 1, &Emulation::decid},         {esc('c'), 1, &Emulation::ris},
        {esc('n'), 1, &Emulation::lockingShift},  {esc('o'), 1, &Emulation::lockingShift},
        {esc('|'), 1, &Emulation::lockingShift},  {esc('}'), 1, &Emulation::lockingShift},
        {esc('~'), 1, &Emulation::lockingShift},  {esc('3', '#'), 1, &Emulation::lineSize},
        {esc('4', '#'), 1, &Emulation::lineSize}, {esc('5', '#'), 1, &Emulation::lineSize},
        {esc('6', '#'), 1, &Emulation::lineSize}, {esc('8', '#'), 1, &Emulation::decaln},
        {esc('F', ' '), 2, &Emulation::s7c1t},    {esc('G', ' '), 2, &Emulation::s8c1t},
        {esc('G', '%'), 1, &Emulation::docs},     {esc('@', '%'), 1, &Emulation::docs},
    };
    return table;
}

void Emulation::buildDirect()
{
    m_directControls = {};
    m_privateControls = {};
    m_directEscapes = {};
    for (const Entry &entry : controlTable()) {
        if (m_statusDisplayActive && touchesPage(entry.key, false)) {
            continue;
        }
        const uint32_t final = (entry.key & 0xff) - 0x40;
        if ((entry.key & ~0xffu) == 0) {
            m_directControls[final] = entry.handler;
        } else if ((entry.key & ~0xffu) == Sequence::key('?', 0, 0, 0)) {
            m_privateControls[final] = &entry;
        }
    }
    for (const Entry &entry : escapeTable()) {
        if (m_statusDisplayActive && touchesPage(entry.key, true)) {
            continue;
        }
        if ((entry.key & ~0xffu) == 0) {
            m_directEscapes[entry.key & 0x7f] = entry.handler;
        }
    }
}

void Emulation::control(const Sequence &s)
{
    m_segmenter.reset();
    m_afterPrepend = false;
    if (s.prefix == 0 && s.intermediateCount == 0) {
        plainControl(s);
        return;
    }
    if (s.prefix == '?' && s.intermediateCount == 0) {
        const Entry *entry = m_privateControls[static_cast<unsigned char>(s.final) - 0x40u];
        if (entry && m_level >= entry->level) {
            (this->*entry->handler)(s);
        }
        return;
    }
    static const std::unordered_map<uint32_t, const Entry *> known = [] {
        std::unordered_map<uint32_t, const Entry *> map;
        for (const Entry &entry : controlTable()) {
            map.emplace(entry.key, &entry);
        }
        return map;
    }();
    const auto found = known.find(s.key());
    if (m_statusDisplayActive && touchesPage(s.key(), false)) {
        return;
    }
    if (found != known.end() && m_level >= found->second->level) {
        (this->*found->second->handler)(s);
    }
}

void Emulation::escape(const Sequence &s)
{
    m_segmenter.reset();
    m_afterPrepend = false;
    if (s.intermediateCount == 0 && s.prefix == 0) {
        const Handler handler = m_directEscapes[static_cast<unsigned char>(s.final) & 0x7f];
        if (handler && (m_level >= 4 || (s.final != '6' && s.final != '9'))) {
            (this->*handler)(s);
        }
        return;
    }
    if (m_statusDisplayActive && touchesPage(s.key(), true)) {
        return;
    }
    const auto &table = escapeTable();
    const auto found =
        std::find_if(table.begin(), table.end(), [key = s.key()](const Entry &entry) { return entry.key == key; });
    if (found != table.end()) {
        if (m_level >= found->level) {
            (this->*found->handler)(s);
        }
    } else if (s.intermediateCount > 0) {
        designate(s);
    }
}

void Emulation::execute(uint8_t control)
{
    m_segmenter.reset();
    m_afterPrepend = false;
    if (m_statusDisplayActive && control >= 0x08 && control <= 0x0d) {
        return;
    }
    switch (control) {
    case 0x05: // ENQ: the answerback message is empty
        break;
    case 0x07:
        emitEvent({Event::Kind::Bell, {}, {}});
        break;
    case 0x08:
        cursorBack(1);
        break;
    case 0x09:
        if (m_pendingWrap && mode(Mode::MoreFix)) {
            wrap();
        }
        tabForward(1);
        break;
    case 0x0a:
    case 0x0b:
    case 0x0c:
        lineFeed();
        break;
    case 0x0d:
        carriageReturn();
        break;
    case 0x0e:
        m_charsets.left = 1;
        updateTextPath();
        break;
    case 0x0f:
        m_charsets.left = 0;
        updateTextPath();
        break;
    default:
        break;
    }
}

void Emulation::vt52(char final)
{
    m_segmenter.reset();
    if (m_statusDisplayActive && std::string_view("ABCDHIJK").find(final) != std::string_view::npos) {
        return;
    }
    switch (final) {
    case 'A':
        cursorUp(1);
        break;
    case 'B':
        cursorDown(1);
        break;
    case 'C':
        cursorForward(1);
        break;
    case 'D':
        cursorBack(1);
        break;
    case 'F':
        m_charsets.designated[m_charsets.left] = Charset::DecSpecial;
        updateTextPath();
        break;
    case 'G':
        m_charsets.designated[m_charsets.left] = Charset::Ascii;
        updateTextPath();
        break;
    case 'H':
        moveTo(0, 0);
        break;
    case 'I':
        reverseIndex();
        break;
    case 'J':
        eraseDisplay(0, Erase::Plain);
        break;
    case 'K':
        eraseLine(0, Erase::Plain);
        break;
    case 'Z':
        reply("\x1b/Z");
        break;
    case '=':
    case '>':
        m_keypadApplication = final == '=';
        break;
    case '<':
        setMode(Mode::Ansi, true);
        break;
    default:
        break;
    }
}

void Emulation::vt52Address(int row, int column)
{
    if (!m_statusDisplayActive) {
        moveTo(column, row);
    }
}

void Emulation::emitEvent(Event event)
{
    using Kind = Event::Kind;
    const bool merges = event.kind != Kind::ClipboardWrite && event.kind != Kind::Notification &&
                        event.kind != Kind::Mark && event.kind != Kind::Window;
    if (merges) {
        // Only the last of a kind matters; looking back a little is enough to keep floods small.
        const size_t depth = std::min<size_t>(m_events.size(), 16);
        for (size_t back = 0; back < depth; ++back) {
            Event &known = m_events[m_events.size() - 1 - back];
            if (known.kind == event.kind) {
                known = std::move(event);
                return;
            }
        }
    }
    if (m_events.size() < MaxEvents) {
        m_events.push_back(std::move(event));
    }
}

} // namespace vt
