#include "Views/Shell/AddEditServerViewModel.h"

#include "Helpers/Secret.h"
#include "Helpers/Tasks.h"
#include "Models/ServerStore.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/Commands/ServerProbe.h"
#include "Services/SSH/KeychainManager.h"
#include "Services/SSH/PrivateKeyFile.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kLastPort = 65535;

AddEditServerViewModel::Form formOf(const Server &server)
{
    AddEditServerViewModel::Form form;
    form.name = server.name;
    form.host = server.host;
    form.port = server.port;
    form.username = server.username;
    form.authMethod = server.authMethod;
    form.privateKeyPath = server.privateKeyPath.value_or(QString());
    form.labels = server.labels;
    form.useSudo = server.useSudo;
    form.containerRuntime = server.containerRuntime;
    form.forwardAgent = server.forwardAgent;
    return form;
}

QString couldNotConnect()
{
    return AddEditServerViewModel::tr("Could not connect to server. Please verify your connection settings (host, "
                                      "port, username, and authentication credentials).");
}

void replace(QString &secret, const QString &by)
{
    wipe(secret);
    secret = by;
}

} // namespace

AddEditServerViewModel::AddEditServerViewModel(const Services &services, const std::optional<Server> &serverToEdit,
                                               QObject *parent)
    : QObject(parent)
    , m_services(services)
    , m_serverToEdit(serverToEdit)
    , m_form(serverToEdit ? formOf(*serverToEdit) : Form())
    , m_formAtFirst(m_form)
{
    if (serverToEdit) {
        findSavedSecrets();
    }
}

AddEditServerViewModel::~AddEditServerViewModel()
{
    endActivity();
    wipe(m_password);
    wipe(m_passphrase);
}

void AddEditServerViewModel::findSavedSecrets()
{
    KeychainManager &keychain = m_services.manager.dependencies().keychain;
    const Server server = *m_serverToEdit;
    whenDone(keychain.hasPassword(server), this,
             [this, account = KeychainManager::passwordAccount(server)](bool has) {
                 if (has) {
                     m_savedPasswordAccount = account;
                     Q_EMIT changed();
                 }
             });
    whenDone(keychain.hasPassphrase(server), this,
             [this, account = KeychainManager::passphraseAccount(server)](bool has) {
                 if (has) {
                     m_savedPassphraseAccount = account;
                     Q_EMIT changed();
                 }
             });
}

QString AddEditServerViewModel::account(QString (*accountOf)(const Server &)) const
{
    return accountOf(record());
}

bool AddEditServerViewModel::passwordSaved() const
{
    return !m_savedPasswordAccount.isEmpty() && m_savedPasswordAccount == account(&KeychainManager::passwordAccount);
}

bool AddEditServerViewModel::passphraseSaved() const
{
    return !m_savedPassphraseAccount.isEmpty() &&
           m_savedPassphraseAccount == account(&KeychainManager::passphraseAccount);
}

bool AddEditServerViewModel::hasChanges() const
{
    return m_form != m_formAtFirst || !m_password.isEmpty() || !m_passphrase.isEmpty();
}

bool AddEditServerViewModel::isSSHAgentAvailable() const
{
    return m_services.manager.isSSHAgentAvailable();
}

bool AddEditServerViewModel::canSavePassword() const
{
    return !m_password.isEmpty() && !m_form.host.trimmed().isEmpty() && !m_form.username.trimmed().isEmpty() &&
           m_activity == Activity::None;
}

bool AddEditServerViewModel::canSavePassphrase() const
{
    return !m_passphrase.isEmpty() && !m_form.host.trimmed().isEmpty() && !m_form.username.trimmed().isEmpty() &&
           m_activity == Activity::None;
}

QStringList AddEditServerViewModel::suggestedLabelKeys()
{
    return {u"env"_s, u"team"_s, u"region"_s, u"location"_s, u"role"_s, u"type"_s};
}

template<typename T>
void AddEditServerViewModel::set(T &field, const T &value, std::optional<Field> place)
{
    if (field == value) {
        return;
    }
    field = value;
    if (place) {
        m_invalidFields.remove(*place);
    }
    edited();
}

// What was found out about the form as it was holds no longer.
void AddEditServerViewModel::edited()
{
    if (m_activity == Activity::TestingConnection) {
        endActivity();
    }
    m_testResult.reset();
    Q_EMIT changed();
}

