#include "platform/linux/ShellScriptRunner.h"

#include <QFileInfo>
#include <QProcess>

namespace vantle {

namespace {

const QString kShell = QStringLiteral("/bin/sh");
// A plain run is a scheduler listing or a handful of sudo -n calls; none may hang the sync.
constexpr int kPlainRunTimeoutMs = 120'000;
constexpr int kPkexecDismissed = 126;

ScriptOutcome finish(QProcess& process, const QString& program, int timeoutMs) {
    if (!process.waitForStarted(-1)) {
        return ScriptOutcome::failure(127, QStringLiteral("cannot run %1").arg(program));
    }
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished(-1);
        return ScriptOutcome::failure(-1, QStringLiteral("gave no answer in time"));
    }
    const QString errors = QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
    if (process.exitStatus() != QProcess::NormalExit) {
        return ScriptOutcome::failure(-1, QStringLiteral("%1 crashed").arg(program));
    }
    if (process.exitCode() != 0) {
        return ScriptOutcome::failure(process.exitCode(),
                                      errors.isEmpty() ? std::nullopt : std::optional(errors));
    }
    return ScriptOutcome::success(QString::fromLocal8Bit(process.readAllStandardOutput()));
}

} // namespace

ShellScriptRunner::ShellScriptRunner(QString pkexec)
    : m_pkexec(std::move(pkexec)) {}

ScriptOutcome ShellScriptRunner::run(const QString& script) {
    QProcess process;
    process.start(kShell, {QStringLiteral("-c"), script});
    return finish(process, kShell, kPlainRunTimeoutMs);
}

ScriptOutcome ShellScriptRunner::runAsAdministrator(const QString& script) {
    QProcess process;
    process.start(m_pkexec, {kShell, QStringLiteral("-c"), script});
    // The user may take their time in the password dialog.
    ScriptOutcome outcome = finish(process, m_pkexec, -1);
    if (outcome.status == ScriptOutcome::Status::failed &&
        outcome.errorNumber == kPkexecDismissed) {
        return ScriptOutcome::userCancelled();
    }
    return outcome;
}

bool ShellScriptRunner::fileExists(const QString& path) const {
    return QFileInfo::exists(path);
}

} // namespace vantle
