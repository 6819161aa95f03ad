#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeCountdownPresenter.h"
#include "fakes/FakeIdleTime.h"
#include "fakes/FakeNotificationCenter.h"
#include "fakes/FakeWorkspace.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "monitor/AppMonitorService.h"
#include "monitor/AutoQuitManager.h"
#include "monitor/IdleMonitorService.h"
#include "monitor/QuitWarningService.h"
#include "system/NotificationAuthority.h"

#include <QSignalSpy>
#include <QTest>
#include <memory>

using namespace vantle;
using namespace std::chrono_literals;
using std::chrono::seconds;
using namespace Qt::StringLiterals;

namespace {

using Batches = QList<QList<qint32>>;
constexpr qint32 kSelf = 1;

QList<qint32> ids(const QList<AppInfo>& apps) {
    QList<qint32> result;
    for (const AppInfo& app : apps) {
        result << app.id;
    }
    return result;
}

AppInfo app(qint32 pid, const QString& name) {
    AppInfo info;
    info.id = pid;
    info.name = name;
    return info;
}

// Everything the engine and the warning read, wired as the application wires them; records what
// they hand back.
struct Rig {
    FakeWorkspace workspace;
    ManualClock clock;
    FakeIdleTime idle;
    MemoryDefaultsStore store;
    FakeBundleInfo bundle;
    AppSettings settings{store, bundle, clock, ProductTexts::macOS()};
    std::unique_ptr<AppMonitorService> apps;
    IdleMonitorService idleMonitor{idle, clock};
    AutoQuitManager manager{workspace, clock};
    Batches batches;
    QList<AutoQuitTrigger> triggers;
    FakeNotificationCenter center;
    NotificationAuthority authority{center};
    FakeCountdownPresenter* presenter = new FakeCountdownPresenter;
    QuitWarningService service{center, authority, clock,
                               std::unique_ptr<CountdownPresenter>(presenter)};
    Batches quits;
    Batches cancels;
    QStringList forwarded;

    explicit Rig(const QString& style = u"notification"_s) {
        workspace.add(kSelf, u"Vantle"_s, u"com.pelmark.vantle"_s, ActivationPolicy::accessory);
        settings.setQuitWarningStyle(style);
        service.setSettings(&settings);
        service.onQuit = [this](const QList<AppInfo>& batch) { quits << ids(batch); };
        service.onCancel = [this](const QList<AppInfo>& batch) { cancels << ids(batch); };
        service.forwardUnhandledAction = [this](const QString& id) { forwarded << id; };
        service.registerCategory();
        clock.advance(seconds(0));
    }

    // Call once the workspace holds its apps: they are first seen now.
    void wire() {
        apps = std::make_unique<AppMonitorService>(workspace, clock, kSelf);
        manager.setAppMonitor(apps.get());
        manager.setIdleMonitor(&idleMonitor);
        manager.setSettings(&settings);
        manager.onAppsReadyToQuit = [this](const QList<AppInfo>& batch, AutoQuitTrigger trigger) {
            triggers << trigger;
            batches << ids(batch);
        };
    }
    void idleFor(double seconds) {
        idle.seconds = seconds;
        idleMonitor.start(30);
    }
    void quitRule(const QString& bundleID, double minutes) {
        QList<AppRule> rules = settings.appRules();
        rules << AppRule{bundleID, bundleID, AppRule::Action::quit, minutes};
        settings.setAppRules(rules);
    }
};

} // namespace

