#include "Helpers/ShellQuote.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

// The arguments that `shell` makes of the words of a line.
QByteArray argumentsIn(const QString &shell, const QString &words)
{
    QProcess process;
    process.start(shell, {u"-c"_s, uR"(printf '%s\0' )"_s + words});
    process.waitForFinished();
    return process.readAllStandardOutput();
}

} // namespace

class TestShellQuote : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ordinaryWordsStayBare();
    void everyCharacterReachesTheCommand_data();
    void everyCharacterReachesTheCommand();
};

void TestShellQuote::ordinaryWordsStayBare()
{
    const QString ordinary = u"getty@tty1.service,a=b%c+d:e/F-9_0"_s;
    QCOMPARE(shellWord(ordinary), ordinary);
    QCOMPARE(shellWord(QString()), u"''"_s);
    QCOMPARE(shellWord(u"it's"_s), uR"('it'\''s')"_s);
    QCOMPARE(shellWord(u"é"_s), u"'é'"_s); // a letter, but not everywhere the same one
}

void TestShellQuote::everyCharacterReachesTheCommand_data()
{
    QTest::addColumn<QString>("shell");
    QTest::newRow("sh") << u"/bin/sh"_s;
    QTest::newRow("dash") << u"/bin/dash"_s;
    QTest::newRow("bash") << u"/bin/bash"_s;
}

void TestShellQuote::everyCharacterReachesTheCommand()
{
    QFETCH(QString, shell);
    QString words;
    QByteArray expected;
    const auto add = [&](const QString &value) {
        words += shellWord(value) + u' ';
        expected += value.toUtf8() + '\0';
    };
    for (char16_t c = 1; c < 0x100; ++c) {
        add(QString(QChar(c)));
        add(u"a"_s + QChar(c) + u'b');
    }
    add({});
    add(u"'; touch $(id) `id` \"$HOME\" \\ ~ * ? !! \n -- #"_s);
    QCOMPARE(argumentsIn(shell, words), expected);
}

QTEST_GUILESS_MAIN(TestShellQuote)
#include "test_shell_quote.moc"
