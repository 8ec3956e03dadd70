#include "Services/SSH/KeyringLibrary.h"
#include "Services/SSH/SecretServiceRig.h"
#include "Services/SSH/SessionSecretStore.h"

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using enum SecretStatus;

namespace
{

constexpr int kPatienceMs = 20'000;

// What a busy machine may take to come round; a wait inside a call would last for the bus's limit of 25 s.
constexpr int kFrozenMs = 5000;

// Waits for a task in the event loop, as the application does. The default value if it doesn't end.
template<typename T>
T await(QCoro::Task<T> task)
{
    const auto result = std::make_shared<std::optional<T>>();
    const auto collect = [](QCoro::Task<T> what, std::shared_ptr<std::optional<T>> into) -> QCoro::Task<> {
        T value = co_await what;
        into->emplace(std::move(value));
    };
    collect(std::move(task), result);
    if (!QTest::qWaitFor([&] { return result->has_value(); }, kPatienceMs)) {
        QTest::qFail("the task did not end", __FILE__, __LINE__);
        return T{};
    }
    return std::move(**result);
}

// The longest time for which the event loop did not come round.
class LongestPause
{
public:
    LongestPause()
    {
        m_clock.start();
        m_tick.start(5);
        QObject::connect(&m_tick, &QTimer::timeout, &m_tick,
                         [this] { m_longest = qMax(m_longest, m_clock.restart()); });
    }

    qint64 milliseconds() const { return m_longest; }

private:
    QTimer m_tick;
    QElapsedTimer m_clock;
    qint64 m_longest = 0;
};

} // namespace

class TestSecretService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void init() { qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toUtf8()); }

    void cleanup() { m_store.reset(); }

    void cleanupTestCase() { m_bus.stop(); }

    void withoutABusMemoryTakesThePlace_data();
    void withoutABusMemoryTakesThePlace();
    void withoutAServiceMemoryTakesThePlace();
    void aServiceThatHangsIsNotWaitedFor();
    void theChoiceCanBeAbandoned();

    void secretsComeBack_data();
    void secretsComeBack();
    void itemsAreReplacedAndRemoved();
    void aLockedKeyringThatCannotAsk();
    void aUserWhoRefuses();
    void aFirstKeyringThatNobodyMakes();
    void aKeyringThatRestarts();
    void theKeyringIsChosen();

    void aUserWhoTakesHisTime();
    void refusalByAnotherService();
    void cancellingTakesThePromptBack();
    void theEndOfTheStoreResumesWhoWaits();
    void aServiceThatVanishesWhileItAsks();
    void aServiceThatDeniesAccess();

    void theEndOfTheBusIsNotOurs();

private:
    // A keyring, its collection unlocked. Null, with the test marked, where there can be none.
    std::unique_ptr<KeyringDaemon> keyring(bool withCollection = true);
    std::unique_ptr<FakeSecretService> fake();

    SecretMatch get(const QString &account) { return await(m_store->copyMatching(account, true)); }

    SecretStatus has(const QString &account) { return await(m_store->copyMatching(account, false)).status; }

    PrivateBus m_bus;
    std::unique_ptr<DesktopKeyring> m_store;
};

void TestSecretService::initTestCase()
{
    if (!PrivateBus::isInstalled()) {
        QSKIP("dbus-daemon is not installed");
    }
    qunsetenv("XDG_RUNTIME_DIR");
    qunsetenv("DISPLAY");
    // The same program is run with and without GLib's event loop.
    QCOMPARE(QAbstractEventDispatcher::instance()->inherits("QEventDispatcherGlib"),
             qEnvironmentVariableIsEmpty("QT_NO_GLIB"));
    QVERIFY2(m_bus.start(), qPrintable(m_bus.error()));
}

std::unique_ptr<KeyringDaemon> TestSecretService::keyring(bool withCollection)
{
    auto daemon = std::make_unique<KeyringDaemon>(m_bus);
    m_store = KeyringLibrary::makeKeyring();
    if (!KeyringDaemon::isInstalled()) {
        QTest::qSkip("gnome-keyring-daemon is not installed", __FILE__, __LINE__);
        return nullptr;
    }
    if (!daemon->start(withCollection)) {
        QTest::qFail("gnome-keyring-daemon does not come up", __FILE__, __LINE__);
        return nullptr;
    }
    return daemon;
}

