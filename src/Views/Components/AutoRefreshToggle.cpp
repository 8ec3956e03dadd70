#include "Views/Components/AutoRefreshToggle.h"

#include "Views/Theme/Theme.h"

AutoRefreshToggle::AutoRefreshToggle(const Theme &theme, QWidget *parent)
    : QCheckBox(tr("Auto"), parent)
{
    setFont(theme.font(TextStyle::Detail));
    setAccessibleName(tr("Toggle auto-refresh"));
    connect(this, &QCheckBox::toggled, this, &AutoRefreshToggle::updateHelp);
    updateHelp();
}

void AutoRefreshToggle::updateHelp()
{
    setToolTip(isChecked() ? tr("Auto-refresh enabled") : tr("Auto-refresh disabled"));
}
