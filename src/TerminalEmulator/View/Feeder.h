#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <deque>
#include <functional>
#include <string_view>

namespace vt
{

/// Takes output as fast as it comes and hands it on in slices, so that the event loop gets its turn in between: a
/// turn ends Budget after its first byte, whoever used the time. What does not fit waits here.
class Feeder : public QObject
{
public:
    static constexpr qint64 Budget = 6'000'000; ///< nanoseconds a turn
    static constexpr qsizetype Slice = 1 << 15; ///< bytes between two looks at the clock

    /// `consume` gets every byte in order; `drained` is called when a queue came to its end.
    Feeder(std::function<void(std::string_view)> consume, std::function<void()> drained, QObject *parent);

    void feed(QByteArrayView bytes);

    /// Bytes that wait.
    qsizetype pending() const { return m_pending; }

    /// Whether bytes given now are consumed at once.
    bool isReady() const { return m_pending == 0 && hasTime(); }

    /// Whether output comes faster than turns can take it.
    bool isFlooded() const { return m_pending > 0 || m_ranOut; }

    /// Consumes what waits, whatever it takes.
    void flush();
    /// Drops what waits.
    void clear();

private:
    bool hasTime() const { return !m_clock.isValid() || m_clock.nsecsElapsed() < Budget; }

    qsizetype consume(QByteArrayView bytes);
    void turn();

    std::function<void(std::string_view)> m_consume;
    std::function<void()> m_drained;
    QTimer m_turn;
    std::deque<QByteArray> m_queue;
    qsizetype m_offset = 0; ///< consumed of the first block
    qsizetype m_pending = 0;
    QElapsedTimer m_clock;  ///< of this turn, invalid before its first byte
    unsigned m_cleared = 0; ///< counts clear()
    bool m_ranOut = false;  ///< the last turn's time was used up
    bool m_isConsuming = false;
};

} // namespace vt
