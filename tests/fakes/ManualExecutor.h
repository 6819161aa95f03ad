#pragma once

#include "platform/Executor.h"

#include <QList>

namespace vantle {

// Holds background jobs until the test runs them, so it can act while work is in flight.
struct ManualExecutor final : Executor {
    QList<std::pair<QPointer<QObject>, Job>> pending;

    void post(QObject* context, Job job) override { pending.append({context, std::move(job)}); }
    // Runs the oldest job and its continuation; false when none waits.
    bool runNext() {
        if (pending.isEmpty()) {
            return false;
        }
        auto [context, job] = pending.takeFirst();
        if (Continuation continuation = job(); continuation && context) {
            continuation();
        }
        return true;
    }
};

} // namespace vantle
