#include "Scene.h"

#include "TerminalEmulator/Engine/Regex.h"

// Selection, search, patterns and links.
class TestSelect : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void characters();
    void wordsAndLinesFollowTheWrap();
    void blocks();
    void selectionFollowsItsTextIntoTheHistory();
    void selectionFollowsItsTextInsideARegion_data();
    void selectionFollowsItsTextInsideARegion();
    void searchFindsWhatIsWrapped();
    void searchGoesRound();
    void patterns_data();
    void patterns();
    void patternsAreLinear();
    void links_data();
    void links();
    void hyperlinks();
};

void TestSelect::characters()
{
    Scene scene(10, 4);
    scene.feed("hello   \r\n\r\n  world\r\n\u6f22\u5b57");
    vt::Terminal &terminal = scene.terminal;
    terminal.startSelection({0, 2}, vt::SelectionKind::Character);
    QVERIFY(!terminal.selection());
    terminal.extendSelection({2, 3});
    QCOMPARE(terminal.selectedText(), std::string("llo\n\n  wo"));
    QVERIFY(terminal.isSelected({1, 9}));
    QVERIFY(!terminal.isSelected({2, 4}));
    terminal.extendSelection({0, 0});
    QCOMPARE(terminal.selectedText(), std::string("hel"));
    terminal.startSelection({3, 0}, vt::SelectionKind::Character);
    terminal.extendSelection({3, 3});
    QCOMPARE(terminal.selectedText(), std::string("\u6f22\u5b57"));
    terminal.selectAll();
    QCOMPARE(terminal.selectedText(), std::string("hello\n\n  world\n\u6f22\u5b57"));
    terminal.clearSelection();
    QCOMPARE(terminal.selectedText(), std::string());
}

void TestSelect::wordsAndLinesFollowTheWrap()
{
    Scene scene(10, 4);
    scene.feed("see /usr/share/doc (now)\r\nnext");
    vt::Terminal &terminal = scene.terminal;
    terminal.startSelection({0, 6}, vt::SelectionKind::Word);
    QCOMPARE(terminal.selectedText(), std::string("/usr/share/doc"));
    terminal.extendSelection({2, 1});
    QCOMPARE(terminal.selectedText(), std::string("/usr/share/doc (now"));
    terminal.setWordCharacters("");
    terminal.startSelection({0, 6}, vt::SelectionKind::Word);
    QCOMPARE(terminal.selectedText(), std::string("usr"));
    terminal.startSelection({1, 0}, vt::SelectionKind::Line);
    QCOMPARE(terminal.selectedText(), std::string("see /usr/share/doc (now)"));
}

void TestSelect::blocks()
{
    Scene scene(10, 4);
    scene.feed("abcdef\r\ngh\r\nmnopqr");
    scene.terminal.startSelection({0, 4}, vt::SelectionKind::Block);
    scene.terminal.extendSelection({2, 1});
    QCOMPARE(scene.terminal.selectedText(), std::string("bcde\nh\nnopq"));
    QVERIFY(!scene.terminal.isSelected({1, 5}));
}

void TestSelect::selectionFollowsItsTextIntoTheHistory()
{
    Scene scene(10, 3, 5);
    scene.feed("one\r\ntwo\r\n");
    scene.terminal.startSelection({1, 0}, vt::SelectionKind::Word);
    for (int line = 0; line < 5; ++line) {
        scene.feed("more\r\n");
    }
    QCOMPARE(scene.terminal.selectedText(), std::string("two"));
    scene.feed("\x1b[?1049h");
    QVERIFY(!scene.terminal.selection());
    scene.feed("\x1b[?1049l");
    QVERIFY(scene.terminal.selection());
    for (int line = 0; line < 5; ++line) {
        scene.feed("more\r\n");
    }
    QVERIFY(!scene.terminal.selection());
}

void TestSelect::selectionFollowsItsTextInsideARegion_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<QByteArray>("then");
    QTest::addColumn<QByteArray>("selected");
    const auto row = [](const char *name, int from, int to, const char *then, const char *selected) {
        QTest::newRow(name) << from << to << QByteArray(then) << QByteArray(selected);
    };
    // Six rows, "r1" to "r6"; the region is rows 2 to 5. Rows `from` to `to` are selected whole.
    row("a line feed", 3, 4, "\x1b[5;1H\n", "r3\nr4");
    row("reverse index", 3, 4, "\x1b[2;1H\x1bM", "r3\nr4");
    row("insert line", 3, 4, "\x1b[3;1H\x1b[L", "r3\nr4");
    row("insert line below", 3, 3, "\x1b[4;1H\x1b[L", "r3");
    row("delete line", 4, 5, "\x1b[3;1H\x1b[M", "r4\nr5");
    row("the first line leaves", 2, 3, "\x1b[S", "r3");
    row("the last line leaves", 4, 5, "\x1b[T", "r4");
    row("all leaves upwards", 2, 3, "\x1b[2S", "");
    row("all leaves downwards", 4, 5, "\x1b[9T", "");
    row("outside it stays", 6, 6, "\x1b[3S", "r6");
    row("it began above", 1, 2, "\x1b[2S", "r1");
    row("it ends below", 5, 6, "\x1b[2T", "r6");
    row("rows below a region at the top", 6, 6, "\x1b[1;5r\x1b[5;1H\n\n\n", "r6");
    row("rows in a region at the top", 3, 4, "\x1b[1;5r\x1b[5;1H\n\n\n", "r3\nr4");
    row("on the alternate screen nothing moves", 3, 4, "\x1b[?47h\x1b[2S\x1b[?47l", "r3\nr4");
    row("columns that scroll alone", 3, 3, "\x1b[?69h\x1b[5;9s\x1b[2S", "r3");
}