void AddEditServerViewModel::setName(const QString &name)
{
    set(m_form.name, name, Field::Name);
}

void AddEditServerViewModel::setHost(const QString &host)
{
    set(m_form.host, host, Field::Host);
}

void AddEditServerViewModel::setPort(int port)
{
    set(m_form.port, port, Field::Port);
}

void AddEditServerViewModel::setUsername(const QString &username)
{
    set(m_form.username, username, Field::Username);
}

void AddEditServerViewModel::setAuthMethod(AuthMethod authMethod)
{
    m_invalidFields.remove(Field::PrivateKeyPath);
    set(m_form.authMethod, authMethod, Field::Agent);
}

void AddEditServerViewModel::setPrivateKeyPath(const QString &path)
{
    set(m_form.privateKeyPath, path, Field::PrivateKeyPath);
}

void AddEditServerViewModel::setPassword(const QString &password)
{
    if (m_password != password) {
        replace(m_password, password);
        edited();
    }
}

void AddEditServerViewModel::setPassphrase(const QString &passphrase)
{
    if (m_passphrase != passphrase) {
        replace(m_passphrase, passphrase);
        edited();
    }
}

void AddEditServerViewModel::setNewLabelKey(const QString &key)
{
    m_invalidFields.remove(Field::NewLabelValue); // a label that is not begun lacks nothing
    set(m_form.newLabelKey, key, Field::NewLabelKey);
}

void AddEditServerViewModel::setNewLabelValue(const QString &value)
{
    m_invalidFields.remove(Field::NewLabelKey);
    set(m_form.newLabelValue, value, Field::NewLabelValue);
}

void AddEditServerViewModel::setUseSudo(bool useSudo)
{
    set(m_form.useSudo, useSudo);
}

void AddEditServerViewModel::setContainerRuntime(ContainerRuntime runtime)
{
    set(m_form.containerRuntime, runtime);
}

void AddEditServerViewModel::setForwardAgent(bool forwardAgent)
{
    set(m_form.forwardAgent, forwardAgent);
}

void AddEditServerViewModel::addLabel()
{
    const QString key = m_form.newLabelKey.trimmed();
    const QString value = m_form.newLabelValue.trimmed();
    if (key.isEmpty() || value.isEmpty()) {
        return;
    }
    m_form.labels[key] = value;
    m_form.newLabelKey.clear();
    m_form.newLabelValue.clear();
    Q_EMIT changed();
}

void AddEditServerViewModel::removeLabel(const QString &key)
{
    if (m_form.labels.remove(key) > 0) {
        Q_EMIT changed();
    }
}

bool AddEditServerViewModel::isValidHostAddress(const QString &text)
{
    static const QRegularExpression kIPv4(
        u"\\A(?:(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)\\.){3}(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)\\z"_s);
    static const QRegularExpression kName(u"\\A[a-zA-Z0-9.-]+\\z"_s);
    const QString host = text.trimmed();
    if (host.startsWith(u'-')) { // ssh would read it as an option
        return false;
    }
    return kIPv4.match(host).hasMatch() || kName.match(host).hasMatch();
}

QList<AddEditServerViewModel::Problem> AddEditServerViewModel::problems() const
{
    QList<Problem> found;
    if (m_form.name.trimmed().isEmpty()) {
        found.emplaceBack(Field::Name, tr("Server name is required"));
    }
    if (m_form.host.trimmed().isEmpty()) {
        found.emplaceBack(Field::Host, tr("Host address is required"));
    } else if (!isValidHostAddress(m_form.host)) {
        found.emplaceBack(Field::Host, tr("Invalid host address format"));
    }
    if (m_form.username.trimmed().isEmpty()) {
        found.emplaceBack(Field::Username, tr("Username is required"));
    } else if (m_form.username.trimmed().startsWith(u'-')) {
        found.emplaceBack(Field::Username, tr("Username must not begin with '-'"));
    }
    if (m_form.port < 1 || m_form.port > kLastPort) {
        found.emplaceBack(Field::Port, tr("Port must be between 1 and 65535"));
    }
    if (m_form.authMethod == AuthMethod::PublicKey) {
        if (m_form.privateKeyPath.trimmed().isEmpty()) {
            found.emplaceBack(Field::PrivateKeyPath, tr("SSH key path is required for key authentication"));
        } else if (!privateKeyExists(m_form.privateKeyPath.trimmed())) {
            found.emplaceBack(Field::PrivateKeyPath, tr("SSH key file does not exist"));
        }
    }
    if (m_form.authMethod == AuthMethod::SshAgent && !isSSHAgentAvailable()) {
        found.emplaceBack(Field::Agent, tr("SSH Agent is not running or available"));
    }
    return found;
}

