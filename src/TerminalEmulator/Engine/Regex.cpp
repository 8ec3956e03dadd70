#include "TerminalEmulator/Engine/Regex.h"

#include "TerminalEmulator/Engine/Unicode.h"

#include <algorithm>

namespace vt
{

namespace
{

bool isWord(char32_t character)
{
    return unicode::property(character).isWord();
}

bool edgeAt(std::u32string_view text, size_t position)
{
    const bool before = position > 0 && isWord(text[position - 1]);
    const bool after = position < text.size() && isWord(text[position]);
    return before != after;
}

} // namespace

/// Recursive descent over the pattern; each part appends its instructions.
class RegexCompiler
{
public:
    RegexCompiler(std::u32string_view pattern, Regex &out)
        : m_pattern(pattern)
        , m_out(out)
    {
    }

    bool run()
    {
        alternatives();
        if (m_at != m_pattern.size()) {
            m_good = false;
        }
        emit({Regex::Op::Match});
        return m_good;
    }

private:
    using Op = Regex::Op;

    bool atEnd() const { return m_at >= m_pattern.size(); }

    bool accept(char32_t character)
    {
        const bool there = !atEnd() && m_pattern[m_at] == character;
        m_at += there ? 1 : 0;
        return there;
    }

    uint32_t here() const { return static_cast<uint32_t>(m_out.m_program.size()); }

    uint32_t emit(Regex::Instruction instruction)
    {
        if (m_out.m_program.size() >= Regex::MaxProgram) {
            m_good = false;
            return 0;
        }
        m_out.m_program.push_back(instruction);
        return here() - 1;
    }

    void alternatives()
    {
        if (++m_depth > 64) {
            m_good = false;
            return;
        }
        // A second alternative and those behind it are an alternation of their own: splits nest to the right.
        const uint32_t start = here();
        sequence();
        if (m_good && accept('|')) {
            insert(start, {Op::Split, 0, 0});
            const uint32_t leave = emit({Op::Jump});
            if (m_good) {
                m_out.m_program[start] = {Op::Split, start + 1, here()};
                alternatives();
                m_out.m_program[leave].x = here();
            }
        }
        --m_depth;
    }

    void sequence()
    {
        while (m_good && !atEnd() && m_pattern[m_at] != '|' && m_pattern[m_at] != ')') {
            repeated();
        }
    }

    void repeated()
    {
        const uint32_t start = here();
        atom();
        while (m_good && !atEnd()) {
            uint32_t least = 0;
            uint32_t most = Unlimited;
            const size_t before = m_at;
            if (accept('*')) {
            } else if (accept('+')) {
                least = 1;
            } else if (accept('?')) {
                most = 1;
            } else if (!accept('{') || !bounds(least, most)) {
                m_at = before;
                return;
            }
            repeat(start, least, most, accept('?'));
        }
    }

    bool bounds(uint32_t &least, uint32_t &most)
    {
        const size_t before = m_at;
        least = decimal();
        if (m_at == before) {
            return false;
        }
        most = least;
        if (accept(',')) {
            const size_t second = m_at;
            most = decimal();
            most = m_at == second ? Unlimited : most;
        }
        if (!accept('}')) {
            return false;
        }
        m_good = m_good && most >= least;
        return true;
    }

    uint32_t decimal()
    {
        uint32_t value = 0;
        while (!atEnd() && m_pattern[m_at] >= '0' && m_pattern[m_at] <= '9') {
            value = std::min<uint32_t>(value * 10 + (m_pattern[m_at++] - '0'), 1000);
        }
        return value;
    }

    void insert(uint32_t at, Regex::Instruction instruction)
    {
        auto &program = m_out.m_program;
        if (program.size() >= Regex::MaxProgram) {
            m_good = false;
            return;
        }
        program.insert(program.begin() + at, instruction);
        for (uint32_t each = at + 1; each < program.size(); ++each) {
            shift(program[each], at, 1);
        }
    }

    /// Targets at or behind `from` moved by `distance`.
    static void shift(Regex::Instruction &instruction, uint32_t from, uint32_t distance)
    {
        if (instruction.op == Op::Split || instruction.op == Op::Jump) {
            instruction.x += instruction.x >= from ? distance : 0;
            instruction.y += instruction.op == Op::Split && instruction.y >= from ? distance : 0;
        }
    }

    void append(const std::vector<Regex::Instruction> &part, uint32_t from)
    {
        const uint32_t distance = here() - from;
        for (Regex::Instruction each : part) {
            shift(each, from, distance);
            emit(each);
        }
    }

