#include "Views/AccessibilityWalk.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/SearchField.h"
#include "Views/Components/SectionPage.h"
#include "Views/Components/StatePage.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/FakeTransport.h"
#include "Views/Shell/AddEditServerView.h"
#include "Views/Shell/CompactHeader.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/Curtain.h"
#include "Views/Shell/HistoryButtons.h"
#include "Views/Shell/NavigationSidebarView.h"
#include "Views/Shell/SectionPages.h"
#include "Views/Shell/SectionStrip.h"
#include "Views/Shell/ServerBrowser.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerListView.h"
#include "Views/Shell/ServerMenuButton.h"
#include "Views/Shell/ServerPopup.h"
#include "Views/Theme/Theme.h"

#include <QContextMenuEvent>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

/// The window's frame around the sections, on servers that only the test answers for.
class TestContentView : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void init();
    void cleanup();

    void thePageOnShowComesFirst();
    void anotherServerReplacesAllPages();
    void onlyThePageOnShowIsActive();
    void theListChoosesSections();
    void goesBackAndForward();
    void compactAtExactly1024();
    void theCompactHeader();
    void theServersMenu();
    void theSidebarIsPutAway();
    void focusSearch();
    void asksBeforeItDisconnects();
    void aSecondSelectionWhileConnecting();
    void disconnectedWhileConnecting();
    void everyControlHasAName();

private:
    QString title() const { return m_window->findChild<StatePage *>()->message().title; }

    void select(const Server &server) { m_transport->store.setSelectedServer(m_transport->store.server(server.id)); }

    void selectConnected(const Server &server)
    {
        m_transport->store.updateServerConnection(server, true);
        select(server);
    }

    // The tabs whose pages are there.
    QStringList pages() const
    {
        QStringList all;
        for (const MainTab tab : allCases<MainTab>()) {
            if (m_window->pages().page(tab)) {
                all.append(rawText(tab));
            }
        }
        return all;
    }

    SectionPage *shown() const
    {
        SectionPage *found = nullptr;
        for (auto *page : m_window->pages().findChildren<SectionPage *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (page->isVisible()) {
                found = found ? nullptr : page;
            }
        }
        return found;
    }

    void settle() const
    {
        const auto curtains = m_window->findChildren<Curtain *>();
        QTRY_VERIFY(std::ranges::none_of(curtains, &Curtain::isMoving));
    }

    void clickSection(MainTab tab)
    {
        QListView &list = m_window->navigationSidebar().list();
        const QModelIndex index = list.model()->index(static_cast<int>(tab), 0);
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualRect(index).center());
    }

    Theme m_theme;
    std::unique_ptr<FakeTransport> m_transport;
    std::unique_ptr<ContentView> m_window;
    Server m_a;
    Server m_b;
};

