#include "fakes/FakeAlerts.h"
#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeCountdownPresenter.h"
#include "fakes/FakeNotificationCenter.h"
#include "fakes/FakePowerActions.h"
#include "fakes/FakePowerAssertion.h"
#include "fakes/FakeScriptRunner.h"
#include "fakes/InlineExecutor.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "fakes/Schedules.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "schedule/PmsetSync.h"
#include "schedule/PowerActionPerformer.h"
#include "schedule/PowerActionScripts.h"
#include "schedule/PrivilegedRunner.h"
#include "schedule/ScheduleMonitorService.h"
#include "schedule/ScheduleWarningService.h"
#include "system/NotificationAuthority.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>
#include <QTimeZone>
#include <memory>

using namespace vantle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using std::chrono::seconds;
using Action = ShutdownSchedule::Action;
using Weekday = ShutdownSchedule::Weekday;

namespace {
QDateTime berlin(int month, int day, int hour, int minute, int second = 0) {
    return QDateTime(QDate(2026, month, day), QTime(hour, minute, second),
                     QTimeZone("Europe/Berlin"));
}

// The schedule monitor from a stored schedules document (or none) through the whole start path:
// settings, monitor and power sync.
struct Rig {
    Rig(const QDateTime& start, const QList<ShutdownSchedule>& schedules)
        : Rig(start, QByteArray()) {
        settings->setShutdownSchedules(schedules);
    }
    Rig(const QDateTime& start, const QByteArray& stored)
        : clock(start) {
        if (!stored.isNull()) {
            store.values.insert(u"shutdownSchedules"_s, stored);
        }
        store.setObject(u"didAdoptPmsetEntries"_s, true);
        settings =
            std::make_unique<AppSettings>(store, bundle, clock, ProductTexts::linuxDesktop());
        service.setSettings(settings.get());
        service.setPmsetSync(&sync);
        service.onScheduledAction = [this](const ShutdownSchedule& due) { fired.append(due); };
        service.start();
    }

    LogCapture log;
    ManualClock clock;
    MemoryDefaultsStore store;
    FakeBundleInfo bundle;
    std::unique_ptr<AppSettings> settings;
    InlineExecutor executor;
    FakeScriptRunner scripts;
    FakeAlerts alerts;
    PrivilegedRunner runner{scripts, alerts, PowerSchedulerTool::linuxTool(u"/usr/libexec"_s),
                            ProductTexts::linuxDesktop(), u"ada"_s};
    PmsetSync sync{clock, executor, scripts, runner, store};
    FakePowerAssertion assertion;
    ScheduleMonitorService service{clock, assertion};
    QList<ShutdownSchedule> fired;
};

// A step is seconds to advance (int), a wall-clock jump (QDateTime) or a suspend gap (Gap).
using Steps = QVariantList;
struct Gap {
    int seconds = 0;
};
QVariant gap(int seconds) {
    return QVariant::fromValue(Gap{seconds});
}

// Numbers a damaged or hand-edited file may hold where an hour or a minute belongs. JSON numbers
// are doubles, so the extremes are the largest whole values a double keeps below 2^63.
const QList<double> kExtremes{
    -9.2233720368547748e18, -1e18, -5, -1, 0, 23, 24, 59, 60, 99, 1439, 1e9, 1e18,
    9.2233720368547748e18,
};

// The warning before a scheduled action, over a fake notification centre and panel.
struct WarningRig {
    FakeNotificationCenter center;
    NotificationAuthority authority{center};
    ManualClock clock;
    MemoryDefaultsStore defaults;
    FakeBundleInfo bundle;
    AppSettings settings{defaults, bundle, clock, ProductTexts::macOS()};
    FakeCountdownPresenter* presenter = new FakeCountdownPresenter;
    ScheduleWarningService service{center, authority, clock,
                                   std::unique_ptr<CountdownPresenter>(presenter)};
    QList<Action> proceeded;
    // Whether the panel was already gone when the action ran.
    QList<bool> panelClosedFirst;

