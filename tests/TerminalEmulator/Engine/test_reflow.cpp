#include "Scene.h"

#include <random>

// Changes of size: wrapped lines are laid out anew, and going back gives what was there.
class TestReflow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aWrappedLineJoinsAndCuts();
    void thereAndBackIsExact_data();
    void thereAndBackIsExact();
    void aLineWithoutEndIsCutAsItWouldBePrinted();
    void theCursorKeepsItsCharacter();
    void heightTakesFromAndGivesToTheHistory();
    void aScreenThatIsNotFullKeepsItsTop();
    void wideCharactersMoveWhole();
    void colouredRowsReachTheEdge();
    void theAlternateScreenIsOnlyCut();
    void selectionAndMarksMoveAlong();
    void marksFollowTheirLines();
    void linesDropOffAtTheLimit();

private:
    static QByteArray everything(const Scene &scene)
    {
        QByteArray out;
        for (int64_t line = scene.terminal.firstLine(); line <= scene.terminal.lastLine(); ++line) {
            out += scene.lineText(line) + '\n';
        }
        return out + QByteArray::number(scene.terminal.historySize()) + ' ' + scene.cursor();
    }
};

void TestReflow::aWrappedLineJoinsAndCuts()
{
    Scene scene(10, 4);
    scene.feed("abcdefghijklmno\r\nshort");
    QCOMPARE(scene.screen(), "abcdefghij|klmno|short");
    scene.terminal.resize(6, 4);
    QCOMPARE(scene.screen(), "abcdef|ghijkl|mno|short");
    scene.terminal.resize(20, 4);
    QCOMPARE(scene.screen(), "abcdefghijklmno|short");
    QCOMPARE(scene.cursor(), "2;6");
}

void TestReflow::thereAndBackIsExact_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("rows");
    for (const auto &[columns, rows] : {std::pair{40, 10},
                                        {39, 10},
                                        {41, 10},
                                        {17, 10},
                                        {3, 10},
                                        {200, 10},
                                        {40, 4},
                                        {40, 30},
                                        {23, 5},
                                        {61, 33},
                                        {2, 3}}) {
        QTest::addRow("%dx%d", columns, rows) << columns << rows;
    }
}

void TestReflow::thereAndBackIsExact()
{
    QFETCH(int, columns);
    QFETCH(int, rows);
    std::mt19937 random(7);
    for (int round = 0; round < 15; ++round) {
        Scene scene(40, 10, 5000);
        for (int line = static_cast<int>(random() % 60); line > 0; --line) {
            std::string text;
            for (int length = static_cast<int>(random() % 120); length > 0; --length) {
                switch (random() % 9) {
                case 0:
                    text += "\u6f22";
                    break;
                case 1:
                    text += "e\u0301";
                    break;
                case 2:
                    text += "\x1b[3" + std::to_string(random() % 8) + "m";
                    break;
                default:
                    text += static_cast<char>('a' + random() % 26);
                }
            }
            scene.feed(text + "\x1b[m\r\n");
        }
        scene.feed("prompt$ " + std::string(random() % 50, 'x'));
        const QByteArray before = everything(scene);
        scene.terminal.resize(columns, rows);
        scene.terminal.resize(40, 10);
        QCOMPARE(everything(scene), before);
    }
}

