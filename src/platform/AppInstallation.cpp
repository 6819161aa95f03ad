#include "platform/AppInstallation.h"

#include "platform/FileOps.h"

#include <QDir>

namespace vantle {

namespace {
bool isInside(const QString& path, const QString& folder) {
    const QString clean = QDir::cleanPath(folder);
    return !clean.isEmpty() && clean != QLatin1String("/") &&
           QDir::cleanPath(path).startsWith(clean + QLatin1Char('/'));
}
} // namespace

AppInstallation AppInstallation::detect(const QString& appImage, const QString& programFolder,
                                        const QString& homeFolder, const FileOps& files) {
    if (!appImage.isEmpty()) {
        return {Kind::trash, appImage};
    }
    const QString folder = QDir::cleanPath(programFolder);
    if (isInside(folder, QStringLiteral("/usr")) &&
        !isInside(folder, QStringLiteral("/usr/local"))) {
        return {Kind::packageManager, folder};
    }
    if (!isInside(folder, homeFolder)) {
        return {Kind::unmanaged, folder};
    }
    const QString manifest =
        QDir::cleanPath(folder + QLatin1Char('/') + kManifestFromProgramFolder);
    if (files.exists(manifest)) {
        return {Kind::manifest, manifest};
    }
    return {Kind::unmanaged, folder};
}

} // namespace vantle
