#pragma once

#include "platform/Executor.h"

#include <QThreadPool>

namespace vantle {

// Production executor: one background thread at most, which exits when idle so a quiet process
// keeps no extra thread around.
class ThreadPoolExecutor final : public Executor {
public:
    ThreadPoolExecutor();
    ~ThreadPoolExecutor() override;

    void post(QObject* context, Job job) override;

private:
    QThreadPool m_pool;
};

} // namespace vantle
