#include "Views/Components/AlertDialog.h"
#include "Views/Components/SearchField.h"
#include "Views/FakeTransport.h"
#include "Views/Shell/ListMessage.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerListView.h"
#include "Views/Theme/Theme.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QContextMenuEvent>
#include <QListView>
#include <QMenu>
#include <QPushButton>
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
    void search_data();
    void search();
    void turkishLetters();
    void rowsComeAndGoWithTheSearch();
    void searchField();
    void emptyStates();
    void rowsHaveAMenu();
    void connectedServersStay();
    void deleteAsks();
    void aNeighbourIsNotSelected();
    void theKeyboardSelectsNothing();
    void importError();
    void tenThousandServers();
    void aClickSelectsAtOnceAndKeysWhenTheyRest();
    void whatWasSelectedElsewhereCounts();

private:
    Server add(const QString &name, const QString &host, const QMap<QString, QString> &labels = {})
    {
        Server server = m_transport->add(name);
        server.host = host;
        server.labels = labels;
        m_transport->store.updateServer(server);
        return server;
    }

    AddEditServerViewModel::Services services() { return {m_transport->store, m_transport->manager}; }

    std::unique_ptr<ServerListView> showList()
    {
        auto view = std::make_unique<ServerListView>(m_theme, services());
        view->resize(260, 600);
        view->show();
        view->activateWindow();
        return QTest::qWaitForWindowActive(view.get()) ? std::move(view) : nullptr;
    }

    static QPoint centerOf(const ServerListView &view, int row)
    {
        return view.list().visualRect(view.model().index(row)).center();
    }

    static QStringList namesOf(const QAbstractItemModel &model)
    {
        QStringList names;
        for (int row = 0; row < model.rowCount(); ++row) {
            names.append(model.index(row, 0).data().toString());
        }
        return names;
    }

    // The menu of a row, as a right click opens it.
    static QMenu *menuOf(const ServerListView &view, int row)
    {
        QWidget *viewport = view.list().viewport();
        const QPoint place = centerOf(view, row);
        QTest::mousePress(viewport, Qt::RightButton, {}, place);
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, viewport->mapToGlobal(place));
        QApplication::sendEvent(viewport, &event);
        return view.menu();
    }

    static AlertDialog *question(const QWidget &view, const QString &title)
    {
        for (AlertDialog *dialog : view.findChildren<AlertDialog *>()) {
            if (dialog->isVisible() && dialog->windowTitle() == title) {
                return dialog;
            }
        }
        return nullptr;
    }

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
    model.setConnecting(second.id, true);
    QCOMPARE(stateOf(1), ServerListModel::State::Connecting);
    store.updateServerConnection(second, true); // which proves itself once more
    QCOMPARE(stateOf(1), ServerListModel::State::Connected);
    model.setConnecting(second.id, false);
    QCOMPARE(stateOf(0), ServerListModel::State::NotConnected);
    QCOMPARE(stateOf(1), ServerListModel::State::Connected);
    QVERIFY(model.index(1).data(Qt::AccessibleTextRole).toString().contains(u"Connected"_s));

    second.labels = {{u"env"_s, u"prod"_s}, {u"a"_s, u"b"_s}};
    store.updateServer(second);
    QCOMPARE(model.index(1).data(ServerListModel::LabelsRole).toStringList(), (QStringList{u"a:b"_s, u"env:prod"_s}));
    QVERIFY(changes.size() >= 4);
    // A row cuts off what it has no room for.
    QCOMPARE(model.index(1).data(Qt::AccessibleTextRole).toString(),
             u"second, ops@server.example, Not connected, a:b, env:prod"_s);
    QVERIFY(model.index(1).data(Qt::ToolTipRole).toString().contains(u"env:prod"_s));

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

void TestServerList::search_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("names");
    const QStringList all{u"Web-01"_s, u"db"_s, u"Größe"_s, u"env:x"_s};
    QTest::newRow("nothing typed") << QString() << all;
    QTest::newRow("name, other case") << u"wEB"_s << QStringList{u"Web-01"_s};
    QTest::newRow("host") << u"0.0.7"_s << QStringList{u"db"_s};
    QTest::newRow("user name") << u"OPS"_s << all;
    QTest::newRow("letter beyond ASCII") << u"GRÖSSE"_s << QStringList{u"Größe"_s};
    QTest::newRow("the same letter in two characters") << u"gro\u0308"_s << QStringList{u"Größe"_s};
    QTest::newRow("label's key") << u"rol"_s << QStringList{u"Web-01"_s};
    QTest::newRow("label's value") << u"stag"_s << QStringList{u"db"_s};
    QTest::newRow("key and value") << u"ENV:Pro"_s << QStringList{u"Web-01"_s};
    QTest::newRow("key alone") << u"env:"_s << QStringList{u"Web-01"_s, u"db"_s, u"env:x"_s};
    QTest::newRow("part of a key") << u"en:prod"_s << QStringList{};
    QTest::newRow("unknown key") << u"rack:prod"_s << QStringList{};
    QTest::newRow("a name with a colon") << u"env:x"_s << QStringList{u"env:x"_s};
    QTest::newRow("value with a colon") << u"url:http://a"_s << QStringList{u"Größe"_s};
    QTest::newRow("not across two texts") << u"db10.0"_s << QStringList{};
    QTest::newRow("blanks count") << u" "_s << QStringList{};
}

