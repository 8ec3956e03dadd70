#include "Views/LiveSection.h"
#include "Views/Questions.h"
#include "Views/SectionFixture.h"

#include "Views/Components/AutoRefreshToggle.h"
#include "Views/Components/Labels.h"
#include "Views/Components/RefreshButton.h"
#include "Views/Components/SearchField.h"
#include "Views/Components/SectionHeader.h"
#include "Views/Components/SegmentedControl.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/StatusLine.h"
#include "Views/Components/Table/RecordTable.h"
#include "Views/Components/Table/RowActions.h"
#include "Views/Processes/ProcessesView.h"
#include "Views/Processes/ProcessesViewModel.h"
#include "Views/Theme/Theme.h"

#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

const QByteArray kHeading = "USER         PID %CPU %MEM    VSZ   RSS TTY      STAT START   TIME COMMAND\n";
const QByteArray kList = kHeading + "eve       70 42.1  6.2 9 2063155 ? Ss 08:12 0:00 postgres: writer\n"
                                    "ada       71 10.0  5.0 9 1024 ? Ss 08:12 0:00 /usr/bin/<b>node</b>\n";

} // namespace

/// The section as a person uses it, on a scripted server and on real ones.
class TestProcessesView : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void displays();
    void controls();
    void killAndCancel();
    void aLostConnectionWithdrawsTheQuestion();
    void endToEnd_data();
    void endToEnd();

private:
    static void kill(ProcessesView &view, ProcessesViewModel &model, const QString &pid)
    {
        view.table().rowActions().perform(model.table().rowOf(pid),
                                          SectionFixture::actionOf(model.table(), u"Kill Process"_s));
    }

    Theme m_theme;
};

void TestProcessesView::displays()
{
    SectionFixture fixture;
    ProcessesViewModel model(fixture.monitored(), fixture.navigation);
    ProcessesView view(m_theme, model);
    fixture.scripted.hold();
    fixture.scripted.setAnswer([](const QString &) { return ScriptedServer::said({}, 1); });
    view.setActive(true);
    QCOMPARE(view.page().state(), StatePage::State::Loading);
    QCOMPARE(view.page().message().title, u"Loading processes..."_s);
    fixture.scripted.release();
    QCOMPARE(view.page().state(), StatePage::State::Error);
    QCOMPARE(view.page().message().detail, u"Failed to load processes"_s);

    fixture.scripted.setAnswer([](const QString &) { return ScriptedServer::said(kList); });
    view.page().button().click();
    QCOMPARE(view.page().state(), StatePage::State::Content);
    QCOMPARE(view.status().stats().at(1).value, u"2"_s);
    view.header().search()->setText(u"nothing"_s);
    QCOMPARE(view.page().state(), StatePage::State::Empty);
    QCOMPARE(view.page().message().text, u"No processes match 'nothing'"_s);
    view.setActive(false);
    QVERIFY(!model.isViewVisible());
}

void TestProcessesView::controls()
{
    SectionFixture fixture;
    ProcessesViewModel model(fixture.monitored(), fixture.navigation);
    ProcessesView view(m_theme, model);
    fixture.scripted.setAnswer([](const QString &) { return ScriptedServer::said(kList); });
    view.setActive(true);
    auto *filter = view.findChild<SegmentedControl *>();
    filter->setCurrent(1);
    QCOMPARE(model.activeFilter(), ProcessFilter::HighCPU);
    QCOMPARE(model.table().rowCount(), 1);
    view.header().search()->setText(u"x"_s);
    fixture.navigation.showProcess(71); // from elsewhere: nothing may hide it
    QCOMPARE(filter->current(), 0);
    QCOMPARE(view.header().search()->text(), QString());
    QCOMPARE(view.table().currentIndex().row(), model.table().rowOf(u"71"_s));

    auto *automatic = view.findChild<AutoRefreshToggle *>();
    automatic->click();
    QVERIFY(!model.isAutoRefreshEnabled() && !model.autoRefreshTimer()->isActive());
    const auto before = fixture.scripted.lines().size();
    view.findChild<RefreshButton *>()->click();
    QCOMPARE(fixture.scripted.lines().size(), before + 1);
}

