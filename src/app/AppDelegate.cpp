#include "app/AppDelegate.h"

#include "model/AppSettings.h"
#include "monitor/AppMonitorService.h"
#include "monitor/AutoQuitManager.h"
#include "monitor/IdleMonitorService.h"
#include "monitor/QuitWarningService.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "schedule/PmsetSync.h"
#include "schedule/PowerActionPerformer.h"
#include "schedule/PrivilegedRunner.h"
#include "schedule/ScheduleMonitorService.h"
#include "schedule/ScheduleWarningService.h"
#include "system/HotKeyService.h"
#include "system/NotificationAuthority.h"
#include "system/Uninstaller.h"
#include "system/UpdateService.h"
#include "ui/AppearancePalette.h"
#include "ui/countdown/CountdownWindow.h"
#include "ui/settings/SettingsWindowManager.h"
#include "ui/status/StatusBarController.h"

#include <QApplication>
#include <QCoreApplication>
#include <QPointer>
#include <algorithm>

namespace vantle {

namespace {
constexpr double kIdleSampleSeconds = 30;
// How long a restart or shut down waits for the apps it asked to quit.
constexpr int kQuitWaitSeconds = 30;
// Registered events are one-shot: an hourly sync moves each on to its next occurrence even when
// nothing else happens. A minute of slack lets the system batch the wake-up.
constexpr std::chrono::seconds kResyncInterval{3600};
constexpr std::chrono::seconds kResyncTolerance{60};
} // namespace

AppDelegate::AppDelegate(Platform& platform, QObject* parent)
    : QObject(parent)
    , m_platform(platform)
    , m_appMonitor(new AppMonitorService(*platform.workspace, *platform.clock,
                                         static_cast<qint32>(QCoreApplication::applicationPid()),
                                         this))
    , m_idleMonitor(new IdleMonitorService(*platform.idleTime, *platform.clock, this))
    , m_settings(new AppSettings(*platform.defaults, *platform.bundle, *platform.clock,
                                 *platform.texts, this))
    , m_autoQuit(new AutoQuitManager(*platform.workspace, *platform.clock, this))
    , m_scheduleMonitor(new ScheduleMonitorService(*platform.clock, *platform.powerAssertion, this))
    , m_notificationAuthority(new NotificationAuthority(*platform.notifications, this))
    , m_quitWarning(
          new QuitWarningService(*platform.notifications, *m_notificationAuthority, *platform.clock,
                                 std::make_unique<CountdownWindow>(*platform.panelPlacement), this))
    , m_scheduleWarning(new ScheduleWarningService(
          *platform.notifications, *m_notificationAuthority, *platform.clock,
          std::make_unique<CountdownWindow>(*platform.panelPlacement), this))
    , m_privilegedRunner(std::make_unique<PrivilegedRunner>(*platform.scripts, *platform.alerts,
                                                            platform.schedulerTool, *platform.texts,
                                                            platform.userName))
    , m_pmsetSync(new PmsetSync(*platform.clock, *platform.executor, *platform.scripts,
                                *m_privilegedRunner, *platform.defaults, this))
    , m_hotKeys(new HotKeyService(*platform.hotKeys, this))
    , m_uninstaller(std::make_unique<Uninstaller>(Uninstaller::Parts{
          *m_settings, *platform.defaults, *platform.scripts, *platform.loginItem, *platform.files,
          platform.schedulerTool, platform.installation}))
    , m_updates(new UpdateService(platform.updater.get(), *platform.clock, this))
    , m_settingsWindows(new SettingsWindowManager(
          SettingsContext{*m_settings, platform, *m_appMonitor, *m_privilegedRunner, *m_hotKeys,
                          *m_notificationAuthority, *m_uninstaller},
          this)) {
    // Removed: every window closes and the app ends.
    m_uninstaller->onRemoved = [] {
        QApplication::closeAllWindows();
        QCoreApplication::quit();
    };
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    // Settings carried over from an earlier version re-create the login item under this identity.
    if (m_settings->didMigrateOnThisLaunch() && m_settings->launchAtLogin()) {
        QString error;
        if (!m_platform.loginItem->registerItem(&error)) {
            logLine(QStringLiteral("could not re-create the login item: %1").arg(error));
        }
    }
    // Every callback installed below holds the delegate weakly and does nothing once it is gone.
    wireAutoQuit();
    wireWarnings();
    wireSchedules();
    m_updates->startUpdater();
    wireHotKeys();
    createStatusBar();
}

void AppDelegate::wireAutoQuit() {
    m_autoQuit->setAppMonitor(m_appMonitor);
    m_autoQuit->setIdleMonitor(m_idleMonitor);
    m_autoQuit->setSettings(m_settings);
    QPointer<AppDelegate> self(this);
    m_autoQuit->onAppsReadyToQuit = [self](const QList<AppInfo>& apps, AutoQuitTrigger) {
        if (self) {
            self->m_quitWarning->present(apps);
        }
    };
    m_autoQuit->start();
    m_idleMonitor->start(kIdleSampleSeconds);
}

void AppDelegate::wireWarnings() {
    QPointer<AppDelegate> self(this);
    m_quitWarning->setSettings(m_settings);
    m_quitWarning->onQuit = [self](const QList<AppInfo>& apps) {
        if (self) {
            self->quitApps(apps);
        }
    };
    m_quitWarning->onCancel = [self](const QList<AppInfo>& apps) {
        if (self) {
            self->m_appMonitor->markJustActive(apps);
        }
    };
    m_quitWarning->registerCategory();
    m_scheduleWarning->registerCategory();
    // The quit warning receives every notification response; the schedule warning's come
    // through here.
    m_quitWarning->forwardUnhandledAction = [self](const QString& identifier) {
        if (self) {
            self->m_scheduleWarning->handleNotificationAction(identifier);
        }
    };
    m_scheduleWarning->setSettings(m_settings);
    m_scheduleWarning->onProceed = [self](ShutdownSchedule::Action action) {
        if (self) {
            self->proceed(action);
        }
    };
}

void AppDelegate::wireSchedules() {
    QPointer<AppDelegate> self(this);
    m_scheduleMonitor->setSettings(m_settings);
    m_scheduleMonitor->onScheduledAction = [self](const ShutdownSchedule& schedule) {
        if (self) {
            self->m_scheduleWarning->warn(schedule.action);
        }
    };
    m_scheduleMonitor->setPmsetSync(m_pmsetSync);
    m_scheduleMonitor->start();
    m_scheduleMonitor->syncPmset();
    // Every change of the schedules, every wake and every hour brings the system's power
    // schedule up to date; overlapping requests collapse inside the sync.
    connect(m_settings, &AppSettings::shutdownSchedulesChanged, m_scheduleMonitor,
            &ScheduleMonitorService::syncPmset);
    connect(m_platform.workspace.get(), &Workspace::didWake, m_scheduleMonitor,
            &ScheduleMonitorService::syncPmset, Qt::QueuedConnection);
    // The handle is a member, so the timer cannot outlive the delegate.
    m_hourlySync = m_platform.clock->repeating(
        kResyncInterval, [this] { m_scheduleMonitor->syncPmset(); }, kResyncTolerance);
}

void AppDelegate::wireHotKeys() {
    QPointer<AppDelegate> self(this);
    // A shortcut runs exactly what the same command from the menu runs.
    m_hotKeys->onCommand = [self](AppCommand command) {
        if (self) {
            self->handleCommand(command);
        }
    };
    registerHotKeys();
    // Switching a shortcut off or on takes effect at once.
    connect(m_settings, &AppSettings::disabledShortcutIDsChanged, this,
            &AppDelegate::registerHotKeys);
}

void AppDelegate::registerHotKeys() {
    m_hotKeys->registerHotKeys(m_settings->enabledGlobalCommands());
}

void AppDelegate::createStatusBar() {
    if (m_platform.appearance) {
        m_appearancePalette = new AppearancePalette(*m_platform.appearance, this);
    }
    if (!m_platform.trayHost) {
        return;
    }
    StatusBarController::Options options;
    options.keyCaps = KeyCapStyle::linuxDesktop;
    // A panel that starts after Vantle at login gets this long; tests and demos shorten it.
    bool ok = false;
    const int waitSeconds = qEnvironmentVariableIntValue("VANTLE_TRAY_WAIT_SECONDS", &ok);
    if (ok && waitSeconds >= 0) {
        options.trayWait = std::chrono::seconds(waitSeconds);
    }
    QPointer<AppDelegate> self(this);
    options.openSettings = [self] {
        if (self) {
            self->showSettings();
        }
    };
    options.openAbout = [self] {
        if (self) {
            self->showSettings(SettingsTab::about);
        }
    };
    m_statusBar = new StatusBarController(
        *m_appMonitor, *m_settings, *m_platform.trayHost, m_platform.appearance.get(),
        *m_platform.clock, options,
        [self](AppCommand command) {
            if (self) {
                self->handleCommand(command);
            }
        },
        [self] {
            const QList<AppCommand> refused =
                self ? self->m_hotKeys->unavailable() : QList<AppCommand>();
            return QSet<AppCommand>(refused.cbegin(), refused.cend());
        },
        this);
    m_statusBar->start();
}

void AppDelegate::showAppList() {
    if (m_statusBar) {
        m_statusBar->showAppList();
    }
}

void AppDelegate::showSettings(std::optional<SettingsTab> tab) {
    m_settingsWindows->show(tab);
}

namespace {
const QString kSettingsAction = QStringLiteral("settings");
} // namespace

QString AppDelegate::settingsAction(std::optional<SettingsTab> tab) {
    return tab ? kSettingsAction + QLatin1Char(':') + rawValue(*tab) : kSettingsAction;
}

bool AppDelegate::handleAction(const QString& name) {
    if (const auto command = fromRawValue<AppCommand>(name); command && isGlobalCommand(*command)) {
        handleCommand(*command);
        return true;
    }
    if (name == kSettingsAction) {
        showSettings();
        return true;
    }
    if (name.startsWith(kSettingsAction + QLatin1Char(':'))) {
        if (const auto tab = fromRawValue<SettingsTab>(name.mid(kSettingsAction.size() + 1))) {
            showSettings(*tab);
            return true;
        }
    }
    logLine(QStringLiteral("ignored the unknown action \"%1\" sent by another launch").arg(name));
    return false;
}

void AppDelegate::handleCommand(AppCommand command) {
    switch (command) {
    case AppCommand::quitAllApps:
        quitAllApps();
        return;
    case AppCommand::sleep:
        m_scheduleWarning->warn(ShutdownSchedule::Action::sleep);
        return;
    case AppCommand::restart:
        m_scheduleWarning->warn(ShutdownSchedule::Action::restart);
        return;
    case AppCommand::shutDown:
        m_scheduleWarning->warn(ShutdownSchedule::Action::shutdown);
        return;
    case AppCommand::focusSearch:
    case AppCommand::selectAll:
    case AppCommand::quitSelected:
        // Handled by the app list itself.
        return;
    }
}

void AppDelegate::quitAllApps() {
    // Remember whom quit-all asks, so a restart can tell when they have gone.
    m_askedToQuit = m_appMonitor->quitAll(false, m_settings->excludedBundleIDs(),
                                          m_settings->protectMenuBarApps());
}

void AppDelegate::proceed(ShutdownSchedule::Action action) {
    if (action != ShutdownSchedule::Action::shutdown &&
        action != ShutdownSchedule::Action::restart) {
        performPowerAction(action, *m_platform.powerActions);
        return;
    }
    quitAllApps();
    performWhenAppsHaveQuit(action, kQuitWaitSeconds);
}

void AppDelegate::performWhenAppsHaveQuit(ShutdownSchedule::Action action, int secondsLeft) {
    const bool stillRunning =
        std::any_of(m_askedToQuit.cbegin(), m_askedToQuit.cend(),
                    [](const RunningApplicationRef& app) { return !app->isTerminated(); });
    if (secondsLeft <= 0 || !stillRunning) {
        m_powerActionWait.reset();
        // The power actions themselves refuse, and say so, if apps with unsaved work remain.
        performPowerAction(action, *m_platform.powerActions, m_askedToQuit);
        return;
    }
    m_powerActionWait =
        m_platform.clock->singleShot(std::chrono::seconds(1), [this, action, secondsLeft] {
            performWhenAppsHaveQuit(action, secondsLeft - 1);
        });
}

void AppDelegate::quitApps(const QList<AppInfo>& apps) {
    QPointer<AppDelegate> self(this);
    m_appMonitor->quit(apps, [self](const QList<AppInfo>& stillRunning) {
        if (!self || stillRunning.isEmpty()) {
            return;
        }
        // Their idle time starts over, so they are not asked again a minute later.
        self->m_appMonitor->markJustActive(stillRunning);
        self->m_quitWarning->reportRefused(stillRunning);
        QStringList names;
        for (const AppInfo& app : stillRunning) {
            names << app.name;
        }
        logLine(QStringLiteral("would not quit: %1").arg(names.join(QStringLiteral(", "))));
    });
}

} // namespace vantle
