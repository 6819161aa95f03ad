#pragma once

#include "platform/FileOps.h"

#include <QMap>
#include <QSet>

namespace vantle {

// Paths that exist, as a set; removing a folder removes everything under it. Every change is
// written to `journal` ("remove <path>", "trash <path>") so tests can check the order.
struct FakeFileOps final : FileOps {
    QString home = QStringLiteral("/home/ada");
    QSet<QString> paths;
    QMap<QString, QStringList> textFiles;
    QStringList* journal = nullptr;
    QStringList ownJournal;

    QString configFolder() const override { return home + QStringLiteral("/.config"); }
    QString cacheFolder() const override { return home + QStringLiteral("/.cache"); }
    QString stateFolder() const override { return home + QStringLiteral("/.local/state"); }

    bool exists(const QString& path) const override { return paths.contains(path); }
    bool remove(const QString& path, QString*) override {
        record(QStringLiteral("remove ") + path);
        erase(path);
        return true;
    }
    std::optional<QString> moveToTrash(const QString& path, QString* error) override {
        record(QStringLiteral("trash ") + path);
        // Standing in for a volume without a trash, as for a copy on read-only media.
        if (!paths.contains(path)) {
            if (error) {
                *error = QStringLiteral("no trash on this volume");
            }
            return std::nullopt;
        }
        erase(path);
        return home + QStringLiteral("/.local/share/Trash/files/") +
               path.section(QLatin1Char('/'), -1);
    }
    std::optional<QStringList> readLines(const QString& path) const override {
        if (!textFiles.contains(path)) {
            return std::nullopt;
        }
        return textFiles.value(path);
    }

    void record(const QString& entry) { (journal ? *journal : ownJournal).append(entry); }
    void erase(const QString& path) {
        const QString inside = path + QLatin1Char('/');
        paths.removeIf([&](const QString& p) { return p == path || p.startsWith(inside); });
        textFiles.remove(path);
    }
};

} // namespace vantle
