#include "TerminalEmulator/View/Feeder.h"

#include <algorithm>
#include <utility>

namespace vt
{

Feeder::Feeder(std::function<void(std::string_view)> consume, std::function<void()> drained, QObject *parent)
    : QObject(parent)
    , m_consume(std::move(consume))
    , m_drained(std::move(drained))
{
    m_turn.setSingleShot(true);
    m_turn.setInterval(0);
    connect(&m_turn, &QTimer::timeout, this, &Feeder::turn);
}

void Feeder::feed(QByteArrayView bytes)
{
    // Somebody who feeds while bytes are consumed (an echo) comes after them.
    const qsizetype done = m_pending == 0 && !m_isConsuming ? consume(bytes) : 0;
    if (done < bytes.size()) {
        m_queue.push_back(bytes.sliced(done).toByteArray());
        m_pending += bytes.size() - done;
        m_turn.start();
    }
}

/// Consumes from the front as long as the turn lasts; the count of bytes.
qsizetype Feeder::consume(QByteArrayView bytes)
{
    qsizetype done = 0;
    m_isConsuming = true;
    if (!m_clock.isValid()) {
        m_clock.start();
    }
    while (done < bytes.size() && hasTime()) {
        const QByteArrayView slice = bytes.sliced(done, std::min(Slice, bytes.size() - done));
        m_consume({slice.data(), static_cast<size_t>(slice.size())});
        done += slice.size();
    }
    m_isConsuming = false;
    // The next turn begins when everything else has had its own.
    if (!m_turn.isActive()) {
        m_turn.start();
    }
    return done;
}

void Feeder::turn()
{
    m_ranOut = !hasTime();
    m_clock.invalidate();
    const bool waited = m_pending > 0;
    while (!m_queue.empty() && hasTime()) {
        // Kept by a copy: what is consumed may feed more.
        const QByteArray block = m_queue.front();
        const unsigned cleared = m_cleared;
        const qsizetype done = consume(QByteArrayView(block).sliced(m_offset));
        if (m_cleared != cleared) {
            continue;
        }
        m_offset += done;
        m_pending -= done;
        if (m_offset == block.size()) {
            m_queue.pop_front();
            m_offset = 0;
        }
    }
    if (waited && m_pending == 0) {
        m_drained();
    }
}

void Feeder::flush()
{
    while (!m_queue.empty()) {
        turn();
    }
}

void Feeder::clear()
{
    ++m_cleared;
    m_queue.clear();
    m_offset = 0;
    m_pending = 0;
}

} // namespace vt
