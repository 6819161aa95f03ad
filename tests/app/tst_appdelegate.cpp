#include "app/AppDelegate.h"
#include "fakes/FakeAlerts.h"
#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeHotKeyRegistrar.h"
#include "fakes/FakeIdleTime.h"
#include "fakes/FakeLoginItem.h"
#include "fakes/FakeNotificationCenter.h"
#include "fakes/FakePowerActions.h"
#include "fakes/FakePowerAssertion.h"
#include "fakes/FakeScriptRunner.h"
#include "fakes/FakeWorkspace.h"
#include "fakes/InlineExecutor.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "monitor/AppMonitorService.h"
#include "platform/NullPanelPlacement.h"
#include "platform/Platform.h"
#include "system/HotKeyService.h"

#include <QTest>

using namespace vantle;

namespace {

struct FakePlatform {
    Platform platform;
    MemoryDefaultsStore* defaults;
    FakeLoginItem* loginItem;

    FakePlatform() {
        auto store = std::make_unique<MemoryDefaultsStore>();
        auto login = std::make_unique<FakeLoginItem>();
        defaults = store.get();
        loginItem = login.get();
        platform.clock = std::make_unique<ManualClock>();
        platform.executor = std::make_unique<InlineExecutor>();
        platform.defaults = std::move(store);
        platform.bundle = std::make_unique<FakeBundleInfo>();
        platform.loginItem = std::move(login);
        platform.texts = &ProductTexts::linuxDesktop();
        auto fakeWorkspace = std::make_unique<FakeWorkspace>();
        workspace = fakeWorkspace.get();
        platform.workspace = std::move(fakeWorkspace);
        auto fakeIdle = std::make_unique<FakeIdleTime>();
        idle = fakeIdle.get();
        platform.idleTime = std::move(fakeIdle);
        auto fakeNotifications = std::make_unique<FakeNotificationCenter>();
        notifications = fakeNotifications.get();
        platform.notifications = std::move(fakeNotifications);
        platform.panelPlacement = std::make_unique<NullPanelPlacement>();
        platform.powerAssertion = std::make_unique<FakePowerAssertion>();
        auto fakePower = std::make_unique<FakePowerActions>();
        power = fakePower.get();
        platform.powerActions = std::move(fakePower);
        auto fakeScripts = std::make_unique<FakeScriptRunner>();
        scripts = fakeScripts.get();
        platform.scripts = std::move(fakeScripts);
        auto fakeAlerts = std::make_unique<FakeAlerts>();
        alerts = fakeAlerts.get();
        platform.alerts = std::move(fakeAlerts);
        platform.schedulerTool = PowerSchedulerTool::linuxTool(QStringLiteral("/opt/vantle"));
        platform.userName = QStringLiteral("ada");
        auto fakeHotKeys = std::make_unique<FakeHotKeyRegistrar>();
        hotKeys = fakeHotKeys.get();
        platform.hotKeys = std::move(fakeHotKeys);
    }
    FakeHotKeyRegistrar* hotKeys;
    FakeScriptRunner* scripts;
    FakeAlerts* alerts;
    FakePowerActions* power;
    ManualClock& clock() { return static_cast<ManualClock&>(*platform.clock); }
    FakeWorkspace* workspace;
    FakeIdleTime* idle;
    FakeNotificationCenter* notifications;
};

} // namespace

class TestAppDelegate : public QObject {
    Q_OBJECT

private slots:
    // Settings carried over from an earlier version bring their login item with them, once.
    void migratedLaunchAtLoginRecreatesTheLoginItemOnce() {
        FakePlatform fake;
        fake.defaults->otherDomains[QStringLiteral("com.quorel.vantle")] = {
            {QStringLiteral("launchAtLogin"), true}};
        {
            AppDelegate delegate(fake.platform);
            delegate.applicationDidFinishLaunching();
        }
        QCOMPARE(fake.loginItem->registerCalls, 1);
        QVERIFY(fake.loginItem->registered);

        AppDelegate later(fake.platform);
        later.applicationDidFinishLaunching();
        QVERIFY(later.settings().launchAtLogin());
        QCOMPARE(fake.loginItem->registerCalls, 1);
    }

