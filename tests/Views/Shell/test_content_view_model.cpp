#include "Services/Terminal/TerminalSessions.h"
#include "Views/FakeTransport.h"
#include "Views/Shell/ContentViewModel.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

/// Where the window is, and how it gets there.
class TestContentViewModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_transport = std::make_unique<FakeTransport>();
        m_model = std::make_unique<ContentViewModel>(m_transport->store, m_transport->manager, m_transport->clock,
                                                     &m_terminals);
        m_a = m_transport->add(u"a"_s);
        m_b = m_transport->add(u"b"_s);
    }

    void cleanup()
    {
        m_model.reset();
        m_transport.reset();
    }

    void anUnconnectedServerShowsItsDashboard();
    void aConnectedServerShowsItsLastTab();
    void changesAreToldOnceAndComplete();
    void stepsThroughTheHistory();
    void aStepToAnUnconnectedServer();
    void aStepToADeletedServer();
    void nothingIsRecordedWhileAStepIsApplied();
    void disconnects();
    void afterADisconnect();
    void terminalsTakeTheKeyboard();
    void layout();

private:
    void select(const Server &server) { m_transport->store.setSelectedServer(m_transport->store.server(server.id)); }

    void setConnected(const Server &server, bool isConnected = true)
    {
        m_transport->store.updateServerConnection(server, isConnected);
    }

    // "a/Files": what is on show.
    QString place() const
    {
        const auto &server = m_transport->store.selectedServer();
        return (server ? server->name : u"-"_s) + u'/' + rawText(m_model->selectedTab());
    }

    QString history() const
    {
        QStringList all;
        for (const NavigationState &state : m_model->navigationHistory().history()) {
            all.append(state.serverName + u'/' + state.tab);
        }
        return all.join(u' ');
    }

    // A step, and the turn of the event loop that ends it.
    void step(void (ContentViewModel::*go)())
    {
        (m_model.get()->*go)();
        QCoreApplication::processEvents();
    }

    struct Terminals : TerminalSessions {
        void serverSettingsChanged(const Server &) override {}

        void cleanupServer(const QUuid &id) override
        {
            ended.append(id);
            onEnded();
        }

        void cleanupAll() override {}

        QList<QUuid> ended;
        std::function<void()> onEnded = [] {};
    };

    Terminals m_terminals;
    std::unique_ptr<FakeTransport> m_transport;
    std::unique_ptr<ContentViewModel> m_model;
    Server m_a;
    Server m_b;
};

void TestContentViewModel::anUnconnectedServerShowsItsDashboard()
{
    m_model->setSelectedTab(MainTab::Files); // without a server it leaves no trace
    QCOMPARE(history(), QString());
    select(m_a);
    QCOMPARE(place(), u"a/Dashboard"_s);
    m_model->setSelectedTab(MainTab::Files);
    select(m_b);
    QCOMPARE(place(), u"b/Dashboard"_s);
    select(m_a); // has a cached tab, and is not connected
    QCOMPARE(place(), u"a/Dashboard"_s);
    m_model->setSelectedTab(MainTab::Logs);
    select(m_a);
    setConnected(m_a, false); // the record is the same server
    QCOMPARE(place(), u"a/Logs"_s);
    QCOMPARE(history(), u"a/Dashboard a/Files b/Dashboard a/Dashboard a/Logs"_s);
}

void TestContentViewModel::aConnectedServerShowsItsLastTab()
{
    setConnected(m_a);
    select(m_a);
    m_model->setSelectedTab(MainTab::Docker);
    select(m_b);
    m_model->setSelectedTab(MainTab::Cron);
    select(m_a);
    QCOMPARE(place(), u"a/Containers"_s);

    const Server c = m_transport->add(u"c"_s);
    setConnected(c);
    select(c); // nothing is known of it: the tab on show stays
    QCOMPARE(place(), u"c/Containers"_s);
    QCOMPARE(history(), u"a/Dashboard a/Containers b/Dashboard b/Cron a/Containers c/Containers"_s);
}

