#include "Scene.h"

#include <chrono>

// Nothing that comes from the other side makes the engine large or slow, and scrollback costs what it should.
class TestLimits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void scrollbackIsCompact();
    void stringsWithoutEnd_data();
    void stringsWithoutEnd();
    void hugeCounts();
    void manyTitlesAndLinks();
    void linksWithoutEnd();
    void everythingFitsInOneCell();
};

void TestLimits::scrollbackIsCompact()
{
    Scene scene(120, 40, 10'000);
    for (int line = 0; line < 10'100; ++line) {
        std::string text;
        for (int word = 0; word < 12; ++word) {
            text += "\x1b[3" + std::to_string((line + word) % 8) + "m" + "word" +
                    std::to_string(10000 + line + word).substr(1, 5) + " ";
        }
        scene.feed(text + "\x1b[m\r\n");
    }
    QCOMPARE(scene.terminal.historySize(), 10'000);
    QVERIFY2(scene.terminal.memoryUse() < 4 << 20, qPrintable(QString::number(scene.terminal.memoryUse())));
    // Wide text costs two bytes a column.
    Scene wide(120, 40, 10'000);
    std::string han;
    for (char32_t code = 0x4e00; code < 0x4e00 + 60 * 97; code += 97) {
        vt::appendUtf8(han, code);
    }
    for (int row = 0; row < 10'100; ++row) {
        wide.feed(han + "\r\n");
    }
    QVERIFY2(wide.terminal.memoryUse() < 3 << 20, qPrintable(QString::number(wide.terminal.memoryUse())));
    QCOMPARE(wide.lineText(wide.terminal.firstLine()), QByteArray::fromStdString(han));
    vt::Line line;
    QVERIFY(scene.terminal.line(scene.terminal.firstLine(), line));
    QCOMPARE(scene.terminal.style(line.cells[0].style).foreground, vt::Color::indexed((10'100 - 39 - 10'000) % 8));
}

void TestLimits::stringsWithoutEnd_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("OSC") << QByteArray("\x1b]0;");
    QTest::newRow("DCS") << QByteArray("\x1bP$q");
    QTest::newRow("APC") << QByteArray("\x1b_");
    QTest::newRow("nested") << QByteArray("\x1b]0;\x1bP\x1b]8;;");
    QTest::newRow("CSI") << QByteArray("\x1b[");
}

void TestLimits::stringsWithoutEnd()
{
    QFETCH(QByteArray, start);
    Scene scene;
    scene.feed(start.toStdString());
    const std::string block(1 << 20, '1');
    for (int count = 0; count < 64; ++count) {
        scene.feed(block);
    }
    QVERIFY(scene.terminal.memoryUse() < 16 << 20);
    scene.feed("\x1b\\\x1b[mtext");
    QCOMPARE(scene.row(1), "text");
    QVERIFY(scene.terminal.title().size() <= 4096);
}

void TestLimits::hugeCounts()
{
    Scene scene(80, 24, 1000);
    scene.feed("x");
    const auto begin = std::chrono::steady_clock::now();
    for (const char final : std::string_view("@ABCDEFGHIJKLMPSTXZ`abdefg")) {
        scene.feed("\x1b[999999999" + std::string(1, final));
        scene.feed("\x1b[999999999;999999999;999999999;999999999" + std::string(1, final));
    }
    scene.feed("\x1b[?999999999h\x1b[999999999;1;1;999999999;999999999$x\x1b[65;0;0;99999;99999$x");
    scene.feed("\x1b[8;99999;99999t\x1b[999999999'}\x1b[999999999'~\x1b[38;2;999;999;999m\x1b[58:5:999m");
    scene.feed("\x1b[" + std::string(100'000, ';') + "m\x1b[" + std::string(100'000, ':') + "mz");
    QVERIFY(std::chrono::steady_clock::now() - begin < std::chrono::seconds(5));
    QCOMPARE(scene.terminal.columns(), 80);
}

void TestLimits::manyTitlesAndLinks()
{
    Scene scene;
    for (int count = 0; count < 20'000; ++count) {
        const std::string n = std::to_string(count);
        std::string bytes = "\x1b]2;";
        bytes += n;
        bytes += "\x07\x1b[22t\x1b]133;A\x07\x1b[>1u\x1b[#{\x1b]9;";
        bytes += n;
        bytes += "\x07";
        scene.feed(bytes);
    }
    QCOMPARE(scene.terminal.title(), std::string("19999"));
    QVERIFY(scene.terminal.marks().size() <= 20'000);
    QVERIFY(scene.terminal.takeEvents().size() <= 4096);
}

void TestLimits::linksWithoutEnd()
{
    // A long address of its own in each cell, and each stays in the scrollback.
    Scene scene(80, 24, 10'000);
    const std::string address = "http://host/" + std::string(8000, 'x');
    for (int count = 0; count < 10'000; ++count) {
        std::string bytes = "\x1b]8;id=";
        bytes += std::to_string(count);
        bytes += ';' + address + std::to_string(count) + "\x1b\\x";
        scene.feed(bytes);
    }
    QVERIFY2(scene.terminal.memoryUse() < 24 << 20, qPrintable(QString::number(scene.terminal.memoryUse())));
    vt::Line line;
    QVERIFY(scene.terminal.line(scene.terminal.firstLine(), line));
    QVERIFY(scene.terminal.link(scene.terminal.style(line.cells[0].style).link));
    // With the text that held them gone, there is room again.
    scene.feed("\x1b]8;;\x1b\\\x1b[2J\x1b[3J\x1b[H");
    for (int count = 0; count < 1000; ++count) {
        scene.feed("\x1b]8;;" + address + "\x1b\\x\b");
    }
    QVERIFY(scene.terminal.link(scene.style(1, 1).link));
}

void TestLimits::everythingFitsInOneCell()
{
    Scene scene(1, 1, 3);
    scene.feed("abc\u6f22\U0001f600e\u0301\x1b[5@\x1b[5P\x1b[L\x1b[M\t\b\x1b[Z\x1b"
               "6\x1b"
               "9\x1b[1;1r\x1b#8");
    QCOMPARE(scene.screen(), "E");
    scene.terminal.resize(0, -5);
    QCOMPARE(scene.terminal.columns(), 1);
    scene.terminal.resize(100'000, 2);
    QCOMPARE(scene.terminal.columns(), vt::Options::MaxColumns);
}

QTEST_GUILESS_MAIN(TestLimits)
#include "test_limits.moc"
