#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace vantle {

// The user's own files and folders: where the app keeps its data, and removing them again.
class FileOps {
public:
    virtual ~FileOps() = default;

    // The user's folders for settings, caches and state ($XDG_CONFIG_HOME, $XDG_CACHE_HOME and
    // $XDG_STATE_HOME on Linux, with their defaults under the home folder).
    virtual QString configFolder() const = 0;
    virtual QString cacheFolder() const = 0;
    virtual QString stateFolder() const = 0;

    virtual bool exists(const QString& path) const = 0;
    // Removes a file, or a folder with everything in it. A path that is already gone is no
    // error; otherwise false, with `error` filled, when anything stayed.
    virtual bool remove(const QString& path, QString* error = nullptr) = 0;
    // Moves a file or folder into the user's trash. Gives where it went (empty when the system
    // does not say), or nothing on failure with `error` filled.
    virtual std::optional<QString> moveToTrash(const QString& path, QString* error = nullptr) = 0;
    // The lines of a text file; nothing when it cannot be read.
    virtual std::optional<QStringList> readLines(const QString& path) const = 0;
};

} // namespace vantle
