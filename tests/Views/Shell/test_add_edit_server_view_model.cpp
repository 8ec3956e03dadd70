#include "Views/FakeTransport.h"
#include "Views/Shell/AddEditServerViewModel.h"

#include <QCoroTask>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

using Activity = AddEditServerViewModel::Activity;
using Field = AddEditServerViewModel::Field;

namespace
{

const QByteArray kHasSudo = "echo SUDO_TEST_OK";
const QByteArray kLacksSudo = "echo 'sudo: a password is required'; exit 1";
const QByteArray kUnreachable = "echo 'ssh: connect to host h: Connection refused' >&2; exit 255";
constexpr auto kCouldNotConnect = "Could not connect to server. Please verify your connection settings (host, port, "
                                  "username, and authentication credentials)."_L1;
constexpr auto kNotConfigured =
    "Passwordless sudo is not configured on this server. Please configure it using: sudo visudo"_L1;

/// A store that can be told to refuse.
struct MoodyStore : SecretStore {
    QCoro::Task<SecretStatus> add(QString account, QByteArray secret) override
    {
        co_return isRefusing ? SecretStatus::InteractionNotAllowed : co_await items.add(account, secret);
    }

    QCoro::Task<SecretMatch> copyMatching(QString account, bool wantData) override
    {
        if (isRefusing) {
            co_return SecretMatch{SecretStatus::InteractionNotAllowed, {}};
        }
        co_return co_await items.copyMatching(account, wantData);
    }

    QCoro::Task<SecretStatus> remove(QString account) override
    {
        co_return isRefusing ? SecretStatus::InteractionNotAllowed : co_await items.remove(account);
    }

    void cancelAll() override {}

    MemorySecretStore items;
    bool isRefusing = false;
};

} // namespace

class TestAddEditServerViewModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void validation_data();
    void validation();
    void hostAddresses_data();
    void hostAddresses();
    void labels();
    void adds();
    void aKeyBelongsToKeyAuthenticationOnly();
    void edits();
    void showsWhatIsSaved();
    void passphraseOfAnotherKey_data();
    void passphraseOfAnotherKey();
    void anotherMethodForgetsThePassphrase_data();
    void anotherMethodForgetsThePassphrase();
    void sudoWhenAdding_data();
    void sudoWhenAdding();
    void sudoWhenEditing_data();
    void sudoWhenEditing();
    void sudoOfAKeyThatIsLocked();
    void savesSecretsAtOnce();
    void aPassphraseSavedAtOnceOutlivesAnotherPath();
    void keychainRefuses();
    void testsTheConnection_data();
    void testsTheConnection();
    void aTestEndsWithTheNextEdit();
    void closedInTheMiddle_data();
    void closedInTheMiddle();

private:
    // Whether one is stored, and which.
    QString stored(const QString &account)
    {
        return QCoro::waitFor(m_transport->keychain.getPassword(account)).value_or(u"-"_s);
    }

    void store(const QString &account, const QString &secret)
    {
        QVERIFY(QCoro::waitFor(m_transport->keychain.savePassword(account, secret)));
    }

    AddEditServerViewModel &open(const std::optional<Server> &server = std::nullopt)
    {
        m_model = std::make_unique<AddEditServerViewModel>(
            AddEditServerViewModel::Services{m_transport->store, m_transport->manager}, server);
        m_saved = std::make_unique<QSignalSpy>(m_model.get(), &AddEditServerViewModel::saved);
        return *m_model;
    }

    AddEditServerViewModel &openFilled(AuthMethod method = AuthMethod::Password)
    {
        AddEditServerViewModel &model = open();
        model.setName(u"web"_s);
        model.setHost(u"h"_s);
        model.setUsername(u"u"_s);
        model.setAuthMethod(method);
        model.setPrivateKeyPath(m_key);
        return model;
    }

    Server addServer(AuthMethod method)
    {
        Server server = m_transport->add(u"web"_s, method);
        server.host = u"h"_s;
        server.username = u"u"_s;
        if (method == AuthMethod::PublicKey) {
            server.privateKeyPath = m_key;
        }
        m_transport->store.updateServer(server);
        return server;
    }

    void save(AddEditServerViewModel &model)
    {
        model.validateAndSaveServer();
        QTRY_COMPARE(model.activity(), Activity::None);
    }

    QTemporaryDir m_directory;
    QString m_key;
    std::unique_ptr<FakeTransport> m_transport;
    std::unique_ptr<AddEditServerViewModel> m_model;
    std::unique_ptr<QSignalSpy> m_saved;
};