    /// Writes the part from `start` on out as often as it must be there, and then as often as it may.
    void repeat(uint32_t start, uint32_t least, uint32_t most, bool lazy)
    {
        const std::vector<Regex::Instruction> part(m_out.m_program.begin() + start, m_out.m_program.end());
        m_out.m_program.resize(start);
        for (uint32_t count = 0; m_good && count < least; ++count) {
            append(part, start);
        }
        const auto split = [&](uint32_t into, uint32_t past) {
            return lazy ? Regex::Instruction{Op::Split, past, into} : Regex::Instruction{Op::Split, into, past};
        };
        if (most == Unlimited) {
            const uint32_t loop = emit({Op::Split});
            append(part, start);
            emit({Op::Jump, loop});
            m_out.m_program[loop] = split(loop + 1, here());
            return;
        }
        std::vector<uint32_t> splits;
        for (uint32_t count = least; m_good && count < most; ++count) {
            splits.push_back(emit({Op::Split}));
            append(part, start);
        }
        for (const uint32_t each : splits) {
            m_out.m_program[each] = split(each + 1, here());
        }
    }

    void atom()
    {
        const char32_t character = m_pattern[m_at++];
        switch (character) {
        case '(':
            if (accept('?') && !accept(':')) {
                m_good = false;
            }
            alternatives();
            m_good = accept(')') && m_good;
            break;
        case '.':
            emit({Op::Any});
            break;
        case '[':
            set();
            break;
        case '^':
            emit({Op::LineBegin});
            break;
        case '$':
            emit({Op::LineEnd});
            break;
        case '\\':
            escape();
            break;
        case '*':
        case '+':
        case '?':
            m_good = false;
            break;
        default:
            literal(character);
        }
    }

    void literal(char32_t character) { emit({Op::Char, m_out.m_fold ? unicode::fold(character) : character}); }

    static bool isClass(char32_t character)
    {
        return std::u32string_view(U"dwsDWS").find(character) != std::u32string_view::npos;
    }

    char32_t escaped(char32_t character)
    {
        switch (character) {
        case 't':
            return '\t';
        case 'n':
            return '\n';
        case 'x': {
            char32_t value = 0;
            for (int digit = 0; digit < 2 && !atEnd(); ++digit) {
                const char32_t each = m_pattern[m_at];
                const int part = each >= '0' && each <= '9'   ? static_cast<int>(each - '0')
                                 : each >= 'a' && each <= 'f' ? static_cast<int>(each - 'a' + 10)
                                 : each >= 'A' && each <= 'F' ? static_cast<int>(each - 'A' + 10)
                                                              : -1;
                if (part < 0) {
                    break;
                }
                value = value * 16 + static_cast<char32_t>(part);
                ++m_at;
            }
            return value;
        }
        default:
            return character;
        }
    }

    void escape()
    {
        if (atEnd()) {
            m_good = false;
            return;
        }
        const char32_t character = m_pattern[m_at++];
        if (character == 'b' || character == 'B') {
            emit({character == 'b' ? Op::WordEdge : Op::NotWordEdge});
        } else if (isClass(character)) {
            Regex::Set set;
            set.classes.push_back(character);
            addSet(std::move(set));
        } else {
            literal(escaped(character));
        }
    }

    void set()
    {
        Regex::Set set;
        set.negated = accept('^');
        for (bool first = true; !atEnd() && (first || m_pattern[m_at] != ']'); first = false) {
            char32_t low = m_pattern[m_at++];
            if (low == '\\' && !atEnd()) {
                low = m_pattern[m_at++];
                if (isClass(low)) {
                    set.classes.push_back(low);
                    continue;
                }
                low = escaped(low);
            }
            char32_t high = low;
            if (m_at + 1 < m_pattern.size() && m_pattern[m_at] == '-' && m_pattern[m_at + 1] != ']') {
                ++m_at;
                high = m_pattern[m_at++];
                if (high == '\\' && !atEnd()) {
                    high = escaped(m_pattern[m_at++]);
                }
                m_good = m_good && high >= low;
            }
            set.ranges.emplace_back(low, high);
        }
        m_good = accept(']') && m_good;
        addSet(std::move(set));
    }

    void addSet(Regex::Set set)
    {
        m_out.m_sets.push_back(std::move(set));
        emit({Op::Set, static_cast<uint32_t>(m_out.m_sets.size() - 1)});
    }

