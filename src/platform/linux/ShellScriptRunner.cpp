#include "platform/linux/ShellScriptRunner.h"

#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

namespace vantle {

namespace {

const QString kShell = QStringLiteral("/bin/sh");
// A plain run is a scheduler listing or a handful of sudo -n calls; none may hang the sync.
constexpr int kPlainRunTimeoutMs = 120'000;
constexpr int kPkexecDismissed = 126;
// vantle-power takes at most this many changes in one apply.
constexpr qsizetype kMaxToolSteps = 256;

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

std::optional<QStringList> directPowerToolCall(const QString& script) {
    // Exactly the lines the sync writes: a cancel always carries "|| true", a schedule never.
    static const QRegularExpression command(QStringLiteral(
        R"(^(/[A-Za-z0-9/._+-]*/vantle-power) schedule (cancel )?(wake|restart|poweron) )"
        R"('(\d\d/\d\d/\d\d \d\d:\d\d:\d\d)'( \|\| true)?$)"));
    QString tool;
    QStringList changes;
    const QStringList commands = script.split(QStringLiteral("; "));
    if (commands.size() > kMaxToolSteps) {
        return std::nullopt;
    }
    for (const QString& line : commands) {
        const QRegularExpressionMatch match = command.match(line);
        if (!match.hasMatch()) {
            return std::nullopt;
        }
        const bool cancel = match.hasCaptured(2);
        if (cancel != match.hasCaptured(5) || (!tool.isEmpty() && tool != match.captured(1))) {
            return std::nullopt;
        }
        tool = match.captured(1);
        changes << (cancel ? QStringLiteral("cancel") : QStringLiteral("schedule"))
                << match.captured(3) << match.captured(4);
    }
    return QStringList{tool, QStringLiteral("apply")} + changes;
}

ShellScriptRunner::ShellScriptRunner(QString pkexec)
    : m_pkexec(std::move(pkexec)) {}

ScriptOutcome ShellScriptRunner::run(const QString& script) {
    QProcess process;
    process.start(kShell, {QStringLiteral("-c"), script});
    return finish(process, kShell, kPlainRunTimeoutMs);
}

ScriptOutcome ShellScriptRunner::runAsAdministrator(const QString& script) {
    QProcess process;
    if (const std::optional<QStringList> direct = directPowerToolCall(script)) {
        process.start(m_pkexec, *direct);
    } else {
        process.start(m_pkexec, {kShell, QStringLiteral("-c"), script});
    }
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
