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

namespace vantle {

// Everything a settings tab is built from, over fakes: a tab made from `context` reads and
// changes `settings`, sees the apps of `workspace`, answers alerts through `alerts`.
struct SettingsTabFixture {
    // Root's own file in root's own folder: a tool a passwordless rule may name.
    static PowerSchedulerTool rootOwnedTool() {
        PowerSchedulerTool tool = PowerSchedulerTool::linuxTool(QStringLiteral("/usr/bin"));
        tool.path = QStringLiteral("/usr/bin/true");
        return tool;
    }

    explicit SettingsTabFixture(PowerSchedulerTool tool = rootOwnedTool())
        : privileged(scripts, alerts, std::move(tool), ProductTexts::linuxDesktop(),
                     QStringLiteral("tester")) {
        platform.texts = &ProductTexts::linuxDesktop();
    }

    ManualClock clock;
    FakeWorkspace workspace;
    MemoryDefaultsStore store;
    FakeBundleInfo bundle;
    AppSettings settings{store, bundle, clock, ProductTexts::linuxDesktop()};
    AppMonitorService apps{workspace, clock, 1};
    FakeScriptRunner scripts;
    FakeAlerts alerts;
    PrivilegedRunner privileged;
    FakeHotKeyRegistrar registrar;
    HotKeyService hotKeys{registrar};
    FakeNotificationCenter notificationCenter;
    NotificationAuthority notifications{notificationCenter};
    FakeLoginItem loginItem;
    FakeFileOps files;
    Uninstaller uninstaller{Uninstaller::Parts{settings, store, scripts, loginItem, files,
                                               PowerSchedulerTool::linuxTool(QString()),
                                               AppInstallation{}}};
    Platform platform;
    SettingsContext context{settings, platform,      apps,       privileged,
                            hotKeys,  notifications, uninstaller};

    void launch(qint32 pid, const QString& name, std::optional<QString> bundleId) {
        workspace.add(pid, name, std::move(bundleId));
        workspace.emitLaunch(pid);
    }
};

} // namespace vantle
