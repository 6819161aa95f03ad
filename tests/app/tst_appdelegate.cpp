#include "app/AppDelegate.h"
#include "fakes/FakePlatform.h"
#include "fakes/LogCapture.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "monitor/AppMonitorService.h"
#include "system/HotKeyService.h"
#include "ui/settings/SettingsSelection.h"
#include "ui/settings/SettingsWindow.h"
#include "ui/settings/SettingsWindowManager.h"

#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;

class TestAppDelegate : public QObject {
    Q_OBJECT

private slots:
    // Settings carried over from an earlier version bring their login item with them, once.
    void migratedLaunchAtLoginRecreatesTheLoginItemOnce() {
        FakePlatform fake;
        fake.defaults->otherDomains[u"com.quorel.vantle"_s] = {{u"launchAtLogin"_s, true}};
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
        fresh.defaults->values[u"launchAtLogin"_s] = true;
        AppDelegate(fresh.platform).applicationDidFinishLaunching();
        QCOMPARE(fresh.loginItem->registerCalls, 0);

        FakePlatform migratedOff;
        migratedOff.defaults->otherDomains[u"com.yourname.EBB"_s] = {{u"idleQuitEnabled"_s, true}};
        AppDelegate(migratedOff.platform).applicationDidFinishLaunching();
        QCOMPARE(migratedOff.loginItem->registerCalls, 0);
    }

    void refusedLoginItemIsLoggedAndLaunchGoesOn() {
        FakePlatform fake;
        fake.loginItem->failRegistration = true;
        fake.defaults->otherDomains[u"com.quorel.vantle"_s] = {{u"launchAtLogin"_s, true}};
        LogCapture log;
        AppDelegate delegate(fake.platform);
        delegate.applicationDidFinishLaunching();
        QCOMPARE(log.count(u"login item"_s), 1);
        QVERIFY(delegate.settings().launchAtLogin());
    }

    // The whole road of an automatic quit: rule due, warning, countdown, quit, refusal noticed
    // and reported, and the refuser given a fresh idle period instead of a warning every minute;
    // then a schedule warning alongside.
    void dueAppsAreWarnedQuitAndRefusersStartOver() {
        FakePlatform fake;
        auto mail = fake.workspace->add(100, u"Mail"_s, u"com.mail"_s);
        mail->refusesToQuit = true;
        auto notes = fake.workspace->add(101, u"Notes"_s, u"com.notes"_s);
        fake.defaults->values[u"appRules"_s] =
            *encodeAppRules({AppRule{u"com.mail"_s, u"Mail"_s, AppRule::Action::quit, 1},
                             AppRule{u"com.notes"_s, u"Notes"_s, AppRule::Action::quit, 1}});
        AppDelegate delegate(fake.platform);
        delegate.applicationDidFinishLaunching();
        QCOMPARE(fake.idle->samples, 1);
        QCOMPARE(fake.notifications->categoryList.size(), 1);

        fake.clock().advance(std::chrono::seconds(60));
        QCOMPARE(fake.notifications->posted.size(), 1);
        QCOMPARE(fake.notifications->posted.last().title, u"Quitting Idle Apps"_s);
        QCOMPARE(mail->terminateRequests, 0);

        fake.clock().advance(std::chrono::seconds(60)); // the countdown runs out
        QCOMPARE(mail->terminateRequests, 1);
        QVERIFY(notes->terminated);
        fake.clock().advance(std::chrono::seconds(10)); // the refusal check
        QCOMPARE(fake.notifications->posted.last().title, u"An App Wouldn't Quit"_s);

        fake.clock().advance(std::chrono::seconds(50));
        QCOMPARE(fake.notifications->posted.size(), 2);
        fake.clock().advance(std::chrono::seconds(60));
        QCOMPARE(fake.notifications->posted.size(), 3);
        QCOMPARE(fake.notifications->posted.last().body,
                 u"Mail — in 60s. Cancel to keep it open."_s);

        // Cancelling from the notification keeps it and restarts its idle time.
        fake.notifications->respond(u"Vantle.autoQuit.warning"_s, u"Vantle.autoQuit.cancel"_s);
        QCOMPARE(delegate.appMonitor().lastActiveDate(100), fake.clock().now());
        fake.clock().advance(std::chrono::seconds(59));
        QCOMPARE(fake.notifications->posted.size(), 3);
        QCOMPARE(mail->terminateRequests, 1);

        // The schedule warning's buttons reach it although the quit warning receives every
        // response.
        delegate.handleCommand(AppCommand::sleep);
        QVERIFY(fake.power->calls.isEmpty());
        fake.notifications->respond(u"Vantle.schedule.warning"_s, u"Vantle.schedule.now"_s);
        QCOMPARE(fake.power->calls, QStringList{u"sleep"_s});
    }

