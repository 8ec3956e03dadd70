#include "Views/Components/Table/ColumnWidths.h"

#include <QWidget>

ColumnWidths &ColumnWidths::of(QWidget &window)
{
    auto *widths = window.findChild<ColumnWidths *>({}, Qt::FindDirectChildrenOnly);
    return widths ? *widths : *new ColumnWidths(&window);
}
