#include "Views/SectionFixture.h"

#include "Services/Commands/CommandSSHManager.h"
#include "Views/Components/AutoRefreshToggle.h"
#include "Views/Components/ProgressLine.h"
#include "Views/Components/RefreshButton.h"
#include "Views/Components/SearchField.h"
#include "Views/Components/SectionHeader.h"
#include "Views/Components/SegmentedControl.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/StatusLine.h"
#include "Views/Components/Table/RecordTable.h"
#include "Views/Components/Table/RecordTableModel.h"
#include "Views/Components/TableSectionView.h"
#include "Views/Theme/Theme.h"

#include <QPushButton>
#include <QScrollBar>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

/// The lines that a command says, as a section.
class LinesViewModel : public TableSectionViewModel
{
public:
    explicit LinesViewModel(const MonitoredServer &server)
        : TableSectionViewModel(server,
                                {.title = u"Lines"_s,
                                 .search = u"Search lines..."_s,
                                 .loading = u"Loading lines..."_s,
                                 .failure = {u"Failed to Load Lines"_s, u"Unable to retrieve lines"_s, {}}},
                                std::chrono::hours(1), nullptr)
        , m_table({.name = u"Lines"_s,
                   .identity = [](const QString &line) { return line; },
                   .columns = {{.title = u"Line"_s, .text = [](const QString &line) { return line; }}}})
    {
        setTable(m_table, {u"All"_s, u"Long"_s});
    }

protected:
    void read(const Server &server) override
    {
        load(monitored().manager.executeSSHCommand(CustomCommand(u"lines"_s, u"Lines"_s), server),
             [this](const CommandExecutionResult &run) {
                 if (!run.result.succeeded()) {
                     setLoadError(QString::fromUtf8(run.result.error));
                 }
                 m_table.setRecords(QString::fromUtf8(run.result.output).split(u'\n', Qt::SkipEmptyParts));
             });
    }

    void applyFilter() override
    {
        m_table.setFilter([text = searchText(), isLong = activeFilterIndex() == 1](const QString &line) {
            return line.contains(text) && (!isLong || line.size() > 3);
        });
    }

    Message emptiness() const override { return {u"No Results"_s, noMatch(u"No %1"_s, u"None"_s), {}}; }

private:
    RecordTableModel<QString> m_table;
};

} // namespace

/// A section's page over a scripted server: what its view model says is what stands on it.
class TestTableSectionView : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void init();
    void cleanup();

    void showsWhatTheModelSays();
    void narrowsByItsHeader();
    void aRefreshBlanksNothing();
    void failureAndRetry();
    void heldOrderIsTold();
    void keyboardGoesFromSearchToRows();

private:
    template<typename Widget>
    Widget *find() const
    {
        return m_view->findChild<Widget *>();
    }

    void open() { m_view->setActive(true); }

    Theme m_theme;
    std::unique_ptr<SectionFixture> m_fixture;
    std::unique_ptr<LinesViewModel> m_model;
    std::unique_ptr<TableSectionView> m_view;
    CommandResult m_answer;
};

void TestTableSectionView::init()
{
    m_answer = ScriptedServer::said("one\nthree\ntwo\n");
    m_fixture = std::make_unique<SectionFixture>();
    m_fixture->scripted.setAnswer([this](const QString &) { return m_answer; });
    m_model = std::make_unique<LinesViewModel>(m_fixture->monitored());
    m_view = std::make_unique<TableSectionView>(m_theme, *m_model);
    m_view->resize(800, 500);
    m_view->show();
}

void TestTableSectionView::cleanup()
{
    m_view.reset();
    m_model.reset();
    m_fixture.reset();
}

