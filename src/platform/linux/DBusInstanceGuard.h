#pragma once

#include "platform/InstanceGuard.h"

#include <QDBusConnection>

namespace vantle {

// The single-instance claim as a well-known name on the session bus. The primary copy exports
// org.freedesktop.Application at the object path derived from the name, and a later launch calls
// its Activate method; `vantle --command` calls ActivateAction the same way.
class DBusInstanceGuard final : public InstanceGuard {
    Q_OBJECT
public:
    DBusInstanceGuard(QDBusConnection bus, QString serviceName, QObject* parent = nullptr);

    Claim claim() override;
    Delivery sendAction(const QString& name, QString* error) override;

    // "com.pelmark.vantle" -> "/com/pelmark/vantle"
    static QString objectPathFor(const QString& serviceName);

private:
    QDBusConnection m_bus;
    QString m_serviceName;
};

} // namespace vantle
