#include "platform/linux/LinuxFileOps.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace vantle {

namespace {
// An XDG folder: the variable when it holds an absolute path, else its default in the home folder.
QString xdgFolder(const char* variable, const QString& fallback) {
    const QString value = qEnvironmentVariable(variable);
    if (!value.isEmpty() && QDir::isAbsolutePath(value)) {
        return QDir::cleanPath(value);
    }
    return QDir::homePath() + QLatin1Char('/') + fallback;
}
} // namespace

QString LinuxFileOps::configFolder() const {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
}

QString LinuxFileOps::cacheFolder() const {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
}

QString LinuxFileOps::stateFolder() const {
    // Qt has no location for $XDG_STATE_HOME.
    return xdgFolder("XDG_STATE_HOME", QStringLiteral(".local/state"));
}

bool LinuxFileOps::exists(const QString& path) const {
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

bool LinuxFileOps::remove(const QString& path, QString* error) {
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink()) {
        return true;
    }
    // A link is removed itself, never what it points to.
    const bool removed =
        info.isDir() && !info.isSymLink() ? QDir(path).removeRecursively() : QFile::remove(path);
    if (!removed && error) {
        *error = QStringLiteral("could not remove %1").arg(path);
    }
    return removed;
}

std::optional<QString> LinuxFileOps::moveToTrash(const QString& path, QString* error) {
    QFile file(path);
    if (!file.moveToTrash()) {
        if (error) {
            *error = file.errorString();
        }
        return std::nullopt;
    }
    return file.fileName() == path ? QString() : file.fileName();
}

std::optional<QStringList> LinuxFileOps::readLines(const QString& path) const {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return std::nullopt;
    }
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace vantle
