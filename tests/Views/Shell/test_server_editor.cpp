#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include "Models/ServerStore.h"
#include "Views/Components/InlineNotice.h"
#include "Views/Components/SegmentedControl.h"
#include "Views/Shell/AddEditServerView.h"
#include "Views/Shell/ServerListView.h"
#include "Views/Theme/Theme.h"

#include <QCheckBox>
#include <QCoroTask>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

constexpr int kLoginMs = 20'000;

/// The sheet on a real server.
class TestServerEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void addsAPasswordServer();
    void opensALockedKey();
    void looksForSudo();
    void tellsWhyItCannotConnect();

private:
    AddEditServerView &open(const QString &account)
    {
        m_list->addServer();
        AddEditServerView &sheet = *m_list->editor();
        type(u"Name"_s, account);
        type(u"Host"_s, m_sshd.host());
        type(u"Port"_s, QString::number(m_sshd.port()));
        type(u"Username"_s, account);
        return sheet;
    }

    void type(const QString &name, const QString &text)
    {
        for (QLineEdit *field : m_list->editor()->findChildren<QLineEdit *>()) {
            if (field->accessibleName() == name) {
                field->selectAll();
                field->insert(text); // key events of QtTest are ASCII only
                return;
            }
        }
        QFAIL(qPrintable(name));
    }

    void press(const QString &text)
    {
        for (QPushButton *button : m_list->editor()->findChildren<QPushButton *>()) {
            if (button->text() == text) {
                button->click();
                return;
            }
        }
        QFAIL(qPrintable(text));
    }

    void chooseKey(const QString &path)
    {
        m_list->editor()->findChildren<SegmentedControl *>().constFirst()->setCurrent(1);
        type(u"Private Key"_s, path);
    }

    QString testConnection()
    {
        press(u"Test Connection"_s);
        const AddEditServerViewModel &model = m_list->editor()->model();
        [&] { QTRY_VERIFY_WITH_TIMEOUT(model.testResult(), kLoginMs); }();
        return m_list->editor()->findChild<InlineNotice *>()->text();
    }

    // What is kept after a sheet that was not saved.
    bool keepsNothing()
    {
        return m_store->servers().isEmpty() && m_transport->pool.count() == 0 && m_transport->children.count() == 0 &&
               m_transport->controlSockets().isEmpty();
    }

    RigSshd m_sshd;
    Theme m_theme;
    std::unique_ptr<TestTransport> m_transport;
    std::unique_ptr<ServerStore> m_store;
    std::unique_ptr<ServerListView> m_list;
};

void TestServerEditor::initTestCase()
{
    QVERIFY2(m_sshd.up(RigSshd::isRoot() ? RigSshd::Accounts::Created : RigSshd::Accounts::Present),
             qPrintable(m_sshd.error()));
    m_theme.install();
}

void TestServerEditor::init()
{
    m_transport = std::make_unique<TestTransport>();
    m_store = std::make_unique<ServerStore>(m_transport->defaults, m_transport->clock);
    m_list =
        std::make_unique<ServerListView>(m_theme, AddEditServerViewModel::Services{*m_store, m_transport->manager});
    m_list->resize(800, 900);
    m_list->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_list.get()));
}

void TestServerEditor::cleanup()
{
    m_list.reset();
    m_transport->quit();
    m_store.reset();
    m_transport.reset();
}

void TestServerEditor::addsAPasswordServer()
{
    RIG_NEEDS_ROOT();
    open(m_sshd.passwordAccount());
    type(u"Password"_s, u"wrong"_s);
    QCOMPARE(testConnection(), u"Failed to connect. Please check your password and try again."_s);
    QVERIFY(m_list->editor()->findChild<InlineNotice *>()->detail().contains(u"Permission denied"_s));
    type(u"Password"_s, m_sshd.password());
    QCOMPARE(testConnection(), u"Connection successful."_s);
    QVERIFY(keepsNothing());
    const QString account = m_sshd.passwordAccount() + u'@' + m_sshd.host() + u':' + QString::number(m_sshd.port());
    QVERIFY(!QCoro::waitFor(m_transport->keychain.hasPassword(account)));

    press(u"Save"_s);
    QTRY_VERIFY(!m_list->editor());
    QCOMPARE(QCoro::waitFor(m_transport->keychain.getPassword(account)), m_sshd.password());
    QVERIFY(QCoro::waitFor(m_transport->manager.connect(m_store->servers().constFirst())));
}

void TestServerEditor::opensALockedKey()
{
    open(m_sshd.user());
    chooseKey(m_sshd.passphraseKey());
    QCOMPARE(testConnection(), u"SSH key requires a passphrase. Please enter the passphrase for your SSH key."_s);
    type(u"Passphrase"_s, m_sshd.passphrase());
    QCOMPARE(testConnection(), u"Connection successful."_s);
    QVERIFY(keepsNothing());
    press(u"Save"_s);
    QTRY_VERIFY(!m_list->editor());
    QVERIFY(QCoro::waitFor(m_transport->manager.connect(m_store->servers().constFirst())));
}

void TestServerEditor::looksForSudo()
{
    RIG_NEEDS_ROOT();
    open(m_sshd.plainAccount());
    chooseKey(m_sshd.key());
    m_list->editor()->findChildren<QCheckBox *>().constFirst()->setChecked(true);
    press(u"Save"_s);
    const AddEditServerViewModel &model = m_list->editor()->model();
    QTRY_VERIFY_WITH_TIMEOUT(model.sudoCheckError(), kLoginMs);
    QCOMPARE(*model.sudoCheckError(),
             u"Passwordless sudo is not configured on this server. Please configure it using: sudo visudo"_s);
    QVERIFY(keepsNothing());

    type(u"Username"_s, m_sshd.sudoAccount());
    press(u"Save"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!m_list->editor(), kLoginMs);
    QVERIFY(m_store->servers().constFirst().useSudo);
    QCOMPARE(m_transport->pool.count(), 0);
}

void TestServerEditor::tellsWhyItCannotConnect()
{
    open(m_sshd.user());
    chooseKey(m_sshd.key());
    type(u"Port"_s, u"1"_s);
    m_list->editor()->findChildren<QCheckBox *>().constFirst()->setChecked(true);
    press(u"Save"_s);
    const AddEditServerViewModel &model = m_list->editor()->model();
    QTRY_VERIFY_WITH_TIMEOUT(model.sudoCheckError(), kLoginMs);
    QVERIFY(model.sudoCheckError()->startsWith(u"Could not connect to server."_s));
    testConnection();
    QVERIFY(m_list->editor()->findChild<InlineNotice *>()->detail().contains(u"Connection refused"_s));
    QVERIFY(keepsNothing());
}

QTEST_MAIN(TestServerEditor)
#include "test_server_editor.moc"
