#pragma once

#include <QWidget>

class Theme;
struct Tokens;

/// A ground in one of the theme's colours, with lines along the edges where it meets its neighbours.
class Panel : public QWidget
{
    Q_OBJECT

public:
    Panel(const Theme &theme, QColor Tokens::*ground, Qt::Edges lines = {}, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    QColor Tokens::*m_ground;
    Qt::Edges m_lines;
};