void TestContentViewModel::changesAreToldOnceAndComplete()
{
    setConnected(m_a);
    setConnected(m_b);
    select(m_a);
    m_model->setSelectedTab(MainTab::Files);
    select(m_b);
    m_model->setSelectedTab(MainTab::Logs);
    QStringList told;
    connect(m_model.get(), &ContentViewModel::placeChanged, this, [&] { told.append(place()); });
    select(m_a);
    step(&ContentViewModel::goBack);
    m_transport->store.updateServerSystemInfo(m_b, {});
    m_model->setSelectedTab(MainTab::Logs);
    m_model->disconnectServer();
    QCOMPARE(told.join(u' '), u"a/Files b/Logs -/Dashboard"_s);
}

void TestContentViewModel::stepsThroughTheHistory()
{
    setConnected(m_a);
    setConnected(m_b);
    select(m_a);
    m_model->setSelectedTab(MainTab::Files);
    select(m_b);
    QCOMPARE(place(), u"b/Files"_s);
    m_model->setSelectedTab(MainTab::Logs);

    const QString before = history();
    step(&ContentViewModel::goBack);
    QCOMPARE(place(), u"b/Files"_s);
    step(&ContentViewModel::goBack);
    QCOMPARE(place(), u"a/Files"_s);
    step(&ContentViewModel::goBack);
    QCOMPARE(place(), u"a/Dashboard"_s);
    step(&ContentViewModel::goBack);
    QCOMPARE(place(), u"a/Dashboard"_s);
    step(&ContentViewModel::goForward);
    QCOMPARE(place(), u"a/Files"_s);
    QCOMPARE(history(), before);
    QCOMPARE(m_model->navigationHistory().currentIndex(), 1);
    select(m_b); // a new place from here on; what a step showed is the server's last tab
    QCOMPARE(place(), u"b/Files"_s);
    QCOMPARE(history(), u"a/Dashboard a/Files b/Files"_s);
}

void TestContentViewModel::aStepToAnUnconnectedServer()
{
    setConnected(m_a);
    select(m_a);
    m_model->setSelectedTab(MainTab::Files);
    select(m_b);
    setConnected(m_a, false);
    step(&ContentViewModel::goBack);
    QCOMPARE(place(), u"a/Dashboard"_s);
    QCOMPARE(m_model->navigationHistory().currentIndex(), 1);
    m_model->setSelectedTab(MainTab::Logs);
    QCOMPARE(history(), u"a/Dashboard a/Files a/Logs"_s);
    step(&ContentViewModel::goBack); // the server is selected already, so its section is shown
    QCOMPARE(place(), u"a/Files"_s);
}

void TestContentViewModel::aStepToADeletedServer()
{
    select(m_a);
    select(m_b);
    m_transport->store.deleteServer(m_a);
    step(&ContentViewModel::goBack);
    QCOMPARE(place(), u"b/Dashboard"_s);
    QCOMPARE(m_model->navigationHistory().currentIndex(), 0);
    QVERIFY(!m_model->isNavigatingFromHistory());
    m_model->handleNavigation(u"no such id"_s, {}, u"Files"_s);
    m_model->handleNavigation(NavigationHistory::idText(m_b.id), u"b"_s, u"No such tab"_s);
    QCOMPARE(place(), u"b/Dashboard"_s);
    m_transport->store.deleteServer(m_b);
    QCOMPARE(place(), u"-/Dashboard"_s);
}

void TestContentViewModel::nothingIsRecordedWhileAStepIsApplied()
{
    select(m_a);
    m_model->setSelectedTab(MainTab::Files);
    const QString before = history();
    m_model->goBack();
    QVERIFY(m_model->isNavigatingFromHistory());
    m_model->setSelectedTab(MainTab::Logs);
    QCOMPARE(history(), before);
    QCoreApplication::processEvents();
    QVERIFY(!m_model->isNavigatingFromHistory());
    m_model->setSelectedTab(MainTab::Cron);
    QCOMPARE(history(), u"a/Dashboard a/Cron"_s);
}

