#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

class Theme;

/// A line of two pixels that moves while something is under way. It always takes its place, so that nothing jumps.
class ProgressLine : public QWidget
{
    Q_OBJECT

public:
    explicit ProgressLine(const Theme &theme, QWidget *parent = nullptr);

    void setActive(bool isActive);

    bool isActive() const { return m_isActive; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    const Theme &m_theme;
    QTimer m_frames;
    QElapsedTimer m_clock;
    bool m_isActive = false;
};