void TestTableSectionView::showsWhatTheModelSays()
{
    QCOMPARE(m_view->page().state(), StatePage::State::Loading);
    QCOMPARE(m_view->page().message().title, u"Loading lines..."_s);
    open();
    QTRY_COMPARE(m_view->page().state(), StatePage::State::Content);
    QCOMPARE(m_view->table().model()->rowCount(), 3);
    QCOMPARE(m_view->status().stats(), m_model->stats());
    QVERIFY(find<AutoRefreshToggle>()->isChecked());
    find<AutoRefreshToggle>()->click();
    QVERIFY(!m_model->isAutoRefreshEnabled());
    m_fixture->setConnected(false);
    m_view->setActive(false);
    QVERIFY(!m_model->isViewVisible());
}

void TestTableSectionView::narrowsByItsHeader()
{
    open();
    QTRY_COMPARE(m_view->page().state(), StatePage::State::Content);
    QTest::keyClicks(find<SearchField>(), u"t"_s);
    QCOMPARE(m_model->table().shownCount(), 2);
    find<SegmentedControl>()->setCurrent(1);
    QCOMPARE(m_model->table().shownCount(), 1);
    QTest::keyClicks(find<SearchField>(), u"x"_s);
    QCOMPARE(m_view->page().state(), StatePage::State::Empty);
    QCOMPARE(m_view->page().message().text, u"No tx"_s);
    m_model->setSearchText({}); // from elsewhere
    m_model->setActiveFilterIndex(0);
    QVERIFY(find<SearchField>()->text().isEmpty());
    QCOMPARE(find<SegmentedControl>()->current(), 0);
    QCOMPARE(m_view->page().state(), StatePage::State::Content);
}

void TestTableSectionView::aRefreshBlanksNothing()
{
    open();
    QTRY_COMPARE(m_view->page().state(), StatePage::State::Content);
    m_view->table().selectRow(1);
    QList<StatePage::State> states;
    connect(m_model.get(), &TableSectionViewModel::changed, this, [&] { states.append(m_view->page().state()); });
    bool wasTurning = false;
    m_fixture->scripted.setAnswer([&](const QString &) {
        wasTurning = find<ProgressLine>()->isActive() && find<RefreshButton>()->isRefreshing();
        return ScriptedServer::said("four\nthree\n");
    });
    find<RefreshButton>()->click();
    QTRY_VERIFY(!m_model->isLoading());
    QVERIFY(wasTurning);
    QVERIFY(!find<ProgressLine>()->isActive() && !find<RefreshButton>()->isRefreshing());
    QVERIFY(!states.isEmpty() && states.count(StatePage::State::Content) == states.size());
    QCOMPARE(m_model->table().selectedIdentity(), u"three"_s);
}

void TestTableSectionView::failureAndRetry()
{
    m_answer = ScriptedServer::said({});
    m_answer.exitCode = 1;
    m_answer.error = "no <b>lines</b>";
    open();
    QTRY_COMPARE(m_view->page().state(), StatePage::State::Error);
    QCOMPARE(m_view->page().message().detail, u"no <b>lines</b>"_s);
    m_answer = ScriptedServer::said("one\n");
    m_view->page().button().click();
    QTRY_COMPARE(m_view->page().state(), StatePage::State::Content);
}

void TestTableSectionView::heldOrderIsTold()
{
    open();
    QTRY_COMPARE(m_view->page().state(), StatePage::State::Content);
    m_model->table().setHeld(true);
    QVERIFY(!m_view->status().isOrderHeld()); // nothing is held back yet
    m_answer = ScriptedServer::said("zero\none\nabc\n");
    m_model->refresh();
    QTRY_VERIFY(m_view->status().isOrderHeld());
    m_model->table().setHeld(false);
    QVERIFY(!m_view->status().isOrderHeld());
}

void TestTableSectionView::keyboardGoesFromSearchToRows()
{
    open();
    QTRY_COMPARE(m_view->page().state(), StatePage::State::Content);
    m_view->focusSearch();
    QCOMPARE(m_view->focusWidget(), find<SearchField>());
    QTest::keyClick(find<SearchField>(), Qt::Key_Down);
    QCOMPARE(m_view->focusWidget(), &m_view->table());
}

QTEST_MAIN(TestTableSectionView)
#include "test_table_section_view.moc"