void TestSelect::selectionFollowsItsTextInsideARegion()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(QByteArray, then);
    QFETCH(QByteArray, selected);
    for (const int limit : {0, 2, 100}) {
        Scene scene(10, 6, limit);
        scene.feed("r1\r\nr2\r\nr3\r\nr4\r\nr5\r\nr6\x1b[2;5r");
        // The other way round it is the same.
        for (const bool down : {true, false}) {
            scene.terminal.startSelection({(down ? from : to) - 1, 0}, vt::SelectionKind::Line);
            scene.terminal.extendSelection({(down ? to : from) - 1, 3});
            if (down) {
                continue;
            }
            scene.feed(then.toStdString());
            const bool gone = limit < 3 && then.contains("[1;5r") && from == 3;
            if (!gone) {
                QCOMPARE(QByteArray::fromStdString(scene.terminal.selectedText()), selected);
            }
        }
    }
}

void TestSelect::searchFindsWhatIsWrapped()
{
    Scene scene(10, 4);
    scene.feed("Error: the disk is full\r\nan error at \u6f22");
    vt::Terminal &terminal = scene.terminal;
    QVERIFY(terminal.setSearch({"disk", false, false, false}));
    const auto hits = terminal.hits(terminal.firstLine(), terminal.lastLine());
    QCOMPARE(hits.size(), size_t{1});
    QCOMPARE(terminal.text(hits[0].first, hits[0].last), std::string("disk"));
    QVERIFY(terminal.setSearch({"ERROR", false, false, false}));
    QCOMPARE(terminal.hits(0, 9).size(), size_t{2});
    QVERIFY(terminal.setSearch({"Error", false, true, false}));
    QCOMPARE(terminal.hits(0, 9).size(), size_t{1});
    QVERIFY(terminal.setSearch({"is", false, true, true}));
    QCOMPARE(terminal.hits(0, 9).size(), size_t{1});
    QVERIFY(terminal.setSearch({"at \u6f22", false, true, false}));
    const auto wide = terminal.hits(0, 9);
    QCOMPARE(terminal.text(wide.at(0).first, wide.at(0).last), std::string("at \u6f22"));
}

void TestSelect::searchGoesRound()
{
    Scene scene(10, 3);
    scene.feed("x1\r\nx2 x3\r\nnone\r\nx4");
    vt::Terminal &terminal = scene.terminal;
    QVERIFY(terminal.setSearch({"x[0-9]", true, true, false}));
    vt::Position at{0, 0};
    QByteArray seen;
    for (int step = 0; step < 5; ++step) {
        const auto hit = terminal.findNext(at, true);
        QVERIFY(hit);
        seen += QByteArray::fromStdString(terminal.text(hit->first, hit->last));
        at = hit->first;
    }
    QCOMPARE(seen, "x2x3x4x1x2");
    seen.clear();
    for (int step = 0; step < 4; ++step) {
        const auto hit = terminal.findNext(at, false);
        seen += QByteArray::fromStdString(terminal.text(hit->first, hit->last));
        at = hit->first;
    }
    QCOMPARE(seen, "x1x4x3x2");
    QVERIFY(terminal.setSearch({"absent", false, false, false}));
    QVERIFY(!terminal.findNext({0, 0}, true));
    QVERIFY(!terminal.setSearch({"(", true, false, false}));
    QVERIFY(!terminal.findNext({0, 0}, true));
}

