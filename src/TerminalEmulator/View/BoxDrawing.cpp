#include "TerminalEmulator/View/BoxDrawing.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <string_view>

namespace vt
{

namespace
{

enum Weight : uint8_t { None, Light, Heavy, Double };

/// Weights of the arms up, right, down and left of U+2500 to U+257F; dashes, arcs and diagonals are 0000.
constexpr std::string_view Arms = "0101"
                                  "0202"
                                  "1010"
                                  "2020"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0110"
                                  "0210"
                                  "0120"
                                  "0220"
                                  "0011"
                                  "0012"
                                  "0021"
                                  "0022"
                                  "1100"
                                  "1200"
                                  "2100"
                                  "2200"
                                  "1001"
                                  "1002"
                                  "2001"
                                  "2002"
                                  "1110"
                                  "1210"
                                  "2110"
                                  "1120"
                                  "2120"
                                  "2210"
                                  "1220"
                                  "2220"
                                  "1011"
                                  "1012"
                                  "2011"
                                  "1021"
                                  "2021"
                                  "2012"
                                  "1022"
                                  "2022"
                                  "0111"
                                  "0112"
                                  "0211"
                                  "0212"
                                  "0121"
                                  "0122"
                                  "0221"
                                  "0222"
                                  "1101"
                                  "1102"
                                  "1201"
                                  "1202"
                                  "2101"
                                  "2102"
                                  "2201"
                                  "2202"
                                  "1111"
                                  "1112"
                                  "1211"
                                  "1212"
                                  "2111"
                                  "1121"
                                  "2121"
                                  "2112"
                                  "2211"
                                  "1122"
                                  "1221"
                                  "2212"
                                  "1222"
                                  "2122"
                                  "2221"
                                  "2222"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0303"
                                  "3030"
                                  "0310"
                                  "0130"
                                  "0330"
                                  "0013"
                                  "0031"
                                  "0033"
                                  "1300"
                                  "3100"
                                  "3300"
                                  "1003"
                                  "3001"
                                  "3003"
                                  "1310"
                                  "3130"
                                  "3330"
                                  "1013"
                                  "3031"
                                  "3033"
                                  "0313"
                                  "0131"
                                  "0333"
                                  "1303"
                                  "3101"
                                  "3303"
                                  "1313"
                                  "3131"
                                  "3333"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0000"
                                  "0001"
                                  "1000"
                                  "0100"
                                  "0010"
                                  "0002"
                                  "2000"
                                  "0200"
                                  "0020"
                                  "0201"
                                  "1020"
                                  "0102"
                                  "2010";
static_assert(Arms.size() == 512);

/// One cell, with the places where lines run.
class Canvas
{
public:
    Canvas(QPainter &painter, const QRect &cell, const QColor &color, int lineWidth)
        : m_painter(painter)
        , m_cell(cell)
        , m_color(color)
        , m_light(lineWidth)
        , m_middleX(cell.width() / 2)
        , m_middleY(cell.height() / 2)
    {
    }

    void line(char32_t codePoint);
    void block(char32_t codePoint);
    void braille(unsigned dots);
    void sextant(unsigned pattern);
    void separator(char32_t codePoint);

private:
    int thickness(Weight weight) const { return weight == Heavy ? std::max(2 * m_light, m_light + 1) : m_light; }

    /// Distance of the strips of a double line from the middle.
    int gap() const { return m_light; }

    void fill(int left, int top, int right, int bottom, int alpha = 255)
    {
        QColor color = m_color;
        color.setAlpha(alpha);
        m_painter.fillRect(QRect(m_cell.x() + left, m_cell.y() + top, right - left, bottom - top), color);
    }

    /// An arm of one strip: along the axis from `from` to the edge, across it around `middle`.
    void strip(int direction, int from, int across, int thick);
    void arm(int direction, const Weight (&weights)[4]);
    void dashes(char32_t codePoint);
    void arc(char32_t codePoint);
    void diagonal(bool rising, bool falling);
    void smooth(const QPainterPath &path, bool filled);

