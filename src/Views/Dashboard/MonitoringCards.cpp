#include "Views/Dashboard/MonitoringCards.h"

#include "Views/Components/CompactMetricsCard.h"
#include "Views/Components/Labels.h"
#include "Views/Dashboard/CompactGPUCard.h"
#include "Views/Dashboard/DashboardFigures.h"
#include "Views/Dashboard/DashboardViewModel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

using LegendStyle = CompactMetricsCard::LegendStyle;

namespace
{

constexpr int kGap = Metrics::kCardGap - 2 * Card::kShadow;
constexpr int kCards = 5;
constexpr int kOneLineWidth = 1180;
constexpr int kTwoLinesWidth = 620;
constexpr double kLeastRateMaximum = 0.01; // MB/s: idle noise stays low in the chart

// How many cards stand in each line at a width.
QList<int> arrangementFor(int width)
{
    if (width >= kOneLineWidth) {
        return {kCards};
    }
    return width >= kTwoLinesWidth ? QList<int>{2, 3} : QList<int>{2, 2, 1};
}

template<typename Value>
QList<double> valuesOf(const QList<MetricsSnapshot> &history, Value value)
{
    QList<double> values;
    values.reserve(history.size());
    for (const MetricsSnapshot &snapshot : history) {
        values.append(value(snapshot));
    }
    return values;
}

QString coresOf(const std::optional<SystemInfo> &info)
{
    return info && !info->cpuCount.isEmpty() ? MonitoringCards::tr("%1 vCPUs").arg(info->cpuCount) : QString();
}

QString percent(double value)
{
    return DashboardFigures::figure(value, u"%"_s);
}

} // namespace

MonitoringCards::MonitoringCards(const Theme &theme, const DashboardViewModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_loading(new TextLabel(theme, TextStyle::Detail, tr("Loading metrics..."), TextLabel::Shade::Dim, this))
    , m_place(new QWidget(this))
    , m_cpu(new CompactMetricsCard(theme, tr("CPU"), LegendStyle::OneLine, m_place))
    , m_memory(new CompactMetricsCard(theme, tr("Memory"), LegendStyle::OneLine, m_place))
    , m_network(new CompactMetricsCard(theme, tr("Network"), LegendStyle::TwoLines, m_place))
    , m_diskIO(new CompactMetricsCard(theme, tr("Disk I/O"), LegendStyle::TwoLines, m_place))
    , m_gpu(new CompactGPUCard(theme, m_place))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    m_loading->setContentsMargins(Card::kShadow, 4, 0, 8);
    column->addWidget(m_loading);
    column->addWidget(m_place);
    auto *lines = new QVBoxLayout(m_place);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(kGap);
    for (CompactMetricsCard *card :
         {m_cpu, m_memory, m_network, m_diskIO, static_cast<CompactMetricsCard *>(m_gpu)}) {
        card->chart().setAge([&model](qsizetype sample) { return model.sampleAge(sample); });
        m_lines.append(new QHBoxLayout);
        m_lines.constLast()->setSpacing(kGap);
        lines->addLayout(m_lines.constLast());
    }
    for (CompactMetricsCard *card : {m_cpu, m_memory}) {
        card->chart().setFormat(percent);
    }
    for (CompactMetricsCard *card : {m_network, m_diskIO}) {
        card->chart().setFormat(&DashboardFigures::formatRate);
        card->chart().setAutomaticMaximum(kLeastRateMaximum);
    }
    connect(&model, &DashboardViewModel::sampled, this, [this] {
        if (isVisible()) { // else with the next showing
            followModel();
        }
    });
    arrange();
    followModel();
}

bool MonitoringCards::isLoading() const
{
    return !m_loading->isHidden();
}

void MonitoringCards::followModel()
{
    const auto &current = m_model.currentMetrics();
    m_loading->setVisible(!current);
    m_place->setVisible(current.has_value());
    if (!current) {
        return;
    }
    const QList<MetricsSnapshot> &history = m_model.metricsHistory();
    using Snapshot = const MetricsSnapshot &;
    m_cpu->setFigure(percent(current->cpuUsage));
    m_cpu->chart().setSamples({{{}, ToneName::Accent, true}},
                              {valuesOf(history, [](Snapshot sample) { return sample.cpuUsage; })});
    m_cpu->setFootnote(coresOf(m_model.systemInfo()));
    m_memory->setFigure(percent(DashboardFigures::memoryPercent(current->memoryUsage)));
    m_memory->setFootnote(DashboardFigures::memoryText(current->memoryUsage));
    m_memory->chart().setSamples({{{}, ToneName::Purple, true}}, {valuesOf(history, [](Snapshot sample) {
                                     return DashboardFigures::memoryPercent(sample.memoryUsage);
                                 })});
    showRates(*m_network, {tr("Receive"), ToneName::Green, true}, {tr("Transmit"), ToneName::Blue, false},
              valuesOf(history, [](Snapshot s) { return DashboardFigures::receiveRate(s.networkMetrics); }),
              valuesOf(history, [](Snapshot s) { return DashboardFigures::transmitRate(s.networkMetrics); }));
    showRates(*m_diskIO, {tr("Read"), ToneName::Orange, true}, {tr("Write"), ToneName::Red, false},
              valuesOf(history, [](Snapshot s) { return DashboardFigures::readRate(s.diskIOMetrics); }),
              valuesOf(history, [](Snapshot s) { return DashboardFigures::writeRate(s.diskIOMetrics); }));
    m_gpu->setMetrics(current->gpuMetrics, history);
}

void MonitoringCards::showRates(CompactMetricsCard &card, const MetricChart::Curve &first,
                                const MetricChart::Curve &second, const QList<double> &firstRates,
                                const QList<double> &secondRates)
{
    card.setLegend({{first.name, first.tone, DashboardFigures::formatRate(firstRates.constLast())},
                    {second.name, second.tone, DashboardFigures::formatRate(secondRates.constLast())}});
    card.chart().setSamples({first, second}, {firstRates, secondRates});
}

void MonitoringCards::showEvent(QShowEvent *event)
{
    followModel();
    QWidget::showEvent(event);
}

void MonitoringCards::resizeEvent(QResizeEvent *)
{
    arrange();
}

void MonitoringCards::arrange()
{
    const QList<int> arrangement = arrangementFor(width());
    if (std::exchange(m_arrangement, arrangement) == arrangement) {
        return;
    }
    CompactMetricsCard *const cards[kCards]{m_cpu, m_memory, m_network, m_diskIO, m_gpu};
    int next = 0;
    for (qsizetype line = 0; line < arrangement.size(); ++line) {
        for (int i = 0; i < arrangement.at(line); ++i) {
            m_lines.at(line)->removeWidget(cards[next]);
            m_lines.at(line)->addWidget(cards[next++], 1);
        }
    }
}
