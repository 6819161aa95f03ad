#pragma once

#include "fakes/FakeAlerts.h"
#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeFileOps.h"
#include "fakes/FakeHotKeyRegistrar.h"
#include "fakes/FakeLoginItem.h"
#include "fakes/FakeNotificationCenter.h"
#include "fakes/FakeScriptRunner.h"
#include "fakes/FakeWorkspace.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "monitor/AppMonitorService.h"
#include "platform/Platform.h"
#include "schedule/PrivilegedRunner.h"
#include "system/HotKeyService.h"
#include "system/NotificationAuthority.h"
#include "system/Uninstaller.h"
#include "ui/settings/SettingsContext.h"

#include <memory>

namespace vantle {

// Everything the About and Advanced tabs and the uninstaller are built from, over fakes. A test may
// swap any part of `platform` for a real one before calling build(); the typed pointers are valid
// only for parts left fake.
struct RemovalFixture {
    Platform platform;
    FakeNotificationCenter* notifications;
    FakeScriptRunner* scripts;
    FakeLoginItem* loginItem;
    FakeFileOps* files;
    MemoryDefaultsStore* defaults;
    FakeWorkspace workspace;
    FakeHotKeyRegistrar hotKeyRegistrar;

    std::unique_ptr<AppSettings> settings;
    std::unique_ptr<AppMonitorService> apps;
    std::unique_ptr<PrivilegedRunner> privileged;
    std::unique_ptr<HotKeyService> hotKeys;
    std::unique_ptr<NotificationAuthority> authority;
    std::unique_ptr<Uninstaller> uninstaller;
    std::unique_ptr<SettingsContext> context;
    int removedCount = 0;

    RemovalFixture() {
        platform.clock = std::make_unique<ManualClock>();
        platform.bundle = std::make_unique<FakeBundleInfo>();
        platform.texts = &ProductTexts::linuxDesktop();
        platform.notifications = own(notifications);
        platform.scripts = own(scripts);
        platform.loginItem = own(loginItem);
        platform.files = own(files);
        platform.defaults = own(defaults);
        platform.alerts = std::make_unique<FakeAlerts>();
        platform.schedulerTool =
            PowerSchedulerTool::linuxTool(QStringLiteral("/usr/libexec/vantle"));
        platform.userName = QStringLiteral("ada");
        platform.installation = {AppInstallation::Kind::trash,
                                 QStringLiteral("/home/ada/Apps/Vantle.AppImage")};
    }

    ManualClock& clock() { return static_cast<ManualClock&>(*platform.clock); }

    SettingsContext& build() {
        settings = std::make_unique<AppSettings>(*platform.defaults, *platform.bundle,
                                                 *platform.clock, *platform.texts);
        apps = std::make_unique<AppMonitorService>(workspace, *platform.clock, 1);
        privileged = std::make_unique<PrivilegedRunner>(*platform.scripts, *platform.alerts,
                                                        platform.schedulerTool, *platform.texts,
                                                        platform.userName);
        hotKeys = std::make_unique<HotKeyService>(hotKeyRegistrar);
        authority = std::make_unique<NotificationAuthority>(*platform.notifications);
        uninstaller = std::make_unique<Uninstaller>(Uninstaller::Parts{
            *settings, *platform.defaults, *platform.scripts, *platform.loginItem, *platform.files,
            platform.schedulerTool, platform.installation});
        uninstaller->onRemoved = [this] { ++removedCount; };
        context = std::make_unique<SettingsContext>(SettingsContext{
            *settings, platform, *apps, *privileged, *hotKeys, *authority, *uninstaller});
        return *context;
    }

private:
    template <typename T>
    static std::unique_ptr<T> own(T*& raw) {
        auto made = std::make_unique<T>();
        raw = made.get();
        return made;
    }
};

} // namespace vantle
