#include "Views/LiveServers.h"

#include "Helpers/Tasks.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/KeyValueGrid.h"
#include "Views/Components/Pill.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/UsageBar.h"
#include "Views/Dashboard/DashboardContent.h"
#include "Views/Dashboard/DashboardHeader.h"
#include "Views/Dashboard/DashboardView.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Shell/AddEditServerView.h"
#include "Views/Shell/ServerListView.h"

#include <QAccessible>
#include <QPushButton>
#include <QSysInfo>

using namespace Qt::StringLiterals;

using Connection = DashboardViewModel::Connection;

/// The real window on a real server.
class TestFirstWindow : public QObject, private LiveServers
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QVERIFY2(up(), qPrintable(m_sshd.error())); }

    void init()
    {
        begin();
        openWindow();
    }

    void cleanup() { end(); }

    void emptyStore();
    void showsTheFacts();
    void everyControlHasAName();
    void wrongPassword();
    void lockedKey();
    void anotherServerInTheMiddle();
    void closedWithCommandsInFlight();

private:
    void typeSecret(const QString &secret)
    {
        QTRY_VERIFY(m_window->dashboard()->secretForm());
        type(m_window->dashboard()->secretForm(), secret);
    }
};

void TestFirstWindow::emptyStore()
{
    const auto *page = m_window->findChild<StatePage *>();
    QTRY_COMPARE(page->message().title, u"No Server Selected"_s); // with the second picture
    QCOMPARE(page->message().text, u"Select a server from the left panel to start managing it"_s);
    QCOMPARE(page->button().text(), u"Add Server..."_s);
    page->button().click();
    QVERIFY(m_window->serverList().editor());
    delete m_window->serverList().editor();
    add(u"first"_s);
    QTRY_COMPARE(page->message().title, u"No Server Selected"_s); // with the second picture
    QVERIFY(!page->button().isVisible());
    QVERIFY(!m_window->dashboard());
}

void TestFirstWindow::showsTheFacts()
{
    const Server server = add(u"<b>This machine</b>"_s);
    clickServer(server);
    const DashboardView &dashboard = *m_window->dashboard();
    QCOMPARE(dashboard.header().state().text(), u"Connecting"_s);
    QTRY_COMPARE_WITH_TIMEOUT(dashboard.page().state(), StatePage::State::Content, kPatience);
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
    const Server server = add(u"web"_s);
    m_window->addNotice(u"A notice"_s);
    clickServer(server);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboard()->page().state(), StatePage::State::Content, kPatience);
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
    clickServer(add(u"web"_s, AuthMethod::Password, m_sshd.passwordAccount()));
    QTRY_COMPARE(m_window->dashboardModel()->connection(), Connection::Failed); // none is stored
    typeSecret(u"wrong"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboardModel()->connection(), Connection::Failed, kPatience);
    QCOMPARE(m_window->dashboardModel()->connectionErrorMessage(),
             u"Failed to connect. Please check your password and try again."_s);
    QVERIFY(m_window->dashboardModel()->connectionErrorDetail().contains(u"Permission denied"_s));
    QCOMPARE(m_window->dashboard()->header().state().text(), u"Disconnected"_s);

    typeSecret(m_sshd.password());
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboard()->page().state(), StatePage::State::Content, kPatience);
    QVERIFY(!m_window->dashboard()->secretForm());
}

void TestFirstWindow::lockedKey()
{
    Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
    server.privateKeyPath = m_sshd.passphraseKey();
    m_store->addServer(server);
    clickServer(server);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboardModel()->connection(), Connection::Failed, kPatience);
    QVERIFY(m_window->dashboardModel()->connectionErrorMessage().startsWith(
        u"SSH key requires a passphrase.\n\nTo add a passphrase:\n1. "_s));
    typeSecret(m_sshd.passphrase());
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboard()->page().state(), StatePage::State::Content, kPatience);
}

void TestFirstWindow::anotherServerInTheMiddle()
{
    const Server one = add(u"one"_s);
    const Server two = add(u"two"_s);
    clickServer(one);
    const QPointer first(m_window->dashboardModel());
    clickServer(two);
    QVERIFY(!first);
    QCOMPARE(m_window->dashboardModel()->server().name, u"two"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboard()->page().state(), StatePage::State::Content, kPatience);
    QTRY_VERIFY(m_store->servers().at(0).isConnected); // it did answer
    clickServer(one);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboard()->page().state(), StatePage::State::Content, kPatience);
}

void TestFirstWindow::closedWithCommandsInFlight()
{
    const Server server = add(u"web"_s);
    clickServer(server);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->dashboardModel()->connection(), Connection::Connected, kPatience);
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
