#pragma once

#include "Views/Components/Stat.h"

#include <QWidget>

class TextLabel;
class Theme;

/// A label with an optional count or text in a colour: "Total 214".
class StatsView : public QWidget
{
    Q_OBJECT

public:
    explicit StatsView(const Theme &theme, QWidget *parent = nullptr);

    void setStat(const Stat &stat);

    const Stat &stat() const { return m_stat; }

protected:
    void changeEvent(QEvent *event) override;

private:
    void updateColor();

    const Theme &m_theme;
    Stat m_stat;
    TextLabel *m_label;
    TextLabel *m_value;
};
