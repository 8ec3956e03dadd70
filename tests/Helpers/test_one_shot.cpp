#include "Helpers/OneShot.h"

#include <QTest>

#include <optional>

namespace
{

// Counts its living copies: at the end of a test each value, and each frame that held one, must be gone.
struct Counted {
    explicit Counted(int v)
        : value(v)
    {
        ++alive;
    }

    Counted(const Counted &other)
        : value(other.value)
    {
        ++alive;
    }

    Counted &operator=(const Counted &) = default;

    ~Counted() { --alive; }

    int value;
    static inline int alive = 0;
};

using Shot = OneShot<Counted>;

QCoro::Task<> collect(std::shared_ptr<Shot> shot, std::shared_ptr<QList<int>> into)
{
    const Counted inTheFrame(0);
    into->append((co_await shot->wait()).value);
}

QCoro::Task<> dropBoth(std::unique_ptr<Shot> *shot, std::unique_ptr<Shot::Completer> *done, std::optional<int> *into)
{
    const Counted value = co_await (*shot)->wait();
    done->reset();
    shot->reset();
    *into = value.value;
}

} // namespace

class TestOneShot : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init() { m_got = std::make_shared<QList<int>>(); }

    void cleanup() { QCOMPARE(Counted::alive, 0); }

    void aValueThatIsThereDoesNotSuspend();
    void waitersResumeInsideComplete();
    void theFirstAnswerCounts();
    void aDroppedCompleterGivesTheFallback();
    void aCopyKeepsTheWaiterWaiting();
    void withoutACompleterTheFallbackComesAtOnce();
    void theWaiterMayDestroyEverything();

private:
    std::shared_ptr<QList<int>> m_got;
};

void TestOneShot::aValueThatIsThereDoesNotSuspend()
{
    const auto shot = std::make_shared<Shot>(Counted(-1));
    QVERIFY(shot->completer().complete(Counted(7)));
    collect(shot, m_got);
    collect(shot, m_got);
    QCOMPARE(*m_got, (QList<int>{7, 7}));
}

void TestOneShot::waitersResumeInsideComplete()
{
    const auto shot = std::make_shared<Shot>(Counted(-1));
    const Shot::Completer done = shot->completer();
    // The tasks are dropped at once: what waits lives on without them.
    collect(shot, m_got);
    collect(shot, m_got);
    QVERIFY(m_got->isEmpty());
    QVERIFY(!done.isComplete());
    done.complete(Counted(3));
    QVERIFY(done.isComplete());
    QCOMPARE(*m_got, (QList<int>{3, 3}));
}

void TestOneShot::theFirstAnswerCounts()
{
    const auto shot = std::make_shared<Shot>(Counted(-1));
    const Shot::Completer answer = shot->completer();
    const Shot::Completer timeout = shot->completer();
    collect(shot, m_got);
    QVERIFY(answer.complete(Counted(1)));
    QVERIFY(!timeout.complete(Counted(2)));
    collect(shot, m_got);
    QCOMPARE(*m_got, (QList<int>{1, 1}));
}

void TestOneShot::aDroppedCompleterGivesTheFallback()
{
    const auto shot = std::make_shared<Shot>(Counted(-1));
    auto done = std::make_unique<Shot::Completer>(shot->completer());
    collect(shot, m_got);
    QVERIFY(m_got->isEmpty());
    done.reset();
    QCOMPARE(*m_got, QList<int>{-1});
}

void TestOneShot::aCopyKeepsTheWaiterWaiting()
{
    const auto shot = std::make_shared<Shot>(Counted(-1));
    auto first = std::make_unique<Shot::Completer>(shot->completer());
    auto second = std::make_unique<Shot::Completer>(*first);
    collect(shot, m_got);
    first.reset();
    QVERIFY(m_got->isEmpty());
    second.reset();
    QCOMPARE(*m_got, QList<int>{-1});
}

void TestOneShot::withoutACompleterTheFallbackComesAtOnce()
{
    const auto shot = std::make_shared<Shot>(Counted(-1));
    collect(shot, m_got);
    QCOMPARE(*m_got, QList<int>{-1});
}

void TestOneShot::theWaiterMayDestroyEverything()
{
    auto shot = std::make_unique<Shot>(Counted(-1));
    auto done = std::make_unique<Shot::Completer>(shot->completer());
    std::optional<int> got;
    dropBoth(&shot, &done, &got);
    const Shot::Completer *const borrowed = done.get();
    borrowed->complete(Counted(5));
    QCOMPARE(got, 5);
    QVERIFY(!shot);
}

QTEST_GUILESS_MAIN(TestOneShot)
#include "test_one_shot.moc"
