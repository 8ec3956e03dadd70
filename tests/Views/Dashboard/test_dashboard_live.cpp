#include "Views/LiveServers.h"

#include "Views/Components/AlertDialog.h"
#include "Views/Components/CompactMetricsCard.h"
#include "Views/Components/Disclosure.h"
#include "Views/Components/KeyValueGrid.h"
#include "Views/Components/StatePage.h"
#include "Views/Dashboard/DashboardContent.h"
#include "Views/Dashboard/DashboardView.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Dashboard/MonitoringCards.h"

#include <QPushButton>
#include <QSysInfo>

using namespace Qt::StringLiterals;

using Connection = DashboardViewModel::Connection;

/// The dashboard on a real sshd: facts, moving curves, and each failure in its words.
class TestDashboardLive : public QObject, private LiveServers
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QVERIFY2(up(), qPrintable(m_sshd.error())); }

    void init() { begin(); }

    void cleanup()
    {
        m_view.reset();
        m_model.reset();
        end();
    }

    void factsAndMovingCurves();
    void failuresInWords_data();
    void failuresInWords();
    void changedHostKey();
    void wrongPassword();
    void lockedKey();

private:
    void open(const Server &server)
    {
        m_store->addServer(server);
        m_model = std::make_unique<DashboardViewModel>(
            DashboardViewModel::Services{m_transport->manager, *m_store, m_transport->clock}, server);
        m_view = std::make_unique<DashboardView>(m_theme, *m_model);
        m_view->resize(880, 760);
        m_view->show();
        m_view->setActive(true);
        m_model->start();
    }

    void failed()
    {
        QTRY_COMPARE_WITH_TIMEOUT(m_model->connection(), Connection::Failed, kPatience);
        QVERIFY(m_view->connectionAlert());
        QCOMPARE(m_view->connectionAlert()->accessibleDescription(), m_model->connectionErrorMessage());
    }

    void typeSecret(const QString &secret)
    {
        QTRY_VERIFY(m_view->secretForm());
        type(m_view->secretForm(), secret);
    }

    std::unique_ptr<DashboardViewModel> m_model;
    std::unique_ptr<DashboardView> m_view;
};

void TestDashboardLive::factsAndMovingCurves()
{
    open(TestTransport::server(m_sshd, AuthMethod::PublicKey));
    QTRY_COMPARE_WITH_TIMEOUT(m_view->page().state(), StatePage::State::Content, kPatience);
    QCOMPARE(m_view->content().facts().rows().at(0).second, QSysInfo::machineHostName());

    Disclosure &section = m_view->content().section(DashboardViewModel::kMonitoring);
    section.header().click();
    const auto *cards = qobject_cast<MonitoringCards *>(section.content());
    QTRY_VERIFY_WITH_TIMEOUT(m_model->metricsHistory().size() >= 3, kPatience);
    QVERIFY(!cards->isLoading());
    QVERIFY(cards->cpu().chart().error().isEmpty());
    QVERIFY(cards->cpu().chart().points(0).size() >= 3);
    const auto &memory = m_model->currentMetrics()->memoryUsage;
    QVERIFY(memory.total > 0 && memory.used > 0 && memory.used < memory.total);
    QCOMPARE(cards->memory().chart().points(0).constLast().y(), 100.0 * double(memory.used) / double(memory.total));
    QVERIFY(cards->network().legend().constFirst().endsWith(u"B/s"_s));
    QVERIFY(m_model->gpuMetrics());

    const qsizetype samples = m_model->metricsHistory().size();
    section.header().click();
    QTest::qWait(MetricsSampler::kIntervalMs + 1000); // one may be under way
    QVERIFY(m_model->metricsHistory().size() <= samples + 1);
    const qsizetype asleep = m_model->metricsHistory().size();
    section.header().click();
    QTRY_VERIFY_WITH_TIMEOUT(m_model->metricsHistory().size() > asleep, kPatience); // behind those before
}