QStringList AddEditServerViewModel::validateInputs() const
{
    QStringList messages;
    for (const auto &[field, message] : problems()) {
        messages.append(message);
    }
    return messages;
}

// A label that was begun would be lost without a word.
QList<AddEditServerViewModel::Problem> AddEditServerViewModel::labelProblems() const
{
    const bool hasKey = !m_form.newLabelKey.trimmed().isEmpty();
    const bool hasValue = !m_form.newLabelValue.trimmed().isEmpty();
    if (hasKey == hasValue) {
        return {};
    }
    return {hasKey ? Problem(Field::NewLabelValue, tr("The new label has no value"))
                   : Problem(Field::NewLabelKey, tr("The new label has no key"))};
}

bool AddEditServerViewModel::report(const QList<Problem> &problems)
{
    m_invalidFields.clear();
    m_validationErrors.clear();
    for (const auto &[field, message] : problems) {
        m_invalidFields.insert(field, message);
        m_validationErrors.append(message);
    }
    m_showingValidationErrors = !m_validationErrors.isEmpty();
    if (m_validationErrors.isEmpty()) {
        return false;
    }
    Q_EMIT changed();
    return true;
}

void AddEditServerViewModel::dismissValidationErrors()
{
    m_showingValidationErrors = false;
}

Server AddEditServerViewModel::record() const
{
    return recordOf(m_form);
}

Server AddEditServerViewModel::recordOf(const Form &form) const
{
    Server server;
    if (m_serverToEdit) { // what was learnt of the server is kept, as it stands now
        server = m_services.store.server(m_serverToEdit->id).value_or(*m_serverToEdit);
    }
    server.name = form.name.trimmed();
    server.host = form.host.trimmed();
    server.port = form.port;
    server.username = form.username.trimmed();
    server.authMethod = form.authMethod;
    server.privateKeyPath.reset();
    if (form.authMethod == AuthMethod::PublicKey) {
        server.privateKeyPath = form.privateKeyPath.trimmed();
    }
    server.labels = form.labels;
    server.useSudo = form.useSudo;
    server.containerRuntime = form.containerRuntime;
    server.forwardAgent = form.forwardAgent;
    return server;
}

int AddEditServerViewModel::begin(Activity activity)
{
    endActivity();
    m_activity = activity;
    m_probe = std::make_shared<ServerProbe>(m_services.manager);
    m_testResult.reset();
    m_sudoCheckError.reset();
    m_keychainNotice.clear();
    m_refused.reset();
    return m_request;
}

void AddEditServerViewModel::endActivity()
{
    ++m_request;
    m_activity = Activity::None;
    if (const auto probe = std::exchange(m_probe, nullptr)) {
        probe->cancel();
    }
}

void AddEditServerViewModel::savePasswordToKeychain()
{
    if (canSavePassword()) {
        saveSecret(KeychainStep::SavePassword);
    }
}

void AddEditServerViewModel::savePassphraseToKeychain()
{
    if (canSavePassphrase()) {
        saveSecret(KeychainStep::SavePassphrase);
    }
}

void AddEditServerViewModel::saveSecret(KeychainStep step)
{
    const bool isPassword = step == KeychainStep::SavePassword;
    const QString place =
        account(isPassword ? &KeychainManager::passwordAccount : &KeychainManager::passphraseAccount);
    const QString secret = isPassword ? m_password : m_passphrase;
    const int request = begin(Activity::Saving);
    Q_EMIT changed();
    whenDone(m_services.manager.dependencies().keychain.savePassword(place, secret), this,
             [this, request, step, isPassword, place](bool isSaved) {
                 if (request != m_request) {
                     return;
                 }
                 endActivity();
                 if (!isSaved) {
                     keychainRefused(step);
                     return;
                 }
                 replace(isPassword ? m_password : m_passphrase, {});
                 (isPassword ? m_savedPasswordAccount : m_savedPassphraseAccount) = place;
                 if (!isPassword) {
                     m_passphraseAccountOfNow = place;
                 }
                 m_keychainNotice =
                     isPassword ? tr("Password saved to Keychain") : tr("Passphrase saved to Keychain");
                 Q_EMIT changed();
             });
}

