#include "TerminalEmulator/Engine/Base64.h"

#include <cstdint>

namespace vt
{

static constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string encodeBase64(std::string_view bytes)
{
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t at = 0; at < bytes.size(); at += 3) {
        const auto byte = [&](size_t offset) -> uint32_t {
            return at + offset < bytes.size() ? static_cast<unsigned char>(bytes[at + offset]) : 0u;
        };
        const uint32_t group = byte(0) << 16 | byte(1) << 8 | byte(2);
        out += Alphabet[group >> 18];
        out += Alphabet[group >> 12 & 63];
        out += at + 1 < bytes.size() ? Alphabet[group >> 6 & 63] : '=';
        out += at + 2 < bytes.size() ? Alphabet[group & 63] : '=';
    }
    return out;
}

std::optional<std::string> decodeBase64(std::string_view text)
{
    while (!text.empty() && text.back() == '=') {
        text.remove_suffix(1);
    }
    std::string out;
    out.reserve(text.size() * 3 / 4);
    uint32_t group = 0;
    int bits = 0;
    for (const char each : text) {
        const size_t value = Alphabet.find(each);
        if (value == std::string_view::npos) {
            return std::nullopt;
        }
        group = (group << 6 | static_cast<uint32_t>(value)) & 0xffffff;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out += static_cast<char>(group >> bits & 0xff);
        }
    }
    return out;
}

} // namespace vt
