#pragma once

#include "Services/Monitoring/MonitoredServer.h"
#include "Services/Users/UserAccounts.h"

#include <QObject>

/// The form that makes an account.
class AddUserViewModel : public QObject
{
    Q_OBJECT

public:
    /// `server` outlives the model.
    explicit AddUserViewModel(const MonitoredServer &server, QObject *parent = nullptr);
    ~AddUserViewModel() override;
    Q_DISABLE_COPY_MOVE(AddUserViewModel)

    /// What the form offers; any other path may be typed.
    static QStringList availableShells();

    /// "Add to sudo group", or the group that the server's system has for it.
    QString sudoGroupLabel() const;

    bool isCreating() const { return m_isCreating; }

    /// Why the last try failed, while it is shown.
    const QString &errorMessage() const { return m_errorMessage; }

    bool showingError() const { return m_showingError; }

    void dismissError();

    /// Whether the form asks once more before a sudoers file is written, and in which words.
    bool showingSudoersQuestion() const { return m_showingSudoersQuestion; }

    QString sudoersQuestion() const;

    /// The answer to it; no goes back to the form.
    void answerSudoersQuestion(bool goesOn);

    /// The form is closed: forgets the passwords, and goes away as soon as no account is being made any more. A
    /// failure of that is told by failedUnseen().
    void leave();

    // What the form's fields write.
    QString username;
    QString fullName;
    QString password;
    QString confirmPassword;
    bool createHomeDirectory = true;
    bool addToSudoGroup = false;
    bool enablePasswordlessSudo = false;
    QString selectedShell;

public Q_SLOTS:
    /// Checks the form, asks what is to be asked, and makes the account.
    void createUser();

Q_SIGNALS:
    void changed();

    /// The account is there: the form is done.
    void created();

    /// The making of `account` failed when the form was closed already; steps that were done stay done.
    void failedUnseen(const QString &account, const QString &message);

private:
    QString complaint() const;
    void clearPasswords();
    void fail(const QString &message);
    void create();
    void finish(const std::optional<UserAccounts::UserCreationError> &error);

    MonitoredServer m_server;
    bool m_isCreating = false;
    bool m_isLeft = false;
    bool m_showingError = false;
    QString m_errorMessage;
    bool m_showingSudoersQuestion = false;
};
