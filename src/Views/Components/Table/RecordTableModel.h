#pragma once

#include "Views/Components/Table/TableModel.h"

#include <utility>

/// A column of a table of records. Wherever a function of a record is wanted a member will do: `.text = &Info::name`.
template<typename Record>
struct RecordColumn {
    QString title{};
    std::function<QString(const Record &)> text{};
    std::function<SortKey(const Record &)> sortKey{}; ///< without one: by text, ignoring case
    CellStyle style = CellStyle::Plain;
    CellAlign align = CellAlign::Left;
    Qt::TextElideMode elide = Qt::ElideRight;
    int width = 120;
    bool stretches = false;
    bool isSortable = true;
    std::function<std::optional<ToneName>(const Record &)> tone{}; ///< of the words, or of the pill
    std::function<std::optional<IconName>(const Record &)> icon{}; ///< before the words
    std::function<QString(const Record &)> toolTip{};              ///< instead of the whole text
};

/// Something that can be done with a record: an entry of its row's menu, and a button in its row if wished.
template<typename Record>
struct RecordAction {
    QString label{};
    std::optional<IconName> icon{};
    bool isDestructive = false;
    bool isButton = false;
    bool isDefault = false;
    bool startsGroup = false;
    std::function<bool(const Record &)> isOffered{};                      ///< without one: always
    std::function<bool(const Record &)> isEnabled{};                      ///< without one: always
    std::function<std::optional<RowQuestion>(const Record &)> question{}; ///< without one, or nothing: not asked
    std::function<void(const Record &)> run{};                            ///< gets the record that the question named
};

/// All that a section says about its table.
template<typename Record>
struct RecordTableDeclaration {
    QString name{};                                         ///< for assistive programs
    std::function<QString(const Record &)> identity{};      ///< what makes a record the same one after a refresh
    std::function<QString(const Record &)> rowIdentifier{}; ///< see TableModel::RowIdentifierRole
    QList<RecordColumn<Record>> columns{};
    QList<RecordAction<Record>> actions{};
    std::function<SortKey(const Record &)> leadingKey{}; ///< before any column's and never reversed: folders, files
    std::function<SortKey(const Record &)> tieKey{};     ///< where a column's are equal, never reversed; without one
                                                         ///< such records stand as they came
    int sortColumn = 0;
    Qt::SortOrder sortOrder = Qt::AscendingOrder;
};

/// Records of one type as the rows of a table. A view model owns it; RecordTable shows it.
template<typename Record>
class RecordTableModel final : public TableModel
{
public:
    using Declaration = RecordTableDeclaration<Record>;
    using Filter = std::function<bool(const Record &)>;

    explicit RecordTableModel(Declaration declaration, QObject *parent = nullptr)
        : TableModel(declaration.name, looks(declaration.columns), looks(declaration.actions), declaration.sortColumn,
                     declaration.sortOrder, parent)
        , m_table(std::move(declaration))
    {
    }

    /// The new records, in the order in which the server has them. Of two with one identity both are shown.
    void setRecords(QList<Record> records)
    {
        QStringList identities;
        identities.reserve(records.size());
        for (const Record &record : std::as_const(records)) {
            identities.append(m_table.identity(record));
        }
        m_incoming = std::move(records);
        replace(std::move(identities));
    }

    /// Records that it is false for are not shown; without one all are. Call it again when the answer may differ.
    void setFilter(Filter filter)
    {
        m_filter = std::move(filter);
        filterChanged();
    }

    /// All records, shown or not, as they came.
    QList<Record> records() const { return m_records.first(total()); }

    /// Those on show, in the order of their rows.
    QList<Record> shownRecords() const
    {
        QList<Record> shown;
        for (int row = 0; row < rowCount(); ++row) {
            if (!isGone(row)) {
                shown.append(recordAt(row));
            }
        }
        return shown;
    }

    const Record &recordAt(int row) const { return m_records.at(record(row)); }

    /// Null for an identity that is not there. Valid until the next records.
    const Record *find(const QString &identity) const
    {
        const int place = liveRecord(identity);
        return place < 0 ? nullptr : &m_records.at(place);
    }

    /// The selected row's record; null for none.
    const Record *selected() const { return find(selectedIdentity()); }

protected:
    void adopt(const std::vector<int> &kept) override
    {
        for (const int place : kept) {
            m_incoming.append(m_records.at(place));
        }
        m_records = std::exchange(m_incoming, {});
    }

    void truncate(int count) override { m_records.resize(count); }

    CellLook look(int record, int column) const override
    {
        const Record &r = m_records.at(record);
        const auto &c = m_table.columns.at(column);
        return {c.text(r), c.tone ? c.tone(r) : std::nullopt, c.icon ? c.icon(r) : std::nullopt};
    }

    QString toolTip(int record, int column) const override
    {
        const auto &c = m_table.columns.at(column);
        return c.toolTip ? c.toolTip(m_records.at(record)) : QString();
    }

    QString rowIdentifier(int record) const override
    {
        return m_table.rowIdentifier ? m_table.rowIdentifier(m_records.at(record)) : QString();
    }

    SortKey sortKey(int record, int column) const override
    {
        const Record &r = m_records.at(record);
        const auto &c = m_table.columns.at(column);
        return c.sortKey ? c.sortKey(r) : SortKey::text(c.text(r));
    }

    SortKey leadingKey(int record) const override { return m_table.leadingKey(m_records.at(record)); }

    SortKey tieKey(int record) const override { return m_table.tieKey(m_records.at(record)); }

    bool hasLeadingKey() const override { return static_cast<bool>(m_table.leadingKey); }

    bool hasTieKey() const override { return static_cast<bool>(m_table.tieKey); }

    bool passes(int record) const override { return !m_filter || m_filter(m_records.at(record)); }

    bool actionIsOffered(int record, int action) const override
    {
        const auto &a = m_table.actions.at(action);
        return !a.isOffered || a.isOffered(m_records.at(record));
    }

    bool actionIsEnabled(int record, int action) const override
    {
        const auto &a = m_table.actions.at(action);
        return !a.isEnabled || a.isEnabled(m_records.at(record));
    }

    std::optional<RowQuestion> actionQuestion(int record, int action) const override
    {
        const auto &a = m_table.actions.at(action);
        return a.question ? a.question(m_records.at(record)) : std::nullopt;
    }

    std::function<void()> actionOn(int record, int action) const override
    {
        return [run = m_table.actions.at(action).run, copy = m_records.at(record)] { run(copy); };
    }

private:
    static QList<ColumnLook> looks(const QList<RecordColumn<Record>> &columns)
    {
        QList<ColumnLook> looks;
        for (const auto &c : columns) {
            looks.append({c.title, c.style, c.align, c.elide, c.width, c.stretches, c.isSortable});
        }
        return looks;
    }

    static QList<ActionLook> looks(const QList<RecordAction<Record>> &actions)
    {
        QList<ActionLook> looks;
        for (const auto &a : actions) {
            looks.append({a.label, a.icon, a.isDestructive, a.isButton, a.isDefault, a.startsGroup});
        }
        return looks;
    }

    Declaration m_table;
    QList<Record> m_records; // the live ones, then shadows
    QList<Record> m_incoming;
    Filter m_filter;
};
