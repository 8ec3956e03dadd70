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

// Writes the escape of `c` to `to` and gives the place behind it.
char *writeEscape(char *to, char16_t c)
{
    static constexpr char kHex[] = "0123456789abcdef";
    *to++ = '\\';
    switch (c) {
    case u'"':
    case u'\\':
        *to++ = static_cast<char>(c);
        break;
    case u'\n':
        *to++ = 'n';
        break;
    case u'\t':
        *to++ = 't';
        break;
    case u'\r':
        *to++ = 'r';
        break;
    default:
        *to++ = 'u';
        *to++ = '0';
        *to++ = '0';
        *to++ = kHex[c >> 4];
        *to++ = kHex[c & 0xf];
    }
    return to;
}

// Writes what of `text` is ASCII from `from` on, and moves `from` behind it.
char *writeAscii(char *to, QStringView text, qsizetype &from)
{
    for (; from < text.size() && text[from].unicode() < 0x80; ++from) {
        const char16_t c = text[from].unicode();
        if (mustBeEscaped(c)) {
            to = writeEscape(to, c);
        } else {
            *to++ = static_cast<char>(c);
        }
    }
    return to;
}

} // namespace

void Writer::text(QStringView value)
{
    constexpr qsizetype kPart = 1024; // bounds the room that is asked for
    constexpr qsizetype kLongestEscape = 6;
    raw("\"");
    while (!value.empty()) {
        const QStringView part = value.first(std::min(value.size(), kPart));
        qsizetype done = 0;
        char *const begin = room(part.size() * kLongestEscape);
        m_size += writeAscii(begin, part, done) - begin;
        value = value.sliced(done);
        qsizetype other = 0;
        while (other < value.size() && value[other].unicode() >= 0x80) {
            ++other;
        }
        if (other > 0) {
            const QByteArray utf8 = value.first(other).toUtf8();
            raw({utf8.constData(), static_cast<size_t>(utf8.size())});
            value = value.sliced(other);
        }
    }
    raw("\"");
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
    const auto end = std::to_chars(digits.begin(), digits.end(), value + 0.0, // drops the sign of a zero
                                   isPlain ? std::chars_format::fixed : std::chars_format::scientific)
                         .ptr;
    raw({digits.data(), static_cast<size_t>(end - digits.data())});
}

void Writer::uuid(const QUuid &value)
{
    const QByteArray text = value.toByteArray(QUuid::WithoutBraces).toUpper();
    raw("\"");
    raw({text.constData(), static_cast<size_t>(text.size())});
    raw("\"");
}

QByteArray Writer::take()
{
    QByteArray text = std::exchange(m_text, {});
    text.truncate(std::exchange(m_size, 0));
    text.squeeze();
    return std::exchange(m_failed, false) ? QByteArray() : text;
}

} // namespace Json
