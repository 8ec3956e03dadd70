#pragma once

#include <QWidget>

class Motion;
class Theme;

/// A line of two pixels that moves while something is under way. It always takes its place, so that nothing jumps.
class ProgressLine : public QWidget
{
    Q_OBJECT

public:
    explicit ProgressLine(const Theme &theme, QWidget *parent = nullptr);

    void setActive(bool isActive);

    bool isActive() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    Motion *m_motion;
};
