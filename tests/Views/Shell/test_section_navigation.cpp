#include "Views/FakeTransport.h"
#include "Views/Questions.h"
#include "Views/SectionFixture.h"

#include "Views/Components/Table/RecordTable.h"
#include "Views/Components/Table/RowActions.h"
#include "Views/Components/TableSectionView.h"
#include "Views/Ports/PortsView.h"
#include "Views/Ports/PortsViewModel.h"
#include "Views/Processes/ProcessesView.h"
#include "Views/Processes/ProcessesViewModel.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/SectionPages.h"
#include "Views/Theme/Theme.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// From one section of a server to another, through the window.
class TestSectionNavigation : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void fromAPortToItsProcessAndBack();
    void sectionsLiveWhileTheyAreShown();

private:
    static CommandResult answer(const QString &line)
    {
        return ScriptedServer::said(
            line.startsWith(u"ps "_s)   ? "USER PID ...\nroot 12 0 0 0 0 ? S 1 0 nginx\nroot 7 1 0 0 0 ? S 1 0 sshd\n"
            : line.startsWith(u"ss "_s) ? "tcp LISTEN 0 1 *:80 *:* users:((\"nginx\",pid=12,fd=6))\n"
                                          "tcp LISTEN 0 1 *:22 *:* users:((\"sshd\",pid=7,fd=6))\n"
                                        : "");
    }

    Theme m_theme;
};

void TestSectionNavigation::fromAPortToItsProcessAndBack()
{
    SectionFixture fixture;
    fixture.scripted.setAnswer(&answer);
    ContentView window(m_theme, {fixture.store, fixture.scripted.manager, fixture.clock});
    window.show();
    fixture.store.setSelectedServer(fixture.record());
    window.model().setSelectedTab(MainTab::Ports);
    auto *ports = qobject_cast<PortsView *>(window.pages().page(MainTab::Ports));
    QVERIFY(ports);
    const auto run = [](TableSectionView &view, int row, const QString &label) {
        auto *model = qobject_cast<TableModel *>(view.table().model());
        view.table().rowActions().perform(row, SectionFixture::actionOf(*model, label));
    };
    QCOMPARE(ports->table().model()->rowCount(), 2);
    run(*ports, 1, u"Show Process"_s); // of port 80

    QCOMPARE(window.model().selectedTab(), MainTab::Processes);
    auto *processes = qobject_cast<ProcessesView *>(window.pages().page(MainTab::Processes));
    QVERIFY(processes && processes->isActive());
    const QModelIndex selected = processes->table().currentIndex();
    QCOMPARE(selected.siblingAtColumn(0).data().toString(), u"12"_s);

    run(*processes, selected.row(), u"Show Ports"_s);
    QCOMPARE(window.model().selectedTab(), MainTab::Ports);
    QVERIFY(ports->isActive() && !processes->isActive());
    QCOMPARE(ports->table().model()->rowCount(), 1);
    window.model().goBack(); // an ordinary step of the history
    QCOMPARE(window.model().selectedTab(), MainTab::Processes);
}

void TestSectionNavigation::sectionsLiveWhileTheyAreShown()
{
    FakeTransport fake;
    QStringList lines;
    const auto serve = [&] {
        while (!fake.calls.isEmpty()) {
            const QString line = fake.calls.first().command;
            lines.append(line);
            fake.answer(line.contains(u"self"_s) ? "12 100\nself 100000\n" : answer(line).output);
        }
        return true;
    };
    const auto count = [&](QStringView begin) {
        return std::ranges::count_if(lines, [&](const QString &line) { return line.startsWith(begin); });
    };
    const Server server = fake.add(u"web"_s);
    ContentView window(m_theme, {fake.store, fake.manager, fake.clock});
    window.resize(1280, 800);
    window.show();
    fake.store.setSelectedServer(server);
    QTRY_VERIFY(serve() && fake.store.server(server.id)->isConnected); // the dashboard logs in
    QTRY_COMPARE(window.pages().count(), kMainTabCount);
    const auto &processes = *window.pages().page(MainTab::Processes)->findChild<ProcessesViewModel *>();
    const auto &ports = *window.pages().page(MainTab::Ports)->findChild<PortsViewModel *>();
    const auto areRunning = [&] {
        return std::pair(processes.autoRefreshTimer()->isActive(), ports.autoRefreshTimer()->isActive());
    };
    QVERIFY(serve() && count(u"ps ") == 0 && count(u"ss ") == 0); // there, and asleep
    QCOMPARE(areRunning(), std::pair(false, false));

    window.model().setSelectedTab(MainTab::Processes);
    QTRY_COMPARE(serve() ? processes.filteredProcesses().size() : 0, 2);
    QCOMPARE(areRunning(), std::pair(true, false));
    auto &table = qobject_cast<ProcessesView *>(window.pages().page(MainTab::Processes))->table();
    table.rowActions().perform(processes.table().rowOf(u"12"_s),
                               SectionFixture::actionOf(processes.table(), u"Kill Process"_s));
    QVERIFY(serve() && answerQuestion(window, u"Kill Process"_s));
    QTRY_VERIFY(serve() && count(u"ps ") == 2); // what is left
    QCOMPARE(lines.filter(u"exit 100' && kill 12"_s).size(), 1);

    window.model().setSelectedTab(MainTab::Ports);
    QTRY_COMPARE(serve() ? ports.filteredPorts().size() : 0, 2);
    QCOMPARE(areRunning(), std::pair(false, true));
    window.model().setSelectedTab(MainTab::Users);
    QTRY_COMPARE(serve() ? count(u"cat /etc/passwd") : 0, 1);
    QCOMPARE(areRunning(), std::pair(false, false));
    window.model().setSelectedTab(MainTab::Processes); // held as it was, and awake again
    QCOMPARE(processes.filteredProcesses().size(), 2);
    QCOMPARE(areRunning(), std::pair(true, false));

    fake.store.updateServerConnection(server, false);
    QCOMPARE(areRunning(), std::pair(false, false));
    QVERIFY(processes.processes().isEmpty() && ports.ports().isEmpty());
    serve();
}

QTEST_MAIN(TestSectionNavigation)
#include "test_section_navigation.moc"
