#include "Helpers/Clock.h"
#include "Models/Json.h"
#include "Models/ServerStore.h"
#include "Models/UserDefaults.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kKey = "SavedServers"_L1;

class FixedClock : public Clock
{
public:
    QDateTime now() const override { return QDateTime(QDate(2026, 3, 1), QTime(12, 0, 0, 250), Qt::UTC); }
};

// Writes down what it is told, with the number of servers that were in the list then.
class Listener : public ServerStoreDelegate
{
public:
    void sshSettingsChanged(const Server &updated) override { calls.append(u"changed "_s + updated.name); }

    void serverDeleted(const Server &removed) override
    {
        calls.append(u"deleted %1 of %2"_s.arg(removed.name).arg(store->servers().size()));
    }

    const ServerStore *store = nullptr;
    QStringList calls;
};

Server serverNamed(const QString &name)
{
    Server server;
    server.name = name;
    server.host = name + u".example.net"_s;
    server.username = u"op"_s;
    return server;
}

} // namespace

class TestServerStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aStoredListComesBackDisconnected();
    void anUndecodableListIsKeptBeforeItIsReplaced_data();
    void anUndecodableListIsKeptBeforeItIsReplaced();
    void changesAreStoredAndToldAtOnce();
    void onlyWhatSshIsToldCountsAsItsSettings_data();
    void onlyWhatSshIsToldCountsAsItsSettings();
    void unknownServersChangeNothing();
    void theSelectionFollowsItsRecord();
    void deletingTellsFirstAndClearsTheSelection();
    void aRecordOfTheListMayBePassedIn();
    void connectingSetsTheTimeAndDisconnectingLeavesIt();
    void importsSkipKnownAddresses();
    void aFailedImportAsksToBeShown();

private:
    QList<Server> stored() const
    {
        const auto bytes = UserDefaults(m_directory->path()).data(kKey);
        const auto servers = fromJson<QList<Server>>(bytes.value_or(QByteArray()));
        return servers.value_or(QList<Server>());
    }

    void open()
    {
        m_store.reset();
        m_defaults = std::make_unique<UserDefaults>(m_directory->path());
        m_store = std::make_unique<ServerStore>(*m_defaults, m_clock, &m_listener);
        m_listener.store = m_store.get();
        m_listener.calls.clear();
    }

    FixedClock m_clock;
    Listener m_listener;
    std::unique_ptr<QTemporaryDir> m_directory;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<ServerStore> m_store;
};

void TestServerStore::init()
{
    m_store.reset();
    m_directory = std::make_unique<QTemporaryDir>();
    open();
}

void TestServerStore::aStoredListComesBackDisconnected()
{
    QCOMPARE(m_store->servers(), QList<Server>());
    Server server = serverNamed(u"web"_s);
    server.systemInfo = SystemInfo{.hostname = u"h"_s, .lastUpdated = m_clock.now()};
    m_store->addServer(server);
    m_store->addServer(serverNamed(u"db"_s));
    m_store->updateServerConnection(server, true);
    QVERIFY(stored().first().isConnected);
    open();
    QVERIFY(!m_store->selectedServer());
    QCOMPARE(m_store->servers().size(), 2);
    server.lastConnected = m_clock.now();
    QCOMPARE(m_store->servers().first(), server); // not connected; the rest as it was
    QVERIFY(stored().first().isConnected);        // loading alone writes nothing
}

void TestServerStore::anUndecodableListIsKeptBeforeItIsReplaced_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("no JSON") << QByteArray("[{");
    QTest::newRow("one record lacks a field") << QByteArray(R"([{"name":"a"}])");
    QTest::newRow("empty") << QByteArray();
}

void TestServerStore::anUndecodableListIsKeptBeforeItIsReplaced()
{
    QFETCH(QByteArray, bytes);
    m_defaults->setData(kKey, bytes);
    m_defaults->setData(u"SavedServers.damaged"_s, "an earlier one");
    open();
    QCOMPARE(m_store->servers().size(), 0);
    QCOMPARE(m_defaults->data(kKey), bytes);
    QVERIFY(!m_defaults->contains(u"SavedServers.damaged-2"_s));
    m_store->addServer(serverNamed(u"a"_s));
    m_store->addServer(serverNamed(u"b"_s));
    QCOMPARE(stored().size(), 2);
    const UserDefaults after(m_directory->path());
    QCOMPARE(after.data(u"SavedServers.damaged"_s), QByteArray("an earlier one"));
    QCOMPARE(after.data(u"SavedServers.damaged-2"_s), bytes);
    QVERIFY(!after.contains(u"SavedServers.damaged-3"_s));

    m_defaults->setText(kKey, u"of another type"_s);
    open();
    m_store->addServer(serverNamed(u"c"_s));
    QCOMPARE(m_defaults->text(u"SavedServers.damaged-3"_s), u"of another type"_s);
}

