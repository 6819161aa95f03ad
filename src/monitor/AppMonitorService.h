#pragma once

#include "model/AppInfo.h"
#include "platform/Clock.h"
#include "platform/RunningApplication.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>
#include <functional>
#include <map>

namespace vantle {

class Workspace;

// The live, sorted list of the other running applications, when each was last active, and the
// quit operations the rest of the product asks for.
class AppMonitorService : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<vantle::AppInfo> runningApps READ runningApps NOTIFY runningAppsChanged)
    Q_PROPERTY(bool isListVisible READ isListVisible NOTIFY isListVisibleChanged)

public:
    AppMonitorService(Workspace& workspace, Clock& clock, qint32 selfPid,
                      QObject* parent = nullptr);

    const QList<AppInfo>& runningApps() const { return m_runningApps; }
    bool isListVisible() const { return m_isListVisible; }
    const QHash<qint32, QDateTime>& lastActiveDates() const { return m_lastActiveDates; }
    // An application never seen active counts as active right now.
    QDateTime lastActiveDate(qint32 pid) const;

    // Rebuilds the list and forgets the dates of processes that are gone. Notifies every time.
    void refresh();
    // While the list is on screen it is refreshed every 5 s; hidden, only activity updates it.
    void setListVisible(bool visible);
    // Asks each app to quit; 10 s later hands `completion` the ones still running (possibly
    // none). The apps are followed by process instance, so a reused pid is not mistaken for one.
    void quit(const QList<AppInfo>& apps, std::function<void(QList<AppInfo>)> completion);
    // Ends these apps at once; the ones already gone are skipped.
    void forceQuit(const QList<AppInfo>& apps);
    // Quits (or forces) every other app except the excluded bundles and, when protected, the
    // menu-bar and faceless ones, and returns the apps it asked. Refusals are not reported.
    QList<RunningApplicationRef> quitAll(bool force, const QStringList& excludedBundleIDs,
                                         bool protectMenuBarApps);
    // Refreshes 0.8 s from now, giving quitting apps time to leave the list.
    void refreshAfterQuit();
    // Restarts the idle time of these apps from now.
    void markJustActive(const QList<AppInfo>& apps);

signals:
    void runningAppsChanged();
    void isListVisibleChanged();

private:
    struct QuitRequest {
        AppInfo info;
        RunningApplicationRef app;
    };

    void stamp(const RunningApplicationRef& app);
    void applicationLaunched(const RunningApplicationRef& app);
    void applicationTerminated();
    void applicationActivated(const RunningApplicationRef& app);
    void applicationDeactivated(const RunningApplicationRef& app);
    void finishQuit(quint64 id, const QList<QuitRequest>& requests,
                    const std::function<void(QList<AppInfo>)>& completion);

    Workspace& m_workspace;
    Clock& m_clock;
    const qint32 m_selfPid;
    QList<AppInfo> m_runningApps;
    bool m_isListVisible = false;
    QHash<qint32, QDateTime> m_lastActiveDates;
    Timer m_pollTimer;
    Timer m_refreshAfterQuitTimer;
    // One refusal check per pending quit batch, keyed by a running id.
    std::map<quint64, Timer> m_quitChecks;
    quint64 m_nextQuitId = 0;
};

} // namespace vantle
