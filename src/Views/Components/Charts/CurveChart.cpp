#include "Views/Components/Charts/CurveChart.h"

#include <QAreaSeries>
#include <QChart>
#include <QGraphicsLayout>
#include <QLegend>
#include <QLineSeries>
#include <QResizeEvent>
#include <QValueAxis>
#include <algorithm>

namespace
{

constexpr qreal kLineWidth = 1.6;
constexpr int kGridLines = 4; // the upper and the lower edge among them
constexpr qreal kEdge = 2;    // so that a line along an edge is not cut in half

} // namespace

CurveChart::CurveChart(QWidget *parent)
    : QChartView(new QChart, parent)
    , m_x(new QValueAxis(chart()))
    , m_y(new QValueAxis(chart()))
{
    setFrameShape(QFrame::NoFrame);
    setRenderHint(QPainter::Antialiasing);
    setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setInteractive(false);
    viewport()->setFocusPolicy(Qt::NoFocus); // and the view's, its proxy
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setBackgroundBrush(Qt::NoBrush);
    viewport()->setAutoFillBackground(false);

    chart()->setAnimationOptions(QChart::NoAnimation);
    chart()->setBackgroundVisible(false);
    chart()->setMargins({});
    chart()->layout()->setContentsMargins(0, 0, 0, 0);
    chart()->legend()->hide();
    chart()->addAxis(m_x, Qt::AlignBottom);
    chart()->addAxis(m_y, Qt::AlignLeft);
    m_x->setVisible(false);
    m_y->setLabelsVisible(false);
    m_y->setLineVisible(false);
    m_y->setTickCount(kGridLines);
}

void CurveChart::draw(const Picture &picture)
{
    m_x->setRange(0, picture.width);
    m_y->setRange(0, picture.height);
    if (m_y->gridLinePen().color() != picture.grid) {
        m_y->setGridLinePen(QPen(picture.grid, 1));
    }
    const auto isOfOneKind = [](const Series &series, const Curve &curve) {
        return (series.area != nullptr) == curve.fill.isValid();
    };
    if (!std::ranges::equal(m_series, picture.curves, isOfOneKind)) {
        removeSeries();
        for (const Curve &curve : picture.curves) {
            m_series.append(addSeries(curve.fill.isValid()));
        }
    }
    for (qsizetype i = 0; i < m_series.size(); ++i) {
        drawCurve(m_series[i], picture.curves.at(i));
    }
}

CurveChart::Series CurveChart::addSeries(bool isFilled)
{
    Series series;
    if (isFilled) { // below its line, and without an edge of its own, which would run along the ground as well
        series.upper = new QLineSeries;
        series.area = new QAreaSeries(series.upper);
        series.upper->setParent(series.area);
        series.area->setPen(Qt::NoPen);
        chart()->addSeries(series.area);
        series.area->attachAxis(m_x);
        series.area->attachAxis(m_y);
    }
    series.line = new QLineSeries;
    chart()->addSeries(series.line);
    series.line->attachAxis(m_x);
    series.line->attachAxis(m_y);
    return series;
}

void CurveChart::removeSeries()
{
    chart()->removeAllSeries();
    m_series.clear();
}

void CurveChart::drawCurve(Series &series, const Curve &curve)
{
    if (series.shown.line != curve.line) {
        QPen pen(curve.line, kLineWidth);
        pen.setJoinStyle(Qt::RoundJoin);
        pen.setCapStyle(Qt::RoundCap);
        series.line->setPen(pen);
    }
    if (series.area && series.shown.fill != curve.fill) {
        series.area->setBrush(curve.fill);
    }
    if (series.shown.points != curve.points) {
        series.line->replace(curve.points);
        if (series.upper) {
            series.upper->replace(curve.points);
        }
    }
    series.shown = curve;
}

QRectF CurveChart::plotArea() const
{
    return QRectF(rect()).adjusted(kEdge, kEdge, -kEdge, -kEdge);
}

void CurveChart::resizeEvent(QResizeEvent *event)
{
    chart()->setPlotArea(plotArea());
    QChartView::resizeEvent(event);
}
