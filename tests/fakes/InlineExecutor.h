#pragma once

#include "platform/Executor.h"

namespace vantle {

// Runs background jobs and their continuations at once, on the caller's thread.
struct InlineExecutor final : Executor {
    void post(QObject* context, Job job) override {
        QPointer<QObject> target(context);
        if (Continuation continuation = job(); continuation && target) {
            continuation();
        }
    }
};

} // namespace vantle
