#include "Helpers/ManualClock.h"
#include "Services/SSH/KeychainManager.h"
#include "Services/SSH/MemorySecretStore.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

// Writes each call down and answers it when the test says so.
class ScriptedStore final : public SecretStore
{
public:
    QCoro::Task<SecretStatus> add(QString account, QByteArray secret) override
    {
        co_return (co_await ask(u"add "_s + account + u' ' + QString::fromUtf8(secret))).status;
    }

    QCoro::Task<SecretMatch> copyMatching(QString account, bool wantData) override
    {
        return ask((wantData ? u"read "_s : u"test "_s) + account);
    }

    QCoro::Task<SecretStatus> remove(QString account) override
    {
        co_return (co_await ask(u"remove "_s + account)).status;
    }

    void cancelAll() override
    {
        while (!m_open.isEmpty()) {
            m_open.takeFirst().complete({SecretStatus::Failed, {}});
        }
    }

    // Answers the oldest open call.
    void answer(SecretStatus status, const QByteArray &data = {}) { m_open.takeFirst().complete({status, data}); }

    qsizetype open() const { return m_open.size(); }

    // The calls since the last time.
    QStringList taken() { return std::exchange(m_calls, {}); }

private:
    QCoro::Task<SecretMatch> ask(const QString &call)
    {
        m_calls += call;
        OneShot<SecretMatch> shot(SecretMatch{});
        m_open += shot.completer();
        return shot.wait();
    }

    QStringList m_calls;
    QList<OneShot<SecretMatch>::Completer> m_open;
};

// Where a task's result arrives.
template<typename T>
class Result
{
public:
    explicit Result(QCoro::Task<T> task) { collect(std::move(task), m_value); }

    bool isThere() const { return m_value->has_value(); }

    T value() const { return m_value->value(); }

private:
    static QCoro::Task<> collect(QCoro::Task<T> task, std::shared_ptr<std::optional<T>> into)
    {
        T value = co_await task;
        into->emplace(std::move(value));
    }

    std::shared_ptr<std::optional<T>> m_value = std::make_shared<std::optional<T>>();
};

using Text = std::optional<QString>;

} // namespace

using enum SecretStatus;

class TestKeychainManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_store = std::make_unique<ScriptedStore>();
        m_clock = std::make_unique<ManualClock>();
        m_keychain = std::make_unique<KeychainManager>(*m_store, *m_clock);
    }

    void cleanup()
    {
        m_keychain.reset();
        QCOMPARE(m_store->open(), 0);
    }

    void aReadIsCachedFor300Seconds();
    void aReadThatFails_data();
    void aReadThatFails();
    void aPresenceTest_data();
    void aPresenceTest();
    void aPresenceTestUsesTheCache();
    void savingReplacesAndCaches();
    void savingClearsADenialWhateverTheResult();
    void whoRefusedToUnlockIsNotAskedTwiceBySaving();
    void deleting_data();
    void deleting();
    void overlappingReadsAskOnce();
    void readsOfOtherAccountsGoOn();
    void aReadUnderWayDoesNotOverwriteANewerSecret();
    void savesOfOneAccountDoNotMix();
    void theEndResumesEverybody();
    void credentialsFollowTheMethod();

private:
    QString account() const { return u"root@host:22"_s; }

    bool save(const QString &secret)
    {
        Result saved(m_keychain->savePassword(account(), secret));
        m_store->answer(ItemNotFound);
        m_store->answer(Success);
        m_store->taken();
        return saved.value();
    }

    std::unique_ptr<ScriptedStore> m_store;
    std::unique_ptr<ManualClock> m_clock;
    std::unique_ptr<KeychainManager> m_keychain;
};

void TestKeychainManager::aReadIsCachedFor300Seconds()
{
    Result first(m_keychain->getPassword(account()));
    QVERIFY(!first.isThere());
    m_store->answer(Success, "s\xc3\xa9");
    QCOMPARE(first.value(), Text(u"s\u00e9"_s));
    QCOMPARE(m_store->taken(), QStringList{u"read root@host:22"_s});

    m_clock->advance(299'999);
    QCOMPARE(Result(m_keychain->getPassword(account())).value(), Text(u"s\u00e9"_s));
    QCOMPARE(m_store->taken(), QStringList());

    m_clock->advance(1);
    Result second(m_keychain->getPassword(account()));
    m_store->answer(ItemNotFound);
    QCOMPARE(second.value(), Text());
    QCOMPARE(m_store->taken(), QStringList{u"read root@host:22"_s});
}

void TestKeychainManager::aReadThatFails_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("denied");
    QTest::newRow("not allowed") << int(InteractionNotAllowed) << QByteArray() << true;
    QTest::newRow("cancelled by user") << int(UserCanceled) << QByteArray() << false;
    QTest::newRow("authentication") << int(AuthFailed) << QByteArray() << false;
    QTest::newRow("no item") << int(ItemNotFound) << QByteArray() << false;
    QTest::newRow("store gone") << int(Failed) << QByteArray() << false;
    QTest::newRow("not text") << int(Success) << QByteArray("\xff\xfe") << false;
}

