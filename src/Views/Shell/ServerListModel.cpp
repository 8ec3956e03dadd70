#include "Views/Shell/ServerListModel.h"

#include "Models/ServerStore.h"
#include "Views/Components/PlainText.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

QString address(const Server &server)
{
    return PlainText::oneLine(server.username + u'@' + server.host);
}

QStringList labels(const Server &server)
{
    QStringList texts;
    for (const auto &[key, value] : server.labels.asKeyValueRange()) {
        texts.append(PlainText::oneLine(key + u':' + value));
    }
    return texts;
}

} // namespace

ServerListModel::ServerListModel(ServerStore &store, QObject *parent)
    : QAbstractListModel(parent)
    , m_store(store)
    , m_rows(filteredServers())
{
    connect(&store, &ServerStore::serversAdded, this, &ServerListModel::rowsCame);
    connect(&store, &ServerStore::serverRemoved, this, &ServerListModel::rowWent);
    connect(&store, &ServerStore::serverUpdated, this, &ServerListModel::rowDiffers);
}

QList<int> ServerListModel::filteredServers()
{
    QList<int> rows;
    rows.reserve(m_store.servers().size());
    for (int row = 0; row < m_store.servers().size(); ++row) {
        if (m_search.matches(row, m_store.servers().at(row))) {
            rows.append(row);
        }
    }
    return rows;
}

QList<int> ServerListModel::filteredAmongShown()
{
    QList<int> rows;
    rows.reserve(m_rows.size());
    for (const int row : std::as_const(m_rows)) {
        if (m_search.matches(row, m_store.servers().at(row))) {
            rows.append(row);
        }
    }
    return rows;
}

void ServerListModel::setSearchText(const QString &text)
{
    if (text == m_search.text()) {
        return;
    }
    const bool narrows = m_search.setText(text);
    QList<int> rows = narrows ? filteredAmongShown() : filteredServers();
    if (rows != m_rows) {
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
    }
}

// Where the store's row stands among those on show, or would stand.
qsizetype ServerListModel::positionOf(qsizetype storeRow) const
{
    return std::ranges::lower_bound(m_rows, storeRow) - m_rows.begin();
}

void ServerListModel::rowsCame(qsizetype first, qsizetype count)
{
    m_search.rowsInserted(first, count);
    QList<int> rows;
    for (qsizetype row = first; row < first + count; ++row) {
        if (m_search.matches(row, m_store.servers().at(row))) {
            rows.append(static_cast<int>(row));
        }
    }
    if (!rows.isEmpty()) { // the store appends only
        const int end = rowCount();
        beginInsertRows({}, end, end + static_cast<int>(rows.size()) - 1);
        m_rows += rows;
        endInsertRows();
    }
}

void ServerListModel::rowWent(qsizetype storeRow)
{
    m_search.rowRemoved(storeRow);
    const qsizetype position = positionOf(storeRow);
    const bool isShown = position < m_rows.size() && m_rows.at(position) == storeRow;
    for (qsizetype i = isShown ? position + 1 : position; i < m_rows.size(); ++i) {
        --m_rows[i];
    }
    if (isShown) {
        m_rows[position] = -1;
        const int row = static_cast<int>(position);
        beginRemoveRows({}, row, row);
        m_rows.removeAt(position);
        endRemoveRows();
    }
}

void ServerListModel::rowDiffers(qsizetype storeRow)
{
    m_search.rowChanged(storeRow);
    const qsizetype position = positionOf(storeRow);
    const int row = static_cast<int>(position);
    const bool wasShown = position < m_rows.size() && m_rows.at(position) == storeRow;
    const bool matches = m_search.matches(storeRow, m_store.servers().at(storeRow));
    if (wasShown && matches) {
        rowChanged(storeRow);
    } else if (wasShown) {
        beginRemoveRows({}, row, row);
        m_rows.removeAt(position);
        endRemoveRows();
    } else if (matches) {
        beginInsertRows({}, row, row);
        m_rows.insert(position, static_cast<int>(storeRow));
        endInsertRows();
    }
}

int ServerListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

ServerListModel::State ServerListModel::stateOf(const Server &server, bool isConnecting)
{
    return server.isConnected ? State::Connected : isConnecting ? State::Connecting : State::NotConnected;
}

QString ServerListModel::stateText(State state)
{
    switch (state) {
    case State::Connected:
        return tr("Connected");
    case State::Connecting:
        return tr("Connecting");
    case State::NotConnected:
        break;
    }
    return tr("Not connected");
}

ServerListModel::State ServerListModel::currentState(const Server &server) const
{
    return stateOf(server, m_connecting.contains(server.id));
}

/// All that a row tells, in words.
QStringList ServerListModel::description(const Server &server) const
{
    return QStringList{PlainText::oneLine(server.name), address(server), stateText(currentState(server))} +
           labels(server);
}

const Server *ServerListModel::serverAt(int row) const
{
    const int storeRow = m_rows.value(row, -1);
    return storeRow >= 0 && storeRow < m_store.servers().size() ? &m_store.servers().at(storeRow) : nullptr;
}

QVariant ServerListModel::data(const QModelIndex &index, int role) const
{
    const Server *const found = serverAt(index.row());
    if (!found) {
        return {};
    }
    const Server &server = *found;
    switch (role) {
    case Qt::DisplayRole:
        return PlainText::oneLine(server.name);
    case Qt::ToolTipRole:
        return PlainText::toolTip(description(server).join(u'\n'));
    case Qt::AccessibleTextRole:
        return description(server).join(u", "_s);
    case AddressRole:
        return address(server);
    case IdRole:
        return server.id;
    case LabelsRole:
        return labels(server);
    case HasLabelsRole:
        return !server.labels.isEmpty();
    case StateRole:
        return QVariant::fromValue(currentState(server));
    default:
        return {};
    }
}

void ServerListModel::setConnecting(const QUuid &id, bool isConnecting)
{
    if (isConnecting) {
        m_connecting.insert(id);
    } else {
        m_connecting.remove(id);
    }
    rowChanged(m_store.indexOf(id));
}

void ServerListModel::rowChanged(qsizetype storeRow)
{
    const qsizetype position = positionOf(storeRow);
    if (storeRow >= 0 && position < m_rows.size() && m_rows.at(position) == storeRow) {
        const QModelIndex changed = index(static_cast<int>(position));
        Q_EMIT dataChanged(changed, changed);
    }
}

QModelIndex ServerListModel::indexOf(const QUuid &id) const
{
    const qsizetype storeRow = m_store.indexOf(id);
    const qsizetype position = positionOf(storeRow);
    const bool isShown = storeRow >= 0 && position < m_rows.size() && m_rows.at(position) == storeRow;
    return isShown ? index(static_cast<int>(position)) : QModelIndex();
}