    explicit WarningRig(const QString& style = u"notification"_s,
                        AuthorizationStatus status = AuthorizationStatus::authorized) {
        settings.setScheduleWarningStyle(style);
        settings.setScheduleWarningSeconds(60);
        service.setSettings(&settings);
        center.status = status;
        authority.refresh();
        service.onProceed = [this](Action action) {
            proceeded << action;
            panelClosedFirst << !presenter->open;
        };
    }
};
} // namespace

Q_DECLARE_METATYPE(Gap)

// When a schedule fires, the warning before it, and what its action does; random and extreme
// stored schedules through the whole start path (settings, schedule monitor, power sync), built
// with the sanitizers, so an overflow or a bad conversion anywhere on the way fails.
class TestSchedule : public QObject {
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
        QCOMPARE(rig.fired, QList<ShutdownSchedule>(fires, entry));
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
        QCOMPARE(rig.fired, QList<ShutdownSchedule>({first, second}));
        QCOMPARE(rig.service.lastFiredIDs(), QSet<QUuid>({first.id, second.id, wake.id}));

        rig.settings->setShutdownSchedules({first, wake});
        rig.clock.advance(30s);
        QCOMPARE(rig.service.lastFiredIDs(), QSet<QUuid>({first.id, wake.id}));
        rig.clock.advance(90s); // 22:02:10
        QVERIFY(rig.service.lastFiredIDs().isEmpty());
        QCOMPARE(rig.fired.size(), 2);

