#pragma once

#include <QCoroTask>
#include <QPointer>
#include <concepts>
#include <type_traits>
#include <utility>

namespace TasksDetail
{

template<typename T, typename Callback>
QCoro::Task<> deliver(QCoro::Task<T> task, QPointer<QObject> context, Callback callback)
{
    if constexpr (std::is_void_v<T>) {
        co_await std::move(task);
        if (context) {
            callback();
        }
    } else {
        T value = co_await std::move(task);
        if (context) {
            callback(std::move(value));
        }
    }
}

} // namespace TasksDetail

/// Calls `callback` with the task's value once the task is done, unless `context` is gone by then: the way in which
/// objects that may die at any moment (view models, views) consume tasks. The task itself always runs to its end.
///
/// A task that is done already calls back before this returns. What the callback holds is released when the task
/// ends, not when the context goes; so it holds values and weak references only.
template<typename T, typename Callback>
void whenDone(QCoro::Task<T> task, QObject *context, Callback callback)
{
    TasksDetail::deliver<T, Callback>(std::move(task), QPointer<QObject>(context), std::move(callback));
}
