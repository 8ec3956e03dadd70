#pragma once

#include "Views/Components/Panel.h"
#include "Views/Components/Stat.h"

#include <QList>

class ElidedLabel;
class QHBoxLayout;
class StatsView;

/// The line below a section's content: its figures, whether the rows' order is held, and a note at the right.
class StatusLine : public Panel
{
    Q_OBJECT

public:
    explicit StatusLine(const Theme &theme, QWidget *parent = nullptr);

    void setStats(const QList<Stat> &stats);
    QList<Stat> stats() const;

    void setOrderHeld(bool isHeld);

    bool isOrderHeld() const;

    void setNote(const QString &note);

    /// A widget of the section's own at the right end.
    void addWidget(QWidget *widget);

private:
    const Theme &m_theme;
    QHBoxLayout *m_line;
    QHBoxLayout *m_figures;
    QList<StatsView *> m_stats;
    QWidget *m_held;
    ElidedLabel *m_note;
};
