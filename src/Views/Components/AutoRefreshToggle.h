#pragma once

#include <QCheckBox>

class Theme;

/// The switch "Auto" of sections that refresh by themselves; toggled() tells of it.
class AutoRefreshToggle : public QCheckBox
{
    Q_OBJECT

public:
    explicit AutoRefreshToggle(const Theme &theme, QWidget *parent = nullptr);

private:
    void updateHelp();
};
