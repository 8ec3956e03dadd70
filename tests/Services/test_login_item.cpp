#include "Services/LoginItem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestLoginItem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theEntryComesAndGoes();
    void argumentsSurviveTheExecKey_data();
    void argumentsSurviveTheExecKey();
    void aPlaceThatCannotBeWrittenIsLeftAlone();
};

void TestLoginItem::theEntryComesAndGoes()
{
    const QTemporaryDir directory;
    const LoginItem item(directory.filePath(u"autostart"_s), {u"/opt/My Apps/tarnwell"_s, u"--profile"_s, u"/p"_s});
    const QString path = directory.filePath(u"autostart/tarnwell.desktop"_s);
    QVERIFY(!item.isEnabled());
    item.setEnabled(false);
    item.setEnabled(true);
    item.setEnabled(true);
    QVERIFY(item.isEnabled());
    QFile entry(path);
    QVERIFY(entry.open(QIODevice::ReadOnly));
    QCOMPARE(entry.readAll(), QByteArray("[Desktop Entry]\nType=Application\nName=Tarnwell\n"
                                         "Exec=\"/opt/My Apps/tarnwell\" \"--profile\" \"/p\"\nTerminal=false\n"));
    item.setEnabled(false);
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(!item.isEnabled());
}

void TestLoginItem::argumentsSurviveTheExecKey_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("value");
    QTest::newRow("blank") << u"a b"_s << uR"("a b")"_s;
    QTest::newRow("percent") << u"100%u"_s << uR"("100%%u")"_s;
    // A character that is special between the quotes gets a backslash, and each backslash is doubled in a text value.
    QTest::newRow("special") << uR"("`$)"_s << uR"("\\"\\`\\$")"_s;
    QTest::newRow("backslash") << uR"(\)"_s << uR"("\\\\")"_s;
    QTest::newRow("line feed") << u"a\nExec=b"_s << uR"("a\nExec=b")"_s;
    QTest::newRow("empty") << u""_s << uR"("")"_s;
    QTest::newRow("not ASCII") << u"é"_s << u"\"é\""_s;
}

void TestLoginItem::argumentsSurviveTheExecKey()
{
    QFETCH(QString, argument);
    QTEST(LoginItem::execValue({argument}), "value");
}

void TestLoginItem::aPlaceThatCannotBeWrittenIsLeftAlone()
{
    const QTemporaryDir directory;
    QFile file(directory.filePath(u"autostart"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const LoginItem item(file.fileName(), {u"/bin/x"_s});
    item.setEnabled(true);
    item.setEnabled(false);
    QVERIFY(!item.isEnabled());
    QVERIFY(QFileInfo(file.fileName()).isFile());
}

QTEST_GUILESS_MAIN(TestLoginItem)
#include "test_login_item.moc"
