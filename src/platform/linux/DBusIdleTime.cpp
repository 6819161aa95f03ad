#include "platform/linux/DBusIdleTime.h"

#include "platform/Log.h"

#include <QDBusMessage>

namespace vantle {

namespace {
std::optional<QVariant> call(QDBusConnection& bus, const QString& service, const QString& path,
                             const QString& interface, const QString& method) {
    const QDBusMessage reply = bus.call(
        QDBusMessage::createMethodCall(service, path, interface, method), QDBus::Block, 1'000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return std::nullopt;
    }
    return reply.arguments().constFirst();
}
} // namespace

DBusIdleTime::DBusIdleTime(QDBusConnection bus)
    : m_bus(std::move(bus)) {}

std::optional<double> DBusIdleTime::mutterIdle() {
    const auto ms =
        call(m_bus, QStringLiteral("org.gnome.Mutter.IdleMonitor"),
             QStringLiteral("/org/gnome/Mutter/IdleMonitor/Core"),
             QStringLiteral("org.gnome.Mutter.IdleMonitor"), QStringLiteral("GetIdletime"));
    return ms ? std::optional(static_cast<double>(ms->toULongLong()) / 1000.0) : std::nullopt;
}

std::optional<double> DBusIdleTime::screenSaverIdle() {
    // Answers in milliseconds on the desktops that implement it (the name says seconds).
    const auto ms =
        call(m_bus, QStringLiteral("org.freedesktop.ScreenSaver"),
             QStringLiteral("/org/freedesktop/ScreenSaver"),
             QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("GetSessionIdleTime"));
    return ms ? std::optional(static_cast<double>(ms->toULongLong()) / 1000.0) : std::nullopt;
}

std::optional<double> DBusIdleTime::secondsSinceLastInput() {
    switch (m_source) {
    case Source::mutter:
        return mutterIdle();
    case Source::screenSaver:
        return screenSaverIdle();
    case Source::none:
        return std::nullopt;
    case Source::unknown:
        break;
    }
    if (auto seconds = mutterIdle()) {
        m_source = Source::mutter;
        return seconds;
    }
    if (auto seconds = screenSaverIdle()) {
        m_source = Source::screenSaver;
        return seconds;
    }
    m_source = Source::none;
    logLine(QStringLiteral("this desktop offers no idle-time service (org.gnome.Mutter.IdleMonitor "
                           "or org.freedesktop.ScreenSaver); the idle sweep never fires"));
    return std::nullopt;
}

} // namespace vantle
