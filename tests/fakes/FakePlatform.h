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
    // Puts a new fake into one of the bundle's slots and keeps a handle on it.
    template <typename Fake, typename Facility>
    static Fake* install(std::unique_ptr<Facility>& slot) {
        auto fake = std::make_unique<Fake>();
        Fake* handle = fake.get();
        slot = std::move(fake);
        return handle;
    }

    Platform platform;
    MemoryDefaultsStore* defaults = install<MemoryDefaultsStore>(platform.defaults);
    FakeLoginItem* loginItem = install<FakeLoginItem>(platform.loginItem);
    FakeWorkspace* workspace = install<FakeWorkspace>(platform.workspace);
    FakeIdleTime* idle = install<FakeIdleTime>(platform.idleTime);
    FakeNotificationCenter* notifications = install<FakeNotificationCenter>(platform.notifications);
    FakePowerActions* power = install<FakePowerActions>(platform.powerActions);
    FakeScriptRunner* scripts = install<FakeScriptRunner>(platform.scripts);
    FakeAlerts* alerts = install<FakeAlerts>(platform.alerts);
    FakeHotKeyRegistrar* hotKeys = install<FakeHotKeyRegistrar>(platform.hotKeys);
    FakeApplicationCatalog* applications = install<FakeApplicationCatalog>(platform.applications);

    FakePlatform() {
        platform.clock = std::make_unique<ManualClock>();
        platform.executor = std::make_unique<InlineExecutor>();
        platform.bundle = std::make_unique<FakeBundleInfo>();
        platform.texts = &ProductTexts::linuxDesktop();
        platform.panelPlacement = std::make_unique<NullPanelPlacement>();
        platform.powerAssertion = std::make_unique<FakePowerAssertion>();
        platform.schedulerTool = PowerSchedulerTool::linuxTool(QStringLiteral("/opt/vantle"));
        platform.userName = QStringLiteral("ada");
        platform.files = std::make_unique<FakeFileOps>();
    }
    ManualClock& clock() { return static_cast<ManualClock&>(*platform.clock); }
};

} // namespace vantle
