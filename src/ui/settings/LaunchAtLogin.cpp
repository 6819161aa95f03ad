#include "ui/settings/LaunchAtLogin.h"

#include "model/AppSettings.h"
#include "platform/Log.h"
#include "platform/LoginItem.h"

namespace vantle {

LaunchAtLogin::LaunchAtLogin(AppSettings& settings, LoginItem& loginItem, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_loginItem(loginItem) {
    connect(&m_settings, &AppSettings::launchAtLoginChanged, this, &LaunchAtLogin::settingChanged);
}

void LaunchAtLogin::settingChanged() {
    if (m_reverting) {
        return;
    }
    const bool on = m_settings.launchAtLogin();
    QString error;
    const bool done = on ? m_loginItem.registerItem(&error) : m_loginItem.unregisterItem(&error);
    if (done) {
        return;
    }
    logLine(QStringLiteral("Launch at login failed: %1").arg(error));
    m_reverting = true;
    m_settings.setLaunchAtLogin(!on);
    m_reverting = false;
}

} // namespace vantle
