#include "platform/SystemClock.h"

#include <QTest>
#include <random>

using namespace vantle;
using namespace std::chrono_literals;

// The real clock: where tolerant timers land, and that they keep running.
class TestSystemClock : public QObject {
    Q_OBJECT

private slots:
    void alignedDelay_data() {
        QTest::addColumn<qint64>("now");
        QTest::addColumn<qint64>("interval");
        QTest::addColumn<qint64>("tolerance");
        QTest::addColumn<qint64>("delay");
        QTest::newRow("due on a grid point") << 100'000LL << 30'000LL << 5'000LL << 30'000LL;
        QTest::newRow("between grid points") << 102'500LL << 30'000LL << 5'000LL << 27'500LL;
        QTest::newRow("grid of whole seconds") << 100'000LL << 30'000LL << 4'999LL << 28'000LL;
        QTest::newRow("grid of 7 s") << 0LL << 60'000LL << 7'500LL << 56'000LL;
        QTest::newRow("under a second: as asked") << 102'500LL << 30'000LL << 900LL << 30'000LL;
        QTest::newRow("tolerance of the whole interval: as asked")
            << 102'500LL << 5'000LL << 5'000LL << 5'000LL;
    }
    void alignedDelay() {
        QFETCH(qint64, now);
        QFETCH(qint64, interval);
        QFETCH(qint64, tolerance);
        QFETCH(qint64, delay);
        QCOMPARE(SystemClock::alignedDelay(Milliseconds(now), Milliseconds(interval),
                                           Milliseconds(tolerance))
                     .count(),
                 delay);
    }

    // The idle sample, the auto-quit pass and the schedule tick start a few milliseconds apart
    // at launch; their first runs must fall together, and never outside what each allows.
    void timersStartedTogetherRunTogether() {
        std::mt19937_64 random(20261123);
        std::uniform_int_distribution<qint64> start(0, 1'000'000'000);
        for (int round = 0; round < 1000; ++round) {
            const Milliseconds now(start(random));
            const Milliseconds idle = now + SystemClock::alignedDelay(now, 30s, 5s);
            const Milliseconds pass = now + 3ms + SystemClock::alignedDelay(now + 3ms, 60s, 5s);
            const Milliseconds tick = now + 7ms + SystemClock::alignedDelay(now + 7ms, 30s, 5s);
            QVERIFY(idle >= now + 25s && idle <= now + 30s);
            QVERIFY(pass >= now + 3ms + 55s && pass <= now + 3ms + 60s);
            // Apart only when a grid point falls between the starts: 7 ms in 5 s.
            if ((now + 7ms) / 5s == now / 5s) {
                QCOMPARE(tick.count(), idle.count());
                QCOMPARE(((pass - idle) % 30s).count(), 0);
            }
        }
    }

    void tolerantTimersKeepRunningAndCanBeCancelledFromTheirCallback() {
        SystemClock clock;
        int repeats = 0;
        Timer repeating = clock.repeating(
            20ms, [&repeats] { ++repeats; }, 10ms);
        int once = 0;
        Timer single;
        single = clock.singleShot(
            10ms,
            [&] {
                ++once;
                single.reset();
            },
            5ms);
        QTRY_VERIFY_WITH_TIMEOUT(repeats >= 3, 10'000);
        QCOMPARE(once, 1);
        QVERIFY(!single);
    }
};

QTEST_GUILESS_MAIN(TestSystemClock)
#include "tst_systemclock.moc"
