#pragma once

#include "Models/Metrics.h"
#include "Views/Components/CompactMetricsCard.h"

/// The mean load of the graphics processors, a curve for each of them, and the first ones by name.
class CompactGPUCard : public CompactMetricsCard
{
    Q_OBJECT

public:
    /// Processors that get a curve; a server may tell of any number.
    static constexpr qsizetype kMostCurves = 16;

    explicit CompactGPUCard(const Theme &theme, QWidget *parent = nullptr);

    /// Without `gpuMetrics` the server has not told of any yet, or of none this time.
    void setMetrics(const std::optional<GPUMetrics> &gpuMetrics, const QList<MetricsSnapshot> &metricsHistory);
};
