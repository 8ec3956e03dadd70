#pragma once

#include "TerminalEmulator/Engine/Terminal.h"

#include <QObject>
#include <QTimer>

#include <deque>

namespace vt
{

/// Looks for a text in a terminal that goes on writing: all hits are counted in slices between which the event loop
/// runs, and counted on as lines come and go.
class Finder : public QObject
{
    Q_OBJECT

public:
    static constexpr int MaxHits = 100'000; ///< beyond which hits are marked but not counted

    Finder(Terminal &terminal, QObject *parent);

    /// Empty text ends the search. False if the regular expression cannot be read; then nothing is found.
    bool set(const SearchQuery &query);

    bool isActive() const { return m_isActive; }

    /// Moves to the next hit towards the end, or back; from `from` if there is none yet. Goes round at the ends.
    bool move(bool forward, Position from);

    const std::optional<SearchHit> &current() const { return m_current; }

    int count() const { return static_cast<int>(m_past.size() + m_screen.size()); }

    bool isComplete() const { return m_isActive && m_scanned >= m_terminal.screenTop(); }

    /// The place of the current hit among all, from 1; 0 if there is none or it is not counted yet.
    int index() const;

    /// The terminal wrote: what was counted is brought up to date soon.
    void noteOutput();

Q_SIGNALS:
    void changed();

private:
    void restart();
    void work();
    std::optional<SearchHit> neighbour(Position from, bool forward) const;
    void collect(int64_t first, int64_t last, std::deque<SearchHit> &into) const;

    Terminal &m_terminal;
    QTimer m_timer;
    bool m_isActive = false;
    std::deque<SearchHit> m_past;   ///< that begin above m_scanned
    std::deque<SearchHit> m_screen; ///< that begin on the screen
    int64_t m_scanned = 0;
    uint32_t m_reflows = 0;
    bool m_alternate = false;
    std::optional<SearchHit> m_current;
};

} // namespace vt
