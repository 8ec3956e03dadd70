#include "Views/LiveServers.h"

#include "Helpers/Tasks.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/SectionPage.h"
#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/HistoryButtons.h"
#include "Views/Shell/NavigationSidebarView.h"
#include "Views/Shell/SectionPages.h"

#include <QPushButton>

using namespace Qt::StringLiterals;

/// A person's way through the window, on a real server.
class TestWindowVisit : public QObject, private LiveServers
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QVERIFY2(up(RigSshd::Accounts::Present), qPrintable(m_sshd.error())); }

    void init()
    {
        begin();
        openWindow();
    }

    void cleanup() { end(); }

    void fromTheFirstServerToTheLast();
    void closedInTheMiddle();

private:
    void clickSection(MainTab tab)
    {
        QListView &list = m_window->navigationSidebar().list();
        const QModelIndex index = list.model()->index(static_cast<int>(tab), 0);
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualRect(index).center());
    }

    // "name/Section" of what is on show.
    QString place() const
    {
        for (auto *page : m_window->pages().findChildren<SectionPage *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (page->isVisible() && page->isActive()) {
                return m_store->selectedServer()->name + u'/' + page->accessibleName();
            }
        }
        return {};
    }

    void step(QPushButton &button)
    {
        QVERIFY(button.isEnabled());
        button.click();
        QCoreApplication::processEvents();
    }
};

void TestWindowVisit::fromTheFirstServerToTheLast()
{
    const auto isReady = [this](const Server &server) {
        const auto record = m_store->server(server.id);
        return record->isConnected && record->systemInfo && record->systemInfo->storageDevices;
    };
    const Server web = add(u"web"_s);
    const Server db = add(u"db"_s);
    QTest::qWait(300);
    QCOMPARE(m_transport->children.count(), 0); // nothing connects by itself

    clickServer(web);
    QCOMPARE(place(), u"web/Dashboard"_s);
    QTRY_VERIFY_WITH_TIMEOUT(isReady(web), 30'000);
    clickSection(MainTab::Files);
    clickSection(MainTab::Logs);
    QCOMPARE(place(), u"web/Logs"_s);

    clickServer(db); // is not connected, so its dashboard comes first
    QCOMPARE(place(), u"db/Dashboard"_s);
    QTRY_VERIFY_WITH_TIMEOUT(isReady(db), 30'000);
    clickSection(MainTab::Users);
    clickServer(web);
    QCOMPARE(place(), u"web/Logs"_s); // where it was left

    const HistoryButtons &steps = m_window->navigationSidebar().historyButtons();
    step(steps.back());
    QCOMPARE(place(), u"db/Users"_s);
    step(steps.back());
    step(steps.back());
    QCOMPARE(place(), u"web/Logs"_s);
    step(steps.back());
    QCOMPARE(place(), u"web/Files"_s);
    step(steps.forward());
    QCOMPARE(place(), u"web/Logs"_s);

    m_window->model().setShowingDisconnectAlert(true);
    m_window->disconnectAlert()->buttons().at(1)->click();
    QCOMPARE(place(), QString());
    QVERIFY(!m_store->server(web.id)->isConnected && m_store->server(db.id)->isConnected);
    step(steps.back()); // to the files of a server that is not connected any more
    QCOMPARE(place(), u"web/Dashboard"_s);
    QTRY_VERIFY_WITH_TIMEOUT(m_store->server(web.id)->isConnected, 30'000);

    m_window->model().disconnectServer();
    m_store->deleteServer(web);
    step(steps.back());
    QCOMPARE(place(), QString()); // that server is no more
    clickServer(db);
    QCOMPARE(place(), u"db/Dashboard"_s); // what the steps back showed of it
    m_window->model().disconnectServer();
    QTRY_COMPARE_WITH_TIMEOUT(m_transport->children.count(), 0, 30'000);
    QCOMPARE(m_transport->controlSockets(), QStringList());
}

void TestWindowVisit::closedInTheMiddle()
{
    const Server web = add(u"web"_s);
    clickServer(web);
    QTRY_VERIFY_WITH_TIMEOUT(m_store->server(web.id)->isConnected, 30'000);
    int answered = 0;
    for (int i = 0; i < 20; ++i) {
        whenDone(m_transport->manager.executeCommand(u"sleep 60; echo late"_s, web, false),
                 m_window->pages().page(MainTab::Dashboard), [&answered](const CommandResult &) { ++answered; });
    }
    add(u"db"_s);
    clickServer(*m_store->server(m_store->servers().constLast().id)); // which is connecting when the window closes
    QTRY_VERIFY(m_transport->children.count() > 0);
    m_window->close();
    m_window.reset();
    m_transport->quit();
    QCOMPARE(answered, 0);
    QCOMPARE(m_transport->children.count(), 0);
    QCOMPARE(m_transport->tracker.count(), 0);
}

QTEST_MAIN(TestWindowVisit)
#include "test_window_visit.moc"
