#include "rig/RigHosts.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
struct Answer {
    int code = -1;
    QString output;
    QString error;
};

Answer on(const RigHost &host, const QString &command, int connectTimeout = 20)
{
    QProcess ssh;
    ssh.start(u"/usr/bin/ssh"_s, QStringList{u"-o"_s, u"ConnectTimeout=%1"_s.arg(connectTimeout)} +
                                     host.sshArguments() + QStringList{command});
    ssh.closeWriteChannel();
    if (!ssh.waitForFinished(60'000)) {
        return {-1, {}, ssh.errorString()};
    }
    return {ssh.exitCode(), QString::fromUtf8(ssh.readAllStandardOutput()),
            QString::fromUtf8(ssh.readAllStandardError())};
}
} // namespace

class TestRigHosts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void filesNameHosts();
    void eachRoleIsWhatItSays_data();
    void eachRoleIsWhatItSays();
    void hostileHostDoesAsTold();
    void breakableLineBreaks();

private:
    RigHosts m_hosts;
};

void TestRigHosts::cleanup()
{
    if (m_hosts.find(u"hostile"_s)) {
        m_hosts.hostile(u"resume"_s);
        m_hosts.line({u"mode=ok"_s});
    }
}

void TestRigHosts::filesNameHosts()
{
    QTemporaryDir folder;
    const auto write = [&folder](const QString &name, const QByteArray &text) {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::WriteOnly)) {
            file.write(text);
        }
        return file.fileName();
    };
    const QString key = write(u"a key"_s, "");
    const QString own =
        write(u"own"_s, "# mine\n\ndnf  me 10.0.0.1\t2200 " + key.toUtf8() + "\nodd line\nx y z 0 k\n");
    const QString rig = write(u"rig"_s, "dnf ada 127.0.0.12 22 " + key.toUtf8() + "\nslow a b 22 /nowhere/key\n");
    const RigHosts hosts({own, folder.filePath(u"missing"_s), rig});
    const std::optional<RigHost> dnf = hosts.find(u"dnf"_s);
    QVERIFY(dnf);
    QCOMPARE(dnf->user + u'@' + dnf->address + u':' + QString::number(dnf->port), u"me@10.0.0.1:2200"_s);
    QCOMPARE(dnf->key, key);
    QVERIFY(!hosts.find(u"slow"_s));
    QVERIFY(hosts.reason(u"slow"_s).contains("/nowhere/key"_L1));
    QVERIFY(!hosts.find(u"x"_s));
    QVERIFY(hosts.reason(u"x"_s).contains("tests/hosts.local"_L1));
}

void TestRigHosts::eachRoleIsWhatItSays_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("output");
    QTest::newRow("systemd") << u"cat /proc/1/comm; command -v docker podman apt | wc -l; sudo -n id -u"_s
                             << u"systemd\n3\n0\n"_s;
    QTest::newRow("nosudo") << u"sudo -n id -u 2>/dev/null || echo no"_s << u"no\n"_s;
    QTest::newRow("german") << u"df nowhere 2>&1 | grep -c 'Datei oder Verzeichnis'"_s << u"1\n"_s;
    QTest::newRow("tcsh") << u"echo $shell"_s << u"/bin/tcsh\n"_s;
    QTest::newRow("dnf") << u"cat /proc/1/comm; command -v dnf rpm podman | wc -l; command -v docker apt"_s
                         << u"systemd\n3\n"_s;
    QTest::newRow("busybox") << u"ls --help 2>&1 | grep -c BusyBox; command -v systemctl ss sudo"_s << u"1\n"_s;
    QTest::newRow("slow") << u"echo in"_s << u"in\n"_s;
    QTest::newRow("breakable") << u"echo in"_s << u"in\n"_s;
    QTest::newRow("hostile") << u"cat /proc/1/comm"_s << u"sshd\n"_s;
}

void TestRigHosts::eachRoleIsWhatItSays()
{
    QFETCH(QString, command);
    QFETCH(QString, output);
    RIG_NEEDS_HOST(host, m_hosts, QString::fromLatin1(QTest::currentDataTag()));
    const Answer system = on(host, u"uname"_s);
    QVERIFY2(system.output.endsWith("Linux\n"_L1), qPrintable(system.output + system.error));
    const Answer answer = on(host, command);
    QVERIFY2(answer.output.endsWith(output), qPrintable(answer.output + answer.error));
}

void TestRigHosts::hostileHostDoesAsTold()
{
    RIG_NEEDS_HOST(host, m_hosts, u"hostile"_s);
    const QString hostKey = u"ssh-keygen -lf /etc/ssh/ssh_host_ed25519_key.pub"_s;
    const QString before = on(host, hostKey).output;
    QVERIFY2(m_hosts.hostile(u"rekey"_s), qPrintable(m_hosts.error()));
    const QString after = on(host, hostKey).output;
    QVERIFY(after.contains("ED25519"_L1) && after != before);
    QVERIFY(m_hosts.hostile(u"hang"_s));
    const Answer hung = on(host, u"true"_s, 1);
    QVERIFY2(hung.error.contains("timed out"_L1), qPrintable(hung.error));
    QVERIFY(m_hosts.hostile(u"resume"_s));

    QProcess ssh;
    ssh.start(u"/usr/bin/ssh"_s, host.sshArguments() + QStringList{u"echo begun; sleep 60"_s});
    QVERIFY(ssh.waitForReadyRead());
    QVERIFY(m_hosts.hostile(u"drop"_s));
    QVERIFY(ssh.waitForFinished());
    QCOMPARE(ssh.exitCode(), 255);
    QCOMPARE(on(host, u"echo back"_s).output, u"back\n"_s);
}

void TestRigHosts::breakableLineBreaks()
{
    RIG_NEEDS_HOST(host, m_hosts, u"breakable"_s);
    QVERIFY2(m_hosts.line({u"mode=reset"_s}), qPrintable(m_hosts.error()));
    QCOMPARE(on(host, u"true"_s).code, 255);
    QVERIFY(m_hosts.line({u"mode=ok"_s, u"drop_after=20000"_s}));
    const Answer cut = on(host, u"seq 100000"_s);
    QCOMPARE(cut.code, 255);
    QVERIFY(!cut.output.contains("\n100000\n"_L1));
    QVERIFY(m_hosts.line({u"mode=ok"_s}));
    QCOMPARE(on(host, u"echo back"_s).output, u"back\n"_s);
}

QTEST_GUILESS_MAIN(TestRigHosts)
#include "test_rig_hosts.moc"
