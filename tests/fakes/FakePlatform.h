#pragma once

#include "fakes/FakeAlerts.h"
#include "fakes/FakeApplicationCatalog.h"
#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeFileOps.h"
#include "fakes/FakeHotKeyRegistrar.h"
#include "fakes/FakeIdleTime.h"
#include "fakes/FakeLoginItem.h"
#include "fakes/FakeNotificationCenter.h"
#include "fakes/FakePowerActions.h"
#include "fakes/FakePowerAssertion.h"
#include "fakes/FakeScriptRunner.h"
#include "fakes/FakeWorkspace.h"
#include "fakes/InlineExecutor.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/ProductTexts.h"
#include "platform/NullPanelPlacement.h"
#include "platform/Platform.h"

namespace vantle {

// A whole platform of fakes, as the composition root would be given it, with a handle on each.
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
        platform.files = std::make_unique<FakeFileOps>();
        auto fakeApplications = std::make_unique<FakeApplicationCatalog>();
        applications = fakeApplications.get();
        platform.applications = std::move(fakeApplications);
    }
    FakeHotKeyRegistrar* hotKeys;
    FakeApplicationCatalog* applications;
    FakeScriptRunner* scripts;
    FakeAlerts* alerts;
    FakePowerActions* power;
    ManualClock& clock() { return static_cast<ManualClock&>(*platform.clock); }
    FakeWorkspace* workspace;
    FakeIdleTime* idle;
    FakeNotificationCenter* notifications;
};

} // namespace vantle
