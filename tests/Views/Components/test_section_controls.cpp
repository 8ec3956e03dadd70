#include "Views/Components/AutoRefreshToggle.h"
#include "Views/Components/RefreshButton.h"
#include "Views/Components/SearchField.h"
#include "Views/Components/SectionHeader.h"
#include "Views/Components/SegmentedControl.h"
#include "Views/Components/StatsView.h"
#include "Views/Components/StatusLine.h"
#include "Views/Theme/Theme.h"

#include <QAccessible>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

class TestSectionControls : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void segmentsByKeyboard();
    void segmentsAreOneStop();
    void segmentsForAssistivePrograms();
    void segmentsTellWhatIsCut();
    void newSegments();
    void searchIsCleared();
    void searchHandsOver();
    void refreshKeepsTheKeyboard();
    void autoTellsItsState();
    void statsFollow();
    void headerUsesItsRoom_data();
    void headerUsesItsRoom();

private:
    Theme m_theme;
};

void TestSectionControls::segmentsByKeyboard()
{
    SegmentedControl control(m_theme, u"Filter"_s, {u"All"_s, u"High CPU"_s, u"System"_s});
    QSignalSpy changes(&control, &SegmentedControl::currentChanged);
    control.show();
    control.setFocus();
    const std::pair<Qt::Key, int> keys[]{{Qt::Key_Left, 0}, {Qt::Key_Right, 1}, {Qt::Key_Down, 2}, {Qt::Key_Right, 2},
                                         {Qt::Key_Home, 0}, {Qt::Key_End, 2},   {Qt::Key_Up, 1}};
    for (const auto &[key, place] : keys) {
        QTest::keyClick(control.focusProxy(), key);
        QCOMPARE(control.current(), place);
        QVERIFY(control.focusProxy() == control.focusWidget());
    }
    QCOMPARE(changes.size(), 5); // not where the key led nowhere

    control.setLayoutDirection(Qt::RightToLeft);
    QTest::keyClick(control.focusProxy(), Qt::Key_Left);
    QCOMPARE(control.current(), 2);
    control.setCurrent(7);
    QCOMPARE(control.current(), 2);
}

void TestSectionControls::segmentsAreOneStop()
{
    QWidget window;
    auto *column = new QVBoxLayout(&window);
    auto *before = new QLineEdit;
    auto *control = new SegmentedControl(m_theme, u"Filter"_s, {u"A"_s, u"B"_s, u"C"_s});
    auto *after = new QLineEdit;
    column->addWidget(before);
    column->addWidget(control);
    column->addWidget(after);
    control->setCurrent(1);
    window.show();
    before->setFocus();
    QTest::keyClick(before, Qt::Key_Tab);
    QCOMPARE(window.focusWidget(), control->focusProxy());
    QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    QCOMPARE(window.focusWidget(), after);
}

void TestSectionControls::segmentsForAssistivePrograms()
{
    SegmentedControl control(m_theme, u"Filter"_s, {u"All"_s, u"Web"_s});
    const auto *group = QAccessible::queryAccessibleInterface(&control);
    QCOMPARE(group->text(QAccessible::Name), u"Filter"_s);
    QCOMPARE(group->childCount(), 2);
    control.setCurrent(1);
    for (int i = 0; i < 2; ++i) {
        const auto *radio = group->child(i);
        QCOMPARE(radio->role(), QAccessible::RadioButton);
        QCOMPARE(radio->text(QAccessible::Name), control.options().at(i));
        QCOMPARE(radio->state().checked, i == 1);
    }
}

void TestSectionControls::segmentsTellWhatIsCut()
{
    SegmentedControl control(m_theme, u"Filter"_s, {u"All"_s, u"Hoher Speicherverbrauch"_s});
    control.resize(control.sizeHint());
    control.show();
    const QWidget *wide = control.layout()->itemAt(1)->widget();
    QVERIFY(wide->toolTip().isEmpty());
    control.resize(control.minimumSizeHint());
    QTRY_VERIFY(wide->toolTip().contains(u"Hoher Speicherverbrauch"_s));
}

void TestSectionControls::newSegments()
{
    SegmentedControl control(m_theme, u"Source"_s, {u"A"_s, u"B"_s});
    control.setCurrent(1);
    control.setOptions({u"A"_s, u"B"_s});
    QCOMPARE(control.current(), 1);
    control.setOptions({u"X"_s});
    QCOMPARE(control.current(), 0);
    QCOMPARE(control.options(), QStringList{u"X"_s});
    control.setOptions({});
    QCOMPARE(control.current(), -1);
}

void TestSectionControls::searchIsCleared()
{
    QWidget window;
    auto *field = new SearchField(m_theme, u"Search..."_s, &window);
    window.show();
    QCOMPARE(field->accessibleName(), u"Search..."_s);
    QVERIFY(!field->findChild<QToolButton *>());
    QTest::keyClicks(field, u"nginx"_s);
    auto *clear = field->findChild<QToolButton *>();
    QVERIFY(clear && !clear->toolTip().isEmpty());
    clear->click();
    QVERIFY(field->text().isEmpty());

    QTest::keyClicks(field, u"nginx"_s);
    const auto escape = [field] {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QCoreApplication::sendEvent(field, &event);
        return event.isAccepted();
    };
    QVERIFY(escape());
    QVERIFY(field->text().isEmpty());
    QVERIFY(!escape()); // then it closes what is around the field
}

