#include "Services/Parsers/Recorded.h"
#include "Views/SectionFixture.h"

#include "Views/Processes/ProcessesViewModel.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

using Display = TableSectionViewModel::Display;

namespace
{

const QByteArray kHeading = "USER         PID %CPU %MEM    VSZ   RSS TTY      STAT START   TIME COMMAND\n";
const QByteArray kList = kHeading + "eve       70 42.1  6.2 9 2063155 ? Ss 08:12 0:00 postgres: writer\n"
                                    "ada       71 10.0  5.0 9 1024 ? Ss 08:12 0:00 /usr/bin/node --x\n"
                                    "root       9  3.2  5.1 9 512 ? Ss 08:12 0:00 /usr/sbin/sshd -D\n"
                                    "daemon     5 abc  0.1 9 - ? Ss 08:12 0:00 my-service\n"
                                    "root       1  0.0  0.0 9 0 ? Ss 08:12 0:00 [kthreadd]\n";
const QString kPs = u"ps aux --sort=-%cpu"_s;

bool isStartLine(const QString &line)
{
    return line.contains(u"for p in"_s);
}

} // namespace

/// The processes of a scripted server, and signals to them.
class TestProcessesViewModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_fixture = std::make_unique<SectionFixture>();
        m_fixture->scripted.setAnswer([this](const QString &line) { return answer(line); });
        m_list = ScriptedServer::said(kList);
        m_start = ScriptedServer::said("71 100\nself 100000\n70 100\n9 100\n");
        m_kill = ScriptedServer::said({});
    }

    void cleanup()
    {
        m_model.reset();
        m_fixture.reset();
    }

    void theFirstLoad();
    void rows();
    void recordedList();
    void busyboxHasNoSort();
    void failuresStayUntilTheyAreOver();
    void filters_data();
    void filters();
    void search();
    void serviceProcesses();
    void theTimer();
    void theNewestReadingCounts();
    void onlyWhileConnected();
    void aLostConnection();
    void aLostConnectionWhileReading();
    void anotherHostBehindTheQuestion();
    void goneInTheMiddle();
    void killing();
    void theQuestion();
    void sudo();
    void refusals();
    void anotherProcess_data();
    void anotherProcess();
    void anEndedProcessIsTold();
    void theAnswerBeforeTheStartTime();
    void twoAtOnce();
    void noPid();
    void showProcess();

private:
    CommandResult answer(const QString &line) const
    {
        return line == kPs ? m_list : isStartLine(line) ? m_start : m_kill;
    }

    ProcessesViewModel &make(std::chrono::milliseconds interval = std::chrono::hours(1))
    {
        m_model = std::make_unique<ProcessesViewModel>(m_fixture->monitored(), m_fixture->navigation, interval);
        return *m_model;
    }

    // With the list above on show.
    ProcessesViewModel &shown()
    {
        make().updateViewVisibility(true);
        return *m_model;
    }

    int rowOf(const QString &pid) const { return m_model->table().rowOf(pid); }

    // Asks about an action on a row as its menu does.
    std::optional<RowQuestion> ask(const QString &pid, const QString &label = u"Kill Process"_s)
    {
        return SectionFixture::question(m_model->table(), rowOf(pid), label);
    }

    void confirm(const QString &pid, const QString &label = u"Kill Process"_s)
    {
        SectionFixture::run(m_model->table(), rowOf(pid), label);
    }

    QStringList pids() const
    {
        QStringList pids;
        for (const ProcessInfo &process : m_model->filteredProcesses()) {
            pids.append(process.pid);
        }
        return pids;
    }

    QString errorOf(const QString &pid) const { return m_model->table().errorAt(rowOf(pid)); }

    const QStringList &lines() const { return m_fixture->scripted.lines(); }

    std::unique_ptr<SectionFixture> m_fixture;
    std::unique_ptr<ProcessesViewModel> m_model;
    CommandResult m_list;
    CommandResult m_start;
    CommandResult m_kill;
};

