#include "Services/SSH/CommandGate.h"

#include <QTest>
#include <vector>

class TestCommandGate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void admitsEightAndTheRestInOrder();
    void aLongQueueDoesNotDeepenTheStack();
    void narrowsToWhatTheServerTook();
};

namespace
{

// Enters and keeps the pass in `held` under its number.
QCoro::Task<> enter(std::shared_ptr<CommandGate> gate, int number,
                    std::vector<std::pair<int, CommandGate::Pass>> &held)
{
    held.emplace_back(number, co_await gate->enter());
}

} // namespace

void TestCommandGate::admitsEightAndTheRestInOrder()
{
    const auto gate = std::make_shared<CommandGate>();
    std::vector<std::pair<int, CommandGate::Pass>> held;
    for (int i = 0; i < 20; ++i) {
        enter(gate, i, held);
    }
    QCOMPARE(held.size(), 8U);
    QCOMPARE(gate->running(), 8);
    for (int ended = 0; ended < 20; ++ended) {
        QCOMPARE(held.front().first, ended);
        const CommandGate::Pass pass = std::move(held.front().second);
        held.erase(held.begin());
    }
    QVERIFY(held.empty());
    QCOMPARE(gate->running(), 0);
}

void TestCommandGate::aLongQueueDoesNotDeepenTheStack()
{
    const auto gate = std::make_shared<CommandGate>();
    std::vector<std::pair<int, CommandGate::Pass>> held;
    for (int i = 0; i < 8; ++i) {
        enter(gate, i, held);
    }
    int done = 0;
    const auto passThrough = [](std::shared_ptr<CommandGate> entered, int &count) -> QCoro::Task<> {
        const CommandGate::Pass pass = co_await entered->enter();
        ++count;
    };
    for (int i = 0; i < 200'000; ++i) {
        passThrough(gate, done);
    }
    QCOMPARE(done, 0);
    held.clear();
    QCOMPARE(done, 200'000);
    QCOMPARE(gate->running(), 0);
}

void TestCommandGate::narrowsToWhatTheServerTook()
{
    const auto gate = std::make_shared<CommandGate>();
    std::vector<std::pair<int, CommandGate::Pass>> held;
    for (int i = 0; i < 5; ++i) {
        enter(gate, i, held);
    }
    gate->learnFrom("mux_client_request_session: read from master failed: Broken pipe");
    QCOMPARE(gate->limit(), CommandGate::kLimit);
    for (int refused = 0; refused < 3; ++refused) { // a server with MaxSessions 2
        gate->learnFrom("mux_client_request_session: session request failed: Session open refused by peer");
        held.pop_back();
    }
    QCOMPARE(gate->limit(), 2);
    enter(gate, 9, held);
    QCOMPARE(held.size(), 2U);
    CommandGate::Pass first = std::move(held.front().second);
    held.erase(held.begin());
    QCOMPARE(held.size(), 1U);
    first.reset();
    QCOMPARE(held.back().first, 9);
    held.clear();
    gate->learnFrom("Session open refused by peer");
    QCOMPARE(gate->limit(), 1);
}

QTEST_GUILESS_MAIN(TestCommandGate)
#include "test_command_gate.moc"
