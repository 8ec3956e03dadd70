#pragma once

#include "Views/Components/ChartSurface.h"

#include <QChartView>

class QAreaSeries;
class QLineSeries;
class QValueAxis;

/// Curves on a light grid, without axes, legend or animation.
class CurveChart : public QChartView, public ChartSurface
{
    Q_OBJECT

public:
    explicit CurveChart(QWidget *parent);

    QWidget *widget() override { return this; }

    void draw(const Picture &picture) override;
    QRectF plotArea() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Series {
        QLineSeries *line = nullptr;
        QAreaSeries *area = nullptr; ///< null without one
        QLineSeries *upper = nullptr;
        ChartSurface::Curve shown;
    };

    Series addSeries(bool isFilled);
    void removeSeries();
    static void drawCurve(Series &series, const Curve &curve);

    QValueAxis *m_x;
    QValueAxis *m_y;
    QList<Series> m_series;
};
