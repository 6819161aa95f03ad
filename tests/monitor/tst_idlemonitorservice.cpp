#include "fakes/FakeIdleTime.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "monitor/IdleMonitorService.h"

#include <QSignalSpy>
#include <QTest>

using namespace vantle;
using namespace std::chrono_literals;

class TestIdleMonitorService : public QObject {
    Q_OBJECT

private slots:
    void samplesAtOnceThenEveryIntervalAndTakesNoReadingAsPresent() {
        FakeIdleTime idle;
        ManualClock clock;
        LogCapture log;
        IdleMonitorService monitor(idle, clock);
        QSignalSpy published(&monitor, &IdleMonitorService::systemIdleSecondsChanged);

        idle.seconds = 42;
        monitor.start(30);
        QCOMPARE(monitor.systemIdleSeconds(), 42.0);
        clock.advance(29999ms);
        QCOMPARE(idle.samples, 1);
        clock.advance(1ms);
        QCOMPARE(idle.samples, 2);
        QCOMPARE(published.count(), 2); // unchanged samples are published too

        // A second start replaces the loop rather than adding one.
        idle.seconds = 7.5;
        monitor.start(10);
        QCOMPARE(monitor.systemIdleSeconds(), 7.5);
        clock.advance(30s);
        QCOMPARE(idle.samples, 3 + 3);

        // Without a reading the user counts as present; that is logged once.
        idle.seconds = std::nullopt;
        clock.advance(10s);
        QCOMPARE(monitor.systemIdleSeconds(), 0.0);
        clock.advance(5min);
        QCOMPARE(log.count(QStringLiteral("idle time is unavailable")), 1);
    }
};

QTEST_GUILESS_MAIN(TestIdleMonitorService)
#include "tst_idlemonitorservice.moc"
