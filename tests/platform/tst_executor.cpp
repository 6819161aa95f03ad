#include "platform/ThreadPoolExecutor.h"

#include <QSemaphore>
#include <QTest>
#include <QThread>

using namespace vantle;

// Background results must come back on the main thread, and never to an owner that is gone.
class TestExecutor : public QObject {
    Q_OBJECT

private slots:
    void resultArrivesOnTheContextsThread() {
        ThreadPoolExecutor executor;
        QObject context;
        QThread* workedOn = nullptr;
        QThread* deliveredOn = nullptr;
        int result = 0;
        runInBackground(
            executor, &context,
            [&] {
                workedOn = QThread::currentThread();
                return 6 * 7;
            },
            [&](int value) {
                deliveredOn = QThread::currentThread();
                result = value;
            });
        QTRY_COMPARE(result, 42);
        QVERIFY(workedOn != QThread::currentThread());
        QCOMPARE(deliveredOn, QThread::currentThread());
    }

    void resultIsDroppedWhenTheContextIsGone() {
        ThreadPoolExecutor executor;
        auto context = std::make_unique<QObject>();
        QSemaphore started;
        QSemaphore release;
        bool delivered = false;
        runInBackground(
            executor, context.get(),
            [&] {
                started.release();
                release.acquire();
                return true;
            },
            [&](bool) { delivered = true; });
        started.acquire();
        context.reset();
        release.release();
        // One background thread runs jobs in order, so once a later job's result is in, the
        // earlier one's queued call has been delivered or dropped.
        QObject live;
        bool later = false;
        runInBackground(
            executor, &live, [] { return true; }, [&](bool) { later = true; });
        QTRY_VERIFY(later);
        QVERIFY(!delivered);
    }
};

QTEST_GUILESS_MAIN(TestExecutor)
#include "tst_executor.moc"
