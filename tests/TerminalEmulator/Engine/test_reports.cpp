#include "Scene.h"

// What the terminal answers, and the modes and settings it answers about.
class TestReports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void titlesAreToldOnlyIfAllowed();
    void theClipboardIsShut();
    void whatIsSavedIsRestored();
    void sizeChangesAreAsked();
    void repliesDoNotPileUp();
};

void TestReports::answers_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("reply");
    const auto row = [](const char *input, const char *reply) {
        QTest::newRow(Scene::visible(input).constData()) << QByteArray(input) << QByteArray(reply);
    };
    row("\x1b[c", "^[[?65;1;2;6;9;15;16;17;18;21;22;28;29c");
    row("\x1b[>c", "^[[>64;390;0c");
    row("\x1b[=c", "^[P!|00000000^[\\");
    row("\x1b[5n", "^[[0n");
    row("\x1b[3;4H\x1b[6n", "^[[3;4R");
    row("\x1b[3;5r\x1b[?6h\x1b[2;4H\x1b[6n", "^[[2;4R");
    row("\x1b[3;4H\x1b[?6n", "^[[?3;4;1R");
    row("\x1b[?15n", "^[[?13n");
    row("\x1b[?63;12n", "^[P12!~0000^[\\");
    row("\x1b[>q", "^[P>|tarnwell(0.1)^[\\");
    row("\x1b[4h\x1b[4$p", "^[[4;1$y");
    row("\x1b[20$p", "^[[20;2$y");
    row("\x1b[1$p", "^[[1;4$y");
    row("\x1b[?2004h\x1b[?2004$p", "^[[?2004;1$y");
    row("\x1b[?1049$p", "^[[?1049;2$y");
    row("\x1b[?2027$p", "^[[?2027;3$y");
    row("\x1b[?7777$p", "^[[?7777;0$y");
    row("\x1b[62\"p\x1b[?6$p", "");
    row("\x1b[61\"p\x1b[?6n\x1b[65;1\"p\x1b[20$p", "^[[?1;1R^[[20;2$y");
    row("\x1b[64;1\"p\x1b[?95h\x1b[?95$p", "^[[?95;0$y");
    row("\x1b[1;3;4:3;38;5;77;48;2;1;2;3m\x1bP$qm\x1b\\", "^[P1$r0;1;3;4:3;38:5:77;48:2::1:2:3m^[\\");
    row("\x1b[2;4r\x1bP$qr\x1b\\", "^[P1$r2;4r^[\\");
    row("\x1b[?69h\x1b[2;4s\x1bP$qs\x1b\\", "^[P1$r2;4s^[\\");
    row("\x1b[4 q\x1bP$q q\x1b\\", "^[P1$r4 q^[\\");
    row("\x1b[1\"q\x1bP$q\"q\x1b\\", "^[P1$r1\"q^[\\");
    row("\x1b[63;1\"p\x1bP$q\"p\x1b\\", "^[P1$r63;1\"p^[\\");
    row("\x1bP$qzz\x1b\\", "^[P0$r^[\\");
    row("\x1bP+q436F\x1b\\", "^[P1+r436F=323536^[\\");
    row("\x1bP+q7878\x1b\\", "^[P0+r7878^[\\");
    row("\x1bP+q\nrm\x1b\\", "^[P0+r^[\\");
    row("\x1b[18t", "^[[8;10;40t");
    row("\x1b[14t", "^[[4;160;320t");
    row("\x1b[2t\x1b[11t", "^[[2t");
    row("\x1b]4;1;rgb:12/34/56\x07\x1b]4;1;?\x07", "^[]4;1;rgb:1212/3434/5656\\x07");
    row("\x1b]10;#f00\x1b\\\x1b]10;?\x1b\\", "^[]10;rgb:f0f0/0000/0000^[\\");
    row("\x1b]11;white;rgbi:0.5/0.5/0.5\x1b\\\x1b]11;?;?\x1b\\",
        "^[]11;rgb:ffff/ffff/ffff^[\\^[]12;rgb:c1c1/bbbb/bbbb^[\\");
    row("\x1b]5;0;CIEXYZ:0.5/0.5/0.5\x1b\\\x1b]4;256;?\x1b\\", "^[]4;256;rgb:dddd/b5b5/a0a0^[\\");
    row("\x1b]4;1;TekHVC:1/1/1;2;CIELuv:1/1/1\x1b\\\x1b]4;1;?;2;?\x1b\\",
        "^[]4;1;rgb:1a1a/1313/0f0f^[\\^[]4;2;rgb:1616/1414/0e0e^[\\");
    row("\x1b]4;1;rgb:0/0/0\x07\x1b]104;1\x07\x1b]4;1;?\x07", "^[]4;1;rgb:cdcd/0000/0000\\x07");
    row("\x1b G\x1b[5n", "\\x9b0n");
    row("\x1b G\x9b"
        "5n",
        "\\x9b0n");
    row("\x9b"
        "5n",
        "");
    row("\xc2\x9b"
        "5n",
        "^[[0n");
    row("\x1b[1$w", "^[P1$u1;1;1;@;@;@;0;2;@;BBBB^[\\");
    row("\x1b[2$w", "^[P2$u1/9/17/25/33^[\\");
    row("\x1b[>5u\x1b[?u", "^[[?5u");
    row("\x1b[>5u\x1b[=8;2u\x1b[?u\x1b[<u\x1b[?u", "^[[?13u^[[?0u");
    row("\x1b[>4;2m\x1b[?4m", "^[[>4;2m");
    row("\x1b[>1;0m\x1b[?1m\x1b[>1m\x1b[?1m\x1b[>n\x1b[?2m\x1b[>m\x1b[?2m\x1b[?9m", "^[[>1;0m^[[>1;2m^[[>2m^[[>2;2m");
    row("\x1b[>4;1f\x1b[?4g\x1b[>f\x1b[?4g", "^[[>4;1f^[[>4;0f");
    row("\x1bP$q*x\x1b\\\x1b[1*x\x1bP$q*x\x1b\\", "^[P1$r0*x^[\\^[P1$r1*x^[\\");
    row("\x1b[?10$p\x1b[?1014h\x1b[?1014$p", "^[[?10;4$y^[[?1014;3$y");
    row("\x1b[4 tx\x1bP$q t\x1b\\", "^[P1$r4 t^[\\");
    row("\x1b[#P\x1b]4;1;#fff\x07\x1b[#Q\x1b[#R\x1b]4;1;?\x07", "^[[?0;0#Q^[]4;1;rgb:cdcd/0000/0000\\x07");
    row("\x1b[?60$p", "^[[?60;4$y");
    row("\x1b[?53n\x1b[?56n", "^[[?50n^[[?57;1n");
    row("\x1b['|\x1b[1'z\x1b['|\x1b[2'z\x1b['|\x1b['|", "^[[0&w^[[1;0;1;1&w^[[1;0;1;1&w^[[0&w");
    row("\x1b[64\"p\x1b[5n", "\\x9b0n");
    row("\x1b[64;1\"p\x1b[5n", "^[[0n");
    row("\x1b[4;5H\x1b[?1049h\x1b[8;9H\x1b[?1049h\x1b[H\x1b[?1049l\x1b[6n\x1b[H\x1b[?1049l\x1b[6n", "^[[4;5R^[[4;5R");
    row("\x1b[x", "^[[2;1;1;128;128;1;0x");
}

