#include "rig/RigSshd.h"

#include "Helpers/Clock.h"
#include "Models/AppSettings.h"
#include "Models/ServerStore.h"
#include "Models/UserDefaults.h"

#include <QDir>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>

using namespace Qt::StringLiterals;

/// The program as it is started, in a home of its own.
class TestProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init() { m_home = std::make_unique<QTemporaryDir>(); }

    void tellsAboutItself();
    void refusesWhatItDoesNotKnow();
    void measuresItsStart();
    void drawsPicturesOfRealData();
    void tellsWhyThereAreNoPictures();
    void endsBySignal_data();
    void endsBySignal();

private:
    struct Run {
        int exitCode = -1;
        QByteArray output;
        QByteArray error;
    };

    void prepare(QProcess &process, const QStringList &arguments) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME"}) {
            environment.insert(QString::fromLatin1(name), m_home->path());
        }
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path="_s + m_home->filePath(u"no-bus"_s));
        process.setProcessEnvironment(environment);
        process.setProgram(QStringLiteral(TARNWELL_PROGRAM));
        process.setArguments(arguments);
    }

    Run run(const QStringList &arguments) const
    {
        QProcess process;
        prepare(process, arguments);
        process.start();
        process.waitForFinished(60'000);
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                process.readAllStandardOutput(), process.readAllStandardError()};
    }

    QString profile() const { return m_home->filePath(u"profile"_s); }

    // A profile with one server; its host key is not checked, so that no file of known hosts is written.
    void makeProfile(const Server &server) const
    {
        UserDefaults defaults(profile());
        AppSettings(defaults).setVerifyHostKeys(false);
        const SystemClock clock;
        ServerStore(defaults, clock).addServer(server);
    }

    Server serverOf(const RigSshd &sshd) const
    {
        Server server;
        server.name = u"This machine"_s;
        server.host = sshd.host();
        server.port = sshd.port();
        server.username = sshd.user();
        server.authMethod = AuthMethod::PublicKey;
        server.privateKeyPath = sshd.key();
        return server;
    }

    QStringList leftovers() const
    {
        return QDir(m_home->filePath(u"tarnwell"_s))
            .entryList({u"tarnwell_askpass*"_s, u"tw_ssh"_s}, QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_home;
};

void TestProgram::tellsAboutItself()
{
    const Run version = run({u"--version"_s});
    QCOMPARE(version.exitCode, 0);
    QVERIFY(version.output.startsWith("Tarnwell "));
    const Run help = run({u"--help"_s});
    QCOMPARE(help.exitCode, 0);
    QVERIFY(help.output.contains("--profile <DIR>"));
}

void TestProgram::refusesWhatItDoesNotKnow()
{
    for (const QString &argument : {u"--bogus"_s, u"server"_s, u"--profile"_s}) {
        const Run refused = run({argument});
        QCOMPARE(refused.exitCode, 2);
        QVERIFY(refused.error.startsWith("tarnwell: "));
    }
}

void TestProgram::measuresItsStart()
{
    const Run measured = run({u"--profile"_s, profile(), u"--measure-start"_s});
    QCOMPARE(measured.exitCode, 0);
    const QRegularExpression line(
        u"^first-paint-ms=[1-9]\\d* clock-ms=\\d+\\.\\d+ cpu-ms=\\d+\\.\\d+ rss-kib=[1-9]\\d* pss-kib=[1-9]\\d*\\n$"_s);
    QVERIFY2(line.match(QString::fromUtf8(measured.output)).hasMatch(), measured.output.constData());
    QVERIFY(!QFile::exists(profile())); // nothing has changed, so nothing was written
}

void TestProgram::drawsPicturesOfRealData()
{
    RigSshd sshd;
    QVERIFY2(sshd.up(), qPrintable(sshd.error()));
    makeProfile(serverOf(sshd));
    const QString folder = m_home->filePath(u"pictures"_s);
    const Run drawn = run({u"--profile"_s, profile(), u"--render"_s, folder});
    QVERIFY2(drawn.exitCode == 0, drawn.error.constData());
    const QList<QByteArray> names = drawn.output.trimmed().split('\n');
    QCOMPARE(names.size(), 5);
    QCOMPARE(QImage(folder + u"/window-light-1280x800.png"_s).size(), QSize(1280, 800));
    QCOMPARE(QImage(folder + u"/window-dark-1024x700.png"_s).size(), QSize(1024, 700));
    QCOMPARE(QImage(folder + u"/window-light-1280x800@2x.png"_s).size(), QSize(2560, 1600));

    UserDefaults defaults(profile());
    const SystemClock clock;
    QVERIFY(ServerStore(defaults, clock).servers().constFirst().systemInfo);
    QCOMPARE(leftovers(), QStringList());
}

void TestProgram::tellsWhyThereAreNoPictures()
{
    Server server;
    server.name = u"nobody"_s;
    server.host = u"127.0.0.1"_s;
    server.port = 1; // nothing listens there
    server.username = u"nobody"_s;
    server.authMethod = AuthMethod::SshAgent;
    makeProfile(server);
    const Run failed = run({u"--profile"_s, profile(), u"--render"_s, m_home->filePath(u"pictures"_s)});
    QCOMPARE(failed.exitCode, 1);
    QVERIFY(failed.error.contains("tarnwell: no pictures: Failed to connect to nobody"));
}

void TestProgram::endsBySignal_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void TestProgram::endsBySignal()
{
    QFETCH(int, signal);
    QProcess process;
    prepare(process, {u"--profile"_s, profile()});
    process.start();
    QVERIFY(process.waitForStarted());
    const QString runtime = m_home->filePath(u"tarnwell"_s);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(runtime), 20'000);
    QTest::qWait(500);
    kill(static_cast<pid_t>(process.processId()), signal);
    QVERIFY(process.waitForFinished(20'000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(leftovers(), QStringList());
}

QTEST_GUILESS_MAIN(TestProgram)
#include "test_program.moc"
