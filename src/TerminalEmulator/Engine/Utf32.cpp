#include "TerminalEmulator/Engine/Utf32.h"

#include "TerminalEmulator/Engine/Cell.h"

#include <cstdint>

namespace vt
{

std::u32string toUtf32(std::string_view utf8)
{
    std::u32string out;
    for (size_t at = 0; at < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[at++]);
        if (lead < 0x80) {
            out += lead;
            continue;
        }
        int need = lead >= 0xc2 && lead <= 0xdf   ? 1
                   : lead >= 0xe0 && lead <= 0xef ? 2
                   : lead >= 0xf0 && lead <= 0xf4 ? 3
                                                  : 0;
        char32_t value = lead & (0x3fu >> need);
        unsigned low = lead == 0xe0 ? 0xa0 : lead == 0xf0 ? 0x90 : 0x80;
        unsigned high = lead == 0xed ? 0x9f : lead == 0xf4 ? 0x8f : 0xbf;
        bool good = need > 0;
        for (; good && need > 0; --need) {
            const unsigned next = at < utf8.size() ? static_cast<unsigned char>(utf8[at]) : 0u;
            good = next >= low && next <= high;
            if (good) {
                value = value << 6 | (next & 0x3f);
                ++at;
            }
            low = 0x80;
            high = 0xbf;
        }
        out += good ? value : U'\ufffd';
    }
    return out;
}

std::string cleanText(std::string_view utf8, size_t most)
{
    std::string out;
    // A character has at most four bytes: what lies beyond cannot get in, and a cut one falls to the length below.
    for (const char32_t each : toUtf32(utf8.substr(0, 4 * most + 4))) {
        if (each < 0x20 || (each >= 0x7f && each < 0xa0)) {
            continue;
        }
        const size_t before = out.size();
        appendUtf8(out, each);
        if (out.size() > most) {
            out.resize(before);
            break;
        }
    }
    return out;
}

} // namespace vt
