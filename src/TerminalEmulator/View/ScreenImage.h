#pragma once

#include "TerminalEmulator/View/RowPainter.h"

#include <QDeadlineTimer>
#include <QImage>
#include <QRegion>

#include <functional>

namespace vt
{

/// The picture of the rows on show, in device pixels. Keeps what it drew: rows that scroll are moved, and only rows
/// that changed are drawn again.
class ScreenImage
{
public:
    /// What lies over a line's own look.
    using Marks = std::function<std::vector<RowMark>(int64_t line)>;

    /// Forgets what was drawn.
    void invalidate() { m_valid = false; }

    /// Draws what changed so that row 0 is line `top`, and returns which part of the picture is different, in device
    /// pixels. Begins with the row of the cursor. After `until` the rest is left for the next time, which goes on
    /// from there; each time draws at least one row.
    QRegion update(const Terminal &terminal, CellFont &font, RowPainter &painter, int64_t top, const Damage &damage,
                   const Marks &marks, QDeadlineTimer until = QDeadlineTimer::Forever);

    /// Whether the last update() left nothing.
    bool isComplete() const { return m_isComplete; }

    /// Marks rows that hold blinking text to be drawn again; false if there are none.
    bool touchBlinking();

    bool hasBlinking() const;

    const QImage &image() const { return m_image; }

    /// The line of row 0 in the picture.
    int64_t top() const { return m_top; }

private:
    struct Row {
        std::vector<RowMark> marks;
        bool blinks = false;
        bool isDirty = true;
    };

    bool arrange(const Terminal &terminal, const CellFont &font, int64_t top, const Damage &damage, QRgb ground);
    void move(int64_t rows, int height);
    void drawRow(QPainter &painter, const Terminal &terminal, RowPainter &rows, int row, int height);

    QImage m_image;
    std::vector<Row> m_rows;
    Line m_line;
    int64_t m_top = 0;
    uint32_t m_reflows = 0;
    bool m_alternate = false;
    bool m_valid = false;
    bool m_isComplete = true;
    int m_next = 0; ///< where drawing goes on
};

} // namespace vt
