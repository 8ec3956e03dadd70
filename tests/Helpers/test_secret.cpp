#include "Helpers/Secret.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestSecret : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textThatEncodesComesBack();
    void whatCannotBeKeptIsRefused();
    void wipingSparesASharedCopy();
};

void TestSecret::textThatEncodesComesBack()
{
    for (const QString &text :
         {QString(), u"abc"_s, u"\ufeffmark"_s, u"nul\0inside"_s, u"\u00e9\U0001F511\uffff"_s}) {
        const std::optional<QByteArray> bytes = strictUtf8(text);
        QVERIFY(bytes);
        QCOMPARE(*bytes, text.toUtf8());
        QCOMPARE(strictText(*bytes), std::optional(text));
    }
}

void TestSecret::whatCannotBeKeptIsRefused()
{
    QVERIFY(!strictUtf8(u"a"_s + QChar(0xD83D)));
    QVERIFY(!strictUtf8(QChar(0xDD11) + u"a"_s));
    for (const QByteArray &bytes :
         {QByteArray("\xff"), QByteArray("a\xc3"), QByteArray("\xc0\x80"), QByteArray("\xed\xa0\x80")}) {
        QVERIFY2(!strictText(bytes), bytes.toHex().constData());
    }
}

void TestSecret::wipingSparesASharedCopy()
{
    QString secret = u"one"_s;
    secret += u'!';
    const QString copy = secret;
    wipe(secret);
    QCOMPARE(secret, QString());
    QCOMPARE(copy, u"one!"_s);
    QByteArray constant("literal");
    wipe(constant);
    QCOMPARE(constant, QByteArray());
}

QTEST_GUILESS_MAIN(TestSecret)
#include "test_secret.moc"
