#include "Scene.h"

// Erasing, inserting, deleting, protection and rectangles.
class TestEdit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void leaves_data();
    void leaves();
    void erasingTakesTheBackground();
    void rectanglesCanBeCheckedByChecksum();
    void attributesOfARectangleAndOfAStream();
    void theStatusLineLeavesThePageAlone();
};

void TestEdit::leaves_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("screen");
    const auto row = [](const char *name, const char *input, const char *screen) {
        QTest::newRow(name) << QByteArray(input) << QByteArray(screen);
    };
    // 8 columns, 4 rows, filled with TEXT.
#define TEXT "abcdefgh\r\nijklmnop\r\nqrstuvwx\r\nyzABCDEF"
    row("erase to the end of the line", TEXT "\x1b[2;4H\x1b[K", "abcdefgh|ijk|qrstuvwx|yzABCDEF");
    row("erase to the start of the line", TEXT "\x1b[2;4H\x1b[1K", "abcdefgh|    mnop|qrstuvwx|yzABCDEF");
    row("erase the line", TEXT "\x1b[2;4H\x1b[2K", "abcdefgh||qrstuvwx|yzABCDEF");
    row("erase below", TEXT "\x1b[2;4H\x1b[J", "abcdefgh|ijk");
    row("erase above", TEXT "\x1b[2;4H\x1b[1J", "|    mnop|qrstuvwx|yzABCDEF");
    row("erase characters", TEXT "\x1b[2;4H\x1b[3X", "abcdefgh|ijk   op|qrstuvwx|yzABCDEF");
    row("erase more characters than there are", TEXT "\x1b[2;4H\x1b[99X", "abcdefgh|ijk|qrstuvwx|yzABCDEF");
    row("insert characters", TEXT "\x1b[2;4H\x1b[2@", "abcdefgh|ijk  lmn|qrstuvwx|yzABCDEF");
    row("delete characters", TEXT "\x1b[2;4H\x1b[2P", "abcdefgh|ijknop|qrstuvwx|yzABCDEF");
    row("deleting moves a wide character whole", "abcdef\u6f22\x1b[1;1H\x1b[P", "bcdef\u6f22");
    row("inserting pushes half of one out", "abcdef\u6f22\x1b[1;1H\x1b[@", " abcdef");
    row("insert a line", TEXT "\x1b[2;4H\x1b[L", "abcdefgh||ijklmnop|qrstuvwx");
    row("delete a line", TEXT "\x1b[2;4H\x1b[M", "abcdefgh|qrstuvwx|yzABCDEF");
    row("insert characters inside the margins", TEXT "\x1b[?69h\x1b[2;6s\x1b[2;4H\x1b[9@",
        "abcdefgh|ijk   op|qrstuvwx|yzABCDEF");
    row("delete characters inside the margins", TEXT "\x1b[?69h\x1b[2;6s\x1b[2;4H\x1b[P",
        "abcdefgh|ijkmn op|qrstuvwx|yzABCDEF");
    row("not outside of them", TEXT "\x1b[?69h\x1b[2;6s\x1b[2;8H\x1b[P\x1b[@\x1b[L\x1b[M",
        "abcdefgh|ijklmnop|qrstuvwx|yzABCDEF");
    row("delete lines inside the margins", TEXT "\x1b[?69h\x1b[2;6s\x1b[2;4H\x1b[M",
        "abcdefgh|irstuvop|qzABCDwx|y     EF");
    row("scroll left", TEXT "\x1b[2 @", "cdefgh|klmnop|stuvwx|ABCDEF");
    row("scroll right", TEXT "\x1b[2 A", "  abcdef|  ijklmn|  qrstuv|  yzABCD");
    row("not from outside the margins", TEXT "\x1b[?69h\x1b[2;6s\x1b[2;3r\x1b[1;4H\x1b[ @\x1b[2;8H\x1b[ A",
        "abcdefgh|ijklmnop|qrstuvwx|yzABCDEF");
    row("inside them only what is there", TEXT "\x1b[?69h\x1b[2;6s\x1b[2;3r\x1b[2;4H\x1b[2 @",
        "abcdefgh|ilmn  op|qtuv  wx|yzABCDEF");
    row("insert columns", TEXT "\x1b[2;4H\x1b[2'}", "abc  def|ijk  lmn|qrs  tuv|yzA  BCD");
    row("delete columns", TEXT "\x1b[2;4H\x1b[2'~", "abcfgh|ijknop|qrsvwx|yzADEF");
    row("selective erase spares what is protected", "ab\x1b[1\"qcd\x1b[0\"qef\x1b[?2K", "  cd");
    row("plain erase does not", "ab\x1b[1\"qcd\x1b[0\"qef\x1b[2K", "");
    row("plain erase spares what SPA guards", "ab\x1bVcd\x1bWef\x1b[2K", "  cd");
    row("selective erase does not", "ab\x1bVcd\x1bWef\x1b[?2J", "");
    row("fill", TEXT "\x1b[42;2;3;3;5$x", "abcdefgh|ij***nop|qr***vwx|yzABCDEF");
    row("erase a rectangle", TEXT "\x1b[2;3;3;5$z", "abcdefgh|ij   nop|qr   vwx|yzABCDEF");
    row("erase a rectangle selectively", "ab\x1b[1\"qcd\x1b[0\"qef\x1b[1;1;1;8${", "  cd");
    row("copy", TEXT "\x1b[1;1;2;3;1;3;5$v", "abcdefgh|ijklmnop|qrstabcx|yzABijkF");
    row("copy over itself", TEXT "\x1b[1;1;3;8;1;2;1$v", "abcdefgh|abcdefgh|ijklmnop|qrstuvwx");
    row("a rectangle of no size", TEXT "\x1b[3;1;2;8$z", "abcdefgh|ijklmnop|qrstuvwx|yzABCDEF");
    row("a rectangle counts from the origin", TEXT "\x1b[2;3r\x1b[?6h\x1b[1;1;9;2$z",
        "abcdefgh|  klmnop|  stuvwx|yzABCDEF");
    row("alignment pattern", TEXT "\x1b[2;3r\x1b#8", "EEEEEEEE|EEEEEEEE|EEEEEEEE|EEEEEEEE");
    row("full reset",
        TEXT "\x1b"
             "c",
        "");
