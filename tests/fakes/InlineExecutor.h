#pragma once

#include "platform/Executor.h"

namespace vantle {

// Runs background jobs and their continuations at once, on the caller's thread.
struct InlineExecutor final : Executor {
    int jobs = 0;
    void post(QObject* context, Job job) override {
        ++jobs;
        QPointer<QObject> target(context);
        if (Continuation continuation = job(); continuation && target) {
            continuation();
        }
    }
};

} // namespace vantle