void TestContentView::init()
{
    m_transport = std::make_unique<FakeTransport>();
    m_a = m_transport->add(u"alpha"_s);
    m_b = m_transport->add(u"beta & sons"_s);
    m_window = std::make_unique<ContentView>(
        m_theme, ContentView::Services{m_transport->store, m_transport->manager, m_transport->clock});
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestContentView::cleanup()
{
    m_window.reset();
    m_transport.reset();
}

void TestContentView::thePageOnShowComesFirst()
{
    QTRY_COMPARE(title(), u"No Server Selected"_s);
    QCOMPARE(m_window->pages().count(), 0);
    m_window->model().setSelectedTab(MainTab::Ports);
    selectConnected(m_a);
    QCOMPARE(pages(), QStringList{u"Ports"_s});
    QVERIFY(m_window->pages().page(MainTab::Ports)->isVisible());

    m_window->model().setSelectedTab(MainTab::Logs); // does not wait for its turn
    QCOMPARE(pages(), (QStringList{u"Ports"_s, u"Logs"_s}));
    QList<qsizetype> counts; // after each turn of the event loop
    while (counts.isEmpty() || counts.constLast() < kMainTabCount) {
        QCoreApplication::processEvents();
        QVERIFY(counts.isEmpty() || m_window->pages().count() - counts.constLast() <= 1);
        counts.append(m_window->pages().count());
        QVERIFY(counts.size() < 1000);
    }
    QCOMPARE(shown(), m_window->pages().page(MainTab::Logs));
}

void TestContentView::anotherServerReplacesAllPages()
{
    select(m_a);
    QTRY_COMPARE(m_window->pages().count(), kMainTabCount);
    QList<QPointer<SectionPage>> before;
    for (const MainTab tab : allCases<MainTab>()) {
        before.append(m_window->pages().page(tab));
    }
    m_transport->store.updateServerSystemInfo(m_a, {}); // the same server
    QVERIFY(std::ranges::none_of(before, &QPointer<SectionPage>::isNull));
    select(m_b);
    QVERIFY(std::ranges::all_of(before, &QPointer<SectionPage>::isNull));
    QCOMPARE(pages(), QStringList{u"Dashboard"_s});
    QTRY_COMPARE(m_window->pages().count(), kMainTabCount);

    m_transport->store.deleteServer(m_b);
    QCOMPARE(m_window->pages().count(), 0);
    QTRY_COMPARE(title(), u"No Server Selected"_s);
    m_transport->store.deleteServer(m_a);
    QCOMPARE(title(), u"No Server Selected"_s);
}

void TestContentView::onlyThePageOnShowIsActive()
{
    const auto active = [this] {
        QStringList all;
        for (const QString &tab : pages()) {
            if (m_window->pages().page(*fromRawText<MainTab>(tab))->isActive()) {
                all.append(tab);
            }
        }
        return all.join(u' ');
    };
    select(m_a);
    QTRY_COMPARE(m_window->pages().count(), kMainTabCount);
    QCOMPARE(active(), u"Dashboard"_s);
    SectionPage *const dashboard = m_window->pages().page(MainTab::Dashboard);
    m_window->model().setSelectedTab(MainTab::Users);
    QCOMPARE(active(), u"Users"_s);
    QCOMPARE(shown(), m_window->pages().page(MainTab::Users));
    QCOMPARE(m_window->pages().page(MainTab::Dashboard), dashboard); // alive, and out of sight

    bool isLeft = false;
    connect(m_window->pages().page(MainTab::Users), &SectionPage::activeChanged, this,
            [&](bool isActive) { isLeft = !isActive; });
    select(m_b);
    QVERIFY(isLeft); // told before it goes
}

void TestContentView::theListChoosesSections()
{
    select(m_a);
    clickSection(MainTab::Files);
    QCOMPARE(m_window->model().selectedTab(), MainTab::Files);
    QListView &list = m_window->navigationSidebar().list();
    QCOMPARE(list.currentIndex().data().toString(), u"Files"_s);

    // Walking down the list shows only where the walk ends.
    const QSignalSpy spy(&m_window->model(), &ContentViewModel::placeChanged);
    QTest::keyClick(&list, Qt::Key_Down);
    QTest::keyClick(&list, Qt::Key_Down);
    QCOMPARE(spy.size(), 0);
    QTRY_COMPARE(m_window->model().selectedTab(), MainTab::Logs);
    QCOMPARE(spy.size(), 1);
    QTest::keyClick(&list, Qt::Key_Home);
    QTest::keyClick(&list, Qt::Key_Return);
    QCOMPARE(m_window->model().selectedTab(), MainTab::Dashboard);
}

void TestContentView::goesBackAndForward()
{
    const HistoryButtons &buttons = m_window->navigationSidebar().historyButtons();
    QVERIFY(!buttons.back().isEnabled() && !buttons.forward().isEnabled());
    selectConnected(m_a);
    clickSection(MainTab::Files);
    select(m_b);
    QVERIFY(buttons.back().isEnabled() && !buttons.forward().isEnabled());

    buttons.back().click();
    QCOMPARE(m_transport->store.selectedServer()->id, m_a.id);
    QCOMPARE(m_window->navigationSidebar().list().currentIndex().data().toString(), u"Files"_s);
    QCOMPARE(m_window->serverList().list().currentIndex().data(ServerListModel::IdRole).toUuid(), m_a.id);
    QCOMPARE(shown()->accessibleName(), u"Files"_s);
    QCoreApplication::processEvents();
    buttons.forward().click();
    QCOMPARE(m_transport->store.selectedServer()->id, m_b.id);
    QCoreApplication::processEvents();

    m_transport->store.deleteServer(m_a);
    SectionPage *const page = shown();
    buttons.back().click(); // to a server that is no more
    QCOMPARE(shown(), page);
    QVERIFY(buttons.forward().isEnabled());
}

void TestContentView::compactAtExactly1024()
{
    QVERIFY(m_window->serverList().isVisible() && m_window->navigationSidebar().isVisible());
    QVERIFY(!m_window->compactHeader().isVisible());
    const QList<int> widths = m_window->sidebarWidths();
    m_window->resize(1025, 700);
    QVERIFY(!m_window->model().isCompactMode());
    m_window->resize(1024, 700);
    QVERIFY(m_window->model().isCompactMode());
    settle();
    QVERIFY(!m_window->serverList().isVisible() && !m_window->navigationSidebar().isVisible());
    QVERIFY(m_window->compactHeader().isVisible());
    QCOMPARE(m_window->compactHeader().height(), m_window->compactHeader().sizeHint().height());
    QCOMPARE(m_window->findChild<StatePage *>()->message().text,
             u"Select a server from the dropdown to start managing it"_s);
    QCOMPARE(m_window->pages().window(), m_window.get());

    m_window->resize(1200, 700);
    m_window->resize(1000, 700); // before it has come back
    m_window->resize(1200, 700);
    settle();
    QVERIFY(m_window->serverList().isVisible() && !m_window->compactHeader().isVisible());
    QCOMPARE(m_window->sidebarWidths(), widths);
    QCOMPARE(m_window->findChild<StatePage *>()->message().text,
             u"Select a server from the left panel to start managing it"_s);
}

void TestContentView::theCompactHeader()
{
    m_window->resize(1024, 700);
    settle();
    selectConnected(m_a);
    QCOMPARE(m_window->compactHeader().servers().accessibleName(), u"Server: alpha, Connected"_s);
    const QList<QPushButton *> &strip = m_window->compactHeader().sections().buttons();
    QCOMPARE(strip.size(), kMainTabCount);
    QTest::mouseClick(strip.at(8), Qt::LeftButton);
    QCOMPARE(m_window->model().selectedTab(), MainTab::Files);
    const auto checked = [&] { return std::ranges::count_if(strip, &QPushButton::isChecked); };
    QVERIFY(strip.at(8)->isChecked());
    QCOMPARE(checked(), 1);
    strip.at(8)->click(); // stays on show
    QVERIFY(strip.at(8)->isChecked());
    m_window->model().setSelectedTab(MainTab::Logs);
    QVERIFY(strip.at(10)->isChecked());
    QCOMPARE(checked(), 1);
    const QImage plain = strip.at(1)->grab().toImage();
    m_window->model().setMark(MainTab::Terminal, SectionMark::Attention);
    QVERIFY(strip.at(1)->grab().toImage() != plain);
    QCOMPARE(strip.at(1)->accessibleDescription(), u"Asks for attention"_s);
    m_window->model().setMark(MainTab::Terminal, SectionMark::None);
    QCOMPARE(strip.at(1)->grab().toImage(), plain);
    QVERIFY(m_window->width() <= 1024); // everything fits
    QVERIFY(m_window->compactHeader().minimumSizeHint().width() <= 720);
}

void TestContentView::theServersMenu()
{
    m_window->resize(1024, 700);
    settle();
    ServerStore &store = m_transport->store;
    store.updateServerConnection(m_b, true);
    ServerMenuButton &button = m_window->compactHeader().servers();
    QTest::keyClick(&button, Qt::Key_Down);
    QPointer popup = button.popup();
    QVERIFY(popup && popup->isVisible());
    QCOMPARE(AccessibilityWalk::faults(*popup), QString());
    const QPoint offset = popup->pos() - button.mapToGlobal(QPoint(0, button.height()));
    QVERIFY(offset.manhattanLength() < 12); // right below; the offscreen platform gives it a frame
    const ServerListModel &model = popup->browser().model();
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(model.index(1).data().toString(), m_b.name);
    QCOMPARE(model.index(1).data(ServerListModel::StateRole).value<ServerListModel::State>(),
             ServerListModel::State::Connected);
    QTest::keyClick(popup, Qt::Key_Escape);
    QVERIFY(!popup || !popup->isVisible());
    QVERIFY(!store.selectedServer());

    m_window->model().focusGlobalSearch(); // is what the search for a server is here
    popup = button.popup();
    QVERIFY(popup->browser().searchField().hasFocus() || popup->focusWidget() == &popup->browser().searchField());
    QTest::keyClicks(&popup->browser().searchField(), u"beta"_s);
    QCOMPARE(popup->browser().model().rowCount(), 1);
    QTest::keyClick(&popup->browser().searchField(), Qt::Key_Return);
    QCOMPARE(store.selectedServer()->id, m_b.id);
    QVERIFY(!popup || !popup->isVisible());

    button.click();
    popup = button.popup();
    const QListView &list = popup->browser().list();
    QCOMPARE(list.currentIndex().row(), 1);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {},
                      list.visualRect(popup->browser().model().index(0)).center());
    QCOMPARE(store.selectedServer()->id, m_a.id);

    // A server is edited and deleted from here as from the wide layout's list.
    button.click();
    popup = button.popup();
    QWidget *const rows = popup->browser().list().viewport();
    const QPoint place = popup->browser().list().visualRect(popup->browser().model().index(1)).center();
    QTest::mouseClick(rows, Qt::RightButton, {}, place);
    QContextMenuEvent wish(QContextMenuEvent::Mouse, place, rows->mapToGlobal(place));
    QApplication::sendEvent(rows, &wish);
    QVERIFY(!popup || !popup->isVisible());
    QCOMPARE(store.selectedServer()->id, m_a.id);
    const QMenu *const menu = m_window->serverList().menu();
    QVERIFY(menu && menu->isVisible());
    QCOMPARE(menu->actions().at(0)->text(), u"Edit server"_s);
    QVERIFY(!menu->actions().at(0)->isEnabled()); // it is connected
    store.updateServerConnection(m_b, false);
    button.openList();
    QApplication::sendEvent(button.popup()->browser().list().viewport(), &wish);
    m_window->serverList().menu()->actions().at(0)->trigger();
    QVERIFY(m_window->serverList().editor());
    delete m_window->serverList().editor();

    button.click();
    QCOMPARE(button.popup()->addButton().text(), u"Add Server..."_s);
    button.popup()->addButton().click();
    QVERIFY(m_window->model().showingAddServer());
    QVERIFY(m_window->serverList().editor());
    delete m_window->serverList().editor();
    QVERIFY(!m_window->model().showingAddServer());
}

