#include "Helpers/Log.h"
#include "Helpers/WrittenLog.h"
#include "rig/ScriptedServer.h"

#include "Services/Commands/UserCommands.h"

#include <QCoroTask>
#include <QTest>

using namespace Qt::StringLiterals;

/// No secret of a line comes into the log, whatever road the line takes.
class TestConfidentialLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void throughTheManager();
    void throughARealConnection();

private:
    static void checkLog(const QString &log, int marks);

    const SetUserPasswordCommand m_command{u"eve"_s, u"Geheimnis"_s};
};

void TestConfidentialLines::init()
{
    Log::settings() = {.minimumLevel = Log::Level::Verbose, .allowedCategories = {}};
}

void TestConfidentialLines::checkLog(const QString &log, int marks)
{
    QVERIFY2(!log.contains(u"Geheim"_s) && !log.contains(u"'eve:"_s), qPrintable(log));
    QCOMPARE(log.count(u"(confidential)"_s), Log::kEnabled ? marks : 0);
    QVERIFY(!Log::kEnabled || log.contains(u"Set password for user 'eve'"_s));
}

void TestConfidentialLines::throughTheManager()
{
    ScriptedServer scripted;
    // Some shells quote the line in their complaints.
    scripted.setAnswer([](const QString &line) {
        return CommandResult{{}, "Geheimnis: Event not found.\n", line.contains(u"Geheimnis"_s) ? 1 : 0, line};
    });
    const auto run = [&scripted](auto command) {
        return written(
            [&] { QCoro::waitFor(scripted.manager.executeSSHCommand(command, ScriptedServer::server())); });
    };
    checkLog(run(m_command), 3);
    QCOMPARE(scripted.lines(), QStringList{m_command.commandString()});

    // The same line without the mark would be told.
    const QString open = run(CustomCommand(m_command.commandString(), u"open"_s));
    QCOMPARE(open.contains(u"Geheimnis"_s), Log::kEnabled);
}

void TestConfidentialLines::throughARealConnection()
{
    TestTransport transport;
    Server server = ScriptedServer::server();
    server.host = u"127.0.0.1"_s;
    server.port = 1;
    for (const bool isPooled : {true, false}) {
        transport.settings.setUseConnectionPooling(isPooled);
        checkLog(written([&] { QCoro::waitFor(transport.manager.executeSSHCommand(m_command, server)); }), 4);
    }
}

QTEST_GUILESS_MAIN(TestConfidentialLines)
#include "test_confidential_lines.moc"
