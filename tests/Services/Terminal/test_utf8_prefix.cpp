#include "Services/Terminal/Utf8Prefix.h"

#include <QTest>

/// Where a text that was split anywhere stops being whole characters, compared with the library's own reading.
class TestUtf8Prefix : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySplitOfAText();
    void whatIsNoText_data();
    void whatIsNoText();
    void againstTheLibrary();
};

void TestUtf8Prefix::everySplitOfAText()
{
    const QByteArray text = "plain text of some length, \u00e9\u20ac\u4e2d\U0001F600\U0010FFFF\uD7FF\uE000 and on";
    for (qsizetype end = 0; end <= text.size(); ++end) {
        const QByteArray front = text.first(end);
        const Utf8Prefix prefix = Utf8Prefix::of(front);
        QVERIFY(front.first(prefix.length).isValidUtf8());
        QCOMPARE(prefix.isCut, prefix.length != end);
        QVERIFY(end - prefix.length <= 3);
    }
}

void TestUtf8Prefix::whatIsNoText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qsizetype>("length");
    QTest::addColumn<bool>("isCut");
    QTest::newRow("lone continuation") << QByteArray("ab\x80") << qsizetype(2) << false;
    QTest::newRow("overlong") << QByteArray("\xC0\xAF") << qsizetype(0) << false;
    QTest::newRow("overlong of three") << QByteArray("\xE0\x80") << qsizetype(0) << false;
    QTest::newRow("surrogate") << QByteArray("a\xED\xA0") << qsizetype(1) << false;
    QTest::newRow("beyond the last") << QByteArray("\xF4\x90") << qsizetype(0) << false;
    QTest::newRow("never a byte") << QByteArray("abcdefghi\xFF") << qsizetype(9) << false;
    QTest::newRow("broken off in the middle") << QByteArray("\xE2\x82z") << qsizetype(0) << false;
    QTest::newRow("cut after one") << QByteArray("abcdefgh\xF0") << qsizetype(8) << true;
    QTest::newRow("cut after three") << QByteArray("x\xF0\x9F\x98") << qsizetype(1) << true;
}

void TestUtf8Prefix::whatIsNoText()
{
    QFETCH(const QByteArray, bytes);
    const Utf8Prefix prefix = Utf8Prefix::of(bytes);
    QTEST(prefix.length, "length");
    QTEST(prefix.isCut, "isCut");
}

void TestUtf8Prefix::againstTheLibrary()
{
    // All sequences of up to three bytes from the edges of the encoding's ranges, behind a text of each alignment.
    const QByteArray edges = QByteArray::fromHex("417f8090 9fa0bfc1c2dfe0eceded efeff0f1f4f5ff");
    for (const char a : edges) {
        for (const char b : edges) {
            for (const char c : edges) {
                const QByteArray bytes = QByteArray("\u00e9x").append(a).append(b).append(c);
                const Utf8Prefix prefix = Utf8Prefix::of(bytes);
                QVERIFY(bytes.first(prefix.length).isValidUtf8());
                QCOMPARE(prefix.length == bytes.size(), bytes.isValidUtf8());
            }
        }
    }
}

QTEST_GUILESS_MAIN(TestUtf8Prefix)
#include "test_utf8_prefix.moc"
