#include "rig/ScriptedServer.h"

#include "Services/Users/UserAccounts.h"

#include <QCoroTask>
#include <QTest>

using namespace Qt::StringLiterals;

using Error = UserAccounts::UserCreationError;

namespace
{

const UserAccounts::NewUser kEverything{.username = u"eve"_s,
                                        .fullName = u"Eve O'Neil, 2nd"_s,
                                        .password = u"it's"_s,
                                        .createHomeDirectory = true,
                                        .shell = u"/bin/zsh"_s,
                                        .addToSudoGroup = true,
                                        .enablePasswordlessSudo = true};

const QStringList kSteps{u"sudo useradd -m -c 'Eve O'\\''Neil, 2nd' -s /bin/zsh eve"_s,
                         u"echo 'eve:it'\\''s' | sudo chpasswd"_s, u"sudo usermod -aG sudo eve"_s,
                         u"echo 'eve ALL=(ALL) NOPASSWD:ALL' | sudo tee /etc/sudoers.d/eve"_s};

bool isProbe(const QString &line)
{
    return line.startsWith(u"sudo -n echo"_s);
}

// A server with sudo, on which a line with `refused` in it fails.
ScriptedServer::Answer withSudo(const QString &refused = {})
{
    return [refused](const QString &line) {
        if (isProbe(line)) {
            return ScriptedServer::said("SUDO_TEST_OK\n");
        }
        const bool fails = !refused.isEmpty() && line.contains(refused);
        return CommandResult{{}, fails ? " no, not that \n" : "a warning", fails ? 9 : 0, line};
    };
}

} // namespace

class TestUserAccounts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWholeChain();
    void theShortestChain();
    void stopsAtTheFirstFailure_data();
    void stopsAtTheFirstFailure();
    void sudoIsTriedFirst_data();
    void sudoIsTriedFirst();
    void groups_data();
    void groups();
    void names_data();
    void names();
    void lists();
};

void TestUserAccounts::theWholeChain()
{
    ScriptedServer scripted;
    scripted.setAnswer(withSudo());
    QVERIFY(!QCoro::waitFor(UserAccounts::createUser(scripted.manager, ScriptedServer::server(), kEverything)));
    QVERIFY(isProbe(scripted.lines().value(0)));
    QCOMPARE(scripted.lines().sliced(1), kSteps);
}

void TestUserAccounts::theShortestChain()
{
    ScriptedServer scripted;
    scripted.setAnswer(withSudo());
    const UserAccounts::NewUser user{
        .username = u"eve"_s, .fullName = {}, .password = {}, .createHomeDirectory = false, .shell = u"/bin/sh"_s};
    QVERIFY(!QCoro::waitFor(UserAccounts::createUser(scripted.manager, ScriptedServer::server(), user)));
    QCOMPARE(scripted.lines().sliced(1), QStringList{u"sudo useradd -s /bin/sh eve"_s});
}

void TestUserAccounts::stopsAtTheFirstFailure_data()
{
    QTest::addColumn<int>("step");
    for (const int step : {1, 2, 3, 4}) {
        QTest::newRow(qPrintable(kSteps[step - 1])) << step;
    }
}

void TestUserAccounts::stopsAtTheFirstFailure()
{
    QFETCH(int, step);
    ScriptedServer scripted;
    scripted.setAnswer(withSudo(kSteps[step - 1]));
    const auto error =
        QCoro::waitFor(UserAccounts::createUser(scripted.manager, ScriptedServer::server(), kEverything));
    QCOMPARE(error, (Error{Error::Code(step), u"no, not that"_s}));
    QCOMPARE(scripted.lines().sliced(1), kSteps.first(step)); // what is done stays done
}

void TestUserAccounts::sudoIsTriedFirst_data()
{
    QTest::addColumn<CommandResult>("probe");
    QTest::addColumn<QString>("text");
    QTest::newRow("password wanted") << CommandResult{"sudo: a password is required\n", {}, 1, {}}
                                     << u"This operation requires passwordless sudo access on the server.\n\n"
                                        "To enable it, run this command on the server:\n"
                                        "echo 'o'\\''hara ALL=(ALL) NOPASSWD:ALL' | sudo tee "
                                        "'/etc/sudoers.d/o'\\''hara'"_s;
    const QString noConnection = u"Could not connect to server. Please check your connection settings."_s;
    QTest::newRow("no connection") << CommandResult{{}, {}, CommandResult::kSshFailed, {}} << noConnection;
    QTest::newRow("refused") << CommandResult{{}, "Connection refused", 1, {}} << noConnection;
}

