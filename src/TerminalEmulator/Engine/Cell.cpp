#include "TerminalEmulator/Engine/Cell.h"

namespace vt
{

void appendUtf8(std::string &out, char32_t codePoint)
{
    if (codePoint > 0x10ffff || (codePoint >= 0xd800 && codePoint <= 0xdfff)) {
        codePoint = 0xfffd;
    }
    const auto push = [&](char32_t byte) { out += static_cast<char>(byte); };
    if (codePoint < 0x80) {
        push(codePoint);
    } else if (codePoint < 0x800) {
        push(0xc0 | codePoint >> 6);
        push(0x80 | (codePoint & 0x3f));
    } else if (codePoint < 0x10000) {
        push(0xe0 | codePoint >> 12);
        push(0x80 | (codePoint >> 6 & 0x3f));
        push(0x80 | (codePoint & 0x3f));
    } else {
        push(0xf0 | codePoint >> 18);
        push(0x80 | (codePoint >> 12 & 0x3f));
        push(0x80 | (codePoint >> 6 & 0x3f));
        push(0x80 | (codePoint & 0x3f));
    }
}

} // namespace vt
