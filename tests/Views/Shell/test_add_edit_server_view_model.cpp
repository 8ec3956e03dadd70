#include "Views/Shell/AddEditServerRig.h"

using namespace Qt::StringLiterals;

/// The form and what is made of it; its secrets are a subject of their own.
class TestAddEditServerViewModel : public QObject, private AddEditServerRig
{
    Q_OBJECT

private Q_SLOTS:

    void init() { setUp(); }

    void cleanup() { tearDown(); }

    void validation_data();
    void validation();
    void hostAddresses_data();
    void hostAddresses();
    void labels();
    void adds();
    void aKeyBelongsToKeyAuthenticationOnly();
    void edits();
    void testsTheConnection_data();
    void testsTheConnection();
    void aTestEndsWithTheNextEdit();
};

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

    save(model);
    QVERIFY(m_transport->store.servers().isEmpty()); // half a label is not dropped silently
    QCOMPARE(model.invalidFields().keys(), QList{Field::NewLabelValue});
    QVERIFY(model.validateInputs().isEmpty());
    model.dismissValidationErrors();
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

QTEST_MAIN(TestAddEditServerViewModel)
#include "test_add_edit_server_view_model.moc"
