#include "Helpers/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace Text
{

namespace
{

qsizetype indexOf(QByteArrayView text, char c)
{
    const void *found = text.empty() ? nullptr : std::memchr(text.data(), c, static_cast<size_t>(text.size()));
    return found ? static_cast<const char *>(found) - text.data() : -1;
}

template<class Char>
int digitValue(Char c)
{
    const auto code = static_cast<char32_t>(static_cast<std::make_unsigned_t<Char>>(c));
    return code >= U'0' && code <= U'9' ? static_cast<int>(code - U'0') : -1;
}

// Takes the sign off the front.
template<class Char>
bool cutSign(const Char *&from, const Char *to)
{
    const bool isNegative = from != to && *from == Char('-');
    if (isNegative || (from != to && *from == Char('+'))) {
        ++from;
    }
    return isNegative;
}

template<class Char>
std::optional<qint64> parseInteger(const Char *from, const Char *to)
{
    constexpr quint64 kLargest = std::numeric_limits<qint64>::max();
    const bool isNegative = cutSign(from, to);
    const quint64 limit = isNegative ? kLargest + 1 : kLargest;
    if (from == to) {
        return std::nullopt;
    }
    quint64 value = 0;
    for (; from != to; ++from) {
        const int digit = digitValue(*from);
        if (digit < 0 || value > (limit - static_cast<quint64>(digit)) / 10) {
            return std::nullopt;
        }
        value = value * 10 + static_cast<quint64>(digit);
    }
    return static_cast<qint64>(isNegative ? quint64{0} - value : value);
}

std::optional<double> parseNumber(const char *from, const char *to)
{
    const bool isNegative = cutSign(from, to);
    if (from == to || *from == '-') {
        return std::nullopt;
    }
    double value = 0;
    const auto [end, error] = std::from_chars(from, to, value, std::chars_format::fixed);
    if (error != std::errc() || end != to || !std::isfinite(value)) {
        return std::nullopt;
    }
    return isNegative ? -value : value;
}

} // namespace

bool LineCutter::cut(QByteArrayView &rest, QByteArrayView &line)
{
    if (rest.empty()) {
        return false;
    }
    const qsizetype end = indexOf(rest, '\n');
    line = end < 0 ? rest : rest.first(end);
    rest = end < 0 ? QByteArrayView() : rest.sliced(end + 1);
    if (!line.empty() && line.back() == '\r') {
        line.chop(1);
    }
    return true;
}

bool FieldCutter::cut(QByteArrayView &rest, QByteArrayView &field)
{
    while (!rest.empty() && rest.front() == ' ') {
        rest = rest.sliced(1);
    }
    if (rest.empty()) {
        return false;
    }
    const qsizetype end = indexOf(rest, ' ');
    field = end < 0 ? rest : rest.first(end);
    rest = end < 0 ? QByteArrayView() : rest.sliced(end);
    return true;
}

bool WordCutter::cut(QByteArrayView &rest, QByteArrayView &word)
{
    const auto *from = std::find_if_not(rest.begin(), rest.end(), isSpace);
    if (from == rest.end()) {
        return false;
    }
    const auto *to = std::find_if(from, rest.end(), isSpace);
    word = QByteArrayView(from, to);
    rest = QByteArrayView(to, rest.end());
    return true;
}

QString joinedFields(QByteArrayView text)
{
    QByteArray joined;
    joined.reserve(text.size());
    for (const QByteArrayView field : fields(text)) {
        if (!joined.isEmpty()) {
            joined += ' ';
        }
        joined += field;
    }
    return QString::fromUtf8(joined);
}

std::optional<qint64> decimalInteger(QByteArrayView text)
{
    return parseInteger(text.data(), text.data() + text.size());
}

std::optional<qint64> decimalInteger(QStringView text)
{
    return parseInteger(text.utf16(), text.utf16() + text.size());
}

std::optional<double> decimalNumber(QByteArrayView text)
{
    return parseNumber(text.data(), text.data() + text.size());
}

std::optional<double> decimalNumber(QStringView text)
{
    const QByteArray latin1 = text.toLatin1(); // what is no Latin-1 becomes "?", which is no number either
    return decimalNumber(QByteArrayView(latin1));
}

} // namespace Text