    void noLoginItemWithoutMigrationOrWithoutTheSetting() {
        FakePlatform fresh;
        fresh.defaults->values[QStringLiteral("launchAtLogin")] = true;
        AppDelegate(fresh.platform).applicationDidFinishLaunching();
        QCOMPARE(fresh.loginItem->registerCalls, 0);

        FakePlatform migratedOff;
        migratedOff.defaults->otherDomains[QStringLiteral("com.yourname.EBB")] = {
            {QStringLiteral("idleQuitEnabled"), true}};
        AppDelegate(migratedOff.platform).applicationDidFinishLaunching();
        QCOMPARE(migratedOff.loginItem->registerCalls, 0);
    }

    void refusedLoginItemIsLoggedAndLaunchGoesOn() {
        FakePlatform fake;
        fake.loginItem->failRegistration = true;
        fake.defaults->otherDomains[QStringLiteral("com.quorel.vantle")] = {
            {QStringLiteral("launchAtLogin"), true}};
        LogCapture log;
        AppDelegate delegate(fake.platform);
        delegate.applicationDidFinishLaunching();
        QCOMPARE(log.count(QStringLiteral("login item")), 1);
        QVERIFY(delegate.settings().launchAtLogin());
    }

    // The whole road of an automatic quit: rule due, warning, countdown, quit, refusal noticed
    // and reported, and the refuser given a fresh idle period instead of a warning every minute.
    void dueAppsAreWarnedQuitAndRefusersStartOver() {
        FakePlatform fake;
        auto mail = fake.workspace->add(100, QStringLiteral("Mail"), QStringLiteral("com.mail"));
        mail->refusesToQuit = true;
        auto notes = fake.workspace->add(101, QStringLiteral("Notes"), QStringLiteral("com.notes"));
        fake.defaults->values[QStringLiteral("appRules")] = *encodeAppRules(
            {AppRule{QStringLiteral("com.mail"), QStringLiteral("Mail"), AppRule::Action::quit, 1},
             AppRule{QStringLiteral("com.notes"), QStringLiteral("Notes"), AppRule::Action::quit,
                     1}});
        AppDelegate delegate(fake.platform);
        delegate.applicationDidFinishLaunching();
        QCOMPARE(fake.idle->samples, 1);
        QCOMPARE(fake.notifications->categoryList.size(), 1);

        fake.clock().advance(std::chrono::seconds(60));
        QCOMPARE(fake.notifications->posted.size(), 1);
        QCOMPARE(fake.notifications->posted.last().title, QStringLiteral("Quitting Idle Apps"));
        QCOMPARE(mail->terminateRequests, 0);

        fake.clock().advance(std::chrono::seconds(60)); // the countdown runs out
        QCOMPARE(mail->terminateRequests, 1);
        QVERIFY(notes->terminated);
        fake.clock().advance(std::chrono::seconds(10)); // the refusal check
        QCOMPARE(fake.notifications->posted.last().title, QStringLiteral("An App Wouldn't Quit"));

        fake.clock().advance(std::chrono::seconds(50));
        QCOMPARE(fake.notifications->posted.size(), 2);
        fake.clock().advance(std::chrono::seconds(60));
        QCOMPARE(fake.notifications->posted.size(), 3);
        QCOMPARE(fake.notifications->posted.last().body,
                 QStringLiteral("Mail — in 60s. Cancel to keep it open."));

        // Cancelling from the notification keeps it and restarts its idle time.
        fake.notifications->respond(QStringLiteral("Vantle.autoQuit.warning"),
                                    QStringLiteral("Vantle.autoQuit.cancel"));
        QCOMPARE(delegate.appMonitor().lastActiveDate(100), fake.clock().now());
        fake.clock().advance(std::chrono::seconds(59));
        QCOMPARE(fake.notifications->posted.size(), 3);
        QCOMPARE(mail->terminateRequests, 1);
    }

