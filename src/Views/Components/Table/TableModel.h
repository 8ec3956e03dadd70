#pragma once

#include "Views/Components/Table/SortKey.h"
#include "Views/Components/Table/TableLook.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QList>
#include <functional>
#include <vector>

/// The rows of a table, whatever its records are: which records stand in which order, kept by identity. What a record
/// says comes from RecordTableModel, which every section uses.
///
/// New records change rows in place: a row that stays keeps its selection, its busy mark and its error. All changes
/// of one update reach views as at most four signals.
///
/// While the order is held rows stay where they are: their values change, new rows go to the end, and a row whose
/// record is gone stays as a shadow without actions. A sort or filter of the operator's takes effect at once all the
/// same.
class TableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Role {
        IdentityRole = Qt::UserRole, ///< QString
        RowIdentifierRole            ///< QString: the row's name for test tools, for instance "row_pid_123"
    };

    const QString &name() const { return m_name; }

    const QList<ColumnLook> &columns() const { return m_columns; }

    const QList<ActionLook> &actions() const { return m_actions; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    int total() const { return m_live; } ///< records, shown or not

    int shownCount() const { return m_passing; } ///< records that pass the filter

    /// Forgets the records and all that is known of them, held or not: the next ones are of another origin. Open
    /// menus and questions close, and actions that were prepared do nothing any more.
    void clear();

    /// -1 for an identity that no row shows.
    int rowOf(const QString &identity) const;
    QString identityAt(int row) const;

    /// Whether the row is a shadow of a record that is gone.
    bool isGone(int row) const;

    CellLook cell(int row, int column) const;

    /// Whether one of the row's words, or the last part of a path among them, begins so; figures aside.
    bool begins(int row, const QString &text) const;

    /// These rows as lines, cells between tabs; control characters in them become blanks.
    QString plainText(const QList<int> &rows) const;

    // --- order -----------------------------------------------------------------------------------------------------

    int sortColumn() const { return m_sortColumn; }

    Qt::SortOrder sortOrder() const { return m_sortOrder; }

    void setSort(int column, Qt::SortOrder order);

    /// What a click on a column's head does: rising, or the other way round if the column sorts already.
    void sortBy(int column);

    void setHeld(bool isHeld);

    bool isHeld() const { return m_isHeld; }

    /// The rows would stand in another order, were it not held.
    bool isHoldingBack() const { return m_isHoldingBack; }

    // --- the selected row ------------------------------------------------------------------------------------------

    QString selectedIdentity() const { return m_selected; } ///< empty for none

    /// The table's, when the operator selects a row.
    void setSelectedIdentity(const QString &identity);

    /// Makes the table select a row and scroll to it; a row that is not there yet, if the next records bring it.
    void requestSelection(const QString &identity);

    // --- states of single rows -------------------------------------------------------------------------------------

    /// An action is under way: the row shows it, and takes no other meanwhile.
    void setBusy(const QString &identity, bool isBusy);
    bool isBusy(int row) const;
    bool hasBusyRows() const;

    /// A quiet mark with the text in its tooltip: what the server refused. It goes with an empty text, with the row's
    /// next action, and with the row. Without such a record nothing is marked.
    void setError(const QString &identity, const QString &error);
    QString errorAt(int row) const;

    // --- actions ---------------------------------------------------------------------------------------------------

    bool isOffered(int row, int action) const;
    bool isEnabled(int row, int action) const;

    /// What is to be asked before the action runs.
    std::optional<RowQuestion> question(int row, int action) const;

    /// The action on the row's record as it is now; it can be called later, when the row is somewhere else or gone.
    std::function<void()> prepared(int row, int action);

Q_SIGNALS:
    /// After every change of records, filter, or counts.
    void updated();
    void aboutToClear();
    void sortChanged();
    void holdingBackChanged(bool isHoldingBack);
    void selectedIdentityChanged(const QString &identity);
    void selectionRequested(int row);

protected:
    TableModel(QString name, QList<ColumnLook> columns, QList<ActionLook> actions, int sortColumn,
               Qt::SortOrder sortOrder, QObject *parent);

    int record(int row) const { return m_shown[static_cast<size_t>(row)]; }

    int liveRecord(const QString &identity) const { return m_index.value(identity, -1); } ///< -1 for none

    /// Takes over the records that `adopt` brings; their identities in the same order.
    void replace(QStringList identities);

    void filterChanged();

    // What the records are. A record is its place in the list that adopt() made.

    /// Replaces the records by the new ones, and appends these of the old ones: rows that are still to be seen.
    virtual void adopt(const std::vector<int> &kept) = 0;

    /// Forgets the records from this place on.
    virtual void truncate(int count) = 0;

    virtual CellLook look(int record, int column) const = 0;
    virtual QString toolTip(int record, int column) const = 0;
    virtual QString rowIdentifier(int record) const = 0;
    virtual SortKey sortKey(int record, int column) const = 0;
    virtual SortKey leadingKey(int record) const = 0;
    virtual SortKey tieKey(int record) const = 0;
    virtual bool hasLeadingKey() const = 0;
    virtual bool hasTieKey() const = 0;
    virtual bool passes(int record) const = 0;
    virtual bool actionIsOffered(int record, int action) const = 0;
    virtual bool actionIsEnabled(int record, int action) const = 0;
    virtual std::optional<RowQuestion> actionQuestion(int record, int action) const = 0;
    virtual std::function<void()> actionOn(int record, int action) const = 0;

private:
    struct State {
        bool isBusy = false;
        QString error;
    };

    using Rows = std::vector<int>; // records, by row

    void sortRecords();
    template<typename KeyOf>
    void sortRecordsBy(const KeyOf &keyOf, Qt::SortOrder order);
    Rows passingRecords();
    Rows heldRows(const Rows &passing) const;
    void arrange(); // after a change of sort or filter, or when the order is let go
    void moveTo(const Rows &target);
    void permute(Rows next);
    void dropGone();
    void forgetStates();
    void setHoldingBack(bool isHoldingBack);
    void answerWantedSelection();
    void rowChanged(const QString &identity);
    void finishUpdate();

    QString m_name;
    QList<ColumnLook> m_columns;
    QList<ActionLook> m_actions;
    int m_sortColumn;
    Qt::SortOrder m_sortOrder;

    QStringList m_identities;    // of all records: the live ones, then shadows
    QHash<QString, int> m_index; // the live ones
    int m_live = 0;
    int m_passing = 0;
    Rows m_sorted; // the live ones
    Rows m_shown;

    bool m_isHeld = false;
    bool m_isHoldingBack = false;
    QString m_selected;
    QString m_wanted;
    QHash<QString, State> m_states;
    quint64 m_clearings = 0;
};
