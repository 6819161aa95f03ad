#pragma once

#include "platform/PowerSchedulerTool.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

namespace vantle {

class AppSettings;
class Clock;
class DefaultsStore;
class Executor;
class PrivilegedRunner;
class ScriptRunner;

// Hands the next occurrence of every wake, restart and power-on schedule to the system's power
// scheduler as one-shot events, cancelling the ones registered before, in one script per change.
// Requests that arrive while a run is in flight collapse into one further run.
class PmsetSync final : public QObject {
    Q_OBJECT
public:
    PmsetSync(Clock& clock, Executor& executor, ScriptRunner& scripts, PrivilegedRunner& runner,
              DefaultsStore& defaults, QObject* parent = nullptr);

    // Main thread; returns at once. The result is applied on the main thread later.
    void sync(AppSettings* settings);

    bool syncInFlight() const { return m_syncInFlight; }
    bool resyncRequested() const { return m_resyncRequested; }

    // What a run ended with.
    struct Result {
        QStringList keys;
        // The rule file was missing when the run began.
        bool ruleMissing = false;
        // The run installed the rule.
        bool turnAlwaysAllowOn = false;
    };

private:
    struct Work;
    struct Prepared;

    static Prepared prepare(const Work& work, ScriptRunner& scripts);
    Result runAsAdministrator(const Prepared& prepared);
    void complete(const Result& result);

    Clock& m_clock;
    Executor& m_executor;
    ScriptRunner& m_scripts;
    PrivilegedRunner& m_runner;
    DefaultsStore& m_defaults;
    QPointer<AppSettings> m_settings;
    bool m_syncInFlight = false;
    bool m_resyncRequested = false;
};

} // namespace vantle
