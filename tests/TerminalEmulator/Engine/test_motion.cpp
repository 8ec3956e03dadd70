#include "Scene.h"

// Where the cursor goes: addressing, margins, origin mode, tabs, reverse wrap, save and restore.
class TestMotion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsAt_data();
    void endsAt();
    void scrollingKeepsToTheMargins();
    void saveAndRestoreKeepMoreThanThePlace();
    void doubleWidthRowsHaveHalfTheColumns();
};

void TestMotion::endsAt_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("cursor");
    const auto row = [](const char *name, const char *input, const char *cursor) {
        QTest::newRow(name) << QByteArray(input) << QByteArray(cursor);
    };
    // 20 columns, 10 rows. MARGINS: rows 3 to 7, columns 5 to 12.
#define MARGINS "\x1b[?69h\x1b[5;12s\x1b[3;7r"
    row("address", "\x1b[4;9H", "4;9");
    row("address beyond the edges", "\x1b[99;99H", "10;20");
    row("zero means one", "\x1b[0;0f", "1;1");
    row("up stops at the top margin", MARGINS "\x1b[5;6H\x1b[9A", "3;6");
    row("up from above the margins", MARGINS "\x1b[2;6H\x1b[9A", "1;6");
    row("down stops at the bottom margin", MARGINS "\x1b[5;6H\x1b[9B", "7;6");
    row("forward stops at the right margin", MARGINS "\x1b[5;6H\x1b[99C", "5;12");
    row("forward beyond the margin", MARGINS "\x1b[5;15H\x1b[99C", "5;20");
    row("back stops at the left margin", MARGINS "\x1b[5;6H\x1b[99D", "5;5");
    row("back left of the margin", MARGINS "\x1b[5;3H\x1b[99D", "5;1");
    row("return goes to the left margin", MARGINS "\x1b[5;9H\r", "5;5");
    row("return left of the margin", MARGINS "\x1b[5;3H\r", "5;1");
    row("return in origin mode", MARGINS "\x1b[?6h\x1b[?69l\x1b[3;9H\r", "5;1");
    row("origin mode addresses inside", MARGINS "\x1b[?6h\x1b[2;3H", "4;7");
    row("origin mode clamps", MARGINS "\x1b[?6h\x1b[99;99H", "7;12");
    row("next line", "\x1b[4;9H\x1b[2E", "6;1");
    row("previous line", "\x1b[4;9H\x1b[2F", "2;1");
    row("column absolute", "\x1b[4;9H\x1b[3G", "4;3");
    row("column by HPA", "\x1b[4;9H\x1b[3`", "4;3");
    row("column in origin mode", MARGINS "\x1b[?6h\x1b[3G", "3;7");
    row("row absolute", "\x1b[4;9H\x1b[7d", "7;9");
    row("row relative", "\x1b[4;9H\x1b[2e", "6;9");
    row("column relative", "\x1b[4;9H\x1b[2a", "4;11");
    row("tab", "\x1b[1;2H\t", "1;9");
    row("tabs end at the edge", "\x1b[9I", "1;20");
    row("a tab stops at the right margin", MARGINS "\x1b[1;10H\t", "1;12");
    row("tabs at the edge keep the pending wrap", "\x1b[1;20Hx\ty\x1b[2;20Hx\x1b[Iy", "3;2");
    row("tab back", "\x1b[1;18H\x1b[2Z", "1;9");
    row("tab stop set", "\x1b[1;5H\x1bH\r\t", "1;5");
    row("tab stop cleared", "\x1b[1;9H\x1b[g\r\t", "1;17");
    row("all tab stops cleared", "\x1b[3g\r\t", "1;20");
    row("tab stops each eight", "\x1b[3g\x1b[?5W\r\t", "1;9");
    row("index",
        "\x1b[4;9H\x1b"
        "D",
        "5;9");
    row("next line by NEL",
        "\x1b[4;9H\x1b"
        "E",
        "5;1");
    row("reverse index", "\x1b[4;9H\x1bM", "3;9");
    row("a line feed outside the columns stays", MARGINS "\x1b[7;2H\n", "7;2");
    row("new line mode", "\x1b[20h\x1b[4;9H\n", "5;1");
    row("backspace does not wrap", "\x1b[2;1H\b", "2;1");
    row("reverse wrap", "\x1b[?45h\x1b[2;1H\b", "1;20");
    row("reverse wrap to the right margin", "\x1b[?45h" MARGINS "\x1b[5;5H\b", "4;12");
    row("reverse wrap stops at a line feed", "\x1b[?45hab\r\n\b\b", "2;1");
    row("reverse wrap goes over autowrap",
        "\x1b[?45h"
        "123456789012345678901\b\b",
        "1;20");
    row("extended reverse wrap does not care",
        "\x1b[?1045h"
        "ab\r\n\b\b",
        "1;19");
    row("reverse wrap from the top to the bottom", "\x1b[?1045h\x1b[H\b", "10;20");
    row("a change of margins goes home", "\x1b[4;9H\x1b[2;5r", "1;1");
    row("margins that make no sense are ignored", "\x1b[4;9H\x1b[5;5r", "4;9");
    row("back index at the edge scrolls",
        MARGINS "\x1b[4;5H\x1b"
                "6",
        "4;5");
    row("forward index moves",
        "\x1b[4;9H\x1b"
        "9",
        "4;10");
    row("the alternate screen has its own saved cursor",
        "\x1b[2;2H\x1b[?1049h\x1b[5;5H\x1b"
        "7\x1b[?1049l",
        "2;2");
    row("VT52 addressing", "\x1b[?2l\x1bY#'", "4;8");
    row("VT52 and back",
        "\x1b[?2l\x1b"
        "B\x1b<\x1b[2;2H",
        "2;2");
