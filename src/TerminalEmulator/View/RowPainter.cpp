#include "TerminalEmulator/View/RowPainter.h"

#include "TerminalEmulator/View/BoxDrawing.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace vt
{

namespace
{

QRgb toRgb(Rgb color)
{
    return qRgb(color.red, color.green, color.blue);
}

Rgb fromRgb(QRgb color)
{
    return {static_cast<uint8_t>(qRed(color)), static_cast<uint8_t>(qGreen(color)),
            static_cast<uint8_t>(qBlue(color))};
}

/// `share` of 256 of one colour, the rest of the other.
QRgb mixed(QRgb one, QRgb other, int share)
{
    const auto mix = [share](int a, int b) { return (a * share + b * (256 - share)) / 256; };
    return qRgb(mix(qRed(one), qRed(other)), mix(qGreen(one), qGreen(other)), mix(qBlue(one), qBlue(other)));
}

constexpr double MinContrast = 3; ///< of text in colours of the palette; 1 is none, 21 black on white

double luminance(QRgb color)
{
    const auto linear = [](int channel) {
        const double value = channel / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

double contrast(QRgb one, QRgb other)
{
    const auto [low, high] = std::minmax({luminance(one), luminance(other)});
    return (high + 0.05) / (low + 0.05);
}

/// One of the sixteen colours the host chose, not the application.
bool isOfPalette(const Color &color)
{
    return color.kind == Color::Kind::Default || (color.kind == Color::Kind::Indexed && color.red < 16);
}

CellFont::Face faceOf(const Style &style)
{
    return static_cast<CellFont::Face>((style.has(Style::Bold) ? CellFont::Bold : 0) |
                                       (style.has(Style::Italic) ? CellFont::Italic : 0));
}

const RowMark *markAt(const std::vector<RowMark> &marks, int column)
{
    const RowMark *found = nullptr;
    for (const RowMark &each : marks) {
        found = column >= each.first && column <= each.last && each.kind != RowMark::Kind::Link ? &each : found;
    }
    return found;
}

bool isLinkAt(const std::vector<RowMark> &marks, int column)
{
    return std::any_of(marks.begin(), marks.end(), [column](const RowMark &each) {
        return each.kind == RowMark::Kind::Link && column >= each.first && column <= each.last;
    });
}

} // namespace

RowPainter::RowPainter(const Terminal &terminal, CellFont &font, const ViewColors &colors)
    : m_terminal(terminal)
    , m_font(font)
    , m_colors(colors)
{
}

void RowPainter::hideBlinking(bool slow, bool rapid)
{
    m_hidesSlow = slow;
    m_hidesRapid = rapid;
}

QRgb RowPainter::defaultBackground() const
{
    return toRgb(m_terminal.isReverseScreen() ? m_terminal.foreground() : m_terminal.background());
}

QRgb RowPainter::defaultText() const
{
    return toRgb(m_terminal.isReverseScreen() ? m_terminal.background() : m_terminal.foreground());
}

/// Text of the palette on a background of the palette that could not be read: as much lighter or darker as it takes.
QRgb RowPainter::legible(QRgb text, QRgb background)
{
    constexpr qsizetype MaxKnown = 1024;
    const quint64 key = quint64{text} << 32 | background;
    const auto known = m_legible.constFind(key);
    if (known != m_legible.cend()) {
        return *known;
    }
    QRgb goal = luminance(text) >= luminance(background) ? qRgb(255, 255, 255) : qRgb(0, 0, 0);
    const bool turns = contrast(goal, background) < MinContrast;
    goal = turns ? ~goal | 0xff000000 : goal;
    QRgb result = text;
    // On the other side of the background a half-way colour would be murky.
    for (int share = turns && contrast(text, background) < MinContrast ? 224 : 32;
         share <= 256 && contrast(result, background) < MinContrast; share += 32) {
        result = mixed(goal, text, share);
    }
    if (m_legible.size() > MaxKnown) {
        m_legible.clear();
    }
    return *m_legible.insert(key, result);
}

RowPainter::Ink RowPainter::ink(const Style &style)
{
    QRgb text = toRgb(m_terminal.resolve(style.foreground, fromRgb(defaultText())));
    QRgb background = toRgb(m_terminal.resolve(style.background, fromRgb(defaultBackground())));
    if (style.has(Style::Inverse)) {
        std::swap(text, background);
    }
    if (text != background && isOfPalette(style.foreground) && isOfPalette(style.background)) {
        text = legible(text, background);
    }
    if (style.has(Style::Faint)) {
        text = mixed(text, background, 140);
    }
    const bool hidden = style.has(Style::Invisible) || (style.has(Style::Blink) && m_hidesSlow) ||
                        (style.has(Style::RapidBlink) && m_hidesRapid);
    return {hidden ? background : text, background};
}

bool RowPainter::blinks(const Line &line) const
{
    StyleId known = 0;
    for (const Cell &cell : line.cells) {
        if (cell.style != known) {
            known = cell.style;
            const Style &style = m_terminal.style(known);
            if (style.has(Style::Blink) || style.has(Style::RapidBlink)) {
                return true;
            }
        }
    }
    return false;
}

void RowPainter::draw(QPainter &painter, const Line &line, int y, int columns, const std::vector<RowMark> &marks)
{
    if (line.size == LineSize::Normal) {
        drawNormal(painter, line, y, columns, marks);
        return;
    }
    // Rows of double size show the left half of their cells, twice as wide; of those twice as high each shows one
    // half.
    painter.save();
    painter.setClipRect(QRect(0, y, columns * m_font.width(), m_font.height()));
    painter.translate(0, line.size == LineSize::DoubleBottom ? y - m_font.height() : y);
    painter.scale(2, line.size == LineSize::DoubleWidth ? 1 : 2);
    drawNormal(painter, line, 0, (columns + 1) / 2, marks);
    painter.restore();
}

void RowPainter::drawNormal(QPainter &painter, const Line &line, int y, int columns,
                            const std::vector<RowMark> &marks)
{
    const int width = m_font.width();
    const int height = m_font.height();
    const QRgb blank = defaultBackground();
    painter.fillRect(QRect(0, y, columns * width, height), QColor(blank));
    const int used = std::min<int>(columns, static_cast<int>(line.cells.size()));
    const int shown = marks.empty() ? used : columns;
    // Backgrounds first: text may reach a little into its neighbours' cells.
    std::vector<Run> runs;
    for (int x = 0; x < shown;) {
        const StyleId id = x < used ? line.cells[static_cast<size_t>(x)].style : 0;
        const RowMark *mark = markAt(marks, x);
        const bool linked = isLinkAt(marks, x);
        int end = x + 1;
        while (end < shown && (end < used ? line.cells[static_cast<size_t>(end)].style : 0) == id &&
               (marks.empty() || (markAt(marks, end) == mark && isLinkAt(marks, end) == linked))) {
            ++end;
        }
        const Style &style = m_terminal.style(id);
        Run run{x, end - 1, &style, ink(style), linked};
        if (mark && mark->kind == RowMark::Kind::Selected) {
            const bool own = style.background.kind != Color::Kind::Default || style.has(Style::Inverse);
            run.ink.background =
                own ? mixed(m_colors.selection.rgb(), run.ink.background, 190) : m_colors.selection.rgb();
        } else if (mark) {
            const bool current = mark->kind == RowMark::Kind::CurrentHit;
            run.ink = {m_colors.hitText.rgb(), (current ? m_colors.currentHit : m_colors.hit).rgb()};
        }
        if (run.ink.background != blank) {
            painter.fillRect(QRect(x * width, y, (end - x) * width, height), QColor(run.ink.background));
        }
        if (x < used || linked) {
            runs.push_back(run);
        }
        x = end;
    }
    for (const Run &run : runs) {
        if (run.ink.text != run.ink.background) {
            drawText(painter, line, run, y);
            drawLines(painter, run, y);
        }
    }
}

/// Glyphs are drawn together as long as they are of one font.
void RowPainter::collect(QPainter &painter, const QRawFont &font, quint32 glyph, qreal x, int y, QRgb color)
{
    if (m_glyphFont != &font) {
        flush(painter, y, color);
        m_glyphFont = &font;
    }
    m_glyphs.push_back(glyph);
    m_positions.emplace_back(x, 0);
}

void RowPainter::flush(QPainter &painter, int y, QRgb color)
{
    if (m_glyphs.empty()) {
        return;
    }
    QGlyphRun run;
    run.setRawFont(*m_glyphFont);
    run.setRawData(m_glyphs.data(), m_positions.data(), static_cast<int>(m_glyphs.size()));
    painter.setPen(QColor(color));
    painter.drawGlyphRun(QPointF(0, y + m_font.baseline()), run);
    m_glyphs.clear();
    m_positions.clear();
}

void RowPainter::drawText(QPainter &painter, const Line &line, const Run &run, int y)
{
    const CellFont::Face face = faceOf(*run.style);
    const int width = m_font.width();
    const int end = std::min<int>(run.last + 1, static_cast<int>(line.cells.size()));
    m_glyphFont = nullptr;
    for (int x = run.first; x < end; ++x) {
        const Cell cell = line.cells[static_cast<size_t>(x)];
        const uint32_t code = cell.code & Cell::CodePoint;
        if (cell.isTail() || (code <= 0x20 && !cell.isCluster())) {
            continue;
        }
        if (!cell.isCluster() && !isBoxDrawing(code)) {
            if (const quint32 glyph = cell.isWide() ? 0 : m_font.glyph(code, face)) {
                collect(painter, m_font.face(face), glyph, x * width, y, run.ink.text);
                continue;
            }
            const CellFont::Placed placed = m_font.placed(code, face, cell.isWide() ? 2 : 1);
            if (placed.font) {
                collect(painter, *placed.font, placed.glyph, x * width + placed.offset, y, run.ink.text);
                continue;
            }
        }
        drawCell(painter, cell, x * width, y, face, run.ink.text);
    }
    flush(painter, y, run.ink.text);
}

/// A cell that is not one glyph of its face: drawn by geometry, or laid out.
void RowPainter::drawCell(QPainter &painter, const Cell &cell, int x, int y, CellFont::Face face, QRgb color)
{
    const int columns = cell.isWide() ? 2 : 1;
    const char32_t code = cell.code & Cell::CodePoint;
    if (!cell.isCluster() && isBoxDrawing(code)) {
        drawBox(painter, code, QRect(x, y, m_font.width() * columns, m_font.height()), QColor(color),
                m_font.lineWidth());
        return;
    }
    m_text.clear();
    m_terminal.appendText(cell, m_text);
    const QString text = QString::fromUtf8(m_text.data(), static_cast<qsizetype>(m_text.size()));
    const CellFont::Layout &layout = m_font.layout(text, face, columns);
    painter.setPen(QColor(color));
    for (const QGlyphRun &run : layout.runs) {
        painter.drawGlyphRun(QPointF(x, y + m_font.baseline()) + layout.offset, run);
    }
}

void RowPainter::drawLines(QPainter &painter, const Run &run, int y)
{
    const Style &style = *run.style;
    const bool isLink = run.linked || style.link != 0;
    if (style.underline == Underline::None && !isLink && !style.has(Style::Strike) && !style.has(Style::Overline)) {
        return;
    }
    const int left = run.first * m_font.width();
    const int width = (run.last - run.first + 1) * m_font.width();
    const int thick = m_font.lineWidth();
    const int top = y + m_font.underlineTop();
    const QColor text(run.ink.text);
    const bool own = style.underlineColor.kind != Color::Kind::Default;
    const QColor color = own ? QColor(toRgb(m_terminal.resolve(style.underlineColor, {}))) : text;
    if (style.has(Style::Strike)) {
        painter.fillRect(left, y + m_font.strikeTop(), width, thick, text);
    }
    if (style.has(Style::Overline)) {
        painter.fillRect(left, y, width, thick, text);
    }
    Underline underline = style.underline;
    if (run.linked) {
        underline = Underline::Single;
    } else if (isLink && underline == Underline::None) {
        underline = Underline::Dotted;
    }
    switch (underline) {
    case Underline::None:
        break;
    case Underline::Double:
        painter.fillRect(left, top + 2 * thick, width, thick, color);
        [[fallthrough]];
    case Underline::Single:
        painter.fillRect(left, top, width, thick, color);
        break;
    case Underline::Dotted:
        for (int x = left; x < left + width; x += 2 * thick) {
            painter.fillRect(x, top, thick, thick, color);
        }
        break;
    case Underline::Dashed: {
        const int dash = std::max(2, m_font.width() / 2);
        for (int x = left; x < left + width; x += m_font.width()) {
            painter.fillRect(x, top, dash, thick, color);
        }
        break;
    }
    case Underline::Curly: {
        // One wave a cell, so that neighbouring runs join.
        const qreal height = std::max(1.0, std::min<qreal>(2.0 * thick, (y + m_font.height() - top - thick) / 2.0));
        const qreal half = m_font.width() / 2.0;
        const qreal middle = top + height / 2 + thick / 2.0;
        QPainterPath path(QPointF(left, middle));
        for (int each = 0; each < 2 * (run.last - run.first + 1); ++each) {
            const qreal x = left + each * half;
            path.quadTo({x + half / 2, middle + (each % 2 == 0 ? -height : height)}, {x + half, middle});
        }
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.strokePath(path, QPen(color, thick));
        painter.restore();
        break;
    }
    }
}

void RowPainter::drawCursorCell(QPainter &painter, const Line &line, const QRect &row, int column, QRgb background,
                                QRgb text)
{
    const bool there = column < static_cast<int>(line.cells.size());
    const Cell cell = there ? line.cells[static_cast<size_t>(column)] : Cell{};
    const int columns = cell.isWide() ? 2 : 1;
    painter.save();
    painter.setClipRect(row, Qt::IntersectClip);
    if (line.size != LineSize::Normal) {
        painter.translate(row.x(), line.size == LineSize::DoubleBottom ? row.y() - m_font.height() : row.y());
        painter.scale(2, line.size == LineSize::DoubleWidth ? 1 : 2);
    } else {
        painter.translate(row.topLeft());
    }
    painter.setClipRect(QRect(column * m_font.width(), 0, columns * m_font.width(), m_font.height()),
                        Qt::IntersectClip);
    painter.fillRect(QRect(column * m_font.width(), 0, columns * m_font.width(), m_font.height()),
                     QColor(background));
    if (there) {
        const Style &style = m_terminal.style(cell.style);
        const bool hidden = ink(style).text == ink(style).background && style.has(Style::Invisible);
        const Run run{column, column + columns - 1, &style, {text, background}, false};
        if (!hidden) {
            drawText(painter, line, run, 0);
            drawLines(painter, run, 0);
        }
    }
    painter.restore();
}

} // namespace vt
