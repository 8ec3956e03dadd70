#pragma once

#include "Views/Shell/ServerSearch.h"

#include <QAbstractListModel>
#include <QSet>
#include <QUuid>

class ServerStore;
struct Server;

/// The store's servers that match the search, as rows in its order.
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

    /// One that counts as connected stays so while it is connected to once more.
    static State stateOf(const Server &server, bool isConnecting);
    static QString stateText(State state);

    /// `store` outlives the model.
    explicit ServerListModel(ServerStore &store, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    /// A connection is being made to this server, or is no more.
    void setConnecting(const QUuid &id, bool isConnecting);

    /// Not valid for a server that is not there, or that the search leaves out.
    QModelIndex indexOf(const QUuid &id) const;

    /// What rows have to match; empty for all. A reset, if it makes a difference.
    void setSearchText(const QString &text);

    QString searchText() const { return m_search.text(); }

private:
    const Server *serverAt(int row) const;
    State currentState(const Server &server) const;
    QStringList description(const Server &server) const;
    QList<int> filteredServers();
    QList<int> filteredAmongShown();
    qsizetype positionOf(qsizetype storeRow) const;
    void rowsCame(qsizetype first, qsizetype count);
    void rowWent(qsizetype storeRow);
    void rowDiffers(qsizetype storeRow);
    void rowChanged(qsizetype storeRow);

    ServerStore &m_store;
    ServerSearch m_search;
    QList<int> m_rows; // the store's rows that are on show, ascending; -1 for one that is about to go
    QSet<QUuid> m_connecting;
};
