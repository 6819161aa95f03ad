#include "app/PlatformFactory.h"

#include "model/ProductTexts.h"
#include "platform/SystemClock.h"
#include "platform/ThreadPoolExecutor.h"

#include <QCoreApplication>

#ifdef Q_OS_LINUX
#include "platform/linux/DBusInstanceGuard.h"
#include "platform/linux/FileDefaultsStore.h"
#include "platform/linux/LinuxBundleInfo.h"
#include "platform/linux/XdgAutostartLoginItem.h"
#endif

namespace vantle {

#ifdef Q_OS_LINUX

std::unique_ptr<Platform> makePlatform(PlatformUse use) {
    auto platform = std::make_unique<Platform>();
    platform->clock = std::make_unique<SystemClock>();
    platform->executor = std::make_unique<ThreadPoolExecutor>();
    platform->bundle = std::make_unique<LinuxBundleInfo>();
    const QString bundleId = platform->bundle->bundleIdentifier().value_or(QString());
    platform->defaults = std::make_unique<FileDefaultsStore>(
        FileDefaultsStore::defaultDirectory(), bundleId,
        use == PlatformUse::Inspection ? FileDefaultsStore::Mode::ReadOnly
                                       : FileDefaultsStore::Mode::ReadWrite);
    platform->loginItem =
        std::make_unique<XdgAutostartLoginItem>(XdgAutostartLoginItem::defaultDirectory(), bundleId,
                                                QCoreApplication::applicationFilePath());
    platform->texts = &ProductTexts::linuxDesktop();
    return platform;
}

std::unique_ptr<InstanceGuard> makeInstanceGuard() {
    return std::make_unique<DBusInstanceGuard>(QDBusConnection::sessionBus(),
                                               QStringLiteral(VANTLE_BUNDLE_ID));
}

#else
#error "Vantle has no platform backend for this operating system yet"
#endif

} // namespace vantle