    QPainter &m_painter;
    QRect m_cell;
    QColor m_color;
    int m_light;
    int m_middleX;
    int m_middleY;
};

// Directions: 0 up, 1 right, 2 down, 3 left. Seen along an arm outwards, positions grow from the middle, so that one
// rule serves all four.
void Canvas::strip(int direction, int from, int across, int thick)
{
    const bool vertical = direction % 2 == 0;
    const int low = (vertical ? m_middleX : m_middleY) + across - thick / 2;
    const int high = low + thick;
    const int middle = vertical ? m_middleY : m_middleX;
    // The middle pixel of an odd line lies right of and below the middle, hence the unequal ends.
    switch (direction) {
    case 0:
        fill(low, 0, high, middle - from);
        break;
    case 1:
        fill(middle + from, low, m_cell.width(), high);
        break;
    case 2:
        fill(low, middle + from, high, m_cell.height());
        break;
    default:
        fill(0, low, middle - from, high);
        break;
    }
}

void Canvas::arm(int direction, const Weight (&weights)[4])
{
    const Weight own = weights[direction];
    if (own == None) {
        return;
    }
    const bool vertical = direction % 2 == 0;
    const Weight opposite = weights[(direction + 2) % 4];
    const int thick = thickness(own);
    // Inner and outer edge of a perpendicular line as seen along this arm: lines of uneven thickness are not
    // symmetric around the middle.
    const bool forward = direction == 1 || direction == 2;
    const auto nearEdge = [&](int across, int width) {
        return forward ? across - width / 2 : -(across - width / 2 + width);
    };
    const Weight sides[2] = {vertical ? weights[3] : weights[0], vertical ? weights[1] : weights[2]};
    if (own != Double) {
        int from = 0;
        if (sides[0] == Double && sides[1] == Double) {
            from = opposite == None ? nearEdge(forward ? gap() : -gap(), m_light) : 0;
        } else if (sides[0] == Double || sides[1] == Double) {
            from = nearEdge(forward ? -gap() : gap(), m_light);
        } else {
            const int widest =
                std::max(sides[0] == None ? 0 : thickness(sides[0]), sides[1] == None ? 0 : thickness(sides[1]));
            from = widest == 0 ? 0 : nearEdge(0, widest);
        }
        strip(direction, from, 0, thick);
        return;
    }
    for (const int side : {0, 1}) {
        const Weight beside = sides[side];
        const Weight beyond = sides[1 - side];
        int from = 0;
        if (beside == Double) {
            from = nearEdge(forward ? gap() : -gap(), m_light);
        } else if (beside != None) {
            from = nearEdge(0, thickness(beside));
        } else if (opposite != Double && beyond == Double) {
            from = nearEdge(forward ? -gap() : gap(), m_light);
        } else if (opposite != Double && beyond != None) {
            from = nearEdge(0, thickness(beyond));
        }
        strip(direction, from, side == 0 ? -gap() : gap(), thick);
    }
}

void Canvas::dashes(char32_t codePoint)
{
    const bool two = codePoint >= 0x254c;
    const unsigned index = two ? codePoint - 0x254c : codePoint - 0x2504;
    const int count = two ? 2 : index < 4 ? 3 : 4;
    const bool heavy = index % 2 == 1;
    const bool vertical = index % 4 >= 2;
    const int length = vertical ? m_cell.height() : m_cell.width();
    const int thick = thickness(heavy ? Heavy : Light);
    const int hole = std::max(1, length / (count * 3));
    for (int each = 0; each < count; ++each) {
        const int from = length * each / count + hole / 2;
        const int to = std::max(from + 1, length * (each + 1) / count - (hole - hole / 2));
        if (vertical) {
            fill(m_middleX - thick / 2, from, m_middleX - thick / 2 + thick, to);
        } else {
            fill(from, m_middleY - thick / 2, to, m_middleY - thick / 2 + thick);
        }
    }
}

void Canvas::smooth(const QPainterPath &path, bool filled)
{
    m_painter.save();
    m_painter.setClipRect(m_cell, Qt::IntersectClip);
    m_painter.setRenderHint(QPainter::Antialiasing);
    m_painter.translate(m_cell.topLeft());
    if (filled) {
        m_painter.fillPath(path, m_color);
    } else {
        m_painter.strokePath(path, QPen(m_color, m_light, Qt::SolidLine, Qt::FlatCap));
    }
    m_painter.restore();
}

void Canvas::arc(char32_t codePoint)
{
    const bool down = codePoint <= 0x256e;
    const bool right = codePoint == 0x256d || codePoint == 0x2570;
    const QPoint corner(m_middleX - m_light / 2, m_middleY - m_light / 2);
    const QPointF middle = QPointF(corner) + QPointF(m_light, m_light) / 2;
    const qreal radius = std::min(m_cell.width(), m_cell.height()) / 2.0;
    const qreal x = right ? 1 : -1;
    const qreal y = down ? 1 : -1;
    QPainterPath path(QPointF(middle.x(), down ? m_cell.height() : 0));
    path.lineTo(middle.x(), middle.y() + y * radius);
    path.quadTo(middle, {middle.x() + x * radius, middle.y()});
    path.lineTo(right ? m_cell.width() : 0, middle.y());
    smooth(path, false);
}

void Canvas::diagonal(bool rising, bool falling)
{
    QPainterPath path;
    // A little beyond the corners, which cuts the ends along the cell's edge.
    const qreal slope = static_cast<qreal>(m_cell.height()) / m_cell.width();
    if (rising) {
        path.moveTo(-1, m_cell.height() + slope);
        path.lineTo(m_cell.width() + 1, -slope);
    }
    if (falling) {
        path.moveTo(-1, -slope);
        path.lineTo(m_cell.width() + 1, m_cell.height() + slope);
    }
    smooth(path, false);
}

void Canvas::line(char32_t codePoint)
{
    if ((codePoint >= 0x2504 && codePoint <= 0x250b) || (codePoint >= 0x254c && codePoint <= 0x254f)) {
        dashes(codePoint);
    } else if (codePoint >= 0x256d && codePoint <= 0x2570) {
        arc(codePoint);
    } else if (codePoint >= 0x2571 && codePoint <= 0x2573) {
        diagonal(codePoint != 0x2572, codePoint != 0x2571);
    } else {
        Weight weights[4];
        for (size_t at = 0; at < 4; ++at) {
            weights[at] = static_cast<Weight>(Arms[(codePoint - 0x2500) * 4 + at] - '0');
        }
        for (int direction = 0; direction < 4; ++direction) {
            arm(direction, weights);
        }
    }
}

void Canvas::block(char32_t codePoint)
{
    const int width = m_cell.width();
    const int height = m_cell.height();
    const auto eighths = [](int length, unsigned count) { return (length * static_cast<int>(count) + 4) / 8; };
    if (codePoint == 0x2580) {
        fill(0, 0, width, eighths(height, 4));
    } else if (codePoint <= 0x2588) {
        fill(0, height - eighths(height, codePoint - 0x2580), width, height);
    } else if (codePoint <= 0x258f) {
        fill(0, 0, std::max(1, eighths(width, 0x2590 - codePoint)), height);
    } else if (codePoint == 0x2590) {
        fill(eighths(width, 4), 0, width, height);
    } else if (codePoint <= 0x2593) {
        fill(0, 0, width, height, static_cast<int>(codePoint - 0x2590) * 64);
    } else if (codePoint == 0x2594) {
        fill(0, 0, width, std::max(1, eighths(height, 1)));
    } else if (codePoint == 0x2595) {
        fill(width - std::max(1, eighths(width, 1)), 0, width, height);
    } else {
        // Quadrants of U+2596 to U+259F: 1 upper left, 2 upper right, 4 lower left, 8 lower right.
        static constexpr unsigned Quadrants[] = {4, 8, 1, 13, 9, 7, 11, 2, 6, 14};
        const unsigned quadrants = Quadrants[codePoint - 0x2596];
        const int x = eighths(width, 4);
        const int y = eighths(height, 4);
        for (unsigned each = 0; each < 4; ++each) {
            if ((quadrants >> each & 1) != 0) {
                fill(each % 2 == 0 ? 0 : x, each < 2 ? 0 : y, each % 2 == 0 ? x : width, each < 2 ? y : height);
            }
        }
    }
}

void Canvas::braille(unsigned dots)
{
    // Bits 0 to 5 run down the left and then the right column; 6 and 7 were added below them.
    static constexpr int Columns[] = {0, 0, 0, 1, 1, 1, 0, 1};
    static constexpr int Rows[] = {0, 1, 2, 0, 1, 2, 3, 3};
    const int size = std::max(1, std::min(m_cell.width() / 4, m_cell.height() / 8));
    for (unsigned bit = 0; bit < 8; ++bit) {
        if ((dots >> bit & 1) != 0) {
            const int x = m_cell.width() * (2 * Columns[bit] + 1) / 4 - size / 2;
            const int y = m_cell.height() * (2 * Rows[bit] + 1) / 8 - size / 2;
            fill(x, y, x + size, y + size);
        }
    }
}

void Canvas::sextant(unsigned pattern)
{
    const int x = m_cell.width() / 2;
    for (unsigned bit = 0; bit < 6; ++bit) {
        if ((pattern >> bit & 1) != 0) {
            const int row = static_cast<int>(bit / 2);
            fill(bit % 2 == 0 ? 0 : x, m_cell.height() * row / 3, bit % 2 == 0 ? x : m_cell.width(),
                 m_cell.height() * (row + 1) / 3);
        }
    }
}

void Canvas::separator(char32_t codePoint)
{
    const qreal width = m_cell.width();
    const qreal height = m_cell.height();
    const qreal middle = height / 2;
    QPainterPath path;
    switch (codePoint) {
    case 0xe0b0: // arrows, filled and drawn
    case 0xe0b1:
        path.moveTo(0, 0);
        path.lineTo(width, middle);
        path.lineTo(0, height);
        break;
    case 0xe0b2:
    case 0xe0b3:
        path.moveTo(width, 0);
        path.lineTo(0, middle);
        path.lineTo(width, height);
        break;
    case 0xe0b4: // half circles
    case 0xe0b5:
        path.moveTo(0, 0);
        path.cubicTo(width * 4 / 3, 0, width * 4 / 3, height, 0, height);
        break;
    case 0xe0b6:
    case 0xe0b7:
        path.moveTo(width, 0);
        path.cubicTo(-width / 3, 0, -width / 3, height, width, height);
        break;
    case 0xe0b8: // corners
    case 0xe0b9:
        path.moveTo(0, 0);
        path.lineTo(width, height);
        path.lineTo(0, height);
        break;
    case 0xe0ba:
    case 0xe0bb:
        path.moveTo(width, 0);
        path.lineTo(0, height);
        path.lineTo(width, height);
        break;
    case 0xe0bc:
    case 0xe0bd:
        path.moveTo(width, 0);
        path.lineTo(0, height);
        path.lineTo(0, 0);
        break;
    default:
        path.moveTo(0, 0);
        path.lineTo(width, height);
        path.lineTo(width, 0);
        break;
    }
    const bool filled = codePoint % 2 == 0;
    if (!filled && codePoint >= 0xe0b8) {
        diagonal(codePoint == 0xe0bb || codePoint == 0xe0bd, codePoint == 0xe0b9 || codePoint == 0xe0bf);
        return;
    }
    smooth(path, filled);
}

/// U+1FB00 to U+1FB3B leave out the patterns that other blocks have: none, the left column, the right one, all.
unsigned sextantPattern(char32_t codePoint)
{
    unsigned pattern = codePoint - 0x1fb00 + 1;
    pattern += pattern >= 21 ? 1 : 0;
    pattern += pattern >= 42 ? 1 : 0;
    return pattern;
}

} // namespace

bool isBoxDrawing(char32_t codePoint)
{
    return codePoint >= 0x2500 &&
           (codePoint <= 0x259f || (codePoint >= 0x2800 && codePoint <= 0x28ff) ||
            (codePoint >= 0xe0b0 && codePoint <= 0xe0bf) || (codePoint >= 0x1fb00 && codePoint <= 0x1fb3b));
}

void drawBox(QPainter &painter, char32_t codePoint, const QRect &cell, const QColor &color, int lineWidth)
{
    Canvas canvas(painter, cell, color, lineWidth);
    if (codePoint <= 0x257f) {
        canvas.line(codePoint);
    } else if (codePoint <= 0x259f) {
        canvas.block(codePoint);
    } else if (codePoint <= 0x28ff) {
        canvas.braille(codePoint - 0x2800);
    } else if (codePoint <= 0xe0bf) {
        canvas.separator(codePoint);
    } else {
        canvas.sextant(sextantPattern(codePoint));
    }
}

} // namespace vt
