#pragma once

#include <QAbstractListModel>
#include <QUuid>

class ServerStore;
struct Server;

/// The store's servers as rows, in its order.
class ServerListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        AddressRole = Qt::UserRole, ///< QString: user@host
        IdRole,                     ///< QUuid
        LabelsRole,                 ///< QStringList: key:value, by key
        HasLabelsRole,              ///< bool; cheaper than the list
        StateRole                   ///< State
    };

    enum class State { NotConnected, Connecting, Connected };
    Q_ENUM(State)

    /// `store` outlives the model.
    explicit ServerListModel(ServerStore &store, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    /// The one server that a connection is being made to; null for none.
    void setConnecting(const QUuid &id);

    QModelIndex indexOf(const QUuid &id) const;

private:
    const Server *serverAt(int row) const;
    State stateOf(const Server &server) const;
    void rowChanged(qsizetype row);

    ServerStore &m_store;
    int m_count;         // of rows that views know of
    int m_removing = -1; // a row that views still know of, and the store no longer has
    QUuid m_connecting;
};
