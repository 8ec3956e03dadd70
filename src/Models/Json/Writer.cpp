#include "Models/Json/Writer.h"

#include <array>
#include <charconv>
#include <cmath>

namespace Json
{

namespace
{

// RFC 8259 section 7: quotation mark, reverse solidus and U+0000 to U+001F must be escaped.
bool mustBeEscaped(char16_t c)
{
    return c < 0x20 || c == u'"' || c == u'\\';
}

void appendEscaped(QByteArray &to, char16_t c)
{
    static constexpr char kHex[] = "0123456789abcdef";
    switch (c) {
    case u'"':
        to += "\\\"";
        break;
    case u'\\':
        to += "\\\\";
        break;
    case u'\n':
        to += "\\n";
        break;
    case u'\t':
        to += "\\t";
        break;
    case u'\r':
        to += "\\r";
        break;
    default:
        to += "\\u00";
        to += kHex[c >> 4];
        to += kHex[c & 0xf];
    }
}

} // namespace

void Writer::text(QStringView value)
{
    m_text += '"';
    qsizetype from = 0;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (const char16_t c = value[i].unicode(); mustBeEscaped(c)) {
            m_text += value.sliced(from, i - from).toUtf8();
            appendEscaped(m_text, c);
            from = i + 1;
        }
    }
    m_text += value.sliced(from).toUtf8();
    m_text += '"';
}

void Writer::integer(qint64 value)
{
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.begin(), digits.end(), value).ptr;
    raw({digits.data(), static_cast<size_t>(end - digits.data())});
}

void Writer::number(double value)
{
    if (!std::isfinite(value)) {
        m_failed = true;
        return;
    }
    // The shortest digits that read back as the same double; as an exponent only where plain digits get long.
    const double size = std::abs(value);
    const bool isPlain = size == 0 || (size >= 1e-6 && size < 1e17);
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.begin(), digits.end(), value,
                                   isPlain ? std::chars_format::fixed : std::chars_format::scientific)
                         .ptr;
    raw({digits.data(), static_cast<size_t>(end - digits.data())});
}

void Writer::uuid(const QUuid &value)
{
    m_text += '"';
    m_text += value.toByteArray(QUuid::WithoutBraces).toUpper();
    m_text += '"';
}

} // namespace Json
