#include "platform/linux/DBusInstanceGuard.h"

#include "platform/Log.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QVariantMap>

namespace vantle {

namespace {

constexpr auto kApplicationInterface = "org.freedesktop.Application";

class ApplicationAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    explicit ApplicationAdaptor(InstanceGuard* guard)
        : QDBusAbstractAdaptor(guard)
        , m_guard(guard) {}

public slots:
    void Activate(const QVariantMap& platformData) {
        Q_UNUSED(platformData);
        emit m_guard->activationRequested();
    }

    void ActivateAction(const QString& actionName, const QVariantList& parameter,
                        const QVariantMap& platformData) {
        Q_UNUSED(parameter);
        Q_UNUSED(platformData);
        emit m_guard->actionRequested(actionName);
    }

private:
    InstanceGuard* m_guard;
};

} // namespace

DBusInstanceGuard::DBusInstanceGuard(QDBusConnection bus, QString serviceName, QObject* parent)
    : InstanceGuard(parent)
    , m_bus(std::move(bus))
    , m_serviceName(std::move(serviceName)) {}

QString DBusInstanceGuard::objectPathFor(const QString& serviceName) {
    return QLatin1Char('/') + QString(serviceName).replace(QLatin1Char('.'), QLatin1Char('/'));
}

InstanceGuard::Claim DBusInstanceGuard::claim() {
    if (!m_bus.isConnected()) {
        logLine(QStringLiteral("no D-Bus session bus (%1); cannot make sure only one copy runs")
                    .arg(m_bus.lastError().message()));
        return Claim::Unavailable;
    }
    // Export first so the name never points at a copy that cannot answer Activate.
    new ApplicationAdaptor(this);
    if (!m_bus.registerObject(objectPathFor(m_serviceName), this)) {
        logLine(QStringLiteral("could not export %1 on the session bus")
                    .arg(objectPathFor(m_serviceName)));
    }
    // The bus grants a name to exactly one connection, so two copies starting together cannot
    // both win.
    if (m_bus.registerService(m_serviceName)) {
        return Claim::Primary;
    }
    m_bus.unregisterObject(objectPathFor(m_serviceName));

    QDBusMessage activate = QDBusMessage::createMethodCall(
        m_serviceName, objectPathFor(m_serviceName), QString::fromLatin1(kApplicationInterface),
        QStringLiteral("Activate"));
    activate << QVariantMap();
    const QDBusMessage reply = m_bus.call(activate, QDBus::Block, 5'000);
    if (reply.type() == QDBusMessage::ErrorMessage) {
        logLine(QStringLiteral("Vantle is already running but did not answer (%1)")
                    .arg(reply.errorMessage()));
    }
    return Claim::AlreadyRunning;
}

InstanceGuard::Delivery DBusInstanceGuard::sendAction(const QString& name, QString* error) {
    if (!m_bus.isConnected()) {
        *error = QStringLiteral("no D-Bus session bus (%1)").arg(m_bus.lastError().message());
        return Delivery::NotRunning;
    }
    if (!m_bus.interface()->isServiceRegistered(m_serviceName)) {
        return Delivery::NotRunning;
    }
    QDBusMessage activate = QDBusMessage::createMethodCall(
        m_serviceName, objectPathFor(m_serviceName), QString::fromLatin1(kApplicationInterface),
        QStringLiteral("ActivateAction"));
    activate << name << QVariantList() << QVariantMap();
    const QDBusMessage reply = m_bus.call(activate, QDBus::Block, 5'000);
    if (reply.type() == QDBusMessage::ErrorMessage) {
        *error = reply.errorMessage();
        return Delivery::Failed;
    }
    return Delivery::Delivered;
}

} // namespace vantle

#include "DBusInstanceGuard.moc"
