#include "fakes/ManualClock.h"
#include "platform/SystemClock.h"

#include <QTest>

using namespace vantle;
using namespace std::chrono_literals;
using std::chrono::seconds;
using namespace Qt::StringLiterals;

// The real clock (where tolerant timers land, and that they keep running) and the manual one every
// timed test relies on (firing in time order, honouring cancellation).
class TestSystemClock : public QObject {
    Q_OBJECT

private slots:
    // The idle sample, the auto-quit pass and the schedule tick start a few milliseconds apart at
    // launch; a grid of whole seconds no coarser than the tolerance lets their first runs fall
    // together, never later than asked.
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
    void firesDueTimersInTimeOrderWithTheirOwnNow() {
        ManualClock clock;
        const QDateTime start = clock.now();
        QStringList fired;
        QList<QDateTime> seenAt;
        Timer inner;
        Timer every30 = clock.repeating(seconds(30), [&] {
            fired << u"repeat"_s;
            seenAt << clock.now();
        });
        // A timer started by a callback counts from that moment: 45 + 40 s.
        Timer once = clock.singleShot(seconds(45), [&] {
            fired << u"once"_s;
            inner = clock.singleShot(seconds(40), [&] { fired << u"inner"_s; });
        });
        clock.advance(seconds(100));
        QCOMPARE(fired,
                 QStringList({u"repeat"_s, u"once"_s, u"repeat"_s, u"inner"_s, u"repeat"_s}));
        QCOMPARE(seenAt,
                 QList<QDateTime>({start.addSecs(30), start.addSecs(60), start.addSecs(90)}));
        QCOMPARE(clock.now(), start.addSecs(100));
        QCOMPARE(clock.monotonicNow(), std::chrono::milliseconds(100'000));
    }

    void destroyingAHandleCancelsEvenFromInsideACallback() {
        ManualClock clock;
        int count = 0;
        Timer timer;
        timer = clock.repeating(seconds(1), [&] {
            if (++count == 3) {
                timer.reset();
            }
        });
        Timer other = clock.singleShot(seconds(10), [&] { count += 100; });
        other.reset();
        clock.advance(seconds(20));
        QCOMPARE(count, 3);
        QCOMPARE(clock.pendingTimerCount(), std::size_t(0));
    }

    // A suspend gap fires what fell due once, at the time after the gap, and a repeating timer
    // carries on one interval from there; a timer a callback cancels does not run.
    void suspendGapFiresOverdueTimersOnce() {
        ManualClock clock;
        const QDateTime start = clock.now();
        QStringList fired;
        QList<QDateTime> seenAt;
        Timer later;
        Timer every30 = clock.repeating(seconds(30), [&] {
            fired << u"repeat"_s;
            seenAt << clock.now();
            later.reset();
        });
        later = clock.singleShot(seconds(50), [&] { fired << u"later"_s; });
        Timer beyond = clock.singleShot(seconds(700), [&] { fired << u"beyond"_s; });
        clock.jump(seconds(600));
        QCOMPARE(fired, QStringList({u"repeat"_s}));
        QCOMPARE(seenAt, QList<QDateTime>({start.addSecs(600)}));
        QCOMPARE(clock.monotonicNow(), std::chrono::milliseconds(600'000));
        clock.advance(seconds(100));
        QCOMPARE(fired,
                 QStringList({u"repeat"_s, u"repeat"_s, u"repeat"_s, u"repeat"_s, u"beyond"_s}));
        QCOMPARE(seenAt.at(1), start.addSecs(630));
    }
};

QTEST_GUILESS_MAIN(TestSystemClock)
#include "tst_systemclock.moc"