#undef TEXT
}

void TestEdit::leaves()
{
    QFETCH(QByteArray, input);
    QFETCH(QByteArray, screen);
    Scene scene(8, 4);
    scene.feed(input.toStdString());
    QCOMPARE(scene.screen(), screen);
}

void TestEdit::erasingTakesTheBackground()
{
    Scene scene(6, 3);
    scene.feed("\x1b[1;41mab\x1b[K\x1b[2;1H\x1b[3@\x1b[3;1H\n");
    for (const auto &[row, column] : {std::pair{1, 1}, {1, 3}, {3, 6}}) {
        QCOMPARE(scene.style(row, column).background, vt::Color::indexed(1));
    }
    QVERIFY(!scene.style(3, 2).has(vt::Style::Bold));
    QVERIFY(scene.terminal.cell(2, 2).isEmpty());
}

void TestEdit::rectanglesCanBeCheckedByChecksum()
{
    Scene scene(10, 4);
    scene.feed("AB\x1b[1mC\x1b[m");
    QCOMPARE(scene.ask("\x1b[7;0;1;1;1;1*y"), "^[P7!~FFBF^[\\"); // 0x10000 - 'A'
    QCOMPARE(scene.ask("\x1b[8;0;1;1;1;2*y"), "^[P8!~FF7D^[\\");
    QCOMPARE(scene.ask("\x1b[9;0;1;3;1;3*y"), "^[P9!~FF3D^[\\");         // bold weighs 128
    QCOMPARE(scene.ask("\x1b[1;0;2;1;2;1*y"), "^[P1!~FFE0^[\\");         // an empty cell is a space
    QCOMPARE(scene.ask("\x1b[1;0;1;1;1;9*y"), "^[P1!~FEBA^[\\");         // trailing ones do not count
    QCOMPARE(scene.ask("\x1b[3#y\x1b[2;0;1;1;1;3*y"), "^[P2!~00C6^[\\"); // neither negated nor with renditions
}

void TestEdit::attributesOfARectangleAndOfAStream()
{
    Scene scene(6, 3);
    scene.feed("aaaaaa\r\nbbbbbb\r\ncccccc\x1b[2*x\x1b[1;2;3;3;1$r");
    QVERIFY(!scene.style(2, 1).has(vt::Style::Bold));
    QVERIFY(scene.style(2, 2).has(vt::Style::Bold));
    QVERIFY(!scene.style(2, 4).has(vt::Style::Bold));
    scene.feed("\x1b[1*x\x1b[1;2;2;3;7$t");
    QVERIFY(!scene.style(1, 1).has(vt::Style::Inverse));
    QVERIFY(scene.style(1, 6).has(vt::Style::Inverse));
    QVERIFY(scene.style(2, 1).has(vt::Style::Inverse));
    QVERIFY(!scene.style(2, 4).has(vt::Style::Inverse));
    scene.feed("\x1b[1;2;2;3;7$t");
    QVERIFY(!scene.style(2, 1).has(vt::Style::Inverse));
    // Without attributes it takes them off, and leaves the colours.
    scene.feed("\x1b[H\x1b[1;4;31;42mx\x1b[1;1;1;1$r");
    QVERIFY(!scene.style(1, 1).has(vt::Style::Bold));
    QCOMPARE(scene.style(1, 1).underline, vt::Underline::None);
    QCOMPARE(scene.style(1, 1).foreground, vt::Color::indexed(1));
}

void TestEdit::theStatusLineLeavesThePageAlone()
{
    Scene scene(8, 4);
    scene.feed("abcdefgh\r\nijk\x1b[2$~\x1b[1$}");
    scene.feed("text\u6f22\x1b[H\x1b[2Jmore\r\n\n\n\n\x1b[2;3r\x1b[?6h\x1b[?1049h\x1b[L\x1b[5 @\x1b[42$x\x1b#8\x1bM");
    QCOMPARE(scene.screen(), "abcdefgh|ijk");
    QCOMPARE(scene.cursor(), "2;4");
    QVERIFY(!scene.terminal.isAlternateScreen());
    scene.feed("\x1b[0$}l\x1b[1;1Hx");
    QCOMPARE(scene.screen(), "xbcdefgh|ijkl");
    scene.feed("\x1b[1$}lost\x1b[!py"); // a soft reset leaves it
    QCOMPARE(scene.screen(), "xycdefgh|ijkl");
}

QTEST_GUILESS_MAIN(TestEdit)
#include "test_edit.moc"
