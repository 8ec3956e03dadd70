#pragma once

#include <QList>
#include <QWidget>

class ContentViewModel;
class QPushButton;
class Theme;

/// The sections side by side, each by its icon; the one on show has its title as well.
class SectionStrip : public QWidget
{
    Q_OBJECT

public:
    /// Both outlive the strip.
    SectionStrip(const Theme &theme, ContentViewModel &model, QWidget *parent = nullptr);

    /// In the order of the tabs.
    const QList<QPushButton *> &buttons() const { return m_buttons; }

private:
    void follow();

    ContentViewModel &m_model;
    QList<QPushButton *> m_buttons;
};
