#include "schedule/PrivilegedRunner.h"

#include "model/ProductTexts.h"
#include "platform/Alerts.h"
#include "platform/Log.h"
#include "platform/ScriptRunner.h"

#include <QCoreApplication>

namespace vantle {

namespace {

const QString kSettingsWindowTitle = QStringLiteral("Vantle Settings");

AlertRequest passwordAlert(const QString& text) {
    return {.messageText = QCoreApplication::translate("PrivilegedRunner",
                                                       "Vantle needs your administrator password"),
            .informativeText = text,
            .buttons = {QCoreApplication::translate("PrivilegedRunner", "Continue"),
                        QCoreApplication::translate("PrivilegedRunner", "Cancel")}};
}

// Letters and digits in any script, plus "_", "-" and ".": nothing the shell or sudoers would read
// as syntax.
bool isSafeUserName(const QString& name) {
    for (const QChar c : name) {
        if (!c.isLetterOrNumber() && c != QLatin1Char('_') && c != QLatin1Char('-') &&
            c != QLatin1Char('.')) {
            return false;
        }
    }
    return true;
}

} // namespace

QString quotedForShellScript(const QString& script) {
    QString quoted = script;
    quoted.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    quoted.replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString doShellScriptSource(const QString& script, bool administrator) {
    QString source = QStringLiteral("do shell script ") + quotedForShellScript(script);
    if (administrator) {
        source += QStringLiteral(" with administrator privileges");
    }
    return source;
}

PrivilegedRunner::PrivilegedRunner(ScriptRunner& scripts, Alerts& alerts, PowerSchedulerTool tool,
                                   const ProductTexts& texts, QString userName)
    : m_scripts(scripts)
    , m_alerts(alerts)
    , m_tool(std::move(tool))
    , m_texts(texts)
    , m_userName(std::move(userName)) {}

bool PrivilegedRunner::runPrivileged(const QString& script) {
    const ScriptOutcome outcome = m_scripts.runAsAdministrator(script);
    switch (outcome.status) {
    case ScriptOutcome::Status::succeeded:
    case ScriptOutcome::Status::notCreated:
        return true;
    case ScriptOutcome::Status::cancelled:
        logLine(QStringLiteral("privileged action cancelled by the user"));
        return false;
    case ScriptOutcome::Status::failed:
        break;
    }
    logLine(QStringLiteral("privileged action failed (%1): %2 — script was: %3")
                .arg(outcome.errorNumber)
                .arg(outcome.errorMessage.value_or(QStringLiteral("no message")), script));
    return false;
}

bool PrivilegedRunner::confirmPasswordPrompt(const QString& text) {
    m_alerts.activateApp();
    return m_alerts.runModal(passwordAlert(text)).button == 0;
}

PrivilegedRunner::PasswordChoice PrivilegedRunner::pmsetPasswordExplanation() {
    if (m_explanationShown) {
        return PasswordChoice::continueOnce;
    }
    m_explanationShown = true;
    m_alerts.activateApp();
    AlertRequest request =
        passwordAlert(ProductTexts::translated(m_texts.schedulerPasswordExplanation));
    request.checkBoxTitle = QCoreApplication::translate(
        "PrivilegedRunner", "Always allow — don't ask for my password again");
    request.checkBoxToolTip = ProductTexts::translated(m_texts.alwaysAllowToolTip).arg(m_tool.path);
    const AlertResponse response = m_alerts.runModal(request);
    if (response.button != 0) {
        return PasswordChoice::cancel;
    }
    return response.checkBoxChecked ? PasswordChoice::continueAlwaysAllow
                                    : PasswordChoice::continueOnce;
}

std::optional<QString> PrivilegedRunner::alwaysAllowInstallScript() const {
    if (m_userName.isEmpty() || !isSafeUserName(m_userName)) {
        return std::nullopt;
    }
    QString why;
    if (!m_tool.isSafeForRule(&why)) {
        logLine(QStringLiteral("cannot offer Always Allow: %1").arg(why));
        return std::nullopt;
    }
    return QStringList{
        QStringLiteral("tmp=$(mktemp %1)").arg(m_tool.ruleDraftTemplate),
        QStringLiteral("printf '%s\\n' '%1 ALL=(ALL) NOPASSWD: %2' > \"$tmp\"")
            .arg(m_userName, m_tool.path),
        QStringLiteral("if %1 -cf \"$tmp\" >/dev/null 2>&1; then install -m 440 -o root -g %2 "
                       "\"$tmp\" %3; fi")
            .arg(m_tool.visudo, m_tool.adminGroup, m_tool.ruleFile),
        QStringLiteral("rm -f \"$tmp\""),
    }
        .join(QLatin1Char('\n'));
}

bool PrivilegedRunner::installAlwaysAllowRule() {
    const std::optional<QString> script = alwaysAllowInstallScript();
    if (!script || !confirmPasswordPrompt(
                       ProductTexts::translated(m_texts.installRuleExplanation).arg(m_tool.path))) {
        return false;
    }
    runPrivileged(*script);
    return m_scripts.fileExists(m_tool.ruleFile);
}

bool PrivilegedRunner::removeAlwaysAllowRule() {
    if (!confirmPasswordPrompt(ProductTexts::translated(m_texts.removeRuleExplanation))) {
        return false;
    }
    QStringList files{m_tool.ruleFile};
    if (!m_tool.olderRuleFile.isEmpty()) {
        files.append(m_tool.olderRuleFile);
    }
    return runPrivileged(QStringLiteral("rm -f ") + files.join(QLatin1Char(' ')));
}

void PrivilegedRunner::bringSettingsWindowForward() {
    m_alerts.activateApp();
    m_alerts.bringWindowsForward(kSettingsWindowTitle);
}

} // namespace vantle
