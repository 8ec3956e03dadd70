#pragma once

#include "Views/Components/Panel.h"

class AutoRefreshToggle;
class ElidedLabel;
class HeaderLayout;
class QPushButton;
class RefreshButton;
class SearchField;
class SegmentedControl;

/// A section's head: its title, then search, filter, switches, buttons and the refresh button. A part is there once
/// it was asked for.
class SectionHeader : public Panel
{
    Q_OBJECT

public:
    SectionHeader(const Theme &theme, const QString &title, QWidget *parent = nullptr);

    SearchField &addSearch(const QString &prompt);
    SegmentedControl &addFilter(const QString &name, const QStringList &options);
    AutoRefreshToggle &addAutoRefresh();
    RefreshButton &addRefresh(const QString &help = {});

    /// Any other control, among those at the right; the refresh button stays the last of them.
    void addControl(QWidget *control);

    /// A line below the title, for instance a path.
    void setSubtitle(QWidget *subtitle);

    SearchField *search() const { return m_search; } ///< null without one

private:
    const Theme &m_theme;
    QWidget *m_titles;
    HeaderLayout *m_layout;
    SearchField *m_search = nullptr;
    RefreshButton *m_refresh = nullptr;
};
