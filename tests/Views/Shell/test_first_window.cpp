#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include "Helpers/Tasks.h"
#include "Models/ServerStore.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/KeyValueGrid.h"
#include "Views/Components/Pill.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/UsageBar.h"
#include "Views/Dashboard/DashboardContent.h"
#include "Views/Dashboard/DashboardHeader.h"
#include "Views/Dashboard/DashboardView.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Dashboard/SecretForm.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerListView.h"
#include "Views/Theme/Theme.h"

#include <QAccessible>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSysInfo>
#include <QTest>

using namespace Qt::StringLiterals;

using Connection = DashboardViewModel::Connection;

/// The real window on a real server.
class TestFirstWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void emptyStore();
    void showsTheFacts();
    void everyControlHasAName();
    void wrongPassword();
    void lockedKey();
    void anotherServerInTheMiddle();
    void closedWithCommandsInFlight();

private:
    Server add(const QString &name, AuthMethod method, const QString &account = {})
    {
        Server server = TestTransport::server(m_sshd, method, account);
        server.name = name;
        m_store->addServer(server);
        return server;
    }

    void click(int row)
    {
        QListView &list = m_window->serverList().list();
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {},
                          list.visualRect(m_window->serverList().model().index(row)).center());
    }

    // What a failed login asks for is typed, and sent off by Return.
    void type(const QString &secret)
    {
        QTRY_VERIFY(m_window->dashboard()->secretForm());
        QLineEdit &field = m_window->dashboard()->secretForm()->field();
        field.insert(secret); // key events of QtTest are ASCII only
        QTest::keyClick(&field, Qt::Key_Return);
    }

    RigSshd m_sshd;
    Theme m_theme;
    std::unique_ptr<TestTransport> m_transport;
    std::unique_ptr<ServerStore> m_store;
    std::unique_ptr<ContentView> m_window;
};

void TestFirstWindow::initTestCase()
{
    QVERIFY2(m_sshd.up(RigSshd::isRoot() ? RigSshd::Accounts::Created : RigSshd::Accounts::Present),
             qPrintable(m_sshd.error()));
    m_theme.install();
}

