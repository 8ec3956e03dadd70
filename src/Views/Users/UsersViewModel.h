#pragma once

#include "Models/UserInfo.h"
#include "Views/Components/Table/RecordTableModel.h"
#include "Views/Components/TableSectionViewModel.h"

class AddUserViewModel;
struct CommandResult;

/// The accounts of one server.
class UsersViewModel : public TableSectionViewModel
{
    Q_OBJECT

public:
    /// `server` outlives the model.
    explicit UsersViewModel(const MonitoredServer &server, QObject *parent = nullptr);

    /// All of them, in the server's order.
    QList<UserInfo> users() const { return m_table.records(); }

    /// Those on show, in the order of their rows.
    QList<UserInfo> filteredUsers() const { return m_table.shownRecords(); }

    const UserInfo *selectedUser() const { return m_table.selected(); }

    /// A form for another account, which ends with leave(); an account that is being made then is made to its end.
    /// After it the list is read again; what went wrong with it is told by creationFailed().
    AddUserViewModel *addUserForm();

    /// Neither of the system nor the account of the connection.
    bool canBeDeleted(const UserInfo &user) const;

    /// Removes the account with its home, and reads the list again.
    void deleteUser(const UserInfo &user);

public Q_SLOTS:

    void refreshUsers() { refresh(); }

Q_SIGNALS:
    /// An account was not made as its form wanted, which is closed already.
    void creationFailed(const QString &account, const QString &message);

protected:
    void read(const Server &server) override;
    void applyFilter() override;
    Message emptiness() const override;

private:
    RecordTableDeclaration<UserInfo> declaration();
    void finishDelete(const UserInfo &user, const CommandResult &result);

    RecordTableModel<UserInfo> m_table;
};
