#pragma once

#include "Views/Components/TableSectionView.h"

/// The processes of a server: nothing but the table that the view model declares.
class ProcessesView : public TableSectionView
{
    Q_OBJECT

public:
    using TableSectionView::TableSectionView;
};
