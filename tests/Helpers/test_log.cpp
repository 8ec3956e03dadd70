#include "Helpers/Log.h"
#include "Helpers/WrittenLog.h"

#include <QTest>
#include <stdexcept>
#include <system_error>

using namespace Qt::StringLiterals;

// Built twice: as the other tests, and against a copy of the log that was compiled as for a release.
class TestLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aLineNamesLevelAndCategory();
    void controlCharactersCannotForgeALine();
    void everyCallWritesItsLineOrNothingInARelease_data();
    void everyCallWritesItsLineOrNothingInARelease();
    void levelsAndCategoriesAreFiltered();
};

void TestLog::init()
{
    Log::settings() = {.minimumLevel = Log::Level::Verbose, .allowedCategories = {}, .includeTimestamp = false};
}

void TestLog::aLineNamesLevelAndCategory()
{
    const auto here = std::source_location::current();
    QCOMPARE(Log::format(Log::Level::Warning, Log::Category::FileOperations, u"gone"_s, here),
             u"[WARNING] [Files] gone"_s);
    Log::settings().includeSourceLocation = true;
    QVERIFY(Log::format(Log::Level::Warning, Log::Category::Ui, {}, here)
                .endsWith(u"test_log.cpp:%1 "_s.arg(here.line())));
    QCOMPARE(Log::allCategories().size(), 13);
    QCOMPARE(Log::categoryName(Log::allCategories().last()), u"Performance"_s);
}

void TestLog::controlCharactersCannotForgeALine()
{
    const QString line = Log::format(Log::Level::Info, Log::Category::Ssh, u"a\n[ERROR] b\x1b[2J\u009bc"_s,
                                     std::source_location::current());
    QCOMPARE(line, u"[INFO] [SSH] a\\x0a[ERROR] b\\x1b[2J\\x9bc"_s);
}

void TestLog::everyCallWritesItsLineOrNothingInARelease_data()
{
    QTest::addColumn<std::function<void()>>("call");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, const std::function<void()> &call, const QString &line) {
        QTest::newRow(name) << call << line;
    };
    row("verbose", [] { Log::verbose(u"m"_s); }, u"[VERBOSE] [General] m\n"_s);
    row("debug", [] { Log::debug(u"m"_s, Log::Category::Docker); }, u"[DEBUG] [Docker] m\n"_s);
    row("info", [] { Log::info(u"m"_s); }, u"[INFO] [General] m\n"_s);
    row("warning", [] { Log::warning(u"m"_s); }, u"[WARNING] [General] m\n"_s);
    row("error", [] { Log::error(u"m"_s); }, u"[ERROR] [General] m\n"_s);
    row("exception", [] { Log::error(std::runtime_error("why"), u"m"_s); }, u"[ERROR] [General] m: why\n"_s);
    row("exception alone", [] { Log::error(std::runtime_error("why")); }, u"[ERROR] [General] why\n"_s);
    row(
        "error code",
        [] { Log::error(std::make_error_code(std::errc::no_such_file_or_directory), u"m"_s, Log::Category::Ssh); },
        u"[ERROR] [SSH] m: No such file or directory\n"_s);
    row("performance", [] { Log::performance(u"load"_s, 1.23456); }, u"[DEBUG] [Performance] load - took 1.235s\n"_s);
}

void TestLog::everyCallWritesItsLineOrNothingInARelease()
{
    QFETCH(std::function<void()>, call);
    QFETCH(QString, line);
    QCOMPARE(written(call), Log::kEnabled ? line : QString());
}

void TestLog::levelsAndCategoriesAreFiltered()
{
    Log::settings().minimumLevel = Log::Level::Warning;
    Log::settings().allowedCategories = {Log::Category::Ssh};
    const QString lines = written([] {
        Log::info(u"too low"_s, Log::Category::Ssh);
        Log::error(u"elsewhere"_s, Log::Category::Docker);
        Log::warning(u"kept"_s, Log::Category::Ssh);
        Log::functionEntry();
    });
    QCOMPARE(lines, Log::kEnabled ? u"[WARNING] [SSH] kept\n"_s : QString());
    Log::settings() = {.minimumLevel = Log::Level::Verbose, .allowedCategories = {}, .includeTimestamp = false};
    const QString marks = written([] {
        Log::functionEntry();
        Log::functionExit();
    });
    QCOMPARE(marks.count(u"levelsAndCategoriesAreFiltered"_s), Log::kEnabled ? 2 : 0);
}

QTEST_GUILESS_MAIN(TestLog)
#include "test_log.moc"
