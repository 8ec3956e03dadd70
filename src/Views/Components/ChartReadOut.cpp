#include "Views/Components/ChartReadOut.h"

#include "Views/Theme/Theme.h"

#include <QPainter>
#include <algorithm>

namespace
{

constexpr int kMargin = 8;
constexpr int kLineGap = 2;
constexpr int kDistance = 10; // from the sample

} // namespace

ChartReadOut::ChartReadOut(const Theme &theme, QWidget *window)
    : QWidget(window)
    , m_theme(theme)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFont(theme.font(TextStyle::Caption));
}

void ChartReadOut::present(const QStringList &lines, const QPoint &point)
{
    m_lines = lines;
    int width = 0;
    for (const QString &line : lines) {
        width = std::max(width, fontMetrics().horizontalAdvance(line));
    }
    const int step = fontMetrics().height() + kLineGap;
    const QSize size(width + 2 * kMargin, static_cast<int>(lines.size()) * step - kLineGap + 2 * kMargin - 4);
    const QRect room = parentWidget()->rect();
    const bool fitsRight = point.x() + kDistance + size.width() <= room.right();
    const int x = fitsRight ? point.x() + kDistance : point.x() - kDistance - size.width();
    const int y = std::clamp(point.y(), 0, std::max(0, room.height() - size.height()));
    setGeometry(QRect(QPoint(std::max(x, 0), y), size));
    raise();
    show();
    update();
}

void ChartReadOut::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(m_theme.tokens().raised);
    painter.setPen(m_theme.tokens().line);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Metrics::kControlRadius,
                            Metrics::kControlRadius);
    const int step = fontMetrics().height() + kLineGap;
    int baseline = kMargin - 2 + fontMetrics().ascent();
    for (qsizetype i = 0; i < m_lines.size(); ++i) {
        painter.setPen(i + 1 < m_lines.size() ? m_theme.tokens().text : m_theme.tokens().dim);
        painter.drawText(kMargin, baseline, m_lines.at(i));
        baseline += step;
    }
}
