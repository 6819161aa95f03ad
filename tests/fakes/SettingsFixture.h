#pragma once

#include "app/AppDelegate.h"
#include "fakes/FakePlatform.h"
#include "ui/settings/SettingsContext.h"
#include "ui/settings/SettingsWindowManager.h"

#include <optional>

namespace vantle {

// The services as the app builds them, over fakes, and the context the settings tabs get.
struct SettingsFixture {
    // `toolPath` replaces the power tool, e.g. with one a passwordless rule may name.
    explicit SettingsFixture(std::optional<QString> toolPath = std::nullopt)
        : delegate(withTool(fake, std::move(toolPath))) {}

    FakePlatform fake;
    AppDelegate delegate;

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

private:
    static Platform& withTool(FakePlatform& fake, std::optional<QString> toolPath) {
        if (toolPath) {
            fake.platform.schedulerTool.path = *toolPath;
        }
        return fake.platform;
    }
};

} // namespace vantle
