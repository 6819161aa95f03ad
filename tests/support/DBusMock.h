#pragma once

#include "support/PrivateSessionBus.h"

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QVariantList>
#include <memory>
#include <vector>

namespace vantle::testing {

// python-dbusmock, the stand-in for desktop services in integration tests. It is run with the
// system's python, which has the dbus module.
bool hasDBusMock();

// Starts `templateName` on the bus at `busAddress` (as session and system bus alike), with
// dbusmock's extra arguments (e.g. "--session", or "-p" and a JSON parameter object).
std::unique_ptr<QProcess> startDBusMock(const QString& busAddress, const QString& templateName,
                                        const QStringList& extraArguments = {});

// Starts a bare mock object `path` with `interface` under the session-bus name `name`; tests give
// it methods and properties through org.freedesktop.DBus.Mock.
std::unique_ptr<QProcess> startDBusMockObject(const QString& busAddress, const QString& name,
                                              const QString& path, const QString& interface);

// The arguments of every call of `method` the mock object at `service`/`path` received.
QList<QVariantList> mockedCalls(QDBusConnection bus, const QString& service, const QString& path,
                                const QString& method);

// A private bus for one test function with the python-dbusmock services it starts, standing in
// for both the system and the session bus; everything stops when it goes.
class MockedBus {
public:
    ~MockedBus();

    // Why tests cannot run here (no dbus-daemon, no dbusmock); empty when they can.
    QString unavailable() const;
    // Starts `templateName` and waits until it owns `service` on the bus.
    bool start(const QString& templateName, const QString& service,
               const QStringList& extraArguments = {});

    QString address() const { return m_bus.address(); }
    QDBusConnection connection() const { return m_bus.connection(); }
    // The arguments of every call of `method` the mock at `service`/`path` received.
    QList<QVariantList> calls(const QString& service, const QString& path,
                              const QString& method) const {
        return mockedCalls(connection(), service, path, method);
    }

private:
    PrivateSessionBus m_bus;
    std::vector<std::unique_ptr<QProcess>> m_mocks;
};

} // namespace vantle::testing

// Skips the calling test function when the mocked bus cannot run on this machine.
#define VANTLE_SKIP_WITHOUT(bus)                                                                   \
    do {                                                                                           \
        if (const QString why = (bus).unavailable(); !why.isEmpty()) {                             \
            QSKIP(qPrintable(why));                                                                \
        }                                                                                          \
    } while (false)
