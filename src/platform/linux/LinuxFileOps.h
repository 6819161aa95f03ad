#pragma once

#include "platform/FileOps.h"

namespace vantle {

// Files under the XDG base folders; the trash is the freedesktop trash Qt moves files into.
class LinuxFileOps final : public FileOps {
public:
    QString configFolder() const override;
    QString cacheFolder() const override;
    QString stateFolder() const override;

    bool exists(const QString& path) const override;
    bool remove(const QString& path, QString* error) override;
    std::optional<QString> moveToTrash(const QString& path, QString* error) override;
    std::optional<QStringList> readLines(const QString& path) const override;
};

} // namespace vantle
