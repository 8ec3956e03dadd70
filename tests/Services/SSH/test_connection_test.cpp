#include "Services/SSH/ConnectionTest.h"
#include "Services/SSH/HostKeys.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

// What ssh(1) of OpenSSH 9.2 prints about a changed key, shortened in the middle.
const QString kChanged = u"@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@\r\n"
                         "@    WARNING: REMOTE HOST IDENTIFICATION HAS CHANGED!     @\r\n"
                         "The fingerprint for the ED25519 key sent by the remote host is\n"
                         "SHA256:2VNTnuUMOkI4rGdaSmJuYzjhLRKvbVqAR6Xg0p+P/0M.\r\n"
                         "Offending ED25519 key in /home/ops/.ssh/known_hosts:17\r\n"
                         "Host key for db.internal has changed and you have requested strict checking.\r\n"
                         "Host key verification failed.\r\n"_s;
const QString kUnknown = u"No ED25519 host key is known for db.internal and you have requested strict checking.\r\n"
                         "Host key verification failed.\r\n"_s;

ChildOutcome ended(int exitCode, const QString &error, const QByteArray &output = {})
{
    return {.kind = ChildOutcome::Kind::Exited, .exitCode = exitCode, .output = output, .error = error.toUtf8()};
}

Server server()
{
    Server record;
    record.name = u"Data <b>base</b>"_s;
    record.host = u"db.internal"_s;
    record.port = 2222;
    return record;
}

} // namespace

class TestConnectionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void success();
    void hostKeyFlags();
    void lockedKeys_data();
    void lockedKeys();
    void reasons();
    void readsHostKeyInfo();
    void conflictTexts();
};

void TestConnectionTest::success()
{
    using ConnectionTest::classify;
    QVERIFY(classify(ended(0, u"motd"_s, "noise\nSSH_CONNECTION_SUCCESS\n"), AuthMethod::Password).success);
    QVERIFY(!classify(ended(1, {}, "SSH_CONNECTION_SUCCESS\n"), AuthMethod::Password).success);
    QVERIFY(!classify(ended(0, {}, "welcome\n"), AuthMethod::Password).success);
    const SSHTestResult failed =
        classify({.kind = ChildOutcome::Kind::FailedToStart, .reason = u"No such file"_s}, AuthMethod::PublicKey);
    QCOMPARE(failed, (SSHTestResult{.error = u"No such file"_s, .hasNotRun = true}));
}

void TestConnectionTest::hostKeyFlags()
{
    using ConnectionTest::classify;
    const SSHTestResult changed = classify(ended(255, kChanged), AuthMethod::SshAgent);
    QVERIFY(changed.isHostKeyError && changed.isChangedHostKeyError && !changed.isNewHostKeyError);
    const SSHTestResult unknown = classify(ended(255, kUnknown), AuthMethod::SshAgent);
    QVERIFY(unknown.isHostKeyError && unknown.isNewHostKeyError && !unknown.isChangedHostKeyError);
    const SSHTestResult otherStatus = classify(ended(1, kChanged), AuthMethod::SshAgent);
    QVERIFY(!otherStatus.isHostKeyError && !otherStatus.isChangedHostKeyError);
}

void TestConnectionTest::lockedKeys_data()
{
    QTest::addColumn<QString>("error");
    QTest::addColumn<bool>("isLocked");
    QTest::newRow("asks") << u"Enter passphrase for key '/k': "_s << true;
    QTest::newRow("wrong") << u"Load key \"/k\": incorrect passphrase supplied to decrypt private key"_s << true;
    QTest::newRow("old format") << u"bad decrypt"_s << true;
    QTest::newRow("unreadable format") << u"Load key \"/k\": invalid format"_s << true;
    QTest::newRow("permissions") << u"Load key \"/k\": bad permissions, invalid format"_s << false;
    QTest::newRow("refused") << u"Permission denied (publickey)."_s << false;
}

void TestConnectionTest::lockedKeys()
{
    QFETCH(const QString, error);
    QFETCH(const bool, isLocked);
    QCOMPARE(ConnectionTest::classify(ended(255, error), AuthMethod::PublicKey).isPassphraseError, isLocked);
    QVERIFY(!ConnectionTest::classify(ended(255, error), AuthMethod::Password).isPassphraseError);
}

void TestConnectionTest::reasons()
{
    using ConnectionTest::reason;
    QCOMPARE(reason({}), QString());
    QCOMPARE(reason(kChanged), u"Host key verification failed."_s);
    // Words of the server's own come before and after it.
    QCOMPARE(reason(u"Welcome\r\nssh: connect to host db port 22: No route to host\r\nand good bye\n\n"_s),
             u"ssh: connect to host db port 22: No route to host"_s);
    QCOMPARE(reason(u"command-line: line 0: Bad configuration option\n  \n"_s),
             u"command-line: line 0: Bad configuration option"_s);
    QCOMPARE(reason(QString(100'000, u'x')).size(), 300);
}

void TestConnectionTest::readsHostKeyInfo()
{
    QCOMPARE(extractHostKeyInfo(kChanged),
             (HostKeyInfo{17, u"ED25519"_s, u"SHA256:2VNTnuUMOkI4rGdaSmJuYzjhLRKvbVqAR6Xg0p+P/0M"_s}));
    QCOMPARE(extractHostKeyInfo(u"known_hosts:99999999999999999999"_s), HostKeyInfo());
}

void TestConnectionTest::conflictTexts()
{
    const HostKeyConflict changed = describeHostKeyConflict(server(), kChanged);
    QCOMPARE(changed.title, u"SSH Host Key Verification Failed"_s);
    QCOMPARE(changed.body,
             u"The server's host key has changed since your last connection. This could indicate:\n\n"
             "• The server was reinstalled or reconfigured\n• A security issue (man-in-the-middle attack)\n\n"
             "Server: Data <b>base</b> (db.internal:2222)\n\n"
             "To resolve this, run the following command in Terminal:"_s);
    QCOMPARE(changed.command, u"ssh-keygen -R 'db.internal'"_s);
    QCOMPARE(changed.hint, u"After running this command, click \"Retry Connection\".\n"
                           "Or manually edit ~/.ssh/known_hosts and remove line 17."_s);

    const HostKeyConflict unknown = describeHostKeyConflict(server(), kUnknown + u"SHA256:abc+/9"_s);
    QCOMPARE(unknown.body,
             u"This is the first time connecting to this server, or the host key was previously removed.\n\n"
             "Server: Data <b>base</b> (db.internal:2222)\nFingerprint: SHA256:abc+/9\n\n"
             "To resolve this, run the following command in Terminal:"_s);

    const HostKeyConflict other = describeHostKeyConflict(server(), u"Host key verification failed."_s);
    QCOMPARE(other.body, u"SSH host key verification failed.\n\nServer: Data <b>base</b> (db.internal:2222)\n\n"
                         "To resolve this, run the following command in Terminal:"_s);
}

QTEST_GUILESS_MAIN(TestConnectionTest)
#include "test_connection_test.moc"
