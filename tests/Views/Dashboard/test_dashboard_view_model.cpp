#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/FakeTransport.h"

#include "Services/Commands/NetworkCommands.h"
#include "Services/Commands/SystemCommands.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

using Connection = DashboardViewModel::Connection;
using WantedSecret = DashboardViewModel::WantedSecret;

namespace
{

QByteArray factsOf(const QByteArray &hostname)
{
    return "=== HOSTNAME ===\n" + hostname +
           "\n=== CPU_COUNT ===\n8\n=== DISK ===\n/dev/sda1 78G 24G 54G 31% /\n/dev/sdb1 10G 9G 1G 93% /srv\n";
}

const QByteArray kNoDevices = R"({"blockdevices":[]})";

} // namespace

/// The state of the dashboard on a scripted server.
class TestDashboardViewModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init() { m_transport = std::make_unique<FakeTransport>(); }

    void cleanup()
    {
        m_model.reset();
        m_transport.reset();
    }

    void connectsAndFetchesTheFacts();
    void youngFactsAreKept();
    void factsWithoutDevicesAreFetchedAgain();
    void aFailedFetchKeepsWhatIsThere();
    void theNewestRefreshCounts();
    void failuresInWords_data();
    void failuresInWords();
    void asksForAPassword();
    void retries();
    void oneAttemptDoesNotTellForAnother();
    void asksBeforeItDisconnects();
    void aLoginThatWasOvertakenByADisconnect();
    void ofTwoLoginsTheNewerCounts();
    void editedWhileLoggingIn();
    void connectedElsewhere();
    void monitoringFollowsTheSection();
    void tellsWhenTheServerIsSilent();
    void ratesBeginAnewAfterAReconnect();
    void closedAndOpenedAgainKeepsTheCurves();
    void looksForGPUs();
    void goneWhileSampling();
    void goneInTheMiddle();
    void deletedInTheMiddle();
    void rootFileSystemFirst();

private:
    DashboardViewModel &start(const Server &server)
    {
        m_model = std::make_unique<DashboardViewModel>(
            DashboardViewModel::Services{m_transport->manager, m_transport->store, m_transport->clock}, server);
        m_model->start();
        return *m_model;
    }

    // Connects, with facts that are young enough to be kept.
    DashboardViewModel &startConnected()
    {
        Server server = m_transport->add(u"web"_s);
        server.systemInfo = SystemInfo{.hostname = u"kept"_s, .lastUpdated = m_transport->clock.now()};
        server.systemInfo->storageDevices.emplace();
        m_transport->store.updateServer(server);
        start(server);
        [&] { QTRY_COMPARE(m_model->connection(), Connection::Connected); }();
        return *m_model;
    }

    // Answers what waits until a sample is whole. On a slow machine the next one has begun by then.
    void answerSamples(qint64 receivedBytes = 0)
    {
        const qsizetype samples = m_model->metricsHistory().size();
        while (!m_transport->calls.isEmpty() && m_model->metricsHistory().size() == samples) {
            const QString line = m_transport->calls.constFirst().command;
            const QByteArray received = QByteArray::number(receivedBytes);
            m_transport->answer(line == GetCPUUsageCommand().commandString()        ? "25.0\n"
                                : line == GetMemoryMetricsCommand().commandString() ? "TOTAL:1000|USED:500\n"
                                : line == GetNetworkMetricsCommand().commandString()
                                    ? "eth0|" + received + "|0|0|0|0|0\n"
                                : line == GetGPUMetricsCommand().commandString()
                                    ? QByteArray("MIXED_VENDOR_START\nMIXED_VENDOR_END\n")
                                    : QByteArray());
            QCoreApplication::processEvents();
        }
    }

    int linesOf(const QString &command) const
    {
        int count = 0;
        for (const auto &call : m_transport->calls) {
            count += call.command == command ? 1 : 0;
        }
        return count;
    }

    // Answers the question for the facts, then that for the devices, which follows it.
    void answerFacts(const QByteArray &facts, int exitCode = 0, const QByteArray &error = {})
    {
        QTRY_COMPARE(m_transport->calls.size(), 1);
        m_transport->answer(facts, exitCode, error);
        QTRY_COMPARE(m_transport->calls.size(), 1);
        m_transport->answer(kNoDevices);
    }

    std::unique_ptr<FakeTransport> m_transport;
    std::unique_ptr<DashboardViewModel> m_model;
};

