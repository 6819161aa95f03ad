#include "platform/PowerSchedulerTool.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace vantle {

namespace {

bool isPlainPath(const QString& path) {
    static const QRegularExpression plain(QStringLiteral("^/[A-Za-z0-9/._+-]*$"));
    return plain.match(path).hasMatch();
}

bool ownedByRootAlone(const QFileInfo& info) {
    return info.exists() && info.ownerId() == 0 &&
           !(info.permissions() & (QFileDevice::WriteGroup | QFileDevice::WriteOther));
}

} // namespace

QString PowerSchedulerTool::shellPath() const {
    if (isPlainPath(path)) {
        return path;
    }
    QString quoted = path;
    quoted.replace(QLatin1Char('\''), QLatin1String("'\\''"));
    return QLatin1Char('\'') + quoted + QLatin1Char('\'');
}

bool PowerSchedulerTool::isSafeForRule(QString* why) const {
    auto refuse = [why](const QString& reason) {
        if (why) {
            *why = reason;
        }
        return false;
    };
    if (!isPlainPath(path)) {
        return refuse(QStringLiteral("%1 has characters a sudoers rule cannot hold").arg(path));
    }
    if (ruleNeedsRootOwnedTool) {
        const QFileInfo tool(path);
        const QFileInfo folder(tool.absolutePath());
        if (!ownedByRootAlone(tool) || !ownedByRootAlone(folder)) {
            return refuse(QStringLiteral("%1 and its folder must be owned by root and writable "
                                         "only by root")
                              .arg(path));
        }
    }
    return true;
}

PowerSchedulerTool PowerSchedulerTool::macOS() {
    return {.path = QStringLiteral("/usr/bin/pmset"),
            .listingMarker = QStringLiteral("by 'pmset'"),
            .adminGroup = QStringLiteral("wheel")};
}

PowerSchedulerTool PowerSchedulerTool::linuxTool(const QString& directory) {
    // Named after the tool the rule lets through; no earlier rule ever existed on Linux.
    return {.path = directory + QStringLiteral("/vantle-power"),
            .listingMarker = QStringLiteral("by 'vantle'"),
            .adminGroup = QStringLiteral("root"),
            .ruleFile = QStringLiteral("/etc/sudoers.d/vantle-power"),
            .olderRuleFile = QString(),
            .ruleDraftTemplate = QStringLiteral("/tmp/vantle-power.XXXXXX"),
            .ruleNeedsRootOwnedTool = true};
}

QString PowerSchedulerTool::linuxToolDirectory(const QString& appDirectory,
                                               const QString& installedRelative) {
    // Cleaned, so the rule and the polkit action see the same path the package installed.
    const QString installed = QDir::cleanPath(QDir(appDirectory).filePath(installedRelative));
    if (!installedRelative.isEmpty() &&
        QFileInfo(installed + QStringLiteral("/vantle-power")).isFile()) {
        return installed;
    }
    return QDir::cleanPath(appDirectory);
}

} // namespace vantle
