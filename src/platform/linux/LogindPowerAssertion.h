#pragma once

#include "platform/PowerAssertion.h"

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <optional>

namespace vantle {

// Holds the machine awake through logind's idle inhibitor (a file descriptor that lasts as long
// as we keep it open) and, where the desktop runs its own idle policy, through the desktop's
// inhibitor as well: GNOME's session manager, else org.freedesktop.PowerManagement.
class LogindPowerAssertion final : public PowerAssertion {
public:
    LogindPowerAssertion(QDBusConnection systemBus, QDBusConnection sessionBus);
    ~LogindPowerAssertion() override;

    bool acquire(const QString& reason) override;
    void release() override;
    bool isHeld() const override;

private:
    enum class Desktop { unknown, gnome, powerManagement, none };

    bool inhibitLogind(const QString& reason);
    void inhibitDesktop(const QString& reason);

    QDBusConnection m_systemBus;
    QDBusConnection m_sessionBus;
    QDBusUnixFileDescriptor m_logindFd;
    Desktop m_desktop = Desktop::unknown;
    std::optional<uint> m_desktopCookie;
    bool m_reportedLogindFailure = false;
};

} // namespace vantle
