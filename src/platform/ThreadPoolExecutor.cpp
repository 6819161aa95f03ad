#include "platform/ThreadPoolExecutor.h"

#include <QMetaObject>

namespace vantle {

ThreadPoolExecutor::ThreadPoolExecutor() {
    m_pool.setMaxThreadCount(1);
    m_pool.setExpiryTimeout(10'000);
}

ThreadPoolExecutor::~ThreadPoolExecutor() {
    m_pool.waitForDone();
}

void ThreadPoolExecutor::post(QObject* context, Job job) {
    QPointer<QObject> target(context);
    m_pool.start([target, job = std::move(job)]() {
        Continuation continuation = job();
        if (!continuation || !target) {
            return;
        }
        // The queued call is dropped by Qt if the target is destroyed before it runs.
        QMetaObject::invokeMethod(target.data(), std::move(continuation), Qt::QueuedConnection);
    });
}

} // namespace vantle
