#pragma once

#include "model/AppCommand.h"
#include "model/ShutdownSchedule.h"
#include "platform/Clock.h"
#include "platform/RunningApplication.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <functional>
#include <memory>

namespace vantle {

class AppMonitorService;
class AppSettings;
class AutoQuitManager;
class HotKeyService;
class IdleMonitorService;
class NotificationAuthority;
class PmsetSync;
class PrivilegedRunner;
class QuitWarningService;
class ScheduleMonitorService;
class ScheduleWarningService;
class StatusBarController;
class AppearancePalette;
struct AppInfo;
struct Platform;

// Owns one instance of every service for the life of the process, wires them together with
// callbacks and starts their work. Construction creates the services and starts nothing; the work
// begins in applicationDidFinishLaunching().
class AppDelegate final : public QObject {
    Q_OBJECT
public:
    explicit AppDelegate(Platform& platform, QObject* parent = nullptr);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();

    AppMonitorService& appMonitor() const { return *m_appMonitor; }
    IdleMonitorService& idleMonitor() const { return *m_idleMonitor; }
    AppSettings& settings() const { return *m_settings; }
    AutoQuitManager& autoQuit() const { return *m_autoQuit; }
    QuitWarningService& quitWarning() const { return *m_quitWarning; }
    NotificationAuthority& notificationAuthority() const { return *m_notificationAuthority; }
    ScheduleMonitorService& scheduleMonitor() const { return *m_scheduleMonitor; }
    ScheduleWarningService& scheduleWarning() const { return *m_scheduleWarning; }
    PrivilegedRunner& privilegedRunner() const { return *m_privilegedRunner; }
    PmsetSync& pmsetSync() const { return *m_pmsetSync; }
    // The one holder of the system-wide shortcuts, for the views that show them.
    HotKeyService& hotKeyService() const { return *m_hotKeys; }

    // What a shortcut or a menu item asked for.
    void handleCommand(AppCommand command);
    // A later launch asked to see Vantle: the app list, at the tray icon or as a window.
    void showAppList();
    // Null before launch, and where the platform offers no tray host to ask.
    StatusBarController* statusBar() const { return m_statusBar; }

private:
    // The wiring of applicationDidFinishLaunching(), one feature each.
    void wireAutoQuit();
    void wireWarnings();
    void wireSchedules();
    void wireHotKeys();

    void createStatusBar();
    void quitApps(const QList<AppInfo>& apps);
    void quitAllApps();
    void proceed(ShutdownSchedule::Action action);
    void performWhenAppsHaveQuit(ShutdownSchedule::Action action, int secondsLeft);
    void registerHotKeys();

    Platform& m_platform;
    AppMonitorService* m_appMonitor;
    IdleMonitorService* m_idleMonitor;
    AppSettings* m_settings;
    AutoQuitManager* m_autoQuit;
    ScheduleMonitorService* m_scheduleMonitor;
    NotificationAuthority* m_notificationAuthority;
    QuitWarningService* m_quitWarning;
    ScheduleWarningService* m_scheduleWarning;
    std::unique_ptr<PrivilegedRunner> m_privilegedRunner;
    PmsetSync* m_pmsetSync;
    HotKeyService* m_hotKeys;
    Timer m_hourlySync;
    // The apps the last quit-all before a restart or shut down asked to quit.
    QList<RunningApplicationRef> m_askedToQuit;
    Timer m_powerActionWait;
    StatusBarController* m_statusBar = nullptr;
    AppearancePalette* m_appearancePalette = nullptr;
};

} // namespace vantle
