#include "Models/CronJob.h"
#include "Models/DockerContainer.h"
#include "Models/DockerError.h"
#include "Models/DockerImage.h"
#include "Models/FileInfo.h"
#include "Models/Metrics.h"
#include "Models/PortInfo.h"
#include "Models/ProcessInfo.h"
#include "Models/Server.h"
#include "Models/UserInfo.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rawTexts();
    void residentMemory_data();
    void residentMemory();
    void numericViews();
    void files_data();
    void files();
    void containerColors_data();
    void containerColors();
    void images_data();
    void images();
    void containerErrors();
    void users();
    void cronLines_data();
    void cronLines();
    void schedules_data();
    void schedules();
    void ports_data();
    void ports();
    void everyPortCategoryHasItsOwnLook();
};

void TestRecords::rawTexts()
{
    QCOMPARE(rawText(AuthMethod::SshAgent), u"sshAgent"_s);
    QCOMPARE(fromRawText<AuthMethod>(u"publicKey"), std::optional(AuthMethod::PublicKey));
    QCOMPARE(fromRawText<AuthMethod>(u"PublicKey"), std::nullopt);
    QCOMPARE(fromRawText<AuthMethod>(u""), std::nullopt);
    QCOMPARE(allCases<FileSortOrder>().size(), 6);
    QCOMPARE(rawText(allCases<FileSortOrder>().last()), u"Date ↓"_s);
}

void TestRecords::residentMemory_data()
{
    QTest::addColumn<QString>("kilobytes");
    QTest::addColumn<QString>("shown");
    for (const auto &[kilobytes, shown] :
         std::initializer_list<std::pair<QString, QString>>{{u"512"_s, u"<1 MB"_s},
                                                            {u"1023"_s, u"<1 MB"_s},
                                                            {u"1024"_s, u"1.0 MB"_s},
                                                            {u"15821"_s, u"15.5 MB"_s},
                                                            {u"-"_s, u"0 MB"_s},
                                                            {u""_s, u"0 MB"_s},
                                                            {u"0"_s, u"<1 MB"_s},
                                                            {u"12a"_s, u"0 MB"_s},
                                                            {u" 2048"_s, u"0 MB"_s}}) {
        QTest::addRow("%s", qPrintable(kilobytes)) << kilobytes << shown;
    }
}

void TestRecords::residentMemory()
{
    QFETCH(QString, kilobytes);
    QTEST(ProcessInfo{.rssMemoryKB = kilobytes}.memoryMB(), "shown");
}

void TestRecords::numericViews()
{
    const ProcessInfo process{.pid = u"+12"_s, .cpu = u"12.5"_s, .memory = u"?"_s, .rssMemoryKB = u"1e3"_s};
    QCOMPARE(process.pidInt(), 12);
    QCOMPARE(process.cpuDouble(), 12.5);
    QCOMPARE(process.memoryDouble(), 0.0);
    QCOMPARE(process.rssMemoryKBDouble(), 0.0);
    const DiskIOMetrics io{{{u"a"_s, 1.5, 2.0}, {u"b"_s, 0.5, 3.0}}};
    QCOMPARE(io.totalReadBytesPerSec(), 2.0);
    QCOMPARE(io.totalWriteBytesPerSec(), 5.0);
}

void TestRecords::files_data()
{
    QTest::addColumn<FileInfo>("file");
    QTest::addColumn<QString>("size");
    QTest::addColumn<QString>("icon");
    const auto file = [](const QString &name, const QString &size) { return FileInfo{.name = name, .size = size}; };
    FileInfo folder = file(u"a.sh"_s, u"4096"_s);
    folder.isDirectory = true;
    QTest::newRow("directory") << folder << u"--"_s << u"folder.fill"_s;
    QTest::newRow("bytes") << file(u"a.txt"_s, u"12"_s) << u"12 bytes"_s << u"doc.text.fill"_s;
    QTest::newRow("large") << file(u"a.log"_s, u"48200000"_s) << u"48.2 MB"_s << u"doc.text.fill"_s;
    QTest::newRow("formatted") << file(u"run.sh"_s, u"4.0K"_s) << u"4.0K"_s << u"terminal.fill"_s;
    QTest::newRow("no size") << file(u"sshd.conf"_s, u""_s) << u""_s << u"gear"_s;
    QTest::newRow("config") << file(u"x.config"_s, u"0"_s) << u"Zero KB"_s << u"gear"_s;
    QTest::newRow("other case") << file(u"README.TXT"_s, u"1"_s) << u"1 byte"_s << u"doc.fill"_s;
}

