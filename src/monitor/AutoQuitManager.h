#pragma once

#include "model/AppInfo.h"
#include "platform/Clock.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <functional>

namespace vantle {

class AppMonitorService;
class AppSettings;
class IdleMonitorService;
class Workspace;

// What made a batch due: the whole session sat idle, or each app's own rule ran out.
enum class AutoQuitTrigger { idleSweep, rule };

// Once a minute decides which applications are due to be hidden or quit: all of them after the
// whole session has been idle long enough, and each app under a rule after its own time-out.
// Hiding happens here; quitting is only handed on, so the user is always warned first.
class AutoQuitManager : public QObject {
    Q_OBJECT

public:
    AutoQuitManager(Workspace& workspace, Clock& clock, QObject* parent = nullptr);

    // A pass does nothing until all three are set, or once any of them is gone.
    void setAppMonitor(AppMonitorService* monitor) { m_appMonitor = monitor; }
    void setIdleMonitor(IdleMonitorService* monitor) { m_idleMonitor = monitor; }
    void setSettings(AppSettings* settings) { m_settings = settings; }

    // Receives each batch due to quit; one pass may deliver two (idle sweep, then rules).
    std::function<void(const QList<AppInfo>&, AutoQuitTrigger)> onAppsReadyToQuit;

    // One pass a minute, the first a minute from now.
    void start();
    void evaluate();

    // True once the idle sweep has fired in the current idle period.
    bool idleQuitFired() const { return m_idleQuitFired; }

private:
    bool hasSources() const { return m_appMonitor && m_idleMonitor && m_settings; }
    void sweepIdleSession();
    void applyRules();

    Workspace& m_workspace;
    Clock& m_clock;
    QPointer<AppMonitorService> m_appMonitor;
    QPointer<IdleMonitorService> m_idleMonitor;
    QPointer<AppSettings> m_settings;
    bool m_idleQuitFired = false;
    Timer m_timer;
};

} // namespace vantle
