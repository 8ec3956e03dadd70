#pragma once

#include "TerminalEmulator/Engine/Terminal.h"
#include "TerminalEmulator/View/CellFont.h"

#include <QColor>
#include <QRect>

#include <vector>

class QPainter;

namespace vt
{

/// Columns `first` to `last` of a row that are shown differently from how the application wrote them.
struct RowMark {
    enum class Kind : uint8_t { Hit, CurrentHit, Selected, Link };

    int first = 0;
    int last = 0;
    Kind kind = Kind::Selected;

    bool operator==(const RowMark &) const = default;
};

/// Colours of what the view adds to the application's own.
struct ViewColors {
    QColor selection;
    QColor hit;
    QColor currentHit;
    QColor hitText;
};

/// Draws rows of a terminal, in device pixels. Holds no state between rows but its memory.
class RowPainter
{
public:
    RowPainter(const Terminal &terminal, CellFont &font, const ViewColors &colors);

    /// Cells that blink are drawn without their text. What is drawn from then on.
    void hideBlinking(bool slow, bool rapid);

    /// Draws the row with its top left corner at (0, y), `columns` wide. Marks lie one over the other in their order.
    void draw(QPainter &painter, const Line &line, int y, int columns, const std::vector<RowMark> &marks);

    /// Draws one cell of a row as a block cursor stands on it, in the colours given.
    void drawCursorCell(QPainter &painter, const Line &line, const QRect &row, int column, QRgb background,
                        QRgb text);

    /// Whether a row holds text that blinks.
    bool blinks(const Line &line) const;

    /// The colours a style is drawn in.
    struct Ink {
        QRgb text;
        QRgb background;
    };

    Ink ink(const Style &style);

    QRgb defaultBackground() const;
    QRgb defaultText() const;

private:
    struct Run {
        int first;
        int last;
        const Style *style;
        Ink ink;
        bool linked;
    };

    void drawNormal(QPainter &painter, const Line &line, int y, int columns, const std::vector<RowMark> &marks);
    void drawText(QPainter &painter, const Line &line, const Run &run, int y);
    void drawCell(QPainter &painter, const Cell &cell, int x, int y, CellFont::Face face, QRgb color);
    void drawLines(QPainter &painter, const Run &run, int y);
    void collect(QPainter &painter, const QRawFont &font, quint32 glyph, qreal x, int y, QRgb color);
    void flush(QPainter &painter, int y, QRgb color);
    QRgb legible(QRgb text, QRgb background);

    const Terminal &m_terminal;
    CellFont &m_font;
    const ViewColors &m_colors;
    bool m_hidesSlow = false;
    bool m_hidesRapid = false;
    QHash<quint64, QRgb> m_legible;        ///< by text and background
    const QRawFont *m_glyphFont = nullptr; ///< of what is collected
    std::vector<quint32> m_glyphs;
    std::vector<QPointF> m_positions;
    std::string m_text;
};

} // namespace vt
