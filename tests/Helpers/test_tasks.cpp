#include "Helpers/OneShot.h"
#include "Helpers/Tasks.h"

#include <QTest>

class TestTasks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deliversOnce();
    void deliversWhatIsThereAlready();
    void aContextThatIsGoneHearsNothing();
    void theContextMayDieInTheCallback();
};

void TestTasks::deliversOnce()
{
    QList<int> heard;
    {
        OneShot<int> shot(-1);
        const auto done = shot.completer();
        whenDone(shot.wait(), this, [&heard](int value) { heard.append(value); });
        QVERIFY(heard.isEmpty());
        done.complete(7);
        done.complete(8);
    }
    QCOMPARE(heard, QList<int>{7});
}

void TestTasks::deliversWhatIsThereAlready()
{
    bool isDone = false;
    whenDone([]() -> QCoro::Task<> { co_return; }(), this, [&isDone] { isDone = true; });
    QVERIFY(isDone);
}

void TestTasks::aContextThatIsGoneHearsNothing()
{
    bool isHeard = false;
    bool hasRun = false;
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    OneShot<int> shot(-1);
    const auto done = shot.completer();
    {
        QObject context;
        const auto follow = [](QCoro::Task<int> task, bool &ran) -> QCoro::Task<int> {
            const int value = co_await std::move(task);
            ran = true;
            co_return value;
        };
        whenDone(follow(shot.wait(), hasRun), &context, [&isHeard, held](int) { isHeard = true; });
    }
    held.reset();
    done.complete(1);
    QVERIFY(hasRun); // the work itself goes on to its end
    QVERIFY(!isHeard);
    QVERIFY(watched.expired());
}

void TestTasks::theContextMayDieInTheCallback()
{
    auto *context = new QObject;
    OneShot<int> shot(-1);
    const auto done = shot.completer();
    bool isHeard = false;
    whenDone(shot.wait(), context, [context, &isHeard](int) {
        delete context;
        isHeard = true;
    });
    done.complete(1);
    QVERIFY(isHeard);
}

QTEST_GUILESS_MAIN(TestTasks)
#include "test_tasks.moc"
