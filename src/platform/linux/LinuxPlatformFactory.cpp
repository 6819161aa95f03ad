#include "model/ProductTexts.h"
#include "platform/Log.h"
#include "platform/NullPanelPlacement.h"
#include "platform/PlatformFactory.h"
#include "platform/SystemClock.h"
#include "platform/ThreadPoolExecutor.h"
#include "platform/linux/DBusIdleTime.h"
#include "platform/linux/DBusInstanceGuard.h"
#include "platform/linux/FileDefaultsStore.h"
#include "platform/linux/FreedesktopNotificationCenter.h"
#include "platform/linux/GioApplicationCatalog.h"
#include "platform/linux/LinuxBundleInfo.h"
#include "platform/linux/LinuxFileOps.h"
#include "platform/linux/LinuxTrayHost.h"
#include "platform/linux/LogindPowerActions.h"
#include "platform/linux/LogindPowerAssertion.h"
#include "platform/linux/LogindSleepWatcher.h"
#include "platform/linux/PortalAppearance.h"
#include "platform/linux/PortalHotKeyRegistrar.h"
#include "platform/linux/QtAlerts.h"
#include "platform/linux/RuntimeLockInstanceGuard.h"
#include "platform/linux/ShellScriptRunner.h"
#include "platform/linux/StatusNotifierTray.h"
#include "platform/linux/UnsupportedWorkspace.h"
#include "platform/linux/X11Connection.h"
#include "platform/linux/X11HotKeyRegistrar.h"
#include "platform/linux/X11PanelPlacement.h"
#include "platform/linux/X11Workspace.h"
#include "platform/linux/XScreenSaverIdleTime.h"
#include "platform/linux/XdgAutostartLoginItem.h"

#include <QDBusError>
#include <QDir>
#include <QGuiApplication>
#include <pwd.h>
#include <unistd.h>

