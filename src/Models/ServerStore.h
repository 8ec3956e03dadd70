#pragma once

#include "Models/Server.h"

#include <QList>
#include <QObject>
#include <optional>

class Clock;
class UserDefaults;

/// What changes of the list must cause elsewhere. The services implement it.
class ServerStoreDelegate
{
public:
    virtual ~ServerStoreDelegate() = default;

    /// What ssh is told about `updated` has changed: pooled connections of the server no longer fit.
    virtual void sshSettingsChanged(const Server &updated) = 0;

    /// `removed` is about to leave the list: its stored password and its terminals go with it.
    virtual void serverDeleted(const Server &removed) = 0;
};

/// The list of managed servers, in the operator's order of adding, and which of them is selected. It is the one
/// writer of the stored list; each change is stored at once, and then told. No secret passes through here. Lives on
/// the main thread.
class ServerStore : public QObject
{
    Q_OBJECT

public:
    /// Loads the stored list, with no server connected and none selected. A list that cannot be decoded acts as an
    /// empty one; its bytes are kept under "SavedServers.damaged" before the first change replaces them.
    /// `defaults`, `clock` and `delegate`, which may be null, must outlive the store.
    ServerStore(UserDefaults &defaults, const Clock &clock, ServerStoreDelegate *delegate = nullptr,
                QObject *parent = nullptr);

    const QList<Server> &servers() const { return m_servers; }

    /// The place of the server with this id, or -1.
    qsizetype indexOf(const QUuid &id) const;

    /// A copy of the stored record, as it is now; nothing when there is no such server.
    std::optional<Server> server(const QUuid &id) const;

    /// A copy of the selected record, kept up to date with the list.
    const std::optional<Server> &selectedServer() const { return m_selectedServer; }

    void setSelectedServer(const std::optional<Server> &server);

    /// Appends the server. Always true.
    bool addServer(const Server &server);

    /// Puts `updated`, by value since it may be a record of the list, in the place of the record with its id; without
    /// one, nothing happens. With other ssh settings it is not connected: nobody has logged in with these.
    void updateServer(Server updated);

    /// Tells the delegate, then removes each record with the server's id and clears the selection if it was that one.
    void deleteServer(Server server);

    /// These set one field of the record with the server's id and store the list; without one, nothing happens.
    /// A connect also sets the time of the last one, a disconnect leaves it.
    void updateServerConnection(const Server &server, bool isConnected);
    void updateServerSystemInfo(const Server &server, const SystemInfo &systemInfo);
    void updateServerPackageManager(const Server &server, PackageManager packageManager);

    /// Appends those of `imported` whose host and user name no server of the list has, and stores the list once. How
    /// many they are is also importedServersCount() then.
    int importServers(const QList<Server> &imported);

    int importedServersCount() const { return m_importedServersCount; }

    /// The last import failed for this reason: sets importError() and asks for it to be shown.
    void failImport(const QString &error);

    std::optional<QString> importError() const { return m_importError; }

    bool showImportError() const { return m_showImportError; }

    void setShowImportError(bool show);

Q_SIGNALS:
    /// `count` servers now stand at `first` and behind it.
    void serversAdded(qsizetype first, qsizetype count);
    void serverUpdated(qsizetype index);
    void serverRemoved(qsizetype index);
    void selectedServerChanged();

    /// updateServer changed what ssh is told about the server.
    void serverSettingsChanged(const Server &server);

    void importErrorChanged();

private:
    void loadServers();
    void saveServers();
    void append(const QList<Server> &servers);
    template<class Change>
    void change(const QUuid &id, Change apply);
    void storeAndTell(qsizetype index);

    UserDefaults &m_defaults;
    const Clock &m_clock;
    ServerStoreDelegate *m_delegate;
    QList<Server> m_servers;
    std::optional<Server> m_selectedServer;
    bool m_storedListIsDamaged = false;
    int m_importedServersCount = 0;
    std::optional<QString> m_importError;
    bool m_showImportError = false;
};
