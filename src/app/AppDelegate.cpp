#include "app/AppDelegate.h"

#include "model/AppSettings.h"
#include "platform/Log.h"
#include "platform/Platform.h"

namespace vantle {

AppDelegate::AppDelegate(Platform& platform, QObject* parent)
    : QObject(parent)
    , m_platform(platform)
    , m_settings(new AppSettings(*platform.defaults, *platform.bundle, *platform.clock,
                                 *platform.texts, this)) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    // Settings carried over from an earlier version re-create the login item under this identity.
    if (m_settings->didMigrateOnThisLaunch() && m_settings->launchAtLogin()) {
        QString error;
        if (!m_platform.loginItem->registerItem(&error)) {
            logLine(QStringLiteral("could not re-create the login item: %1").arg(error));
        }
    }
}

} // namespace vantle