    // A shut down quits the apps first and waits for them; one power action per proceed.
    void shutDownQuitsAppsThenActsOnce() {
        FakePlatform fake;
        fake.defaults->values[u"scheduleWarningStyle"_s] = u"never"_s;
        auto editor = fake.workspace->add(200, u"Editor"_s);
        editor->refusesToQuit = true;
        auto kept = fake.workspace->add(201, u"Kept"_s, u"com.kept"_s);
        fake.defaults->values[u"excludedBundleIDs"_s] = QStringList{u"com.kept"_s};
        AppDelegate delegate(fake.platform);
        delegate.applicationDidFinishLaunching();

        delegate.handleCommand(AppCommand::shutDown);
        QCOMPARE(editor->terminateRequests, 1);
        QCOMPARE(kept->terminateRequests, 0);
        QVERIFY(fake.power->calls.isEmpty()); // still waiting for the editor
        fake.workspace->exit(200);            // the user saved and it quit
        fake.clock().advance(std::chrono::seconds(1));
        QCOMPARE(fake.power->calls, QStringList{u"shutDown"_s});
        // The power action is told exactly whom quit-all asked, so it can refuse if they remain.
        QCOMPARE(fake.power->askedToQuit.size(), 1);
        QCOMPARE(fake.power->askedToQuit.first()->processIdentifier(), 200);
        fake.clock().advance(std::chrono::seconds(60));
        QCOMPARE(fake.power->calls.size(), 1);

        delegate.handleCommand(AppCommand::sleep);
        QCOMPARE(fake.power->calls.last(), u"sleep"_s);
        QCOMPARE(kept->terminateRequests, 0);
    }

    // The shortcuts follow the settings at once, and a press runs the same command as the menu.
    void shortcutsFollowTheSettingsAndDispatchLikeTheMenu() {
        FakePlatform fake;
        fake.defaults->values[u"scheduleWarningStyle"_s] = u"never"_s;
        fake.defaults->values[u"disabledShortcutIDs"_s] = QStringList{u"quitAllApps"_s};
        fake.hotKeys->held = {HotKeyService::hotKeyId(AppCommand::shutDown)};
        AppDelegate delegate(fake.platform);
        QVERIFY(fake.hotKeys->active.empty()); // nothing before launch
        LogCapture log;
        delegate.applicationDidFinishLaunching();
        QCOMPARE(fake.hotKeys->activeIds(), (QList<quint32>{2, 3}));
        QCOMPARE(delegate.hotKeyService().unavailable(), QList<AppCommand>{AppCommand::shutDown});
        QCOMPARE(log.count(u"could not claim the Shut Down shortcut"_s), 1);

        emit fake.hotKeys->pressed(HotKeyService::hotKeyId(AppCommand::sleep));
        QCOMPARE(fake.power->calls, QStringList{u"sleep"_s});

        delegate.settings().setShortcut(AppCommand::restart, false);
        QCOMPARE(fake.hotKeys->activeIds(), QList<quint32>{2});
    }