void TestAddEditServerViewModel::init()
{
    m_key = m_directory.filePath(u"id_test"_s);
    QFile file(m_key);
    QVERIFY(file.open(QIODevice::WriteOnly));
    m_transport = std::make_unique<FakeTransport>();
}

void TestAddEditServerViewModel::cleanup()
{
    m_saved.reset();
    m_model.reset();
    m_transport.reset();
}

void TestAddEditServerViewModel::validation_data()
{
    QTest::addColumn<std::function<void(AddEditServerViewModel &)>>("change");
    QTest::addColumn<QStringList>("messages");
    const auto row = [](const char *name, const std::function<void(AddEditServerViewModel &)> &change,
                        const QStringList &messages) { QTest::newRow(name) << change << messages; };
    row("complete", [](auto &) {}, {});
    row("nothing but blanks",
        [](auto &m) {
            m.setName(u"  "_s);
            m.setHost(u" \t"_s);
            m.setUsername(u" "_s);
            m.setPort(0);
        },
        {u"Server name is required"_s, u"Host address is required"_s, u"Username is required"_s,
         u"Port must be between 1 and 65535"_s});
    row("port too high", [](auto &m) { m.setPort(70'000); }, {u"Port must be between 1 and 65535"_s});
    row("last port", [](auto &m) { m.setPort(65535); }, {});
    row("host of another form", [](auto &m) { m.setHost(u"a b"_s); }, {u"Invalid host address format"_s});
    row("host that is an option", [](auto &m) { m.setHost(u" -oProxyCommand"_s); },
        {u"Invalid host address format"_s});
    row("user name that is an option", [](auto &m) { m.setUsername(u" -l"_s); },
        {u"Username must not begin with '-'"_s});
    row("no key",
        [](auto &m) {
            m.setAuthMethod(AuthMethod::PublicKey);
            m.setPrivateKeyPath(u" "_s);
        },
        {u"SSH key path is required for key authentication"_s});
    row("no such key",
        [](auto &m) {
            m.setAuthMethod(AuthMethod::PublicKey);
            m.setPrivateKeyPath(u"/nowhere/id"_s);
        },
        {u"SSH key file does not exist"_s});
    row("a directory is no key",
        [](auto &m) {
            m.setAuthMethod(AuthMethod::PublicKey);
            m.setPrivateKeyPath(u"/"_s);
        },
        {u"SSH key file does not exist"_s});
    row("key in the home directory",
        [](auto &m) {
            m.setAuthMethod(AuthMethod::PublicKey);
            m.setPrivateKeyPath(u" ~/id_test "_s);
        },
        {});
    row("no agent", [](auto &m) { m.setAuthMethod(AuthMethod::SshAgent); },
        {u"SSH Agent is not running or available"_s});
}

void TestAddEditServerViewModel::validation()
{
    QFETCH(std::function<void(AddEditServerViewModel &)>, change);
    QFETCH(QStringList, messages);
    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", m_directory.path().toUtf8());
    qputenv("SSH_AUTH_SOCK", "/nowhere/agent");
    AddEditServerViewModel &model = openFilled();
    change(model);
    const QStringList found = model.validateInputs();
    save(model);
    qputenv("HOME", home);
    QCOMPARE(found, messages);
    QCOMPARE(model.validationErrors(), messages);
    QCOMPARE(model.showingValidationErrors(), !messages.isEmpty());
    QCOMPARE(model.invalidFields().size(), messages.size());
    QCOMPARE(m_transport->store.servers().size(), messages.isEmpty() ? 1 : 0);
}

void TestAddEditServerViewModel::hostAddresses_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isValid");
    const QList<std::pair<QString, bool>> rows{
        {u"web.example.org"_s, true},
        {u"10.0.4.11"_s, true},
        {u"build-runner"_s, true},
        {u" padded "_s, true},
        {u"300.1.1.1"_s, true},
        {u"a b"_s, false},
        {u"under_score"_s, false},
        {u"me@host"_s, false},
        {u""_s, false},
        {u"::1"_s, false},
        {u"-host"_s, false},
        {u"h;reboot"_s, false},
        {u"höst"_s, false},
        {u"two\nlines"_s, false},
    };
    for (const auto &[text, isValid] : rows) {
        QTest::newRow(qPrintable(text)) << text << isValid;
    }
}

void TestAddEditServerViewModel::hostAddresses()
{
    QFETCH(QString, text);
    QTEST(AddEditServerViewModel::isValidHostAddress(text), "isValid");
}

void TestAddEditServerViewModel::labels()
{
    AddEditServerViewModel &model = openFilled();
    const auto add = [&](const QString &key, const QString &value) {
        model.setNewLabelKey(key);
        model.setNewLabelValue(value);
        model.addLabel();
    };
    add(u" env "_s, u" prod "_s);
    QVERIFY(model.form().newLabelKey.isEmpty() && model.form().newLabelValue.isEmpty());
    add(u"role"_s, u"web"_s);
    add(u"env"_s, u"stage"_s);
    QCOMPARE(model.form().labels, (QMap<QString, QString>{{u"env"_s, u"stage"_s}, {u"role"_s, u"web"_s}}));
    model.removeLabel(u"role"_s);
    add(u"team"_s, u" "_s);
    QCOMPARE(model.form().labels.keys(), QStringList{u"env"_s});
    QCOMPARE(model.form().newLabelKey, u"team"_s); // stays until it has a value

    model.setNewLabelValue(u"ml"_s);
    save(model); // what is typed in full counts
    QCOMPARE(m_transport->store.servers().constFirst().labels,
             (QMap<QString, QString>{{u"env"_s, u"stage"_s}, {u"team"_s, u"ml"_s}}));
}

void TestAddEditServerViewModel::adds()
{
    AddEditServerViewModel &model = open();
    QCOMPARE(model.form().port, 22);
    QVERIFY(!model.isEditing() && !model.hasChanges() && !model.passwordSaved());
    model.setName(u" web "_s);
    model.setHost(u" h "_s);
    model.setPort(2222);
    model.setUsername(u" u "_s);
    model.setPassword(u" päss "_s);
    model.setContainerRuntime(ContainerRuntime::Podman);
    model.setForwardAgent(true);
    QVERIFY(model.hasChanges());
    save(model);
    QCOMPARE(m_saved->size(), 1);
    const Server server = m_transport->store.servers().constFirst();
    QCOMPARE(server.name, u"web"_s);
    QCOMPARE(server.host, u"h"_s);
    QCOMPARE(server.username, u"u"_s);
    QCOMPARE(server.containerRuntime, ContainerRuntime::Podman);
    QVERIFY(server.forwardAgent && !server.useSudo && !server.privateKeyPath);
    QCOMPARE(stored(u"u@h:2222"_s), u" päss "_s);
    QVERIFY(model.password().isEmpty());
    QCOMPARE(m_transport->logins(), 0);
}

void TestAddEditServerViewModel::aKeyBelongsToKeyAuthenticationOnly()
{
    AddEditServerViewModel &model = openFilled(AuthMethod::PublicKey);
    model.setPassword(u"not of a key"_s);
    model.setPassphrase(u"phrase"_s);
    save(model);
    QCOMPARE(m_transport->store.servers().constFirst().privateKeyPath, m_key);
    QCOMPARE(stored(u"passphrase:u@h:22"_s), u"phrase"_s);
    QCOMPARE(stored(u"u@h:22"_s), u"-"_s);

    save(openFilled(AuthMethod::Password)); // the path still stands in the form
    QVERIFY(!m_transport->store.servers().constLast().privateKeyPath);
}

void TestAddEditServerViewModel::edits()
{
    Server server = addServer(AuthMethod::Password);
    server.labels = {{u"env"_s, u"prod"_s}};
    server.lastConnected = m_transport->clock.now();
    server.packageManager = PackageManager::Apt;
    m_transport->store.updateServer(server);
    store(u"u@h:22"_s, u"old"_s);
    AddEditServerViewModel &model = open(server);
    QVERIFY(model.isEditing() && model.passwordSaved() && !model.passphraseSaved() && !model.hasChanges());

    // What is learnt meanwhile isn't undone.
    m_transport->store.updateServerSystemInfo(server, SystemInfo{.hostname = u"late"_s});
    model.setName(u"web-2"_s);
    save(model);
    QCOMPARE(m_transport->store.servers().size(), 1);
    const Server updated = m_transport->store.servers().constFirst();
    QCOMPARE(updated.id, server.id);
    QCOMPARE(updated.name, u"web-2"_s);
    QCOMPARE(updated.lastConnected, server.lastConnected);
    QCOMPARE(updated.packageManager, PackageManager::Apt);
    QCOMPARE(updated.systemInfo->hostname, u"late"_s);
    QCOMPARE(updated.labels, server.labels);
    QCOMPARE(stored(u"u@h:22"_s), u"old"_s); // nothing typed, nothing changed

    open(updated).setPassword(u"new"_s);
    save(*m_model);
    QCOMPARE(stored(u"u@h:22"_s), u"new"_s);

    // A connection that came while the editor was open is one to the host as it was.
    m_transport->store.updateServerConnection(updated, true);
    m_model->setName(u"web-3"_s);
    save(*m_model);
    QVERIFY(m_transport->store.servers().constFirst().isConnected);
    m_model->setHost(u"elsewhere"_s);
    save(*m_model);
    QVERIFY(!m_transport->store.servers().constFirst().isConnected);
}

void TestAddEditServerViewModel::showsWhatIsSaved()
{
    store(u"u@h:22"_s, u"old"_s);
    store(u"passphrase:u@h:22"_s, u"phrase"_s);
    QVERIFY(!openFilled().passwordSaved()); // a new server starts with nothing
    AddEditServerViewModel &model = open(addServer(AuthMethod::PublicKey));
    QVERIFY(!model.passwordSaved() && model.passphraseSaved());
    model.setHost(u"elsewhere"_s); // another account
    QVERIFY(!model.passphraseSaved());
    model.setHost(u"h"_s);
    QVERIFY(model.passphraseSaved());
}

void TestAddEditServerViewModel::passphraseOfAnotherKey_data()
{
    QTest::addColumn<bool>("hasOtherPath");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("onOldHost");
    QTest::addColumn<QString>("onNewHost");
    QTest::newRow("same path") << false << u"h"_s << QString() << u"old"_s << u"old"_s;
    QTest::newRow("same path, typed") << false << u"h"_s << u"new"_s << u"new"_s << u"new"_s;
    QTest::newRow("other path") << true << u"h"_s << QString() << u"-"_s << u"-"_s;
    QTest::newRow("other path, typed") << true << u"h"_s << u"new"_s << u"new"_s << u"new"_s;
    QTest::newRow("other path and host") << true << u"h2"_s << QString() << u"-"_s << u"-"_s;
    QTest::newRow("other path and host, typed") << true << u"h2"_s << u"new"_s << u"-"_s << u"new"_s;
    QTest::newRow("other host") << false << u"h2"_s << QString() << u"old"_s << u"stale"_s;
}

void TestAddEditServerViewModel::passphraseOfAnotherKey()
{
    QFETCH(bool, hasOtherPath);
    QFETCH(QString, host);
    QFETCH(QString, typed);
    const QString other = m_directory.filePath(u"id_other"_s);
    QVERIFY(QFile::exists(other) || QFile::copy(m_key, other));
    store(u"passphrase:u@h:22"_s, u"old"_s);
    if (host != "h"_L1) {
        store(u"passphrase:u@h2:22"_s, u"stale"_s);
    }
    AddEditServerViewModel &model = open(addServer(AuthMethod::PublicKey));
    model.setHost(host);
    model.setPrivateKeyPath(hasOtherPath ? other : m_key);
    model.setPassphrase(typed);
    save(model);
    QCOMPARE(m_saved->size(), 1);
    QTEST(stored(u"passphrase:u@h:22"_s), "onOldHost");
    QTEST(stored(u"passphrase:u@"_s + host + u":22"_s), "onNewHost");
}

void TestAddEditServerViewModel::anotherMethodForgetsThePassphrase_data()
{
    QTest::addColumn<AuthMethod>("method");
    QTest::addColumn<QString>("left");
    QTest::newRow("password") << AuthMethod::Password << u"-"_s;
    QTest::newRow("agent") << AuthMethod::SshAgent << u"phrase"_s;
}

void TestAddEditServerViewModel::anotherMethodForgetsThePassphrase()
{
    QFETCH(AuthMethod, method);
    qputenv("SSH_AUTH_SOCK", m_key.toUtf8()); // anything that is there
    store(u"passphrase:u@h:22"_s, u"phrase"_s);
    AddEditServerViewModel &model = open(addServer(AuthMethod::PublicKey));
    model.setAuthMethod(method);
    save(model);
    QCOMPARE(m_saved->size(), 1);
    QTEST(stored(u"passphrase:u@h:22"_s), "left");
}

void TestAddEditServerViewModel::sudoWhenAdding_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("error");
    QTest::newRow("available") << kHasSudo << QString();
    QTest::newRow("not configured") << kLacksSudo << QString(kNotConfigured);
    QTest::newRow("no connection") << kUnreachable << QString(kCouldNotConnect);
}

void TestAddEditServerViewModel::sudoWhenAdding()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, error);
    m_transport->setReply(reply);
    AddEditServerViewModel &model = openFilled();
    model.setUseSudo(true);
    model.setPassword(u"typed"_s);
    model.validateAndSaveServer();
    QVERIFY(model.checkingSudo());
    model.validateAndSaveServer(); // once is enough
    QTRY_COMPARE(model.activity(), Activity::None);
    QCOMPARE(m_transport->logins(), 1);
    QCOMPARE(m_transport->triedSecret(), QByteArray("typed"));
    QCOMPARE(model.sudoCheckError().value_or(QString()), error);
    QCOMPARE(m_transport->store.servers().size(), error.isEmpty() ? 1 : 0);
    QCOMPARE(m_saved->size(), error.isEmpty() ? 1 : 0);
    QCOMPARE(stored(u"u@h:22"_s), u"typed"_s);
    QCOMPARE(model.password(), error.isEmpty() ? QString() : u"typed"_s);
    QVERIFY(!model.passwordSaved());
    QCOMPARE(m_transport->pool.count(), 0);
}

