#pragma once

#include <QString>
#include <optional>

namespace vantle {

// What the application knows about its own package and the system it runs on.
class BundleInfo {
public:
    virtual ~BundleInfo() = default;

    // The marketing version ("1.4.2"); nothing when the package does not say.
    virtual std::optional<QString> shortVersion() const = 0;
    // The build number; nothing when the package does not say.
    virtual std::optional<QString> buildNumber() const = 0;
    // The bundle identifier, which is also the settings domain.
    virtual std::optional<QString> bundleIdentifier() const = 0;
    // The operating system's human-readable version, e.g. "Version 15.1 (Build 24B83)".
    virtual QString osVersionString() const = 0;
    // The processor architecture the program was built for, e.g. "arm64", "x86_64".
    virtual QString architecture() const = 0;
};

} // namespace vantle