void TestProcessesViewModel::theFirstLoad()
{
    m_fixture->scripted.hold();
    const auto &model = make();
    QVERIFY(lines().isEmpty() && model.isInitialLoad() && !model.hasLoadedInitialData());
    m_model->updateViewVisibility(true);
    QCOMPARE(lines(), QStringList{kPs});
    QVERIFY(model.isLoading() && model.hasLoadedInitialData());
    QCOMPARE(model.display(), Display::Loading);
    QCOMPARE(model.message().title, u"Loading processes..."_s);

    m_model->updateViewVisibility(false);
    m_model->updateViewVisibility(true); // once
    m_fixture->scripted.release();
    QCOMPARE(lines().size(), 1);
    QVERIFY(!model.isLoading() && !model.isInitialLoad());
    QCOMPARE(model.display(), Display::Content);
    QCOMPARE(model.processes().size(), 5);
    m_model->updateViewVisibility(false);
    m_model->updateViewVisibility(true);
    QCOMPARE(lines().size(), 1);
}

void TestProcessesViewModel::rows()
{
    TableModel &table = shown().table();
    QCOMPARE(pids(), (QStringList{u"70"_s, u"71"_s, u"9"_s, u"1"_s, u"5"_s})); // by CPU, then by PID
    QStringList titles;
    for (int column = 0; column < table.columnCount(); ++column) {
        titles.append(table.headerData(column, Qt::Horizontal).toString());
    }
    QCOMPARE(titles.join(u'|'), u"PID|User|CPU %|Mem %|Mem MB|Command|Actions"_s);
    QCOMPARE(SectionFixture::row(table, 0), u"70|eve|42.1|6.2|2014.8 MB|postgres: writer"_s);
    QCOMPARE(SectionFixture::row(table, 2), u"9|root|3.2|5.1|<1 MB|/usr/sbin/sshd -D"_s);
    QCOMPARE(table.index(0, 0).data(TableModel::RowIdentifierRole), u"row_pid_70"_s);
    QCOMPARE(table.cell(0, 2).tone, ToneName::Orange);
    QVERIFY(!table.cell(1, 2).tone); // 10.0 is not above 10

    table.setSort(4, Qt::AscendingOrder); // by size, not by its text
    QCOMPARE(pids().last(), u"70"_s);
    table.setSort(0, Qt::AscendingOrder);
    QCOMPARE(pids().first(2), (QStringList{u"1"_s, u"5"_s}));
    const QList<Stat> stats = m_model->stats();
    QCOMPARE(stats[0], (Stat{u"Showing:"_s, u"5"_s}));
    QCOMPARE(stats[1], (Stat{u"Total"_s, u"5"_s}));
}

void TestProcessesViewModel::recordedList()
{
    m_list = ScriptedServer::said(recorded("processes_german.txt"));
    shown();
    QCOMPARE(m_model->processes().size(), 41);
    m_model->setSearchText(u"HEIDI"_s);
    QVERIFY(m_model->table().shownCount() > 0 && m_model->table().shownCount() < 41);
}

void TestProcessesViewModel::busyboxHasNoSort()
{
    m_list = {{}, "ps: unrecognized option '--sort=-%cpu'\nBusyBox v1.35.0 multi-call binary.\n", 1, {}};
    shown();
    QCOMPARE(m_model->display(), Display::Error);
    QCOMPARE(m_model->message(),
             (TableSectionViewModel::Message{u"Failed to Load Processes"_s, u"Unable to retrieve process list"_s,
                                             u"ps: unrecognized option '--sort=-%cpu'\nBusyBox v1.35.0 multi-call "
                                             "binary."_s}));
}