void TestProcessesView::killAndCancel()
{
    SectionFixture fixture;
    ProcessesViewModel model(fixture.monitored(), fixture.navigation);
    ProcessesView view(m_theme, model);
    fixture.scripted.setAnswer([](const QString &line) {
        return ScriptedServer::said(line.startsWith(u"ps "_s) ? kList : "71 100\nself 100000\n");
    });
    view.setActive(true);
    view.resize(900, 500);
    view.show();
    kill(view, model, u"71"_s);
    QVERIFY(model.showingKillAlert());
    QVERIFY(answerQuestion(view, u"Cancel"_s));
    QVERIFY(!model.showingKillAlert());
    QVERIFY(fixture.scripted.lines().filter(u"&& kill"_s).isEmpty());

    kill(view, model, u"71"_s);
    fixture.scripted.setAnswer([](const QString &line) {
        return line.startsWith(u"ps "_s) ? ScriptedServer::said(kHeading) : ScriptedServer::said({});
    });
    QVERIFY(answerQuestion(view, u"Kill Process"_s));
    QCOMPARE(fixture.scripted.lines().filter(u"&& kill 71"_s).size(), 1);
    QCOMPARE(model.table().total(), 0);
}

void TestProcessesView::aLostConnectionWithdrawsTheQuestion()
{
    SectionFixture fixture;
    ProcessesViewModel model(fixture.monitored(), fixture.navigation);
    ProcessesView view(m_theme, model);
    fixture.scripted.setAnswer([](const QString &) { return ScriptedServer::said(kList); });
    view.setActive(true);
    view.show();
    kill(view, model, u"71"_s);
    fixture.setConnected(false);
    QVERIFY(!answerQuestion(view, u"Kill Process"_s));
    QVERIFY(!model.showingKillAlert() && !model.table().isHeld());
    QCOMPARE(view.page().message().title, u"Not Connected"_s);

    fixture.setConnected(true); // where no process has that number, says the list of start times
    kill(view, model, u"71"_s);
    fixture.scripted.setAnswer([](const QString &) { return ScriptedServer::said(kHeading); });
    QVERIFY(answerQuestion(view, u"Kill Process"_s));
    const auto notes = view.status().findChildren<ElidedLabel *>();
    QVERIFY(std::ranges::any_of(notes, [](const ElidedLabel *label) {
        return label->text().startsWith(u"Nothing was sent: process 71 has ended"_s);
    }));
}

void TestProcessesView::endToEnd_data()
{
    QTest::addColumn<QString>("role");
    for (const auto &role : {u"sshd"_s, u"systemd"_s, u"dnf"_s, u"hostile"_s, u"busybox"_s}) {
        QTest::newRow(qPrintable(role)) << role;
    }
}

void TestProcessesView::endToEnd()
{
    QFETCH(QString, role);
    const RigHosts rig;
    RigSshd sshd;
    std::unique_ptr<LiveSection> live;
    if (role == u"sshd"_s) {
        QVERIFY2(sshd.up(), qPrintable(sshd.error()));
        live = std::make_unique<LiveSection>(sshd);
    } else {
        RIG_NEEDS_HOST(host, rig, role);
        live = std::make_unique<LiveSection>(host);
    }
    ProcessesViewModel model(live->monitored(), live->navigation);
    ProcessesView view(m_theme, model);
    view.resize(900, 500);
    view.show();

    if (role == u"busybox"_s) { // its ps knows no order
        view.setActive(true);
        QTRY_COMPARE_WITH_TIMEOUT(view.page().state(), StatePage::State::Error, 20'000);
        QVERIFY2(view.page().message().detail.contains(u"--sort"_s), qPrintable(view.page().message().detail));
        return;
    }
    const QString pid = live->says(u"sh -c 'sleep 7331 >/dev/null 2>&1 </dev/null & echo $!'"_s);
    view.setActive(true);
    QTRY_VERIFY_WITH_TIMEOUT(model.table().rowOf(pid) >= 0, 20'000);
    view.header().search()->setText(u"sleep 7331"_s);
    QTRY_COMPARE(model.filteredProcesses().value(0).pid, pid);

    kill(view, model, pid);
    QVERIFY(answerQuestion(view, u"Kill Process"_s));
    QVERIFY(model.table().isBusy(model.table().rowOf(pid)));
    QTRY_VERIFY_WITH_TIMEOUT(model.table().rowOf(pid) < 0 || model.table().isGone(model.table().rowOf(pid)), 20'000);
    // What nobody waits for stays as a zombie.
    QVERIFY(live->run(u"sh -c 'test -e /proc/%1 && ! grep -q \") Z\" /proc/%1/stat'"_s.arg(pid)).exitCode != 0);
}

QTEST_MAIN(TestProcessesView)
#include "test_processes_view.moc"