// The services that watch the apps and the idle time, decide what is due, and warn before it goes.
class TestMonitor : public QObject {
    Q_OBJECT

private slots:
    void listsOtherAppsRegularFirstThenByName() {
        Rig r;
        r.workspace.add(10, u"Alpha"_s, {}, ActivationPolicy::accessory);
        r.workspace.add(11, u"zeta"_s);
        r.workspace.add(20, u"beta"_s);
        r.workspace.add(12, u"Beta"_s);
        r.workspace.add(13, u"alpha"_s);
        r.workspace.add(14, std::nullopt);
        r.workspace.add(15, u"Mail"_s, {}, ActivationPolicy::prohibited);
        // Enough equal names that an unstable sort would shuffle them.
        QList<qint32> helpers;
        for (qint32 pid = 140; pid > 100; --pid) {
            r.workspace.add(pid, u"Helper"_s, {}, ActivationPolicy::accessory);
            helpers << pid;
        }
        r.wire();

        // Equal names (20, 12) keep the system's order; case never decides.
        QCOMPARE(ids(r.apps->runningApps()),
                 QList<qint32>({13, 20, 12, 14, 11, 10}) + helpers + QList<qint32>({15}));
        QCOMPARE(r.apps->runningApps()[3].name, u"Unknown"_s);
    }

    void datesStartWhenFirstSeenAndDieWithTheProcess() {
        Rig r;
        r.workspace.add(10, u"Old"_s);
        const QDateTime start = r.clock.now();
        r.wire();
        QCOMPARE(r.apps->runningApps()[0].lastActiveDate, start);

        r.clock.advance(1min);
        emit r.workspace.didDeactivateApplication(r.workspace.application(10));
        r.clock.advance(1min);

        // Events that do not say which app change no date; launch and terminate still refresh.
        const int calls = r.workspace.listCalls;
        emit r.workspace.didActivateApplication(nullptr);
        emit r.workspace.didLaunchApplication(nullptr);
        emit r.workspace.didTerminateApplication(nullptr);
        QCOMPARE(r.workspace.listCalls, calls + 2);
        QCOMPARE(r.apps->lastActiveDate(10), start.addSecs(60));

        r.workspace.emitTerminate(10);
        QVERIFY(!r.apps->lastActiveDates().contains(10));
        r.clock.advance(1h);
        r.workspace.add(10, u"New"_s);
        r.apps->refresh();
        QCOMPARE(r.apps->lastActiveDate(10), r.clock.now());
    }

    void pollsOnlyWhileTheListIsVisible() {
        Rig r;
        r.wire();
        QSignalSpy changes(r.apps.get(), &AppMonitorService::runningAppsChanged);
        const int calls = r.workspace.listCalls;

        r.apps->setListVisible(true);
        r.apps->setListVisible(true); // a second show must not start a second loop
        QCOMPARE(r.workspace.listCalls, calls + 2);
        r.clock.advance(4999ms);
        QCOMPARE(r.workspace.listCalls, calls + 2);
        r.clock.advance(1ms);
        QCOMPARE(r.workspace.listCalls, calls + 3);
        r.clock.advance(5s);
        QCOMPARE(r.workspace.listCalls, calls + 4);
        QCOMPARE(changes.count(), 4); // notified although nothing changed

        r.apps->setListVisible(false);
        r.clock.advance(1min);
        QCOMPARE(r.workspace.listCalls, calls + 4);
    }

    void quitReportsOnlyTheRefusersAfterTenSeconds() {
        Rig r;
        r.workspace.add(10, u"Quits"_s);
        r.workspace.add(11, u"Refuses"_s)->refusesToQuit = true;
        r.workspace.add(12, u"Also quits"_s);
        r.wire();
        const QList<AppInfo> listed = r.apps->runningApps();
        const AppInfo gone = app(99, u"Gone"_s);

        std::optional<QList<qint32>> first;
        std::optional<QList<qint32>> second;
        r.apps->quit({listed[1], listed[2], gone},
                     [&](const QList<AppInfo>& left) { first = ids(left); });
        // A new process taking the quit app's pid must not count as a refusal.
        r.workspace.add(10, u"Reborn"_s);

        r.clock.advance(5s);
        r.apps->quit({listed[0]}, [&](const QList<AppInfo>& left) { second = ids(left); });
        r.clock.advance(4999ms);
        QVERIFY(!first);
        r.clock.advance(1ms);
        QCOMPARE(*first, QList<qint32>({11}));
        QVERIFY(ids(r.apps->runningApps()).contains(10)); // refreshed before reporting
        r.clock.advance(5s);
        QCOMPARE(*second, QList<qint32>());

        // Checks still pending die with the service.
        bool called = false;
        r.apps->quit(listed, [&](const QList<AppInfo>&) { called = true; });
        r.apps->refreshAfterQuit();
        r.apps.reset();
        r.clock.advance(1min);
        QVERIFY(!called);
        QCOMPARE(r.clock.pendingTimerCount(), std::size_t(0));
    }