    static constexpr uint32_t Unlimited = ~0u;
    std::u32string_view m_pattern;
    Regex &m_out;
    size_t m_at = 0;
    int m_depth = 0;
    bool m_good = true;
};

/// The ways through the pattern at one position, in order of preference, each instruction at most once.
struct Regex::Threads {
    std::vector<Thread> list;
    std::vector<uint32_t> seen;
    uint32_t round = 0;
    std::vector<uint32_t> stack;

    explicit Threads(size_t size)
        : seen(size, 0)
    {
    }

    void clear()
    {
        list.clear();
        ++round;
    }
};

std::optional<Regex> Regex::compile(std::u32string_view pattern, bool caseSensitive)
{
    Regex result;
    result.m_fold = !caseSensitive;
    if (pattern.size() > MaxProgram || !RegexCompiler(pattern, result).run()) {
        return std::nullopt;
    }
    return result;
}

bool Regex::inClass(char32_t kind, char32_t character)
{
    switch (kind) {
    case 'd':
        return character >= '0' && character <= '9';
    case 'w':
        return isWord(character);
    case 's':
        return character == ' ' || character == '\t' || character == 0xa0 || character == 0x3000;
    default:
        return !inClass(kind + 32, character);
    }
}

bool Regex::inSet(const Set &set, char32_t character) const
{
    const auto contains = [&](char32_t each) {
        return std::any_of(set.ranges.begin(), set.ranges.end(),
                           [each](const auto &range) { return each >= range.first && each <= range.second; });
    };
    bool found = contains(character);
    if (!found && m_fold) {
        const char32_t folded = unicode::fold(character);
        // The other direction matters for ASCII only, where the upper case form is 32 below.
        found = contains(folded) || (folded >= 'a' && folded <= 'z' && contains(folded - 32));
    }
    found = found || std::any_of(set.classes.begin(), set.classes.end(),
                                 [character](char32_t kind) { return inClass(kind, character); });
    return found != set.negated;
}

bool Regex::accepts(const Instruction &instruction, char32_t character) const
{
    switch (instruction.op) {
    case Op::Char:
        return instruction.x == (m_fold ? unicode::fold(character) : character);
    case Op::Any:
        return true;
    case Op::Set:
        return inSet(m_sets[instruction.x], character);
    default:
        return false;
    }
}

void Regex::follow(Threads &threads, uint32_t at, size_t start, std::u32string_view text, size_t position) const
{
    threads.stack.assign(1, at);
    while (!threads.stack.empty()) {
        const uint32_t each = threads.stack.back();
        threads.stack.pop_back();
        if (threads.seen[each] == threads.round) {
            continue;
        }
        threads.seen[each] = threads.round;
        const Instruction &instruction = m_program[each];
        switch (instruction.op) {
        case Op::Jump:
            threads.stack.push_back(instruction.x);
            break;
        case Op::Split:
            threads.stack.push_back(instruction.y);
            threads.stack.push_back(instruction.x);
            break;
        case Op::LineBegin:
        case Op::LineEnd:
        case Op::WordEdge:
        case Op::NotWordEdge: {
            const bool holds = instruction.op == Op::LineBegin ? position == 0
                               : instruction.op == Op::LineEnd
                                   ? position == text.size()
                                   : edgeAt(text, position) == (instruction.op == Op::WordEdge);
            if (holds) {
                threads.stack.push_back(each + 1);
            }
            break;
        }
        default:
            threads.list.push_back({each, start});
        }
    }
}

std::optional<std::pair<size_t, size_t>> Regex::find(std::u32string_view text, size_t from) const
{
    Threads now(m_program.size());
    Threads next(m_program.size());
    now.clear();
    std::optional<std::pair<size_t, size_t>> found;
    for (size_t position = from; position <= text.size(); ++position) {
        if (!found) {
            follow(now, 0, position, text, position);
        }
        if (now.list.empty()) {
            if (found) {
                break;
            }
        }
        next.clear();
        for (const Thread &thread : now.list) {
            const Instruction &instruction = m_program[thread.at];
            if (instruction.op == Op::Match) {
                found = {thread.start, position};
                break; // what is less preferred is of no interest any more
            }
            if (position < text.size() && accepts(instruction, text[position])) {
                follow(next, thread.at + 1, thread.start, text, position + 1);
            }
        }
        std::swap(now, next);
    }
    return found;
}

} // namespace vt