void TestContentView::theSidebarIsPutAway()
{
    const int before = m_window->pages().mapTo(m_window.get(), QPoint()).x();
    m_window->model().toggleSidebarVisibility();
    settle();
    QVERIFY(!m_window->serverList().isVisible() && !m_window->navigationSidebar().isVisible());
    QPushButton *show = nullptr;
    for (auto *button : m_window->findChildren<QPushButton *>()) {
        show = button->toolTip() == "Show Sidebar"_L1 ? button : show;
    }
    QVERIFY(show && show->isVisible());
    m_window->resize(1000, 700); // the compact layout has neither
    settle();
    QVERIFY(!show->isVisible());
    m_window->resize(1200, 700);
    settle();
    QVERIFY(show->isVisible() && !m_window->serverList().isVisible());
    show->click();
    settle();
    QVERIFY(m_window->serverList().isVisible() && !show->isVisible());
    QCOMPARE(m_window->pages().mapTo(m_window.get(), QPoint()).x(), before);
}

void TestContentView::focusSearch()
{
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_window->model().setSidebarVisible(false);
    m_window->model().focusGlobalSearch();
    QVERIFY(m_window->model().isSidebarVisible());
    QTRY_VERIFY(m_window->serverList().searchField().hasFocus());
}

void TestContentView::asksBeforeItDisconnects()
{
    m_window->model().setShowingDisconnectAlert(true);
    QVERIFY(!m_window->disconnectAlert());
    selectConnected(m_a);
    clickSection(MainTab::Files);
    m_window->model().setShowingDisconnectAlert(true);
    AlertDialog *alert = m_window->disconnectAlert();
    QVERIFY(alert);
    QCOMPARE(alert->windowTitle(), u"Disconnect from Server"_s);
    QCOMPARE(alert->accessibleDescription(),
             u"Are you sure you want to disconnect from alpha? Any existing terminal sessions will be closed."_s);
    QCOMPARE(alert->buttons().at(0)->text(), u"Cancel"_s);
    QCOMPARE(AccessibilityWalk::faults(*alert), QString());
    QTest::keyClick(alert, Qt::Key_Return); // the safe answer
    QVERIFY(!m_window->model().showingDisconnectAlert());
    QCOMPARE(m_transport->store.selectedServer()->id, m_a.id);

    m_window->model().setShowingDisconnectAlert(true);
    alert = m_window->disconnectAlert();
    QCOMPARE(alert->buttons().at(1)->text(), u"Disconnect"_s);
    alert->buttons().at(1)->click();
    QVERIFY(!m_transport->store.selectedServer());
    QVERIFY(!m_transport->store.server(m_a.id)->isConnected);
    QCOMPARE(m_window->model().selectedTab(), MainTab::Dashboard);
    QCOMPARE(m_window->pages().count(), 0);
    QTRY_COMPARE(title(), u"No Server Selected"_s);
}

