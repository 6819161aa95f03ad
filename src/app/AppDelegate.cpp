#include "app/AppDelegate.h"

#include "model/AppSettings.h"
#include "monitor/AppMonitorService.h"
#include "monitor/AutoQuitCountdownWindow.h"
#include "monitor/AutoQuitManager.h"
#include "monitor/IdleMonitorService.h"
#include "monitor/QuitWarningService.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "system/NotificationAuthority.h"

#include <QCoreApplication>
#include <QPointer>

namespace vantle {

namespace {
constexpr double kIdleSampleSeconds = 30;
}

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
    , m_notificationAuthority(new NotificationAuthority(*platform.notifications,
                                                        platform.openNotificationSettings, this))
    , m_quitWarning(new QuitWarningService(
          *platform.notifications, *m_notificationAuthority, *platform.clock,
          std::make_unique<AutoQuitCountdownWindow>(*platform.panelPlacement), this)) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    // Settings carried over from an earlier version re-create the login item under this identity.
    if (m_settings->didMigrateOnThisLaunch() && m_settings->launchAtLogin()) {
        QString error;
        if (!m_platform.loginItem->registerItem(&error)) {
            logLine(QStringLiteral("could not re-create the login item: %1").arg(error));
        }
    }

    m_autoQuit->setAppMonitor(m_appMonitor);
    m_autoQuit->setIdleMonitor(m_idleMonitor);
    m_autoQuit->setSettings(m_settings);
    // Every callback holds the delegate weakly and does nothing once it is gone.
    QPointer<AppDelegate> self(this);
    m_autoQuit->onAppsReadyToQuit = [self](const QList<AppInfo>& apps) {
        if (self) {
            self->m_quitWarning->present(apps);
        }
    };

    m_quitWarning->setSettings(m_settings);
    m_quitWarning->onQuit = [self](const QList<AppInfo>& apps) {
        if (self) {
            self->quitApps(apps);
        }
    };
    m_quitWarning->onCancel = [self](const QList<AppInfo>& apps) {
        if (self) {
            self->markJustActive(apps);
        }
    };

    m_quitWarning->registerCategory();
    // Schedule warning actions ("Vantle.schedule.now", "Vantle.schedule.cancel") are routed here
    // once that warning exists; anything else a notification reports is not ours to act on.
    m_quitWarning->forwardUnhandledAction = [](const QString&) {};

    m_autoQuit->start();
    m_idleMonitor->start(kIdleSampleSeconds);
}

void AppDelegate::quitApps(const QList<AppInfo>& apps) {
    QPointer<AppDelegate> self(this);
    m_appMonitor->quit(apps, [self](const QList<AppInfo>& stillRunning) {
        if (!self || stillRunning.isEmpty()) {
            return;
        }
        // Their idle time starts over, so they are not asked again a minute later.
        self->markJustActive(stillRunning);
        self->m_quitWarning->reportRefused(stillRunning);
        QStringList names;
        for (const AppInfo& app : stillRunning) {
            names << app.name;
        }
        logLine(QStringLiteral("would not quit: %1").arg(names.join(QStringLiteral(", "))));
    });
}

void AppDelegate::markJustActive(const QList<AppInfo>& apps) {
    m_appMonitor->markJustActive(apps);
}

} // namespace vantle