void TestUserAccounts::sudoIsTriedFirst()
{
    QFETCH(CommandResult, probe);
    QFETCH(QString, text);
    ScriptedServer scripted;
    scripted.setAnswer([&](const QString &) { return probe; });
    Server server = ScriptedServer::server();
    server.username = u"o'hara"_s; // the line is copied into a shell
    const auto error = QCoro::waitFor(UserAccounts::createUser(scripted.manager, server, kEverything));
    QCOMPARE(error, (Error{Error::Refused, text}));
    QCOMPARE(scripted.lines().size(), 1);
}

void TestUserAccounts::groups_data()
{
    QTest::addColumn<QString>("os");
    QTest::addColumn<QString>("group");
    for (const auto &os : {u"CentOS Linux 7"_s, u"RHEL 9"_s, u"Red Hat Enterprise Linux"_s, u"Rocky Linux 9.3"_s,
                           u"AlmaLinux 9"_s, u"Oracle Linux Server 8"_s, u"Fedora Linux 40"_s}) {
        QTest::newRow(qPrintable(os)) << os << u"wheel"_s;
    }
    for (const auto &os : {u"Debian GNU/Linux 12"_s, u"Ubuntu 24.04"_s, u""_s}) {
        QTest::newRow(qPrintable(os)) << os << u"sudo"_s;
    }
}

void TestUserAccounts::groups()
{
    QFETCH(QString, os);
    Server server = ScriptedServer::server();
    QCOMPARE(UserAccounts::sudoGroup(server), u"sudo"_s);
    server.systemInfo = SystemInfo{.osVersion = os};
    QTEST(UserAccounts::sudoGroup(server), "group");
}

void TestUserAccounts::names_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isValid");
    const QString longest(32, u'a');
    for (const auto &name : {u"eve"_s, u"_svc"_s, u"Eve.O-2"_s, u"host$"_s, u"0day"_s, longest}) {
        QTest::newRow(qPrintable(name)) << name << true;
    }
    for (const auto &name : {u""_s, u"-eve"_s, u"e ve"_s, u"e;id"_s, u"$(id)"_s, u"e$e"_s, u"$"_s, u"a/b"_s, u"a:b"_s,
                             u"a\nb"_s, u"é"_s, u"123"_s, u"."_s, u".."_s, u"e'"_s, QString(longest + u'a')}) {
        QTest::newRow(qPrintable(name)) << name << false;
    }
}

void TestUserAccounts::names()
{
    QFETCH(QString, name);
    QTEST(UserAccounts::isValidUsername(name), "isValid");
    QVERIFY(!UserAccounts::isValidSudoersFile(name) || !name.contains(u'.'));
}

void TestUserAccounts::lists()
{
    ScriptedServer scripted;
    const QByteArray file("root:x:0:0::/root:/bin/sh\n");
    scripted.setAnswer([&](const QString &) { return ScriptedServer::said(file); });
    QCOMPARE(QCoro::waitFor(UserAccounts::getSystemUsers(scripted.manager, ScriptedServer::server())).size(), 1);
    QCOMPARE(scripted.lines(), QStringList{u"cat /etc/passwd"_s});
    scripted.setAnswer([&](const QString &) { return ScriptedServer::said(file, 1); });
    QVERIFY(QCoro::waitFor(UserAccounts::getSystemUsers(scripted.manager, ScriptedServer::server())).isEmpty());
    QCoro::waitFor(UserAccounts::deleteUser(scripted.manager, ScriptedServer::server(), u"eve"_s));
    QCOMPARE(scripted.lines().last(), u"sudo userdel -r eve"_s);
}

QTEST_GUILESS_MAIN(TestUserAccounts)
#include "test_user_accounts.moc"
