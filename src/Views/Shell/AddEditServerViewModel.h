#pragma once

#include "Models/Server.h"
#include "Services/Commands/ServerSecrets.h"

#include <QMap>
#include <QObject>
#include <QStringList>
#include <memory>
#include <optional>

class CommandSSHManager;
class ServerProbe;
class ServerStore;

/// What stands in the form of a server: it is checked, tried out and stored here. It may be destroyed at any moment:
/// what is under way is ended, and a keychain that was changed for a test is put back.
class AddEditServerViewModel : public QObject
{
    Q_OBJECT

public:
    /// Both outlive every task.
    struct Services {
        ServerStore &store;
        CommandSSHManager &manager;
    };

    /// What is typed, but for the secrets.
    struct Form {
        QString name;
        QString host;
        int port = 22;
        QString username;
        AuthMethod authMethod = AuthMethod::Password;
        QString privateKeyPath;
        QMap<QString, QString> labels;
        QString newLabelKey;
        QString newLabelValue;
        bool useSudo = false;
        ContainerRuntime containerRuntime = ContainerRuntime::Docker;
        bool forwardAgent = false;

        bool operator==(const Form &) const = default;
    };

    /// Where a message of the validation belongs.
    enum class Field { Name, Host, Username, Port, PrivateKeyPath, Agent, NewLabelKey, NewLabelValue };

    enum class Activity { None, TestingConnection, CheckingSudo, Saving };

    struct TestResult {
        bool succeeded = false;
        QString text;
        QString reason; ///< in ssh's words; may be empty
    };

    /// Without `serverToEdit` a new server is added.
    AddEditServerViewModel(const Services &services, const std::optional<Server> &serverToEdit,
                           QObject *parent = nullptr);
    ~AddEditServerViewModel() override;

    bool isEditing() const { return m_serverToEdit.has_value(); }

    const Form &form() const { return m_form; }

    const QString &password() const { return m_password; }

    const QString &passphrase() const { return m_passphrase; }

    /// Whether the keychain has the secret for the address that is typed at the moment, as far as is known.
    bool passwordSaved() const;
    bool passphraseSaved() const;

    /// Anything was typed that closing would lose.
    bool hasChanges() const;

    bool isSSHAgentAvailable() const;

    Activity activity() const { return m_activity; }

    bool checkingSudo() const { return m_activity == Activity::CheckingSudo; }

    std::optional<QString> sudoCheckError() const { return m_sudoCheckError; }

    const std::optional<TestResult> &testResult() const { return m_testResult; }

    /// The messages to show, one a line, and the fields that they are about until these are changed.
    bool showingValidationErrors() const { return m_showingValidationErrors; }

    QStringList validationErrors() const { return m_validationErrors; }

    const QMap<Field, QString> &invalidFields() const { return m_invalidFields; }

    /// A secret went into the keychain, or the keychain refused: in words. Empty without news.
    bool showingPasswordAlert() const { return !m_keychainNotice.isEmpty(); }

    QString keychainNotice() const { return m_keychainNotice; }

    /// The keychain refused, and retryKeychainAccess() tries once more.
    bool canRetryKeychainAccess() const { return m_refused.has_value(); }

    /// A secret is typed, and there is an address to keep it under.
    bool canSavePassword() const;
    bool canSavePassphrase() const;

    /// What is wrong with the form; empty if nothing is.
    QStringList validateInputs() const;

    static bool isValidHostAddress(const QString &text);

    static QStringList suggestedLabelKeys();

public Q_SLOTS:
    void setName(const QString &name);
    void setHost(const QString &host);
    void setPort(int port);
    void setUsername(const QString &username);
    void setAuthMethod(AuthMethod authMethod);
    void setPrivateKeyPath(const QString &path);
    void setPassword(const QString &password);
    void setPassphrase(const QString &passphrase);
    void setNewLabelKey(const QString &key);
    void setNewLabelValue(const QString &value);
    void setUseSudo(bool useSudo);
    void setContainerRuntime(ContainerRuntime runtime);
    void setForwardAgent(bool forwardAgent);

    /// Takes the new label over; an existing key gets the new value. Without a key or a value nothing happens.
    void addLabel();
    void removeLabel(const QString &key);

    void dismissValidationErrors();

    /// Put the typed secret into the keychain at once, under the address that is typed.
    void savePasswordToKeychain();
    void savePassphraseToKeychain();

    /// Does again what the keychain refused.
    void retryKeychainAccess();

    /// Logs in with what is typed, and stores nothing. The result is testResult().
    void testConnection();

    /// Checks the form, tries sudo where that is asked for, and stores the server. saved() tells that it is done;
    /// otherwise the form says what is missing.
    void validateAndSaveServer();

Q_SIGNALS:
    /// Anything of the above is different now.
    void changed();

    /// The server is stored, and the form is of no use any more.
    void saved();

private:
    enum class KeychainStep { SavePassword, SavePassphrase, SaveServer };
    using Problem = std::pair<Field, QString>;

    template<typename T>
    void set(T &field, const T &value, std::optional<Field> place = std::nullopt);
    void edited();
    void findSavedSecrets();
    QList<Problem> problems() const;
    QList<Problem> labelProblems() const;
    bool report(const QList<Problem> &problems);
    Server record() const;
    Server recordOf(const Form &form) const;
    QString account(QString (*accountOf)(const Server &)) const;
    void saveSecret(KeychainStep step);
    void checkSudo();
    void sudoChecked(const ServerSecrets::SudoCheck &check);
    void saveServer();
    void serverSaved(const Server &server, bool isKeychainSettled);
    void keychainRefused(KeychainStep step);
    int begin(Activity activity);
    void endActivity();

    Services m_services;
    std::optional<Server> m_serverToEdit;
    Form m_form;
    Form m_formAtFirst;
    QString m_password;
    QString m_passphrase;
    // The accounts that are known to have a secret; empty for none.
    QString m_savedPasswordAccount;
    QString m_savedPassphraseAccount;
    QString m_passphraseAccountOfNow; // for which a passphrase was saved from this form
    Activity m_activity = Activity::None;
    int m_request = 0; // the newest one; results of older ones are dropped
    std::shared_ptr<ServerProbe> m_probe;
    std::optional<QString> m_sudoCheckError;
    std::optional<TestResult> m_testResult;
    bool m_showingValidationErrors = false;
    QStringList m_validationErrors;
    QMap<Field, QString> m_invalidFields;
    QString m_keychainNotice;
    std::optional<KeychainStep> m_refused;
};
