#include "Helpers/ManualClock.h"
#include "Models/MainTab.h"
#include "Models/NavigationHistory.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class TestNavigationHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init() { m_history = std::make_unique<NavigationHistory>(m_clock); }

    void tabs();
    void beginsNowhere();
    void stepsBackAndForward();
    void aRepeatIsNoEntry();
    void aNewPlaceDropsWhatLayAhead();
    void keepsTwenty();
    void cachesTheLastTabOfEachServer();

private:
    void visit(const QString &server, const QString &tab)
    {
        m_history->navigateToState(server, server.toLower(), tab);
    }

    // "A/Dashboard B/Files" and so on, the present place in brackets.
    QString places() const
    {
        QStringList all;
        for (qsizetype i = 0; i < m_history->history().size(); ++i) {
            const NavigationState &state = m_history->history().at(i);
            const QString place = state.serverId + u'/' + state.tab;
            all.append(i == m_history->currentIndex() ? u'[' + place + u']' : place);
        }
        return all.join(u' ');
    }

    ManualClock m_clock;
    std::unique_ptr<NavigationHistory> m_history;
};

void TestNavigationHistory::tabs()
{
    QStringList shortcuts;
    for (const MainTab tab : allCases<MainTab>()) {
        const auto digit = shortcutDigit(tab);
        shortcuts.append(rawText(tab) + (digit ? QString::number(*digit) : QString()));
    }
    QCOMPARE(shortcuts.join(u' '), u"Dashboard1 Terminal2 Processes3 Services4 Containers5 Ports6 Users7 Packages8 "
                                   "Files9 Cron Logs"_s);
    QCOMPARE(fromRawText<MainTab>(u"Containers"), std::optional(MainTab::Docker));
    QCOMPARE(NavigationHistory::idText(QUuid(u"{9f0c2a4e-0000-4000-8000-00000000abcd}"_s)),
             u"9F0C2A4E-0000-4000-8000-00000000ABCD"_s);
}

void TestNavigationHistory::beginsNowhere()
{
    QCOMPARE(m_history->currentIndex(), -1);
    QVERIFY(!m_history->canGoBack() && !m_history->canGoForward());
    QVERIFY(!m_history->goBack() && !m_history->goForward() && !m_history->currentState());
    visit(u"A"_s, u"Dashboard"_s);
    QVERIFY(!m_history->canGoBack()); // there is nothing before the first place
    QVERIFY(!m_history->goBack());
    QCOMPARE(m_history->currentState()->timestamp, m_clock.now());
    QCOMPARE(m_history->currentState()->serverName, u"a"_s);
}

void TestNavigationHistory::stepsBackAndForward()
{
    visit(u"A"_s, u"Dashboard"_s);
    visit(u"A"_s, u"Files"_s);
    visit(u"B"_s, u"Dashboard"_s);
    const QSignalSpy spy(m_history.get(), &NavigationHistory::changed);
    QCOMPARE(m_history->goBack()->tab, u"Files"_s);
    QCOMPARE(m_history->goBack()->tab, u"Dashboard"_s);
    QVERIFY(!m_history->goBack());
    QCOMPARE(m_history->goForward()->serverId, u"A"_s);
    QCOMPARE(m_history->goForward()->serverId, u"B"_s);
    QVERIFY(!m_history->goForward());
    QCOMPARE(spy.size(), 4);
    QCOMPARE(places(), u"A/Dashboard A/Files [B/Dashboard]"_s);
}

void TestNavigationHistory::aRepeatIsNoEntry()
{
    visit(u"A"_s, u"Dashboard"_s);
    visit(u"A"_s, u"Files"_s);
    m_history->goBack();
    const QSignalSpy spy(m_history.get(), &NavigationHistory::changed);
    visit(u"A"_s, u"Dashboard"_s);
    QCOMPARE(places(), u"[A/Dashboard] A/Files"_s); // what lies ahead stays
    QCOMPARE(spy.size(), 0);
    QCOMPARE(m_history->getCachedTab(u"A"_s), u"Dashboard"_s);
}

void TestNavigationHistory::aNewPlaceDropsWhatLayAhead()
{
    for (const QString &tab : {u"Dashboard"_s, u"Files"_s, u"Logs"_s}) {
        visit(u"A"_s, tab);
    }
    m_history->goBack();
    m_history->goBack();
    visit(u"B"_s, u"Files"_s);
    QCOMPARE(places(), u"A/Dashboard [B/Files]"_s);
    QVERIFY(!m_history->canGoForward());
}

void TestNavigationHistory::keepsTwenty()
{
    for (int i = 1; i <= 21; ++i) {
        visit(QString::number(i), u"Files"_s);
    }
    QCOMPARE(m_history->history().size(), 20);
    QCOMPARE(m_history->currentIndex(), 19);
    QCOMPARE(m_history->history().constFirst().serverId, u"2"_s);
    m_history->goBack();
    visit(u"22"_s, u"Files"_s); // takes the place of the 21st
    QCOMPARE(m_history->history().size(), 20);
    QCOMPARE(m_history->history().constFirst().serverId, u"2"_s);
    QCOMPARE(m_history->currentIndex(), 19);
}

void TestNavigationHistory::cachesTheLastTabOfEachServer()
{
    visit(u"A"_s, u"Files"_s);
    visit(u"B"_s, u"Logs"_s);
    visit(u"A"_s, u"Cron"_s);
    QCOMPARE(m_history->getCachedTab(u"A"_s), u"Cron"_s);
    QCOMPARE(m_history->getCachedTab(u"B"_s), u"Logs"_s);
    QVERIFY(!m_history->getCachedTab(u"C"_s));
    m_history->removeCachedTab(u"A"_s);
    QVERIFY(!m_history->getCachedTab(u"A"_s));
    QCOMPARE(m_history->history().size(), 3);
}

QTEST_GUILESS_MAIN(TestNavigationHistory)
#include "test_navigation_history.moc"
