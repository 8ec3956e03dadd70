#include "Views/Users/AddUserViewModel.h"

#include "Helpers/Secret.h"
#include "Helpers/Tasks.h"
#include "Models/ServerStore.h"

#include <algorithm>

using namespace Qt::StringLiterals;

AddUserViewModel::AddUserViewModel(const MonitoredServer &server, QObject *parent)
    : QObject(parent)
    , selectedShell(availableShells().first())
    , m_server(server)
{
}

AddUserViewModel::~AddUserViewModel()
{
    clearPasswords();
}

QStringList AddUserViewModel::availableShells()
{
    return {u"/bin/bash"_s, u"/bin/sh"_s, u"/bin/zsh"_s, u"/usr/bin/fish"_s, u"/sbin/nologin"_s};
}

QString AddUserViewModel::sudoGroupLabel() const
{
    const std::optional<Server> record = m_server.store.server(m_server.id);
    return tr("Add to %1 group").arg(UserAccounts::sudoGroup(record.value_or(Server())));
}

QString AddUserViewModel::sudoersQuestion() const
{
    return tr("'%1' will run every command as root without a password. The file %2 is written on the server.")
        .arg(username, UserAccounts::sudoersFile(username));
}

QString AddUserViewModel::complaint() const
{
    const auto hasLineEnd = [](const QString &text) {
        return std::ranges::any_of(text, [](QChar c) { return c.unicode() < u' '; });
    };
    if (!password.isEmpty() && password != confirmPassword) {
        return tr("Passwords do not match");
    }
    if (!UserAccounts::isValidUsername(username)) {
        return tr("Invalid username");
    }
    if (hasLineEnd(password) || hasLineEnd(fullName) || fullName.contains(u':')) {
        return hasLineEnd(password) ? tr("Invalid password") : tr("Invalid full name");
    }
    if (!selectedShell.startsWith(u'/') || hasLineEnd(selectedShell) || selectedShell.contains(u':')) {
        return tr("Invalid shell");
    }
    if (enablePasswordlessSudo && !UserAccounts::isValidSudoersFile(username)) {
        return tr("sudo ignores files with a dot in their name, so passwordless sudo cannot be enabled for '%1'")
            .arg(username);
    }
    return {};
}

void AddUserViewModel::createUser()
{
    if (m_isCreating || m_showingSudoersQuestion) {
        return;
    }
    const QString wrong = complaint();
    if (!wrong.isEmpty()) {
        fail(wrong);
    } else if (enablePasswordlessSudo) {
        m_showingSudoersQuestion = true;
        Q_EMIT changed();
    } else {
        create();
    }
}

void AddUserViewModel::answerSudoersQuestion(bool goesOn)
{
    if (!std::exchange(m_showingSudoersQuestion, false)) {
        return;
    }
    if (goesOn) {
        create();
    }
    Q_EMIT changed();
}

void AddUserViewModel::create()
{
    const std::optional<Server> record = m_server.connected();
    if (!record) {
        fail(tr("Could not connect to server. Please check your connection settings."));
        return;
    }
    m_isCreating = true;
    Q_EMIT changed();
    whenDone(UserAccounts::createUser(m_server.manager, *record,
                                      {.username = username,
                                       .fullName = fullName,
                                       .password = QString(password.constData(), password.size()), // a copy to wipe
                                       .createHomeDirectory = createHomeDirectory,
                                       .shell = selectedShell,
                                       .addToSudoGroup = addToSudoGroup,
                                       .enablePasswordlessSudo = enablePasswordlessSudo}),
             this, [this](const std::optional<UserAccounts::UserCreationError> &error) { finish(error); });
}

void AddUserViewModel::finish(const std::optional<UserAccounts::UserCreationError> &error)
{
    m_isCreating = false;
    if (m_isLeft) {
        deleteLater();
    }
    if (error) {
        fail(error->text);
        if (m_isLeft) {
            Q_EMIT failedUnseen(username, m_errorMessage);
        }
        return;
    }
    clearPasswords();
    Q_EMIT changed();
    Q_EMIT created();
}

void AddUserViewModel::fail(const QString &message)
{
    m_errorMessage = message.isEmpty() ? tr("Unknown error occurred") : message;
    m_showingError = true;
    Q_EMIT changed();
}

void AddUserViewModel::dismissError()
{
    if (std::exchange(m_showingError, false)) {
        m_errorMessage.clear();
        Q_EMIT changed();
    }
}

void AddUserViewModel::leave()
{
    clearPasswords();
    m_isLeft = true;
    if (!m_isCreating) {
        deleteLater();
    }
}

void AddUserViewModel::clearPasswords()
{
    wipe(password);
    wipe(confirmPassword);
}
