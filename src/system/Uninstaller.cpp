#include "system/Uninstaller.h"

#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "platform/DefaultsStore.h"
#include "platform/FileOps.h"
#include "platform/Log.h"
#include "platform/LoginItem.h"
#include "platform/ScriptRunner.h"
#include "schedule/PmsetCommands.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace vantle {

namespace {

const QString kDataFolderName = QStringLiteral("vantle");

// The keys the sync writes. Anything else came from a damaged settings file and must never reach
// a script that runs as root.
bool isEventKey(const QString& key) {
    static const QRegularExpression pattern(
        QStringLiteral(R"(^(wake|restart|poweron)\|\d\d/\d\d/\d\d \d\d:\d\d:\d\d$)"));
    return pattern.match(key).hasMatch();
}

} // namespace

const QStringList Uninstaller::kSettingsDomains{
    QStringLiteral("com.pelmark.vantle"), QStringLiteral("com.pelmark.vantle.direct"),
    QStringLiteral("com.quorel.vantle"),  QStringLiteral("com.quorel.vantle.direct"),
    QStringLiteral("com.yourname.EBB"),
};

QString Uninstaller::UninstallError::description() const {
    return QCoreApplication::translate(
        "Uninstaller", "Vantle could not change the power schedule, so nothing was removed. "
                       "This usually means the password prompt was cancelled.");
}

Uninstaller::UninstallError Uninstaller::UninstallError::privilegedStepFailed(QString detail) {
    return {Kind::privilegedStepFailed, std::move(detail)};
}

QStringList Uninstaller::Plan::stepLines(const ProductTexts& texts) const {
    QStringList lines;
    if (const qsizetype count = pmsetEvents.size(); count > 0) {
        lines << ProductTexts::translated(texts.removalCancelEventsStep)
                     .arg(count == 1 ? QCoreApplication::translate("Uninstaller",
                                                                   "1 scheduled power event")
                                     : QCoreApplication::translate("Uninstaller",
                                                                   "%1 scheduled power events")
                                           .arg(count));
    }
    if (hasSudoersRule) {
        lines << QCoreApplication::translate(
            "Uninstaller",
            "Remove the rule allowing Vantle to change the power schedule without a password");
    }
    if (isLoginItem) {
        lines << QCoreApplication::translate("Uninstaller", "Stop Vantle opening at login");
    }
    lines << QCoreApplication::translate("Uninstaller",
                                         "Delete Vantle's settings, rules and schedules");
    switch (installation.kind) {
    case AppInstallation::Kind::trash:
        lines << QCoreApplication::translate("Uninstaller", "Move Vantle to the Trash");
        break;
    case AppInstallation::Kind::manifest:
        lines << QCoreApplication::translate(
            "Uninstaller", "Delete the Vantle program files installed in your home folder");
        break;
    case AppInstallation::Kind::packageManager:
        lines << QCoreApplication::translate(
            "Uninstaller",
            "Leave the Vantle program itself: uninstall its package with your software manager");
        break;
    case AppInstallation::Kind::unmanaged:
        lines << QCoreApplication::translate("Uninstaller",
                                             "Leave the Vantle program in %1 as it is")
                     .arg(QDir::toNativeSeparators(installation.path));
        break;
    }
    return lines;
}

QString Uninstaller::Plan::programNote() const {
    switch (installation.kind) {
    case AppInstallation::Kind::trash:
        return QCoreApplication::translate(
            "Uninstaller",
            "Vantle goes to the Trash, so you can put it back if you change your mind.");
    case AppInstallation::Kind::manifest:
        return QCoreApplication::translate(
            "Uninstaller",
            "Vantle's program files are deleted; install it again if you change your mind.");
    case AppInstallation::Kind::packageManager:
        return QCoreApplication::translate(
            "Uninstaller",
            "Vantle stays installed until you uninstall its package, which you can do any time.");
    case AppInstallation::Kind::unmanaged:
        break;
    }
    return QCoreApplication::translate(
        "Uninstaller", "Vantle's program stays where it is, so you can start it again.");
}

Uninstaller::Uninstaller(Parts parts)
    : m_parts(std::move(parts)) {}

Uninstaller::Plan Uninstaller::plan() const {
    const PowerSchedulerTool& tool = m_parts.tool;
    return {.pmsetEvents = m_parts.settings.pmsetRegistered(),
            .hasSudoersRule =
                m_parts.scripts.fileExists(tool.ruleFile) ||
                (!tool.olderRuleFile.isEmpty() && m_parts.scripts.fileExists(tool.olderRuleFile)),
            .isLoginItem = m_parts.loginItem.isRegistered(),
            .installation = m_parts.installation};
}