void TestReports::answers()
{
    QFETCH(QByteArray, input);
    QFETCH(QByteArray, reply);
    Scene scene(40, 10);
    QCOMPARE(scene.ask(input.toStdString()), reply);
}

void TestReports::titlesAreToldOnlyIfAllowed()
{
    Scene shut;
    shut.feed("\x1b]2;secret\x07");
    QCOMPARE(shut.ask("\x1b[21t"), "^[]l^[\\");
    vt::Options options;
    options.allowTitleReports = true;
    Scene open(options);
    open.feed("\x1b]0;both\x07\x1b[22;0t\x1b]2;other\x1b\\");
    QCOMPARE(open.ask("\x1b[21t\x1b[20t"), "^[]lother^[\\^[]Lboth^[\\");
    QCOMPARE(open.ask("\x1b[23;0t\x1b[>1t\x1b[21t"), "^[]l626F7468^[\\");
    open.feed("\x1b[>1T\x1b]2;third\x07\x1b[22;0;3t\x1b]2;other\x07\x1b[22;0t\x1b]2;x\x07\x1b[23;0;3t");
    QCOMPARE(open.terminal.title(), std::string("third"));
    open.feed("\x1b[23;0;9t\x1b[22;0;99t\x1b[23;2t");
    QCOMPARE(open.terminal.title(), std::string("other"));
    // A title cannot carry anything that acts: control characters are no part of strings.
    open.feed("\x1b[>1T\x1b]2;a\rb\nc\x07");
    QCOMPARE(open.terminal.title(), std::string("abc"));
    // Nor in hexadecimal, where a half pair or anything else makes no title at all.
    open.feed("\x1b[>0t\x1b]2;41C2809B9C42\x07");
    QCOMPARE(open.terminal.title(), std::string("A\ufffd\ufffdB"));
    open.feed("\x1b]2;4\x07\x1b]2;4142434\x07\x1b]2;4g\x07\x1b]2;+1\x07");
    QCOMPARE(open.terminal.title(), std::string("A\ufffd\ufffdB"));
    std::string wide = "\x1b[>0T\x1b]2;a";
    for (int count = 0; count < 2000; ++count) {
        wide += "\u6f22";
    }
    open.feed(wide + "\x07");
    QCOMPARE(open.terminal.title().size(), size_t{1 + 4095 / 3 * 3});
}

