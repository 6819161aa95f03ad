#pragma once

#include <QString>

namespace vantle {

class FileOps;

// How this copy of the app came onto the machine, which decides how it can be removed.
struct AppInstallation {
    enum class Kind {
        // One file or bundle the user owns (an AppImage; the app bundle on macOS): to the trash.
        trash,
        // Installed into the home folder by the build system, which listed every file it wrote.
        manifest,
        // Owned by the system's package manager; only the software manager may remove it.
        packageManager,
        // Run from somewhere else (a build folder, say): left where it is.
        unmanaged,
    };

    Kind kind = Kind::unmanaged;
    // The file that goes to the trash, or the manifest; the program's folder otherwise.
    QString path;

    bool operator==(const AppInstallation&) const = default;

    // Where the manifest of a home-folder install sits, relative to the program's folder.
    static inline const QString kManifestFromProgramFolder =
        QStringLiteral("../share/vantle/install_manifest.txt");

    // `appImage` is the AppImage runtime's $APPIMAGE (empty when not run from one); `programFolder`
    // holds the running executable.
    static AppInstallation detect(const QString& appImage, const QString& programFolder,
                                  const QString& homeFolder, const FileOps& files);
};

} // namespace vantle
