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
    LogindPowerActions(QDBusConnection systemBus, QDBusConnection sessionBus);

    void sleep() override;
    void restart(const QList<RunningApplicationRef>& askedToQuit) override;
    void shutDown(const QList<RunningApplicationRef>& askedToQuit) override;

private:
    enum class Ending { restart, shutDown };
    using ReplyHandler = std::function<void(const QDBusMessage& reply)>;

    void end(Ending ending, const QList<RunningApplicationRef>& askedToQuit);
    // Asks logind `canMethod` first and calls `method` only on "yes" or "challenge".
    void viaLogind(const QString& canMethod, const QString& method);
    void send(QDBusConnection& bus, const QDBusMessage& message, int timeoutMs,
              ReplyHandler onReply);

    QDBusConnection m_systemBus;
    QDBusConnection m_sessionBus;
    // Parent of the pending calls; destroyed first, so no reply outlives this object.
    QObject m_calls;
};

} // namespace vantle