void TestReports::theClipboardIsShut()
{
    Scene shut;
    QCOMPARE(shut.ask("\x1b]52;c;aGVsbG8=\x07\x1b]52;c;?\x07"), "");
    QVERIFY(shut.terminal.takeEvents().empty());
    vt::Options options;
    options.allowClipboardWrite = true;
    Scene write(options);
    QCOMPARE(write.ask("\x1b]52;c;aGVsbG8=\x07\x1b]52;c;?\x07"), "");
    const std::vector<vt::Event> events = write.terminal.takeEvents();
    QCOMPARE(events.size(), size_t{1});
    QCOMPARE(events[0].text, std::string("hello"));
    QCOMPARE(events[0].target, std::string("c"));
}

void TestReports::whatIsSavedIsRestored()
{
    Scene scene(40, 10);
    QCOMPARE(scene.ask("\x1b[?7;25s\x1b[?7;25l\x1b[?7;25r\x1b[?7$p\x1b[?25$p"), "^[[?7;1$y^[[?25;1$y");
    // DECRQPSR and DECRSPS, both ways.
    scene.feed("\x1b[4;7H\x1b[1;4m\x1b(0\x1b[?6h\x1b[4;7H");
    const std::string report = "\x1b[1$w";
    const QByteArray before = scene.ask(report);
    QByteArray raw = before;
    raw.replace("^[", "\x1b").replace("P1$u", "P1$t");
    scene.feed("\x1b[m\x1b(B\x1b[?6l\x1b[H").feed(raw.toStdString());
    QCOMPARE(scene.ask(report), before);
}

void TestReports::sizeChangesAreAsked()
{
    Scene fixed(40, 10);
    fixed.feed("\x1b[8;20;60t\x1b[?40h\x1b[?3h");
    QCOMPARE(fixed.terminal.columns(), 40);
    vt::Options options;
    options.allowResize = true;
    Scene free(options);
    free.feed("\x1b[8;20;60t");
    QCOMPARE(free.terminal.columns(), 60);
    QCOMPARE(free.terminal.rows(), 20);
    const std::vector<vt::Event> events = free.terminal.takeEvents();
    QCOMPARE(events.back().kind, vt::Event::Kind::Resized);
    free.feed("text\x1b[?3h");
    QCOMPARE(free.terminal.columns(), 60);
    free.feed("\x1b[?40h\x1b[?3h");
    QCOMPARE(free.terminal.columns(), 132);
    QCOMPARE(free.screen(), "");
    free.feed("kept\x1b[?95h\x1b[?3l");
    QCOMPARE(free.terminal.columns(), 80);
    QCOMPARE(free.screen(), "kept");
    // What maximizing remembers is void once the user has chosen a size.
    free.feed("\x1b[9;1t");
    QVERIFY(free.terminal.columns() > 80);
    free.terminal.resize(70, 30);
    free.feed("\x1b[9;0t");
    QCOMPARE(free.terminal.columns(), 70);
    free.feed("\x1b[9;1t\x1b"
              "c\x1b[8;30;70t\x1b[9;0t");
    QCOMPARE(free.terminal.columns(), 70);
    options.mostColumns = 100;
    Scene bounded(options);
    bounded.feed("\x1b[8;20;999t");
    QCOMPARE(bounded.terminal.columns(), 100);
}

void TestReports::repliesDoNotPileUp()
{
    Scene scene;
    std::string queries;
    for (int count = 0; count < 1000; ++count) {
        queries += "\x1b[c\x07";
    }
    for (int count = 0; count < 100; ++count) {
        scene.feed(queries);
    }
    QVERIFY(scene.terminal.takeReplies().size() <= 1 << 20);
    QVERIFY(scene.terminal.takeEvents().size() < 10);
}

QTEST_GUILESS_MAIN(TestReports)
#include "test_reports.moc"