void TestProcessesViewModel::failuresStayUntilTheyAreOver()
{
    m_list = {{}, " \n", 1, {}};
    shown();
    QCOMPARE(m_model->loadError(), u"Failed to load processes"_s);
    QVERIFY(m_model->processes().isEmpty());
    m_fixture->scripted.hold();
    m_model->refreshProcesses();
    QVERIFY(!m_model->loadError());
    QCOMPARE(m_model->display(), Display::Error); // no empty table flashes up meanwhile
    m_list = ScriptedServer::said(kList);
    m_fixture->scripted.release();
    QCOMPARE(m_model->display(), Display::Content);
    m_list = ScriptedServer::said({}, 255);
    m_model->refreshProcesses();
    QVERIFY(m_model->processes().isEmpty());
    m_list = ScriptedServer::said(kHeading);
    m_model->refreshProcesses();
    QCOMPARE(m_model->display(), Display::Empty);
}

void TestProcessesViewModel::filters_data()
{
    QTest::addColumn<ProcessFilter>("filter");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("kept");
    QTest::newRow("all") << ProcessFilter::All << u"All"_s << u"70 71 9 1 5"_s;
    QTest::newRow("cpu") << ProcessFilter::HighCPU << u"High CPU"_s << u"70"_s;
    QTest::newRow("memory") << ProcessFilter::HighMemory << u"High Memory"_s << u"70 9"_s;
    QTest::newRow("mine") << ProcessFilter::MyProcesses << u"My Processes"_s << u"71"_s;
    QTest::newRow("system") << ProcessFilter::SystemProcesses << u"System"_s << u"9 1 5"_s;
    QTest::newRow("services") << ProcessFilter::RunningServices << u"Services"_s << u"9 5"_s;
}

void TestProcessesViewModel::filters()
{
    QFETCH(ProcessFilter, filter);
    shown();
    m_model->setActiveFilterIndex(static_cast<int>(filter));
    QTEST(m_model->filters().at(static_cast<int>(filter)), "label");
    QTEST(pids().join(u' '), "kept");
    QCOMPARE(m_model->processes().size(), 5);
    m_model->refreshProcesses();
    QTEST(pids().join(u' '), "kept");
}

void TestProcessesViewModel::search()
{
    shown();
    for (const auto &[text, kept] : {std::pair{u"NODE"_s, u"71"_s}, {u"7"_s, u"70 71"_s}, {u"Root"_s, u"9 1"_s}}) {
        m_model->setSearchText(text);
        QCOMPARE(pids().join(u' '), kept);
    }
    m_model->setSearchText(u"%1<b>"_s);
    QCOMPARE(m_model->display(), Display::Empty);
    QCOMPARE(m_model->message().title, u"No Results"_s);
    QCOMPARE(m_model->message().text, u"No processes match '%1<b>'"_s);
    QCOMPARE(m_model->stats()[0].value, u"0"_s);
    QCOMPARE(m_model->stats()[1].value, u"5"_s);
}

void TestProcessesViewModel::serviceProcesses()
{
    const auto is = [](const QString &command, const QString &user) {
        return ProcessesViewModel::isServiceProcess({.user = user, .command = command});
    };
    QVERIFY(is(u"/lib/systemd/systemd --user"_s, u"ada"_s) && is(u"my-service"_s, u"ada"_s));
    QVERIFY(is(u"/usr/bin/dockerd"_s, u"root"_s) && !is(u"/usr/bin/dockerd"_s, u"ada"_s));
    QVERIFY(!is(u"/opt/dockerd"_s, u"root"_s) && !is(u"/usr/sbin"_s, u"root"_s));
}

