#include "Helpers/Log.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aLineNamesLevelAndCategory();
    void controlCharactersCannotForgeALine();
};

void TestLog::aLineNamesLevelAndCategory()
{
    Log::settings().includeTimestamp = false;
    QCOMPARE(
        Log::format(Log::Level::Warning, Log::Category::FileOperations, u"gone"_s, std::source_location::current()),
        u"[WARNING] [Files] gone"_s);
}

void TestLog::controlCharactersCannotForgeALine()
{
    const QString line =
        Log::format(Log::Level::Info, Log::Category::Ssh, u"a\n[ERROR] b\x1b[2J"_s, std::source_location::current());
    QVERIFY(!line.contains(u'\n'));
    QVERIFY(!line.contains(QChar(0x1b)));
}

QTEST_GUILESS_MAIN(TestLog)
#include "test_log.moc"