void TestKeychainManager::aReadThatFails()
{
    QFETCH(int, status);
    QFETCH(QByteArray, data);
    QFETCH(bool, denied);
    Result read(m_keychain->getPassword(account()));
    m_store->answer(SecretStatus(status), data);
    QCOMPARE(read.value(), Text());
    QCOMPARE(m_keychain->deniedAccounts().contains(account()), denied);

    // A denied account is not asked for again, neither for its secret nor for its presence.
    m_store->taken();
    Result again(m_keychain->getPassword(account()));
    Result has(m_keychain->hasPassword(account()));
    QCOMPARE(m_store->taken().size(), denied ? 0 : 2);
    QCOMPARE(again.isThere(), denied);
    QCOMPARE(has.isThere(), denied);
}

void TestKeychainManager::aPresenceTest_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("has");
    QTest::addColumn<bool>("denied");
    QTest::newRow("there") << int(Success) << true << false;
    QTest::newRow("not there") << int(ItemNotFound) << false << false;
    QTest::newRow("store gone") << int(Failed) << false << false;
    QTest::newRow("cancelled by user") << int(UserCanceled) << false << true;
    QTest::newRow("authentication") << int(AuthFailed) << false << true;
    QTest::newRow("not allowed") << int(InteractionNotAllowed) << false << true;
}

void TestKeychainManager::aPresenceTest()
{
    QFETCH(int, status);
    QFETCH(bool, has);
    QFETCH(bool, denied);
    Result tested(m_keychain->hasPassword(account()));
    QCOMPARE(m_store->taken(), QStringList{u"test root@host:22"_s});
    m_store->answer(SecretStatus(status));
    QCOMPARE(tested.value(), has);
    QCOMPARE(m_keychain->deniedAccounts().contains(account()), denied);
}

void TestKeychainManager::aPresenceTestUsesTheCache()
{
    QVERIFY(save(u"x"_s));
    QVERIFY(Result(m_keychain->hasPassword(account())).value());
    m_clock->advance(-1000);
    Result clockSetBack(m_keychain->hasPassword(account()));
    m_clock->advance(301'000);
    Result later(m_keychain->hasPassword(account()));
    QCOMPARE(m_store->taken().size(), 2);
}

void TestKeychainManager::savingReplacesAndCaches()
{
    Result saved(m_keychain->savePassword(account(), u"p\u00e4ss"_s));
    m_store->answer(AuthFailed);
    m_store->answer(Success);
    QCOMPARE(m_store->taken(), (QStringList{u"remove root@host:22"_s, u"add root@host:22 p\u00e4ss"_s}));
    QVERIFY(saved.value());
    QCOMPARE(Result(m_keychain->getPassword(account())).value(), Text(u"p\u00e4ss"_s));

    QVERIFY(!Result(m_keychain->savePassword(account(), QString(QChar(0xDC00)))).value());
    QCOMPARE(m_store->taken(), QStringList());
}

void TestKeychainManager::savingClearsADenialWhateverTheResult()
{
    Result read(m_keychain->getPassword(account()));
    m_store->answer(InteractionNotAllowed);
    QVERIFY(m_keychain->deniedAccounts().contains(account()));
    Result saved(m_keychain->savePassword(account(), u"x"_s));
    QVERIFY(m_keychain->deniedAccounts().isEmpty());
    m_store->answer(Failed);
    m_store->answer(Failed);
    QVERIFY(!saved.value());
    QVERIFY(m_keychain->deniedAccounts().isEmpty());
    Result afterwards(m_keychain->getPassword(account()));
    QVERIFY(!afterwards.isThere());
}

void TestKeychainManager::whoRefusedToUnlockIsNotAskedTwiceBySaving()
{
    Result saved(m_keychain->savePassword(account(), u"x"_s));
    m_store->answer(UserCanceled);
    QVERIFY(!saved.value());
    QCOMPARE(m_store->taken(), QStringList{u"remove root@host:22"_s});
}

void TestKeychainManager::deleting_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("gone");
    QTest::newRow("removed") << int(Success) << true;
    QTest::newRow("was not there") << int(ItemNotFound) << true;
    QTest::newRow("refused") << int(InteractionNotAllowed) << false;
    QTest::newRow("store gone") << int(Failed) << false;
}

void TestKeychainManager::deleting()
{
    QFETCH(int, status);
    QFETCH(bool, gone);
    QVERIFY(save(u"x"_s));
    Result deleted(m_keychain->deletePassword(account()));
    m_store->answer(SecretStatus(status));
    QCOMPARE(deleted.value(), gone);
    QCOMPARE(m_keychain->deniedAccounts().size(), 0);
    QCOMPARE(Result(m_keychain->hasPassword(account())).isThere(), !gone);
}

void TestKeychainManager::overlappingReadsAskOnce()
{
    Result first(m_keychain->getPassword(account()));
    Result second(m_keychain->getPassword(account()));
    Result third(m_keychain->getPassword(account()));
    QCOMPARE(m_store->taken().size(), 1);
    m_store->answer(UserCanceled);
    for (const auto &result : {first, second, third}) {
        QCOMPARE(result.value(), Text());
    }
    QCOMPARE(m_store->taken(), QStringList());
}