    // The system's power schedule is brought up to date at launch, after each change of the
    // schedules, on wake and every hour.
    void powerScheduleFollowsChangesWakeAndTheHour() {
        using Action = ShutdownSchedule::Action;
        using Weekday = ShutdownSchedule::Weekday;
        FakePlatform fake; // Monday 2026-11-16 09:00
        fake.alerts->answer = {.button = 0};
        const ShutdownSchedule wake{
            .action = Action::wake, .days = {Weekday::tuesday}, .hour = 7, .minute = 30};
        AppDelegate delegate(fake.platform);
        delegate.settings().setShutdownSchedules({wake});
        QVERIFY(fake.scripts->administratorRuns.isEmpty());

        delegate.applicationDidFinishLaunching();
        QCOMPARE(fake.scripts->administratorRuns,
                 QStringList{u"/opt/vantle/vantle-power schedule wake '11/17/26 07:30:00'"_s});

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
        fake.defaults->values[u"scheduleWarningStyle"_s] = u"never"_s;
        const auto entry = [](int n, const char* action, const char* hour, const char* minute) {
            return QStringLiteral("{\"id\":\"0000000%1-2D3F-4A5B-8C9D-0E1F2A3B4C5D\","
                                  "\"isEnabled\":true,\"action\":\"%2\",\"days\":[2,3],"
                                  "\"hour\":%3,\"minute\":%4}")
                .arg(n)
                .arg(QLatin1String(action), QLatin1String(hour), QLatin1String(minute));
        };
        const QByteArray stored =
            u"[%1]"_s
                .arg(QStringList{entry(1, "Shut Down", "1e18", "0"), entry(2, "Sleep", "9", "-1"),
                                 entry(3, "Wake", "99", "30"), entry(4, "Sleep", "9", "1"),
                                 entry(5, "Power On", "7", "30"), entry(5, "Restart", "8", "0")}
                         .join(QLatin1Char(',')))
                .toUtf8();
        fake.defaults->values[u"shutdownSchedules"_s] = stored;
        LogCapture log;
        AppDelegate delegate(fake.platform);
        delegate.applicationDidFinishLaunching();
        fake.clock().advance(std::chrono::minutes(3)); // through 09:01 and a resync

        QCOMPARE(fake.defaults->values.value(u"shutdownSchedules"_s), DefaultsValue(stored));
        QCOMPARE(delegate.settings().shutdownSchedules().size(), 6);
        QCOMPARE(log.count(u"is not run"_s), 4);
        QCOMPARE(log.count(u"Restart at 08:00 (id 00000005"_s), 1);
        QCOMPARE(fake.scripts->administratorRuns,
                 QStringList{QStringLiteral(
                     "/opt/vantle/vantle-power schedule poweron '11/17/26 07:30:00'")});
        QCOMPARE(fake.power->calls, QStringList{u"sleep"_s});

        QList<ShutdownSchedule> edited = delegate.settings().shutdownSchedules();
        edited[3].minute = 2;
        delegate.settings().setShutdownSchedules(edited);
        QCOMPARE(log.count(u"is not run"_s), 4);
        // What the user wrote survives the next write, bad values included.
        QCOMPARE(decodeShutdownSchedules(*fake.defaults->dataValue(u"shutdownSchedules"_s)),
                 edited);
    }

    // What another launch sends: `vantle --settings [tab]` opens the window on that tab, a
    // command runs, anything else is logged and ignored.
    void actionsFromAnotherLaunch_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<bool>("handled");
        QTest::addColumn<bool>("window");
        QTest::addColumn<QString>("tab");
        QTest::newRow("settings") << AppDelegate::settingsAction() << true << true << u"general"_s;
        QTest::newRow("settings on a tab") << AppDelegate::settingsAction(SettingsTab::exclusions)
                                           << true << true << u"exclusions"_s;
        QTest::newRow("unknown tab") << u"settings:colours"_s << false << false << QString();
        QTest::newRow("command") << u"quitAllApps"_s << true << false << QString();
        QTest::newRow("list-only command") << u"focusSearch"_s << false << false << QString();
    }
    void actionsFromAnotherLaunch() {
        QFETCH(QString, action);
        QFETCH(bool, handled);
        QFETCH(bool, window);
        QFETCH(QString, tab);
        FakePlatform fake;
        AppDelegate delegate(fake.platform);
        LogCapture log;
        QCOMPARE(delegate.handleAction(action), handled);
        QCOMPARE(log.count(u"unknown action"_s), handled ? 0 : 1);
        QCOMPARE(delegate.settingsWindows().window() != nullptr, window);
        if (window) {
            QCOMPARE(rawValue(delegate.settingsWindows().selection().tab()), tab);
        }
    }
};

QTEST_MAIN(TestAppDelegate)
#include "tst_appdelegate.moc"
