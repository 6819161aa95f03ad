#include "fakes/FakeBundleInfo.h"
#include "fakes/FakePowerAssertion.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "fakes/Schedules.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "schedule/ScheduleMonitorService.h"

#include <QTest>
#include <QTimeZone>
#include <memory>

using namespace vantle;
using namespace std::chrono_literals;
using Action = ShutdownSchedule::Action;
using Weekday = ShutdownSchedule::Weekday;

namespace {
// 2026-11-16 is a Monday.
QDateTime monday(int hour, int minute, int second = 0) {
    return QDateTime(QDate(2026, 11, 16), QTime(hour, minute, second));
}
QDateTime berlin(int month, int day, int hour, int minute, int second = 0) {
    return QDateTime(QDate(2026, month, day), QTime(hour, minute, second),
                     QTimeZone("Europe/Berlin"));
}

struct Rig {
    explicit Rig(const QDateTime& start, QList<ShutdownSchedule> schedules)
        : clock(start) {
        settings.setShutdownSchedules(std::move(schedules));
        service.setSettings(&settings);
        service.onScheduledAction = [this](const ShutdownSchedule& due) {
            fired.append(due.action);
            firedIDs.append(due.id);
        };
        service.start();
    }
    ManualClock clock;
    MemoryDefaultsStore store;
    FakeBundleInfo bundle;
    AppSettings settings{store, bundle, clock, ProductTexts::macOS()};
    FakePowerAssertion assertion;
    ScheduleMonitorService service{clock, assertion};
    QList<Action> fired;
    QList<QUuid> firedIDs;
};

// A step is seconds to advance (int), a wall-clock jump (QDateTime) or a suspend gap (Gap).
using Steps = QVariantList;
struct Gap {
    int seconds = 0;
};
QVariant gap(int seconds) {
    return QVariant::fromValue(Gap{seconds});
}
} // namespace

Q_DECLARE_METATYPE(Gap)

class TestScheduleMonitorService : public QObject {
    Q_OBJECT

private slots:
    void firesOnceInItsWindowThroughClockChanges_data() {
        QTest::addColumn<ShutdownSchedule>("entry");
        QTest::addColumn<QDateTime>("start");
        QTest::addColumn<Steps>("steps");
        QTest::addColumn<int>("fires");

        const auto sleep22 = schedule(Action::sleep, {Weekday::monday, Weekday::tuesday}, 22, 0);
        QTest::newRow("its minute, its day") << sleep22 << monday(21, 59, 40) << Steps{300} << 1;
        QTest::newRow("other days") << schedule(Action::sleep, {Weekday::sunday}, 22, 0)
                                    << monday(21, 59, 40) << Steps{300} << 0;
        QTest::newRow("disabled") << schedule(Action::shutdown, {Weekday::monday}, 22, 0, false)
                                  << monday(21, 59, 40) << Steps{300} << 0;
        QTest::newRow("second minute of the window")
            << sleep22 << monday(22, 1, 0) << Steps{60} << 1;
        QTest::newRow("after the window") << sleep22 << monday(22, 1, 40) << Steps{60} << 0;
        QTest::newRow("23:59 first seen at 00:00")
            << schedule(Action::sleep, {Weekday::monday}, 23, 59) << monday(23, 59, 50)
            << Steps{120} << 0;
        QTest::newRow("set back inside the window")
            << sleep22 << monday(21, 59, 40) << Steps{30, monday(22, 0, 0), 120} << 1;
        QTest::newRow("set back out of the window and on through it again")
            << sleep22 << monday(21, 59, 40) << Steps{150, monday(21, 58, 0), 300} << 1;
        QTest::newRow("set forward into the window")
            << sleep22 << monday(20, 0) << Steps{10, monday(22, 1, 20), 30} << 1;
        QTest::newRow("set forward past the window")
            << sleep22 << monday(21, 59, 0) << Steps{10, monday(22, 2, 0), 300} << 0;
        QTest::newRow("suspended into the window")
            << sleep22 << monday(21, 50) << Steps{gap(610), 120} << 1;
        QTest::newRow("suspended across the whole window")
            << sleep22 << monday(21, 59, 40) << Steps{gap(600), 300} << 0;
        QTest::newRow("woken a day later, after the window")
            << sleep22 << monday(21, 0) << Steps{10, monday(22, 5).addDays(1), 300} << 0;
        QTest::newRow("set back across midnight")
            << schedule(Action::shutdown, {Weekday::tuesday}, 0, 0) << monday(23, 59, 50)
            << Steps{30, monday(23, 59, 30), 180} << 1;
        // Berlin: 2026-10-25 03:00 CEST becomes 02:00 CET, so 02:30 comes round twice.
        QTest::newRow("repeated hour at the end of summer time")
            << schedule(Action::sleep, {Weekday::sunday}, 2, 30) << berlin(10, 25, 1, 59, 50)
            << Steps{2 * 3600} << 1;
        // 2026-03-29 02:00 CET becomes 03:00 CEST: 02:30 never happens, 03:00 does.
        QTest::newRow("skipped hour at the start of summer time")
            << schedule(Action::sleep, {Weekday::sunday}, 2, 30) << berlin(3, 29, 1, 59, 50)
            << Steps{3600} << 0;
        QTest::newRow("first minute after the skipped hour")
            << schedule(Action::sleep, {Weekday::sunday}, 3, 0) << berlin(3, 29, 1, 59, 50)
            << Steps{3600} << 1;
    }
    void firesOnceInItsWindowThroughClockChanges() {
        QFETCH(ShutdownSchedule, entry);
        QFETCH(QDateTime, start);
        QFETCH(Steps, steps);
        QFETCH(int, fires);

        Rig rig(start, {entry});
        for (const QVariant& step : steps) {
            if (step.typeId() == QMetaType::QDateTime) {
                rig.clock.setNow(step.toDateTime());
            } else if (step.metaType() == QMetaType::fromType<Gap>()) {
                rig.clock.jump(std::chrono::seconds(step.value<Gap>().seconds));
            } else {
                rig.clock.advance(std::chrono::seconds(step.toInt()));
            }
        }
        QCOMPARE(rig.fired, QList<Action>(fires, entry.action));
    }

