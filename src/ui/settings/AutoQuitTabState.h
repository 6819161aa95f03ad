#pragma once

#include "model/AppInfo.h"
#include "model/AppRule.h"

#include <QList>

namespace vantle {

class AppMonitorService;
class AppSettings;

// What the Auto-Quit tab does with the rules, apart from any widget.
class AutoQuitTabState {
public:
    AutoQuitTabState(AppSettings& settings, const AppMonitorService& apps);

    // The timeouts a rule offers, in minutes.
    static const QList<int> kTimeoutMinutes;
    // The idle threshold's range and step, in minutes.
    static constexpr int kIdleMinimum = 5;
    static constexpr int kIdleMaximum = 180;
    static constexpr int kIdleStep = 5;
    // A new rule quits its app after this many minutes.
    static constexpr double kNewRuleTimeout = 30;

    // The running apps no rule names yet, one per app, by name. Apps without a bundle identifier
    // are listed too, though nothing can be ruled for them.
    QList<AppInfo> addableApps() const;
    // Appends a quit rule for `app`; false when it has no bundle identifier.
    bool addRule(const AppInfo& app);
    void setAction(qsizetype index, AppRule::Action action);
    void setTimeout(qsizetype index, double minutes);
    void removeRule(qsizetype index);
    // The running app a rule names, for its icon.
    std::optional<AppInfo> runningApp(const AppRule& rule) const;

private:
    AppSettings& m_settings;
    const AppMonitorService& m_apps;
};

} // namespace vantle