void TestContentViewModel::disconnects()
{
    m_model->disconnectServer();
    m_model->setShowingDisconnectAlert(true);
    QVERIFY(!m_model->showingDisconnectAlert()); // there is nothing to disconnect from

    setConnected(m_a);
    select(m_a);
    m_model->setSelectedTab(MainTab::Files);
    m_model->setShowingDisconnectAlert(true);
    QVERIFY(m_model->showingDisconnectAlert());
    QCOMPARE(m_model->disconnectQuestion(),
             u"Are you sure you want to disconnect from a? Any existing terminal sessions will be closed."_s);

    // The terminals end, then the record changes while the server is still selected, and only then it is left.
    QStringList order;
    const auto note = [&](const QString &what) {
        const auto record = m_transport->store.server(m_a.id);
        order.append(what + (record->isConnected ? u" connected"_s : u" off"_s) + u' ' + place());
    };
    connect(&m_transport->store, &ServerStore::serverUpdated, this, [&] { note(u"record"_s); });
    connect(m_model.get(), &ContentViewModel::placeChanged, this, [&] { note(u"place"_s); });
    m_terminals.onEnded = [&] { note(u"terminals"_s); };
    m_model->disconnectServer();
    m_terminals.onEnded = [] {};
    QCOMPARE(m_terminals.ended.constLast(), m_a.id);
    QCOMPARE(order.join(u", "_s), u"terminals connected a/Files, record off a/Files, place off -/Dashboard"_s);
    QVERIFY(!m_model->navigationHistory().getCachedTab(NavigationHistory::idText(m_a.id)));

    Server nameless = m_a;
    nameless.name.clear();
    m_transport->store.setSelectedServer(nameless);
    QVERIFY(m_model->disconnectQuestion().contains(u"disconnect from this server?"_s));
}

void TestContentViewModel::afterADisconnect()
{
    setConnected(m_a);
    select(m_a);
    m_model->setSelectedTab(MainTab::Files);
    m_model->disconnectServer();
    const QString before = history();
    QCOMPARE(before, u"a/Dashboard a/Files"_s);
    step(&ContentViewModel::goBack);
    QCOMPARE(place(), u"a/Dashboard"_s);
    QCOMPARE(history(), before);
    m_model->disconnectServer();
    setConnected(m_a);
    select(m_a); // its cached tab is gone
    QCOMPARE(place(), u"a/Dashboard"_s);
}

void TestContentViewModel::terminalsTakeTheKeyboard()
{
    QSignalSpy spy(m_model.get(), &ContentViewModel::terminalFocusRequested);
    m_model->chooseTab(MainTab::Terminal); // of no server
    setConnected(m_a);
    select(m_a);
    QVERIFY(m_model->isTerminalVisible());
    QTRY_COMPARE(spy.size(), 1);
    QCOMPARE(spy.takeFirst().constFirst().toUuid(), m_a.id);

    m_model->setSelectedTab(MainTab::Files);
    QVERIFY(!m_model->isTerminalVisible());
    select(m_b);
    m_model->chooseTab(MainTab::Terminal);
    QTRY_COMPARE(spy.size(), 2);
    m_model->chooseTab(MainTab::Terminal); // a click on what is on show already
    QTRY_COMPARE(spy.size(), 3);
    QCOMPARE(m_model->terminalVisitedServers(), (QSet<QUuid>{m_a.id, m_b.id}));
}

void TestContentViewModel::layout()
{
    const QSignalSpy compact(m_model.get(), &ContentViewModel::isCompactModeChanged);
    m_model->setWidth(1025);
    QVERIFY(!m_model->isCompactMode());
    m_model->setWidth(1024);
    QVERIFY(m_model->isCompactMode());
    m_model->setWidth(300);
    QCOMPARE(compact.size(), 1);

    const QSignalSpy sidebar(m_model.get(), &ContentViewModel::isSidebarVisibleChanged);
    m_model->toggleSidebarVisibility();
    QVERIFY(!m_model->isSidebarVisible());
    m_model->setSidebarVisible(false);
    m_model->toggleSidebarVisibility();
    QVERIFY(m_model->isSidebarVisible());
    QCOMPARE(sidebar.size(), 2);

    m_model->focusGlobalSearch();
    m_model->focusGlobalSearch();
    QCOMPARE(m_model->searchFocusTrigger(), 2);
}

QTEST_GUILESS_MAIN(TestContentViewModel)
#include "test_content_view_model.moc"