void TestSectionControls::searchHandsOver()
{
    SearchField field(m_theme, u"Search..."_s);
    QSignalSpy left(&field, &SearchField::left);
    for (const auto key : {Qt::Key_Down, Qt::Key_Return, Qt::Key_Enter}) {
        QTest::keyClick(&field, key);
    }
    QCOMPARE(left.size(), 3);
}

void TestSectionControls::refreshKeepsTheKeyboard()
{
    QWidget window;
    auto *button = new RefreshButton(m_theme, {}, &window);
    window.show();
    button->setFocus();
    QSignalSpy requests(button, &RefreshButton::refreshRequested);
    button->click();
    button->setRefreshing(true);
    button->click();
    QCOMPARE(requests.size(), 1);
    QCOMPARE(window.focusWidget(), button);
    QVERIFY(!button->accessibleDescription().isEmpty());
    const QImage before = button->grab().toImage();
    QTRY_VERIFY(button->grab().toImage() != before); // it turns
    button->setRefreshing(false);
    button->click();
    QCOMPARE(requests.size(), 2);
}

void TestSectionControls::autoTellsItsState()
{
    AutoRefreshToggle toggle(m_theme);
    QCOMPARE(toggle.text(), u"Auto"_s);
    QCOMPARE(toggle.toolTip(), u"Auto-refresh disabled"_s);
    toggle.click();
    QCOMPARE(toggle.toolTip(), u"Auto-refresh enabled"_s);
}

void TestSectionControls::statsFollow()
{
    StatusLine line(m_theme);
    line.show();
    line.setStats({{u"Total"_s, u"214"_s, {}}, {u"Errors"_s, u"4"_s, ToneName::Red}});
    const auto before = line.findChildren<StatsView *>();
    line.setStats({{u"Total"_s, u"9"_s, {}}, {u"8 items"_s, {}, {}}});
    QCOMPARE(line.findChildren<StatsView *>(), before);
    QCOMPARE(before.at(0)->accessibleName(), u"Total 9"_s);
    QCOMPARE(line.stats().at(1).label, u"8 items"_s);
    line.setStats({});
    QVERIFY(line.stats().isEmpty());
    QVERIFY(!line.isOrderHeld());
    line.setOrderHeld(true);
    QVERIFY(line.isOrderHeld());
}

void TestSectionControls::headerUsesItsRoom_data()
{
    QTest::addColumn<QStringList>("filters");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("lines");
    const QStringList plain{u"All"_s, u"High CPU"_s, u"High Memory"_s, u"My Processes"_s, u"System"_s, u"Services"_s};
    const QStringList longer{u"Alle"_s,           u"Hohe CPU-Auslastung"_s, u"Hoher Speicherverbrauch"_s,
                             u"Meine Prozesse"_s, u"Systemprozesse"_s,      u"Laufende Dienste"_s};
    QTest::newRow("wide") << plain << 1232 << 1;
    QTest::newRow("two lists beside it") << plain << 872 << 1;
    QTest::newRow("the narrowest of the wide layout") << plain << 617 << 3;
    QTest::newRow("half a screen") << plain << 700 << 2;
    QTest::newRow("longer words") << longer << 1232 << 1;
    QTest::newRow("longer words, compact window") << longer << 1024 << 2;
    QTest::newRow("longer words, two lists beside it") << longer << 617 << 3;
    QTest::newRow("no filter") << QStringList() << 617 << 1;
}

void TestSectionControls::headerUsesItsRoom()
{
    QFETCH(QStringList, filters);
    QFETCH(int, width);
    QFETCH(int, lines);
    QWidget window;
    auto *column = new QVBoxLayout(&window);
    column->setContentsMargins(0, 0, 0, 0);
    auto *header = new SectionHeader(m_theme, u"Prozesse"_s);
    header->addSearch(u"Prozesse durchsuchen..."_s);
    if (!filters.isEmpty()) {
        header->addFilter(u"Filter"_s, filters);
    }
    header->addAutoRefresh();
    header->addRefresh();
    column->addWidget(header);
    column->addStretch();
    window.resize(width, 400);
    window.show();
    QCOMPARE(header->width(), width);

    QSet<int> middles;
    QList<QRect> places;
    for (int i = 0; i < header->layout()->count(); ++i) {
        const QRect place = header->layout()->itemAt(i)->geometry();
        QVERIFY(header->rect().contains(place));
        QVERIFY(place.width() > 0);
        for (const QRect &other : std::as_const(places)) {
            QVERIFY(!other.intersects(place));
        }
        places.append(place);
        middles.insert(place.center().y() / 10);
    }
    QCOMPARE(middles.size(), lines);
}

QTEST_MAIN(TestSectionControls)
#include "test_section_controls.moc"
