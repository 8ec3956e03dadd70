#pragma once

#include <QFont>
#include <QGlyphRun>
#include <QHash>
#include <QRawFont>

#include <array>
#include <deque>
#include <unordered_map>
#include <vector>

namespace vt
{

/// The faces of a terminal's font, the cell they give, and which glyphs show a text. All sizes are device pixels and
/// whole numbers, so that rows and columns meet without a gap at any pixel ratio.
class CellFont
{
public:
    enum Face : uint8_t { Regular = 0, Bold = 1, Italic = 2, BoldItalic = 3 };

    /// How a text of one or two columns is drawn when it is more than one glyph of the face itself.
    struct Layout {
        QList<QGlyphRun> runs;
        QPointF offset; ///< from the cell's left edge and baseline
    };

    /// `lineHeight`: multiple of the font's own height.
    CellFont(const QFont &font, qreal devicePixelRatio, qreal lineHeight);

    int width() const { return m_width; }

    int height() const { return m_height; }

    int baseline() const { return m_baseline; }

    /// Thickness of underlines and of light box lines.
    int lineWidth() const { return m_lineWidth; }

    /// Top of the (single) underline and of the strike-through, from the top of the cell.
    int underlineTop() const { return m_underlineTop; }

    int strikeTop() const { return m_strikeTop; }

    const QRawFont &face(Face face) const { return m_faces[face].raw; }

    /// The face's own glyph for a code point, or 0: then layout() has it.
    quint32 glyph(char32_t codePoint, Face face)
    {
        Known &known = m_faces[face];
        if (codePoint < known.low.size()) {
            const quint32 index = known.low[codePoint];
            return index != Unknown ? index : (known.low[codePoint] = find(codePoint, face));
        }
        return findHigh(codePoint, face);
    }

    /// A glyph of another font, where that is all a code point needs.
    struct Placed {
        const QRawFont *font = nullptr; ///< holds as long as this object; null: layout() is needed
        quint32 glyph = 0;
        qreal offset = 0; ///< from the cell's left edge
    };

    /// For a code point the face has not.
    Placed placed(char32_t codePoint, Face face, int columns);

    /// What shows `text` (a cluster, or one code point the face has not) in `columns` cells: by other fonts if need
    /// be, made smaller if it is too wide. The reference holds until the next call.
    const Layout &layout(const QString &text, Face face, int columns);

private:
    static constexpr quint32 Unknown = 0xffffffff;
    static constexpr qsizetype MaxKnown = 8192;  ///< layouts remembered, beyond which all are forgotten
    static constexpr qsizetype MaxHigh = 50'000; ///< the same of code points

    struct Known {
        QFont font;
        QRawFont raw;
        std::array<quint32, 0x600> low; ///< by code point
        QHash<char32_t, quint32> high;
    };

    /// A font that served a script, and the width its characters of two columns share: to ask each costs as much as
    /// to draw it.
    struct Fallback {
        QRawFont font;
        qreal wide = 0;
    };

    Placed place(char32_t codePoint, Face face, int columns);
    quint32 find(char32_t codePoint, Face face) const;
    quint32 findHigh(char32_t codePoint, Face face);
    Layout makeLayout(const QString &text, Face face, int columns) const;
    void measure(qreal lineHeight);

    std::array<Known, 4> m_faces;
    QStringList m_emojiFamilies;
    QHash<quint64, Placed> m_placed;                               ///< by code point, face and columns
    std::unordered_map<quint64, std::deque<Fallback>> m_fallbacks; ///< by script, kind and face
    QHash<QString, Layout> m_layouts;                              ///< by text, face and columns
    int m_width = 1;
    int m_height = 1;
    int m_baseline = 1;
    int m_lineWidth = 1;
    int m_underlineTop = 0;
    int m_strikeTop = 0;
};

} // namespace vt
