#pragma once

#include "platform/BundleInfo.h"

namespace vantle {

// Version facts compiled in by the build, and the distribution's own description of itself.
class LinuxBundleInfo final : public BundleInfo {
public:
    std::optional<QString> shortVersion() const override;
    std::optional<QString> buildNumber() const override;
    std::optional<QString> bundleIdentifier() const override;
    // "<kernel release> (<distribution's pretty name>)", e.g. "6.1.0-18-amd64 (Debian GNU/Linux
    // 12)".
    QString osVersionString() const override;
    QString architecture() const override;
};

} // namespace vantle