QString Uninstaller::administratorScript(const Plan& plan, const PowerSchedulerTool& tool) {
    QStringList keys;
    for (const QString& key : plan.pmsetEvents) {
        if (isEventKey(key)) {
            keys << key;
        } else {
            logLine(QStringLiteral("not cancelling malformed power event %1").arg(key));
        }
    }
    QStringList commands = cancelSchedulerCommands(keys, tool);
    if (plan.hasSudoersRule) {
        QStringList rules{tool.ruleFile};
        if (!tool.olderRuleFile.isEmpty()) {
            rules << tool.olderRuleFile;
        }
        commands << QStringLiteral("rm -f ") + rules.join(QLatin1Char(' '));
    }
    return commands.join(QStringLiteral("; "));
}

std::optional<Uninstaller::UninstallError> Uninstaller::run(const Plan& plan) {
    // First and all or nothing: if the events cannot be cancelled, the user keeps a working app
    // rather than a machine that wakes for an app that is gone.
    if (const QString script = administratorScript(plan, m_parts.tool); !script.isEmpty()) {
        const ScriptOutcome outcome = m_parts.scripts.runAsAdministrator(script);
        if (!outcome.succeeded()) {
            const QString detail = outcome.status == ScriptOutcome::Status::cancelled
                                       ? QStringLiteral("the password prompt was dismissed")
                                       : outcome.description();
            logLine(QStringLiteral("removal stopped, nothing removed: %1").arg(detail));
            return UninstallError::privilegedStepFailed(detail);
        }
    }
    if (plan.isLoginItem) {
        removeLoginItem();
    }
    removeData();
    removeProgram(plan.installation);
    logLine(QStringLiteral("removed; quitting"));
    if (onRemoved) {
        onRemoved();
    }
    return std::nullopt;
}

void Uninstaller::removeLoginItem() {
    QString error;
    if (!m_parts.loginItem.unregisterItem(&error)) {
        logLine(QStringLiteral("could not remove the login item: %1").arg(error));
    }
}

void Uninstaller::removeData() {
    // Anything still queued would be written back after the files are gone.
    m_parts.defaults.flush();
    FileOps& files = m_parts.files;
    const QString settingsFolder = files.configFolder() + QLatin1Char('/') + kDataFolderName;
    QStringList paths;
    for (const QString& domain : kSettingsDomains) {
        paths << settingsFolder + QLatin1Char('/') + domain + QStringLiteral(".json");
    }
    paths << settingsFolder << files.cacheFolder() + QLatin1Char('/') + kDataFolderName
          << files.stateFolder() + QLatin1Char('/') + kDataFolderName;
    for (const QString& path : paths) {
        QString error;
        if (!files.remove(path, &error)) {
            logLine(QStringLiteral("could not delete %1: %2").arg(path, error));
        }
    }
}

void Uninstaller::removeProgram(const AppInstallation& installation) {
    switch (installation.kind) {
    case AppInstallation::Kind::trash: {
        QString error;
        if (const std::optional<QString> where =
                m_parts.files.moveToTrash(installation.path, &error)) {
            logLine(QStringLiteral("moved to %1")
                        .arg(where->isEmpty() ? QStringLiteral("the Trash") : *where));
        } else {
            logLine(
                QStringLiteral("could not move %1 to the Trash: %2").arg(installation.path, error));
        }
        return;
    }
    case AppInstallation::Kind::manifest:
        removeByManifest(installation.path);
        return;
    case AppInstallation::Kind::packageManager:
        logLine(QStringLiteral("the program in %1 belongs to the package manager; left in place")
                    .arg(installation.path));
        return;
    case AppInstallation::Kind::unmanaged:
        logLine(QStringLiteral("the program in %1 was not installed; left in place")
                    .arg(installation.path));
        return;
    }
}

void Uninstaller::removeByManifest(const QString& manifest) {
    FileOps& files = m_parts.files;
    const std::optional<QStringList> lines = files.readLines(manifest);
    if (!lines) {
        logLine(QStringLiteral("could not read %1; the program files stay").arg(manifest));
        return;
    }
    // <prefix>/share/vantle/install_manifest.txt: nothing outside the prefix is ours to delete.
    const QString folder = QFileInfo(manifest).absolutePath();
    const QString prefix = QDir::cleanPath(folder + QStringLiteral("/../.."));
    int removed = 0;
    for (const QString& line : *lines) {
        const QString path = QDir::cleanPath(line.trimmed());
        if (!QDir::isAbsolutePath(path) || !path.startsWith(prefix + QLatin1Char('/'))) {
            logLine(QStringLiteral("%1 lists %2, outside %3; left in place")
                        .arg(manifest, line, prefix));
            continue;
        }
        QString error;
        if (files.remove(path, &error)) {
            ++removed;
        } else {
            logLine(QStringLiteral("could not delete %1: %2").arg(path, error));
        }
    }
    // The folder held only the manifest and what came with it.
    files.remove(manifest);
    files.remove(folder);
    logLine(QStringLiteral("deleted %1 installed files listed in %2").arg(removed).arg(manifest));
}

} // namespace vantle
