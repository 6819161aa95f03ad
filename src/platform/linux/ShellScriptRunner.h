#pragma once

#include "platform/ScriptRunner.h"

namespace vantle {

// Runs scripts with /bin/sh; administrator runs go through polkit's pkexec, whose own dialog asks
// for the password. pkexec exits with 126 when that dialog is dismissed.
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