void TestFirstWindow::init()
{
    m_transport = std::make_unique<TestTransport>();
    m_store = std::make_unique<ServerStore>(m_transport->defaults, m_transport->clock);
    m_window = std::make_unique<ContentView>(
        m_theme, ContentView::Services{*m_store, m_transport->manager, m_transport->clock});
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestFirstWindow::cleanup()
{
    m_window.reset();
    m_transport->quit(); // whoever waits is resumed while the store still stands
    m_store.reset();
    m_transport.reset();
}

void TestFirstWindow::emptyStore()
{
    const auto *page = m_window->findChild<StatePage *>();
    QCOMPARE(page->message().title, u"No servers yet"_s);
    add(u"first"_s, AuthMethod::PublicKey);
    QCOMPARE(page->message().title, u"No Server Selected"_s);
    QVERIFY(!m_window->dashboard());
}

void TestFirstWindow::showsTheFacts()
{
    const Server server = add(u"<b>This machine</b>"_s, AuthMethod::PublicKey);
    click(0);
    const DashboardView &dashboard = *m_window->dashboard();
    QCOMPARE(dashboard.header().state().text(), u"Connecting"_s);
    QTRY_COMPARE_WITH_TIMEOUT(dashboard.page().state(), StatePage::State::Content, 20'000);
    QCOMPARE(dashboard.header().state().text(), u"Connected"_s);
    QTRY_VERIFY(!m_window->dashboardModel()->isRefreshing());

    const DashboardContent &content = dashboard.content();
    const auto rows = content.facts().rows();
    QCOMPARE(rows.size(), 8);
    QCOMPARE(rows.at(0), (std::pair{u"Hostname"_s, QSysInfo::machineHostName()}));
    QCOMPARE(rows.at(2), (std::pair{u"Kernel"_s, QSysInfo::kernelVersion()}));
    QVERIFY(rows.at(5).second.endsWith(u" vCPUs"_s));
    for (const auto &[key, value] : rows) {
        QVERIFY2(!value.isEmpty(), qPrintable(key));
    }
    QVERIFY(!content.fileSystems().isEmpty());
    QVERIFY(content.fileSystems().constFirst()->accessibleName().startsWith(u"/: "_s));
    QCOMPARE(m_window->serverList().footer(), u"1 server 1 connected"_s);
    QVERIFY(m_store->server(server.id)->systemInfo->storageDevices);
    QCOMPARE(m_transport->pool.count(), 1);

    // Switching the look repaints what is there.
    m_theme.setDark(true);
    QTRY_COMPARE(m_window->grab().toImage().pixelColor(m_window->width() - 4, m_window->height() - 4),
                 Tokens::dark().window);
    m_theme.setDark(false);

    dashboard.header().disconnectButton().click();
    dashboard.disconnectAlert()->buttons().at(1)->click();
    QTRY_VERIFY(!m_store->selectedServer());
    QVERIFY(!m_window->dashboard());
    QCOMPARE(m_transport->pool.count(), 0);
    QVERIFY(!m_store->server(server.id)->isConnected);
}

void TestFirstWindow::everyControlHasAName()
{
    add(u"web"_s, AuthMethod::PublicKey);
    m_window->addNotice(u"A notice"_s);
    click(0);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboard()->page().state(), StatePage::State::Content, 20'000);
    for (const QWidget *widget : m_window->findChildren<QWidget *>()) {
        if (widget->focusPolicy() != Qt::NoFocus && widget->isVisible() &&
            !widget->objectName().startsWith("qt_"_L1)) {
            const QAccessibleInterface *accessible =
                QAccessible::queryAccessibleInterface(const_cast<QWidget *>(widget));
            QVERIFY2(accessible && !accessible->text(QAccessible::Name).isEmpty(),
                     qPrintable(QString::fromLatin1(widget->metaObject()->className())));
        }
    }
}

void TestFirstWindow::wrongPassword()
{
    RIG_NEEDS_ROOT();
    add(u"web"_s, AuthMethod::Password, m_sshd.passwordAccount());
    click(0);
    QTRY_COMPARE(m_window->dashboardModel()->connection(), Connection::Failed); // none is stored
    type(u"wrong"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboardModel()->connection(), Connection::Failed, 20'000);
    QCOMPARE(m_window->dashboardModel()->connectionErrorMessage(),
             u"Failed to connect. Please check your password and try again."_s);
    QVERIFY(m_window->dashboardModel()->connectionErrorDetail().contains(u"Permission denied"_s));
    QCOMPARE(m_window->dashboard()->header().state().text(), u"Disconnected"_s);

    type(m_sshd.password());
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboard()->page().state(), StatePage::State::Content, 20'000);
    QVERIFY(!m_window->dashboard()->secretForm());
}

void TestFirstWindow::lockedKey()
{
    Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
    server.privateKeyPath = m_sshd.passphraseKey();
    m_store->addServer(server);
    click(0);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboardModel()->connection(), Connection::Failed, 20'000);
    QVERIFY(m_window->dashboardModel()->connectionErrorMessage().startsWith(
        u"SSH key requires a passphrase.\n\nTo add a passphrase:\n1. "_s));
    type(m_sshd.passphrase());
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboard()->page().state(), StatePage::State::Content, 20'000);
}

void TestFirstWindow::anotherServerInTheMiddle()
{
    add(u"one"_s, AuthMethod::PublicKey);
    add(u"two"_s, AuthMethod::PublicKey);
    click(0);
    const QPointer first(m_window->dashboardModel());
    click(1);
    QVERIFY(!first);
    QCOMPARE(m_window->dashboardModel()->server().name, u"two"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboard()->page().state(), StatePage::State::Content, 20'000);
    QTRY_VERIFY(m_store->servers().at(0).isConnected); // it did answer
    click(0);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboard()->page().state(), StatePage::State::Content, 20'000);
}

void TestFirstWindow::closedWithCommandsInFlight()
{
    const Server server = add(u"web"_s, AuthMethod::PublicKey);
    click(0);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboardModel()->connection(), Connection::Connected, 20'000);
    int answered = 0;
    for (int i = 0; i < 50; ++i) {
        whenDone(m_transport->manager.executeCommand(u"sleep 60; echo late"_s, server, false), m_window.get(),
                 [this, &answered](const CommandResult &) {
                     m_window->addNotice(u"never"_s);
                     ++answered;
                 });
    }
    m_window->dashboardModel()->refreshSystemInfo();
    QTest::qWait(300); // some run, the others wait for their turn
    QVERIFY(m_transport->children.count() > 0);
    m_window.reset();
    m_transport->quit();
    QCOMPARE(answered, 0);
    QCOMPARE(m_transport->children.count(), 0);
    QCOMPARE(m_transport->tracker.count(), 0);
}

QTEST_MAIN(TestFirstWindow)
#include "test_first_window.moc"
