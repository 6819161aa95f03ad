#pragma once

#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeWorkspace.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "monitor/AppMonitorService.h"
#include "ui/applist/AppListState.h"

#include <QStringList>

namespace vantle {

// A monitor over a fake workspace and the list state over it, as the app list sees them.
struct AppListFixture {
    static constexpr qint32 kSelfPid = 1;

    ManualClock clock;
    FakeWorkspace workspace;
    MemoryDefaultsStore store;
    FakeBundleInfo bundle;
    AppSettings settings{store, bundle, clock, ProductTexts::linuxDesktop()};
    AppMonitorService monitor{workspace, clock, kSelfPid};
    AppListState state{monitor, settings, KeyCapStyle::linuxDesktop};

    // Starts an app (regular, or a tray-only one) and lets the monitor see it.
    std::shared_ptr<FakeRunningApplication> launch(qint32 pid, const QString& name,
                                                   bool background = false) {
        auto app =
            workspace.add(pid, name, std::nullopt,
                          background ? ActivationPolicy::accessory : ActivationPolicy::regular);
        workspace.emitLaunch(pid);
        return app;
    }
    void exit(qint32 pid) { workspace.emitTerminate(pid); }
    static QStringList names(const QList<AppInfo>& apps) {
        QStringList result;
        for (const AppInfo& app : apps) {
            result << app.name;
        }
        return result;
    }
    QStringList visibleNames() const { return names(state.visibleApps()); }
};

} // namespace vantle