void TestServerStore::changesAreStoredAndToldAtOnce()
{
    QSignalSpy added(m_store.get(), &ServerStore::serversAdded);
    QSignalSpy updated(m_store.get(), &ServerStore::serverUpdated);
    QSignalSpy removed(m_store.get(), &ServerStore::serverRemoved);
    const Server a = serverNamed(u"a"_s);
    Server b = serverNamed(u"b"_s);
    QVERIFY(m_store->addServer(a));
    QCOMPARE(stored(), QList<Server>({a}));
    QVERIFY(m_store->addServer(b));
    QCOMPARE(added, (QList<QVariantList>{{qsizetype{0}, qsizetype{1}}, {qsizetype{1}, qsizetype{1}}}));
    b.labels = {{u"env"_s, u"prod"_s}};
    m_store->updateServer(b);
    QCOMPARE(stored(), QList<Server>({a, b}));
    m_store->updateServerPackageManager(b, PackageManager::Dnf);
    QCOMPARE(stored().last().packageManager, PackageManager::Dnf);
    const SystemInfo info{.hostname = u"h"_s, .lastUpdated = m_clock.now()};
    m_store->updateServerSystemInfo(b, info);
    QCOMPARE(stored().last().systemInfo, info);
    QCOMPARE(stored().last().packageManager, PackageManager::Dnf);
    QCOMPARE(updated, QList<QVariantList>(3, {qsizetype{1}}));
    m_store->deleteServer(a);
    QCOMPARE(removed, QList<QVariantList>{{qsizetype{0}}});
    QCOMPARE(stored().size(), 1);
}

void TestServerStore::onlyWhatSshIsToldCountsAsItsSettings_data()
{
    QTest::addColumn<std::function<void(Server &)>>("change");
    QTest::addColumn<bool>("counts");
    const auto row = [](const char *name, const std::function<void(Server &)> &change, bool counts) {
        QTest::newRow(name) << change << counts;
    };
    row("host", [](Server &s) { s.host = u"other"_s; }, true);
    row("port", [](Server &s) { s.port = 2222; }, true);
    row("username", [](Server &s) { s.username = u"root"_s; }, true);
    row("authMethod", [](Server &s) { s.authMethod = AuthMethod::SshAgent; }, true);
    row("a key path where there was none", [](Server &s) { s.privateKeyPath = u""_s; }, true);
    row("forwardAgent", [](Server &s) { s.forwardAgent = true; }, true);
    row("name", [](Server &s) { s.name = u"new"_s; }, false);
    row("labels", [](Server &s) { s.labels.insert(u"a"_s, u"b"_s); }, false);
    row("useSudo", [](Server &s) { s.useSudo = true; }, false);
    row("containerRuntime", [](Server &s) { s.containerRuntime = ContainerRuntime::Podman; }, false);
    row("packageManager", [](Server &s) { s.packageManager = PackageManager::Apt; }, false);
    row("nothing", [](Server &) {}, false);
}

void TestServerStore::onlyWhatSshIsToldCountsAsItsSettings()
{
    QFETCH(std::function<void(Server &)>, change);
    QFETCH(bool, counts);
    Server server = serverNamed(u"web"_s);
    m_store->addServer(server);
    Server told;
    connect(m_store.get(), &ServerStore::serverSettingsChanged, this, [&](const Server &s) { told = s; });
    change(server);
    m_store->updateServer(server);
    QCOMPARE(m_listener.calls, counts ? QStringList{u"changed "_s + server.name} : QStringList());
    QCOMPARE(told == server, counts);
    QCOMPARE(stored(), QList<Server>({server}));
}

void TestServerStore::unknownServersChangeNothing()
{
    m_store->addServer(serverNamed(u"a"_s));
    const QByteArray before = *m_defaults->data(kKey);
    QSignalSpy updated(m_store.get(), &ServerStore::serverUpdated);
    const Server other = serverNamed(u"other"_s);
    m_store->updateServer(other);
    m_store->updateServerConnection(other, true);
    m_store->updateServerSystemInfo(other, {});
    m_store->updateServerPackageManager(other, PackageManager::Apt);
    QCOMPARE(*m_defaults->data(kKey), before);
    QCOMPARE(updated.size(), 0);
    QCOMPARE(m_listener.calls, QStringList());
    QVERIFY(!m_store->server(other.id));
}

