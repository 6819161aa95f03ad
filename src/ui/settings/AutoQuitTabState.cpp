#include "ui/settings/AutoQuitTabState.h"

#include "model/AppSettings.h"
#include "monitor/AppMonitorService.h"

#include <QSet>
#include <algorithm>

namespace vantle {

const QList<int> AutoQuitTabState::kTimeoutMinutes{5, 10, 15, 20, 30, 45, 60, 90, 120, 180};

AutoQuitTabState::AutoQuitTabState(AppSettings& settings, const AppMonitorService& apps)
    : m_settings(settings)
    , m_apps(apps) {}

QList<AppInfo> AutoQuitTabState::addableApps() const {
    QSet<QString> taken;
    for (const AppRule& rule : m_settings.appRules()) {
        taken.insert(rule.bundleID);
    }
    QList<AppInfo> apps;
    for (const AppInfo& app : m_apps.runningApps()) {
        if (!app.bundleIdentifier) {
            apps.append(app);
        } else if (!taken.contains(*app.bundleIdentifier)) {
            // Several processes of one app are offered once.
            taken.insert(*app.bundleIdentifier);
            apps.append(app);
        }
    }
    std::stable_sort(apps.begin(), apps.end(), [](const AppInfo& a, const AppInfo& b) {
        return a.name.localeAwareCompare(b.name) < 0;
    });
    return apps;
}

bool AutoQuitTabState::addRule(const AppInfo& app) {
    if (!app.bundleIdentifier) {
        return false;
    }
    QList<AppRule> rules = m_settings.appRules();
    rules.append({.bundleID = *app.bundleIdentifier,
                  .name = app.name,
                  .action = AppRule::Action::quit,
                  .timeoutMinutes = kNewRuleTimeout});
    m_settings.setAppRules(rules);
    return true;
}

void AutoQuitTabState::setAction(qsizetype index, AppRule::Action action) {
    QList<AppRule> rules = m_settings.appRules();
    if (index >= 0 && index < rules.size()) {
        rules[index].action = action;
        m_settings.setAppRules(rules);
    }
}

void AutoQuitTabState::setTimeout(qsizetype index, double minutes) {
    QList<AppRule> rules = m_settings.appRules();
    if (index >= 0 && index < rules.size()) {
        rules[index].timeoutMinutes = minutes;
        m_settings.setAppRules(rules);
    }
}

void AutoQuitTabState::removeRule(qsizetype index) {
    QList<AppRule> rules = m_settings.appRules();
    if (index >= 0 && index < rules.size()) {
        rules.removeAt(index);
        m_settings.setAppRules(rules);
    }
}

std::optional<AppInfo> AutoQuitTabState::runningApp(const AppRule& rule) const {
    for (const AppInfo& app : m_apps.runningApps()) {
        if (app.bundleIdentifier == rule.bundleID) {
            return app;
        }
    }
    return std::nullopt;
}

} // namespace vantle
