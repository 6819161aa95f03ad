#pragma once

#include <QSet>
#include <QString>
#include <QStringList>
#include <optional>

namespace vantle {

// The one answer to which apps quit-all and the idle sweep leave alone: the excluded bundles and,
// while they are protected, the apps that live only in the menu bar or tray.
struct QuitExemptions {
    QuitExemptions(const QStringList& excludedBundleIDs, bool protectsMenuBarApps)
        : excluded(excludedBundleIDs.cbegin(), excludedBundleIDs.cend())
        , protectMenuBarApps(protectsMenuBarApps) {}

    bool spares(const std::optional<QString>& bundleId, bool isBackground) const {
        return (protectMenuBarApps && isBackground) || (bundleId && excluded.contains(*bundleId));
    }

    QSet<QString> excluded;
    bool protectMenuBarApps;
};

} // namespace vantle
