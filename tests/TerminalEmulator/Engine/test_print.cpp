#include "Scene.h"

#include <iterator>
#include <random>

// How text gets to the screen: wrapping, insert mode, wide characters at the edges, tabs.
class TestPrint : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeTextIsLikeItsBytes_data();
    void wholeTextIsLikeItsBytes();
    void theLastColumnHoldsTheWrapBack();
    void withoutAutowrapTheLastColumnIsOverwritten();
    void insertModeShiftsTheRest();
    void aWideCharacterIsNeverCut();
    void overwritingHalfOfAWideCharacterRemovesIt();
    void repeatIsBoundedAndFollowsTheMargins();
    void lineDrawingAndShifts();
    void writtenSpacesDifferFromUntouchedCells();
};

void TestPrint::theLastColumnHoldsTheWrapBack()
{
    Scene scene(5, 3);
    scene.feed("abcde");
    QCOMPARE(scene.cursor(), "1;5");
    QVERIFY(scene.terminal.cursor().pendingWrap);
    scene.feed("\r\nx");
    QCOMPARE(scene.screen(), "abcde|x");
    scene.feed("\x1b[2J\x1b[Habcdefg");
    QCOMPARE(scene.screen(), "abcde|fg");
    scene.feed("\x1b[H12345\b*6");
    QCOMPARE(scene.row(1), "123*6");
}

void TestPrint::withoutAutowrapTheLastColumnIsOverwritten()
{
    Scene scene(5, 3);
    scene.feed("\x1b[?7labcdefgh");
    QCOMPARE(scene.screen(), "abcdh");
    QCOMPARE(scene.cursor(), "1;5");
    scene.feed("\x1b[?7h\x1b[5Gx");
    scene.feed("y");
    QCOMPARE(scene.screen(), "abcdx|y");
}

void TestPrint::insertModeShiftsTheRest()
{
    Scene scene(8, 2);
    scene.feed("abcdefgh\x1b[1;3H\x1b[4hXY\x1b[4l-");
    QCOMPARE(scene.row(1), "abXY-def");
}

void TestPrint::aWideCharacterIsNeverCut()
{
    Scene scene(5, 3);
    scene.feed("abcd\u6f22x");
    QCOMPARE(scene.screen(), "abcd|\u6f22x");
    QVERIFY(scene.terminal.cell(0, 4).isEmpty());
    QVERIFY(scene.terminal.cell(1, 0).isWide());
    QVERIFY(scene.terminal.cell(1, 1).isTail());
    QCOMPARE(scene.cursor(), "2;4");
    Scene narrow(1, 2);
    narrow.feed("\u6f22\u6f22");
    QCOMPARE(narrow.screen(), "\u6f22|\u6f22");
}

void TestPrint::overwritingHalfOfAWideCharacterRemovesIt()
{
    Scene scene;
    scene.feed("\u6f22\u5b57\x1b[1;2Hx");
    QCOMPARE(scene.row(1), " x\u5b57");
    scene.feed("\x1b[1;3Hy");
    QCOMPARE(scene.row(1), " xy");
    scene.feed("\x1b[2K\r\u6f22\u5b57\x1b[1;2H\x1b[X");
    QCOMPARE(scene.row(1), "  \u5b57");
    scene.feed("\x1b[2K\r\u6f22\u5b57\x1b[1;2H\x1b[P");
    QCOMPARE(scene.row(1), " \u5b57");
    scene.feed("\x1b[2K\r\u6f22\u5b57\x1b[1;2H\x1b[@");
    QCOMPARE(scene.row(1), "   \u5b57");
}

void TestPrint::repeatIsBoundedAndFollowsTheMargins()
{
    Scene scene(6, 3);
    scene.feed("ab\x1b[3b");
    QCOMPARE(scene.row(1), "abbbb");
    scene.feed("\x1b[2J\x1b[?69h\x1b[2;4s\x1b[1;2Hx\x1b[3b\x1b[?69l");
    QCOMPARE(scene.screen(), " xxx| x");
    scene.feed("\x1b[99999999b");
    QVERIFY(scene.terminal.historySize() <= 6);
}

void TestPrint::lineDrawingAndShifts()
{
    Scene scene;
    scene.feed("\x1b(0lqk\x1b(Blqk");
    QCOMPARE(scene.row(1), "\u250c\u2500\u2510lqk");
    scene.feed("\r\n\x1b)0a\x0eqq\x0f"
               "b");
    QCOMPARE(scene.row(2), "a\u2500\u2500b");
    scene.feed("\r\n\x1b*0\x1bNxx\x1b(A#");
    QCOMPARE(scene.row(3), "\u2502x\u00a3");
}

void TestPrint::writtenSpacesDifferFromUntouchedCells()
{
    Scene scene;
    scene.feed("a b\x1b[1;6Hc\x1b[1;1H\x1b[X");
    QCOMPARE(scene.row(1, true), ". b..c");
}

void TestPrint::wholeTextIsLikeItsBytes_data()
{
    QTest::addColumn<QByteArray>("modes");
    QTest::newRow("plain") << QByteArray();
    QTest::newRow("between margins") << QByteArray("\x1b[?69h\x1b[3;9s\x1b[2;4r\x1b[3;4H");
    QTest::newRow("without wrapping") << QByteArray("\x1b[?7l");
    QTest::newRow("inserting") << QByteArray("\x1b[4h");
    QTest::newRow("another set") << QByteArray("\x1b(0");
    QTest::newRow("double width") << QByteArray("\x1b#6");
}

void TestPrint::wholeTextIsLikeItsBytes()
{
    QFETCH(QByteArray, modes);
    // Narrow, wide, joining and malformed ones, which a whole text takes in runs and single bytes do not.
    static constexpr std::string_view Pieces[] = {"a",
                                                  "longer ascii text",
                                                  "\u00e9",
                                                  "\u2500\u2500",
                                                  "\u6f22\u5b57",
                                                  "\uac00",
                                                  "\u1100\u1161",
                                                  "\U0001f600",
                                                  "\U0001f1e9\U0001f1ea",
                                                  "\U0001f469\u200d\U0001f4bb",
                                                  "\u2764\ufe0f",
                                                  "e\u0301",
                                                  "\u0301",
                                                  "\ufdd0\uffff",
                                                  "\xe6\xbc",
                                                  "\xc3",
                                                  "\xed\xa0\x80",
                                                  "\r\n",
                                                  "\x1b[2;6H",
                                                  "\b",
                                                  "\x1b[1m",
                                                  "\x1b[K",
                                                  "\xc2\x85",
                                                  "\u0600"};
    std::minstd_rand random(7);
    for (int round = 0; round < 100; ++round) {
        std::string text;
        for (int count = 0; count < 40; ++count) {
            text += Pieces[random() % std::size(Pieces)];
        }
        Scene whole(12, 4, 50);
        Scene single(12, 4, 50);
        whole.feed(modes.toStdString() + text);
        single.feed(modes.toStdString());
        for (const char each : text) {
            single.feed({&each, 1});
        }
        QCOMPARE(whole.cursor(), single.cursor());
        QCOMPARE(whole.terminal.lastLine(), single.terminal.lastLine());
        for (int64_t line = whole.terminal.firstLine(); line <= whole.terminal.lastLine(); ++line) {
            QVERIFY2(whole.lineText(line, true) == single.lineText(line, true), Scene::visible(text).constData());
        }
    }
}

QTEST_GUILESS_MAIN(TestPrint)
#include "test_print.moc"