void TestServerList::search()
{
    QFETCH(QString, text);
    add(u"Web-01"_s, u"10.0.0.4"_s, {{u"env"_s, u"prod"_s}, {u"role"_s, u"web"_s}});
    add(u"db"_s, u"10.0.0.7"_s, {{u"Env"_s, u"Staging"_s}});
    add(u"Größe"_s, u"h"_s, {{u"url"_s, u"http://a"_s}});
    add(u"env:x"_s, u"h"_s);
    ServerListModel model(m_transport->store);
    model.setSearchText(text);
    QTEST(namesOf(model), "names");
}

void TestServerList::turkishLetters()
{
    Server server;
    server.name = u"ILGAZ"_s;
    ServerSearch turkish(QLocale(QLocale::Turkish, QLocale::Turkey));
    ServerSearch english{QLocale(QLocale::English)};
    turkish.setText(u"ılgaz"_s);
    QVERIFY(turkish.matches(0, server));
    turkish.setText(u"ilgaz"_s);
    QVERIFY(!turkish.matches(0, server));
    english.setText(u"ilgaz"_s);
    QVERIFY(english.matches(0, server));
}

void TestServerList::rowsComeAndGoWithTheSearch()
{
    ServerStore &store = m_transport->store;
    ServerListModel model(store);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    const Server first = add(u"web-1"_s, u"a"_s);
    Server second = add(u"db-1"_s, u"b"_s);
    add(u"web-2"_s, u"c"_s);
    model.setSearchText(u"web"_s);
    QCOMPARE(namesOf(model), (QStringList{u"web-1"_s, u"web-2"_s}));
    QVERIFY(!model.indexOf(second.id).isValid());

    second.name = u"web-db"_s;
    store.updateServer(second);
    QCOMPARE(namesOf(model), (QStringList{u"web-1"_s, u"web-db"_s, u"web-2"_s}));
    QCOMPARE(model.indexOf(second.id).row(), 1);
    add(u"mail"_s, u"d"_s);
    const Server last = add(u"web-3"_s, u"e"_s);
    store.deleteServer(first);
    QCOMPARE(namesOf(model), (QStringList{u"web-db"_s, u"web-2"_s, u"web-3"_s}));
    QCOMPARE(model.index(2).data(ServerListModel::IdRole).toUuid(), last.id);
    second.name = u"db-1"_s;
    store.updateServer(second);
    QCOMPARE(namesOf(model), (QStringList{u"web-2"_s, u"web-3"_s}));
    model.setSearchText({});
    QCOMPARE(namesOf(model), (QStringList{u"db-1"_s, u"web-2"_s, u"mail"_s, u"web-3"_s}));
}

void TestServerList::searchField()
{
    add(u"web-1"_s, u"a"_s);
    add(u"db"_s, u"b"_s);
    const Server last = add(u"web-2"_s, u"c"_s);
    ServerStore &store = m_transport->store;
    store.setSelectedServer(last);
    const auto view = showList();
    QVERIFY(view);
    QCOMPARE(view->footer(), u"3 servers 0 connected"_s);
    view->focusSearch();
    QVERIFY(view->searchField().hasFocus());
    QTest::keyClicks(&view->searchField(), u"web"_s);
    QCOMPARE(view->footer(), u"2 of 3 servers 0 connected"_s);
    QCOMPARE(view->list().currentIndex().row(), 1); // what is selected stays so

    QTest::keyClicks(&view->searchField(), u"-1"_s);
    QCOMPARE(view->footer(), u"1 of 3 servers 0 connected"_s);
    QVERIFY(!view->list().currentIndex().isValid());
    QCOMPARE(store.selectedServer()->name, u"web-2"_s);
    QTest::keyClick(&view->searchField(), Qt::Key_Down);
    QVERIFY(view->list().hasFocus());
    QCOMPARE(view->list().currentIndex().data().toString(), u"web-1"_s);
    QTRY_COMPARE(store.selectedServer()->name, u"web-1"_s);

    view->focusSearch();
    QCOMPARE(view->searchField().selectedText(), u"web-1"_s);
    QTest::keyClicks(&view->searchField(), u"d"_s);
    QTest::keyClick(&view->searchField(), Qt::Key_Return);
    QCOMPARE(store.selectedServer()->name, u"db"_s);
    view->focusSearch();
    QTest::keyClick(&view->searchField(), Qt::Key_Escape);
    QCOMPARE(view->model().rowCount(), 3);
    QCOMPARE(view->list().currentIndex().row(), 1);
}