void TestDashboardViewModel::connectsAndFetchesTheFacts()
{
    const Server server = m_transport->add(u"web"_s);
    const auto &model = start(server);
    QCOMPARE(model.connection(), Connection::Connecting);
    QVERIFY(!model.systemInfo());
    QTRY_COMPARE(model.connection(), Connection::Connected);
    QVERIFY(m_transport->store.server(server.id)->isConnected);
    QVERIFY(model.isRefreshing());

    answerFacts(factsOf("web-01"));
    QTRY_VERIFY(!model.isRefreshing());
    QCOMPARE(model.systemInfo()->hostname, u"web-01"_s);
    QCOMPARE(model.systemInfo()->diskUsage.size(), 2);
    QCOMPARE(m_transport->store.server(server.id)->systemInfo, model.systemInfo());
    QCOMPARE(m_transport->logins(), 1);
}

void TestDashboardViewModel::youngFactsAreKept()
{
    Server server = m_transport->add(u"web"_s);
    server.systemInfo = SystemInfo{.hostname = u"kept"_s, .lastUpdated = m_transport->clock.now()};
    server.systemInfo->storageDevices.emplace();
    m_transport->store.updateServer(server);
    m_transport->clock.advance(299'999);
    const auto &model = start(server);
    QCOMPARE(model.systemInfo()->hostname, u"kept"_s); // at once
    QTRY_COMPARE(model.connection(), Connection::Connected);
    QVERIFY(!model.isRefreshing());

    m_transport->clock.advance(1);
    m_model->refreshSystemInfoIfNeeded();
    QVERIFY(model.isRefreshing());
    QCOMPARE(model.systemInfo()->hostname, u"kept"_s);
}

void TestDashboardViewModel::factsWithoutDevicesAreFetchedAgain()
{
    Server server = m_transport->add(u"web"_s);
    server.systemInfo = SystemInfo{.hostname = u"old"_s, .lastUpdated = m_transport->clock.now()};
    m_transport->store.updateServer(server);
    const auto &model = start(server);
    QTRY_COMPARE(m_transport->calls.size(), 1);
    m_transport->answer(factsOf("new"));
    QTRY_COMPARE(m_transport->calls.size(), 1);
    m_transport->answer("no lsblk here", 1);
    QTRY_COMPARE(model.systemInfo()->hostname, u"new"_s);
    QVERIFY(!model.systemInfo()->storageDevices);
}

void TestDashboardViewModel::aFailedFetchKeepsWhatIsThere()
{
    const auto &model = start(m_transport->add(u"web"_s));
    answerFacts({}, 255, "Connection reset\n");
    QTRY_COMPARE(model.refreshError(), u"Connection reset"_s);
    QVERIFY(!model.systemInfo());

    m_model->refreshSystemInfo();
    answerFacts(factsOf("web-01"));
    QTRY_VERIFY(model.systemInfo());
    QVERIFY(!model.refreshError());

    m_model->refreshSystemInfo();
    answerFacts({}, CommandResult::kTimedOut);
    QTRY_VERIFY(model.refreshError());
    QCOMPARE(model.systemInfo()->hostname, u"web-01"_s);
}

void TestDashboardViewModel::theNewestRefreshCounts()
{
    const auto &model = start(m_transport->add(u"web"_s));
    QTRY_COMPARE(m_transport->calls.size(), 1);
    const auto older = m_transport->calls.takeFirst();
    m_model->refreshSystemInfo();
    answerFacts(factsOf("newer"));
    QTRY_VERIFY(!model.isRefreshing());

    older.completer.complete(CommandResult{factsOf("older"), {}, 0, older.command});
    QTest::qWait(20);
    QCOMPARE(model.systemInfo()->hostname, u"newer"_s);
}

void TestDashboardViewModel::failuresInWords_data()
{
    QTest::addColumn<AuthMethod>("method");
    QTest::addColumn<QByteArray>("error");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("detail");
    QTest::addColumn<WantedSecret>("wanted");
    const QString refusedKey = u"Failed to authenticate with SSH key. Please check your key path and permissions."_s;
    QTest::newRow("refused key") << AuthMethod::PublicKey << QByteArray("ops@h: Permission denied (publickey).\r\n")
                                 << refusedKey << u"ops@h: Permission denied (publickey)."_s << WantedSecret::None;
    QTest::newRow("locked key") << AuthMethod::PublicKey
                                << QByteArray("Load key \"/key\": incorrect passphrase supplied to decrypt")
                                << u"SSH key requires a passphrase.\n\nTo add a passphrase:\n"
                                   "1. Right-click the server and select 'Edit Server'\n"
                                   "2. Enter the passphrase in the 'Passphrase' field\n"
                                   "3. Click the key icon to save it to Keychain\n"
                                   "4. Save the server and try connecting again"_s
                                << u"Load key \"/key\": incorrect passphrase supplied to decrypt"_s
                                << WantedSecret::Passphrase;
    QTest::newRow("agent") << AuthMethod::SshAgent
                           << QByteArray("ssh: connect to host h port 22: Connection refused\r\nsome more words\n")
                           << u"Failed to connect to <b>web. Please check:\n\n"
                              "• Host is reachable (use IP address like 192.168.1.100)\n"
                              "• SSH service is running on port 22\n"
                              "• Credentials are correct\n"
                              "• Network connectivity"_s
                           << u"ssh: connect to host h port 22: Connection refused"_s << WantedSecret::None;
    QTest::newRow("password") << AuthMethod::Password << QByteArray()
                              << u"Failed to connect. Please check your password and try again."_s << QString()
                              << WantedSecret::Password;
}

void TestDashboardViewModel::failuresInWords()
{
    QFETCH(AuthMethod, method);
    QFETCH(QByteArray, error);
    m_transport->setLogin(false, error);
    const Server server = m_transport->add(u"<b>web"_s, method);
    const auto &model = start(server);
    QTRY_COMPARE(model.connection(), Connection::Failed);
    QVERIFY(!model.isConnecting());
    QVERIFY(model.showingConnectionError());
    QTEST(model.connectionErrorMessage(), "message");
    QTEST(model.connectionErrorDetail(), "detail");
    QTEST(model.wantedSecret(), "wanted");
    QVERIFY(!m_transport->store.server(server.id)->isConnected);
    QVERIFY(m_transport->calls.isEmpty());
    QCOMPARE(m_transport->logins(), method == AuthMethod::Password ? 0 : 1);

    m_model->dismissConnectionError();
    QVERIFY(!model.showingConnectionError());
    QTEST(model.connectionErrorDetail(), "detail");
}

void TestDashboardViewModel::asksForAPassword()
{
    const auto &model = start(m_transport->add(u"web"_s, AuthMethod::Password));
    QTRY_COMPARE(model.wantedSecret(), WantedSecret::Password);
    QCOMPARE(m_transport->logins(), 0); // there was nothing to try
    for (const auto &[error, wanted] :
         {std::pair{"Permission denied", WantedSecret::Password}, std::pair{"Connection refused", WantedSecret::None},
          std::pair{"No route to host", WantedSecret::None}}) {
        m_transport->setLogin(false, error);
        m_model->initiateConnection(u"typed"_s);
        QTRY_COMPARE(model.connection(), Connection::Failed);
        QCOMPARE(model.wantedSecret(), wanted);
    }
    m_transport->setLogin(true);
    m_model->initiateConnection(u"secret"_s);
    QCOMPARE(model.wantedSecret(), WantedSecret::None);
    QTRY_COMPARE(model.connection(), Connection::Connected);
    QCOMPARE(m_transport->logins(), 4);
}

void TestDashboardViewModel::retries()
{
    m_transport->setLogin(false, "Connection refused");
    const auto &model = start(m_transport->add(u"web"_s, AuthMethod::SshAgent));
    QTRY_COMPARE(model.connection(), Connection::Failed);
    m_transport->setLogin(true);
    m_transport->holdLogins();
    m_model->initiateConnection();
    m_model->initiateConnection(); // one at a time
    QCOMPARE(model.connection(), Connection::Connecting);
    QVERIFY(model.connectionErrorMessage().isEmpty());
    QTRY_COMPARE(m_transport->logins(), 2);
    m_transport->letLoginsEnd();
    QTRY_COMPARE(model.connection(), Connection::Connected);
    QCOMPARE(m_transport->logins(), 2);
}

void TestDashboardViewModel::oneAttemptDoesNotTellForAnother()
{
    // The second begins and fails while the first is on its way, whose own failure has no words of the manager's.
    m_transport->setLogin(false, "Connection refused");
    m_transport->holdLogins();
    const auto &model = start(m_transport->add(u"first"_s, AuthMethod::SshAgent));
    QTRY_COMPARE(m_transport->logins(), 1);
    Server second = m_transport->add(u"second"_s);
    second.privateKeyPath.reset();
    m_transport->store.updateServer(second);
    DashboardViewModel other({m_transport->manager, m_transport->store, m_transport->clock}, second);
    other.start();
    QTRY_COMPARE(other.connection(), Connection::Failed);
    QCOMPARE(other.connectionErrorMessage(), u"SSH key path is required for key authentication"_s);
    QVERIFY(m_transport->manager.isConnecting()); // the first one is

    m_transport->letLoginsEnd();
    QTRY_COMPARE(model.connection(), Connection::Failed);
    QVERIFY(model.connectionErrorMessage().startsWith(u"Failed to connect to first."_s));
    QCOMPARE(model.connectionErrorDetail(), u"Connection refused"_s);
    QVERIFY(!m_transport->manager.isConnecting());
}

void TestDashboardViewModel::asksBeforeItDisconnects()
{
    startConnected();
    QSignalSpy requests(m_model.get(), &DashboardViewModel::disconnectRequested);
    m_model->setShowingDisconnectAlert(true);
    QVERIFY(m_model->showingDisconnectAlert());
    m_model->setShowingDisconnectAlert(false);
    QVERIFY(requests.isEmpty());
    m_model->setShowingDisconnectAlert(true);
    m_model->confirmDisconnect();
    QVERIFY(!m_model->showingDisconnectAlert());
    QCOMPARE(requests.size(), 1);
    QVERIFY(m_model->isConnected()); // it is the window that does it
}

void TestDashboardViewModel::aLoginThatWasOvertakenByADisconnect()
{
    Server server = m_transport->add(u"web"_s);
    m_transport->store.updateServerConnection(server, true);
    m_transport->holdLogins();
    const auto &model = start(*m_transport->store.server(server.id)); // selected again: proves itself once more
    QTRY_COMPARE(m_transport->logins(), 1);
    QVERIFY(model.isConnected() && model.isConnecting());
    m_transport->manager.disconnect(server);
    m_transport->store.updateServerConnection(server, false);
    QCOMPARE(m_transport->children.count(), 0); // the client of the login is ended
    QTRY_COMPARE(model.connection(), Connection::NotConnected);
    QVERIFY(!m_transport->store.server(server.id)->isConnected);
    QVERIFY(m_transport->calls.isEmpty());
}

void TestDashboardViewModel::ofTwoLoginsTheNewerCounts()
{
    // The first hangs while another server is looked at, and fails when the second has long succeeded.
    m_transport->setReply(
        "until grep -q l[a]te reply; do sleep 0.01; done; echo 'Operation timed out' >&2; exit 255");
    const Server server = m_transport->add(u"web"_s, AuthMethod::Password);
    start(server);
    m_model->initiateConnection(u"typed"_s);
    QTRY_COMPARE(m_transport->logins(), 1);
    start(m_transport->add(u"other"_s));
    QTRY_COMPARE(m_transport->logins(), 2);
    QVERIFY(m_transport->manager.isConnecting(server.id)); // and the list shows it
    m_transport->setLogin(true);
    const auto &model = start(server);
    QTRY_COMPARE(model.connection(), Connection::Connected);
    QCOMPARE(m_transport->triedSecret(), "typed");
    QVERIFY(!m_transport->manager.isConnecting(server.id));
    m_transport->setReply("echo SSH_CONNECTION_SUCCESS # late");
    QTRY_COMPARE(m_transport->children.count(), 0);
    QTest::qWait(20);
    QCOMPARE(model.connection(), Connection::Connected);
    QVERIFY(m_transport->store.server(server.id)->isConnected);
    QCOMPARE(QCoro::waitFor(m_transport->manager.getSessionPassword(server)), u"typed"_s);
}

void TestDashboardViewModel::editedWhileLoggingIn()
{
    m_transport->holdLogins();
    Server server = m_transport->add(u"web"_s);
    const auto &model = start(server);
    QTRY_COMPARE(m_transport->logins(), 1);
    server.name = u"another name"_s;
    m_transport->store.updateServer(server); // which the login has nothing to do with
    QVERIFY(m_transport->manager.isConnecting(server.id));
    server.host = u"elsewhere.example"_s;
    m_transport->store.updateServer(server);
    QVERIFY(!m_transport->manager.isConnecting(server.id));
    QCOMPARE(m_transport->children.count(), 0);
    QTRY_COMPARE(model.connection(), Connection::NotConnected);
    QVERIFY(!m_transport->store.server(server.id)->isConnected);

    m_transport->letLoginsEnd();
    m_model->initiateConnection();
    QTRY_COMPARE(model.connection(), Connection::Connected);
    server.port = 2222;
    server.isConnected = true; // as the record of an editor that was open meanwhile
    m_transport->store.updateServer(server);
    QCOMPARE(model.connection(), Connection::NotConnected);
}

void TestDashboardViewModel::connectedElsewhere()
{
    m_transport->setLogin(false, "Connection refused");
    const Server server = m_transport->add(u"web"_s);
    const auto &model = start(server);
    QTRY_COMPARE(model.connection(), Connection::Failed);
    m_transport->store.updateServerConnection(server, true);
    QCOMPARE(model.connection(), Connection::Connected);
    QVERIFY(model.isRefreshing());
    answerFacts(factsOf("web-01"));
    QTRY_COMPARE(model.systemInfo()->hostname, u"web-01"_s);
}

void TestDashboardViewModel::monitoringFollowsTheSection()
{
    const auto &model = startConnected();
    QVERIFY(!model.isMonitoring());
    m_model->setExpanded(DashboardViewModel::kStorageDevices, true);
    QVERIFY(!model.isMonitoring() && m_transport->calls.isEmpty());

    QSignalSpy samples(m_model.get(), &DashboardViewModel::sampled);
    m_model->setExpanded(DashboardViewModel::kMonitoring, true);
    QVERIFY(model.isMonitoring());
    answerSamples();
    QCOMPARE(samples.size(), 1);
    QCOMPARE(model.currentMetrics()->cpuUsage, 25.0);
    QCOMPARE(model.metricsHistory().size(), 1);
    QVERIFY(model.gpuMetrics() && model.gpuMetrics()->gpus.isEmpty());
    m_transport->clock.advance(5000);
    QCOMPARE(model.sampleAge(0), u"5 s ago"_s);
    QVERIFY(model.sampleAge(1).isEmpty());

    m_model->setExpanded(DashboardViewModel::kMonitoring, false);
    QVERIFY(!model.isMonitoring());
    QTest::qWait(1200); // longer than until the second sample
    QVERIFY(m_transport->calls.isEmpty());
    QCOMPARE(model.metricsHistory().size(), 1);
}

void TestDashboardViewModel::tellsWhenTheServerIsSilent()
{
    const auto &model = startConnected();
    m_model->setExpanded(DashboardViewModel::kMonitoring, true);
    answerSamples();
    QCOMPARE(model.monitoringNote(), u"every 3 s"_s);
    const QString since = u"no answer since "_s + m_transport->clock.now().toLocalTime().toString(u"HH:mm:ss"_s);
    m_transport->clock.advance(3000);
    QTRY_VERIFY(!m_transport->calls.isEmpty());
    m_transport->answer({}, CommandResult::kSshFailed);
    QTRY_COMPARE(model.monitoringNote(), since);
    QCOMPARE(model.metricsHistory().size(), 1);
    QTRY_VERIFY(!m_transport->calls.isEmpty());
    answerSamples();
    QCOMPARE(model.monitoringNote(), u"every 3 s"_s);

    // A command that never ends tells nothing either.
    QTRY_VERIFY(!m_transport->calls.isEmpty());
    m_transport->clock.advance(MetricsSampler::kSilenceMs + 1);
    QTRY_VERIFY(model.monitoringNote().startsWith(u"no answer since "_s));
    m_transport->store.updateServerConnection(model.server(), false);
    QCOMPARE(model.monitoringNote(), u"paused: not connected"_s);
}

void TestDashboardViewModel::ratesBeginAnewAfterAReconnect()
{
    startConnected();
    m_model->setExpanded(DashboardViewModel::kMonitoring, true);
    answerSamples(1'000'000);
    m_transport->store.updateServerConnection(m_model->server(), false);
    m_transport->clock.advance(60'000);
    m_transport->store.updateServerConnection(m_model->server(), true);
    QVERIFY(m_model->isMonitoring());
    QTRY_VERIFY(!m_transport->calls.isEmpty()); // at once, not with the next tick
    answerSamples(9'000'000);
    QCOMPARE(m_model->metricsHistory().size(), 2);
    QCOMPARE(m_model->currentMetrics()->networkMetrics.interfaces.constFirst().receiveBytesPerSec, 0);
    QTRY_VERIFY(!m_transport->calls.isEmpty());
    m_transport->clock.advance(1000);
    answerSamples(9'500'000);
    QCOMPARE(m_model->currentMetrics()->networkMetrics.interfaces.constFirst().receiveBytesPerSec, 500'000);
}

void TestDashboardViewModel::closedAndOpenedAgainKeepsTheCurves()
{
    startConnected();
    m_model->setExpanded(DashboardViewModel::kMonitoring, true);
    answerSamples(1'000'000);
    QCOMPARE(m_model->metricsHistory().size(), 1);
    m_transport->clock.advance(1000);
    for (int i = 0; i < 5; ++i) { // faster than any answer
        m_model->setExpanded(DashboardViewModel::kMonitoring, false);
        m_model->setExpanded(DashboardViewModel::kMonitoring, true);
    }
    QCOMPARE(linesOf(GetCPUUsageCommand().commandString()), 1);
    answerSamples(5'000'000);
    QCOMPARE(m_model->metricsHistory().size(), 2);
    QCOMPARE(m_model->currentMetrics()->networkMetrics.interfaces.constFirst().receiveBytesPerSec, 0);
}

void TestDashboardViewModel::looksForGPUs()
{
    const auto &model = startConnected();
    QSignalSpy found(m_model.get(), &DashboardViewModel::gpuMetricsChanged);
    for (int i = 0; i < 3; ++i) {
        m_model->setExpanded(DashboardViewModel::kGPUDevices, true);
        m_model->setExpanded(DashboardViewModel::kGPUDevices, false);
    }
    QCOMPARE(m_transport->calls.size(), 1); // one question at a time
    m_transport->answer("nothing of use");
    QTest::qWait(10);
    QVERIFY(!model.gpuMetrics());

    m_model->setExpanded(DashboardViewModel::kGPUDevices, true);
    QCOMPARE(m_transport->calls.size(), 1);
    m_transport->answer("MIXED_VENDOR_START\nMIXED_VENDOR_END\n");
    QTRY_VERIFY(model.gpuMetrics());
    QCOMPARE(found.size(), 1);
    m_model->setExpanded(DashboardViewModel::kGPUDevices, false);
    m_model->setExpanded(DashboardViewModel::kGPUDevices, true);
    QVERIFY(m_transport->calls.isEmpty()); // known by now
}

void TestDashboardViewModel::goneWhileSampling()
{
    startConnected();
    m_model->setExpanded(DashboardViewModel::kMonitoring, true);
    QVERIFY(!m_transport->calls.isEmpty());
    m_model.reset();
    const qsizetype asked = m_transport->calls.size();
    for (qsizetype i = 0; i < asked; ++i) {
        m_transport->answer("25.0\n");
    }
    QTest::qWait(50);
    QVERIFY(m_transport->calls.isEmpty()); // no further command of the sample
}

void TestDashboardViewModel::goneInTheMiddle()
{
    // While logging in: the store still learns that the server answered.
    m_transport->holdLogins();
    const Server server = m_transport->add(u"web"_s);
    start(server);
    QTRY_COMPARE(m_transport->logins(), 1);
    m_model.reset();
    m_transport->letLoginsEnd();
    QTRY_VERIFY(m_transport->store.server(server.id)->isConnected);
    QVERIFY(m_transport->calls.isEmpty());

    // While fetching.
    start(server);
    QTRY_COMPARE(m_transport->calls.size(), 1);
    m_model.reset();
    m_transport->answer(factsOf("late"));
    QTest::qWait(20);
    QVERIFY(!m_transport->store.server(server.id)->systemInfo);
}

void TestDashboardViewModel::deletedInTheMiddle()
{
    for (const AuthMethod method : {AuthMethod::Password, AuthMethod::PublicKey}) {
        const Server server = m_transport->add(u"web"_s, method);
        start(server);
        QTRY_VERIFY(!m_model->isConnecting());
        m_transport->holdLogins();
        m_model->initiateConnection(u"typed"_s);
        QTRY_COMPARE(m_transport->children.count(), 1);
        m_transport->store.deleteServer(server);
        QCOMPARE(m_transport->children.count(), 0);
        QTRY_VERIFY(!m_model->isConnecting());
        QVERIFY(m_transport->store.servers().isEmpty());
        QVERIFY(!QCoro::waitFor(m_transport->manager.getSessionPassword(server)));
        QVERIFY(!QCoro::waitFor(m_transport->manager.getSessionPassphrase(server)));
        m_transport->letLoginsEnd();
    }
}

void TestDashboardViewModel::rootFileSystemFirst()
{
    const auto disk = [](const QString &mountPoint, const QString &device) {
        return DiskInfo{.filesystem = device, .mountPoint = mountPoint};
    };
    const auto sorted = DashboardViewModel::sortedDiskUsage(
        {disk(u"/var"_s, u"1"_s), disk(u"/boot"_s, u"2"_s), disk(u"/"_s, u"3"_s), disk(u"/boot"_s, u"4"_s)});
    QStringList order;
    for (const DiskInfo &info : sorted) {
        order.append(info.filesystem);
    }
    QCOMPARE(order.join(u' '), u"3 2 4 1"_s);
}

QTEST_GUILESS_MAIN(TestDashboardViewModel)
#include "test_dashboard_view_model.moc"
