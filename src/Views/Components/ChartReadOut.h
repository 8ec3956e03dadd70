#pragma once

#include <QStringList>
#include <QWidget>

class Theme;

/// The values of one sample of a chart in a small box above it, which may reach beyond the chart. It belongs to the
/// window and takes no mouse.
class ChartReadOut : public QWidget
{
    Q_OBJECT

public:
    ChartReadOut(const Theme &theme, QWidget *window);

    /// The last line is dim. `point` is in the window, where the sample is; the box keeps beside it and inside of the
    /// window.
    void present(const QStringList &lines, const QPoint &point);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    QStringList m_lines;
};
