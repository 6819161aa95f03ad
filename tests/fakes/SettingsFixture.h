#pragma once

#include "app/AppDelegate.h"
#include "fakes/FakePlatform.h"
#include "ui/settings/SettingsContext.h"
#include "ui/settings/SettingsWindowManager.h"

namespace vantle {

// The services as the app builds them, over fakes, and the context the settings tabs get.
struct SettingsFixture {
    FakePlatform fake;
    AppDelegate delegate{fake.platform};

    SettingsContext context() {
        return {delegate.settings(),      fake.platform,
                delegate.appMonitor(),    delegate.privilegedRunner(),
                delegate.hotKeyService(), delegate.notificationAuthority(),
                delegate.uninstaller()};
    }
    SettingsWindowManager& windows() { return delegate.settingsWindows(); }
    AppSettings& settings() { return delegate.settings(); }
    // Starts an app the monitor then lists.
    void launch(qint32 pid, const QString& name, std::optional<QString> bundleId) {
        fake.workspace->add(pid, name, std::move(bundleId));
        fake.workspace->emitLaunch(pid);
    }
};

} // namespace vantle
