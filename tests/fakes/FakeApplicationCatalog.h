#pragma once

#include "platform/ApplicationCatalog.h"

#include <QHash>

namespace vantle {

// Installed apps as listed; files are known by path, anything else is not an application.
struct FakeApplicationCatalog final : ApplicationCatalog {
    QList<Application> installed;
    QHash<QString, Application> files;

    QList<Application> installedApplications() override { return installed; }
    std::optional<Application> applicationAt(const QString& path) override {
        const auto it = files.constFind(path);
        return it == files.constEnd() ? std::nullopt : std::optional(*it);
    }
};

} // namespace vantle
