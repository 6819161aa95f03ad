#pragma once

#include "platform/Alerts.h"
#include "platform/BundleInfo.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/DesktopAppearance.h"
#include "platform/Executor.h"
#include "platform/HotKeyRegistrar.h"
#include "platform/IdleTime.h"
#include "platform/LoginItem.h"
#include "platform/NotificationCenter.h"
#include "platform/PanelPlacement.h"
#include "platform/PowerActions.h"
#include "platform/PowerAssertion.h"
#include "platform/PowerSchedulerTool.h"
#include "platform/ScriptRunner.h"
#include "platform/TrayHost.h"
#include "platform/Workspace.h"

#include <functional>
#include <memory>

namespace vantle {

struct ProductTexts;

// Every OS facility the application uses, built once by the composition root for the platform
// it runs on. Services receive only the interfaces they need.
struct Platform {
    virtual ~Platform() = default;

    std::unique_ptr<Clock> clock;
    std::unique_ptr<Executor> executor;
    std::unique_ptr<DefaultsStore> defaults;
    std::unique_ptr<BundleInfo> bundle;
    std::unique_ptr<LoginItem> loginItem;
    // Only for uses that look at the desktop (the app itself, the app listing).
    std::unique_ptr<Workspace> workspace;
    std::unique_ptr<IdleTime> idleTime;
    std::unique_ptr<PanelPlacement> panelPlacement;
    std::unique_ptr<PowerAssertion> powerAssertion;
    std::unique_ptr<PowerActions> powerActions;
    // Shell scripts, plain and as the administrator, and the alerts that explain the prompt.
    std::unique_ptr<ScriptRunner> scripts;
    std::unique_ptr<Alerts> alerts;
    PowerSchedulerTool schedulerTool;
    // The short name of the user the app runs as.
    QString userName;
    // The app and the diagnostics (which report the notification status).
    std::unique_ptr<NotificationCenter> notifications;
    const ProductTexts* texts = nullptr;
    // System-wide shortcuts (the app only).
    std::unique_ptr<HotKeyRegistrar> hotKeys;
    // The app only: where the tray icon can go, and the desktop's light or dark appearance.
    // Null where there is no desktop to ask.
    std::unique_ptr<TrayHost> trayHost;
    std::unique_ptr<DesktopAppearance> appearance;
};

} // namespace vantle