#undef MARGINS
}

void TestMotion::endsAt()
{
    QFETCH(QByteArray, input);
    QFETCH(QByteArray, cursor);
    Scene scene(20, 10);
    scene.feed(input.toStdString());
    QCOMPARE(scene.cursor(), cursor);
}

void TestMotion::scrollingKeepsToTheMargins()
{
    const std::string_view lines = "a1111\r\nb2222\r\nc3333\r\nd4444\r\ne5555";
    Scene scene(6, 5);
    scene.feed(lines).feed("\x1b[2;4r\x1b[4;1H\n");
    QCOMPARE(scene.screen(), "a1111|c3333|d4444||e5555");
    scene.feed("\x1b[2;1H\x1bM");
    QCOMPARE(scene.screen(), "a1111||c3333|d4444|e5555");
    QCOMPARE(scene.terminal.historySize(), 0);
    Scene box(6, 5);
    box.feed(lines).feed("\x1b[?69h\x1b[2;3s\x1b[2;4r\x1b[4;2H\n");
    QCOMPARE(box.screen(), "a1111|b3322|c4433|d  44|e5555");
    box.feed("\x1b[T");
    QCOMPARE(box.screen(), "a1111|b  22|c3333|d4444|e5555");
    // Wide characters come whole into rows that had other ones beside.
    Scene wide(8, 3);
    wide.feed("abc\u6f22fg\r\nab\u5b57\x1b[?69h\x1b[2;7s\x1b[1;2H\x1b[S");
    QCOMPARE(wide.screen(), "ab\u5b57|a");
    Scene top(6, 5);
    top.feed(lines).feed("\x1b[1;3r\x1b[S");
    QCOMPARE(top.terminal.historySize(), 1);
    QCOMPARE(top.lineText(top.terminal.firstLine()), "a1111");
}

void TestMotion::saveAndRestoreKeepMoreThanThePlace()
{
    Scene scene(10, 5);
    scene.feed("\x1b[2;3H\x1b[1;31m\x1b(0\x1b"
               "7\x1b[m\x1b(B\x1b[5;5H\x1b"
               "8q");
    QCOMPARE(scene.row(2), "  \u2500");
    QVERIFY(scene.style(2, 3).has(vt::Style::Bold));
    scene.feed("\x1b[!p\x1b[4;4H\x1b"
               "8");
    QCOMPARE(scene.cursor(), "1;1");
    scene.feed("\x1b[2J\x1b[1;6Hvwxyz\x1b"
               "7\x1b[H\x1b"
               "8!");
    QCOMPARE(scene.row(2), "!");
}

void TestMotion::doubleWidthRowsHaveHalfTheColumns()
{
    Scene scene(10, 3);
    scene.feed("\x1b#6abcdefg");
    QCOMPARE(scene.screen(), "abcde|fg");
    scene.feed("\x1b[1;9H");
    scene.feed("\x1b#5");
    QCOMPARE(scene.cursor(), "1;9");
}

QTEST_GUILESS_MAIN(TestMotion)
#include "test_motion.moc"
