#include "Services/Terminal/Utf8Prefix.h"

#include <cstdint>
#include <cstring>

namespace
{

using Byte = unsigned char;

constexpr std::uint64_t kHighBits = 0x8080808080808080;

// The length that a leading byte announces, or 0; and the range of the second byte, which shuts out overlong forms,
// surrogates and what lies beyond U+10FFFF.
struct Lead {
    int length;
    Byte low;
    Byte high;
};

Lead lead(Byte byte)
{
    if (byte >= 0xC2 && byte <= 0xDF) {
        return {2, 0x80, 0xBF};
    }
    if (byte >= 0xE0 && byte <= 0xEF) {
        return {3, static_cast<Byte>(byte == 0xE0 ? 0xA0 : 0x80), static_cast<Byte>(byte == 0xED ? 0x9F : 0xBF)};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        return {4, static_cast<Byte>(byte == 0xF0 ? 0x90 : 0x80), static_cast<Byte>(byte == 0xF4 ? 0x8F : 0xBF)};
    }
    return {0, 0, 0};
}

const Byte *skipAscii(const Byte *at, const Byte *end)
{
    std::uint64_t word = 0;
    while (end - at >= static_cast<std::ptrdiff_t>(sizeof word)) {
        std::memcpy(&word, at, sizeof word);
        if ((word & kHighBits) != 0) {
            break;
        }
        at += sizeof word;
    }
    while (at != end && *at < 0x80) {
        ++at;
    }
    return at;
}

} // namespace

Utf8Prefix Utf8Prefix::of(QByteArrayView bytes)
{
    const Byte *const begin = reinterpret_cast<const Byte *>(bytes.data());
    const Byte *const end = begin + bytes.size();
    const Byte *at = skipAscii(begin, end);
    while (at != end) {
        const Lead first = lead(*at);
        int good = first.length > 0 ? 1 : 0;
        while (good < first.length && at + good != end && at[good] >= (good == 1 ? first.low : 0x80) &&
               at[good] <= (good == 1 ? first.high : 0xBF)) {
            ++good;
        }
        if (good == 0 || good < first.length) {
            return {at - begin, good > 0 && at + good == end};
        }
        at = skipAscii(at + good, end);
    }
    return {bytes.size(), false};
}
