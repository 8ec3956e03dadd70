#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vt
{

/// One escape or control sequence, as ECMA-48 takes it apart.
struct Sequence {
    static constexpr int MaxParameters = 64;
    static constexpr int32_t Absent = -1;

    int count = 0;       ///< parameters given, sub-parameters included
    uint64_t colons = 0; ///< bit n: parameter n followed a colon and belongs to the one before it
    int32_t values[MaxParameters] = {};
    char prefix = 0; ///< one of < = > ? or 0
    char intermediates[2] = {};
    uint8_t intermediateCount = 0;
    char final = 0;

    /// Parameter `index`, or `fallback` if it was left out.
    int value(int index, int fallback = 0) const
    {
        return index < count && values[index] != Absent ? values[index] : fallback;
    }

    /// The same for counts and positions, where 0 means 1.
    int atLeastOne(int index) const
    {
        const int given = value(index, 1);
        return given > 0 ? given : 1;
    }

    bool isSub(int index) const { return (colons >> index & 1) != 0; }

    /// Prefix, intermediates and final byte in one number, to look handlers up by.
    static constexpr uint32_t key(char prefix, char first, char second, char final)
    {
        return static_cast<uint32_t>(static_cast<unsigned char>(prefix)) << 24 |
               static_cast<uint32_t>(static_cast<unsigned char>(first)) << 16 |
               static_cast<uint32_t>(static_cast<unsigned char>(second)) << 8 | static_cast<unsigned char>(final);
    }

    uint32_t key() const { return key(prefix, intermediates[0], intermediates[1], final); }
};

class Emulation;

/// Takes a byte stream apart: text, control characters, sequences and strings. It follows the state diagram of DEC's
/// VT500 family as Paul Williams published it, with UTF-8 in the ground state and inside strings. Every byte
/// string is acceptable, and may come in pieces of any size.
class Parser
{
public:
    /// Bytes a string (OSC, DCS) can have; a longer one is dropped whole, without being kept.
    static constexpr size_t MaxString = 4 * 1024 * 1024;

    explicit Parser(Emulation &sink)
        : m_sink(sink)
    {
    }

    void feed(const uint8_t *at, const uint8_t *end);

    /// A C1 control (0x80 to 0x9f), however it was encoded.
    void control1(uint8_t code);

    /// Whether single bytes 0x80 to 0x9f are C1 controls. Otherwise they are malformed UTF-8.
    void setEightBitControls(bool on) { m_eightBit = on; }

    /// Whether text is UTF-8; if not, bytes from 0xa0 are characters of the right-hand set.
    void setUtf8(bool on) { m_utf8 = on; }

    bool isUtf8() const { return m_utf8; }

    bool takesEightBitControls() const { return m_eightBit || !m_utf8; }

    /// VT52 mode: escape sequences are those of that terminal.
    void setVt52(bool on) { m_vt52 = on; }

    bool isInSequence() const { return m_state != Ground; }

    /// Back to the ground state; whatever was under way is dropped.
    void reset();

private:
    enum State : uint8_t {
        Ground,
        Escape,
        EscapeIntermediate,
        CsiEntry,
        CsiParam,
        CsiIntermediate,
        CsiIgnore,
        DcsEntry,
        DcsParam,
        DcsIntermediate,
        DcsPassthrough,
        OscString,
        OtherString,
        StateCount,
    };

    enum Action : uint8_t { None, Execute, Collect, Param, EscDispatch, CsiDispatch, Hook, Clear, StartString };
    struct Table;
    static const Table table;

    void step(uint8_t byte);
    const uint8_t *wholeSequence(const uint8_t *at, const uint8_t *end);
    const uint8_t *sequence(const uint8_t *at, const uint8_t *end);
    const uint8_t *string(const uint8_t *at, const uint8_t *end);
    bool stringControl(uint8_t byte);
    void vt52(uint8_t byte);
    void clear();
    void collect(uint8_t byte);
    void parameter(uint8_t byte);
    const uint8_t *parameters(const uint8_t *at, const uint8_t *end);
    void append(const uint8_t *from, const uint8_t *to);
    void startString(State state);
    void finishString(bool bell);
    void dropString();

    Emulation &m_sink;
    State m_state = Ground;
    bool m_eightBit = false;
    bool m_utf8 = true;
    bool m_vt52 = false;
    uint8_t m_vt52Wants = 0; ///< bytes still to come of a VT52 cursor address
    uint8_t m_vt52Row = 0;
    bool m_stringPending = false; ///< an escape came inside a string: a backslash now ends it
    State m_stringState = Ground;
    uint8_t m_continuations = 0; ///< UTF-8 bytes still to come inside a string
    bool m_leadC2 = false;       ///< the last byte of the string was 0xc2: a C1 control may follow
    bool m_tooLong = false;
    bool m_tooMany = false; ///< more parameters than a sequence can hold: the rest is ignored
    Sequence m_sequence;
    std::string m_string;
};

} // namespace vt