void TestAddEditServerViewModel::sudoWhenEditing_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("after");
    QTest::addColumn<bool>("isSaved");
    QTest::addColumn<QString>("field");
    const QString none;
    QTest::newRow("available") << kHasSudo << u"old"_s << u"new"_s << u"new"_s << true << none;
    QTest::newRow("available, nothing typed") << kHasSudo << u"old"_s << none << u"old"_s << true << none;
    QTest::newRow("no connection") << kUnreachable << u"old"_s << u"new"_s << u"new"_s << true << u"new"_s;
    QTest::newRow("no connection, none before") << kUnreachable << none << u"new"_s << u"new"_s << false << u"new"_s;
    QTest::newRow("not configured") << kLacksSudo << u"old"_s << u"new"_s << u"old"_s << true << none;
    QTest::newRow("not configured, none before") << kLacksSudo << none << u"new"_s << u"-"_s << false << u"new"_s;
    QTest::newRow("not configured, nothing typed") << kLacksSudo << u"old"_s << none << u"old"_s << true << none;
}

void TestAddEditServerViewModel::sudoWhenEditing()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, before);
    QFETCH(QString, typed);
    m_transport->setReply(reply);
    const Server server = addServer(AuthMethod::Password);
    if (!before.isEmpty()) {
        store(u"u@h:22"_s, before);
    }
    AddEditServerViewModel &model = open(server);
    model.setName(u"renamed"_s);
    model.setUseSudo(true);
    model.setPassword(typed);
    save(model);
    QCOMPARE(m_transport->triedSecret(), (typed.isEmpty() ? before : typed).toUtf8());
    QTEST(stored(u"u@h:22"_s), "after");
    QTEST(model.password(), "field");
    const bool isStored = reply == kHasSudo;
    QCOMPARE(m_transport->store.servers().constFirst().name, isStored ? u"renamed"_s : u"web"_s);
    QCOMPARE(model.sudoCheckError().has_value(), !isStored);
    QTEST(model.passwordSaved(), "isSaved");
    // A session that is open for the server knows nothing of all this.
    QCOMPARE(QCoro::waitFor(m_transport->manager.getSessionPassword(server)).value_or(u"-"_s), stored(u"u@h:22"_s));
}

