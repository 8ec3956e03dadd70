// What the program finds in the library of charts.

#include "Views/Components/Charts/CurveChart.h"

class ChartModule : public QObject, public ChartFactory
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "Tarnwell.ChartFactory/1")
    Q_INTERFACES(ChartFactory)

public:
    ChartSurface *makeSurface(QWidget *parent) override { return new CurveChart(parent); }
};

#include "ChartModule.moc"