    void quitAll_data() {
        QTest::addColumn<bool>("force");
        QTest::addColumn<bool>("protect");
        QTest::addColumn<QList<qint32>>("asked");
        // Excluded: com.a only (exact case); 11 and 13 have no bundle id.
        QTest::newRow("polite, menu bar protected") << false << true << QList<qint32>{11, 14};
        QTest::newRow("forced, unprotected") << true << false << QList<qint32>{11, 12, 13, 14};
    }

    void quitAll() {
        QFETCH(bool, force);
        QFETCH(bool, protect);
        QFETCH(QList<qint32>, asked);
        Rig r;
        r.workspace.add(10, u"A"_s, u"com.a"_s);
        r.workspace.add(11, u"No id"_s);
        r.workspace.add(12, u"Menu"_s, u"com.menu"_s, ActivationPolicy::accessory);
        r.workspace.add(13, u"Agent"_s, {}, ActivationPolicy::prohibited);
        r.workspace.add(14, u"Other A"_s, u"com.A"_s);
        const QList<std::shared_ptr<FakeRunningApplication>> all = r.workspace.apps;
        r.wire();

        QList<qint32> returned;
        for (const RunningApplicationRef& app :
             r.apps->quitAll(force, {u"com.a"_s, u"com.b"_s}, protect)) {
            returned << app->processIdentifier();
        }
        QCOMPARE(returned, asked);
        QList<qint32> requested;
        for (const auto& app : all) {
            QCOMPARE(force ? app->terminateRequests : app->forceRequests, 0);
            if (app->terminateRequests + app->forceRequests > 0) {
                requested << app->pid;
            }
        }
        QCOMPARE(requested, asked);

        // The list catches up 0.8 s later; a further request restarts the wait.
        const int calls = r.workspace.listCalls;
        r.clock.advance(500ms);
        r.apps->refreshAfterQuit();
        r.clock.advance(799ms);
        QCOMPARE(r.workspace.listCalls, calls);
        r.clock.advance(1ms);
        QCOMPARE(r.workspace.listCalls, calls + 1);
    }

    // Auto quit: the idle sweep and the per-app rules.
    void idleIsSampledAtOnceThenEveryIntervalAndNoReadingMeansPresent() {
        Rig r;
        LogCapture log;
        QSignalSpy published(&r.idleMonitor, &IdleMonitorService::systemIdleSecondsChanged);

        r.idle.seconds = 42;
        r.idleMonitor.start(30);
        QCOMPARE(r.idleMonitor.systemIdleSeconds(), 42.0);
        r.clock.advance(29999ms);
        QCOMPARE(r.idle.samples, 1);
        r.clock.advance(1ms);
        QCOMPARE(r.idle.samples, 2);
        QCOMPARE(published.count(), 2); // unchanged samples are published too

        // A second start replaces the loop rather than adding one.
        r.idle.seconds = 7.5;
        r.idleMonitor.start(10);
        QCOMPARE(r.idleMonitor.systemIdleSeconds(), 7.5);
        r.clock.advance(30s);
        QCOMPARE(r.idle.samples, 3 + 3);

        // Without a reading the user counts as present; that is logged once.
        r.idle.seconds = std::nullopt;
        r.clock.advance(10s);
        QCOMPARE(r.idleMonitor.systemIdleSeconds(), 0.0);
        r.clock.advance(5min);
        QCOMPARE(log.count(u"idle time is unavailable"_s), 1);
    }

