#pragma once

#include "Views/Components/Card.h"
#include "Views/Components/MetricChart.h"

class QGridLayout;

/// A card with a chart, its figure of the moment beside the title and, where there are several curves, a legend with
/// the figure of each.
class CompactMetricsCard : public Card
{
    Q_OBJECT

public:
    struct LegendItem {
        QString name;
        ToneName tone = ToneName::Accent;
        QString figure;
        bool isWarning = false; ///< the figure is in the colour of warnings

        bool operator==(const LegendItem &) const = default;
    };

    /// How an entry of the legend stands: its figure behind its name, or below it.
    enum class LegendStyle { OneLine, TwoLines };

    CompactMetricsCard(const Theme &theme, const QString &title, LegendStyle legendStyle, QWidget *parent = nullptr);

    MetricChart &chart() const { return *m_chart; }

    /// Beside the title; empty for none.
    void setFigure(const QString &figure, bool isWarning = false);

    QString figure() const;

    /// In two columns.
    void setLegend(const QList<LegendItem> &items);

    /// What stands in the legend.
    QStringList legend() const;

    /// Dim words below the chart; empty for none.
    void setFootnote(const QString &footnote);

    QString footnote() const;

private:
    class Figure;
    class LegendEntry;

    const Theme &m_theme;
    LegendStyle m_legendStyle;
    Figure *m_figure;
    QGridLayout *m_legend;
    QList<LegendEntry *> m_entries;
    MetricChart *m_chart;
    TextLabel *m_footnote;
};
