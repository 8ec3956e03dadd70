#include "TerminalEmulator/View/Finder.h"

#include <QElapsedTimer>

#include <algorithm>

namespace vt
{

namespace
{

constexpr int Budget = 5;      ///< milliseconds of counting at a time
constexpr int Pause = 120;     ///< milliseconds after output before it is counted
constexpr int64_t Block = 256; ///< lines between two looks at the clock

bool begins(const SearchHit &one, const SearchHit &other)
{
    return one.first < other.first;
}

} // namespace

Finder::Finder(Terminal &terminal, QObject *parent)
    : QObject(parent)
    , m_terminal(terminal)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Finder::work);
}

bool Finder::set(const SearchQuery &query)
{
    const bool good = m_terminal.setSearch(query);
    m_isActive = good && !query.text.empty();
    m_current.reset();
    restart();
    m_timer.stop();
    if (m_isActive) {
        work();
    } else {
        Q_EMIT changed();
    }
    return good;
}

void Finder::restart()
{
    m_past.clear();
    m_screen.clear();
    m_scanned = m_terminal.firstLine();
    m_reflows = m_terminal.reflowCount();
    m_alternate = m_terminal.isAlternateScreen();
}

bool Finder::move(bool forward, Position from)
{
    if (!m_isActive) {
        return false;
    }
    const Position start = m_current ? m_current->first : from;
    m_current = isComplete() && count() < MaxHits ? neighbour(start, forward) : m_terminal.findNext(start, forward);
    Q_EMIT changed();
    return m_current.has_value();
}

/// The same among the hits that were counted, which needs no look at the text.
std::optional<SearchHit> Finder::neighbour(Position from, bool forward) const
{
    const auto total = static_cast<ptrdiff_t>(m_past.size() + m_screen.size());
    const auto past = static_cast<ptrdiff_t>(m_past.size());
    const auto hit = [&](ptrdiff_t at) -> const SearchHit & {
        return at < past ? m_past[static_cast<size_t>(at)] : m_screen[static_cast<size_t>(at - past)];
    };
    if (total == 0) {
        return std::nullopt;
    }
    ptrdiff_t low = 0; // the first hit that does not begin before `from`
    for (ptrdiff_t high = total; low < high;) {
        const ptrdiff_t middle = (low + high) / 2;
        if (hit(middle).first < from) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    const bool onHit = low < total && hit(low).first == from;
    const ptrdiff_t wanted = forward ? low + (onHit ? 1 : 0) : low - 1;
    return hit((wanted + total) % total);
}

int Finder::index() const
{
    if (!m_current) {
        return 0;
    }
    for (const std::deque<SearchHit> *each : {&m_past, &m_screen}) {
        const auto found = std::lower_bound(each->begin(), each->end(), *m_current, begins);
        if (found != each->end() && *found == *m_current) {
            const auto before = each == &m_screen ? m_past.size() : 0;
            return static_cast<int>(before) + static_cast<int>(found - each->begin()) + 1;
        }
    }
    return 0;
}

void Finder::noteOutput()
{
    if (m_isActive && !m_timer.isActive()) {
        m_timer.start(Pause);
    }
}

/// Hits that begin on the lines `first` to `last`; what began above them was found there.
void Finder::collect(int64_t first, int64_t last, std::deque<SearchHit> &into) const
{
    for (const SearchHit &each : m_terminal.hits(first, last)) {
        if (each.first.line >= first && each.first.line <= last && into.size() < MaxHits) {
            into.push_back(each);
        }
    }
}

void Finder::work()
{
    if (m_reflows != m_terminal.reflowCount() || m_alternate != m_terminal.isAlternateScreen()) {
        // Lines have other numbers now.
        m_current.reset();
        restart();
    }
    while (!m_past.empty() && m_past.front().first.line < m_terminal.firstLine()) {
        m_past.pop_front();
    }
    // A screen that grew took lines back from the scrollback.
    while (!m_past.empty() && m_past.back().first.line >= m_terminal.screenTop()) {
        m_past.pop_back();
    }
    m_scanned = std::min(m_scanned, m_terminal.screenTop());
    if (m_current && m_current->first.line < m_terminal.firstLine()) {
        m_current.reset();
    }
    QElapsedTimer clock;
    clock.start();
    m_scanned = std::max(m_scanned, m_terminal.firstLine());
    while (m_scanned < m_terminal.screenTop() && clock.elapsed() < Budget) {
        const int64_t last = std::min(m_scanned + Block, m_terminal.screenTop()) - 1;
        collect(m_scanned, last, m_past);
        m_scanned = last + 1;
    }
    m_screen.clear();
    if (isComplete()) {
        collect(m_terminal.screenTop(), m_terminal.lastLine(), m_screen);
    } else {
        m_timer.start(0);
    }
    Q_EMIT changed();
}

} // namespace vt
