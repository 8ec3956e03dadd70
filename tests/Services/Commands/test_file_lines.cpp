#include "Services/Commands/FileCommands.h"
#include "Services/Commands/ProcessCommands.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>

using namespace Qt::StringLiterals;

/// The lines about files and processes, run by real shells on a prepared tree.
class TestFileLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anyNameIsOneFile_data();
    void anyNameIsOneFile();
    void readingIsBounded();
    void contentIsWrittenAsItStands_data();
    void contentIsWrittenAsItStands();
    void killEndsTheProcess();

private:
    struct Answer {
        int exitCode;
        QByteArray output;
    };

    static Answer run(const QString &shell, const QString &line)
    {
        QProcess process;
        process.start(shell, {u"-c"_s, line});
        process.closeWriteChannel();
        process.waitForFinished();
        return {process.exitCode(), process.readAllStandardOutput()};
    }

    static QStringList shells() { return {u"/bin/sh"_s, u"/bin/dash"_s, u"/bin/bash"_s}; }

    static bool write(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }

    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "(none)";
    }
};

void TestFileLines::anyNameIsOneFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << u"plain.txt"_s;
    QTest::newRow("quotes") << u"it's \"so\""_s;
    QTest::newRow("commands") << u"$(rm -rf .) `rm -rf .` ; rm -rf . & |"_s;
    QTest::newRow("line end") << u"two\nlines"_s;
    QTest::newRow("pattern") << u"* ? [a] ~ \\ # !"_s;
    QTest::newRow("umlaut") << u"Größe €"_s;
    QTest::newRow("markup") << u"<b>%1%s<b>"_s;
}

void TestFileLines::anyNameIsOneFile()
{
    QFETCH(QString, name);
    for (const QString &shell : shells()) {
        QTemporaryDir tree;
        const QString folder = tree.filePath(name + u".d"_s);
        const QString file = folder + u'/' + name;
        QVERIFY(QDir().mkdir(folder));
        QVERIFY(write(file, "content\n"));
        QVERIFY(write(tree.filePath(u"other"_s), "kept\n"));

        const Answer listed = run(shell, ListFilesCommand(folder).commandString());
        QCOMPARE(listed.exitCode, 0);
        QVERIFY(listed.output.startsWith("total ") && listed.output.contains(" .\n"));
        QVERIFY(listed.output.count('\n') >= 4);
        QCOMPARE(run(shell, ReadFileCommand(file, 10).commandString()).output, "content\n");
        QCOMPARE(run(shell, DeleteFileCommand(file).commandString()).exitCode, 0);
        QVERIFY(!QFile::exists(file));
        QCOMPARE(run(shell, DeleteFileCommand(folder).commandString()).exitCode, 0);
        QCOMPARE(QDir(tree.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{u"other"_s});

        QCOMPARE(run(shell, WriteTempFileCommand(u"temp"_s, file).commandString()).exitCode != 0, true);
        const QString temp = tree.filePath(name);
        QCOMPARE(run(shell, WriteTempFileCommand(u"temp"_s, temp).commandString()).exitCode, 0);
        QCOMPARE(contentOf(temp), "temp\n");
        QCOMPARE(run(shell, RemoveTempFileCommand(temp).commandString()).exitCode, 0);
        QVERIFY(!QFile::exists(temp));
    }
}

void TestFileLines::readingIsBounded()
{
    QTemporaryDir tree;
    const QString file = tree.filePath(u"long"_s);
    QVERIFY(write(file, QByteArray("line\n").repeated(100'000)));
    const Answer read = run(u"/bin/sh"_s, ReadFileCommand(file, 3).commandString());
    QCOMPARE(read.output.size(), 51'200);
    const Answer missing = run(u"/bin/sh"_s, ReadFileCommand(tree.filePath(u"no"_s), 3).commandString());
    QVERIFY(missing.exitCode != 0 && missing.output.isEmpty());
}

void TestFileLines::contentIsWrittenAsItStands_data()
{
    QTest::addColumn<QString>("content");
    QTest::newRow("jobs") << u"*/5 * * * * echo \"$HOME\" `id` $(id) 'x' \\\n\\n\t%\n# é"_s;
    QTest::newRow("empty") << QString();
    QTest::newRow("a marker of another line") << u"a\nCRON_EOF_\nCRON_EOF_0123456789ABCDEF0123456789ABCDEF\nb"_s;
}

void TestFileLines::contentIsWrittenAsItStands()
{
    QFETCH(QString, content);
    QTemporaryDir tree;
    const WriteTempFileCommand command(content, tree.filePath(u"jobs"_s));
    for (const QString &shell : shells()) {
        QCOMPARE(run(shell, command.commandString()).exitCode, 0);
        QCOMPARE(contentOf(tree.filePath(u"jobs"_s)), content.toUtf8() + '\n');
    }
    QVERIFY(WriteTempFileCommand(content, u"f"_s).commandString() !=
            WriteTempFileCommand(content, u"f"_s).commandString());
}

void TestFileLines::killEndsTheProcess()
{
    for (const QString &shell : shells()) {
        QProcess sleeper;
        sleeper.start(u"/bin/sleep"_s, {u"60"_s});
        QVERIFY(sleeper.waitForStarted());
        QCOMPARE(run(shell, KillProcessCommand(sleeper.processId(), false).commandString()).exitCode, 0);
        QVERIFY(sleeper.waitForFinished());
        QCOMPARE(sleeper.exitStatus(), QProcess::CrashExit);
        QCOMPARE(sleeper.exitCode(), SIGTERM);
    }
}

QTEST_GUILESS_MAIN(TestFileLines)
#include "test_file_lines.moc"