void TestKeychainManager::readsOfOtherAccountsGoOn()
{
    Result waiting(m_keychain->getPassword(account()));
    Result present(m_keychain->hasPassword(account()));
    Result other(m_keychain->getPassword(u"other"_s));
    QCOMPARE(m_store->taken(), (QStringList{u"read root@host:22"_s, u"test root@host:22"_s, u"read other"_s}));
    m_store->answer(Success, "a");
    m_store->answer(Success);
    m_store->answer(Success, "b");
    QCOMPARE(waiting.value(), Text(u"a"_s));
    QCOMPARE(other.value(), Text(u"b"_s));
    QVERIFY(present.value());
}

void TestKeychainManager::aReadUnderWayDoesNotOverwriteANewerSecret()
{
    Result read(m_keychain->getPassword(account()));
    Result saved(m_keychain->savePassword(account(), u"new"_s));
    Result deleted(m_keychain->deletePassword(account()));
    QCOMPARE(m_store->taken(), QStringList{u"read root@host:22"_s});
    m_store->answer(Success, "old");
    QCOMPARE(read.value(), Text(u"old"_s));
    m_store->answer(Success);
    m_store->answer(Success);
    QVERIFY(saved.value());
    QCOMPARE(Result(m_keychain->getPassword(account())).value(), Text(u"new"_s));
    m_store->answer(Success);
    QVERIFY(deleted.value());
    QVERIFY(!Result(m_keychain->hasPassword(account())).isThere());
}

void TestKeychainManager::savesOfOneAccountDoNotMix()
{
    Result one(m_keychain->savePassword(account(), u"1"_s));
    Result two(m_keychain->savePassword(account(), u"2"_s));
    Result read(m_keychain->getPassword(account()));
    for (int i = 0; i < 4; ++i) {
        m_store->answer(Success);
    }
    QCOMPARE(m_store->taken(), (QStringList{u"remove root@host:22"_s, u"add root@host:22 1"_s,
                                            u"remove root@host:22"_s, u"add root@host:22 2"_s}));
    QVERIFY(one.value() && two.value());
    QCOMPARE(read.value(), Text(u"2"_s));
}

void TestKeychainManager::theEndResumesEverybody()
{
    Result read(m_keychain->getPassword(account()));
    Result joined(m_keychain->getPassword(account()));
    Result saved(m_keychain->savePassword(account(), u"x"_s));
    Result deleted(m_keychain->deletePassword(account()));
    Result has(m_keychain->hasPassword(account()));
    Result other(m_keychain->savePassword(u"other"_s, u"x"_s));
    m_store->taken();
    m_keychain.reset();
    QCOMPARE(read.value(), Text());
    QCOMPARE(joined.value(), Text());
    QVERIFY(!saved.value() && !deleted.value() && !has.value() && !other.value());
    QCOMPARE(m_store->taken(), QStringList());
}

void TestKeychainManager::credentialsFollowTheMethod()
{
    MemorySecretStore memory;
    KeychainManager keychain(memory, *m_clock);
    Server server;
    server.host = u"10.0.0.1"_s;
    server.port = 2222;
    server.username = u"ops"_s;
    QCOMPARE(KeychainManager::passwordAccount(server), u"ops@10.0.0.1:2222"_s);
    QCOMPARE(KeychainManager::passphraseAccount(server), u"passphrase:ops@10.0.0.1:2222"_s);
    QVERIFY(Result(keychain.savePassword(server, u"pw"_s)).value());
    QVERIFY(Result(keychain.savePassword(KeychainManager::passphraseAccount(server), u"phrase"_s)).value());

    const QList<AuthMethod> methods{AuthMethod::Password, AuthMethod::PublicKey, AuthMethod::SshAgent};
    for (const AuthMethod method : methods) {
        server.authMethod = method;
        const bool byPassword = method == AuthMethod::Password;
        const bool byKey = method == AuthMethod::PublicKey;
        QCOMPARE(Result(keychain.hasPassword(server)).value(), byPassword);
        QCOMPARE(Result(keychain.getPassword(server)).value(), byPassword ? Text(u"pw"_s) : Text());
        QCOMPARE(Result(keychain.hasPassphrase(server)).value(), byKey);
        QCOMPARE(Result(keychain.getPassphrase(server)).value(), byKey ? Text(u"phrase"_s) : Text());
        QCOMPARE(Result(keychain.savePassword(server, u"pw"_s)).value(), byPassword);
    }

    m_clock->advance(400'000);
    QVERIFY(Result(keychain.deletePassword(KeychainManager::passwordAccount(server))).value());
    QVERIFY(!Result(keychain.hasPassword(KeychainManager::passwordAccount(server))).value());
    QCOMPARE(Result(keychain.getPassword(KeychainManager::passphraseAccount(server))).value(), Text(u"phrase"_s));
}

QTEST_GUILESS_MAIN(TestKeychainManager)
#include "test_keychain_manager.moc"