void TestAddEditServerViewModel::sudoOfAKeyThatIsLocked()
{
    m_transport->setReply(kHasSudo);
    AddEditServerViewModel &model = openFilled(AuthMethod::PublicKey);
    model.setUseSudo(true);
    model.setPassphrase(u"phrase"_s);
    save(model);
    QCOMPARE(m_transport->triedSecret(), QByteArray("phrase"));
    QCOMPARE(m_saved->size(), 1);
}

void TestAddEditServerViewModel::savesSecretsAtOnce()
{
    AddEditServerViewModel &model = openFilled();
    QVERIFY(!model.canSavePassword());
    model.setPassword(u"typed"_s);
    model.setHost(u" "_s);
    QVERIFY(!model.canSavePassword()); // there is no account yet
    model.setHost(u"h"_s);
    model.savePasswordToKeychain();
    QTRY_VERIFY(model.passwordSaved());
    QVERIFY(model.showingPasswordAlert());
    QCOMPARE(model.keychainNotice(), u"Password saved to Keychain"_s);
    QVERIFY(model.password().isEmpty());
    QCOMPARE(stored(u"u@h:22"_s), u"typed"_s);
    model.setPassphrase(u"phrase"_s);
    model.savePassphraseToKeychain();
    QTRY_VERIFY(model.passphraseSaved());
    QCOMPARE(model.keychainNotice(), u"Passphrase saved to Keychain"_s);
    QCOMPARE(stored(u"passphrase:u@h:22"_s), u"phrase"_s);
    QCOMPARE(m_transport->store.servers().size(), 0);
}

