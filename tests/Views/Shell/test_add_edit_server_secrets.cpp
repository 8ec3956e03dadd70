#include "Views/Shell/AddEditServerRig.h"

using namespace Qt::StringLiterals;

namespace
{

const QByteArray kHasSudo = "echo SUDO_TEST_OK";
const QByteArray kLacksSudo = "echo 'sudo: a password is required'; exit 1";
const QByteArray kUnreachable = "echo 'ssh: connect to host h: Connection refused' >&2; exit 255";
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

/// What the form of a server does with passwords and passphrases, in the keychain and for the sudo check.
class TestAddEditServerSecrets : public QObject, private AddEditServerRig
{
    Q_OBJECT

private Q_SLOTS:

    void init() { setUp(); }

    void cleanup() { tearDown(); }

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
    void closedInTheMiddle_data();
    void closedInTheMiddle();
};

void TestAddEditServerSecrets::showsWhatIsSaved()
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

void TestAddEditServerSecrets::passphraseOfAnotherKey_data()
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

void TestAddEditServerSecrets::passphraseOfAnotherKey()
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

void TestAddEditServerSecrets::anotherMethodForgetsThePassphrase_data()
{
    QTest::addColumn<AuthMethod>("method");
    QTest::addColumn<QString>("left");
    QTest::newRow("password") << AuthMethod::Password << u"-"_s;
    QTest::newRow("agent") << AuthMethod::SshAgent << u"phrase"_s;
}

void TestAddEditServerSecrets::anotherMethodForgetsThePassphrase()
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

void TestAddEditServerSecrets::sudoWhenAdding_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("error");
    QTest::newRow("available") << kHasSudo << QString();
    QTest::newRow("not configured") << kLacksSudo << QString(kNotConfigured);
    QTest::newRow("no connection") << kUnreachable << QString(kCouldNotConnect);
}

void TestAddEditServerSecrets::sudoWhenAdding()
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

void TestAddEditServerSecrets::sudoWhenEditing_data()
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

void TestAddEditServerSecrets::sudoWhenEditing()
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

void TestAddEditServerSecrets::sudoOfAKeyThatIsLocked()
{
    m_transport->setReply(kHasSudo);
    AddEditServerViewModel &model = openFilled(AuthMethod::PublicKey);
    model.setUseSudo(true);
    model.setPassphrase(u"phrase"_s);
    save(model);
    QCOMPARE(m_transport->triedSecret(), QByteArray("phrase"));
    QCOMPARE(m_saved->size(), 1);
}

void TestAddEditServerSecrets::savesSecretsAtOnce()
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

void TestAddEditServerSecrets::aPassphraseSavedAtOnceOutlivesAnotherPath()
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

void TestAddEditServerSecrets::keychainRefuses()
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

void TestAddEditServerSecrets::closedInTheMiddle_data()
{
    QTest::addColumn<bool>("isEdit");
    QTest::addColumn<bool>("isTest");
    QTest::addColumn<QString>("after");
    QTest::newRow("sudo check of a new server") << false << false << u"-"_s;
    QTest::newRow("sudo check of an edited server") << true << false << u"old"_s;
    QTest::newRow("test") << true << true << u"old"_s;
}

void TestAddEditServerSecrets::closedInTheMiddle()
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

QTEST_MAIN(TestAddEditServerSecrets)
#include "test_add_edit_server_secrets.moc"
