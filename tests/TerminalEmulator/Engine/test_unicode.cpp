#include "Scene.h"

#include "TerminalEmulator/Engine/Unicode.h"

#include <QFile>

// Columns, grapheme clusters and UTF-8.
class TestUnicode : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void breaksAsUnicodeTests();
    void columns_data();
    void columns();
    void malformedBytesAreReplacedPart_data();
    void malformedBytesAreReplacedPart();
    void marksJoinTheCharacterBefore();
    void tenMillionMarksAreOneCharacter();
    void clustersSurviveScrollingAndSweeping();
};

/// GraphemeBreakTest.txt of the Unicode database, all of it.
void TestUnicode::breaksAsUnicodeTests()
{
    QFile file(QStringLiteral(TARNWELL_ENGINE_TESTS "/GraphemeBreakTest.txt"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    int lines = 0;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().split('#').first().trimmed();
        if (line.isEmpty()) {
            continue;
        }
        ++lines;
        vt::unicode::Segmenter segmenter;
        bool expected = true;
        for (const QByteArray &word : line.split(' ')) {
            if (word == "\u00f7" || word == "\u00d7") {
                expected = word == "\u00f7";
                continue;
            }
            const char32_t codePoint = word.toUInt(nullptr, 16);
            // A carriage return and a line feed never reach the screen as text.
            const bool lineFeed = codePoint == '\n' && !expected;
            const bool breaks = segmenter.breaksBefore(vt::unicode::property(codePoint).breakClass());
            QVERIFY2(breaks == expected || lineFeed, line.constData());
        }
    }
    QVERIFY(lines > 500);
}

void TestUnicode::columns_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("count");
    const auto row = [](const char *name, const char *text, int count) {
        QTest::newRow(name) << QByteArray(text) << count;
    };
    row("ascii", "a", 1);
    row("latin", "\u00e9", 1);
    row("ambiguous is narrow", "\u00a7\u2460", 2);
    row("han", "\u6f22", 2);
    row("full width", "\uff21", 2);
    row("half width kana", "\uff76", 1);
    row("hangul syllable", "\ud55c", 2);
    row("hangul from parts", "\u1112\u1161\u11ab", 2);
    row("combining", "e\u0301\u0323", 1);
    row("soft hyphen", "a\u00adb", 3);
    row("zero width space", "a\u200bb", 2);
    row("emoji", "\U0001f600", 2);
    row("text emoji", "\u2764", 1);
    row("text emoji as a picture", "\u2764\ufe0f", 2);
    row("picture as text", "\u231a\ufe0e", 1);
    row("keycap", "1\ufe0f\u20e3", 2);
    row("skin", "\U0001f44d\U0001f3fd", 2);
    row("family", "\U0001f468\u200d\U0001f469\u200d\U0001f467", 2);
    row("flag", "\U0001f1e9\U0001f1ea", 2);
    row("two flags", "\U0001f1e9\U0001f1ea\U0001f1eb\U0001f1f7", 4);
    row("half a flag", "\U0001f1e9", 1);
    row("devanagari", "\u0915\u093e", 1);
}

void TestUnicode::columns()
{
    QFETCH(QByteArray, text);
    QFETCH(int, count);
    Scene scene(20, 2);
    scene.feed(text.toStdString());
    QCOMPARE(scene.cursor(), "1;" + QByteArray::number(count + 1));
    Scene bytes(20, 2);
    for (const char each : text) {
        bytes.feed({&each, 1});
    }
    QCOMPARE(bytes.cursor(), scene.cursor());
    QCOMPARE(bytes.row(1), scene.row(1));
}

void TestUnicode::malformedBytesAreReplacedPart_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *bytes, const char *text) {
        QTest::newRow(Scene::visible(bytes).constData()) << QByteArray(bytes) << QByteArray(text);
    };
#define R "\ufffd"
    // The Unicode standard's tables 3-8 to 3-11.
    row("\x41\xc0\xaf\x41\xf4\x80\x80\x41", "A" R R "A" R "A");
    row("\xc0\xaf\xe0\x80\xbf\xf0\x81\x82\x41", R R R R R R R R "A");
    row("\xed\xa0\x80\xed\xbf\xbf\xed\xaf\x41", R R R R R R R R "A");
    row("\xf4\x91\x92\x93\xff\x41\x80\xbf\x42", R R R R R "A" R R "B");
    row("\xe1\x80\xe2\xf0\x91\x92\xf1\xbf\x41", R R R R "A");
    row("\xe6\xbc\x1b[1mx", R "x");
    row("\x80\x9b\x9f", R R R);
#undef R
}

void TestUnicode::malformedBytesAreReplacedPart()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, text);
    Scene scene(20, 2);
    scene.feed(bytes.toStdString());
    QCOMPARE(scene.row(1), text);
    for (qsizetype at = 0; at <= bytes.size(); ++at) {
        Scene split(20, 2);
        split.feed(bytes.first(at).toStdString()).feed(bytes.sliced(at).toStdString());
        QCOMPARE(split.row(1), text);
    }
}

void TestUnicode::marksJoinTheCharacterBefore()
{
    Scene scene(5, 3);
    scene.feed("abcde\u0301f");
    QCOMPARE(scene.screen(), "abcde\u0301|f");
    scene.feed("\r\n\u0301x");
    QCOMPARE(scene.row(3), " \u0301x");
    // A flag or a joined picture does not reach over a cursor movement.
    scene.feed("\x1b[2J\x1b[H\U0001f1e9\x1b[1;2H\U0001f1ea");
    QCOMPARE(scene.cursor(), "1;3");
}

void TestUnicode::tenMillionMarksAreOneCharacter()
{
    Scene scene(10, 2);
    std::string marks = "a";
    for (int count = 0; count < 100'000; ++count) {
        marks += "\u0301";
    }
    for (int count = 0; count < 100; ++count) {
        scene.feed(marks);
    }
    QVERIFY(scene.row(1).size() < 10 * 100);
    QVERIFY(scene.terminal.memoryUse() < 1 << 20);
}

void TestUnicode::clustersSurviveScrollingAndSweeping()
{
    // More different clusters and styles than the tables keep without sweeping.
    Scene scene(4, 2, 10);
    for (int count = 0; count < 40'000; ++count) {
        std::string text;
        vt::appendUtf8(text, U'\u4e00' + static_cast<char32_t>(count % 8000));
        vt::appendUtf8(text, U'\u0300' + static_cast<char32_t>(count / 8000));
        scene.feed("\x1b[38;2;" + std::to_string(count % 256) + ';' + std::to_string(count / 256) + ";9m" + text +
                   "\r\n");
    }
    std::string last;
    vt::appendUtf8(last, U'\u4e00' + 7999);
    vt::appendUtf8(last, U'\u0304');
    QCOMPARE(scene.row(1), QByteArray::fromStdString(last));
    QCOMPARE(scene.style(1, 1).foreground, vt::Color::rgb(39999 % 256, 39999 / 256, 9));
    vt::Line line;
    QVERIFY(scene.terminal.line(scene.terminal.firstLine(), line));
    QCOMPARE(scene.terminal.style(line.cells[0].style).foreground, vt::Color::rgb(39989 % 256, 39989 / 256, 9));
    QVERIFY(scene.terminal.memoryUse() < 4 << 20);
}

QTEST_GUILESS_MAIN(TestUnicode)
#include "test_unicode.moc"