        // Moved to a later minute the same evening, it is a new window.
        auto moved = first;
        moved.minute = 5;
        rig.settings->setShutdownSchedules({moved});
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
        rig.settings.reset();
        rig.clock.advance(30s);
        QCOMPARE(rig.assertion.released, 2);
    }

    // Each action's macOS script and the one platform call it makes; wake and power on do nothing.
    void eachActionDoesExactlyItsOwnThing_data() {
        QTest::addColumn<Action>("action");
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("calls");
        const QString tell = u"tell application \"System Events\" to "_s;
        QTest::newRow("sleep") << Action::sleep << tell + u"sleep"_s << QStringList{u"sleep"_s};
        QTest::newRow("shut down")
            << Action::shutdown << tell + u"shut down"_s << QStringList{u"shutDown"_s};
        QTest::newRow("restart") << Action::restart << tell + u"restart"_s
                                 << QStringList{u"restart"_s};
        QTest::newRow("wake") << Action::wake << QString() << QStringList();
        QTest::newRow("power on") << Action::poweron << QString() << QStringList();
    }
    void eachActionDoesExactlyItsOwnThing() {
        QFETCH(Action, action);
        QFETCH(QString, script);
        QFETCH(QStringList, calls);
        QCOMPARE(powerActionScript(action).value_or(QString()), script);
        FakePowerActions actions;
        performPowerAction(action, actions);
        QCOMPARE(actions.calls, calls);
    }

    // Every run must go on, fire only valid schedules, hand only valid times to the scheduler, and
    // leave the stored document exactly as it was.
    void randomAndExtremeValuesNeverStopTheStart() {
        QRandomGenerator random(20261116);
        const QStringList actions{u"Sleep"_s, u"Wake"_s, u"Shut Down"_s, u"Restart"_s,
                                  u"Power On"_s};
        const QTimeZone berlin("Europe/Berlin");
        const auto number = [&random](int inRange) {
            return random.bounded(3) == 0 ? kExtremes[random.bounded(kExtremes.size())]
                                          : double(random.bounded(inRange));
        };
        for (int run = 0; run < 1500; ++run) {
            QJsonArray elements;
            const int count = random.bounded(5);
            for (int i = 0; i < count; ++i) {
                QJsonArray days;
                for (int d = random.bounded(4); d > 0; --d) {
                    days.append(1 + random.bounded(7));
                }
                // Small id space: repeated ids come up often.
                const QString id = u"%1-0000-4000-8000-000000000000"_s.arg(random.bounded(4u), 8,
                                                                           16, QLatin1Char('0'));
                elements.append(QJsonObject{{u"id"_s, id},
                                            {u"isEnabled"_s, random.bounded(4) != 0},
                                            {u"action"_s, actions[random.bounded(actions.size())]},
                                            {u"days"_s, days},
                                            {u"hour"_s, number(24)},
                                            {u"minute"_s, number(60)}});
            }
            const QByteArray stored = QJsonDocument(elements).toJson(QJsonDocument::Compact);
            // Any minute of a week that includes the end of summer time in Berlin.
            const QDateTime start =
                QDateTime(QDate(2026, 10, 22), QTime(0, 0), berlin)
                    .addSecs(qint64(random.bounded(7 * 24 * 60)) * 60 + random.bounded(60));

            Rig path(start, stored);
            path.service.syncPmset();
            path.clock.advance(std::chrono::seconds(30 + random.bounded(120)));
            path.service.syncPmset();

            for (const ShutdownSchedule& schedule : std::as_const(path.fired)) {
                QVERIFY2(!schedule.problem(), stored.constData());
            }
            for (const QString& script : std::as_const(path.scripts.administratorRuns)) {
                // Only times of day a valid schedule can name reach the scheduler.
                static const QRegularExpression time(u"'\\d\\d/\\d\\d/\\d\\d "
                                                     u"([01]\\d|2[0-3]):[0-5]\\d:00'"_s);
                QVERIFY2(script.count(time) == script.count(QLatin1Char('\'')) / 2,
                         qPrintable(script));
            }
            QCOMPARE(path.store.values.value(u"shutdownSchedules"_s), DefaultsValue(stored));
            QVERIFY(path.service.lastFiredIDs().size() <= count);
        }
    }

    void addsItsCategoryToTheOthersOnTheNextTurn() {
        WarningRig rig;
        const NotificationCategory other{u"Vantle.autoQuit"_s, {{u"a"_s, u"A"_s}}};
        rig.center.categoryList = {other};
        rig.service.registerCategory();
        QCOMPARE(rig.center.categoryList.size(), 1);
        rig.clock.advance(seconds(0));
        rig.service.registerCategory();
        rig.clock.advance(seconds(0));
        const NotificationCategory mine{u"Vantle.schedule"_s,
                                        {{u"Vantle.schedule.now"_s, u"Do It Now"_s},
                                         {u"Vantle.schedule.cancel"_s, u"Cancel"_s}}};
        QCOMPARE(rig.center.categoryList, (QList<NotificationCategory>{other, mine}));
    }

    // Without a settings store the defaults apply: a notification and a minute.
    void notificationIsRefreshedThenTheActionRuns_data() {
        QTest::addColumn<bool>("withSettings");
        QTest::newRow("settings") << true;
        QTest::newRow("no settings") << false;
    }
    void notificationIsRefreshedThenTheActionRuns() {
        QFETCH(bool, withSettings);
        WarningRig rig;
        rig.settings.setScheduleWarningSeconds(60.9); // counted in whole seconds
        if (!withSettings) {
            rig.service.setSettings(nullptr);
        }
        rig.service.warn(Action::sleep);
        QCOMPARE(rig.presenter->shows, 0);
        rig.clock.advance(seconds(59));
        QVERIFY(rig.proceeded.isEmpty());
        QVERIFY(rig.center.removed.isEmpty());
        rig.clock.advance(seconds(1));
        QCOMPARE(rig.proceeded, QList<Action>{Action::sleep});
        // The titles are the panel's too, and are checked there.
        QList<NotificationRequest> expected;
        for (int left : {60, 50, 40, 30, 20, 10, 5, 4, 3, 2, 1, 0}) {
            expected << NotificationRequest{u"Vantle.schedule.warning"_s, u"Going to Sleep"_s,
                                            u"In %1s. Cancel to skip this one."_s.arg(left),
                                            u"Vantle.schedule"_s, InterruptionLevel::timeSensitive};
        }
        QCOMPARE(rig.center.posted, expected);
        QCOMPARE(rig.center.removed, QStringList{u"Vantle.schedule.warning"_s});
        QVERIFY(!rig.service.isWarning());
        QCOMPARE(rig.clock.pendingTimerCount(), 0u);
    }

    // Two schedules due at once: the first warning runs to its end, the second is lost.
    void aSecondRequestIsDroppedWhileOneRuns() {
        WarningRig rig;
        rig.service.warn(Action::sleep);
        rig.clock.advance(seconds(15));
        rig.service.warn(Action::shutdown);
        QCOMPARE(rig.service.state().secondsLeft(), 45);
        QCOMPARE(rig.center.posted.last().title, u"Going to Sleep"_s);
        rig.clock.advance(seconds(45));
        QCOMPARE(rig.proceeded, QList<Action>{Action::sleep});

        // The next occurrence warns again.
        rig.service.warn(Action::shutdown);
        QCOMPARE(rig.service.state().secondsLeft(), 60);
        QCOMPARE(rig.center.posted.last().title, u"Shutting Down"_s);
    }

    void responsesEndTheWarning_data() {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("ends");
        QTest::addColumn<bool>("proceeds");
        QTest::newRow("do it now") << u"Vantle.schedule.now"_s << true << true;
        QTest::newRow("cancel") << u"Vantle.schedule.cancel"_s << true << false;
        QTest::newRow("body click")
            << NotificationCenter::kDefaultActionIdentifier << false << false;
        QTest::newRow("auto-quit's") << u"Vantle.autoQuit.cancel"_s << false << false;
    }
    void responsesEndTheWarning() {
        QFETCH(QString, identifier);
        QFETCH(bool, ends);
        QFETCH(bool, proceeds);
        WarningRig rig;
        rig.service.finish(false); // idle: nothing to end
        rig.service.handleNotificationAction(identifier);
        QVERIFY(rig.proceeded.isEmpty());

        rig.service.warn(Action::sleep);
        rig.clock.advance(seconds(5));
        rig.service.handleNotificationAction(identifier);
        QCOMPARE(rig.service.isWarning(), !ends);
        QCOMPARE(rig.proceeded, proceeds ? QList<Action>{Action::sleep} : QList<Action>{});
        rig.clock.advance(seconds(55));
        // Skipped stays skipped; an ignored response leaves the countdown to run out.
        QCOMPARE(rig.proceeded.size(), ends && !proceeds ? 0 : 1);
    }

    // Without permission to notify, the panel carries the warning.
    void panelForWindowStyleAndWhenNotificationsAreDenied_data() { addPanelFallbackRows(); }
    void panelForWindowStyleAndWhenNotificationsAreDenied() {
        QFETCH(QString, style);
        QFETCH(AuthorizationStatus, status);
        WarningRig rig(style, status);
        rig.settings.setScheduleWarningSeconds(10);
        rig.service.warn(Action::shutdown);
        QVERIFY(rig.presenter->open);
        rig.presenter->cancel();
        QVERIFY(!rig.presenter->open);
        QVERIFY(!rig.service.isWarning());

        rig.service.warn(Action::sleep);
        rig.presenter->confirm();
        rig.service.warn(Action::restart);
        rig.clock.advance(seconds(9));
        QCOMPARE(rig.service.state().secondsLeft(), 1);
        QVERIFY(rig.presenter->open);
        rig.clock.advance(seconds(1));
        QCOMPARE(rig.proceeded, (QList<Action>{Action::sleep, Action::restart}));
        QCOMPARE(rig.panelClosedFirst, (QList<bool>{true, true}));
        QCOMPARE(rig.presenter->shows, 3);
        QVERIFY(rig.center.posted.isEmpty());
    }

    void neverProceedsAtOnce() {
        WarningRig rig(u"never"_s);
        rig.service.warn(Action::shutdown);
        QCOMPARE(rig.proceeded, QList<Action>{Action::shutdown});
        QCOMPARE(rig.clock.pendingTimerCount(), 0u);
        QVERIFY(rig.center.posted.isEmpty());
        QCOMPARE(rig.presenter->shows, 0);
        QVERIFY(!rig.service.isWarning());
    }
};

QTEST_GUILESS_MAIN(TestSchedule)
#include "tst_schedule.moc"
