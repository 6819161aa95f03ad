#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QVariantList>
#include <memory>

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

} // namespace vantle::testing
