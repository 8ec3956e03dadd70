#pragma once

#include "Services/Monitoring/MonitoredFixture.h"

#include "Views/Components/SectionNavigation.h"
#include "Views/Components/TableSectionViewModel.h"

/// A connected server played by the test, and what a table's section needs around it.
class SectionFixture : public MonitoredFixture
{
public:
    SectionNavigation navigation;

    /// What the action with this label is asked and done on a row, or nothing if it is not offered there.
    static std::optional<RowQuestion> question(const TableModel &table, int row, const QString &label)
    {
        const int action = actionOf(table, label);
        return table.isOffered(row, action) ? table.question(row, action) : std::nullopt;
    }

    static void run(TableModel &table, int row, const QString &label)
    {
        table.prepared(row, actionOf(table, label))();
    }

    static int actionOf(const TableModel &table, const QString &label)
    {
        for (int action = 0; action < table.actions().size(); ++action) {
            if (table.actions().at(action).label == label) {
                return action;
            }
        }
        return -1;
    }

    /// The cells of a row, between bars.
    static QString row(const TableModel &table, int row) { return table.plainText({row}).replace(u'\t', u'|'); }
};