void TestAddEditServerViewModel::aPassphraseSavedAtOnceOutlivesAnotherPath()
{
    Server server = addServer(AuthMethod::PublicKey);
    server.privateKeyPath = u"/gone"_s;
    AddEditServerViewModel &model = open(server);
    model.setPrivateKeyPath(m_key);
    model.setPassphrase(u"phrase"_s);
    model.savePassphraseToKeychain();
    save(model);
    QCOMPARE(m_saved->size(), 1);
    QCOMPARE(stored(u"passphrase:u@h:22"_s), u"phrase"_s);
}

void TestAddEditServerViewModel::keychainRefuses()
{
    MoodyStore store;
    KeychainManager keychain(store, m_transport->clock);
    CommandSSHManager manager({m_transport->launcher, keychain, m_transport->settings, m_transport->prompt},
                              m_transport->pool);
    AddEditServerViewModel model({m_transport->store, manager}, std::nullopt);
    QSignalSpy saved(&model, &AddEditServerViewModel::saved);
    model.setName(u"web"_s);
    model.setHost(u"h"_s);
    model.setUsername(u"u"_s);
    model.setPassword(u"typed"_s);
    store.isRefusing = true;
    save(model);
    QCOMPARE(m_transport->store.servers().size(), 0);
    QCOMPARE(model.password(), u"typed"_s); // what was typed is still there
    QVERIFY(model.canRetryKeychainAccess() && model.showingPasswordAlert());
    model.savePasswordToKeychain();
    QTRY_VERIFY(model.canRetryKeychainAccess());
    QCOMPARE(model.password(), u"typed"_s);
    QVERIFY(!model.passwordSaved());

    store.isRefusing = false;
    model.retryKeychainAccess();
    QTRY_VERIFY(model.passwordSaved());
    QVERIFY(!model.canRetryKeychainAccess());
    save(model);
    QCOMPARE(saved.size(), 1);
}

