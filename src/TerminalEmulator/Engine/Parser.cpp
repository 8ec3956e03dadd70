#include "TerminalEmulator/Engine/Parser.h"

#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>

namespace vt
{

/// What a seven-bit byte does in each state. Controls that act in any state (CAN, SUB, ESC) and the strings' own
/// bytes are not in it.
struct Parser::Table {
    struct Entry {
        Action action = None;
        State next = Ground;
    };

    Entry entries[StateCount][128];

    constexpr void set(State state, int first, int last, Action action, State next)
    {
        for (int byte = first; byte <= last; ++byte) {
            entries[state][byte] = {action, next};
        }
    }

    constexpr void setSequence(State entry, State params, State intermediate, Entry ignore, Action dispatch,
                               State after)
    {
        set(entry, 0x20, 0x2f, Collect, intermediate);
        set(entry, 0x30, 0x3b, Param, params);
        set(entry, 0x3c, 0x3f, Collect, params);
        set(entry, 0x40, 0x7e, dispatch, after);
        set(params, 0x20, 0x2f, Collect, intermediate);
        set(params, 0x30, 0x3b, Param, params);
        set(params, 0x3c, 0x3f, ignore.action, ignore.next);
        set(params, 0x40, 0x7e, dispatch, after);
        set(intermediate, 0x20, 0x2f, Collect, intermediate);
        set(intermediate, 0x30, 0x3f, ignore.action, ignore.next);
        set(intermediate, 0x40, 0x7e, dispatch, after);
    }

