#include "Services/Parsers/Recorded.h"

#include "Services/Users/UserParser.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestUserParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordedFile();
    void oddLines();
    void hostileSizes();
};

void TestUserParser::recordedFile()
{
    const QList<UserInfo> users = UserParser::parseSystemUsers(recorded("debian.txt"));
    QCOMPARE(users.size(), 30);
    QCOMPARE(users[0].username, u"root"_s);
    QCOMPARE(users[0].shell, u"/bin/bash"_s);
    QVERIFY(users[0].isSystemUser() && users[0].hasLoginShell());
    QCOMPARE(users.last().fullName, u"Dienst, \"quoted\""_s);
    QCOMPARE(users.last().homeDirectory, u"/home/svc-odd"_s);
    QCOMPARE(users.last().uid + u'/' + users.last().gid, u"1008/1008"_s);
    QVERIFY(!users.last().isSystemUser() && !users.last().hasLoginShell());
}

void TestUserParser::oddLines()
{
    const QList<UserInfo> users = UserParser::parseSystemUsers("Willkommen\n\n   \n"
                                                               "six:x:1:1::/home\n"
                                                               " \tblanks:x:1001:1001:A, B,,:/home/b:/bin/sh \r\n"
                                                               "no numbers:x:::::\n"
                                                               "eight:x:5:6:c:/h:/bin/sh:more\n"
                                                               "<b>\xff:\xc3\xbc:x:y:z:/:/\n"
                                                               "+::::::\n"
                                                               "cut:x:1:1");
    QStringList told;
    for (const UserInfo &user : users) {
        told.append(
            QStringList{user.username, user.uid, user.gid, user.fullName, user.homeDirectory, user.shell}.join(u'|'));
    }
    QCOMPARE(told, (QStringList{u"blanks|1001|1001|A, B,,|/home/b|/bin/sh"_s, u"no numbers|||||"_s,
                                u"eight|5|6|c|/h|/bin/sh"_s, u"<b>\ufffd|x|y|z|/|/"_s, u"+|||||"_s}));
    QVERIFY(!users[1].isSystemUser()); // without a number nobody is
}

void TestUserParser::hostileSizes()
{
    QVERIFY(UserParser::parseSystemUsers(QByteArray(1'000'000, '\n')).isEmpty());
    QCOMPARE(UserParser::parseSystemUsers(QByteArray(10'000'000, ':')).size(), 1);
    QCOMPARE(UserParser::parseSystemUsers(QByteArray("a::::::\n").repeated(300'000)).size(), UserParser::kMostUsers);
}

QTEST_GUILESS_MAIN(TestUserParser)
#include "test_user_parser.moc"
