#pragma once

#include "platform/PowerSchedulerTool.h"

#include <QString>
#include <optional>

namespace vantle {

class Alerts;
class ScriptRunner;
struct ProductTexts;

// Text of `script` as one double-quoted string literal for a shell-script run: backslashes are
// doubled, then double quotes escaped.
QString quotedForShellScript(const QString& script);
// The AppleScript source that runs `script` through the shell, as root when `administrator`.
QString doShellScriptSource(const QString& script, bool administrator);

// Runs scripts as root behind the system's password prompt, explains that prompt beforehand, and
// installs or removes the Always Allow rule that lets the user run the power scheduler through
// `sudo -n`. Main thread only.
class PrivilegedRunner {
public:
    enum class PasswordChoice { cancel, continueOnce, continueAlwaysAllow };

    PrivilegedRunner(ScriptRunner& scripts, Alerts& alerts, PowerSchedulerTool tool,
                     const ProductTexts& texts, QString userName);

    const PowerSchedulerTool& tool() const { return m_tool; }
    const ProductTexts& texts() const { return m_texts; }

    // True on success. A cancelled prompt and a failure are logged and give false.
    bool runPrivileged(const QString& script);
    // The generic explanation before a password prompt; true when the user chose Continue.
    bool confirmPasswordPrompt(const QString& text);
    // The explanation before a schedule change's prompt, shown once per launch; later calls
    // answer "continue" without asking.
    PasswordChoice pmsetPasswordExplanation();
    // The rule installation script for the current user, or nothing when the user name (or the
    // tool) could not be placed safely in a sudoers rule.
    std::optional<QString> alwaysAllowInstallScript() const;
    // Confirm, install, verify: true when the rule file exists afterwards.
    bool installAlwaysAllowRule();
    // Confirm, remove: true when the removal ran.
    bool removeAlwaysAllowRule();
    // After a prompt, the settings window comes back to the front.
    void bringSettingsWindowForward();

private:
    ScriptRunner& m_scripts;
    Alerts& m_alerts;
    PowerSchedulerTool m_tool;
    const ProductTexts& m_texts;
    QString m_userName;
    bool m_explanationShown = false;
};

} // namespace vantle
