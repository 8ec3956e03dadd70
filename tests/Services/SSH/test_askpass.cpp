#include "Services/SSH/AskpassHelper.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

class TestAskpass : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_base = std::make_unique<QTemporaryDir>();
        m_directory = std::make_unique<RuntimeDirectory>(m_base->filePath(u"tarnwell"_s));
        QVERIFY(m_directory->available());
    }

    void contentIsExact_data();
    void contentIsExact();
    void theScriptPrintsTheSecret_data();
    void theScriptPrintsTheSecret();
    void isPrivateAndNamedForItsKind();
    void nothingWithoutADirectory();
    void anUnencodableSecretGivesNothing();
    void aFullDiskLeavesNothingBehind();
    void goesAfterItsTime();
    void goesAtQuit();

private:
    QStringList scripts() const
    {
        return QDir(m_directory->path()).entryList({u"tarnwell_askpass_*"_s}, QDir::Files | QDir::Hidden);
    }

    std::unique_ptr<QTemporaryDir> m_base;
    std::unique_ptr<RuntimeDirectory> m_directory;
};

void TestAskpass::contentIsExact_data()
{
    QTest::addColumn<QString>("secret");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("plain") << u"s3cret"_s << QByteArray("#!/bin/bash\necho \"s3cret\"");
    QTest::newRow("quote, backslash") << u"a\"b\\c"_s << QByteArray("#!/bin/bash\necho \"a\\\"b\\\\c\"");
    QTest::newRow("both in a row") << u"\\\""_s << QByteArray("#!/bin/bash\necho \"\\\\\\\"\"");
    QTest::newRow("expansions") << u"$HOME`id`"_s << QByteArray("#!/bin/bash\necho \"\\$HOME\\`id\\`\"");
    QTest::newRow("empty") << QString() << QByteArray("#!/bin/bash\necho \"\"");
    QTest::newRow("option") << u"-n"_s << QByteArray("#!/bin/bash\nprintf '%s\\n' \"-n\"");
    QTest::newRow("near option") << u"-"_s << QByteArray("#!/bin/bash\necho \"-\"");
}

void TestAskpass::contentIsExact()
{
    QFETCH(QString, secret);
    QFETCH(QByteArray, content);
    AskpassHelper helper(*m_directory);
    QCOMPARE(AskpassHelper::content(secret), std::optional(content));
    QFile file(helper.createAskpassScript(secret).value_or(QString()));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), content);
}

void TestAskpass::theScriptPrintsTheSecret_data()
{
    QTest::addColumn<QString>("secret");
    const QStringList hostile{
        u"plain"_s,
        u" leading and trailing  "_s,
        u"two\\\\ backslashes\\"_s,
        u"\\\"\\\\\"\"'"_s,
        u"$(touch /nonexistent/x) ${HOME} $$ $1 $"_s,
        u"`id` \\`id\\` \\$HOME"_s,
        u"!! !$ history!"_s,
        u"a;b|c&d>e<f(g)h{i}j*k?l[m]n~o#p%q^r"_s,
        u"-n"_s,
        u"-e"_s,
        u"-neE"_s,
        u"-nx"_s,
        u"--"_s,
        u"-e \\t"_s,
        u"\\c \\n \\0101 \\x41"_s,
        u"%s%d%n"_s,
        u"p\u00e4ssw\u00f6rt \u043f\u0430\u0440\u043e\u043b\u044c \u5bc6\u7801 \U0001F511"_s,
        u"\ufeffbyte order mark"_s,
        u"tab\tand\x01\x7f\x1b[31m"_s,
        u"first line\nsecond \"line\"\\\n"_s,
        QString(100'000, u'\\'),
    };
    for (qsizetype i = 0; i < hostile.size(); ++i) {
        QTest::addRow("%lld", static_cast<long long>(i)) << hostile[i];
    }
}

void TestAskpass::theScriptPrintsTheSecret()
{
    QFETCH(QString, secret);
    AskpassHelper helper(*m_directory);
    const std::optional<QString> path = helper.createAskpassScript(secret);
    QVERIFY(path);
    QProcess bash;
    bash.start(*path, {u"user@host's password: "_s});
    QVERIFY2(bash.waitForFinished(), qPrintable(bash.errorString()));
    QCOMPARE(bash.exitCode(), 0);
    QCOMPARE(bash.readAllStandardOutput(), secret.toUtf8() + '\n');
    QCOMPARE(bash.readAllStandardError(), QByteArray());
}

void TestAskpass::isPrivateAndNamedForItsKind()
{
    static const QRegularExpression pattern(
        u"^/.*/tarnwell_askpass_[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.sh$"_s);
    AskpassHelper helper(*m_directory);
    for (const mode_t mask : {0000U, 0377U}) {
        const mode_t before = umask(mask);
        const std::optional<QString> path = helper.createAskpassScript(u"x"_s);
        umask(before);
        QVERIFY(path);
        QVERIFY2(pattern.match(*path).hasMatch(), qPrintable(*path));
        struct stat s;
        QVERIFY(lstat(QFile::encodeName(*path).constData(), &s) == 0);
        QVERIFY(S_ISREG(s.st_mode));
        QCOMPARE(static_cast<int>(s.st_mode & ALLPERMS), 0700);
    }
    QCOMPARE(scripts().size(), 2);
}

void TestAskpass::nothingWithoutADirectory()
{
    const QString file = m_base->filePath(u"file"_s);
    QVERIFY(QFile(file).open(QIODevice::WriteOnly));
    RuntimeDirectory refused(file);
    AskpassHelper helper(refused);
    QVERIFY(!helper.createAskpassScript(u"x"_s));
}

void TestAskpass::anUnencodableSecretGivesNothing()
{
    AskpassHelper helper(*m_directory);
    QVERIFY(!helper.createAskpassScript(u"half a "_s + QChar(0xD83D)));
    QCOMPARE(scripts(), QStringList());
}

void TestAskpass::aFullDiskLeavesNothingBehind()
{
    // A limit on file sizes ends a write in the middle, as a full disk does; its signal would end the program.
    AskpassHelper helper(*m_directory);
    rlimit before;
    QVERIFY(getrlimit(RLIMIT_FSIZE, &before) == 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tiny{5, before.rlim_max};
    QVERIFY(setrlimit(RLIMIT_FSIZE, &tiny) == 0);
    const std::optional<QString> path = helper.createAskpassScript(u"secret"_s);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    QVERIFY(!path);
    QCOMPARE(scripts(), QStringList());
    QVERIFY(helper.createAskpassScript(u"secret"_s));
}

void TestAskpass::goesAfterItsTime()
{
    AskpassHelper helper(*m_directory, std::chrono::milliseconds(150));
    QElapsedTimer age;
    age.start();
    QVERIFY(helper.createAskpassScript(u"x"_s));
    QCOMPARE(scripts().size(), 1);
    QTRY_COMPARE(scripts().size(), 0);
    QVERIFY2(age.elapsed() >= 149, qPrintable(QString::number(age.elapsed())));
}

void TestAskpass::goesAtQuit()
{
    {
        AskpassHelper helper(*m_directory);
        AskpassHelper other(*m_directory);
        QVERIFY(helper.createAskpassScript(u"x"_s));
        QVERIFY(helper.createAskpassScript(u"x"_s));
        QVERIFY(other.createAskpassScript(u"x"_s));
        helper.removeAll();
        QCOMPARE(scripts().size(), 1);
    }
    QCOMPARE(scripts(), QStringList());
}

QTEST_GUILESS_MAIN(TestAskpass)
#include "test_askpass.moc"
