#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeCountdownPresenter.h"
#include "fakes/FakeNotificationCenter.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "monitor/QuitWarningService.h"
#include "system/NotificationAuthority.h"

#include <QTest>

using namespace vantle;
using std::chrono::seconds;
using namespace Qt::StringLiterals;

namespace {

AppInfo app(qint32 pid, const QString& name) {
    AppInfo info;
    info.id = pid;
    info.name = name;
    return info;
}

QList<qint32> pids(const QList<AppInfo>& apps) {
    QList<qint32> result;
    for (const AppInfo& a : apps) {
        result << a.id;
    }
    return result;
}

} // namespace

class TestQuitWarningService : public QObject {
    Q_OBJECT

    struct Rig {
        FakeNotificationCenter center;
        NotificationAuthority authority{center};
        ManualClock clock;
        MemoryDefaultsStore defaults;
        FakeBundleInfo bundle;
        AppSettings settings{defaults, bundle, clock, ProductTexts::macOS()};
        FakeCountdownPresenter* presenter = new FakeCountdownPresenter;
        QuitWarningService service{center, authority, clock,
                                   std::unique_ptr<CountdownPresenter>(presenter)};
        QList<QList<qint32>> quits;
        QList<QList<qint32>> cancels;
        QStringList forwarded;

        explicit Rig(const QString& style = u"notification"_s) {
            settings.setQuitWarningStyle(style);
            service.setSettings(&settings);
            service.onQuit = [this](const QList<AppInfo>& apps) { quits << pids(apps); };
            service.onCancel = [this](const QList<AppInfo>& apps) { cancels << pids(apps); };
            service.forwardUnhandledAction = [this](const QString& id) { forwarded << id; };
            service.registerCategory();
            clock.advance(seconds(0));
        }
    };

private slots:
    void registersItsCategoryAndAsksOnceForPermission() {
        Rig rig;
        QCOMPARE(rig.center.categoryList,
                 (QList<NotificationCategory>{{u"Vantle.autoQuit"_s,
                                               {{u"Vantle.autoQuit.quitNow"_s, u"Quit Now"_s},
                                                {u"Vantle.autoQuit.cancel"_s, u"Cancel"_s}}}}));
        // Already authorized: no prompt.
        QCOMPARE(rig.center.authorizationRequests, 0);

        FakeNotificationCenter fresh;
        fresh.status = AuthorizationStatus::notDetermined;
        fresh.grantOnRequest = false;
        NotificationAuthority authority(fresh);
        ManualClock clock;
        QuitWarningService service(fresh, authority, clock,
                                   std::make_unique<FakeCountdownPresenter>());
        service.registerCategory();
        QCOMPARE(fresh.authorizationRequests, 0); // not before the event loop turns
        clock.advance(seconds(0));
        QCOMPARE(fresh.authorizationRequests, 1);
        QCOMPARE(authority.status(), AuthorizationStatus::denied);
    }

    void notificationWordsTheBatch_data() {
        QTest::addColumn<QList<AppInfo>>("apps");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("body");
        QTest::newRow("one") << QList<AppInfo>{app(1, u"Safari"_s)} << u"Quitting an Idle App"_s
                             << u"Safari — in 60s. Cancel to keep it open."_s;
        QTest::newRow("two") << QList<AppInfo>{app(1, u"Safari"_s), app(2, u"Notes %2"_s)}
                             << u"Quitting Idle Apps"_s
                             << u"Safari, Notes %2 — in 60s. Cancel to keep them open."_s;
    }
    void notificationWordsTheBatch() {
        QFETCH(QList<AppInfo>, apps);
        QFETCH(QString, title);
        QFETCH(QString, body);
        Rig rig;
        rig.service.present(apps);
        QCOMPARE(rig.center.posted, (QList<NotificationRequest>{
                                        {u"Vantle.autoQuit.warning"_s, title, body,
                                         u"Vantle.autoQuit"_s, InterruptionLevel::timeSensitive}}));
        QCOMPARE(rig.service.presenting(), QuitWarningService::Presenting::notification);
        QVERIFY(!rig.presenter->open);
    }

    void countdownQuitsTheBatchInArrivalOrder() {
        Rig rig;
        rig.settings.setQuitWarningSeconds(3.9); // truncated to 3
        rig.service.present({app(5, u"B"_s), app(4, u"A"_s)});
        rig.clock.advance(seconds(2));
        QCOMPARE(rig.service.state().secondsLeft(), 1);
        QVERIFY(rig.quits.isEmpty());
        rig.clock.advance(seconds(1));
        QCOMPARE(rig.quits, (QList<QList<qint32>>{{5, 4}}));
        QVERIFY(rig.center.removed.contains(u"Vantle.autoQuit.warning"_s));
        QVERIFY(rig.service.state().apps().isEmpty());
        QCOMPARE(rig.service.presenting(), QuitWarningService::Presenting::none);
        rig.clock.advance(seconds(10)); // the timer is gone
        QCOMPARE(rig.quits.size(), 1);
    }

