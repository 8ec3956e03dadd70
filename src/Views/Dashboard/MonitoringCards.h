#pragma once

#include "Views/Components/MetricChart.h"

class CompactMetricsCard;
class DashboardViewModel;
class CompactGPUCard;
class QHBoxLayout;
class QVBoxLayout;
class TextLabel;
class Theme;

/// The load of a server: five cards with the figures of the newest sample and the curves of the last sixty.
class MonitoringCards : public QWidget
{
    Q_OBJECT

public:
    /// Both outlive it.
    MonitoringCards(const Theme &theme, const DashboardViewModel &model, QWidget *parent = nullptr);

    CompactMetricsCard &cpu() const { return *m_cpu; }

    CompactMetricsCard &memory() const { return *m_memory; }

    CompactMetricsCard &network() const { return *m_network; }

    CompactMetricsCard &diskIO() const { return *m_diskIO; }

    CompactGPUCard &gpu() const { return *m_gpu; }

    /// Whether there is no sample yet.
    bool isLoading() const;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void followModel();
    static void showRates(CompactMetricsCard &card, const MetricChart::Curve &first, const MetricChart::Curve &second,
                          const QList<double> &firstRates, const QList<double> &secondRates);
    void arrange();

    const DashboardViewModel &m_model;
    TextLabel *m_loading;
    QWidget *m_place;
    QList<QHBoxLayout *> m_lines;
    CompactMetricsCard *m_cpu;
    CompactMetricsCard *m_memory;
    CompactMetricsCard *m_network;
    CompactMetricsCard *m_diskIO;
    CompactGPUCard *m_gpu;
    QList<int> m_arrangement;
};
