#include "Views/Users/UsersViewModel.h"

#include "Helpers/DisplayText.h"
#include "Models/ServerStore.h"
#include "Services/Users/UserAccounts.h"
#include "Views/Users/AddUserViewModel.h"

using namespace Qt::StringLiterals;

UsersViewModel::UsersViewModel(const MonitoredServer &server, QObject *parent)
    : TableSectionViewModel(
          server,
          {.title = tr("Users"), .search = tr("Search users..."), .loading = tr("Loading users..."), .failure = {}},
          std::chrono::milliseconds(0), parent)
    , m_table(declaration())
{
    setTable(m_table, {});
}

RecordTableDeclaration<UserInfo> UsersViewModel::declaration()
{
    using Column = RecordColumn<UserInfo>;
    const auto toneOfShell = [](const UserInfo &user) {
        return user.hasLoginShell() ? std::nullopt : std::optional(ToneName::Gray);
    };
    return {
        .name = tr("Users"),
        .identity = &UserInfo::username,
        .rowIdentifier = [](const UserInfo &user) { return u"deleteUser_"_s + user.username; },
        .columns = {Column{
                        .title = tr("User"), .text = &UserInfo::username, .style = CellStyle::Emphasis, .width = 145},
                    Column{.title = tr("UID"),
                           .text = &UserInfo::uid,
                           .sortKey = &UserInfo::uidInt,
                           .align = CellAlign::Right,
                           .width = 70},
                    Column{.title = tr("GID"),
                           .text = &UserInfo::gid,
                           .sortKey = &UserInfo::gidInt,
                           .align = CellAlign::Right,
                           .width = 70},
                    Column{.title = tr("Full Name"), .text = &UserInfo::fullName, .width = 150, .stretches = true},
                    Column{.title = tr("Home Directory"),
                           .text = &UserInfo::homeDirectory,
                           .style = CellStyle::Mono,
                           .elide = Qt::ElideMiddle,
                           .width = 165},
                    Column{.title = tr("Shell"),
                           .text = &UserInfo::shell,
                           .style = CellStyle::Mono,
                           .elide = Qt::ElideMiddle,
                           .width = 165,
                           .tone = toneOfShell}},
        .actions = {{.label = tr("Delete User"),
                     .icon = IconName::Delete,
                     .isDestructive = true,
                     .isButton = true,
                     .isOffered = [this](const UserInfo &user) { return canBeDeleted(user); },
                     .question =
                         [](const UserInfo &user) {
                             return RowQuestion{.title = tr("Delete User"),
                                                .text =
                                                    tr("Are you sure you want to delete user '%1'?\n\nThis action "
                                                       "cannot be undone.")
                                                        .arg(DisplayText::oneLine(user.username)),
                                                .confirm = tr("Delete")};
                         },
                     .run = [this](const UserInfo &user) { deleteUser(user); }}},
        .sortColumn = 1,
    };
}

AddUserViewModel *UsersViewModel::addUserForm()
{
    auto *form = new AddUserViewModel(monitored(), this);
    connect(form, &QObject::destroyed, this, &UsersViewModel::refreshUsers);
    connect(form, &AddUserViewModel::failedUnseen, this, &UsersViewModel::creationFailed);
    return form;
}

bool UsersViewModel::canBeDeleted(const UserInfo &user) const
{
    const std::optional<Server> record = monitored().store.server(monitored().id);
    return record && !user.isSystemUser() && user.username != record->username;
}

void UsersViewModel::deleteUser(const UserInfo &user)
{
    const std::optional<Server> record = monitored().connected();
    if (!record || !canBeDeleted(user)) {
        return;
    }
    m_table.setBusy(user.username, true);
    whenDone(UserAccounts::deleteUser(monitored().manager, *record, user.username), this,
             [this, user](const CommandResult &result) { finishDelete(user, result); });
}

void UsersViewModel::finishDelete(const UserInfo &user, const CommandResult &result)
{
    m_table.setBusy(user.username, false);
    if (!result.succeeded()) {
        const QString error = QString::fromUtf8(result.error.trimmed());
        complain(user.username,
                 error.isEmpty() ? tr("The server refused to delete the account '%1'.").arg(user.username) : error);
    }
    refreshUsers();
}

void UsersViewModel::read(const Server &server)
{
    load(UserAccounts::getSystemUsers(monitored().manager, server),
         [this](QList<UserInfo> users) { m_table.setRecords(std::move(users)); });
}

void UsersViewModel::applyFilter()
{
    m_table.setFilter([text = searchText()](const UserInfo &user) {
        const auto contains = [&text](const QString &field) { return field.contains(text, Qt::CaseInsensitive); };
        return text.isEmpty() || contains(user.username) || contains(user.fullName) || contains(user.homeDirectory) ||
               contains(user.shell);
    });
}

TableSectionViewModel::Message UsersViewModel::emptiness() const
{
    if (!searchText().isEmpty()) {
        return {tr("No Matching Users"), {}, {}};
    }
    return {tr("No System Users Found"), tr("No system users found in /etc/passwd"), {}};
}