std::unique_ptr<FakeSecretService> TestSecretService::fake()
{
    auto service = std::make_unique<FakeSecretService>(m_bus.address());
    service->addItem(u"a@host:22"_s, "secret of a");
    service->addItem(u"b@host:22"_s, "secret of b");
    m_store = KeyringLibrary::makeKeyring();
    return service;
}

void TestSecretService::withoutABusMemoryTakesThePlace_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::newRow("no address") << QByteArray();
    QTest::newRow("would start a bus") << QByteArray("autolaunch:");
    QTest::newRow("nobody there") << QByteArray("unix:path=/nonexistent/bus");
}

void TestSecretService::withoutABusMemoryTakesThePlace()
{
    QFETCH(QByteArray, address);
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    SessionSecretStore store;
    // Asked before the choice is made: these wait for it.
    auto saved = store.add(u"account"_s, "secret");
    auto found = store.copyMatching(u"account"_s, true);
    QVERIFY(await(store.notice()).startsWith(u"No keyring answers"_s));
    QCOMPARE(await(std::move(saved)), Success);
    QCOMPARE(await(std::move(found)).data, QByteArray("secret"));
    QCOMPARE(await(store.remove(u"account"_s)), Success);
    QCOMPARE(await(store.copyMatching(u"account"_s, true)).status, ItemNotFound);

    const auto service = KeyringLibrary::makeKeyring();
    QVERIFY(service);
    QCOMPARE(await(service->add(u"account"_s, "secret")), Failed);
    QCOMPARE(await(service->copyMatching(u"account"_s, true)).status, Failed);
    QCOMPARE(await(service->remove(u"account"_s)), Failed);
}

void TestSecretService::withoutAServiceMemoryTakesThePlace()
{
    QElapsedTimer time;
    time.start();
    SessionSecretStore store;
    QVERIFY(!await(store.notice()).isEmpty());
    QVERIFY(time.elapsed() < SessionSecretStore::kLimit.count());
}

void TestSecretService::aServiceThatHangsIsNotWaitedFor()
{
    FakeSecretService hung(m_bus.address());
    hung.isSlow = true;
    hung.delayMs = 5000;
    SessionSecretStore store(std::chrono::milliseconds(200));
    const LongestPause pause;
    QVERIFY(!await(store.notice()).isEmpty());
    QVERIFY2(pause.milliseconds() < kFrozenMs, qPrintable(QString::number(pause.milliseconds())));
}

void TestSecretService::theChoiceCanBeAbandoned()
{
    FakeSecretService hung(m_bus.address());
    hung.isSlow = true;
    hung.delayMs = 5000;
    auto store = std::make_unique<SessionSecretStore>();
    auto cancelled = store->add(u"account"_s, "secret");
    store->cancelAll();
    QVERIFY(cancelled.isReady());
    QCOMPARE(await(std::move(cancelled)), Failed);
    auto waiting = store->remove(u"account"_s);
    auto notice = store->notice();
    store.reset();
    QVERIFY(waiting.isReady() && notice.isReady());
    QCOMPARE(await(std::move(waiting)), Failed);
    QCOMPARE(await(std::move(notice)), QString());
}

void TestSecretService::secretsComeBack_data()
{
    QTest::addColumn<QString>("account");
    QTest::addColumn<QByteArray>("secret");
    QTest::newRow("plain") << u"root@host:22"_s << QByteArray("secret");
    QTest::newRow("not ascii") << u"j\u00fcrgen@h\u00f6st:22"_s << QByteArray("p\xc3\xa4ss \xf0\x9f\x94\x91");
    QTest::newRow("passphrase") << u"passphrase:root@host:22"_s << QByteArray("with \"quotes\" and\nlines");
    QTest::newRow("empty") << u"empty@host:22"_s << QByteArray("");
    QTest::newRow("long") << u"long@host:22"_s << QByteArray(65536, 'x');
}