    // The engine hands the same idle app over every minute; only new apps restart the count.
    void repeatsAreIgnoredAndNewcomersRestartTheCount() {
        Rig rig;
        rig.service.present({app(1, u"A"_s)});
        rig.clock.advance(seconds(48));
        rig.service.present({app(1, u"A"_s)});
        QCOMPARE(rig.service.state().secondsLeft(), 12);
        QCOMPARE(rig.center.posted.size(), 1);

        rig.service.present({app(1, u"A"_s), app(2, u"B"_s)});
        QCOMPARE(rig.service.state().secondsLeft(), 60);
        QCOMPARE(pids(rig.service.state().apps()), (QList<qint32>{1, 2}));
        QCOMPARE(rig.center.posted.size(), 2);
        QCOMPARE(rig.center.posted.last().title, u"Quitting Idle Apps"_s);
        rig.clock.advance(seconds(60));
        QCOMPARE(rig.quits, (QList<QList<qint32>>{{1, 2}}));
    }

    void neverQuitsAtOnceWithoutDeduplicating() {
        Rig rig(u"never"_s);
        rig.service.present({app(1, u"A"_s), app(1, u"A"_s)});
        QCOMPARE(rig.quits, (QList<QList<qint32>>{{1, 1}}));
        QVERIFY(rig.center.posted.isEmpty());
        QCOMPARE(rig.presenter->shows, 0);
    }

    void responsesEndOrForward() {
        Rig rig;
        rig.service.present({app(1, u"A"_s)});
        rig.center.respond(u"Vantle.schedule.warning"_s, u"Vantle.schedule.now"_s);
        rig.center.respond(u"Vantle.autoQuit.warning"_s,
                           NotificationCenter::kDefaultActionIdentifier);
        QCOMPARE(rig.forwarded, (QStringList{u"Vantle.schedule.now"_s,
                                             NotificationCenter::kDefaultActionIdentifier}));
        QCOMPARE(rig.service.state().apps().size(), 1); // foreign actions leave it running

        rig.center.respond(u"Vantle.autoQuit.warning"_s, u"Vantle.autoQuit.cancel"_s);
        QCOMPARE(rig.cancels, (QList<QList<qint32>>{{1}}));
        QVERIFY(rig.quits.isEmpty());

        rig.service.present({app(2, u"B"_s)});
        rig.center.respond(u"Vantle.autoQuit.warning"_s, u"Vantle.autoQuit.quitNow"_s);
        QCOMPARE(rig.quits, (QList<QList<qint32>>{{2}}));
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
        Rig rig(style);
        rig.center.status = status;
        rig.authority.refresh();
        rig.service.present({app(1, u"A"_s)});
        rig.service.present({app(2, u"B"_s)});
        QVERIFY(rig.center.posted.isEmpty());
        QVERIFY(rig.presenter->open);
        QCOMPARE(rig.service.presenting(), QuitWarningService::Presenting::window);
        QCOMPARE(pids(rig.service.state().apps()), (QList<qint32>{1, 2}));

        rig.presenter->cancel();
        QCOMPARE(rig.cancels, (QList<QList<qint32>>{{1, 2}}));
        QVERIFY(!rig.presenter->open);
        rig.service.present({app(3, u"C"_s)});
        rig.presenter->confirm();
        QCOMPARE(rig.quits, (QList<QList<qint32>>{{3}}));
    }

    void refusalsAreReportedOnlyByNotification_data() {
        QTest::addColumn<QString>("style");
        QTest::addColumn<AuthorizationStatus>("status");
        QTest::addColumn<bool>("reported");
        QTest::newRow("notification")
            << u"notification"_s << AuthorizationStatus::provisional << true;
        QTest::newRow("window") << u"window"_s << AuthorizationStatus::authorized << false;
        QTest::newRow("never") << u"never"_s << AuthorizationStatus::authorized << false;
        QTest::newRow("denied") << u"notification"_s << AuthorizationStatus::denied << false;
    }
    void refusalsAreReportedOnlyByNotification() {
        QFETCH(QString, style);
        QFETCH(AuthorizationStatus, status);
        QFETCH(bool, reported);
        Rig rig(style);
        rig.center.status = status;
        rig.authority.refresh();
        rig.service.reportRefused({});
        rig.service.reportRefused({app(1, u"Pages"_s), app(2, u"Mail"_s)});
        const NotificationRequest refused{
            u"Vantle.autoQuit.refused"_s, u"Some Apps Wouldn't Quit"_s,
            u"Pages, Mail — still running, probably waiting on unsaved changes."_s, QString(),
            InterruptionLevel::active};
        QCOMPARE(rig.center.posted,
                 reported ? QList<NotificationRequest>{refused} : QList<NotificationRequest>());
    }
};

QTEST_GUILESS_MAIN(TestQuitWarningService)
#include "tst_quitwarningservice.moc"
