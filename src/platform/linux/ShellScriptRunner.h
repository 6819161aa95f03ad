#pragma once

#include "platform/ScriptRunner.h"

#include <QStringList>
#include <optional>

namespace vantle {

// The power-schedule sync's script, when that is all it is (vantle-power schedule and cancel
// commands joined with "; "), as one direct call: the tool's path, then "apply" and its changes.
// Nothing for any other script.
std::optional<QStringList> directPowerToolCall(const QString& script);

// Runs scripts with /bin/sh; administrator runs go through polkit's pkexec, whose own dialog asks
// for the password. pkexec exits with 126 when that dialog is dismissed. The schedule sync's
// script runs vantle-power directly instead of through a shell, so the dialog shows the reason
// its polkit action gives rather than a bare shell command.
class ShellScriptRunner final : public ScriptRunner {
public:
    explicit ShellScriptRunner(QString pkexec = QStringLiteral("pkexec"));

    ScriptOutcome run(const QString& script) override;
    ScriptOutcome runAsAdministrator(const QString& script) override;
    bool fileExists(const QString& path) const override;

private:
    QString m_pkexec;
};

} // namespace vantle
