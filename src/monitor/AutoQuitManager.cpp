#include "monitor/AutoQuitManager.h"

#include "model/AppSettings.h"
#include "monitor/AppMonitorService.h"
#include "monitor/IdleMonitorService.h"
#include "monitor/QuitExemptions.h"
#include "platform/Workspace.h"

namespace vantle {

namespace {

using namespace std::chrono_literals;

constexpr Milliseconds kPassInterval = 60s;
// Rule time-outs count in minutes, so a pass a few seconds early or late changes nothing; the
// tolerance lets the clock run it in the same wake-up as the idle sample and the schedule tick.
constexpr Milliseconds kPassTolerance = 5s;

} // namespace

AutoQuitManager::AutoQuitManager(Workspace& workspace, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_workspace(workspace)
    , m_clock(clock) {}

void AutoQuitManager::start() {
    m_timer = m_clock.repeating(
        kPassInterval, [this] { evaluate(); }, kPassTolerance);
}

void AutoQuitManager::evaluate() {
    if (!hasSources()) {
        return;
    }
    sweepIdleSession();
    // The callback may have torn down a source.
    if (hasSources()) {
        applyRules();
    }
}

void AutoQuitManager::sweepIdleSession() {
    if (!m_settings->idleQuitEnabled()) {
        return;
    }
    // Inclusive: idle for exactly the time-out is enough.
    const double idleMinutes = m_idleMonitor->systemIdleSeconds() / 60;
    if (m_settings->idleQuitTimeout() > idleMinutes) {
        m_idleQuitFired = false;
        return;
    }
    // Once per idle period: the user must come back before it can fire again.
    if (m_idleQuitFired) {
        return;
    }
    m_idleQuitFired = true;

    // The frontmost app is included: nobody is using it either.
    const QuitExemptions exemptions(m_settings->excludedBundleIDs(),
                                    m_settings->protectMenuBarApps());
    QList<AppInfo> batch;
    for (const AppInfo& app : m_appMonitor->runningApps()) {
        if (!exemptions.spares(app.bundleIdentifier, app.isBackground)) {
            batch.append(app);
        }
    }
    if (!batch.isEmpty() && onAppsReadyToQuit) {
        onAppsReadyToQuit(batch, AutoQuitTrigger::idleSweep);
    }
}

void AutoQuitManager::applyRules() {
    const QDateTime now = m_clock.now();
    // The app in front is in use, however old its recorded date.
    const std::optional<qint32> frontmost = m_workspace.frontmostApplication();
    const bool protectMenuBarApps = m_settings->protectMenuBarApps();
    const QList<AppRule> rules = m_settings->appRules();
    const QList<AppInfo> apps = m_appMonitor->runningApps();

    // Rule order, then list order; an app named by two rules goes in twice.
    QList<AppInfo> batch;
    for (const AppRule& rule : rules) {
        for (const AppInfo& app : apps) {
            if (app.bundleIdentifier != rule.bundleID || frontmost == app.id) {
                continue;
            }
            if (protectMenuBarApps && app.isBackground) {
                continue;
            }
            const double idleSeconds =
                static_cast<double>(m_appMonitor->lastActiveDate(app.id).msecsTo(now)) / 1000;
            if (rule.timeoutMinutes * 60 > idleSeconds) {
                continue;
            }
            if (rule.action == AppRule::Action::quit) {
                batch.append(app);
            } else if (const RunningApplicationRef running = m_workspace.application(app.id)) {
                // Repeated every pass while the app stays idle; hiding a hidden app is harmless.
                running->hide();
            }
        }
    }
    if (!batch.isEmpty() && onAppsReadyToQuit) {
        onAppsReadyToQuit(batch, AutoQuitTrigger::rule);
    }
}

} // namespace vantle
