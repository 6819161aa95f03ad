#pragma once

#include "platform/ApplicationCatalog.h"

namespace vantle {

// Installed applications through GIO's desktop-entry lookup, which follows the XDG data folders
// and the entries' own visibility rules.
class GioApplicationCatalog final : public ApplicationCatalog {
public:
    QList<Application> installedApplications() override;
    std::optional<Application> applicationAt(const QString& path) override;
};

} // namespace vantle