namespace vantle {

namespace {

// The Linux bundle also owns what its facilities share.
struct LinuxPlatform final : Platform {
    ~LinuxPlatform() override {
        // The facilities hold on to the X connection; let them go first.
        hotKeys.reset();
        workspace.reset();
        trayHost.reset();
        idleTime.reset();
        panelPlacement.reset();
    }
    std::unique_ptr<X11Connection> x11;
    std::unique_ptr<LogindSleepWatcher> sleepWatcher;
    std::unique_ptr<StatusNotifierTray> tray;
};

QString currentUserName() {
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_name) {
        return QString::fromLocal8Bit(entry->pw_name);
    }
    return {};
}

bool isWaylandSession() {
    return qEnvironmentVariable("XDG_SESSION_TYPE") == QLatin1String("wayland") ||
           qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

void attachDesktop(LinuxPlatform& platform) {
    if (isWaylandSession()) {
        // XWayland would show only the X clients: a misleading part of the picture.
        platform.workspace = std::make_unique<UnsupportedWorkspace>(
            QStringLiteral("this Wayland session offers no list of other applications' windows"));
        platform.idleTime = std::make_unique<DBusIdleTime>(QDBusConnection::sessionBus());
        return;
    }
    platform.x11 = X11Connection::open();
    if (!platform.x11) {
        platform.workspace =
            std::make_unique<UnsupportedWorkspace>(QStringLiteral("there is no X display"));
        platform.idleTime = std::make_unique<DBusIdleTime>(QDBusConnection::sessionBus());
        return;
    }
    auto workspace = std::make_unique<X11Workspace>(*platform.x11);
    platform.tray = std::make_unique<StatusNotifierTray>(QDBusConnection::sessionBus());
    workspace->setStatusNotifierPids(platform.tray->pids());
    QObject::connect(platform.tray.get(), &StatusNotifierTray::pidsChanged, workspace.get(),
                     &X11Workspace::setStatusNotifierPids);
    platform.workspace = std::move(workspace);
    platform.idleTime = std::make_unique<XScreenSaverIdleTime>(*platform.x11);
    // Window hints only mean something when Qt's own windows live on that X server.
    if (QGuiApplication::platformName() == QLatin1String("xcb")) {
        platform.panelPlacement = std::make_unique<X11PanelPlacement>(*platform.x11);
    }
}

// Grabs on the X server where there is one of our own; the desktop portal otherwise.
void attachHotKeys(LinuxPlatform& platform) {
    if (platform.x11) {
        platform.hotKeys = std::make_unique<X11HotKeyRegistrar>(*platform.x11);
        return;
    }
    platform.hotKeys = std::make_unique<PortalHotKeyRegistrar>(QDBusConnection::sessionBus(),
                                                               QStringLiteral(VANTLE_BUNDLE_ID));
}

} // namespace

std::unique_ptr<Platform> makePlatform(PlatformUse use) {
    auto platform = std::make_unique<LinuxPlatform>();
    platform->clock = std::make_unique<SystemClock>();
    platform->executor = std::make_unique<ThreadPoolExecutor>();
    platform->bundle = std::make_unique<LinuxBundleInfo>();
    const QString bundleId = platform->bundle->bundleIdentifier().value_or(QString());
    platform->defaults = std::make_unique<FileDefaultsStore>(
        FileDefaultsStore::defaultDirectory(), bundleId, *platform->clock,
        use == PlatformUse::Application ? FileDefaultsStore::Mode::ReadWrite
                                        : FileDefaultsStore::Mode::ReadOnly);
    platform->loginItem =
        std::make_unique<XdgAutostartLoginItem>(XdgAutostartLoginItem::defaultDirectory(), bundleId,
                                                QCoreApplication::applicationFilePath());
    platform->texts = &ProductTexts::linuxDesktop();
    platform->notifications =
        std::make_unique<FreedesktopNotificationCenter>(QDBusConnection::sessionBus());
    platform->scripts = std::make_unique<ShellScriptRunner>();
    platform->alerts = std::make_unique<QtAlerts>();
    // Shipped with the app, so the rule and the prompts name the copy that really runs.
    platform->schedulerTool = PowerSchedulerTool::linuxTool(PowerSchedulerTool::linuxToolDirectory(
        QCoreApplication::applicationDirPath(), QStringLiteral(VANTLE_POWER_RELATIVE_DIR)));
    platform->userName = currentUserName();
    platform->files = std::make_unique<LinuxFileOps>();
    platform->installation = AppInstallation::detect(qEnvironmentVariable("APPIMAGE"),
                                                     QCoreApplication::applicationDirPath(),
                                                     QDir::homePath(), *platform->files);
    if (use != PlatformUse::Inspection) {
        attachDesktop(*platform);
    }
    if (!platform->panelPlacement) {
        platform->panelPlacement = std::make_unique<NullPanelPlacement>();
    }
    if (use == PlatformUse::Application) {
        const QDBusConnection system = QDBusConnection::systemBus();
        const QDBusConnection session = QDBusConnection::sessionBus();
        platform->powerAssertion = std::make_unique<LogindPowerAssertion>(system, session);
        platform->powerActions = std::make_unique<LogindPowerActions>(system, session);
        platform->trayHost = std::make_unique<LinuxTrayHost>(session, platform->x11.get());
        platform->appearance = std::make_unique<PortalAppearance>(session);
        platform->sleepWatcher = std::make_unique<LogindSleepWatcher>(system);
        QObject::connect(platform->sleepWatcher.get(), &LogindSleepWatcher::didWake,
                         platform->workspace.get(), &Workspace::didWake);
        attachHotKeys(*platform);
        platform->applications = std::make_unique<GioApplicationCatalog>();
    }
    return platform;
}

std::unique_ptr<InstanceGuard> makeInstanceGuard() {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        logLine(QStringLiteral("no D-Bus session bus (%1); a lock in the runtime folder keeps "
                               "to one running copy")
                    .arg(bus.lastError().message()));
        return std::make_unique<RuntimeLockInstanceGuard>(
            RuntimeLockInstanceGuard::defaultPath(QStringLiteral(VANTLE_BUNDLE_ID)));
    }
    return std::make_unique<DBusInstanceGuard>(bus, QStringLiteral(VANTLE_BUNDLE_ID));
}

} // namespace vantle
