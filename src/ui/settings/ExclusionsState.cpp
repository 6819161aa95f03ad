#include "ui/settings/ExclusionsState.h"

#include "model/AppSettings.h"
#include "monitor/AppMonitorService.h"

#include <QSet>

namespace vantle {

ExclusionsState::ExclusionsState(AppSettings& settings, AppMonitorService& apps, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_apps(apps) {
    connect(&m_settings, &AppSettings::excludedBundleIDsChanged, this, &ExclusionsState::changed);
    connect(&m_apps, &AppMonitorService::runningAppsChanged, this, &ExclusionsState::changed);
}

QList<ExclusionsState::RunningApp> ExclusionsState::runningApps() const {
    const QStringList& excluded = m_settings.excludedBundleIDs();
    QList<RunningApp> rows;
    for (const AppInfo& app : m_apps.runningApps()) {
        rows.append({app, app.bundleIdentifier && excluded.contains(*app.bundleIdentifier)});
    }
    return rows;
}

QStringList ExclusionsState::notRunning() const {
    QSet<QString> running;
    for (const AppInfo& app : m_apps.runningApps()) {
        if (app.bundleIdentifier) {
            running.insert(*app.bundleIdentifier);
        }
    }
    QStringList ids;
    for (const QString& id : m_settings.excludedBundleIDs()) {
        if (!running.contains(id) && !ids.contains(id)) {
            ids.append(id);
        }
    }
    return ids;
}

void ExclusionsState::setExcluded(const AppInfo& app, bool excluded) {
    if (!app.bundleIdentifier || app.bundleIdentifier->isEmpty()) {
        return;
    }
    QStringList ids = m_settings.excludedBundleIDs();
    if (excluded && !ids.contains(*app.bundleIdentifier)) {
        ids.append(*app.bundleIdentifier);
    } else if (!excluded) {
        ids.removeAll(*app.bundleIdentifier);
    }
    m_settings.setExcludedBundleIDs(ids);
}

void ExclusionsState::remove(const QString& bundleIdentifier) {
    QStringList ids = m_settings.excludedBundleIDs();
    ids.removeAll(bundleIdentifier);
    m_settings.setExcludedBundleIDs(ids);
}

std::optional<ExclusionsState::Refusal> ExclusionsState::addChosen(const QList<ChosenApp>& chosen) {
    QStringList ids = m_settings.excludedBundleIDs();
    QStringList unmatched;
    for (const ChosenApp& app : chosen) {
        if (!app.bundleIdentifier || app.bundleIdentifier->isEmpty()) {
            unmatched.append(app.name);
        } else if (!ids.contains(*app.bundleIdentifier)) {
            ids.append(*app.bundleIdentifier);
        }
    }
    m_settings.setExcludedBundleIDs(ids);
    if (unmatched.isEmpty()) {
        return std::nullopt;
    }
    return Refusal{unmatched.size() == 1 ? tr("One app couldn't be added")
                                         : tr("Some apps couldn't be added"),
                   unmatched.join(QStringLiteral(", ")) +
                       tr(" — no bundle identifier, so there's nothing for Vantle to match "
                          "against.")};
}

} // namespace vantle