void TestSecretService::secretsComeBack()
{
    QFETCH(QString, account);
    QFETCH(QByteArray, secret);
    const auto daemon = keyring();
    if (!daemon) {
        return;
    }
    QCOMPARE(has(account), ItemNotFound);
    QCOMPARE(get(account).status, ItemNotFound);
    QCOMPARE(await(m_store->add(account, secret)), Success);
    QCOMPARE(has(account), Success);
    const SecretMatch match = get(account);
    QCOMPARE(match.status, Success);
    QCOMPARE(match.data, secret);
    QCOMPARE(has(u"x"_s + account), ItemNotFound);
    QCOMPARE(await(m_store->remove(account)), Success);
    QCOMPARE(await(m_store->remove(account)), ItemNotFound);
}

void TestSecretService::itemsAreReplacedAndRemoved()
{
    const auto daemon = keyring();
    if (!daemon) {
        return;
    }
    auto first = m_store->add(u"a@host:22"_s, "one");
    auto other = m_store->add(u"b@host:22"_s, "other");
    QCOMPARE(await(std::move(first)), Success);
    QCOMPARE(await(std::move(other)), Success);
    QCOMPARE(await(m_store->add(u"a@host:22"_s, "two")), Success);
    QCOMPARE(get(u"a@host:22"_s).data, QByteArray("two"));
    QCOMPARE(await(m_store->remove(u"a@host:22"_s)), Success);
    QCOMPARE(has(u"a@host:22"_s), ItemNotFound);
    QCOMPARE(get(u"b@host:22"_s).data, QByteArray("other"));
    QCOMPARE(await(m_store->remove(u"b@host:22"_s)), Success);
}

void TestSecretService::aLockedKeyringThatCannotAsk()
{
    const auto daemon = keyring();
    if (!daemon) {
        return;
    }
    QCOMPARE(await(m_store->add(u"a@host:22"_s, "one")), Success);
    QVERIFY(daemon->lock());
    const LongestPause pause;
    QCOMPARE(has(u"a@host:22"_s), Success);
    QCOMPARE(has(u"b@host:22"_s), ItemNotFound);
    QCOMPARE(get(u"a@host:22"_s).status, InteractionNotAllowed);
    QCOMPARE(await(m_store->add(u"b@host:22"_s, "other")), InteractionNotAllowed);
    QCOMPARE(await(m_store->remove(u"a@host:22"_s)), InteractionNotAllowed);
    QVERIFY2(pause.milliseconds() < kFrozenMs, qPrintable(QString::number(pause.milliseconds())));
}

void TestSecretService::aUserWhoRefuses()
{
    const auto daemon = keyring();
    if (!daemon) {
        return;
    }
    RefusingPrompter prompter(m_bus.address());
    QCOMPARE(await(m_store->add(u"a@host:22"_s, "one")), Success);
    QVERIFY(daemon->lock());
    QCOMPARE(has(u"a@host:22"_s), Success);
    QCOMPARE(prompter.prompts(), 0);
    QCOMPARE(get(u"a@host:22"_s).status, UserCanceled);
    QCOMPARE(prompter.prompts(), 1);
    QCOMPARE(await(m_store->add(u"a@host:22"_s, "two")), UserCanceled);
    QCOMPARE(await(m_store->remove(u"a@host:22"_s)), UserCanceled);
    QCOMPARE(prompter.prompts(), 3);
    QCOMPARE(has(u"a@host:22"_s), Success);
}

void TestSecretService::aFirstKeyringThatNobodyMakes()
{
    const auto daemon = keyring(false);
    if (!daemon) {
        return;
    }
    QCOMPARE(has(u"a@host:22"_s), ItemNotFound);
    QCOMPARE(await(m_store->add(u"a@host:22"_s, "one")), InteractionNotAllowed);
    RefusingPrompter prompter(m_bus.address());
    QCOMPARE(await(m_store->add(u"a@host:22"_s, "one")), UserCanceled);
    QCOMPARE(prompter.prompts(), 1);
}

void TestSecretService::aKeyringThatRestarts()
{
    const auto daemon = keyring();
    if (!daemon) {
        return;
    }
    QCOMPARE(await(m_store->add(u"a@host:22"_s, "kept")), Success);
    daemon->stop();
    QVERIFY(daemon->start());
    QCOMPARE(get(u"a@host:22"_s).data, QByteArray("kept"));
    daemon->stop();
    QCOMPARE(get(u"a@host:22"_s).status, Failed);
    QVERIFY(daemon->start());
    QCOMPARE(get(u"a@host:22"_s).data, QByteArray("kept"));
    QCOMPARE(await(m_store->remove(u"a@host:22"_s)), Success);
}