void AddEditServerViewModel::keychainRefused(KeychainStep step)
{
    m_refused = step;
    m_keychainNotice = tr("Keychain access was denied. Nothing was saved.");
    Q_EMIT changed();
}

void AddEditServerViewModel::retryKeychainAccess()
{
    const std::optional<KeychainStep> step = m_refused;
    if (!step) {
        return;
    }
    switch (*step) {
    case KeychainStep::SavePassword:
        savePasswordToKeychain();
        return;
    case KeychainStep::SavePassphrase:
        savePassphraseToKeychain();
        return;
    case KeychainStep::SaveServer:
        validateAndSaveServer();
        return;
    }
}

void AddEditServerViewModel::testConnection()
{
    if (m_activity != Activity::None || report(problems())) {
        return;
    }
    Server temporary = record();
    temporary.id = QUuid::createUuid();
    ServerProbe::Secrets secrets;
    if (!m_password.isEmpty()) {
        secrets.password = m_password;
    }
    if (!m_passphrase.isEmpty()) {
        secrets.passphrase = m_passphrase;
    }
    const int request = begin(Activity::TestingConnection);
    Q_EMIT changed();
    whenDone(ServerProbe::testConnection(m_probe, temporary, secrets), this,
             [this, request](const ConnectionOutcome &login) {
                 if (request != m_request) {
                     return;
                 }
                 endActivity();
                 m_testResult = {login.succeeded,
                                 login.succeeded ? tr("Connection successful.")
                                                 : login.error.value_or(couldNotConnect()),
                                 login.reason};
                 Q_EMIT changed();
             });
}

void AddEditServerViewModel::validateAndSaveServer()
{
    if (m_activity == Activity::CheckingSudo || m_activity == Activity::Saving) {
        return;
    }
    addLabel();
    if (report(problems() + labelProblems())) {
        return;
    }
    if (m_form.useSudo) {
        checkSudo();
    } else {
        saveServer();
    }
}

void AddEditServerViewModel::checkSudo()
{
    Server temporary = record();
    temporary.id = QUuid::createUuid();
    const int request = begin(Activity::CheckingSudo);
    Q_EMIT changed();
    whenDone(ServerSecrets::checkSudo(m_probe, m_services.manager.dependencies().keychain, m_serverToEdit, temporary,
                                      {m_password, m_passphrase}),
             this, [this, request](const ServerSecrets::SudoCheck &check) {
                 if (request == m_request) {
                     endActivity();
                     sudoChecked(check);
                 }
             });
}

void AddEditServerViewModel::sudoChecked(const ServerSecrets::SudoCheck &check)
{
    if (check.sudo.available) {
        saveServer();
        return;
    }
    if (!check.sudo.connectionSucceeded) {
        m_sudoCheckError = couldNotConnect();
    } else {
        m_sudoCheckError = tr("Passwordless sudo is not configured on this server. Please configure it using: sudo "
                              "visudo");
        m_savedPasswordAccount = check.hadPassword ? KeychainManager::passwordAccount(*m_serverToEdit) : QString();
        if (check.isPutBack) {
            replace(m_password, {});
        }
    }
    Q_EMIT changed();
}

void AddEditServerViewModel::saveServer()
{
    const Server server = record();
    const bool keepsPassphrase = m_passphraseAccountOfNow == KeychainManager::passphraseAccount(server);
    const int request = begin(Activity::Saving);
    Q_EMIT changed();
    whenDone(ServerSecrets::settle(m_services.manager.dependencies().keychain, m_serverToEdit, server,
                                   {m_password, m_passphrase}, keepsPassphrase),
             this, [this, request, form = m_form](bool isSettled) {
                 if (request == m_request) {
                     endActivity();
                     serverSaved(recordOf(form), isSettled); // the keychain takes its time; more may be known by now
                 }
             });
}

void AddEditServerViewModel::serverSaved(const Server &server, bool isKeychainSettled)
{
    if (!isKeychainSettled) {
        keychainRefused(KeychainStep::SaveServer);
        return;
    }
    if (m_serverToEdit) {
        m_services.store.updateServer(server);
    } else {
        m_services.store.addServer(server);
    }
    m_formAtFirst = m_form;
    replace(m_password, {});
    replace(m_passphrase, {});
    Q_EMIT changed();
    Q_EMIT saved();
}
