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

/// Makes the picture one of the rows from `top`, in which all that changed is dirty; true if what it holds moved.
bool ScreenImage::arrange(const Terminal &terminal, const CellFont &font, int64_t top, const Damage &damage,
                          QRgb ground)
{
    const int height = font.height();
    const QSize size(terminal.columns() * font.width(), terminal.rows() * height);
    if (m_image.size() != size) {
        m_image = QImage(size, QImage::Format_RGB32);
        m_image.fill(ground);
        m_valid = false;
    }
    const bool alternate = terminal.isAlternateScreen();
    const bool same = m_valid && !damage.all && m_reflows == terminal.reflowCount() && m_alternate == alternate;
    // On the alternate screen lines keep their numbers and their text moves.
    const int64_t moved = !same ? 0 : alternate ? damage.scrolled : top - m_top;
    m_top = top;
    m_reflows = terminal.reflowCount();
    m_alternate = alternate;
    m_valid = true;
    if (!same) {
        m_rows.assign(static_cast<size_t>(terminal.rows()), Row());
        return false;
    }
    move(moved, height);
    for (const int row : damage.rows) {
        const int64_t at = terminal.screenTop() + row - top;
        if (at >= 0 && at < terminal.rows()) {
            m_rows[static_cast<size_t>(at)].isDirty = true;
        }
    }
    return moved != 0;
}

QRegion ScreenImage::update(const Terminal &terminal, CellFont &font, RowPainter &painter, int64_t top,
                            const Damage &damage, const Marks &marks, QDeadlineTimer until)
{
    const int count = terminal.rows();
    const int height = font.height();
    const bool moved = arrange(terminal, font, top, damage, painter.defaultBackground());
    QRegion changed = moved ? QRegion(m_image.rect()) : QRegion();
    QPainter canvas(&m_image);
    const auto cursor = static_cast<int>(terminal.screenTop() + terminal.cursor().row - top);
    const int from = m_next < count ? m_next : 0;
    bool drewOthers = false;
    m_isComplete = true;
    m_next = 0;
    for (int step = cursor < count ? -1 : 0; step < count; ++step) {
        const int row = step < 0 ? cursor : (from + step) % count;
        Row &each = m_rows[static_cast<size_t>(row)];
        std::vector<RowMark> now = marks(top + row);
        if (!each.isDirty && now == each.marks) {
            continue;
        }
        if (drewOthers && until.hasExpired()) {
            m_isComplete = false;
            m_next = row;
            break;
        }
        each.marks = std::move(now);
        drawRow(canvas, terminal, painter, row, height);
        changed += QRect(0, row * height, m_image.width(), height);
        drewOthers = drewOthers || step >= 0;
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
