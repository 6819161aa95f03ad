#include "schedule/PmsetSync.h"

#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/Executor.h"
#include "platform/Log.h"
#include "platform/ScriptRunner.h"
#include "schedule/PmsetCommands.h"
#include "schedule/PrivilegedRunner.h"

#include <QSet>

namespace vantle {

namespace {
const QString kDidAdoptKey = QStringLiteral("didAdoptPmsetEntries");
const QString kJoin = QStringLiteral("; ");

QSet<QString> asSet(const QStringList& list) {
    return QSet<QString>(list.cbegin(), list.cend());
}
} // namespace

// Inputs of one run, taken by value on the main thread.
struct PmsetSync::Work {
    QList<ShutdownSchedule> events;
    QDateTime now;
    bool adopt = false;
    bool alwaysAllow = false;
    QStringList registered;
    PowerSchedulerTool tool;
    QString failureText;
};

// What the background part found: either a finished result, or a script that needs the
// administrator's password.
struct PmsetSync::Prepared {
    std::optional<Result> finished;
    QStringList commands;
    QStringList desiredKeys;
    QStringList registered;
    bool ruleExists = false;
};

PmsetSync::PmsetSync(Clock& clock, Executor& executor, ScriptRunner& scripts,
                     PrivilegedRunner& runner, DefaultsStore& defaults, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_executor(executor)
    , m_scripts(scripts)
    , m_runner(runner)
    , m_defaults(defaults) {}

void PmsetSync::sync(AppSettings* settings) {
    if (m_syncInFlight) {
        m_resyncRequested = true;
        return;
    }
    m_settings = settings;
    if (!settings) {
        return;
    }
    Work work{.events = schedulerEventList(settings->shutdownSchedules()),
              .now = m_clock.now(),
              .adopt = !m_defaults.boolValue(kDidAdoptKey),
              .alwaysAllow = settings->pmsetAlwaysAllow(),
              .registered = settings->pmsetRegistered(),
              .tool = m_runner.tool(),
              .failureText = m_runner.texts().schedulerSyncFailed};
    m_defaults.setObject(kDidAdoptKey, true);
    m_syncInFlight = true;
    runInBackground(
        m_executor, this,
        [&scripts = m_scripts, work = std::move(work)] { return prepare(work, scripts); },
        [this](Prepared prepared) {
            complete(prepared.finished ? *prepared.finished : runAsAdministrator(prepared));
        });
}

// Background thread: touches only its inputs and the script runner, never the service.
PmsetSync::Prepared PmsetSync::prepare(const Work& work, ScriptRunner& scripts) {
    Prepared prepared;
    prepared.registered = work.registered;
    if (work.adopt && prepared.registered.isEmpty()) {
        // Events an earlier installation left behind, so they can be cancelled.
        const ScriptOutcome listing =
            scripts.run(work.tool.shellPath() + QStringLiteral(" -g sched"));
        if (listing.succeeded()) {
            prepared.registered = parseSchedulerListing(listing.output, work.tool.listingMarker);
        }
    }
    const SchedulerCommands desired = desiredSchedulerCommands(work.events, work.now, work.tool);
    if (asSet(desired.keys) == asSet(prepared.registered)) {
        prepared.finished = Result{.keys = prepared.registered};
        return prepared;
    }
    const QStringList commands =
        cancelSchedulerCommands(prepared.registered, work.tool) + desired.commands;
    if (commands.isEmpty()) {
        prepared.finished = Result{.keys = desired.keys};
        return prepared;
    }
    prepared.ruleExists = scripts.fileExists(work.tool.ruleFile);
    if (work.alwaysAllow && prepared.ruleExists) {
        QStringList viaSudo;
        for (const QString& command : commands) {
            viaSudo.append(work.tool.sudo + QStringLiteral(" -n ") + command);
        }
        const ScriptOutcome outcome = scripts.run(viaSudo.join(kJoin));
        if (!outcome.succeeded()) {
            logLine(work.failureText + outcome.description());
            prepared.finished = Result{.keys = prepared.registered};
        } else {
            // This path is only taken with the rule in place, so nothing is missing.
            prepared.finished = Result{.keys = desired.keys};
        }
        return prepared;
    }
    prepared.commands = commands;
    prepared.desiredKeys = desired.keys;
    return prepared;
}

PmsetSync::Result PmsetSync::runAsAdministrator(const Prepared& prepared) {
    const Result unchanged{.keys = prepared.registered};
    const PrivilegedRunner::PasswordChoice choice = m_runner.pmsetPasswordExplanation();
    if (choice == PrivilegedRunner::PasswordChoice::cancel) {
        return unchanged;
    }
    QString body = prepared.commands.join(kJoin);
    bool installing = false;
    if (choice == PrivilegedRunner::PasswordChoice::continueAlwaysAllow) {
        if (const std::optional<QString> install = m_runner.alwaysAllowInstallScript()) {
            body = *install + QLatin1Char('\n') + body;
            installing = true;
        }
    }
    const ScriptOutcome outcome = m_scripts.runAsAdministrator(body);
    if (!outcome.succeeded()) {
        logLine(m_runner.texts().schedulerSyncFailed + outcome.description());
        return unchanged;
    }
    return {.keys = prepared.desiredKeys,
            .ruleMissing = !prepared.ruleExists,
            .turnAlwaysAllowOn = installing && m_scripts.fileExists(m_runner.tool().ruleFile)};
}

void PmsetSync::complete(const Result& result) {
    if (AppSettings* settings = m_settings.data()) {
        settings->setPmsetRegistered(result.keys);
        if (result.turnAlwaysAllowOn) {
            settings->setPmsetAlwaysAllow(true);
        }
        // Deliberately after the step above: a run that began without the rule and installed it
        // still ends with the setting off.
        if (result.ruleMissing && settings->pmsetAlwaysAllow()) {
            logLine(QStringLiteral("Always Allow was on but %1 is gone; turning it off")
                        .arg(m_runner.tool().ruleFile));
            settings->setPmsetAlwaysAllow(false);
        }
    }
    m_syncInFlight = false;
    if (m_resyncRequested) {
        m_resyncRequested = false;
        sync(m_settings.data());
    }
}

} // namespace vantle