    void idleSweepFiresOncePerIdlePeriod() {
        Rig r;
        r.workspace.add(10, u"Front"_s, u"com.front"_s);
        r.workspace.add(11, u"Menu"_s, u"com.menu"_s, ActivationPolicy::accessory);
        r.workspace.add(12, u"Kept"_s, u"com.keep"_s);
        r.workspace.add(13, u"Tool"_s);
        r.workspace.add(14, u"Other kept"_s, u"com.Keep"_s);
        r.workspace.frontmost = 10;
        r.wire();
        r.settings.setIdleQuitEnabled(true);
        r.settings.setIdleQuitTimeout(30);
        r.settings.setExcludedBundleIDs({u"com.keep"_s});

        r.idleFor(30 * 60 - 0.001);
        r.manager.evaluate();
        QCOMPARE(r.batches, Batches());
        r.idleFor(30 * 60);
        r.manager.evaluate();
        r.manager.evaluate();
        // Frontmost included; menu-bar app protected; exclusion is case-sensitive.
        QCOMPARE(r.batches, Batches({{10, 14, 13}}));

        // Switched off, the sweep neither fires nor forgets that it fired.
        r.settings.setIdleQuitEnabled(false);
        r.idleFor(0);
        r.manager.evaluate();
        QVERIFY(r.manager.idleQuitFired());

        r.settings.setIdleQuitEnabled(true);
        r.manager.evaluate();
        QVERIFY(!r.manager.idleQuitFired());
        r.idleFor(4000);
        r.manager.evaluate();
        QCOMPARE(r.batches.size(), 2);
    }

    void idleSweepWithNothingToQuitStillLatches() {
        Rig r;
        r.workspace.add(11, u"Menu"_s, u"com.menu"_s, ActivationPolicy::accessory);
        r.wire();
        r.settings.setIdleQuitEnabled(true);
        r.idleFor(24 * 3600);
        r.manager.evaluate();
        QVERIFY(r.manager.idleQuitFired());
        QCOMPARE(r.batches, Batches());
    }

