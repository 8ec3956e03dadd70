#pragma once

#include "Views/Components/SectionScaffold.h"

class AutoRefreshToggle;
class RecordTable;
class RefreshButton;
class SearchField;
class SegmentedControl;
class TableSectionViewModel;

/// The page of a section whose content is one table: all of it comes from the view model.
class TableSectionView : public SectionScaffold
{
    Q_OBJECT

public:
    /// `model` outlives the view.
    TableSectionView(const Theme &theme, TableSectionViewModel &model, QWidget *parent = nullptr);

    RecordTable &table() const { return *m_table; }

    /// Gives the search field the keyboard.
    void focusSearch();

private:
    TableSectionView(const Theme &theme, TableSectionViewModel &model, RecordTable *table, QWidget *parent);

    void update();
    void updatePage();
    QString note() const;

    TableSectionViewModel &m_model;
    RecordTable *m_table;
    SearchField *m_search;
    SegmentedControl *m_filter = nullptr;
    AutoRefreshToggle *m_autoRefresh = nullptr;
    RefreshButton *m_refresh;
};
