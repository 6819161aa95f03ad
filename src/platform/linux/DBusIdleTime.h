#pragma once

#include "platform/IdleTime.h"

#include <QDBusConnection>

namespace vantle {

// Idle time on a Wayland session, from the desktop's own service: GNOME's
// org.gnome.Mutter.IdleMonitor, else org.freedesktop.ScreenSaver.
class DBusIdleTime final : public IdleTime {
public:
    explicit DBusIdleTime(QDBusConnection bus);
    std::optional<double> secondsSinceLastInput() override;

private:
    std::optional<double> mutterIdle();
    std::optional<double> screenSaverIdle();

    QDBusConnection m_bus;
    enum class Source { unknown, mutter, screenSaver, none } m_source = Source::unknown;
};

} // namespace vantle