void TestContentView::aSecondSelectionWhileConnecting()
{
    const auto state = [this](const Server &server) {
        return m_window->serverList()
            .model()
            .indexOf(server.id)
            .data(ServerListModel::StateRole)
            .value<ServerListModel::State>();
    };
    m_transport->holdLogins();
    select(m_a);
    QTRY_COMPARE(m_transport->logins(), 1);
    QCOMPARE(state(m_a), ServerListModel::State::Connecting);
    select(m_b);
    QTRY_COMPARE(m_transport->logins(), 2);
    QCOMPARE(state(m_a), ServerListModel::State::Connecting); // still
    QCOMPARE(state(m_b), ServerListModel::State::Connecting);
    QCOMPARE(m_window->dashboardModel()->server().id, m_b.id);
    m_transport->letLoginsEnd();
    QTRY_COMPARE(state(m_b), ServerListModel::State::Connected);
    QTRY_COMPARE(state(m_a), ServerListModel::State::Connected); // it did answer
    QTRY_COMPARE(m_transport->children.count(), 0);
    QCOMPARE(m_transport->store.selectedServer()->id, m_b.id);
}

void TestContentView::disconnectedWhileConnecting()
{
    m_transport->holdLogins();
    select(m_a);
    QTRY_COMPARE(m_transport->logins(), 1);
    select(m_b);
    QTRY_COMPARE(m_transport->logins(), 2);
    select(m_a);
    QTRY_COMPARE(m_transport->logins(), 3);
    QCOMPARE(m_transport->children.count(), 2); // the first login is ended
    m_window->model().setShowingDisconnectAlert(true);
    m_window->disconnectAlert()->buttons().at(1)->click();
    QVERIFY(!m_transport->manager.isConnecting(m_a.id) && m_transport->manager.isConnecting(m_b.id));
    QCOMPARE(m_transport->children.count(), 1);
    m_transport->letLoginsEnd();
    QTest::qWait(50);
    QVERIFY(!m_transport->store.server(m_a.id)->isConnected); // a login that ends after it says nothing
    QVERIFY(m_transport->calls.isEmpty());
}

void TestContentView::everyControlHasAName()
{
    m_window->addNotice(u"A notice"_s);
    selectConnected(m_a);
    QTRY_COMPARE(m_window->pages().count(), kMainTabCount);
    QVERIFY(AccessibilityWalk::controls(*m_window) > 15);
    QCOMPARE(AccessibilityWalk::faults(*m_window), QString());
    m_window->resize(1024, 700);
    settle();
    for (const MainTab tab : allCases<MainTab>()) {
        m_window->model().setSelectedTab(tab);
        QCOMPARE(AccessibilityWalk::faults(*m_window), QString());
    }
    m_window->resize(1200, 700);
    m_window->model().setSidebarVisible(false);
    settle();
    QCOMPARE(AccessibilityWalk::faults(*m_window), QString());

    // The walk does find what has no name.
    auto *nameless = new QPushButton(m_window->centralWidget());
    nameless->show();
    QCOMPARE(AccessibilityWalk::faults(*m_window).count(u'\n'), 1); // neither a name nor a tooltip
}

QTEST_MAIN(TestContentView)
#include "test_content_view.moc"