void TestProcessesViewModel::theTimer()
{
    const auto readings = [this] { return lines().count(kPs); };
    const ProcessesViewModel ordinary(m_fixture->monitored(), m_fixture->navigation);
    QCOMPARE(ordinary.autoRefreshTimer()->intervalAsDuration(), std::chrono::seconds(3));
    QVERIFY(!ordinary.autoRefreshTimer()->isActive());

    make(std::chrono::milliseconds(10)).updateViewVisibility(true);
    QTRY_VERIFY(readings() >= 4);

    m_fixture->scripted.hold(); // ticks do not pile up behind a reading
    QTRY_COMPARE(m_fixture->scripted.waiting(), 1);
    QTest::qWait(60);
    QCOMPARE(m_fixture->scripted.waiting(), 1);
    m_fixture->scripted.release();

    m_model->setAutoRefreshEnabled(false);
    const auto before = readings();
    QTest::qWait(60);
    QCOMPARE(readings(), before);
    m_model->setAutoRefreshEnabled(true);
    QTRY_VERIFY(readings() > before);

    m_model->updateViewVisibility(false);
    const auto hidden = readings();
    m_model->setAutoRefreshEnabled(false);
    m_model->setAutoRefreshEnabled(true);
    QTest::qWait(60);
    QCOMPARE(readings(), hidden);
}

void TestProcessesViewModel::theNewestReadingCounts()
{
    shown();
    m_fixture->scripted.hold();
    int reading = 0;
    m_fixture->scripted.setAnswer([&](const QString &) {
        return ScriptedServer::said(kHeading +
                                    (++reading == 1 ? "a 2 0 0 0 0 0 0 0 0 newest\n" : "a 1 0 0 0 0 0 0 0 0 old\n"));
    });
    m_model->refreshProcesses();
    m_model->refreshProcesses();
    m_fixture->scripted.release(true); // the newest answers first
    QCOMPARE(pids(), QStringList{u"2"_s});
    QVERIFY(!m_model->isLoading());
}

void TestProcessesViewModel::onlyWhileConnected()
{
    m_fixture->setConnected(false);
    make(std::chrono::milliseconds(10)).updateViewVisibility(true);
    m_model->refreshProcesses();
    QTest::qWait(40);
    QVERIFY(lines().isEmpty());
    QCOMPARE(m_model->display(), Display::NotConnected);
    m_fixture->setConnected(true);
    QCOMPARE(m_model->display(), Display::Content);
    QTRY_VERIFY(lines().size() > 2);
    m_fixture->setConnected(false);
    const auto before = lines().size();
    QTest::qWait(40);
    QCOMPARE(lines().size(), before);
    m_fixture->store.deleteServer(m_fixture->record());
    m_model->refreshProcesses();
    QCOMPARE(lines().size(), before);
}

void TestProcessesViewModel::aLostConnection()
{
    shown();
    m_model->table().setHeld(true);
    m_model->showProcess(9);
    QVERIFY(m_model->lastUpdated().isValid());
    m_fixture->setConnected(false);
    QCOMPARE(m_model->display(), Display::NotConnected);
    QVERIFY(m_model->processes().isEmpty() && m_model->filteredProcesses().isEmpty() && !m_model->selectedProcess());
    QVERIFY(m_model->isInitialLoad() && !m_model->hasLoadedInitialData() && !m_model->lastUpdated().isValid());

    m_list = ScriptedServer::said({}, 1);
    m_fixture->setConnected(true);
    QCOMPARE(m_model->display(), Display::Error);
    m_fixture->setConnected(false);
    QCOMPARE(m_model->display(), Display::NotConnected);
    QVERIFY(!m_model->loadError());
}

void TestProcessesViewModel::aLostConnectionWhileReading()
{
    shown();
    m_fixture->scripted.hold();
    m_model->refreshProcesses();
    m_fixture->setConnected(false);
    m_list = ScriptedServer::said({}, 255);
    m_fixture->scripted.release();
    QCOMPARE(m_model->display(), Display::NotConnected);
    QVERIFY(!m_model->isLoading() && !m_model->loadError());
}