    constexpr Table()
        : entries()
    {
        for (int state = 0; state < StateCount; ++state) {
            const auto each = static_cast<State>(state);
            set(each, 0x00, 0x1f, Execute, each);
            set(each, 0x20, 0x7f, None, each);
        }
        for (const State each : {DcsEntry, DcsParam, DcsIntermediate}) {
            set(each, 0x00, 0x1f, None, each);
        }
        set(Escape, 0x20, 0x2f, Collect, EscapeIntermediate);
        set(Escape, 0x30, 0x7e, EscDispatch, Ground);
        set(Escape, 'P', 'P', Clear, DcsEntry);
        set(Escape, '[', '[', Clear, CsiEntry);
        set(Escape, ']', ']', StartString, OscString);
        set(Escape, 'X', 'X', StartString, OtherString);
        set(Escape, '^', '_', StartString, OtherString);
        set(EscapeIntermediate, 0x20, 0x2f, Collect, EscapeIntermediate);
        set(EscapeIntermediate, 0x30, 0x7e, EscDispatch, Ground);
        setSequence(CsiEntry, CsiParam, CsiIntermediate, {None, CsiIgnore}, CsiDispatch, Ground);
        set(CsiIgnore, 0x20, 0x3f, None, CsiIgnore);
        set(CsiIgnore, 0x40, 0x7e, None, Ground);
        // What follows a header that is none is a string all the same.
        setSequence(DcsEntry, DcsParam, DcsIntermediate, {StartString, OtherString}, Hook, DcsPassthrough);
    }
};

constexpr Parser::Table Parser::table;

void Parser::reset()
{
    m_state = Ground;
    m_stringPending = false;
    m_vt52Wants = 0;
    dropString();
}

void Parser::feed(const uint8_t *at, const uint8_t *end)
{
    while (at < end) {
        switch (m_state) {
        case Ground: {
            if (m_vt52Wants != 0) {
                vt52(*at++);
                break;
            }
            if (*at >= 0x20 || m_sink.isDecoding()) {
                at = m_sink.text(at, end);
                if (at == end || m_state != Ground || *at >= 0x20) {
                    break;
                }
            }
            const uint8_t byte = *at++;
            if (byte != 0x1b) {
                m_sink.execute(byte);
                break;
            }
            clear();
            if (at == end || m_vt52) {
                m_state = Escape;
            } else if (*at != '[') {
                const Table::Entry entry = table.entries[Escape][*at & 0x7f];
                if (*at < 0x80 && entry.action == EscDispatch) {
                    m_sequence.final = static_cast<char>(*at++);
                    m_sink.escape(m_sequence);
                } else {
                    m_state = Escape;
                }
            } else if (const uint8_t *after = wholeSequence(at + 1, end)) {
                at = after;
            } else {
                m_state = CsiEntry;
                at = sequence(at + 1, end);
            }
            break;
        }
        case OscString:
        case OtherString:
        case DcsPassthrough:
            at = string(at, end);
            break;
        default:
            at = sequence(at, end);
        }
    }
}

/// Most control sequences are some numbers and a final byte, all in one block. Dispatches such a one, whose
/// parameters begin at `at`, and returns where it ends; null if it is any other.
const uint8_t *Parser::wholeSequence(const uint8_t *at, const uint8_t *end)
{
    Sequence &s = m_sequence;
    int count = 0;
    for (; at < end; ++at) {
        unsigned digit = *at - unsigned{'0'};
        if (digit < 10) {
            if (end - at < 4) {
                return nullptr;
            }
            // Up to three digits without a branch that depends on how many there are.
            const unsigned second = at[1] - unsigned{'0'};
            const unsigned third = at[2] - unsigned{'0'};
            const auto two = static_cast<unsigned>(second < 10);
            const unsigned three = two & static_cast<unsigned>(third < 10);
            unsigned number = digit * (1 + 9 * two) + second * two;
            number = number * (1 + 9 * three) + third * three;
            at += 1 + two + three;
            auto value = static_cast<int32_t>(number);
            while ((digit = *at - unsigned{'0'}) < 10 && value < 100'000'000) {
                value = value * 10 + static_cast<int32_t>(digit);
                if (++at == end) {
                    return nullptr;
                }
            }
            s.values[count++] = value;
            if (*at == ';' && count < Sequence::MaxParameters) {
                s.values[count] = Sequence::Absent;
                if (at + 1 < end && *(at + 1) - unsigned{'0'} < 10) {
                    continue;
                }
                ++count;
                ++at;
            }
        }
        break;
    }
    if (at == end || *at < 0x40 || *at > 0x7e) {
        return nullptr;
    }
    s.count = count;
    s.final = static_cast<char>(*at);
    m_sink.plainControl(s);
    return at + 1;
}

const uint8_t *Parser::sequence(const uint8_t *at, const uint8_t *end)
{
    // Parameters are what most bytes of most sequences are.
    if (m_state == CsiParam || m_state == CsiEntry) {
        if (at < end && *at >= '0' && *at <= ';') {
            m_state = CsiParam;
            at = parameters(at, end);
        }
        if (at == end) {
            return at;
        }
        if (*at >= 0x40 && *at < 0x7f) {
            m_state = Ground;
            m_sequence.final = static_cast<char>(*at);
            if (m_sequence.prefix == 0) {
                m_sink.plainControl(m_sequence);
            } else {
                m_sink.control(m_sequence);
            }
            return at + 1;
        }
    }
    if (at == end) {
        return at;
    }
    const uint8_t byte = *at;
    if (byte >= 0x80) {
        if (byte < 0xa0 && takesEightBitControls()) {
            dropString();
            m_state = Ground;
            m_stringPending = false;
            control1(byte);
            return at + 1;
        }
        if (m_state >= DcsEntry && m_state <= DcsIntermediate) {
            startString(OtherString);
            return at;
        }
        // Not a byte a sequence can have: it is text, and the sequence was none.
        dropString();
        m_stringPending = false;
        m_state = Ground;
        return at;
    }
    step(byte);
    return at + 1;
}

void Parser::step(uint8_t byte)
{
    if (m_state == Escape) {
        if (m_stringPending) {
            m_stringPending = false;
            if (byte == '\\') {
                m_state = m_stringState;
                finishString(false);
                return;
            }
            dropString();
        }
        if (m_vt52 && byte >= 0x20) {
            m_state = Ground;
            vt52(byte);
            return;
        }
    }
    if (byte == 0x1b) {
        clear();
        m_state = Escape;
        return;
    }
    if (byte == 0x18 || byte == 0x1a) {
        m_state = Ground;
        m_sink.execute(byte);
        return;
    }
    const Table::Entry entry = table.entries[m_state][byte];
    m_state = entry.next;
    switch (entry.action) {
    case None:
        break;
    case Execute:
        m_sink.execute(byte);
        break;
    case Collect:
        collect(byte);
        break;
    case Param:
        parameter(byte);
        break;
    case EscDispatch:
        m_sequence.final = static_cast<char>(byte);
        m_sink.escape(m_sequence);
        break;
    case CsiDispatch:
        m_sequence.final = static_cast<char>(byte);
        m_sink.control(m_sequence);
        break;
    case Hook:
        m_sequence.final = static_cast<char>(byte);
        startString(DcsPassthrough);
        break;
    case Clear:
        clear();
        break;
    case StartString:
        startString(entry.next);
        break;
    }
}

void Parser::clear()
{
    m_tooMany = false;
    m_sequence.count = 0;
    m_sequence.colons = 0;
    m_sequence.prefix = 0;
    m_sequence.intermediates[0] = 0;
    m_sequence.intermediates[1] = 0;
    m_sequence.intermediateCount = 0;
}

void Parser::collect(uint8_t byte)
{
    if (byte >= 0x3c) {
        m_sequence.prefix = static_cast<char>(byte);
    } else if (m_sequence.intermediateCount < 2) {
        m_sequence.intermediates[m_sequence.intermediateCount++] = static_cast<char>(byte);
    } else {
        // No function has three intermediates.
        m_sequence.intermediates[1] = static_cast<char>(0x7f);
    }
}

/// All parameter bytes from `at` on.
const uint8_t *Parser::parameters(const uint8_t *at, const uint8_t *end)
{
    Sequence &s = m_sequence;
    while (at < end && *at >= '0' && *at <= ';') {
        if (*at > '9' || s.count == 0 || m_tooMany) {
            parameter(*at++);
            continue;
        }
        int32_t value = s.values[s.count - 1];
        for (unsigned digit; at < end && (digit = *at - unsigned{'0'}) < 10; ++at) {
            value = value < 0             ? static_cast<int32_t>(digit)
                    : value < 100'000'000 ? value * 10 + static_cast<int32_t>(digit)
                                          : value;
        }
        s.values[s.count - 1] = value;
    }
    return at;
}

void Parser::parameter(uint8_t byte)
{
    Sequence &s = m_sequence;
    if (s.count == 0) {
        s.count = 1;
        s.values[0] = Sequence::Absent;
    }
    if (byte >= ':') {
        m_tooMany = m_tooMany || s.count == Sequence::MaxParameters;
        if (!m_tooMany) {
            s.colons |= byte == ':' ? uint64_t{1} << s.count : 0;
            s.values[s.count++] = Sequence::Absent;
        }
        return;
    }
    if (m_tooMany) {
        return;
    }
    int32_t &value = s.values[s.count - 1];
    const int digit = byte - '0';
    value = value == Sequence::Absent ? digit : value < 100'000'000 ? value * 10 + digit : value;
}

void Parser::control1(uint8_t code)
{
    clear();
    switch (code) {
    case 0x90:
        m_state = DcsEntry;
        break;
    case 0x9b:
        m_state = CsiEntry;
        break;
    case 0x9d:
        startString(OscString);
        break;
    case 0x98:
    case 0x9e:
    case 0x9f:
        startString(OtherString);
        break;
    default:
        m_sequence.final = static_cast<char>(code - 0x40);
        m_state = Ground;
        m_sink.escape(m_sequence);
    }
}

void Parser::startString(State state)
{
    m_state = state;
    m_string.clear();
    m_tooLong = false;
    m_continuations = 0;
    m_leadC2 = false;
}

void Parser::dropString()
{
    m_string.clear();
    if (m_string.capacity() > 65536) {
        std::string().swap(m_string);
    }
    m_tooLong = false;
}

void Parser::finishString(bool bell)
{
    const State state = m_state;
    m_state = Ground;
    if (!m_tooLong && state == OscString) {
        m_sink.operatingSystemCommand(m_string, bell);
    } else if (!m_tooLong && state == DcsPassthrough) {
        m_sink.deviceControl(m_sequence, m_string);
    }
    dropString();
}

void Parser::append(const uint8_t *from, const uint8_t *to)
{
    if (m_state == OtherString || m_tooLong) {
        return;
    }
    if (m_string.size() + static_cast<size_t>(to - from) > MaxString) {
        dropString();
        m_tooLong = true;
        return;
    }
    m_string.append(reinterpret_cast<const char *>(from), static_cast<size_t>(to - from));
}

/// A control inside a string. Returns whether the string goes on.
bool Parser::stringControl(uint8_t byte)
{
    switch (byte) {
    case 0x1b:
        m_stringPending = true;
        m_stringState = m_state;
        m_state = Escape;
        return false;
    case 0x18:
    case 0x1a:
        dropString();
        m_state = Ground;
        m_sink.execute(byte);
        return false;
    case 0x07:
        if (m_state == OscString) {
            finishString(true);
            return false;
        }
        return true;
    case 0x9c:
        finishString(false);
        return false;
    default:
        if (byte >= 0x80) {
            dropString();
            control1(byte);
            return false;
        }
        return true;
    }
}

const uint8_t *Parser::string(const uint8_t *at, const uint8_t *end)
{
    const uint8_t *start = at;
    for (; at < end; ++at) {
        const uint8_t byte = *at;
        if (byte >= 0x20 && byte < 0x80) {
            m_continuations = 0;
            m_leadC2 = false;
            continue;
        }
        if (byte >= 0xa0 || (byte >= 0x80 && m_continuations > 0 && !m_leadC2)) {
            m_leadC2 = m_utf8 && byte == 0xc2;
            if (byte >= 0xc0) {
                m_continuations = !m_utf8 ? 0 : byte >= 0xf0 ? 3 : byte >= 0xe0 ? 2 : 1;
            } else if (m_continuations > 0) {
                --m_continuations;
            }
            continue;
        }
        if (byte >= 0x80 && !m_leadC2 && !takesEightBitControls()) {
            continue;
        }
        append(start, at);
        if (m_leadC2 && byte >= 0x80 && !m_string.empty()) {
            m_string.pop_back();
        }
        m_leadC2 = false;
        m_continuations = 0;
        // Other controls belong to a device control string, and are dropped from the rest.
        const bool keep = byte < 0x80 && m_state == DcsPassthrough;
        start = keep ? at : at + 1;
        if (!stringControl(byte)) {
            return at + 1;
        }
    }
    append(start, at);
    return at;
}

void Parser::vt52(uint8_t byte)
{
    if (m_vt52Wants == 2) {
        m_vt52Row = byte;
        m_vt52Wants = 1;
    } else if (m_vt52Wants == 1) {
        m_vt52Wants = 0;
        m_sink.vt52Address(m_vt52Row - 0x20, byte - 0x20);
    } else if (byte == 'Y') {
        m_vt52Wants = 2;
    } else {
        m_sink.vt52(static_cast<char>(byte));
    }
}

} // namespace vt
