// What a screen reader gets of a terminal.

#include "TerminalEmulator/View/TerminalAccessible.h"
#include "TerminalEmulator/View/ViewFixture.h"

#include <QAccessible>

class TestTerminalAccessible : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheScreen();
    void mapsOffsetsAndPlaces();
    void tellsSelections();
    void tellsHowTextLooks();
    void findsWhatChanged_data();
    void findsWhatChanged();
};

void TestTerminalAccessible::readsTheScreen()
{
    ViewFixture fixture;
    fixture.view.feed("first\r\n漢字 two\r\n$ ");
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&fixture.view);
    QVERIFY(interface);
    QCOMPARE(interface->role(), QAccessible::Terminal);
    QVERIFY(interface->state().multiLine);
    QAccessibleTextInterface *text = interface->textInterface();
    QVERIFY(text);
    const QString all = text->text(0, text->characterCount());
    QVERIFY(all.startsWith(QStringLiteral("first\n漢字 two\n$ \n")));
    QCOMPARE(text->cursorPosition(), int(all.indexOf(QLatin1Char('$'))) + 2);
    int start = 0;
    int end = 0;
    QCOMPARE(text->textAtOffset(8, QAccessible::LineBoundary, &start, &end).trimmed(), QStringLiteral("漢字 two"));
}

void TestTerminalAccessible::mapsOffsetsAndPlaces()
{
    ViewFixture fixture;
    fixture.view.feed("first\r\n漢字 two\r\n");
    QAccessibleTextInterface *text = QAccessible::queryAccessibleInterface(&fixture.view)->textInterface();
    const int offset = static_cast<int>(text->text(0, text->characterCount()).indexOf(QLatin1Char('w')));
    const QPoint place = fixture.view.mapToGlobal(fixture.at(6, 1)); // two wide characters stand before it
    QVERIFY(text->characterRect(offset).contains(place));
    QCOMPARE(text->offsetAtPoint(place), offset);
    QCOMPARE(text->offsetAtPoint(fixture.view.mapToGlobal(fixture.at(30, 0))), 5);
}

void TestTerminalAccessible::tellsSelections()
{
    ViewFixture fixture;
    fixture.view.feed("first\r\nsecond\r\n");
    QAccessibleTextInterface *text = QAccessible::queryAccessibleInterface(&fixture.view)->textInterface();
    QCOMPARE(text->selectionCount(), 0);
    text->setSelection(0, 2, 8);
    QCOMPARE(fixture.view.selectedText(), QStringLiteral("rst\nse"));
    int start = 0;
    int end = 0;
    text->selection(0, &start, &end);
    QCOMPARE(start, 2);
    QCOMPARE(end, 8);
    text->removeSelection(0);
    QCOMPARE(text->selectionCount(), 0);
}

void TestTerminalAccessible::tellsHowTextLooks()
{
    ViewFixture fixture;
    fixture.view.feed("a \x1b[1;38;2;1;2;3;48;2;4;5;6m漢字 b\x1b[m c\r\n\x1b[7mnext");
    QAccessibleTextInterface *text = QAccessible::queryAccessibleInterface(&fixture.view)->textInterface();
    const QString plain = QStringLiteral("color:rgb(255,255,255);background-color:rgb(0,0,0);");
    int start = 0;
    int end = 0;
    QCOMPARE(text->attributes(3, &start, &end),
             QStringLiteral("color:rgb(1,2,3);background-color:rgb(4,5,6);font-weight:bold;"));
    QCOMPARE(text->text(start, end), QStringLiteral("漢字 b"));
    QCOMPARE(text->attributes(end, &start, &end), plain);
    QCOMPARE(text->text(start, end), QStringLiteral(" c\n"));
    QCOMPARE(text->attributes(end, &start, &end),
             QStringLiteral("color:rgb(0,0,0);background-color:rgb(255,255,255);"));
    QCOMPARE(text->attributes(text->characterCount(), &start, &end), plain);
    QCOMPARE(start, text->characterCount());
}

void TestTerminalAccessible::findsWhatChanged_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("changes"); // position, removed, inserted
    QTest::newRow("nothing") << "a\nb" << "a\nb" << "";
    QTest::newRow("typed") << "$ l\n\n" << "$ ls\n\n" << "3--s;";
    QTest::newRow("deleted") << "$ ls\n" << "$ l\n" << "3-s-;";
    QTest::newRow("replaced") << "50 %\n" << "60 %\n" << "0-5-6;";
    QTest::newRow("output below") << "$ ls\n\n\n" << "$ ls\nfile\n\n" << "5--file;";
    QTest::newRow("scrolled") << "a\nb\n$ x" << "$ x\nout\n$ " << "0-a|b|-;3--|out|$ ;";
}

void TestTerminalAccessible::findsWhatChanged()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QString, changes);
    QString told;
    for (const vt::TextChange &each : vt::TextChange::between(before, after)) {
        told += QStringLiteral("%1-%2-%3;").arg(each.position).arg(each.removed, each.inserted);
    }
    QCOMPARE(told.replace(QLatin1Char('\n'), QLatin1Char('|')), changes);
}

QTEST_MAIN(TestTerminalAccessible)
#include "test_terminal_accessible.moc"