    // A shut down quits the apps first and waits for them; one power action per proceed.
    void shutDownQuitsAppsThenActsOnce() {
        FakePlatform fake;
        fake.defaults->values[QStringLiteral("scheduleWarningStyle")] = QStringLiteral("never");
        auto editor = fake.workspace->add(200, QStringLiteral("Editor"));
        editor->refusesToQuit = true;
        auto kept = fake.workspace->add(201, QStringLiteral("Kept"), QStringLiteral("com.kept"));
        fake.defaults->values[QStringLiteral("excludedBundleIDs")] =
            QStringList{QStringLiteral("com.kept")};
        AppDelegate delegate(fake.platform);
        delegate.applicationDidFinishLaunching();

        delegate.handleCommand(AppCommand::shutDown);
        QCOMPARE(editor->terminateRequests, 1);
        QCOMPARE(kept->terminateRequests, 0);
        QVERIFY(fake.power->calls.isEmpty()); // still waiting for the editor
        fake.workspace->exit(200);            // the user saved and it quit
        fake.clock().advance(std::chrono::seconds(1));
        QCOMPARE(fake.power->calls, QStringList{QStringLiteral("shutDown")});
        // The power action is told exactly whom quit-all asked, so it can refuse if they remain.
        QCOMPARE(fake.power->askedToQuit.size(), 1);
        QCOMPARE(fake.power->askedToQuit.first()->processIdentifier(), 200);
        fake.clock().advance(std::chrono::seconds(60));
        QCOMPARE(fake.power->calls.size(), 1);

        delegate.handleCommand(AppCommand::sleep);
        QCOMPARE(fake.power->calls.last(), QStringLiteral("sleep"));
        QCOMPARE(kept->terminateRequests, 0);
    }

    // The shortcuts follow the settings at once, and a press runs the same command as the menu.
    void shortcutsFollowTheSettingsAndDispatchLikeTheMenu() {
        FakePlatform fake;
        fake.defaults->values[QStringLiteral("scheduleWarningStyle")] = QStringLiteral("never");
        fake.defaults->values[QStringLiteral("disabledShortcutIDs")] =
            QStringList{QStringLiteral("quitAllApps")};
        fake.hotKeys->held = {HotKeyService::hotKeyId(AppCommand::shutDown)};
        AppDelegate delegate(fake.platform);
        QVERIFY(fake.hotKeys->active.empty()); // nothing before launch
        LogCapture log;
        delegate.applicationDidFinishLaunching();
        QCOMPARE(fake.hotKeys->activeIds(), (QList<quint32>{2, 3}));
        QCOMPARE(delegate.hotKeyService().unavailable(), QList<AppCommand>{AppCommand::shutDown});
        QCOMPARE(log.count(QStringLiteral("could not claim the Shut Down shortcut")), 1);

        emit fake.hotKeys->pressed(HotKeyService::hotKeyId(AppCommand::sleep));
        QCOMPARE(fake.power->calls, QStringList{QStringLiteral("sleep")});

        delegate.settings().setShortcut(AppCommand::restart, false);
        QCOMPARE(fake.hotKeys->activeIds(), QList<quint32>{2});
    }

    // The schedule warning's notification buttons reach it although the quit warning receives
    // every response.
    void scheduleResponsesAreForwarded() {
        FakePlatform fake;
        AppDelegate delegate(fake.platform);
        delegate.applicationDidFinishLaunching();
        fake.clock().advance(std::chrono::seconds(0));
        delegate.handleCommand(AppCommand::sleep);
        QVERIFY(fake.power->calls.isEmpty());
        fake.notifications->respond(QStringLiteral("Vantle.schedule.warning"),
                                    QStringLiteral("Vantle.schedule.now"));
        QCOMPARE(fake.power->calls, QStringList{QStringLiteral("sleep")});
    }

