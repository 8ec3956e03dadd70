#include "TerminalEmulator/View/ScreenImage.h"

#include <QPainter>

#include <algorithm>
#include <cstring>

namespace vt
{

/// Moves the picture up (or down, if negative); rows that come into sight are dirty.
void ScreenImage::move(int64_t rows, int height)
{
    const auto count = static_cast<int64_t>(m_rows.size());
    if (rows == 0) {
        return;
    }
    if (std::abs(rows) >= count) {
        m_rows.assign(m_rows.size(), Row());
        return;
    }
    const auto stride = static_cast<size_t>(m_image.bytesPerLine()) * static_cast<size_t>(height);
    const auto kept = static_cast<size_t>(count - std::abs(rows));
    uchar *const bits = m_image.bits();
    const size_t distance = static_cast<size_t>(std::abs(rows)) * stride;
    if (rows > 0) {
        std::memmove(bits, bits + distance, kept * stride);
        std::rotate(m_rows.begin(), m_rows.begin() + rows, m_rows.end());
        std::fill(m_rows.end() - rows, m_rows.end(), Row());
    } else {
        std::memmove(bits + distance, bits, kept * stride);
        std::rotate(m_rows.begin(), m_rows.end() + rows, m_rows.end());
        std::fill(m_rows.begin(), m_rows.begin() - rows, Row());
    }
}

QRegion ScreenImage::update(const Terminal &terminal, CellFont &font, RowPainter &painter, int64_t top,
                            const Damage &damage, const Marks &marks)
{
    const int height = font.height();
    const QSize size(terminal.columns() * font.width(), terminal.rows() * height);
    if (m_image.size() != size) {
        m_image = QImage(size, QImage::Format_RGB32);
        m_valid = false;
    }
    const bool alternate = terminal.isAlternateScreen();
    const bool same = m_valid && !damage.all && m_reflows == terminal.reflowCount() && m_alternate == alternate;
    QRegion changed;
    if (!same) {
        m_rows.assign(static_cast<size_t>(terminal.rows()), Row());
    } else {
        // On the alternate screen lines keep their numbers and their text moves.
        const int64_t moved = alternate ? damage.scrolled : top - m_top;
        move(moved, height);
        for (const int row : damage.rows) {
            const int64_t at = terminal.screenTop() + row - top;
            if (at >= 0 && at < terminal.rows()) {
                m_rows[static_cast<size_t>(at)].isDirty = true;
            }
        }
        if (moved != 0) {
            changed = m_image.rect();
        }
    }
    m_top = top;
    m_reflows = terminal.reflowCount();
    m_alternate = alternate;
    m_valid = true;
    QPainter canvas(&m_image);
    for (int row = 0; row < terminal.rows(); ++row) {
        Row &each = m_rows[static_cast<size_t>(row)];
        std::vector<RowMark> now = marks(top + row);
        if (each.isDirty || now != each.marks) {
            each.marks = std::move(now);
            drawRow(canvas, terminal, painter, row, height);
            changed += QRect(0, row * height, size.width(), height);
        }
    }
    return changed;
}

void ScreenImage::drawRow(QPainter &painter, const Terminal &terminal, RowPainter &rows, int row, int height)
{
    Row &each = m_rows[static_cast<size_t>(row)];
    if (!terminal.line(m_top + row, m_line)) {
        m_line = {};
    }
    rows.draw(painter, m_line, row * height, terminal.columns(), each.marks);
    each.blinks = rows.blinks(m_line);
    each.isDirty = false;
}

bool ScreenImage::touchBlinking()
{
    for (Row &each : m_rows) {
        each.isDirty = each.isDirty || each.blinks;
    }
    return hasBlinking();
}

bool ScreenImage::hasBlinking() const
{
    return std::any_of(m_rows.begin(), m_rows.end(), [](const Row &each) { return each.blinks; });
}

} // namespace vt