void TestRecords::files()
{
    QFETCH(FileInfo, file);
    QTEST(file.displaySize(), "size");
    QTEST(file.icon(), "icon");
}

void TestRecords::containerColors_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<SemanticColor>("color");
    QTest::newRow("running") << u"Up 2 hours"_s << SemanticColor::Green;
    QTest::newRow("paused but up") << u"Up 2 hours (Paused)"_s << SemanticColor::Green;
    QTest::newRow("exited") << u"Exited (0) 3 days ago"_s << SemanticColor::Red;
    QTest::newRow("stopped before created") << u"created, STOPPED"_s << SemanticColor::Red;
    QTest::newRow("paused") << u"paused"_s << SemanticColor::Orange;
    QTest::newRow("created") << u"Created"_s << SemanticColor::Gray;
    QTest::newRow("unknown") << u"Dead"_s << SemanticColor::Red;
}

void TestRecords::containerColors()
{
    QFETCH(QString, status);
    QTEST(DockerContainer{.status = status}.statusColor(), "color");
}

void TestRecords::images_data()
{
    QTest::addColumn<DockerImage>("image");
    QTest::addColumn<QString>("name");
    QTest::addColumn<qint64>("bytes");
    const auto image = [](const QString &repository, const QString &tag, const QString &size) {
        return DockerImage{.repository = repository, .tag = tag, .imageId = u"0123456789abcdef"_s, .size = size};
    };
    QTest::newRow("megabytes") << image(u"nginx"_s, u"1.25"_s, u" 187.5MB\n"_s) << u"nginx:1.25"_s
                               << qint64{196608000};
    QTest::newRow("blank in between") << image(u"a"_s, u"<none>"_s, u"1.5 GB"_s) << u"a:<none>"_s
                                      << qint64{1610612736};
    QTest::newRow("no name") << image(u"<none>"_s, u"<none>"_s, u"2TB"_s) << u"0123456789ab"_s
                             << qint64{2199023255552};
    QTest::newRow("truncated") << image(u"a"_s, u"b"_s, u"0.7B"_s) << u"a:b"_s << qint64{0};
    QTest::newRow("lower case unit") << image(u"a"_s, u"b"_s, u"12kB"_s) << u"a:b"_s << qint64{0};
    QTest::newRow("no number") << image(u"a"_s, u"b"_s, u"1.2.3MB"_s) << u"a:b"_s << qint64{0};
    QTest::newRow("no unit") << image(u"a"_s, u"b"_s, u"12"_s) << u"a:b"_s << qint64{0};
    QTest::newRow("negative") << image(u"a"_s, u"b"_s, u"-1MB"_s) << u"a:b"_s << qint64{0};
    QTest::newRow("beyond 64 bits") << image(u"a"_s, u"b"_s, u"99999999999TB"_s) << u"a:b"_s
                                    << std::numeric_limits<qint64>::max();
}

void TestRecords::images()
{
    QFETCH(DockerImage, image);
    QTEST(image.displayName(), "name");
    QTEST(image.sizeInBytes(), "bytes");
}

