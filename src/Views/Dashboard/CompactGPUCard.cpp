#include "Views/Dashboard/CompactGPUCard.h"

#include "Views/Dashboard/DashboardFigures.h"

#include <QMap>
#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

constexpr std::array kTones{ToneName::Accent, ToneName::Purple, ToneName::Green, ToneName::Orange,
                            ToneName::Blue,   ToneName::Red,    ToneName::Gray};

// A curve for each processor that any sample knows, by its number; not a number where a sample doesn't know it.
QMap<int, QList<double>> curvesOf(const QList<MetricsSnapshot> &history)
{
    QMap<int, QList<double>> curves;
    for (const GPUChartDataPoint &point : DashboardFigures::buildChartData(history)) {
        if (!curves.contains(point.gpuIndex) && curves.size() == CompactGPUCard::kMostCurves) {
            continue;
        }
        QList<double> &values = curves[point.gpuIndex];
        values.resize(history.size(), std::nan(""));
        values[point.timeIndex] = point.value;
    }
    return curves;
}

// One processor keeps its colour whichever others there are.
ToneName toneOf(int gpuIndex)
{
    return kTones.at(static_cast<size_t>(gpuIndex) % kTones.size());
}

} // namespace

CompactGPUCard::CompactGPUCard(const Theme &theme, QWidget *parent)
    : CompactMetricsCard(theme, tr("GPU"), LegendStyle::OneLine, parent)
{
    chart().setMaximum(100);
    chart().setFormat([](double value) { return DashboardFigures::utilizationText(value).trimmed(); });
}

void CompactGPUCard::setMetrics(const std::optional<GPUMetrics> &told, const QList<MetricsSnapshot> &metricsHistory)
{
    const GPUMetrics gpuMetrics = told.value_or(GPUMetrics());
    const double average = DashboardFigures::averageUtilization(gpuMetrics);
    setFigure(DashboardFigures::figure(average, u"%"_s), average > DashboardFigures::kBusyGPU);

    const QMap<int, QList<double>> values = curvesOf(metricsHistory);
    QList<MetricChart::Curve> curves;
    for (const int index : values.keys()) {
        curves.append({tr("GPU %1").arg(index), toneOf(index), values.size() == 1});
    }
    chart().setSamples(curves, values.values());

    QList<LegendItem> legend;
    for (const GPUDevice &gpu :
         gpuMetrics.gpus.first(std::min(gpuMetrics.gpus.size(), DashboardFigures::kListedGPUs))) {
        legend.append({DashboardFigures::gpuTitle(gpu), toneOf(gpu.index),
                       DashboardFigures::utilizationText(gpu.utilization),
                       gpu.utilization > DashboardFigures::kBusyGPU});
    }
    setLegend(legend);
    QStringList notes{DashboardFigures::moreGPUs(gpuMetrics)};
    if (gpuMetrics.gpus.isEmpty()) {
        notes.append(told ? tr("No GPU devices detected") : tr("Detecting GPU devices..."));
    } else if (DashboardFigures::haveSimilarUtilization(gpuMetrics)) {
        notes.append(tr("GPUs have similar utilization"));
    }
    notes.removeAll(QString());
    setFootnote(notes.join(u'\n'));
}