void TestServerStore::theSelectionFollowsItsRecord()
{
    Server a = serverNamed(u"a"_s);
    const Server b = serverNamed(u"b"_s);
    m_store->addServer(a);
    m_store->addServer(b);
    QSignalSpy spy(m_store.get(), &ServerStore::selectedServerChanged);
    m_store->setSelectedServer(a);
    m_store->setSelectedServer(a);
    QCOMPARE(spy.size(), 1);
    m_store->updateServerConnection(b, true);
    QCOMPARE(spy.size(), 1);
    m_store->updateServerConnection(a, true);
    QCOMPARE(spy.size(), 2);
    QVERIFY(m_store->selectedServer()->isConnected);
    a.name = u"renamed"_s;
    m_store->updateServer(a);
    QCOMPARE(m_store->selectedServer()->name, u"renamed"_s);
    m_store->setSelectedServer(std::nullopt);
    QVERIFY(!m_store->selectedServer());
    QCOMPARE(spy.size(), 4);
}

void TestServerStore::deletingTellsFirstAndClearsTheSelection()
{
    const Server a = serverNamed(u"a"_s);
    const Server b = serverNamed(u"b"_s);
    m_store->addServer(a);
    m_store->addServer(b);
    m_store->addServer(a); // a list from elsewhere may hold an id twice
    m_store->setSelectedServer(b);
    m_store->deleteServer(a);
    QCOMPARE(m_listener.calls, QStringList{u"deleted a of 3"_s});
    QCOMPARE(m_store->servers(), QList<Server>({b}));
    QCOMPARE(m_store->selectedServer(), b);
    m_store->deleteServer(b);
    QVERIFY(!m_store->selectedServer());
    QCOMPARE(stored(), QList<Server>());
}

void TestServerStore::aRecordOfTheListMayBePassedIn()
{
    m_store->addServer(serverNamed(u"a"_s));
    m_store->addServer(serverNamed(u"b"_s));
    m_store->updateServer(m_store->servers().first());
    m_store->updateServerConnection(m_store->servers().last(), true);
    m_store->setSelectedServer(m_store->servers().first());
    m_store->deleteServer(*m_store->selectedServer());
    m_store->deleteServer(m_store->servers().first());
    QCOMPARE(m_listener.calls, (QStringList{u"deleted a of 2"_s, u"deleted b of 1"_s}));
}

void TestServerStore::connectingSetsTheTimeAndDisconnectingLeavesIt()
{
    const Server server = serverNamed(u"a"_s);
    m_store->addServer(server);
    m_store->updateServerConnection(server, false);
    QVERIFY(!m_store->servers().first().lastConnected);
    m_store->updateServerConnection(server, true);
    m_store->updateServerConnection(server, false);
    QVERIFY(!m_store->servers().first().isConnected);
    QCOMPARE(m_store->servers().first().lastConnected, m_clock.now());
    QCOMPARE(stored().first().lastConnected, m_clock.now());
}

void TestServerStore::importsSkipKnownAddresses()
{
    const Server known = serverNamed(u"a"_s);
    m_store->addServer(known);
    Server onAnotherPort = serverNamed(u"a"_s);
    onAnotherPort.port = 2222;
    Server asAnotherUser = serverNamed(u"a"_s);
    asAnotherUser.username = u"root"_s;
    const Server twice = serverNamed(u"b"_s);
    QSignalSpy added(m_store.get(), &ServerStore::serversAdded);
    QCOMPARE(m_store->importServers({onAnotherPort, asAnotherUser, twice, twice}), 3);
    QCOMPARE(m_store->importedServersCount(), 3);
    QCOMPARE(added, (QList<QVariantList>{{qsizetype{1}, qsizetype{3}}}));
    QCOMPARE(stored(), QList<Server>({known, asAnotherUser, twice, twice}));
    QCOMPARE(m_store->importServers({onAnotherPort}), 0);
    QCOMPARE(added.size(), 1);
}

void TestServerStore::aFailedImportAsksToBeShown()
{
    QSignalSpy changed(m_store.get(), &ServerStore::importErrorChanged);
    m_store->failImport(u"no file"_s);
    QVERIFY(m_store->showImportError());
    QCOMPARE(m_store->importError(), u"no file"_s);
    m_store->setShowImportError(false);
    QVERIFY(!m_store->showImportError());
    QCOMPARE(changed.size(), 2);
}

QTEST_GUILESS_MAIN(TestServerStore)
#include "test_server_store.moc"
