#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringView>
#include <array>
#include <iterator>
#include <optional>

/// Splitting of what commands print. Everything works on views of the UTF-8 output in linear time and allocates
/// nothing; any bytes are taken.
namespace Text
{

/// The white space of ASCII: blank, tab, line feed, vertical tab, form feed, carriage return.
constexpr bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// `text` without white space at either end.
constexpr QByteArrayView trimmed(QByteArrayView text)
{
    while (!text.empty() && isSpace(text.front())) {
        text = text.sliced(1);
    }
    while (!text.empty() && isSpace(text.back())) {
        text.chop(1);
    }
    return text;
}

/// A single-pass range over the pieces that `Cutter` takes off a text's front.
template<class Cutter>
class Pieces
{
public:
    explicit Pieces(QByteArrayView text)
        : m_text(text)
    {
    }

    class Iterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = QByteArrayView;
        using difference_type = qsizetype;

        Iterator() = default;

        explicit Iterator(QByteArrayView text)
            : m_rest(text)
        {
            ++*this;
        }

        QByteArrayView operator*() const { return m_piece; }

        Iterator &operator++()
        {
            m_isAtEnd = !Cutter::cut(m_rest, m_piece);
            return *this;
        }

        void operator++(int) { ++*this; }

        /// What stands behind the current piece.
        QByteArrayView rest() const { return m_rest; }

        bool operator==(std::default_sentinel_t) const { return m_isAtEnd; }

    private:
        QByteArrayView m_rest;
        QByteArrayView m_piece;
        bool m_isAtEnd = true;
    };

    Iterator begin() const { return Iterator(m_text); }

    std::default_sentinel_t end() const { return {}; }

private:
    QByteArrayView m_text;
};

struct LineCutter {
    static bool cut(QByteArrayView &rest, QByteArrayView &line);
};

struct FieldCutter {
    static bool cut(QByteArrayView &rest, QByteArrayView &field);
};

struct WordCutter {
    static bool cut(QByteArrayView &rest, QByteArrayView &word);
};

/// The lines of `text`, without their line feed and one carriage return before it. The empty piece behind a final
/// line feed is no line.
inline Pieces<LineCutter> lines(QByteArrayView text)
{
    return Pieces<LineCutter>(text);
}

/// The pieces of `line` between runs of blanks; none of them is empty.
inline Pieces<FieldCutter> fields(QByteArrayView line)
{
    return Pieces<FieldCutter>(line);
}

/// The pieces of `line` between runs of white space; none of them is empty.
inline Pieces<WordCutter> words(QByteArrayView line)
{
    return Pieces<WordCutter>(line);
}

/// The first fields of a line.
template<size_t Count>
struct FirstFields {
    std::array<QByteArrayView, Count> field{};
    size_t found = 0;    ///< how many of `field` are set
    QByteArrayView rest; ///< what stands behind the last of them, with the blanks before it

    bool isComplete() const { return found == Count; }
};

template<size_t Count>
FirstFields<Count> firstFields(QByteArrayView line)
{
    FirstFields<Count> first;
    first.rest = line;
    while (first.found < Count && FieldCutter::cut(first.rest, first.field[first.found])) {
        ++first.found;
    }
    return first;
}

/// The first pieces of `text` between single separators; a piece may be empty, and an empty text is one such piece.
/// `rest` begins with the separator behind the last of them.
template<size_t Count>
FirstFields<Count> firstPieces(QByteArrayView text, char separator)
{
    FirstFields<Count> first;
    while (first.found < Count) {
        const qsizetype end = text.indexOf(separator);
        first.field[first.found++] = end < 0 ? text : text.first(end);
        first.rest = end < 0 ? QByteArrayView() : text.sliced(end);
        if (end < 0) {
            break;
        }
        text = text.sliced(end + 1);
    }
    return first;
}

/// The fields of `text`, joined by single blanks.
QString joinedFields(QByteArrayView text);

/// The text that bytes of a server say: UTF-8, with U+FFFD for what is none.
inline QString fromUtf8(QByteArrayView text)
{
    return QString::fromUtf8(text);
}

/// The number that is the whole of `text`: decimal digits behind an optional sign. Nothing for any other character,
/// and on an overflow of 64 bits.
std::optional<qint64> decimalInteger(QByteArrayView text);
std::optional<qint64> decimalInteger(QStringView text);

/// The number that is the whole of `text`: decimal digits with at most one point among, before or behind them, behind
/// an optional sign. No exponent, no infinity.
std::optional<double> decimalNumber(QByteArrayView text);
std::optional<double> decimalNumber(QStringView text);

} // namespace Text
