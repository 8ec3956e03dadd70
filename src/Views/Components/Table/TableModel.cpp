#include "Views/Components/Table/TableModel.h"

#include "Helpers/DisplayText.h"

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kLongestToolTip = 4000;

// For each of `size` records its place in `rows`, or -1.
std::vector<int> placesOf(const std::vector<int> &rows, qsizetype size)
{
    std::vector<int> places(static_cast<size_t>(size), -1);
    for (size_t row = 0; row < rows.size(); ++row) {
        places[static_cast<size_t>(rows[row])] = static_cast<int>(row);
    }
    return places;
}

template<typename Less>
void stableSort(std::vector<int> &records, Qt::SortOrder order, const Less &less)
{
    if (order == Qt::AscendingOrder) {
        std::ranges::stable_sort(records, less);
    } else {
        std::ranges::stable_sort(records, [&less](int a, int b) { return less(b, a); });
    }
}

} // namespace

TableModel::TableModel(QString name, QList<ColumnLook> columns, QList<ActionLook> actions, int sortColumn,
                       Qt::SortOrder sortOrder, QObject *parent)
    : QAbstractTableModel(parent)
    , m_name(std::move(name))
    , m_columns(std::move(columns))
    , m_actions(std::move(actions))
    , m_sortColumn(sortColumn)
    , m_sortOrder(sortOrder)
{
}

// --- what views ask ------------------------------------------------------------------------------------------------

int TableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_shown.size());
}

int TableModel::columnCount(const QModelIndex &parent) const
{
    const bool hasButtons = std::ranges::any_of(m_actions, &ActionLook::isButton);
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size()) + (hasButtons ? 1 : 0);
}

QVariant TableModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
        return {};
    }
    const bool isActions = index.column() >= m_columns.size();
    switch (role) {
    case Qt::DisplayRole:
        return isActions ? QString() : look(record(index.row()), index.column()).text;
    case Qt::ToolTipRole: {
        const QString own = isActions ? QString() : toolTip(record(index.row()), index.column());
        return own.left(kLongestToolTip);
    }
    case Qt::AccessibleTextRole:
        if (isActions) {
            QStringList labels;
            for (int action = 0; action < m_actions.size(); ++action) {
                if (m_actions.at(action).isButton && isOffered(index.row(), action)) {
                    labels.append(m_actions.at(action).label);
                }
            }
            return labels.join(u", "_s);
        }
        return DisplayText::oneLine(look(record(index.row()), index.column()).text);
    case Qt::AccessibleDescriptionRole:
        return errorAt(index.row());
    case IdentityRole:
        return identityAt(index.row());
    case RowIdentifierRole:
        return rowIdentifier(record(index.row()));
    default:
        return {};
    }
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) {
        return {};
    }
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole) {
        return section < m_columns.size() ? m_columns.at(section).title : tr("Actions");
    }
    return {};
}

int TableModel::rowOf(const QString &identity) const
{
    const auto isIt = [&](int record) { return m_identities.at(record) == identity; };
    const auto found = std::ranges::find_if(m_shown, isIt);
    return found == m_shown.end() ? -1 : static_cast<int>(found - m_shown.begin());
}

QString TableModel::identityAt(int row) const
{
    return m_identities.at(record(row));
}

bool TableModel::isGone(int row) const
{
    return record(row) >= m_live;
}

CellLook TableModel::cell(int row, int column) const
{
    return look(record(row), column);
}

bool TableModel::begins(int row, const QString &text) const
{
    for (int column = 0; column < m_columns.size(); ++column) {
        if (m_columns.at(column).align == CellAlign::Left) {
            const QString words = look(record(row), column).text;
            const QStringView name = QStringView(words).sliced(words.lastIndexOf(u'/') + 1);
            if (words.startsWith(text, Qt::CaseInsensitive) || name.startsWith(text, Qt::CaseInsensitive)) {
                return true;
            }
        }
    }
    return false;
}

QString TableModel::plainText(const QList<int> &rows) const
{
    QString text;
    for (const int row : rows) {
        for (int column = 0; column < m_columns.size(); ++column) {
            text += (column > 0 ? u"\t"_s : QString()) + DisplayText::oneLine(look(record(row), column).text);
        }
        text += u'\n';
    }
    text.chop(1);
    return text;
}

// --- new records ---------------------------------------------------------------------------------------------------