void TestAddEditServerViewModel::testsTheConnection_data()
{
    QTest::addColumn<AuthMethod>("method");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<bool>("succeeds");
    QTest::addColumn<QString>("text");
    const QByteArray good = "echo SSH_CONNECTION_SUCCESS";
    const QByteArray bad = "echo 'u@h: Permission denied (publickey,password).' >&2; exit 255";
    QTest::newRow("password") << AuthMethod::Password << good << true << u"Connection successful."_s;
    QTest::newRow("wrong password") << AuthMethod::Password << bad << false
                                    << u"Failed to connect. Please check your password and try again."_s;
    QTest::newRow("key") << AuthMethod::PublicKey << good << true << u"Connection successful."_s;
    QTest::newRow("refused key")
        << AuthMethod::PublicKey << bad << false
        << u"Failed to authenticate with SSH key. Please check your key path and permissions."_s;
    QTest::newRow("agent") << AuthMethod::SshAgent << bad << false << QString(kCouldNotConnect);
}

void TestAddEditServerViewModel::testsTheConnection()
{
    QFETCH(AuthMethod, method);
    QFETCH(QByteArray, reply);
    m_transport->setReply(reply);
    qputenv("SSH_AUTH_SOCK", m_key.toUtf8());
    AddEditServerViewModel &model = openFilled(method);
    model.setPassword(u"word"_s);
    model.setPassphrase(u"phrase"_s);
    model.testConnection();
    QCOMPARE(model.activity(), Activity::TestingConnection);
    QTRY_VERIFY(model.testResult());
    QCOMPARE(model.activity(), Activity::None);
    QTEST(model.testResult()->succeeded, "succeeds");
    QTEST(model.testResult()->text, "text");
    const QByteArray tried = method == AuthMethod::Password    ? "word"
                             : method == AuthMethod::PublicKey ? "phrase"
                                                               : "";
    QCOMPARE(m_transport->triedSecret(), tried);
    QCOMPARE(stored(u"u@h:22"_s), u"-"_s);
    QCOMPARE(stored(u"passphrase:u@h:22"_s), u"-"_s);
    QCOMPARE(m_transport->store.servers().size(), 0);
    QCOMPARE(m_transport->pool.count(), 0);
    QVERIFY(!m_transport->manager.connectionError());
    QVERIFY(!m_transport->manager.isConnecting());
    model.setPort(23);
    QVERIFY(!model.testResult()); // it was about another address
}