void TestRecords::containerErrors()
{
    QCOMPARE(DockerError::permissionDenied(u"no"_s).displayMessage(), u"Permission denied. no"_s);
    QCOMPARE(DockerError::connectionFailed(u"no"_s).displayMessage(), u"Failed to connect to Docker: no"_s);
    QCOMPARE(DockerError::unknown(u"no"_s).displayMessage(), u"no"_s);
    QCOMPARE(DockerError::dockerNotInstalled().displayMessage(), u"Docker is not installed on this server"_s);
    QCOMPARE(DockerError::dockerServiceNotRunning().displayMessage(), u"Docker service is not running"_s);
    QCOMPARE(DockerError::invalidJsonFormat().displayMessage(), u"Docker returned invalid data format"_s);
}

void TestRecords::users()
{
    const auto withUid = [](const QString &uid) { return UserInfo{.uid = uid}; };
    QVERIFY(withUid(u"0"_s).isSystemUser());
    QVERIFY(withUid(u"999"_s).isSystemUser());
    QVERIFY(!withUid(u"1000"_s).isSystemUser());
    QVERIFY(!withUid(u""_s).isSystemUser());
    QVERIFY(!withUid(u"x"_s).isSystemUser());
    QCOMPARE(withUid(u"4294967294"_s).uidInt(), 4294967294);
    const auto withShell = [](const QString &shell) { return UserInfo{.shell = shell}; };
    QVERIFY(withShell(u"/bin/bash"_s).hasLoginShell());
    QVERIFY(!withShell(u"/usr/sbin/nologin"_s).hasLoginShell());
    QVERIFY(!withShell(u"/bin/false"_s).hasLoginShell());
}

void TestRecords::cronLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("isUserCrontab");
    QTest::addColumn<QString>("read"); // "+" or "-" for enabled, schedule | user | command
    const auto row = [](const char *name, const QString &line, bool isUserCrontab, const QString &read) {
        QTest::newRow(name) << line << isUserCrontab << read;
    };
    row("user crontab", u" */5 0 * * 1-5\tbackup  --all \n"_s, true, u"+*/5 0 * * 1-5|me|backup --all"_s);
    row("disabled", u"# 0 3 * * * /bin/x"_s, true, u"-0 3 * * *|me|/bin/x"_s);
    row("disabled twice", u"##0 3 * * * /bin/x"_s, true, u"-#0 3 * * *|me|/bin/x"_s);
    row("too few pieces", u"@daily  run me"_s, true, u"+* * * * *|me|@daily  run me"_s);
    row("empty", u""_s, true, u"+* * * * *|me|"_s);
    row("comment", u"# keep this"_s, true, u"-* * * * *|me|keep this"_s);
    row("six pieces", u"1 2 3 4 5 cmd"_s, false, u"+1 2 3 4 5|me|cmd"_s);
    row("system crontab", u"17 *\t* * *\troot cd / && run-parts"_s, false, u"+17 * * * *|root|cd / && run-parts"_s);
    row("system line in a user crontab", u"17 * * * * root cd /"_s, true, u"+17 * * * *|me|root cd /"_s);
    row("path in place of a user", u"1 2 3 4 5 /bin/x y"_s, false, u"+1 2 3 4 5|me|/bin/x y"_s);
    row("assignment in place of a user", u"1 2 3 4 5 A=b y"_s, false, u"+1 2 3 4 5|me|A=b y"_s);
    row("quotes in place of a user", u"1 2 3 4 5 'a y"_s, false, u"+1 2 3 4 5|me|'a y"_s);
    row("double quotes in place of a user", u"1 2 3 4 5 \"a y"_s, false, u"+1 2 3 4 5|me|\"a y"_s);
}

void TestRecords::cronLines()
{
    QFETCH(QString, line);
    QFETCH(bool, isUserCrontab);
    const CronJob job = CronJob::fromCronLine(line, u"me"_s, isUserCrontab);
    QTEST((job.isEnabled ? u"+"_s : u"-"_s) + job.schedule() + u'|' + job.user + u'|' + job.command, "read");
}

