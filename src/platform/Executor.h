#pragma once

#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <type_traits>

namespace vantle {

// Where pure computation runs off the main thread. The job runs in the background and returns a
// continuation, which is delivered to the main thread by a queued call on `context` and dropped
// if `context` is gone by then.
class Executor {
public:
    using Continuation = std::function<void()>;
    using Job = std::function<Continuation()>;

    virtual ~Executor() = default;
    virtual void post(QObject* context, Job job) = 0;
};

// Runs `work()` through `executor` and hands its result to `done` on `context`'s thread.
template <typename Work, typename Done>
void runInBackground(Executor& executor, QObject* context, Work work, Done done) {
    executor.post(context, [work = std::move(work), done = std::move(done)]() mutable {
        auto result = std::make_shared<std::invoke_result_t<Work&>>(work());
        return Executor::Continuation(
            [done = std::move(done), result]() mutable { done(std::move(*result)); });
    });
}

} // namespace vantle
