#include "Views/Shell/ServerListModel.h"

#include "Models/ServerStore.h"
#include "Views/Components/PlainText.h"

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
    , m_count(static_cast<int>(store.servers().size()))
{
    connect(&store, &ServerStore::serversAdded, this, [this](qsizetype first, qsizetype count) {
        beginInsertRows({}, static_cast<int>(first), static_cast<int>(first + count - 1));
        m_count += static_cast<int>(count);
        endInsertRows();
    });
    connect(&store, &ServerStore::serverRemoved, this, [this](qsizetype index) {
        m_removing = static_cast<int>(index);
        beginRemoveRows({}, m_removing, m_removing);
        --m_count;
        m_removing = -1;
        endRemoveRows();
    });
    connect(&store, &ServerStore::serverUpdated, this, &ServerListModel::rowChanged);
}

int ServerListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_count;
}

ServerListModel::State ServerListModel::stateOf(const Server &server) const
{
    return server.id == m_connecting ? State::Connecting
           : server.isConnected      ? State::Connected
                                     : State::NotConnected;
}

const Server *ServerListModel::serverAt(int row) const
{
    if (m_removing >= 0 && row >= m_removing) {
        row = row == m_removing ? -1 : row - 1;
    }
    return row >= 0 && row < m_store.servers().size() ? &m_store.servers().at(row) : nullptr;
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
        return PlainText::toolTip(PlainText::oneLine(server.name) + u'\n' + address(server));
    case Qt::AccessibleTextRole: {
        const State state = stateOf(server);
        const QString word = state == State::Connected    ? tr("Connected")
                             : state == State::Connecting ? tr("Connecting")
                                                          : tr("Not connected");
        return QStringList{PlainText::oneLine(server.name), address(server), word}.join(u", "_s);
    }
    case AddressRole:
        return address(server);
    case IdRole:
        return server.id;
    case LabelsRole:
        return labels(server);
    case HasLabelsRole:
        return !server.labels.isEmpty();
    case StateRole:
        return QVariant::fromValue(stateOf(server));
    default:
        return {};
    }
}

void ServerListModel::setConnecting(const QUuid &id)
{
    const QUuid before = std::exchange(m_connecting, id);
    if (before != id) {
        rowChanged(m_store.indexOf(before));
        rowChanged(m_store.indexOf(id));
    }
}

void ServerListModel::rowChanged(qsizetype row)
{
    if (row >= 0) {
        const QModelIndex changed = index(static_cast<int>(row));
        Q_EMIT dataChanged(changed, changed);
    }
}

QModelIndex ServerListModel::indexOf(const QUuid &id) const
{
    const qsizetype row = m_store.indexOf(id);
    return row < 0 ? QModelIndex() : index(static_cast<int>(row));
}