void TestServerList::emptyStates()
{
    const auto view = showList();
    QVERIFY(view);
    const auto *message = view->findChild<ListMessage *>();
    QVERIFY(message->isVisible());
    QCOMPARE(message->title(), u"No Servers"_s);
    QVERIFY(!message->button().isVisible());

    add(u"web"_s, u"a"_s);
    QVERIFY(view->list().isVisible());
    view->searchField().setText(u"<b>x</b>"_s);
    QVERIFY(!view->list().isVisible());
    QCOMPARE(message->title(), u"No Results"_s);
    QCOMPARE(message->text(), u"No servers match '<b>x</b>'"_s);
    QCOMPARE(message->button().text(), u"Clear Search"_s);
    message->button().click();
    QVERIFY(view->list().isVisible());
    QVERIFY(view->searchField().text().isEmpty());
    QCOMPARE(view->footer(), u"1 server 0 connected"_s);
}

void TestServerList::rowsHaveAMenu()
{
    add(u"one"_s, u"a"_s);
    add(u"two"_s, u"b"_s);
    const auto view = showList();
    QVERIFY(view);
    QMenu *menu = menuOf(*view, 1);
    QVERIFY(menu);
    QTest::qWait(250);
    QVERIFY(!m_transport->store.selectedServer()); // the row's menu is no choice of the row
    menu->close();

    view->list().setFocus();
    view->list().setCurrentIndex(view->model().index(0));
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(view->list().viewport(), &event);
    QVERIFY(view->menu());
    QVERIFY(view->list().viewport()->rect().contains(view->list().viewport()->mapFromGlobal(view->menu()->pos())));
}

void TestServerList::connectedServersStay()
{
    const Server server = add(u"one"_s, u"a"_s);
    m_transport->store.updateServerConnection(server, true);
    const auto view = showList();
    QVERIFY(view);
    for (const QAction *action : menuOf(*view, 0)->actions()) {
        QVERIFY(!action->isEnabled());
        QVERIFY(action->toolTip().startsWith(u"Cannot "_s) && action->toolTip().endsWith(u" connected server"_s));
    }
    QVERIFY(view->menu()->toolTipsVisible());
    view->menu()->close();
    view->list().setCurrentIndex(view->model().index(0));
    QTest::keyClick(&view->list(), Qt::Key_Delete);
    QVERIFY(!question(*view, u"Delete Server"_s));
}

void TestServerList::deleteAsks()
{
    add(u"<b>one</b>"_s, u"a"_s);
    const Server second = add(u"two"_s, u"b"_s);
    const auto view = showList();
    QVERIFY(view);
    view->list().setCurrentIndex(view->model().index(0));
    QTest::keyClick(&view->list(), Qt::Key_Delete);
    AlertDialog *dialog = question(*view, u"Delete Server"_s);
    QVERIFY(dialog);
    QCOMPARE(dialog->accessibleDescription(), u"Are you sure you want to delete server '<b>one</b>'from the list?"_s);
    QCOMPARE(dialog->buttons().at(0)->text(), u"Cancel"_s);
    QCOMPARE(dialog->buttons().at(1)->text(), u"Delete"_s);
    QTest::keyClick(dialog, Qt::Key_Return);
    QCOMPARE(m_transport->store.servers().size(), 2); // the safe answer is the one that Return gives

    view->askToDelete(second.id);
    dialog = question(*view, u"Delete Server"_s);
    m_transport->store.updateServerConnection(second, true); // meanwhile
    dialog->buttons().at(1)->click();
    QCOMPARE(m_transport->store.servers().size(), 2);

    m_transport->store.updateServerConnection(second, false);
    QTRY_VERIFY(!question(*view, u"Delete Server"_s));
    menuOf(*view, 1)->actions().constLast()->trigger();
    question(*view, u"Delete Server"_s)->buttons().at(1)->click();
    QCOMPARE(namesOf(view->model()), QStringList{u"<b>one</b>"_s});
}