void TestProcessesViewModel::anotherHostBehindTheQuestion()
{
    shown();
    Server elsewhere = m_fixture->record();
    elsewhere.host = u"other.example"_s;
    ask(u"71"_s);
    const auto answer = m_model->table().prepared(rowOf(u"71"_s), 0);
    ask(u"70"_s);
    m_fixture->scripted.hold();
    ask(u"71"_s);
    confirm(u"71"_s); // while its start is looked up
    ask(u"70"_s);
    m_fixture->store.updateServer(elsewhere);
    m_fixture->setConnected(true); // before the old host's answer
    QVERIFY(!m_model->showingKillAlert() && m_model->killingProcessPids().isEmpty());
    QVERIFY(m_model->processes().isEmpty());
    m_fixture->scripted.release();
    QCOMPARE(m_model->notice(), u"Nothing was sent to process 71: the connection was lost."_s);
    QCOMPARE(m_model->processes().size(), 5);
    QVERIFY(errorOf(u"71"_s).isEmpty() && !m_model->table().isBusy(rowOf(u"71"_s)));
    answer();
    m_model->killProcess({.pid = u"71"_s});
    QVERIFY(lines().filter(u" && kill"_s).isEmpty());

    ask(u"71"_s);
    m_fixture->scripted.hold();
    ask(u"71"_s);
    confirm(u"71"_s);
    m_fixture->setConnected(false);
    m_fixture->scripted.release();
    QVERIFY(lines().filter(u" && kill"_s).isEmpty());
    QCOMPARE(m_model->display(), Display::NotConnected);
}

void TestProcessesViewModel::goneInTheMiddle()
{
    shown();
    m_fixture->scripted.hold();
    m_model->refreshProcesses();
    ask(u"71"_s);
    confirm(u"71"_s);
    m_model.reset();
    m_fixture->scripted.release();
    QTest::qWait(20);
    QCOMPARE(lines().count(kPs), 2);
}

void TestProcessesViewModel::killing()
{
    shown();
    ask(u"71"_s);
    QVERIFY(m_model->showingKillAlert());
    QCOMPARE(m_model->processToKill()->pid, u"71"_s);
    QVERIFY(isStartLine(lines().last()) && lines().last().contains(u"in 71 self"_s));
    m_fixture->scripted.hold();
    confirm(u"71"_s);
    QVERIFY(!m_model->showingKillAlert());
    QCOMPARE(m_model->killingProcessPids(), QSet<QString>{u"71"_s});
    QVERIFY(m_model->table().isBusy(rowOf(u"71"_s)));
    QVERIFY(lines().last().contains(u"= 100 ] || exit 100' && kill 71"_s));
    m_list = ScriptedServer::said(kHeading);
    m_fixture->scripted.release();
    QCOMPARE(lines().last(), kPs); // what is left is read at once
    QVERIFY(m_model->killingProcessPids().isEmpty());
    QVERIFY(m_model->processes().isEmpty());

    const auto count = lines().size(); // an answer without a question changes nothing
    m_model->killProcess({.pid = u"71"_s});
    QCOMPARE(lines().size(), count);
}

void TestProcessesViewModel::theQuestion()
{
    const QByteArray longCommand = "/opt/x " + QByteArray(500, 'y') + "END";
    m_list = ScriptedServer::said(kList + "ada 72 0 0 0 0 0 0 0 0 " + longCommand +
                                  "\nada 73 0 0 0 0 0 0 0 0 %1%2\n"
                                  "ad\u202Ea 74 0 0 0 0 0 0 0 0 gnp\u202Eexe.\n");
    shown();
    auto question = ask(u"71"_s);
    QCOMPARE(question->title, u"Kill Process"_s);
    QCOMPARE(question->text, u"Are you sure you want to kill process 71 (/usr/bin/node --x)?"_s);
    QCOMPARE(question->confirm, u"Kill Process"_s);
    QCOMPARE(question->detail, u"User: ada"_s);
    question = ask(u"72"_s);
    QVERIFY(question->text.size() < 300 && question->detail.endsWith(u"END"_s));
    QCOMPARE(ask(u"73"_s)->text, u"Are you sure you want to kill process 73 (%1%2)?"_s);
    QVERIFY(!ask(u"74"_s)->text.contains(QChar(0x202E)) && !ask(u"74"_s)->detail.contains(QChar(0x202E)));
    question = ask(u"71"_s, u"Send HUP"_s);
    QCOMPARE(question->text, u"Are you sure you want to send HUP to process 71 (/usr/bin/node --x)?"_s);
    confirm(u"71"_s, u"Send HUP"_s);
    QVERIFY(lines().at(lines().size() - 2).endsWith(u"kill -HUP 71"_s));

    ask(u"71"_s);
    m_model->cancelKill();
    QVERIFY(!m_model->showingKillAlert() && !m_model->processToKill());
}

