#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/FakeTransport.h"

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
    void disconnects();
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
    QTest::addColumn<QString>("begin");
    QTest::addColumn<WantedSecret>("wanted");
    QTest::newRow("refused key") << AuthMethod::PublicKey << QByteArray("Permission denied (publickey).")
                                 << u"Failed to authenticate with SSH key."_s << WantedSecret::None;
    QTest::newRow("locked key") << AuthMethod::PublicKey << QByteArray("Enter passphrase for key '/key'")
                                << u"SSH key requires a passphrase."_s << WantedSecret::Passphrase;
    QTest::newRow("agent") << AuthMethod::SshAgent << QByteArray("Connection refused")
                           << u"Failed to connect to <b>web. Please check:"_s << WantedSecret::None;
    QTest::newRow("password") << AuthMethod::Password << QByteArray() << u"Failed to connect."_s
                              << WantedSecret::Password;
}

void TestDashboardViewModel::failuresInWords()
{
    QFETCH(AuthMethod, method);
    QFETCH(QByteArray, error);
    QFETCH(QString, begin);
    m_transport->setLogin(false, error);
    const Server server = m_transport->add(u"<b>web"_s, method);
    const auto &model = start(server);
    QTRY_COMPARE(model.connection(), Connection::Failed);
    QCOMPARE(model.connectionErrorMessage().left(begin.size()), begin);
    QTEST(model.wantedSecret(), "wanted");
    QVERIFY(!m_transport->store.server(server.id)->isConnected);
    QVERIFY(m_transport->calls.isEmpty());
}

void TestDashboardViewModel::asksForAPassword()
{
    const auto &model = start(m_transport->add(u"web"_s, AuthMethod::Password));
    QTRY_COMPARE(model.wantedSecret(), WantedSecret::Password);
    QCOMPARE(m_transport->logins(), 0); // there was nothing to try
    QVERIFY(model.lacksSecret());
    m_transport->setLogin(false, "Permission denied");
    m_model->initiateConnection(u"wrong"_s);
    QTRY_COMPARE(model.connection(), Connection::Failed);
    QVERIFY(!model.lacksSecret());
    QCOMPARE(model.wantedSecret(), WantedSecret::Password);
    m_transport->setLogin(true);
    m_model->initiateConnection(u"secret"_s);
    QCOMPARE(model.wantedSecret(), WantedSecret::None);
    QTRY_COMPARE(model.connection(), Connection::Connected);
    QCOMPARE(m_transport->logins(), 2);
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

void TestDashboardViewModel::disconnects()
{
    const Server server = m_transport->add(u"web"_s);
    const auto &model = start(server);
    QTRY_COMPARE(m_transport->calls.size(), 1);
    m_model->disconnectFromServer();
    QCOMPARE(model.connection(), Connection::NotConnected);
    QVERIFY(!model.isRefreshing());
    QVERIFY(!m_transport->store.server(server.id)->isConnected);
    m_transport->answer(factsOf("late"));
    QTest::qWait(20);
    QVERIFY(!model.systemInfo());
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
    m_transport->holdLogins();
    const Server server = m_transport->add(u"web"_s);
    const auto &model = start(server);
    QTRY_COMPARE(m_transport->logins(), 1);
    m_transport->store.deleteServer(server);
    m_transport->letLoginsEnd();
    QTRY_VERIFY(model.connection() != Connection::Connecting);
    QVERIFY(m_transport->store.servers().isEmpty());
    QVERIFY(!model.isRefreshing());
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