void TableModel::replace(QStringList identities)
{
    QHash<QString, int> known;
    known.reserve(identities.size());
    QHash<QString, int> copies;
    for (int i = 0; i < identities.size(); ++i) {
        const QString first = identities.at(i);
        for (qsizetype before = known.size(); known.size() == before;) {
            int &place = known[identities.at(i)];
            if (known.size() > before) {
                place = i;
            } else {
                identities[i] = first + QChar(0x1F) + QString::number(++copies[first]);
            }
        }
    }

    // Rows go on showing what they showed, with new values; those without a record keep the old one.
    m_live = static_cast<int>(identities.size());
    std::vector<int> kept;
    for (int &record : m_shown) {
        const QString &identity = m_identities.at(record);
        const bool isWhereItWas = record < m_live && identities.at(record) == identity; // most are
        const int now = isWhereItWas ? record : known.value(identity, -1);
        if (now < 0) {
            kept.push_back(record);
            identities.append(identity);
        }
        record = now < 0 ? static_cast<int>(identities.size()) - 1 : now;
    }
    adopt(kept);
    m_identities = std::move(identities);
    m_index = std::move(known);

    sortRecords();
    const Rows passing = passingRecords();
    moveTo(m_isHeld ? heldRows(passing) : passing);
    dropGone();
    forgetStates();
    setHoldingBack(m_shown != passing);
    if (!m_shown.empty()) {
        Q_EMIT dataChanged(createIndex(0, 0), createIndex(rowCount() - 1, columnCount() - 1));
    }
    answerWantedSelection();
    m_wanted.clear();
    finishUpdate();
}

void TableModel::clear()
{
    ++m_clearings;
    Q_EMIT aboutToClear();
    m_states.clear();
    m_wanted.clear();
    const bool isHeld = std::exchange(m_isHeld, false);
    replace({});
    m_isHeld = isHeld;
    setSelectedIdentity({});
}

void TableModel::sortRecords()
{
    m_sorted.resize(static_cast<size_t>(m_live));
    std::iota(m_sorted.begin(), m_sorted.end(), 0);
    // The key that decides least is sorted by first; each sort keeps the order of those it finds alike.
    if (hasTieKey()) {
        sortRecordsBy([this](int record) { return tieKey(record); }, Qt::AscendingOrder);
    }
    sortRecordsBy([this](int record) { return sortKey(record, m_sortColumn); }, m_sortOrder);
    if (hasLeadingKey()) {
        sortRecordsBy([this](int record) { return leadingKey(record); }, Qt::AscendingOrder);
    }
}

template<typename KeyOf>
void TableModel::sortRecordsBy(const KeyOf &keyOf, Qt::SortOrder order)
{
    std::vector<SortKey> keys;
    keys.reserve(m_sorted.size());
    for (int record = 0; record < m_live; ++record) {
        keys.push_back(keyOf(record));
    }
    if (std::ranges::all_of(keys, &SortKey::isNumber)) { // most columns; several times as fast
        std::vector<double> numbers;
        numbers.reserve(keys.size());
        std::ranges::transform(keys, std::back_inserter(numbers), &SortKey::toNumber);
        stableSort(m_sorted, order, [&](int a, int b) { return numbers[size_t(a)] < numbers[size_t(b)]; });
    } else {
        stableSort(m_sorted, order,
                   [&](int a, int b) { return SortKey::compare(keys[size_t(a)], keys[size_t(b)]) < 0; });
    }
}

TableModel::Rows TableModel::passingRecords()
{
    Rows passing;
    passing.reserve(m_sorted.size());
    std::ranges::copy_if(m_sorted, std::back_inserter(passing), [this](int record) { return passes(record); });
    m_passing = static_cast<int>(passing.size());
    return passing;
}

TableModel::Rows TableModel::heldRows(const Rows &passing) const
{
    Rows rows = m_shown;
    const std::vector<int> places = placesOf(m_shown, m_identities.size());
    std::ranges::copy_if(passing, std::back_inserter(rows),
                         [&](int record) { return places[static_cast<size_t>(record)] < 0; });
    return rows;
}

void TableModel::moveTo(const Rows &target)
{
    if (target == m_shown) {
        return;
    }
    // New rows come to the end as one range; then all go to their places in one step, those without a place behind
    // the others, where one range takes them away. What a view keeps for each selected cell is moved only once.
    const std::vector<int> shown = placesOf(m_shown, m_identities.size());
    const auto isNew = [&](int record) { return shown[static_cast<size_t>(record)] < 0; };
    const auto coming = static_cast<int>(std::ranges::count_if(target, isNew));
    if (coming == static_cast<int>(target.size()) && !m_shown.empty()) { // none stays
        beginRemoveRows({}, 0, rowCount() - 1);
        m_shown.clear();
        endRemoveRows();
    }
    if (coming > 0) {
        beginInsertRows({}, rowCount(), rowCount() + coming - 1);
        std::ranges::copy_if(target, std::back_inserter(m_shown), isNew);
        endInsertRows();
    }
    const std::vector<int> places = placesOf(target, m_identities.size());
    Rows next = target;
    std::ranges::copy_if(m_shown, std::back_inserter(next),
                         [&](int record) { return places[static_cast<size_t>(record)] < 0; });
    permute(std::move(next));
    const auto staying = static_cast<int>(target.size());
    if (staying < rowCount()) {
        beginRemoveRows({}, staying, rowCount() - 1);
        m_shown.resize(target.size());
        endRemoveRows();
    }
}

