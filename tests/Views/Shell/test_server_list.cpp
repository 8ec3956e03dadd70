#include "Views/FakeTransport.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerListView.h"
#include "Views/Theme/Theme.h"

#include <QAbstractItemModelTester>
#include <QListView>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocument>

using namespace Qt::StringLiterals;

class TestServerList : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void init() { m_transport = std::make_unique<FakeTransport>(); }

    void followsTheStore();
    void hostileNamesStayText();
    void tenThousandServers();
    void aClickSelectsAtOnceAndKeysWhenTheyRest();

private:
    Theme m_theme;
    std::unique_ptr<FakeTransport> m_transport;
};

void TestServerList::followsTheStore()
{
    ServerStore &store = m_transport->store;
    ServerListModel model(store);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    const Server first = m_transport->add(u"first"_s);
    Server second = m_transport->add(u"second"_s);
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(model.index(1).data().toString(), u"second"_s);
    QCOMPARE(model.index(1).data(ServerListModel::AddressRole).toString(), u"ops@server.example"_s);

    const auto stateOf = [&](int row) {
        return model.index(row).data(ServerListModel::StateRole).value<ServerListModel::State>();
    };
    model.setConnecting(second.id);
    QCOMPARE(stateOf(1), ServerListModel::State::Connecting);
    model.setConnecting({});
    store.updateServerConnection(second, true);
    QCOMPARE(stateOf(0), ServerListModel::State::NotConnected);
    QCOMPARE(stateOf(1), ServerListModel::State::Connected);
    QVERIFY(model.index(1).data(Qt::AccessibleTextRole).toString().contains(u"Connected"_s));

    second.labels = {{u"env"_s, u"prod"_s}, {u"a"_s, u"b"_s}};
    store.updateServer(second);
    QCOMPARE(model.index(1).data(ServerListModel::LabelsRole).toStringList(), (QStringList{u"a:b"_s, u"env:prod"_s}));
    QVERIFY(changes.size() >= 4);

    store.deleteServer(first);
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(model.index(0).data().toString(), u"second"_s);
}

void TestServerList::hostileNamesStayText()
{
    m_transport->add(u"<img src='x'>\n<b>n</b>"_s);
    const ServerListModel model(m_transport->store);
    QCOMPARE(model.index(0).data().toString(), u"<img src='x'> <b>n</b>"_s);
    QTextDocument toolTip;
    toolTip.setHtml(model.index(0).data(Qt::ToolTipRole).toString());
    QVERIFY(toolTip.toPlainText().startsWith(u"<img src='x'> <b>n</b>"_s));
}

void TestServerList::tenThousandServers()
{
    QList<Server> servers;
    for (int i = 0; i < 10'000; ++i) {
        Server server;
        server.name = u"server-%1"_s.arg(i);
        server.host = u"10.0.%1.%2"_s.arg(i / 256).arg(i % 256);
        server.username = u"ops"_s;
        if (i % 2 == 1) {
            server.labels.insert(u"env"_s, u"prod"_s);
        }
        servers.append(server);
    }
    m_transport->store.importServers(servers);
    ServerListView view(m_theme, m_transport->store);
    view.resize(236, 800);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QVERIFY(view.footer().startsWith(QLocale().toString(10'000)));
    QVERIFY(view.footer().contains(u"0 connected"_s));

    // A row has no widget of its own: the list's are its viewport and scroll bars however long it is.
    QVERIFY(view.list().findChildren<QWidget *>().size() < 10);
    const int plain = view.list().visualRect(view.model().index(0)).height();
    QVERIFY(view.list().visualRect(view.model().index(1)).height() > plain);
    QTest::keyClick(&view.list(), Qt::Key_End);
    QCOMPARE(view.list().currentIndex().row(), 9'999);
    QTRY_COMPARE(m_transport->store.selectedServer()->name, u"server-9999"_s);
}

void TestServerList::aClickSelectsAtOnceAndKeysWhenTheyRest()
{
    for (const auto name : {"one", "two", "three", "four"}) {
        m_transport->add(QString::fromLatin1(name));
    }
    ServerStore &store = m_transport->store;
    ServerListView view(m_theme, store);
    view.resize(236, 600);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QSignalSpy selections(&store, &ServerStore::selectedServerChanged);
    QVERIFY(!store.selectedServer());

    QListView &list = view.list();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualRect(view.model().index(0)).center());
    QCOMPARE(selections.size(), 1);
    QCOMPARE(store.selectedServer()->name, u"one"_s);

    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(&list, Qt::Key_Down);
    }
    QCOMPARE(list.currentIndex().row(), 3);
    QCOMPARE(selections.size(), 1);
    QTRY_COMPARE(selections.size(), 2); // of those passed on the way none was selected
    QCOMPARE(store.selectedServer()->name, u"four"_s);

    store.setSelectedServer(store.servers().at(1));
    QCOMPARE(list.currentIndex().row(), 1);
    QTest::qWait(300);
    QCOMPARE(store.selectedServer()->name, u"two"_s);
}

QTEST_MAIN(TestServerList)
#include "test_server_list.moc"