    // Inclusive time-outs; the frontmost app and, while protected, menu-bar apps are spared.
    void rulesActAtTheirTimeoutAndSpareAppsInUse() {
        Rig r;
        r.workspace.add(10, u"Quit"_s, u"com.quit"_s);
        auto hidden = r.workspace.add(11, u"Hide"_s, u"com.hide"_s);
        r.workspace.add(12, u"Front"_s, u"com.front"_s);
        r.workspace.add(13, u"Menu"_s, u"com.menu"_s, ActivationPolicy::accessory);
        r.workspace.frontmost = 12;
        r.wire();
        r.settings.setAppRules({AppRule{u"com.quit"_s, u"Quit"_s, AppRule::Action::quit, 5},
                                AppRule{u"com.hide"_s, u"Hide"_s, AppRule::Action::hide, 5}});
        r.quitRule(u"com.front"_s, 1);
        r.quitRule(u"com.menu"_s, 1);

        // Never activated: idle since first seen.
        r.clock.advance(299'999ms);
        r.manager.evaluate();
        QCOMPARE(r.batches, Batches());
        QCOMPARE(hidden->hideRequests, 0);
        r.clock.advance(1ms);
        r.manager.evaluate();
        QCOMPARE(r.batches, Batches({{10}}));
        QCOMPARE(hidden->hideRequests, 1);

        r.settings.setProtectMenuBarApps(false);
        r.workspace.frontmost.reset();
        r.manager.evaluate();
        QCOMPARE(r.batches.last(), QList<qint32>({10, 12, 13}));
    }

    void onePassHandsOverTheSweepThenTheRulesInRuleOrder() {
        Rig r;
        r.workspace.add(10, u"A"_s, u"com.a"_s);
        r.workspace.add(11, u"B1"_s, u"com.b"_s);
        r.workspace.add(12, u"B2"_s, u"com.b"_s);
        r.workspace.add(13, u"No id"_s);
        r.wire();
        r.quitRule(u"com.b"_s, 1);
        r.quitRule(u"com.a"_s, 1);
        r.quitRule(u"com.b"_s, 1);
        r.quitRule(QString(), 0); // an app without a bundle id matches no rule
        r.settings.setIdleQuitEnabled(true);
        r.settings.setIdleQuitTimeout(1);

        r.clock.advance(1min);
        r.idleFor(60);
        r.manager.evaluate();
        QCOMPARE(r.batches, Batches({{10, 11, 12, 13}, {11, 12, 10, 11, 12}}));
        QCOMPARE(r.triggers, QList({AutoQuitTrigger::idleSweep, AutoQuitTrigger::rule}));
    }

    void passesComeEveryMinuteWhileTheSourcesLive() {
        Rig r;
        r.workspace.add(10, u"App"_s, u"com.app"_s);
        r.wire();
        r.quitRule(u"com.app"_s, 0);
        r.manager.start();
        r.clock.advance(59'999ms);
        QCOMPARE(r.batches.size(), 0);
        r.clock.advance(1ms);
        QCOMPARE(r.batches.size(), 1);

        r.apps.reset();
        r.clock.advance(5min);
        QCOMPARE(r.batches.size(), 1);
    }

    // The quit warning.
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
        ManualClock freshClock;
        QuitWarningService service(fresh, authority, freshClock,
                                   std::make_unique<FakeCountdownPresenter>());
        service.registerCategory();
        QCOMPARE(fresh.authorizationRequests, 0); // not before the event loop turns
        freshClock.advance(seconds(0));
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

    // The engine hands the same idle app over every minute; only new apps restart the count of
    // whole seconds, and the batch is then quit in arrival order.
    void repeatsAreIgnoredAndNewcomersRestartTheCount() {
        Rig rig;
        rig.settings.setQuitWarningSeconds(59.9); // truncated to 59
        rig.service.present({app(5, u"B"_s)});
        rig.clock.advance(seconds(48));
        rig.service.present({app(5, u"B"_s)});
        QCOMPARE(rig.service.state().secondsLeft(), 11);
        QCOMPARE(rig.center.posted.size(), 1);

        rig.service.present({app(5, u"B"_s), app(4, u"A"_s)});
        QCOMPARE(rig.service.state().secondsLeft(), 59);
        QCOMPARE(ids(rig.service.state().apps()), (QList<qint32>{5, 4}));
        QCOMPARE(rig.center.posted.size(), 2);
        QCOMPARE(rig.center.posted.last().title, u"Quitting Idle Apps"_s);
        rig.clock.advance(seconds(58));
        QVERIFY(rig.quits.isEmpty());
        rig.clock.advance(seconds(1));
        QCOMPARE(rig.quits, (Batches{{5, 4}}));
        QVERIFY(rig.center.removed.contains(u"Vantle.autoQuit.warning"_s));
        QVERIFY(rig.service.state().apps().isEmpty());
        QCOMPARE(rig.service.presenting(), QuitWarningService::Presenting::none);
        rig.clock.advance(seconds(10)); // the timer is gone
        QCOMPARE(rig.quits.size(), 1);
    }

    void neverQuitsAtOnceWithoutDeduplicating() {
        Rig rig(u"never"_s);
        rig.service.present({app(1, u"A"_s), app(1, u"A"_s)});
        QCOMPARE(rig.quits, (Batches{{1, 1}}));
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
        QCOMPARE(rig.cancels, (Batches{{1}}));
        QVERIFY(rig.quits.isEmpty());

        rig.service.present({app(2, u"B"_s)});
        rig.center.respond(u"Vantle.autoQuit.warning"_s, u"Vantle.autoQuit.quitNow"_s);
        QCOMPARE(rig.quits, (Batches{{2}}));
    }

    // Without permission to notify, the panel carries the warning.
    void panelForWindowStyleAndWhenNotificationsAreDenied_data() { addPanelFallbackRows(); }
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
        QCOMPARE(ids(rig.service.state().apps()), (QList<qint32>{1, 2}));

        rig.presenter->cancel();
        QCOMPARE(rig.cancels, (Batches{{1, 2}}));
        QVERIFY(!rig.presenter->open);
        rig.service.present({app(3, u"C"_s)});
        rig.presenter->confirm();
        QCOMPARE(rig.quits, (Batches{{3}}));
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

QTEST_GUILESS_MAIN(TestMonitor)
#include "tst_monitor.moc"
