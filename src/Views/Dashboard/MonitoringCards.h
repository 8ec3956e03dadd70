#pragma once

#include "Views/Components/MetricChart.h"

class ChartCard;
class DashboardViewModel;
class GPUCard;
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

    ChartCard &cpu() const { return *m_cpu; }

    ChartCard &memory() const { return *m_memory; }

    ChartCard &network() const { return *m_network; }

    ChartCard &diskIO() const { return *m_diskIO; }

    GPUCard &gpu() const { return *m_gpu; }

    /// Whether there is no sample yet.
    bool isLoading() const;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void followModel();
    static void showRates(ChartCard &card, const MetricChart::Curve &first, const MetricChart::Curve &second,
                          const QList<double> &firstRates, const QList<double> &secondRates);
    void arrange();

    const DashboardViewModel &m_model;
    TextLabel *m_loading;
    QWidget *m_place;
    QList<QHBoxLayout *> m_lines;
    ChartCard *m_cpu;
    ChartCard *m_memory;
    ChartCard *m_network;
    ChartCard *m_diskIO;
    GPUCard *m_gpu;
    QList<int> m_arrangement;
};
