#include "App/SingleInstance.h"
#include "Services/SSH/RuntimeDirectory.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>

using namespace Qt::StringLiterals;

using Claim = SingleInstance::Claim;

class TestSingleInstance : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        m_directory = std::make_unique<RuntimeDirectory>(m_home->filePath(u"tarnwell"_s));
    }

    void oneForEachProfile();
    void whoIsStuckIsNotPassedOver();
    void withoutADirectory();
    void aSecondStartOfTheProgram();
    void programs();

private:
    std::unique_ptr<QProcess> start(const QString &profile, const QByteArray &token = {}) const
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME"}) {
            environment.insert(QString::fromLatin1(name), m_home->path());
        }
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path="_s + m_home->filePath(u"no-bus"_s));
        environment.insert(u"XDG_ACTIVATION_TOKEN"_s, QString::fromUtf8(token));
        process->setProcessEnvironment(environment);
        process->start(QStringLiteral(TARNWELL_PROGRAM), {u"--profile"_s, m_home->filePath(profile)});
        return process;
    }

    QStringList sockets() const
    {
        return QDir(m_home->filePath(u"tarnwell"_s)).entryList({u"instance-*.socket"_s}, QDir::System);
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<RuntimeDirectory> m_directory;
};

void TestSingleInstance::oneForEachProfile()
{
    const QString profile = m_home->filePath(u"profile"_s);
    auto first = std::make_unique<SingleInstance>(*m_directory, profile);
    QCOMPARE(first->claim({}), Claim::First);
    SingleInstance other(*m_directory, m_home->filePath(u"other"_s));
    QCOMPARE(other.claim({}), Claim::First);
    first->listen();
    QCOMPARE(sockets().size(), 1);
    first.reset();
    QCOMPARE(sockets(), QStringList());
    SingleInstance second(*m_directory, profile);
    QCOMPARE(second.claim({}), Claim::First);
    for (const QFileInfo &file : QDir(m_directory->path()).entryInfoList({u"instance-*"_s}, QDir::Files)) {
        QCOMPARE(file.permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
                 QFile::Permissions());
    }
}

void TestSingleInstance::whoIsStuckIsNotPassedOver()
{
    const QString profile = m_home->filePath(u"profile"_s);
    auto first = std::make_unique<SingleInstance>(*m_directory, profile);
    QCOMPARE(first->claim({}), Claim::First);
    SingleInstance second(*m_directory, profile);
    QCOMPARE(second.claim({}, std::chrono::milliseconds(100)), Claim::NoAnswer); // it never listened
    first.reset();
    QCOMPARE(second.claim({}, std::chrono::milliseconds(100)), Claim::First);
}

void TestSingleInstance::withoutADirectory()
{
    const RuntimeDirectory refused(u"/nowhere/at/all"_s);
    QVERIFY(!refused.available());
    SingleInstance first(refused, m_home->path());
    SingleInstance second(refused, m_home->path());
    QCOMPARE(first.claim({}), Claim::First);
    QCOMPARE(second.claim({}), Claim::First);
    first.listen();
}

void TestSingleInstance::aSecondStartOfTheProgram()
{
    QVERIFY(QDir().mkdir(m_home->filePath(u"profile"_s)));
    SingleInstance first(*m_directory, m_home->filePath(u"profile"_s));
    QCOMPARE(first.claim({}), Claim::First);
    first.listen();
    QSignalSpy spy(&first, &SingleInstance::raiseRequested);
    const auto second = start(u"../"_s + QFileInfo(m_home->path()).fileName() + u"/profile"_s, "token-1");
    QTRY_COMPARE_WITH_TIMEOUT(second->state(), QProcess::NotRunning, 20'000);
    QCOMPARE(second->exitCode(), 0);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.takeFirst().constFirst().toByteArray(), "token-1");
}

void TestSingleInstance::programs()
{
    const auto isGone = [](const QProcess &process) { return process.state() == QProcess::NotRunning; };
    const auto first = start(u"profile"_s);
    QTRY_COMPARE_WITH_TIMEOUT(sockets().size(), 1, 20'000);
    const auto second = start(u"profile"_s);
    QTRY_VERIFY_WITH_TIMEOUT(isGone(*second), 20'000);
    QCOMPARE(second->exitCode(), 0);
    QVERIFY(!isGone(*first));
    const auto other = start(u"other"_s);
    QTRY_COMPARE_WITH_TIMEOUT(sockets().size(), 2, 20'000);

    // Killed, it leaves its socket behind, which is in nobody's way.
    const QStringList before = sockets();
    kill(static_cast<pid_t>(first->processId()), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(isGone(*first), 20'000);
    QCOMPARE(sockets(), before);
    const auto next = start(u"profile"_s);
    const auto last = start(u"profile"_s); // at the same time
    QTRY_VERIFY_WITH_TIMEOUT(isGone(*next) || isGone(*last), 20'000);
    QProcess &loser = isGone(*next) ? *next : *last;
    QProcess &winner = isGone(*next) ? *last : *next;
    QCOMPARE(loser.exitCode(), 0);
    QVERIFY(!isGone(winner));
    for (QProcess *process : {&winner, other.get()}) {
        process->terminate();
        QTRY_VERIFY_WITH_TIMEOUT(isGone(*process), 20'000);
        QCOMPARE(process->exitCode(), 0);
    }
    QCOMPARE(sockets(), QStringList());
}

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "test_single_instance.moc"
