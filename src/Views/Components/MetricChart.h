#pragma once

#include "Views/Theme/Tokens.h"

#include <QList>
#include <QPointer>
#include <QWidget>
#include <functional>

class ChartReadOut;
class ChartSurface;
class TextLabel;
class Theme;

/// The curves of the newest sixty samples, the newest at the right edge. Pointing at a sample, or going to it with
/// the arrow keys, reads out its values and its age. What draws the curves is loaded when the chart first comes on
/// show.
class MetricChart : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kSamples = 60;

    struct Curve {
        QString name; ///< empty where there is but one
        ToneName tone = ToneName::Accent;
        bool isFilled = false; ///< the area below it

        bool operator==(const Curve &) const = default;
    };

    /// How a value is read out.
    using Format = std::function<QString(double value)>;
    /// How long ago a sample was taken, by its place among the values.
    using Age = std::function<QString(qsizetype sample)>;

    /// `name` says to assistive software what the curves are of. `theme` outlives the chart.
    MetricChart(const Theme &theme, const QString &name, QWidget *parent = nullptr);
    ~MetricChart() override;

    void setFormat(Format format) { m_format = std::move(format); }

    void setAge(Age age) { m_age = std::move(age); }

    /// The upper edge. Without one it is the next round number above all values, and not below `least`.
    void setMaximum(double maximum);
    void setAutomaticMaximum(double least);

    /// Shows these values, oldest first: a list for each curve, all of one length; of more than sixty the newest
    /// count. A value that is not finite is one that is not there.
    void setSamples(const QList<Curve> &curves, const QList<QList<double>> &values);

    /// The next of 1, 2, 5, 10, 20... (or 0.5, 0.2...) that is not below `value`.
    static double roundMaximum(double value);

    double maximum() const;

    /// What is read out at the moment; empty when nothing is.
    QStringList readOut() const;

    /// Why there are no curves; empty when there are, and while none has been on show.
    QString error() const;

    /// The points of a curve as they are drawn: x is kSamples - 1 at the right edge.
    QList<QPointF> points(qsizetype curve) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    class Marker;

    void load();
    void draw();
    qsizetype sampleCount() const;
    double valueAt(qsizetype curve, qsizetype sample) const; ///< not a number where there is none
    void describe();

    /// The place of the sample that is read out, counted from the newest (0); below 0 for none.
    void mark(qsizetype fromNewest);
    void showReadOut();

    const Theme &m_theme;
    Format m_format;
    Age m_age;
    double m_maximum = 100;
    bool m_isAutomatic = false;
    QList<Curve> m_curves;
    QList<QList<double>> m_values;
    ChartSurface *m_surface = nullptr;
    Marker *m_marker = nullptr;
    TextLabel *m_error = nullptr;
    qsizetype m_marked = -1;
    QPointer<ChartReadOut> m_readOut;
};