    // The system's power schedule is brought up to date at launch, after each change of the
    // schedules, on wake and every hour.
    void powerScheduleFollowsChangesWakeAndTheHour() {
        using Action = ShutdownSchedule::Action;
        using Weekday = ShutdownSchedule::Weekday;
        FakePlatform fake; // Monday 2026-11-16 09:00
        fake.alerts->answer = {.button = 0};
        ShutdownSchedule wake;
        wake.action = Action::wake;
        wake.days = {Weekday::tuesday};
        wake.hour = 7;
        wake.minute = 30;
        AppDelegate delegate(fake.platform);
        delegate.settings().setShutdownSchedules({wake});
        QVERIFY(fake.scripts->administratorRuns.isEmpty());

        delegate.applicationDidFinishLaunching();
        QCOMPARE(fake.scripts->administratorRuns,
                 QStringList{
                     QStringLiteral("/opt/vantle/vantle-power schedule wake '11/17/26 07:30:00'")});

        ShutdownSchedule restart = wake;
        restart.id = QUuid::createUuid();
        restart.action = Action::restart;
        delegate.settings().setShutdownSchedules({wake, restart});
        QCOMPARE(fake.scripts->administratorRuns.size(), 2);

        // Both events have passed by the time the machine wakes on Tuesday.
        fake.clock().setNow(QDateTime(QDate(2026, 11, 17), QTime(8, 0)));
        emit fake.workspace->didWake();
        QCoreApplication::processEvents();
        QCOMPARE(fake.scripts->administratorRuns.size(), 3);
        QVERIFY(delegate.settings().pmsetRegistered().isEmpty());

        // A day on, next Tuesday is within reach; the hourly sync registers it.
        fake.clock().setNow(QDateTime(QDate(2026, 11, 18), QTime(8, 0)));
        fake.clock().advance(std::chrono::seconds(3599));
        QCOMPARE(fake.scripts->administratorRuns.size(), 3);
        fake.clock().advance(std::chrono::seconds(1));
        QCOMPARE(fake.scripts->administratorRuns.size(), 4);
        QCOMPARE(delegate.settings().pmsetRegistered().size(), 2);
        QCOMPARE(fake.alerts->shown.size(), 1);
    }

    // A damaged file starts like any other: the bad schedules (out of range, or repeating an
    // earlier id) stay in it as written, are logged once each however often the list is read or
    // assigned, and only the good ones reach the power scheduler or the warning.
    void launchesWithOutOfRangeSchedulesAndKeepsThem() {
        FakePlatform fake; // Monday 2026-11-16 09:00
        fake.alerts->answer = {.button = 0};
        fake.defaults->values[QStringLiteral("scheduleWarningStyle")] = QStringLiteral("never");
        const auto entry = [](int n, const char* action, const char* hour, const char* minute) {
            return QStringLiteral("{\"id\":\"0000000%1-2D3F-4A5B-8C9D-0E1F2A3B4C5D\","
                                  "\"isEnabled\":true,\"action\":\"%2\",\"days\":[2,3],"
                                  "\"hour\":%3,\"minute\":%4}")
                .arg(n)
                .arg(QLatin1String(action), QLatin1String(hour), QLatin1String(minute));
        };
        const QByteArray stored =
            QStringLiteral("[%1]")
                .arg(QStringList{entry(1, "Shut Down", "1e18", "0"), entry(2, "Sleep", "9", "-1"),
                                 entry(3, "Wake", "99", "30"), entry(4, "Sleep", "9", "1"),
                                 entry(5, "Power On", "7", "30"), entry(5, "Restart", "8", "0")}
                         .join(QLatin1Char(',')))
                .toUtf8();
        fake.defaults->values[QStringLiteral("shutdownSchedules")] = stored;
        LogCapture log;
        AppDelegate delegate(fake.platform);
        delegate.applicationDidFinishLaunching();
        fake.clock().advance(std::chrono::minutes(3)); // through 09:01 and a resync

        QCOMPARE(fake.defaults->values.value(QStringLiteral("shutdownSchedules")),
                 DefaultsValue(stored));
        QCOMPARE(delegate.settings().shutdownSchedules().size(), 6);
        QCOMPARE(log.count(QStringLiteral("is not run")), 4);
        QCOMPARE(log.count(QStringLiteral("Restart at 08:00 (id 00000005")), 1);
        QCOMPARE(fake.scripts->administratorRuns,
                 QStringList{QStringLiteral(
                     "/opt/vantle/vantle-power schedule poweron '11/17/26 07:30:00'")});
        QCOMPARE(fake.power->calls, QStringList{QStringLiteral("sleep")});

        QList<ShutdownSchedule> edited = delegate.settings().shutdownSchedules();
        edited[3].minute = 2;
        delegate.settings().setShutdownSchedules(edited);
        QCOMPARE(log.count(QStringLiteral("is not run")), 4);
        // What the user wrote survives the next write, bad values included.
        QCOMPARE(
            decodeShutdownSchedules(*fake.defaults->dataValue(QStringLiteral("shutdownSchedules"))),
            edited);
    }
};

QTEST_MAIN(TestAppDelegate)
#include "tst_appdelegate.moc"
