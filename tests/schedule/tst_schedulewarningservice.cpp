#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeCountdownPresenter.h"
#include "fakes/FakeNotificationCenter.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "schedule/ScheduleWarningService.h"
#include "system/NotificationAuthority.h"

#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;
using std::chrono::seconds;
using Action = ShutdownSchedule::Action;

class TestScheduleWarningService : public QObject {
    Q_OBJECT

    struct Rig {
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

        explicit Rig(const QString& style = u"notification"_s,
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
        QStringList bodies() const {
            QStringList result;
            for (const NotificationRequest& request : center.posted) {
                result << request.body;
            }
            return result;
        }
    };

private slots:
    void addsItsCategoryToTheOthersOnTheNextTurn() {
        Rig rig;
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
        Rig rig;
        rig.settings.setScheduleWarningSeconds(60.9); // counted in whole seconds
        if (!withSettings) {
            rig.service.setSettings(nullptr);
        }
        rig.service.warn(Action::sleep);
        // The titles are the panel's too, and are checked there.
        QCOMPARE(rig.center.posted.first(),
                 (NotificationRequest{u"Vantle.schedule.warning"_s, u"Going to Sleep"_s,
                                      u"In 60s. Cancel to skip this one."_s, u"Vantle.schedule"_s,
                                      InterruptionLevel::timeSensitive}));
        QCOMPARE(rig.presenter->shows, 0);
        rig.clock.advance(seconds(59));
        QVERIFY(rig.proceeded.isEmpty());
        QVERIFY(rig.center.removed.isEmpty());
        rig.clock.advance(seconds(1));
        QCOMPARE(rig.proceeded, QList<Action>{Action::sleep});
        QStringList expected;
        for (int left : {60, 50, 40, 30, 20, 10, 5, 4, 3, 2, 1, 0}) {
            expected << u"In %1s. Cancel to skip this one."_s.arg(left);
        }
        QCOMPARE(rig.bodies(), expected);
        QCOMPARE(rig.center.removed, QStringList{u"Vantle.schedule.warning"_s});
        QVERIFY(!rig.service.isWarning());
        QCOMPARE(rig.clock.pendingTimerCount(), 0u);
    }

    // Two schedules due at once: the first warning runs to its end, the second is lost.
    void aSecondRequestIsDroppedWhileOneRuns() {
        Rig rig;
        rig.service.warn(Action::sleep);
        rig.clock.advance(seconds(15));
        rig.service.warn(Action::shutdown);
        QCOMPARE(rig.service.state().action(), Action::sleep);
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
        Rig rig;
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
    void panelForWindowStyleAndWhenNotificationsAreDenied_data() {
        QTest::addColumn<QString>("style");
        QTest::addColumn<AuthorizationStatus>("status");
        QTest::newRow("window") << u"window"_s << AuthorizationStatus::authorized;
        QTest::newRow("denied") << u"notification"_s << AuthorizationStatus::denied;
        QTest::newRow("unknown style, not determined")
            << u"banner"_s << AuthorizationStatus::notDetermined;
    }
    void panelForWindowStyleAndWhenNotificationsAreDenied() {
        QFETCH(QString, style);
        QFETCH(AuthorizationStatus, status);
        Rig rig(style, status);
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
        Rig rig(u"never"_s);
        rig.service.warn(Action::shutdown);
        QCOMPARE(rig.proceeded, QList<Action>{Action::shutdown});
        QCOMPARE(rig.clock.pendingTimerCount(), 0u);
        QVERIFY(rig.center.posted.isEmpty());
        QCOMPARE(rig.presenter->shows, 0);
        QVERIFY(!rig.service.isWarning());
    }
};

QTEST_GUILESS_MAIN(TestScheduleWarningService)
#include "tst_schedulewarningservice.moc"
