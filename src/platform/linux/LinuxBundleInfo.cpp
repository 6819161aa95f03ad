#include "platform/linux/LinuxBundleInfo.h"

#include <QSysInfo>

namespace vantle {

namespace {
std::optional<QString> nonEmpty(const char* text) {
    const QString value = QString::fromUtf8(text);
    return value.isEmpty() ? std::nullopt : std::optional(value);
}
} // namespace

std::optional<QString> LinuxBundleInfo::shortVersion() const {
    return nonEmpty(VANTLE_VERSION);
}

std::optional<QString> LinuxBundleInfo::buildNumber() const {
    return nonEmpty(VANTLE_BUILD_NUMBER);
}

std::optional<QString> LinuxBundleInfo::bundleIdentifier() const {
    return nonEmpty(VANTLE_BUNDLE_ID);
}

QString LinuxBundleInfo::osVersionString() const {
    return QStringLiteral("%1 (%2)").arg(QSysInfo::kernelVersion(), QSysInfo::prettyProductName());
}

QString LinuxBundleInfo::architecture() const {
    return QSysInfo::buildCpuArchitecture();
}

} // namespace vantle
