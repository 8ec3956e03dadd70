#include "Views/Components/MetricChart.h"

#include "Views/Components/ChartLibrary.h"
#include "Views/Components/ChartReadOut.h"
#include "Views/Components/ChartSurface.h"
#include "Views/Components/Labels.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kHeight = 76;
constexpr int kLeastWidth = 80;
constexpr double kFillOpacity = 0.14;
constexpr qreal kDot = 3.5;

} // namespace

/// The line and the dots at the sample that is read out, above the curves.
class MetricChart::Marker : public QWidget
{
public:
    explicit Marker(MetricChart &chart)
        : QWidget(&chart)
        , m_chart(chart)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        const qsizetype count = m_chart.sampleCount();
        if (m_chart.m_marked < 0 || m_chart.m_marked >= count) {
            return;
        }
        const QRectF plot = m_chart.m_surface->plotArea();
        const double sample = kSamples - 1 - static_cast<double>(m_chart.m_marked);
        const double x = plot.left() + plot.width() * sample / (kSamples - 1);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(m_chart.m_theme.tokens().faint, 1));
        painter.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
        for (qsizetype i = 0; i < m_chart.m_curves.size(); ++i) {
            const double value = m_chart.valueAt(i, count - 1 - m_chart.m_marked);
            if (std::isfinite(value)) {
                const double share = std::clamp(value / m_chart.maximum(), 0.0, 1.0);
                painter.setPen(QPen(m_chart.m_theme.tokens().surface, 1.5));
                painter.setBrush(m_chart.m_theme.tone(m_chart.m_curves.at(i).tone).color);
                painter.drawEllipse(QPointF(x, plot.bottom() - plot.height() * share), kDot, kDot);
            }
        }
    }

private:
    MetricChart &m_chart;
};

MetricChart::MetricChart(const Theme &theme, const QString &name, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
{
    setAccessibleName(name);
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&theme, &Theme::changed, this, &MetricChart::draw);
    describe();
}

MetricChart::~MetricChart()
{
    delete m_readOut; // it belongs to the window
}

void MetricChart::setMaximum(double maximum)
{
    m_isAutomatic = false;
    m_maximum = maximum;
}

void MetricChart::setAutomaticMaximum(double least)
{
    m_isAutomatic = true;
    m_maximum = least;
}

void MetricChart::setSamples(const QList<Curve> &curves, const QList<QList<double>> &values)
{
    m_curves = curves;
    m_values = values;
    for (QList<double> &list : m_values) {
        list = list.last(std::min<qsizetype>(list.size(), kSamples));
    }
    describe();
    if (isVisible()) {
        draw();
    }
}

double MetricChart::roundMaximum(double value)
{
    if (!std::isfinite(value) || value <= 0) {
        return 1;
    }
    const double unit = std::pow(10.0, std::floor(std::log10(value)));
    for (const double step : {1.0, 2.0, 5.0}) {
        if (value <= step * unit) {
            return step * unit;
        }
    }
    return 10 * unit;
}

double MetricChart::maximum() const
{
    if (!m_isAutomatic) {
        return m_maximum;
    }
    double most = m_maximum;
    for (const QList<double> &list : m_values) {
        for (const double value : list) {
            most = std::isfinite(value) ? std::max(most, value) : most;
        }
    }
    return roundMaximum(most);
}

qsizetype MetricChart::sampleCount() const
{
    return m_values.isEmpty() ? 0 : m_values.constFirst().size();
}

double MetricChart::valueAt(qsizetype curve, qsizetype sample) const
{
    const QList<double> values = m_values.value(curve);
    return sample >= 0 && sample < values.size() ? values.at(sample) : std::nan("");
}

QList<QPointF> MetricChart::points(qsizetype curve) const
{
    QList<QPointF> points;
    const double most = maximum();
    const qsizetype count = sampleCount();
    for (qsizetype sample = 0; sample < count; ++sample) {
        const double value = valueAt(curve, sample);
        if (std::isfinite(value)) {
            points.append({static_cast<double>(kSamples - count + sample), std::clamp(value, 0.0, most)});
        }
    }
    return points;
}

void MetricChart::load()
{
    if (m_surface || m_error) {
        return;
    }
    const ChartLibrary::Loaded library = ChartLibrary::load();
    if (!library.factory) {
        m_error = new TextLabel(m_theme, TextStyle::Detail, tr("Charts cannot be shown: %1").arg(library.error),
                                TextLabel::Shade::Dim, this);
        m_error->setWordWrap(true);
        m_error->setGeometry(rect());
        m_error->show();
        return;
    }
    m_surface = library.factory->makeSurface(this);
    m_surface->widget()->setGeometry(rect());
    m_surface->widget()->show();
    m_marker = new Marker(*this);
    m_marker->setGeometry(rect());
    m_marker->show();
}

