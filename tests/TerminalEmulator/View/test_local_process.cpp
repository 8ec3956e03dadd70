#include "TerminalEmulator/View/LocalProcess.h"

#include <QTest>
#include <cerrno>
#include <optional>
#include <sys/wait.h>

/// A child on a terminal of its own, in the event loop.
class TestLocalProcess : public QObject, public vt::LocalProcessDelegate
{
    Q_OBJECT

public:
    bool wantsOutput() const override { return m_wantsOutput; }

    void dataReceived(QByteArrayView data) override { m_output += data; }

    void processTerminated(int status) override
    {
        QVERIFY(!m_status);
        m_status = status;
    }

private Q_SLOTS:

    void init()
    {
        m_output.clear();
        m_status.reset();
        m_wantsOutput = true;
    }

    void talksWithItsChild();
    void outputWaits();
    void environmentAsGiven();
    void endsBySignalOrNotAtAll();
    void goesInTheMiddle();

private:
    int start(vt::LocalProcess &process, const QString &line, const QStringList &environment = {})
    {
        return process.startProcess(QStringLiteral("sh"), {QStringLiteral("-c"), line}, environment, {97, 31});
    }

    QByteArray m_output;
    std::optional<int> m_status;
    bool m_wantsOutput = true;
};

void TestLocalProcess::talksWithItsChild()
{
    qputenv("COLUMNS", "5");
    vt::LocalProcess process(*this);
    QCOMPARE(start(process, QStringLiteral("stty size; echo $TERM-$COLUMNS-; read a; stty size; exit $a")), 0);
    QTRY_VERIFY(m_output.contains("31 97\r\nxterm-256color--\r\n"));
    process.setWindowSize(60, 20, {600, 400});
    QVERIFY(process.send("7\r"));
    QTRY_VERIFY(m_status.has_value());
    QVERIFY(WIFEXITED(*m_status));
    QCOMPARE(WEXITSTATUS(*m_status), 7);
    QVERIFY(m_output.endsWith("20 60\r\n"));
    qunsetenv("COLUMNS");
}

void TestLocalProcess::outputWaits()
{
    m_wantsOutput = false;
    vt::LocalProcess process(*this);
    QCOMPARE(start(process, QStringLiteral("head -c 3000000 /dev/zero | tr '\\0' x; echo end")), 0);
    QTest::qWait(300);
    QVERIFY(m_output.isEmpty() && !m_status);
    m_wantsOutput = true;
    QTRY_VERIFY_WITH_TIMEOUT(m_status.has_value(), 30'000);
    QCOMPARE(m_output.size(), 3'000'000 + 5);
}

void TestLocalProcess::environmentAsGiven()
{
    vt::LocalProcess process(*this);
    QCOMPARE(start(process, QStringLiteral("echo $A-$TERM-"), {QStringLiteral("A=b c"), QStringLiteral("PATH=/bin")}),
             0);
    QTRY_VERIFY(m_status.has_value());
    QCOMPARE(m_output, QByteArray("b c--\r\n"));
}

void TestLocalProcess::endsBySignalOrNotAtAll()
{
    vt::LocalProcess process(*this);
    QCOMPARE(start(process, QStringLiteral("kill -TERM $$")), 0);
    QTRY_VERIFY(m_status.has_value());
    QVERIFY(WIFSIGNALED(*m_status));
    m_status.reset();
    vt::LocalProcess missing(*this);
    QCOMPARE(missing.startProcess(QStringLiteral("/no/such/program"), {}, {}, {80, 24}), ENOENT);
    QVERIFY(!missing.send("a"));
    QTest::qWait(150);
    QVERIFY(!m_status);
}

void TestLocalProcess::goesInTheMiddle()
{
    for (int round = 0; round < 5; ++round) {
        vt::LocalProcess process(*this);
        QCOMPARE(start(process, QStringLiteral("yes")), 0);
        m_output.clear();
        QTRY_VERIFY(m_output.size() > 100'000);
    }
    QVERIFY(!m_status);
}

QTEST_GUILESS_MAIN(TestLocalProcess)
#include "test_local_process.moc"
