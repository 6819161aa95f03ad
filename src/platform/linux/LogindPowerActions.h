#pragma once

#include "platform/PowerActions.h"

#include <QDBusConnection>
#include <QObject>
#include <functional>

class QDBusMessage;

namespace vantle {

// Sleep through logind. Restart and shut down go through the desktop's session manager when one
// runs (GNOME, KDE or Xfce), since it lets apps save or ask; otherwise through logind, but only
// when no app asked to quit is still running.
class LogindPowerActions final : public PowerActions {
public:
    // `otherAppsStillRunning` tells whether apps asked to quit before a restart or shut down
    // have not quit yet.
    LogindPowerActions(QDBusConnection systemBus, QDBusConnection sessionBus,
                       std::function<bool()> otherAppsStillRunning);

    void sleep() override;
    void restart() override;
    void shutDown() override;

private:
    enum class Ending { restart, shutDown };
    using ReplyHandler = std::function<void(const QDBusMessage& reply)>;

    void end(Ending ending);
    // Asks logind `canMethod` first and calls `method` only on "yes" or "challenge".
    void viaLogind(const QString& canMethod, const QString& method);
    void send(QDBusConnection& bus, const QDBusMessage& message, int timeoutMs,
              ReplyHandler onReply);

    QDBusConnection m_systemBus;
    QDBusConnection m_sessionBus;
    std::function<bool()> m_otherAppsStillRunning;
    // Parent of the pending calls; destroyed first, so no reply outlives this object.
    QObject m_calls;
};

} // namespace vantle
