#pragma once

#include "platform/BundleInfo.h"

namespace vantle {

struct FakeBundleInfo final : BundleInfo {
    std::optional<QString> shortVersionValue = QStringLiteral("2.3.1");
    std::optional<QString> buildNumberValue = QStringLiteral("231");
    std::optional<QString> bundleIdentifierValue = QStringLiteral("com.pelmark.vantle");
    QString osVersion = QStringLiteral("Version 15.1 (Build 24B83)");
    QString arch = QStringLiteral("arm64");

    std::optional<QString> shortVersion() const override { return shortVersionValue; }
    std::optional<QString> buildNumber() const override { return buildNumberValue; }
    std::optional<QString> bundleIdentifier() const override { return bundleIdentifierValue; }
    QString osVersionString() const override { return osVersion; }
    QString architecture() const override { return arch; }
};

} // namespace vantle
