#include "Views/Components/Spinner.h"

#include <QPainter>

namespace
{

constexpr int kUnits = 16; // of a degree

} // namespace

void Spinner::paint(QPainter &painter, const QRectF &circle, double width, const QColor &ring, const QColor &quarter,
                    double phase)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(ring, width));
    painter.drawEllipse(circle);
    painter.setPen(QPen(quarter, width, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(circle, static_cast<int>((90 - 360 * phase) * kUnits), -90 * kUnits);
}
