#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>

namespace vantle::testing {

// A dbus-daemon of the test's own, so integration tests never see the developer's session.
class PrivateSessionBus {
public:
    PrivateSessionBus();
    ~PrivateSessionBus();

    bool isRunning() const { return !m_address.isEmpty(); }
    QString address() const { return m_address; }
    // Why it could not start.
    QString error() const { return m_error; }
    // A connection of the test's own to the bus.
    QDBusConnection connection() const;

private:
    QProcess m_daemon;
    QString m_address;
    QString m_error;
};

} // namespace vantle::testing