void TestAddEditServerViewModel::aTestEndsWithTheNextEdit()
{
    m_transport->holdLogins();
    AddEditServerViewModel &model = openFilled(AuthMethod::PublicKey);
    model.testConnection();
    QTRY_COMPARE(m_transport->logins(), 1);
    QCOMPARE(m_transport->children.count(), 1);
    model.setUsername(u"other"_s);
    QCOMPARE(model.activity(), Activity::None);
    QCOMPARE(m_transport->children.count(), 0);
    m_transport->letLoginsEnd();
    model.testConnection();
    QTRY_VERIFY(model.testResult());
    QVERIFY(model.testResult()->succeeded);
}

void TestAddEditServerViewModel::closedInTheMiddle_data()
{
    QTest::addColumn<bool>("isEdit");
    QTest::addColumn<bool>("isTest");
    QTest::addColumn<QString>("after");
    QTest::newRow("sudo check of a new server") << false << false << u"-"_s;
    QTest::newRow("sudo check of an edited server") << true << false << u"old"_s;
    QTest::newRow("test") << true << true << u"old"_s;
}

void TestAddEditServerViewModel::closedInTheMiddle()
{
    QFETCH(bool, isEdit);
    QFETCH(bool, isTest);
    m_transport->holdLogins();
    std::optional<Server> server;
    if (isEdit) {
        server = addServer(AuthMethod::Password);
        store(u"u@h:22"_s, u"old"_s);
        open(server);
    } else {
        openFilled();
    }
    m_model->setUseSudo(true);
    m_model->setPassword(u"new"_s);
    if (isTest) {
        m_model->testConnection();
    } else {
        m_model->validateAndSaveServer();
    }
    QTRY_COMPARE(m_transport->logins(), 1);
    m_saved.reset();
    m_model.reset();
    QCOMPARE(m_transport->children.count(), 0);
    QTEST(stored(u"u@h:22"_s), "after");
    QCOMPARE(m_transport->store.servers().size(), isEdit ? 1 : 0);
    QVERIFY(!isEdit || !m_transport->store.servers().constFirst().useSudo);
}

QTEST_GUILESS_MAIN(TestAddEditServerViewModel)
#include "test_add_edit_server_view_model.moc"
