#include "monitor/AppMonitorService.h"

#include "monitor/QuitExemptions.h"
#include "platform/Workspace.h"

#include <QCollator>
#include <QSet>
#include <algorithm>

namespace vantle {

namespace {

using namespace std::chrono_literals;

constexpr Milliseconds kPollInterval = 5s;
constexpr Milliseconds kRefusalCheckDelay = 10s;
constexpr Milliseconds kRefreshAfterQuitDelay = 800ms;

} // namespace

AppMonitorService::AppMonitorService(Workspace& workspace, Clock& clock, qint32 selfPid,
                                     QObject* parent)
    : QObject(parent)
    , m_workspace(workspace)
    , m_clock(clock)
    , m_selfPid(selfPid) {
    connect(&m_workspace, &Workspace::didLaunchApplication, this,
            &AppMonitorService::applicationLaunched);
    connect(&m_workspace, &Workspace::didTerminateApplication, this,
            &AppMonitorService::applicationTerminated);
    connect(&m_workspace, &Workspace::didActivateApplication, this,
            &AppMonitorService::applicationActivated);
    connect(&m_workspace, &Workspace::didDeactivateApplication, this,
            &AppMonitorService::applicationDeactivated);
    refresh();
}

QDateTime AppMonitorService::lastActiveDate(qint32 pid) const {
    const auto it = m_lastActiveDates.constFind(pid);
    return it != m_lastActiveDates.constEnd() ? *it : m_clock.now();
}

void AppMonitorService::refresh() {
    const QDateTime now = m_clock.now();
    QList<RunningApplicationRef> apps = m_workspace.runningApplications();
    apps.removeIf([this](const RunningApplicationRef& app) {
        return !app || app->processIdentifier() == m_selfPid;
    });

    // A process first noticed now counts as active now, never as idle since it started.
    QSet<qint32> running;
    running.reserve(apps.size());
    for (const RunningApplicationRef& app : std::as_const(apps)) {
        const qint32 pid = app->processIdentifier();
        running.insert(pid);
        if (!m_lastActiveDates.contains(pid)) {
            m_lastActiveDates.insert(pid, now);
        }
    }
    // Forgetting gone processes means a reused pid starts afresh.
    m_lastActiveDates.removeIf([&running](const std::pair<const qint32&, QDateTime&>& entry) {
        return !running.contains(entry.first);
    });

    QList<AppInfo> infos;
    infos.reserve(apps.size());
    for (const RunningApplicationRef& app : std::as_const(apps)) {
        AppInfo info;
        info.id = app->processIdentifier();
        info.name = app->localizedName().value_or(QStringLiteral("Unknown"));
        info.bundleIdentifier = app->bundleIdentifier();
        info.isBackground = app->activationPolicy() != ActivationPolicy::regular;
        info.lastActiveDate = m_lastActiveDates.value(info.id, now);
        info.icon = app->icon();
        infos.append(std::move(info));
    }

    // Stable, so apps whose names compare equal keep the system's order.
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(infos.begin(), infos.end(), [&collator](const AppInfo& a, const AppInfo& b) {
        if (a.isBackground != b.isBackground) {
            return !a.isBackground;
        }
        return collator.compare(a.name, b.name) < 0;
    });

    m_runningApps = std::move(infos);
    emit runningAppsChanged();
}

void AppMonitorService::setListVisible(bool visible) {
    m_pollTimer.reset();
    m_isListVisible = visible;
    emit isListVisibleChanged();
    if (visible) {
        refresh();
        m_pollTimer = m_clock.repeating(kPollInterval, [this] { refresh(); });
    }
}

void AppMonitorService::quit(const QList<AppInfo>& apps,
                             std::function<void(QList<AppInfo>)> completion) {
    // Keep the instance handles: the refusal check must not be fooled by a pid reused meanwhile.
    QList<QuitRequest> requests;
    for (const AppInfo& info : apps) {
        if (RunningApplicationRef app = m_workspace.application(info.id)) {
            requests.append({info, std::move(app)});
        }
    }
    for (const QuitRequest& request : std::as_const(requests)) {
        request.app->terminate();
    }

    const quint64 id = m_nextQuitId++;
    m_quitChecks[id] = m_clock.singleShot(kRefusalCheckDelay,
                                          [this, id, requests, completion = std::move(completion)] {
                                              finishQuit(id, requests, completion);
                                          });
}

void AppMonitorService::finishQuit(quint64 id, const QList<QuitRequest>& requests,
                                   const std::function<void(QList<AppInfo>)>& completion) {
    QList<AppInfo> stillRunning;
    for (const QuitRequest& request : requests) {
        if (!request.app->isTerminated()) {
            stillRunning.append(request.info);
        }
    }
    // Copied first: dropping the fired timer may free the closure that owns the arguments, and
    // the completion may in turn destroy this service.
    const std::function<void(QList<AppInfo>)> report = completion;
    auto fired = m_quitChecks.extract(id);
    refresh();
    if (report) {
        report(std::move(stillRunning));
    }
}

void AppMonitorService::forceQuit(const QList<AppInfo>& apps) {
    for (const AppInfo& info : apps) {
        if (const RunningApplicationRef app = m_workspace.application(info.id)) {
            app->forceTerminate();
        }
    }
}

QList<RunningApplicationRef> AppMonitorService::quitAll(bool force,
                                                        const QStringList& excludedBundleIDs,
                                                        bool protectMenuBarApps) {
    const QuitExemptions exemptions(excludedBundleIDs, protectMenuBarApps);
    QList<RunningApplicationRef> asked;
    for (const RunningApplicationRef& app : m_workspace.runningApplications()) {
        if (!app || app->processIdentifier() == m_selfPid ||
            exemptions.spares(app->bundleIdentifier(),
                              app->activationPolicy() != ActivationPolicy::regular)) {
            continue;
        }
        asked.append(app);
        if (force) {
            app->forceTerminate();
        } else {
            app->terminate();
        }
    }
    refreshAfterQuit();
    return asked;
}

void AppMonitorService::refreshAfterQuit() {
    m_refreshAfterQuitTimer = m_clock.singleShot(kRefreshAfterQuitDelay, [this] { refresh(); });
}

void AppMonitorService::markJustActive(const QList<AppInfo>& apps) {
    const QDateTime now = m_clock.now();
    for (const AppInfo& app : apps) {
        m_lastActiveDates.insert(app.id, now);
    }
    refresh();
}

void AppMonitorService::stamp(const RunningApplicationRef& app) {
    m_lastActiveDates.insert(app->processIdentifier(), m_clock.now());
}

void AppMonitorService::applicationLaunched(const RunningApplicationRef& app) {
    if (app) {
        stamp(app);
    }
    refresh();
}

void AppMonitorService::applicationTerminated() {
    refresh();
}

void AppMonitorService::applicationActivated(const RunningApplicationRef& app) {
    if (app) {
        stamp(app);
        refresh();
    }
}

// The date is the later of coming to the front and leaving it; the list shows no change.
void AppMonitorService::applicationDeactivated(const RunningApplicationRef& app) {
    if (app) {
        stamp(app);
    }
}

} // namespace vantle
