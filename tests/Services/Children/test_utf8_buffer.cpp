#include "Services/Children/Utf8Buffer.h"

#include <QTest>

/// The same verdict as a check of the whole text, however the text is cut.
class TestUtf8Buffer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithTheWholeAtEveryCut_data();
    void agreesWithTheWholeAtEveryCut();
};

void TestUtf8Buffer::agreesWithTheWholeAtEveryCut_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("all lengths") << QByteArray("a\xC3\xBC\xE6\x97\xA5\xF0\x9F\x99\x82z");
    QTest::newRow("cut off") << QByteArray("ab\xF0\x9F\x99");
    QTest::newRow("stray continuation") << QByteArray("a\x80z");
    QTest::newRow("many continuations") << QByteArray("\x80\x80\x80\x80\x80");
    QTest::newRow("overlong") << QByteArray("\xC0\xAFx");
    QTest::newRow("surrogate") << QByteArray("x\xED\xA0\x80");
    QTest::newRow("beyond Unicode") << QByteArray("\xF4\x90\x80\x80");
    QTest::newRow("lead before ASCII") << QByteArray("\xE6\x97z");
}

void TestUtf8Buffer::agreesWithTheWholeAtEveryCut()
{
    QFETCH(const QByteArray, text);
    for (qsizetype first = 0; first <= text.size(); ++first) {
        for (qsizetype second = first; second <= text.size(); ++second) {
            Utf8Buffer buffer;
            buffer.append(text.left(first));
            buffer.append(text.mid(first, second - first));
            buffer.append(text.mid(second));
            QCOMPARE(buffer.isValid(), text.isValidUtf8());
            QCOMPARE(buffer.take(), text);
        }
    }
}

QTEST_GUILESS_MAIN(TestUtf8Buffer)
#include "test_utf8_buffer.moc"