void MetricChart::draw()
{
    if (!m_surface) {
        return;
    }
    ChartSurface::Picture picture{
        .grid = m_theme.tokens().soft, .width = kSamples - 1, .height = maximum(), .curves = {}};
    for (qsizetype i = 0; i < m_curves.size(); ++i) {
        const QColor line = m_theme.tone(m_curves.at(i).tone).color;
        QColor fill;
        if (m_curves.at(i).isFilled) {
            fill = line;
            fill.setAlphaF(kFillOpacity);
        }
        picture.curves.append({.line = line, .fill = fill, .points = points(i)});
    }
    m_surface->draw(picture);
    m_marker->update();
    showReadOut();
}

void MetricChart::describe()
{
    const qsizetype count = sampleCount();
    QStringList values;
    for (qsizetype i = 0; i < m_curves.size(); ++i) {
        if (const double newest = valueAt(i, count - 1); std::isfinite(newest) && m_format) {
            values.append((m_curves.at(i).name + u' ' + m_format(newest)).trimmed());
        }
    }
    setAccessibleDescription(values.isEmpty() ? tr("No samples yet") : tr("Now %1").arg(values.join(u", "_s)));
}

void MetricChart::mark(qsizetype fromNewest)
{
    const qsizetype last = sampleCount() - 1;
    m_marked = fromNewest < 0 ? -1 : std::min(fromNewest, last);
    if (m_marker) {
        m_marker->update();
    }
    showReadOut();
}

QStringList MetricChart::readOut() const
{
    const qsizetype sample = sampleCount() - 1 - m_marked;
    if (m_marked < 0 || sample < 0 || !m_format) {
        return {};
    }
    QStringList lines;
    for (qsizetype i = 0; i < m_curves.size(); ++i) {
        if (const double value = valueAt(i, sample); std::isfinite(value)) {
            lines.append((m_curves.at(i).name + u' ' + m_format(value)).trimmed());
        }
    }
    if (m_age) {
        lines.append(m_age(sample));
    }
    return lines;
}

void MetricChart::showReadOut()
{
    const QStringList lines = isVisible() && m_surface ? readOut() : QStringList();
    if (lines.isEmpty()) {
        delete m_readOut;
        return;
    }
    if (!m_readOut) {
        m_readOut = new ChartReadOut(m_theme, window());
    }
    const QRectF plot = m_surface->plotArea();
    const double x = plot.left() + plot.width() * (kSamples - 1 - static_cast<double>(m_marked)) / (kSamples - 1);
    m_readOut->present(lines, mapTo(window(), QPoint(static_cast<int>(x), static_cast<int>(plot.top()))));
}

QString MetricChart::error() const
{
    return m_error ? m_error->text() : QString();
}

QSize MetricChart::sizeHint() const
{
    return {2 * kLeastWidth, kHeight};
}

QSize MetricChart::minimumSizeHint() const
{
    return {kLeastWidth, kHeight};
}

void MetricChart::paintEvent(QPaintEvent *)
{
    if (hasFocus()) {
        QPainter painter(this);
        TarnwellStyle::drawFocusRing(painter, QRectF(rect()), Metrics::kControlRadius, m_theme.tokens().accent.color);
    }
}

void MetricChart::resizeEvent(QResizeEvent *)
{
    for (QWidget *layer : {m_surface ? m_surface->widget() : nullptr, static_cast<QWidget *>(m_marker),
                           static_cast<QWidget *>(m_error)}) {
        if (layer) {
            layer->setGeometry(rect());
        }
    }
    mark(-1);
}

void MetricChart::showEvent(QShowEvent *)
{
    load();
    draw();
}

void MetricChart::hideEvent(QHideEvent *)
{
    mark(-1);
}

void MetricChart::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_surface || sampleCount() == 0) {
        return;
    }
    const QRectF plot = m_surface->plotArea();
    const double share = (event->position().x() - plot.left()) / plot.width();
    const auto place = static_cast<qsizetype>(std::lround((1 - share) * (kSamples - 1)));
    mark(std::clamp<qsizetype>(place, 0, sampleCount() - 1));
}

void MetricChart::leaveEvent(QEvent *)
{
    mark(-1);
}

void MetricChart::keyPressEvent(QKeyEvent *event)
{
    const qsizetype oldest = sampleCount() - 1;
    switch (event->key()) {
    case Qt::Key_Left:
        mark(std::min(m_marked + 1, oldest));
        break;
    case Qt::Key_Right:
        mark(std::max<qsizetype>(m_marked - 1, 0));
        break;
    case Qt::Key_Home:
        mark(oldest);
        break;
    case Qt::Key_End:
        mark(0);
        break;
    case Qt::Key_Escape:
        mark(-1);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void MetricChart::focusOutEvent(QFocusEvent *event)
{
    mark(-1);
    QWidget::focusOutEvent(event);
}