    void windowBookkeeping() {
        const auto first = schedule(Action::sleep, {Weekday::monday}, 22, 0);
        const auto second = schedule(Action::shutdown, {Weekday::monday}, 22, 0);
        const auto wake = schedule(Action::wake, {Weekday::monday}, 22, 0);
        Rig rig(monday(21, 59, 40), {first, wake, second});
        QCOMPARE(rig.clock.nextTimerTolerance(), std::optional<Milliseconds>(5s));

        rig.clock.advance(29s);
        QVERIFY(rig.fired.isEmpty()); // nothing runs before the first interval
        rig.clock.advance(1s);
        // Both due in one minute, in list order; the wake is only marked.
        QCOMPARE(rig.fired, QList<Action>({Action::sleep, Action::shutdown}));
        QCOMPARE(rig.firedIDs, QList<QUuid>({first.id, second.id}));
        QCOMPARE(rig.service.lastFiredIDs(), QSet<QUuid>({first.id, second.id, wake.id}));

        rig.settings.setShutdownSchedules({first, wake});
        rig.clock.advance(30s);
        QCOMPARE(rig.service.lastFiredIDs(), QSet<QUuid>({first.id, wake.id}));
        rig.clock.advance(90s); // 22:02:10
        QVERIFY(rig.service.lastFiredIDs().isEmpty());
        QCOMPARE(rig.fired.size(), 2);

        // Moved to a later minute the same evening, it is a new window.
        auto moved = first;
        moved.minute = 5;
        rig.settings.setShutdownSchedules({moved});
        rig.clock.advance(3min);
        QCOMPARE(rig.fired.size(), 3);
    }

    void awakeNeed_data() {
        QTest::addColumn<ShutdownSchedule>("entry");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<bool>("needed");

        const auto at10 = schedule(Action::sleep, {Weekday::monday}, 10, 0);
        QTest::newRow("six minutes early") << at10 << monday(9, 54, 59) << false;
        QTest::newRow("five minutes early") << at10 << monday(9, 55) << true;
        QTest::newRow("one minute late") << at10 << monday(10, 1, 59) << true;
        QTest::newRow("two minutes late") << at10 << monday(10, 2) << false;
        QTest::newRow("disabled") << schedule(Action::sleep, {Weekday::monday}, 10, 0, false)
                                  << monday(10, 0) << false;
        QTest::newRow("wake never holds")
            << schedule(Action::wake, {Weekday::monday}, 10, 0) << monday(10, 0) << false;
        QTest::newRow("not today")
            << schedule(Action::sleep, {Weekday::tuesday}, 10, 0) << monday(10, 0) << false;
        const auto tuesday3 = schedule(Action::shutdown, {Weekday::tuesday}, 0, 3);
        QTest::newRow("past midnight, 4 minutes") << tuesday3 << monday(23, 59) << true;
        QTest::newRow("past midnight, 6 minutes") << tuesday3 << monday(23, 57) << false;
        QTest::newRow("Saturday night into Sunday")
            << schedule(Action::sleep, {Weekday::sunday}, 0, 1) << monday(23, 58).addDays(5)
            << true;
    }
    void awakeNeed() {
        QFETCH(ShutdownSchedule, entry);
        QFETCH(QDateTime, now);
        QFETCH(bool, needed);
        QCOMPARE(ScheduleMonitorService::needsAwake({entry}, now), needed);
    }

    void holdsAwakeExactlyWhileNeeded() {
        Rig rig(monday(9, 50), {schedule(Action::sleep, {Weekday::monday}, 10, 0)});
        rig.clock.advance(5min); // last tick 09:55:00
        QCOMPARE(rig.assertion.acquired, 1);
        QCOMPARE(rig.assertion.reason, QStringLiteral("Vantle: scheduled action due"));
        rig.clock.advance(390s); // 10:01:30
        QVERIFY(rig.assertion.held);
        QCOMPARE(rig.assertion.acquired, 1);
        rig.clock.advance(30s); // 10:02:00
        QCOMPARE(rig.assertion.released, 1);
        QVERIFY(!rig.service.isHoldingAwake());

        // A refused hold is retried at the next tick.
        rig.clock.setNow(monday(9, 56).addDays(7));
        rig.assertion.fail = true;
        rig.clock.advance(30s);
        QVERIFY(!rig.service.isHoldingAwake());
        rig.assertion.fail = false;
        rig.clock.advance(30s);
        QCOMPARE(rig.assertion.acquired, 2);

        // Without settings the hold goes at once.
        auto settings =
            std::make_unique<AppSettings>(rig.store, rig.bundle, rig.clock, ProductTexts::macOS());
        rig.service.setSettings(settings.get());
        settings.reset();
        rig.clock.advance(30s);
        QCOMPARE(rig.assertion.released, 2);
    }
};

QTEST_GUILESS_MAIN(TestScheduleMonitorService)
#include "tst_schedulemonitorservice.moc"