// Such a line is laid out in parts.
void TestReflow::aLineWithoutEndIsCutAsItWouldBePrinted()
{
    std::mt19937 random(11);
    std::string text;
    for (int i = 0; i < 120'000; ++i) {
        const auto kind = random() % 12;
        text += kind == 0 ? "\u6f22" : kind == 1 ? "e\u0301" : std::string(1, static_cast<char>('a' + random() % 26));
    }
    text += std::string(5'000, ' ') + "end";
    Scene scene(40, 10, 10'000);
    scene.feed(text);
    const QByteArray before = everything(scene);
    for (const int columns : {37, 61, 2}) {
        Scene printed(columns, 10, 10'000);
        printed.feed(text);
        scene.terminal.resize(columns, 10);
        if (columns > 21) { // otherwise its beginning has dropped off
            QCOMPARE(everything(scene), everything(printed));
            scene.terminal.resize(40, 10);
            QCOMPARE(everything(scene), before);
        } else {
            QCOMPARE(scene.screen(), printed.screen());
        }
    }
}

void TestReflow::theCursorKeepsItsCharacter()
{
    Scene scene(10, 5);
    scene.feed("0123456789abcde\x1b[1;8H");
    scene.terminal.resize(5, 5);
    QCOMPARE(scene.cursor(), "2;3");
    scene.feed("X");
    scene.terminal.resize(10, 5);
    QCOMPARE(scene.screen(), "0123456X89|abcde");
    // Behind a full row it waits to wrap, in any width.
    Scene full(10, 5);
    full.feed("0123456789");
    full.terminal.resize(5, 5);
    QVERIFY(full.terminal.cursor().pendingWrap);
    QCOMPARE(full.cursor(), "2;5");
    full.terminal.resize(20, 5);
    QCOMPARE(full.cursor(), "1;11");
}

void TestReflow::heightTakesFromAndGivesToTheHistory()
{
    Scene scene(10, 4);
    scene.feed("1\r\n2\r\n3\r\n4\r\n5\r\n6");
    QCOMPARE(scene.screen(), "3|4|5|6");
    scene.terminal.resize(10, 2);
    QCOMPARE(scene.screen(), "5|6");
    QCOMPARE(scene.terminal.historySize(), 4);
    scene.terminal.resize(10, 6);
    QCOMPARE(scene.screen(), "1|2|3|4|5|6");
    QCOMPARE(scene.terminal.historySize(), 0);
}

void TestReflow::aScreenThatIsNotFullKeepsItsTop()
{
    Scene scene(10, 4);
    scene.feed("1\r\n2\r\n3\r\n4\r\n5\x1b[2J\x1b[Ha\r\nb");
    QCOMPARE(scene.terminal.historySize(), 1);
    scene.terminal.resize(10, 8);
    QCOMPARE(scene.screen(), "a|b");
    scene.terminal.resize(10, 1);
    QCOMPARE(scene.screen(), "b");
    scene.terminal.resize(10, 4);
    QCOMPARE(scene.screen(), "a|b");
}

void TestReflow::wideCharactersMoveWhole()
{
    Scene scene(6, 4);
    scene.feed("ab\u6f22\u5b57\u6f22");
    scene.terminal.resize(5, 4);
    QCOMPARE(scene.screen(), "ab\u6f22|\u5b57\u6f22");
    scene.terminal.resize(3, 4);
    QCOMPARE(scene.screen(), "ab|\u6f22|\u5b57|\u6f22");
    scene.terminal.resize(8, 4);
    QCOMPARE(scene.screen(), "ab\u6f22\u5b57\u6f22");
}

void TestReflow::colouredRowsReachTheEdge()
{
    Scene scene(10, 3);
    scene.feed("\x1b[44mab\x1b[K\x1b[m\r\nplain");
    scene.terminal.resize(6, 3);
    QCOMPARE(scene.style(1, 6).background, vt::Color::indexed(4));
    QCOMPARE(scene.row(2), "plain");
    scene.terminal.resize(12, 3);
    QCOMPARE(scene.style(1, 12).background, vt::Color::indexed(4));
}

void TestReflow::theAlternateScreenIsOnlyCut()
{
    Scene scene(10, 4);
    scene.feed("main text wraps\x1b[?1049h\x1b[Hfull screen\x1b[4;10Hx");
    scene.terminal.resize(6, 3);
    QCOMPARE(scene.screen(), "full s|n");
    scene.feed("\x1b[?1049l");
    QCOMPARE(scene.screen(), "main t|ext wr|aps");
    QCOMPARE(scene.cursor(), "3;4");
}

void TestReflow::selectionAndMarksMoveAlong()
{
    Scene scene(20, 4);
    scene.feed("0123456789 word tail\r\n\x1b]133;A\x1b\\$ ls");
    scene.terminal.startSelection({0, 12}, vt::SelectionKind::Word);
    QCOMPARE(scene.terminal.selectedText(), "word");
    const uint32_t reflows = scene.terminal.reflowCount();
    scene.terminal.resize(13, 4);
    QVERIFY(scene.terminal.reflowCount() != reflows);
    QCOMPARE(scene.terminal.selectedText(), "word");
    QCOMPARE(scene.terminal.marks().at(0).position.line, 2);
    scene.feed("\r\n\r\n\r\n\r\n\r\n");
    QCOMPARE(scene.terminal.selectedText(), "word");
}

void TestReflow::marksFollowTheirLines()
{
    // Rows "0" to "5", a mark on "1" and "3"; the line each is on then, or nothing if it scrolled away.
    const auto marked = [](std::string_view bytes) {
        Scene scene(10, 6);
        scene
            .feed("0\r\n\x1b]133;A\x07"
                  "1\r\n2\r\n\x1b]133;C\x07"
                  "3\r\n4\r\n5")
            .feed(bytes);
        QByteArray out;
        for (const vt::Mark &mark : scene.terminal.marks()) {
            out += scene.lineText(mark.position.line) + mark.kind + ' ';
        }
        return out.trimmed();
    };
    QCOMPARE(marked(""), "1A 3C");
    QCOMPARE(marked("\x1b[2;5r\x1b[5H\n"), "3C"); // a region that scrolls up
    QCOMPARE(marked("\x1b[2;5r\x1b[2H\x1bM\x1bM"), "1A");
    QCOMPARE(marked("\x1b[1H\x1b[L"), "1A 3C");
    QCOMPARE(marked("\x1b[2H\x1b[M"), "3C");
    QCOMPARE(marked("\x1b[1;3r\x1b[3H\n\n"), "1A 3C"); // into the history, and what is below stays
    QCOMPARE(marked("\r\n\r\n\r\n\x1b[3J"), "3C");
    QCOMPARE(marked("\x1b[2;3H\x1b]133;A\x07"), "1A 3C"); // drawn again
    QCOMPARE(marked("\x1b[1H\x1b]133;D;0\x07"), "0D 1A 3C");
    QCOMPARE(marked("\x1b"
                    "c"),
             "");
}

void TestReflow::linesDropOffAtTheLimit()
{
    Scene scene(10, 2, 5);
    for (int line = 0; line < 20; ++line) {
        scene.feed(std::to_string(line) + "\r\n");
    }
    QCOMPARE(scene.terminal.historySize(), 5);
    QCOMPARE(scene.lineText(scene.terminal.firstLine()), "14");
    scene.terminal.resize(1, 2);
    QCOMPARE(scene.terminal.historySize(), 5);
    scene.terminal.setScrollback(2);
    QCOMPARE(scene.terminal.historySize(), 2);
    Scene none(4, 2, 0);
    none.feed("abcdefghijkl");
    none.terminal.resize(2, 2);
    QCOMPARE(none.terminal.historySize(), 0);
}

QTEST_GUILESS_MAIN(TestReflow)
#include "test_reflow.moc"