void TestProcessesViewModel::sudo()
{
    Server record = m_fixture->record();
    record.useSudo = true;
    m_fixture->store.updateServer(record);
    shown();
    const auto sent = [this](const QString &pid, const QString &label) {
        ask(pid, label);
        confirm(pid, label);
        return lines().at(lines().size() - 2).section(u" && "_s, -1);
    };
    QCOMPARE(sent(u"70"_s, u"Kill Process"_s), u"sudo kill 70"_s);
    QCOMPARE(sent(u"71"_s, u"Kill Process"_s), u"kill 71"_s);
    QCOMPARE(sent(u"9"_s, u"Kill Process"_s), u"kill 9"_s); // root's
    QCOMPARE(sent(u"9"_s, u"Send KILL"_s), u"sudo kill -KILL 9"_s);
}

void TestProcessesViewModel::refusals()
{
    shown();
    m_kill = {{}, "kill: (9) - Operation not permitted\n", 1, {}};
    ask(u"9"_s);
    confirm(u"9"_s);
    QVERIFY(lines().last() != kPs);
    QCOMPARE(errorOf(u"9"_s), u"kill: (9) - Operation not permitted"_s);
    QVERIFY(m_model->killingProcessPids().isEmpty() && !m_model->table().isBusy(rowOf(u"9"_s)));
    m_model->refreshProcesses();
    QCOMPARE(errorOf(u"9"_s), u"kill: (9) - Operation not permitted"_s); // until the row's next action
    m_kill = ScriptedServer::said({}, 1);
    ask(u"9"_s);
    confirm(u"9"_s);
    QCOMPARE(errorOf(u"9"_s), u"The server refused the signal."_s);

    m_start = {{}, "Connection closed", 255, {}};
    const auto count = lines().size();
    ask(u"71"_s);
    confirm(u"71"_s);
    QCOMPARE(lines().size(), count + 1); // unknown whose the number is now: no signal
    QCOMPARE(errorOf(u"71"_s), u"Nothing was sent to process 71: Connection closed"_s);
}

void TestProcessesViewModel::anotherProcess_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<qint32>("kill");
    QTest::addColumn<bool>("isSent");
    QTest::newRow("gone when asked") << QByteArray("71\nself 100000\n") << 0 << false;
    QTest::newRow("younger than the list") << QByteArray("71 91000\nself 100000\n") << 0 << false; // 90 s
    QTest::newRow("as old as the list") << QByteArray("71 90000\nself 100000\n") << 0 << true;     // 100 s
    QTest::newRow("gone when confirmed")
        << QByteArray("71 100\nself 100000\n") << GuardedProcessCommand::kAnotherProcess << true;
}

