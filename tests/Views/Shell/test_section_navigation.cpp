#include "Views/SectionFixture.h"

#include "Views/Components/Table/RecordTable.h"
#include "Views/Components/Table/RowActions.h"
#include "Views/Components/TableSectionView.h"
#include "Views/Ports/PortsView.h"
#include "Views/Processes/ProcessesView.h"
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

QTEST_MAIN(TestSectionNavigation)
#include "test_section_navigation.moc"
