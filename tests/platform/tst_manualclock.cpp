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
};

QTEST_GUILESS_MAIN(TestManualClock)
#include "tst_manualclock.moc"
