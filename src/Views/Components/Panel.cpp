#include "Views/Components/Panel.h"

#include "Views/Theme/Theme.h"

#include <QPainter>

Panel::Panel(const Theme &theme, QColor Tokens::*ground, Qt::Edges lines, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_ground(ground)
    , m_lines(lines)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void Panel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const Tokens &t = m_theme.tokens();
    painter.fillRect(rect(), t.*m_ground);
    if (m_lines.testFlag(Qt::TopEdge)) {
        painter.fillRect(0, 0, width(), 1, t.line);
    }
    if (m_lines.testFlag(Qt::BottomEdge)) {
        painter.fillRect(0, height() - 1, width(), 1, t.line);
    }
    if (m_lines.testFlag(Qt::RightEdge)) {
        painter.fillRect(width() - 1, 0, 1, height(), t.line);
    }
    if (m_lines.testFlag(Qt::LeftEdge)) {
        painter.fillRect(0, 0, 1, height(), t.line);
    }
}
