#include "fakes/ManualClock.h"

#include <QTest>

using namespace vantle;
using std::chrono::seconds;

// Every timed test relies on this clock firing in time order and honouring cancellation.
class TestManualClock : public QObject {
    Q_OBJECT

private slots:
    void firesDueTimersInTimeOrderWithTheirOwnNow() {
        ManualClock clock;
        const QDateTime start = clock.now();
        QStringList fired;
        QList<QDateTime> seenAt;
        Timer inner;
        Timer every30 = clock.repeating(seconds(30), [&] {
            fired << QStringLiteral("repeat");
            seenAt << clock.now();
        });
        // A timer started by a callback counts from that moment: 45 + 40 s.
        Timer once = clock.singleShot(seconds(45), [&] {
            fired << QStringLiteral("once");
            inner = clock.singleShot(seconds(40), [&] { fired << QStringLiteral("inner"); });
        });
        clock.advance(seconds(100));
        QCOMPARE(fired, QStringList({QStringLiteral("repeat"), QStringLiteral("once"),
                                     QStringLiteral("repeat"), QStringLiteral("inner"),
                                     QStringLiteral("repeat")}));
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
            fired << QStringLiteral("repeat");
            seenAt << clock.now();
            later.reset();
        });
        later = clock.singleShot(seconds(50), [&] { fired << QStringLiteral("later"); });
        Timer beyond = clock.singleShot(seconds(700), [&] { fired << QStringLiteral("beyond"); });
        clock.jump(seconds(600));
        QCOMPARE(fired, QStringList({QStringLiteral("repeat")}));
        QCOMPARE(seenAt, QList<QDateTime>({start.addSecs(600)}));
        QCOMPARE(clock.monotonicNow(), std::chrono::milliseconds(600'000));
        clock.advance(seconds(100));
        QCOMPARE(fired, QStringList({QStringLiteral("repeat"), QStringLiteral("repeat"),
                                     QStringLiteral("repeat"), QStringLiteral("repeat"),
                                     QStringLiteral("beyond")}));
        QCOMPARE(seenAt.at(1), start.addSecs(630));
    }
};

QTEST_GUILESS_MAIN(TestManualClock)
#include "tst_manualclock.moc"
