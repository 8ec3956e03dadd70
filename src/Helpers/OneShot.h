#pragma once

#include <QCoroTask>

#include <coroutine>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// One value that arrives later from a callback: a C library, a signal, a timer.
///
///     OneShot<int> shot(-1);
///     begin([done = shot.completer()](int v) { done.complete(v); });
///     const int v = co_await shot.wait();
///
/// A value always arrives. The first `complete` sets it and later ones are ignored, so that an answer and its timeout
/// may race; and when the last completer is dropped without an answer, the value is the fallback. A waiting coroutine
/// is therefore always resumed, and its frame never leaks, provided that no completer lives in the frame that waits.
///
/// Waiters run inside `complete` (or inside the drop of the last completer), as its last act: the caller expects
/// there that they may destroy whatever they can reach. Everything belongs to the main thread.
///
/// T is copyable; each waiter gets a copy.
template<typename T>
class OneShot
{
    struct State {
        std::optional<T> value;
        T fallback;
        std::vector<std::coroutine_handle<>> waiting;
    };

    // Sets the value once. The state is held by value: a waiter may drop whatever held the caller's.
    static bool settle(const std::shared_ptr<State> held, T value)
    {
        if (held->value) {
            return false;
        }
        held->value.emplace(std::move(value));
        for (const std::coroutine_handle<> waiter : std::exchange(held->waiting, {})) {
            waiter.resume();
        }
        return true;
    }

    // What all completers share; its end is the drop of the last one.
    struct Source {
        explicit Source(std::shared_ptr<State> s)
            : state(std::move(s))
        {
        }

        Source(const Source &) = delete;
        Source &operator=(const Source &) = delete;

        ~Source() { settle(state, state->fallback); }

        std::shared_ptr<State> state;
    };

    struct Awaiter {
        std::shared_ptr<State> state;

        bool await_ready() const noexcept { return state->value.has_value(); }

        void await_suspend(std::coroutine_handle<> waiter) { state->waiting.push_back(waiter); }

        T await_resume() const { return *state->value; }
    };

    static QCoro::Task<T> waitFor(std::shared_ptr<State> state) { co_return co_await Awaiter{std::move(state)}; }

public:
    /// The side that delivers. Copyable; a C callback's user data is a `new Completer(...)` that the callback
    /// deletes.
    class Completer
    {
    public:
        /// Gives the value and resumes who waits. False, and nothing happens, when there is a value already.
        /// Const, so that a lambda that captured the completer needs no `mutable`.
        bool complete(T value) const { return settle(m_source->state, std::move(value)); }

        /// Whether a value is there: then an answer comes too late.
        bool isComplete() const { return m_source->state->value.has_value(); }

    private:
        friend class OneShot;

        explicit Completer(std::shared_ptr<Source> source)
            : m_source(std::move(source))
        {
        }

        std::shared_ptr<Source> m_source;
    };

    /// `fallback` is what waiters get when every completer is dropped without an answer.
    explicit OneShot(T fallback)
        : m_state(std::make_shared<State>(State{std::nullopt, std::move(fallback), {}}))
        , m_own(std::make_shared<Source>(m_state))
    {
    }

    /// A completer to hand away. To be called before the first `wait`, which drops the object's own one.
    Completer completer() const
    {
        Q_ASSERT_X(m_own, "OneShot::completer", "called after wait");
        return Completer(m_own);
    }

    /// The value, at once if it is there. Any number of coroutines may wait; this object need not outlive them.
    /// Without any completer left it is the fallback at once.
    QCoro::Task<T> wait()
    {
        const std::shared_ptr<State> state = m_state;
        m_own.reset();
        return waitFor(state);
    }

private:
    std::shared_ptr<State> m_state;
    std::shared_ptr<Source> m_own;
};