void TestProcessesViewModel::anotherProcess()
{
    QFETCH(QByteArray, start);
    QFETCH(qint32, kill);
    QFETCH(bool, isSent);
    shown();
    m_fixture->clock.advance(100'000);
    m_start = ScriptedServer::said(start);
    m_kill = ScriptedServer::said({}, kill);
    ask(u"71"_s);
    confirm(u"71"_s);
    QCOMPARE(lines().filter(u" && kill 71"_s).size(), isSent ? 1 : 0);
    const bool isMarked = errorOf(u"71"_s).startsWith(u"Nothing was sent"_s);
    QCOMPARE(isMarked, !isSent || kill != 0);
    QCOMPARE(lines().last(), kPs);
}

void TestProcessesViewModel::anEndedProcessIsTold()
{
    shown();
    ask(u"71"_s);
    m_start = ScriptedServer::said("71\nself 100000\n");
    ask(u"71"_s);
    m_list = ScriptedServer::said(kHeading);
    m_model->table().setHeld(true);
    confirm(u"71"_s);
    const QString told = u"Nothing was sent: process 71 has ended, and its number may belong to another one now."_s;
    QVERIFY(m_model->table().isGone(rowOf(u"71"_s)));
    QCOMPARE(errorOf(u"71"_s), told);
    m_model->table().setHeld(false);
    QCOMPARE(m_model->notice(), told);
    m_fixture->clock.advance(31'000);
    QVERIFY(m_model->notice().isEmpty());
}

void TestProcessesViewModel::theAnswerBeforeTheStartTime()
{
    shown();
    m_fixture->scripted.hold();
    ask(u"71"_s);
    confirm(u"71"_s); // faster than the server
    QVERIFY(isStartLine(lines().last()));
    QVERIFY(m_model->table().isBusy(rowOf(u"71"_s)));
    m_fixture->scripted.release();
    QCOMPARE(lines().filter(u" && kill 71"_s).size(), 1);
    QVERIFY(m_model->killingProcessPids().isEmpty());
}

void TestProcessesViewModel::twoAtOnce()
{
    shown();
    m_fixture->scripted.hold();
    ask(u"71"_s);
    confirm(u"71"_s);
    ask(u"70"_s);
    confirm(u"70"_s);
    QCOMPARE(m_model->killingProcessPids().size(), 2);
    m_fixture->scripted.release(true);
    QCOMPARE(lines().filter(u" && kill 7"_s).size(), 2);
    QVERIFY(m_model->killingProcessPids().isEmpty());
}

void TestProcessesViewModel::noPid()
{
    // kill -1 and kill 0 would be sent to everything.
    m_list = ScriptedServer::said(kHeading + "a -1 0 0 0 0 0 0 0 0 all\na 0 0 0 0 0 0 0 0 0 group\n");
    shown();
    const auto count = lines().size();
    for (const auto &pid : {u"-1"_s, u"0"_s}) {
        QVERIFY(
            !m_model->table().isEnabled(rowOf(pid), SectionFixture::actionOf(m_model->table(), u"Kill Process"_s)));
        ask(pid);
        confirm(pid);
    }
    QCOMPARE(lines().size(), count);
}

void TestProcessesViewModel::showProcess()
{
    shown();
    QSignalSpy tabs(&m_fixture->navigation, &SectionNavigation::tabRequested);
    m_model->setSearchText(u"postgres"_s);
    m_fixture->navigation.showProcess(9);
    QCOMPARE(tabs.count(), 1);
    QCOMPARE(m_model->searchText(), QString());
    QCOMPARE(m_model->selectedProcess()->pid, u"9"_s);
    m_list = ScriptedServer::said(kList + "ada 99 0 0 0 0 0 0 0 0 late\n");
    m_fixture->navigation.showProcess(99); // not in the list yet
    QCOMPARE(m_model->selectedProcess()->pid, u"99"_s);

    QSignalSpy ports(&m_fixture->navigation, &SectionNavigation::portsRequested);
    SectionFixture::run(m_model->table(), rowOf(u"9"_s), u"Show Ports"_s);
    QCOMPARE(ports.value(0).value(0).toLongLong(), 9);
}

QTEST_GUILESS_MAIN(TestProcessesViewModel)
#include "test_processes_view_model.moc"