void TestDashboardLive::failuresInWords_data()
{
    QTest::addColumn<AuthMethod>("method");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("detail");
    const QString general = u"Failed to connect to test. Please check:\n\n• Host is reachable"_s;
    const QString key = u"Failed to authenticate with SSH key. Please check your key path and permissions."_s;
    QTest::newRow("nobody listens, agent")
        << AuthMethod::SshAgent << u"127.0.0.1"_s << general << u"Connection refused"_s;
    QTest::newRow("nobody listens, key") << AuthMethod::PublicKey << u"127.0.0.1"_s << key << u"Connection refused"_s;
    QTest::newRow("no such host") << AuthMethod::SshAgent << u"no-such-host.invalid"_s << general
                                  << u"Could not resolve hostname"_s;
}

void TestDashboardLive::failuresInWords()
{
    QFETCH(AuthMethod, method);
    QFETCH(QString, host);
    QFETCH(QString, message);
    QFETCH(QString, detail);
    Server server = TestTransport::server(m_sshd, method);
    server.name = u"test"_s;
    server.host = host;
    server.port = 1;
    open(server);
    failed();
    QVERIFY2(m_model->connectionErrorMessage().startsWith(message), qPrintable(m_model->connectionErrorMessage()));
    QVERIFY2(m_model->connectionErrorDetail().contains(detail), qPrintable(m_model->connectionErrorDetail()));
    m_view->connectionAlert()->buttons().constFirst()->click();
    QCOMPARE(m_view->page().message().title, u"Not Connected"_s);
    QCOMPARE(m_view->page().message().detail, m_model->connectionErrorDetail());
}

void TestDashboardLive::changedHostKey()
{
    const Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
    open(server);
    QTRY_COMPARE_WITH_TIMEOUT(m_view->page().state(), StatePage::State::Content, kPatience);
    m_transport->manager.disconnect(server);
    m_store->updateServerConnection(server, false);
    QVERIFY2(m_sshd.rekey(), qPrintable(m_sshd.error()));

    m_model->initiateConnection(); // the operator is asked, and declines
    failed();
    QCOMPARE(m_transport->prompt.asked.size(), 1);
    QCOMPARE(m_model->connectionErrorDetail(), u"Host key verification failed."_s);
    QCOMPARE(m_view->page().state(), StatePage::State::Content); // what was known of the server
    QVERIFY(m_view->content().trouble().contains(u"Host key verification failed."_s));
}

void TestDashboardLive::wrongPassword()
{
    RIG_NEEDS_ROOT();
    open(TestTransport::server(m_sshd, AuthMethod::Password, m_sshd.passwordAccount()));
    failed(); // none is stored
    const QString message = u"Failed to connect. Please check your password and try again."_s;
    QCOMPARE(m_model->connectionErrorMessage(), message);
    QVERIFY(m_model->connectionErrorDetail().isEmpty());
    typeSecret(u"wrong"_s);
    QVERIFY(m_model->isConnecting());
    failed();
    QCOMPARE(m_model->connectionErrorMessage(), message);
    QVERIFY(m_model->connectionErrorDetail().contains(u"Permission denied"_s));
    typeSecret(m_sshd.password());
    QTRY_VERIFY_WITH_TIMEOUT(m_model->isConnected(), kPatience);
    QVERIFY(!m_view->connectionAlert());
}

void TestDashboardLive::lockedKey()
{
    Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
    server.privateKeyPath = m_sshd.passphraseKey();
    open(server);
    const QString message = u"SSH key requires a passphrase.\n\n"
                            "To add a passphrase:\n"
                            "1. Right-click the server and select 'Edit Server'\n"
                            "2. Enter the passphrase in the 'Passphrase' field\n"
                            "3. Click the key icon to save it to Keychain\n"
                            "4. Save the server and try connecting again"_s;
    failed();
    QCOMPARE(m_model->connectionErrorMessage(), message);
    typeSecret(u"wrong"_s);
    failed();
    QCOMPARE(m_model->connectionErrorMessage(), message);
    typeSecret(m_sshd.passphrase());
    QTRY_VERIFY_WITH_TIMEOUT(m_model->isConnected(), kPatience);
}

QTEST_MAIN(TestDashboardLive)
#include "test_dashboard_live.moc"
