#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace vt
{

/// Regular expressions over code points, matched in time proportional to text times pattern, whatever they are:
/// all ways through the pattern are followed side by side. There are no groups to read out and no back references.
///
/// Grammar: literals; . any; [a-z] [^a-z]; \d \w \s \D \W \S; \b \B; ^ $; ( ) | ; * + ? {m} {m,} {m,n}, and the same
/// with ? behind to match as little as possible; \t \n \xHH; \ before anything else means itself.
class Regex
{
public:
    /// Instructions a pattern can have once its repetitions are written out.
    static constexpr size_t MaxProgram = 10'000;

    /// Nothing if the pattern cannot be read or is too large.
    static std::optional<Regex> compile(std::u32string_view pattern, bool caseSensitive);

    /// Begin and end of the first match at or behind `from`; an empty match counts.
    std::optional<std::pair<size_t, size_t>> find(std::u32string_view text, size_t from) const;

private:
    friend class RegexCompiler;
    enum class Op : uint8_t { Char, Any, Set, Split, Jump, LineBegin, LineEnd, WordEdge, NotWordEdge, Match };

    struct Instruction {
        Op op;
        uint32_t x = 0; ///< code point, set number or target
        uint32_t y = 0; ///< second target of Split, which prefers x
    };

    struct Set {
        std::vector<std::pair<char32_t, char32_t>> ranges;
        std::vector<char32_t> classes; ///< d w s D W S
        bool negated = false;
    };

    struct Thread {
        uint32_t at;
        size_t start;
    };
    struct Threads;

    void follow(Threads &threads, uint32_t at, size_t start, std::u32string_view text, size_t position) const;
    bool accepts(const Instruction &instruction, char32_t character) const;
    static bool inClass(char32_t kind, char32_t character);
    bool inSet(const Set &set, char32_t character) const;

    std::vector<Instruction> m_program;
    std::vector<Set> m_sets;
    bool m_fold = false;
};

} // namespace vt