void TableModel::permute(Rows next)
{
    if (next == m_shown) {
        return;
    }
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    const std::vector<int> places = placesOf(next, m_identities.size());
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex &index : before) {
        after.append(createIndex(places[static_cast<size_t>(record(index.row()))], index.column()));
    }
    m_shown = std::move(next);
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

void TableModel::dropGone()
{
    if (m_identities.size() > m_live &&
        std::ranges::all_of(m_shown, [this](int record) { return record < m_live; })) {
        m_identities.resize(m_live);
        truncate(m_live);
    }
}

// A shadow still says what the server refused.
void TableModel::forgetStates()
{
    const auto isShadow = [this](const QString &identity) {
        return std::find(m_identities.cbegin() + m_live, m_identities.cend(), identity) != m_identities.cend();
    };
    m_states.removeIf([&](const auto &state) {
        return !state->isBusy && !m_index.contains(state.key()) && !isShadow(state.key());
    });
}

void TableModel::finishUpdate()
{
    answerWantedSelection();
    Q_EMIT updated();
}

// --- order ---------------------------------------------------------------------------------------------------------

void TableModel::setSort(int column, Qt::SortOrder order)
{
    if (column == m_sortColumn && order == m_sortOrder) {
        return;
    }
    m_sortColumn = column;
    m_sortOrder = order;
    sortRecords();
    arrange();
    Q_EMIT sortChanged();
    finishUpdate();
}

void TableModel::sortBy(int column)
{
    if (column < 0 || column >= m_columns.size() || !m_columns.at(column).isSortable) {
        return;
    }
    const bool isRising = column != m_sortColumn || m_sortOrder == Qt::DescendingOrder;
    setSort(column, isRising ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void TableModel::filterChanged()
{
    arrange();
    finishUpdate();
}

void TableModel::setHeld(bool isHeld)
{
    if (std::exchange(m_isHeld, isHeld) == isHeld || isHeld || !m_isHoldingBack) {
        return;
    }
    arrange();
    finishUpdate();
}

void TableModel::arrange()
{
    moveTo(passingRecords());
    dropGone();
    forgetStates();
    setHoldingBack(false);
}

void TableModel::setHoldingBack(bool isHoldingBack)
{
    if (std::exchange(m_isHoldingBack, isHoldingBack) != isHoldingBack) {
        Q_EMIT holdingBackChanged(isHoldingBack);
    }
}

// --- the selected row ----------------------------------------------------------------------------------------------

void TableModel::setSelectedIdentity(const QString &identity)
{
    if (std::exchange(m_selected, identity) != identity) {
        Q_EMIT selectedIdentityChanged(identity);
    }
}

void TableModel::requestSelection(const QString &identity)
{
    m_wanted = identity;
    if (rowOf(identity) >= 0) {
        answerWantedSelection();
    }
}

void TableModel::answerWantedSelection()
{
    const int row = m_wanted.isEmpty() ? -1 : rowOf(m_wanted);
    if (row >= 0) {
        setSelectedIdentity(std::exchange(m_wanted, {}));
        Q_EMIT selectionRequested(row);
    }
}

// --- states of single rows -----------------------------------------------------------------------------------------

void TableModel::setBusy(const QString &identity, bool isBusy)
{
    State &state = m_states[identity];
    state.isBusy = isBusy;
    if (isBusy) {
        state.error.clear();
    }
    rowChanged(identity);
}

bool TableModel::isBusy(int row) const
{
    return m_states.value(identityAt(row)).isBusy;
}

bool TableModel::hasBusyRows() const
{
    return std::ranges::any_of(m_states, &State::isBusy);
}

void TableModel::setError(const QString &identity, const QString &error)
{
    if (m_index.contains(identity) || rowOf(identity) >= 0) {
        m_states[identity].error = error.left(kLongestToolTip);
        rowChanged(identity);
    }
}

QString TableModel::errorAt(int row) const
{
    return m_states.value(identityAt(row)).error;
}

void TableModel::rowChanged(const QString &identity)
{
    const State &state = m_states[identity];
    if (!state.isBusy && state.error.isEmpty()) {
        m_states.remove(identity);
    }
    const int row = rowOf(identity);
    if (row >= 0) {
        Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
    }
}

// --- actions -------------------------------------------------------------------------------------------------------

bool TableModel::isOffered(int row, int action) const
{
    return !isGone(row) && actionIsOffered(record(row), action);
}

bool TableModel::isEnabled(int row, int action) const
{
    return !isGone(row) && !isBusy(row) && actionIsEnabled(record(row), action);
}

std::optional<RowQuestion> TableModel::question(int row, int action) const
{
    return actionQuestion(record(row), action);
}

std::function<void()> TableModel::prepared(int row, int action)
{
    return [this, clearings = m_clearings, identity = identityAt(row), run = actionOn(record(row), action)] {
        if (clearings == m_clearings) {
            setError(identity, {});
            run();
        }
    };
}