void TestRecords::schedules_data()
{
    QTest::addColumn<QString>("shown");
    for (const auto &[schedule, shown] :
         std::initializer_list<std::pair<const char *, QString>>{{"* * * * *", u"Every minute"_s},
                                                                 {"5 * * * *", u"Every hour at 5 minutes"_s},
                                                                 {"*/5 * * * *", u"Every hour at */5 minutes"_s},
                                                                 {"5 4 * * *", u"Daily at 4:05"_s},
                                                                 {"30 14 * * *", u"Daily at 14:30"_s},
                                                                 {"0 4 * * 0", u"Weekly on Sunday at 4:00"_s},
                                                                 {"0 4 * * 7", u"Weekly on Sunday at 4:00"_s},
                                                                 {"0 4 * * 6", u"Weekly on Saturday at 4:00"_s},
                                                                 {"0 4 * * 1-5", u"Weekly on Day 1-5 at 4:00"_s},
                                                                 {"0 4 * * 8", u"Weekly on Day 8 at 4:00"_s},
                                                                 {"0 4 1 * *", u"Monthly on day 1 at 4:00"_s},
                                                                 {"* 4 * * *", u"* 4 * * *"_s},
                                                                 {"* * * * 1", u"* * * * 1"_s},
                                                                 {"0 * 1 * *", u"0 * 1 * *"_s},
                                                                 {"0 * * * 1", u"0 * * * 1"_s},
                                                                 {"0 4 1 * 1", u"0 4 1 * 1"_s},
                                                                 {"0 4 1 6 *", u"0 4 1 6 *"_s},
                                                                 {"0 4 * 6 *", u"0 4 * 6 *"_s}}) {
        QTest::newRow(schedule) << shown;
    }
}

void TestRecords::schedules()
{
    const QString line = QString::fromLatin1(QTest::currentDataTag()) + u" x"_s;
    QTEST(CronJob::fromCronLine(line, {}, true).displaySchedule(), "shown");
}

void TestRecords::ports_data()
{
    QTest::addColumn<PortCategory>("category");
    for (const auto &[port, category] : std::initializer_list<std::pair<const char *, PortCategory>>{
             {"80", PortCategory::Web},          {"443", PortCategory::Web},
             {"8080", PortCategory::Web},        {"8443", PortCategory::Web},
             {"22", PortCategory::Ssh},          {"21", PortCategory::Ftp},
             {"3306", PortCategory::Database},   {"5432", PortCategory::Database},
             {"6379", PortCategory::Database},   {"25", PortCategory::Email},
             {"110", PortCategory::Email},       {"143", PortCategory::Email},
             {"465", PortCategory::Email},       {"587", PortCategory::Email},
             {"993", PortCategory::Email},       {"995", PortCategory::Email},
             {"53", PortCategory::Dns},          {"123", PortCategory::Ntp},
             {"1", PortCategory::System},        {"1023", PortCategory::System},
             {"1024", PortCategory::Registered}, {"49151", PortCategory::Registered},
             {"49152", PortCategory::Dynamic},   {"0", PortCategory::Dynamic},
             {"-5", PortCategory::Dynamic},      {"99999", PortCategory::Dynamic},
             {"*", PortCategory::Other},         {"", PortCategory::Other},
             {"22 ", PortCategory::Other},       {"99999999999999999999", PortCategory::Other}}) {
        QTest::newRow(port) << category;
    }
}

void TestRecords::ports()
{
    QTEST(PortInfo{.localPort = QString::fromLatin1(QTest::currentDataTag())}.portCategory(), "category");
}

void TestRecords::everyPortCategoryHasItsOwnLook()
{
    QStringList icons;
    QList<SemanticColor> colors;
    for (const PortCategory category : allCases<PortCategory>()) {
        QVERIFY(!icons.contains(icon(category)));
        QVERIFY(!colors.contains(color(category)));
        icons.append(icon(category));
        colors.append(color(category));
    }
    QCOMPARE(icons.size(), 11);
    QCOMPARE(color(PortCategory::Dynamic), SemanticColor::Mint);
    QCOMPARE(icon(PortCategory::Registered), u"app.badge"_s);
    QCOMPARE(rawText(PortCategory::Dns), u"DNS"_s);
}

QTEST_GUILESS_MAIN(TestRecords)
#include "test_records.moc"
