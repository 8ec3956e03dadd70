#include "Views/Components/SegmentedControl.h"
#include "Views/Theme/Theme.h"

#include <QAccessible>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
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

QTEST_MAIN(TestSectionControls)
#include "test_section_controls.moc"
