#include "TerminalEmulator/Engine/Hex.h"

#include <charconv>

namespace vt
{

std::string toHex(std::string_view bytes)
{
    static constexpr char Digits[] = "0123456789ABCDEF";
    std::string out;
    for (const char each : bytes) {
        out += Digits[static_cast<unsigned char>(each) >> 4];
        out += Digits[static_cast<unsigned char>(each) & 15];
    }
    return out;
}

std::optional<std::string> fromHex(std::string_view digits)
{
    std::string out;
    for (size_t at = 0; at < digits.size(); at += 2) {
        const std::string_view pair = digits.substr(at, 2);
        unsigned value = 0;
        const auto [end, error] = std::from_chars(pair.data(), pair.data() + pair.size(), value, 16);
        if (pair.size() != 2 || error != std::errc() || end != pair.data() + 2) {
            return std::nullopt;
        }
        out += static_cast<char>(value);
    }
    return out;
}

} // namespace vt
