#pragma once

#include <QHash>
#include <QList>
#include <QObject>

/// The column widths that the operator dragged, by table, for as long as the window lives: a section is made anew for
/// each server and finds them here.
class ColumnWidths : public QObject
{
    Q_OBJECT

public:
    /// The one of this window; made when it is first asked for.
    static ColumnWidths &of(QWidget &window);

    QList<int> widths(const QString &table) const { return m_widths.value(table); } ///< empty for none

    void setWidths(const QString &table, const QList<int> &widths) { m_widths.insert(table, widths); }

private:
    using QObject::QObject;

    QHash<QString, QList<int>> m_widths;
};