void TestSelect::patterns_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("match"); // "-" for none
    const auto row = [](const char *pattern, const char *text, const char *match) {
        QTest::newRow(pattern) << QString::fromUtf8(pattern) << QString::fromUtf8(text) << QString::fromUtf8(match);
    };
    row("b+", "abbbc", "bbb");
    row("b+?", "abbbc", "b");
    row("a|b|cd", "xcd", "cd");
    row("(ab|a)(c|bcd)", "xabcd", "abc");
    row("x*y", "xxxy", "xxxy");
    row("(a*)*b", "aaab", "aaab");
    row("^ab$", "ab", "ab");
    row("^b", "ab", "-");
    row("a{2,3}", "aaaa", "aaa");
    row("a{2}b", "aaab", "aab");
    row("a{2,}", "aaaa", "aaaa");
    row("(ab){2}", "ababab", "abab");
    row("[^a-c]+", "abcdef", "def");
    row("[]x]", "a]", "]");
    row("[a-]+", "b-a", "-a");
    row("\\d+\\.\\d+", "v 12.5!", "12.5");
    row("\\bword\\b", "sword word", "word");
    row("\\x41\\t?", "bA", "A");
    row("\\[\\w+\\]", "a [tag] b", "[tag]");
    row("gr(a|e)y", "GREY", "GREY");
    row("[A-Z]+", "abc", "abc");
    row("stra\u00dfe", "STRA\u1e9eE", "STRA\u1e9eE");
    row("a{,2}", "a{,2}", "a{,2}");
    row("colou?r", "color", "color");
    row("(?:x|y)z", "yz", "yz");
    row("a||b", "b", "");
}

void TestSelect::patterns()
{
    QFETCH(QString, pattern);
    QFETCH(QString, text);
    QFETCH(QString, match);
    const std::u32string subject = text.toStdU32String();
    const auto regex = vt::Regex::compile(pattern.toStdU32String(), false);
    QVERIFY(regex);
    const auto found = regex->find(subject, 0);
    QCOMPARE(found ? QString::fromStdU32String(subject.substr(found->first, found->second - found->first))
                   : QStringLiteral("-"),
             match);
}

void TestSelect::patternsAreLinear()
{
    const std::u32string text(20'000, U'a');
    for (const char32_t *pattern : {U"(a*)*c", U"(a|aa)+$x", U"(.*)(.*)(.*)(.*)(.*)x", U"(a?){30}a{30}b"}) {
        const auto regex = vt::Regex::compile(pattern, true);
        QVERIFY(regex);
        QVERIFY(!regex->find(text, 0));
    }
    for (const char32_t *pattern :
         {U"(a{1000}){1000}", U"((((a{99}){99}){99}){99}", U"[z-a]", U"a**{", U"+", U"(a", U"a)", U"\\"}) {
        const bool odd = std::u32string_view(pattern) == U"a**{";
        QCOMPARE(vt::Regex::compile(pattern, true).has_value(), odd);
    }
    QVERIFY(!vt::Regex::compile(std::u32string(200, U'(') + std::u32string(200, U')'), true));
}

void TestSelect::links_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("uri");
    const auto row = [](const char *text, int column, const char *uri) {
        QTest::newRow(text) << QString::fromUtf8(text) << column << QString::fromUtf8(uri);
    };
    row("see https://example.org/a?b=c#d.", 10, "https://example.org/a?b=c#d");
    row("(http://example.org/x_(y)) z", 12, "http://example.org/x_(y)");
    row("<https://example.org>", 5, "https://example.org");
    row("www.example.org, and", 3, "http://www.example.org");
    row("mailto:a@example.org", 0, "mailto:a@example.org");
    row("see https://example.org/a", 1, "");
    row("https://", 3, "");
    row("xhttps://example.org", 10, "");
    row("a long line https://example.org/that/goes/over/the/edge/of/the/row end", 45,
        "https://example.org/that/goes/over/the/edge/of/the/row");
}

void TestSelect::links()
{
    QFETCH(QString, text);
    QFETCH(int, column);
    QFETCH(QString, uri);
    Scene scene(40, 3);
    scene.feed(text.toStdString());
    const auto found = scene.terminal.linkAt({column / 40, column % 40});
    QCOMPARE(found ? QString::fromStdString(found->uri) : QString(), uri);
}

void TestSelect::hyperlinks()
{
    Scene scene(10, 3);
    scene.feed("a \x1b]8;id=1;https://example.org/\x1b\\text here\x1b]8;;\x1b\\ b");
    const auto found = scene.terminal.linkAt({1, 0});
    QVERIFY(found);
    QCOMPARE(found->uri, std::string("https://example.org/"));
    QCOMPARE(found->first, (vt::Position{0, 2}));
    QCOMPARE(found->last, (vt::Position{1, 0}));
    QVERIFY(!scene.terminal.linkAt({0, 0}));
    // Links that nothing shows any more are forgotten.
    for (int count = 0; count < 30'000; ++count) {
        scene.feed("\r\x1b]8;;https://example.org/" + std::to_string(count) + "\x07x");
    }
    QVERIFY(scene.terminal.memoryUse() < 4 << 20);
    QCOMPARE(scene.terminal.linkAt({1, 0})->uri, std::string("https://example.org/29999"));
}

QTEST_GUILESS_MAIN(TestSelect)
#include "test_select.moc"