void TestSecretService::theKeyringIsChosen()
{
    const auto daemon = keyring();
    if (!daemon) {
        return;
    }
    SessionSecretStore chosen;
    QCOMPARE(await(chosen.add(u"a@host:22"_s, "one")), Success);
    QCOMPARE(await(chosen.notice()), QString());
    QCOMPARE(get(u"a@host:22"_s).data, QByteArray("one"));
    QCOMPARE(await(chosen.remove(u"a@host:22"_s)), Success);
}

void TestSecretService::aUserWhoTakesHisTime()
{
    const auto service = fake();
    service->delayMs = 400;
    const LongestPause pause;
    auto waiting = m_store->copyMatching(u"a@host:22"_s, true);
    // Other questions are answered while the user thinks.
    QCOMPARE(has(u"b@host:22"_s), Success);
    QCOMPARE(await(m_store->remove(u"none"_s)), ItemNotFound);
    QVERIFY(!waiting.isReady());
    const SecretMatch match = await(std::move(waiting));
    QCOMPARE(match.status, Success);
    QCOMPARE(match.data, QByteArray("secret of a"));
    QCOMPARE(get(u"b@host:22"_s).data, QByteArray("secret of b"));
    QCOMPARE(service->prompts, 1);
    QVERIFY2(pause.milliseconds() < kFrozenMs, qPrintable(QString::number(pause.milliseconds())));
}

void TestSecretService::refusalByAnotherService()
{
    const auto service = fake();
    service->user = FakeSecretService::User::Refuses;
    QCOMPARE(get(u"a@host:22"_s).status, UserCanceled);
    QCOMPARE(has(u"a@host:22"_s), Success);
    QCOMPARE(service->prompts, 1);
}

void TestSecretService::cancellingTakesThePromptBack()
{
    const auto service = fake();
    service->user = FakeSecretService::User::IsAway;
    auto first = m_store->copyMatching(u"a@host:22"_s, true);
    auto second = m_store->remove(u"b@host:22"_s);
    QTRY_COMPARE(service->prompts, 2);
    m_store->cancelAll();
    QVERIFY(first.isReady() && second.isReady());
    QCOMPARE(await(std::move(first)).status, Failed);
    QCOMPARE(await(std::move(second)), Failed);
    QTRY_COMPARE(service->dismissals, 2);
    QCOMPARE(has(u"b@host:22"_s), Success);
}

void TestSecretService::theEndOfTheStoreResumesWhoWaits()
{
    const auto service = fake();
    service->user = FakeSecretService::User::IsAway;
    auto asking = m_store->copyMatching(u"a@host:22"_s, true);
    QTRY_COMPARE(service->prompts, 1);
    auto starting = m_store->add(u"c@host:22"_s, "new");
    m_store.reset();
    QVERIFY(asking.isReady() && starting.isReady());
    QCOMPARE(await(std::move(asking)).status, Failed);
    QCOMPARE(await(std::move(starting)), Failed);
}

void TestSecretService::aServiceThatVanishesWhileItAsks()
{
    const auto service = fake();
    service->user = FakeSecretService::User::IsAway;
    auto asking = m_store->copyMatching(u"a@host:22"_s, true);
    QTRY_COMPARE(service->prompts, 1);
    service->vanish();
    QCOMPARE(await(std::move(asking)).status, Failed);
}

void TestSecretService::aServiceThatDeniesAccess()
{
    const auto service = fake();
    service->deniesAccess = true;
    QCOMPARE(has(u"a@host:22"_s), AuthFailed);
    QCOMPARE(get(u"a@host:22"_s).status, AuthFailed);
}

void TestSecretService::theEndOfTheBusIsNotOurs()
{
    const auto service = fake();
    service->user = FakeSecretService::User::IsAway;
    auto asking = m_store->copyMatching(u"a@host:22"_s, true);
    QTRY_COMPARE(service->prompts, 1);
    m_bus.stop();
    QCOMPARE(await(std::move(asking)).status, Failed);
    QCOMPARE(has(u"a@host:22"_s), Failed);
    QVERIFY(!await(SessionSecretStore().notice()).isNull());
}

QTEST_GUILESS_MAIN(TestSecretService)
#include "test_secret_service.moc"