void TestServerList::aNeighbourIsNotSelected()
{
    const Server first = add(u"one"_s, u"a"_s);
    add(u"two"_s, u"b"_s);
    const auto view = showList();
    QVERIFY(view);
    QTest::mouseClick(view->list().viewport(), Qt::LeftButton, {}, centerOf(*view, 0));
    QCOMPARE(m_transport->store.selectedServer()->name, u"one"_s);
    m_transport->store.deleteServer(first);
    QTest::qWait(300);
    QVERIFY(!m_transport->store.selectedServer());
    QVERIFY(!view->list().currentIndex().isValid());
}

void TestServerList::theKeyboardSelectsNothing()
{
    add(u"one"_s, u"a"_s);
    const auto view = showList();
    QVERIFY(view);
    view->searchField().setFocus();
    view->list().setFocus(Qt::TabFocusReason);
    QTest::qWait(300);
    QVERIFY(!m_transport->store.selectedServer());
    QTest::keyClick(&view->list(), Qt::Key_Return);
    QCOMPARE(m_transport->store.selectedServer()->name, u"one"_s);
    QVERIFY(view->list().selectionModel()->isSelected(view->model().index(0)));
}

void TestServerList::importError()
{
    const auto view = showList();
    QVERIFY(view);
    m_transport->store.failImport(u"no <b>such</b> file"_s);
    AlertDialog *dialog = question(*view, u"Import Error"_s);
    QVERIFY(dialog);
    QCOMPARE(dialog->accessibleDescription(), u"no <b>such</b> file"_s);
    QCOMPARE(dialog->buttons().constFirst()->text(), u"OK"_s);
    dialog->buttons().constFirst()->click();
    QVERIFY(!m_transport->store.showImportError());

    QTRY_VERIFY(!question(*view, u"Import Error"_s));
    m_transport->store.failImport(u"first"_s);
    m_transport->store.failImport({}); // while that one is read
    QCOMPARE(question(*view, u"Import Error"_s)->accessibleDescription(), u"first"_s);
    question(*view, u"Import Error"_s)->buttons().constFirst()->click();
    QVERIFY(m_transport->store.showImportError());
    QCOMPARE(question(*view, u"Import Error"_s)->accessibleDescription(),
             u"An error occurred while importing SSH config"_s);
    question(*view, u"Import Error"_s)->buttons().constFirst()->click();
    QVERIFY(!m_transport->store.showImportError());
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
    ServerListView view(m_theme, services());
    view.resize(236, 800);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QVERIFY(view.footer().startsWith(QLocale().toString(10'000)));
    QVERIFY(view.footer().contains(u"0 connected"_s));

    // A row has no widget of its own: the list's are its viewport and scroll bars however long it is.
    QVERIFY(view.list().findChildren<QWidget *>().size() < 10);
    const int plain = view.list().visualRect(view.model().index(0)).height();
    QVERIFY(view.list().visualRect(view.model().index(1)).height() > plain);
    view.list().setCurrentIndex(view.model().index(0));
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
    ServerListView view(m_theme, services());
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

void TestServerList::whatWasSelectedElsewhereCounts()
{
    for (const auto name : {"one", "two", "three"}) {
        m_transport->add(QString::fromLatin1(name));
    }
    ServerStore &store = m_transport->store;
    const auto view = showList();
    QVERIFY(view);
    QListView &list = view->list();
    list.setFocus(Qt::TabFocusReason); // makes the first row the current one, without selecting it
    QCOMPARE(list.currentIndex().row(), 0);
    store.setSelectedServer(store.servers().at(0));
    QVERIFY(list.selectionModel()->isSelected(view->model().index(0)));

    // A key on the way down, then a step in the history.
    QTest::keyClick(&list, Qt::Key_Down);
    store.setSelectedServer(store.servers().at(2));
    QCOMPARE(list.currentIndex().row(), 2);
    QTest::qWait(300);
    QCOMPARE(store.selectedServer()->name, u"three"_s);

    // News of the selected server is no step.
    QTest::keyClick(&list, Qt::Key_Up);
    store.updateServerConnection(store.servers().at(2), true);
    QCOMPARE(list.currentIndex().row(), 1);
    QTRY_COMPARE(store.selectedServer()->name, u"two"_s);

    QTest::keyClick(&list, Qt::Key_Up);
    view->dropPendingSelection();
    QCOMPARE(list.currentIndex().row(), 1);
    QTest::qWait(300);
    QCOMPARE(store.selectedServer()->name, u"two"_s);
}

QTEST_MAIN(TestServerList)
#include "test_server_list.moc"
