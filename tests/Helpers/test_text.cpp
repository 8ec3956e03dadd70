#include "Helpers/Text.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lines_data();
    void lines();
    void fields();
    void trimming();
    void integers_data();
    void integers();
    void numbers_data();
    void numbers();
};

void TestText::lines_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArrayList>("lines");
    QTest::newRow("nothing") << QByteArray() << QByteArrayList();
    QTest::newRow("one") << QByteArray("a") << QByteArrayList{"a"};
    QTest::newRow("ended") << QByteArray("a\n") << QByteArrayList{"a"};
    QTest::newRow("an empty line in between") << QByteArray("a\n\nb") << QByteArrayList{"a", "", "b"};
    QTest::newRow("only ends") << QByteArray("\n\n") << QByteArrayList{"", ""};
    QTest::newRow("carriage returns") << QByteArray("a\r\nb\r\r\n\rc") << QByteArrayList{"a", "b\r", "\rc"};
    QTest::newRow("any bytes") << QByteArray("\xff\0x\n\xc3", 5) << QByteArrayList{QByteArray("\xff\0x", 3), "\xc3"};
}

void TestText::lines()
{
    QFETCH(QByteArray, text);
    QByteArrayList found;
    for (const QByteArrayView line : Text::lines(text)) {
        found.append(line.toByteArray());
    }
    QTEST(found, "lines");
}

void TestText::fields()
{
    QByteArrayList found;
    for (const QByteArrayView field : Text::fields("  a\tb  c ")) {
        found.append(field.toByteArray());
    }
    QCOMPARE(found, (QByteArrayList{"a\tb", "c"}));

    const auto whole = Text::firstFields<3>(" 1 22  3  the  rest ");
    QVERIFY(whole.isComplete());
    QCOMPARE(whole.field[2].toByteArray(), "3");
    QCOMPARE(whole.rest.toByteArray(), "  the  rest ");
    QCOMPARE(Text::joinedFields(whole.rest), u"the rest"_s);
    const auto cut = Text::firstFields<3>("1 2 ");
    QVERIFY(!cut.isComplete());
    QCOMPARE(cut.found, size_t{2});
    QVERIFY(cut.rest.isEmpty());
}

void TestText::trimming()
{
    QCOMPARE(Text::trimmed(" \t\n\v\f\ra b\r\n ").toByteArray(), "a b");
    QVERIFY(Text::trimmed(" \n").isEmpty());
    QVERIFY(Text::trimmed({}).isEmpty());
}

void TestText::integers_data()
{
    QTest::addColumn<std::optional<qint64>>("number");
    QTest::newRow("0") << std::optional<qint64>(0);
    QTest::newRow("+007") << std::optional<qint64>(7);
    QTest::newRow("-12") << std::optional<qint64>(-12);
    QTest::newRow("9223372036854775807") << std::optional(std::numeric_limits<qint64>::max());
    QTest::newRow("-9223372036854775808") << std::optional(std::numeric_limits<qint64>::min());
    for (const char *refused : {"", "+", "-", "+-1", " 1", "1 ", "1.0", "1e1", "0x1", "9223372036854775808",
                                "-9223372036854775809", "99999999999999999999999", "\xd9\xa1"}) {
        QTest::newRow(refused) << std::optional<qint64>();
    }
}

void TestText::integers()
{
    const QByteArray text = QTest::currentDataTag();
    QTEST(Text::decimalInteger(QByteArrayView(text)), "number");
    QTEST(Text::decimalInteger(QString::fromUtf8(text)), "number");
}

void TestText::numbers_data()
{
    QTest::addColumn<std::optional<double>>("number");
    QTest::newRow("0") << std::optional(0.0);
    QTest::newRow("+12.50") << std::optional(12.5);
    QTest::newRow("-.5") << std::optional(-0.5);
    QTest::newRow("5.") << std::optional(5.0);
    for (const char *refused : {"", "+", "-", ".", "+-1", "--1", "1,5", "1.2.3", "1e3", "inf", "nan", "-inf", "0x1",
                                " 1", "1 ", "\xd9\xa1"}) {
        QTest::newRow(refused) << std::optional<double>();
    }
}

void TestText::numbers()
{
    const QByteArray text = QTest::currentDataTag();
    QTEST(Text::decimalNumber(QByteArrayView(text)), "number");
    QTEST(Text::decimalNumber(QString::fromUtf8(text)), "number");
}

QTEST_GUILESS_MAIN(TestText)
#include "test_text.moc"
