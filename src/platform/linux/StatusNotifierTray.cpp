#include "platform/linux/StatusNotifierTray.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace vantle {

namespace {
const QString kWatcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kWatcherPath = QStringLiteral("/StatusNotifierWatcher");
} // namespace

StatusNotifierTray::StatusNotifierTray(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , m_bus(std::move(bus)) {
    if (!m_bus.isConnected()) {
        return;
    }
    for (const char* signal : {"StatusNotifierItemRegistered", "StatusNotifierItemUnregistered"}) {
        m_bus.connect(kWatcherService, kWatcherPath, kWatcherService, QString::fromLatin1(signal),
                      this, SLOT(reload()));
    }
    auto* watcher = new QDBusServiceWatcher(kWatcherService, m_bus,
                                            QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &StatusNotifierTray::reload);
    reload();
}

qint32 StatusNotifierTray::pidOfItem(const QString& item) {
    // Items are "<bus name>" or "<bus name>/<object path>".
    const QString service = item.section(QLatin1Char('/'), 0, 0);
    const QDBusReply<uint> pid = m_bus.interface()->servicePid(service);
    return pid.isValid() ? static_cast<qint32>(pid.value()) : 0;
}

void StatusNotifierTray::reload() {
    QSet<qint32> pids;
    QDBusMessage get = QDBusMessage::createMethodCall(
        kWatcherService, kWatcherPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    get << kWatcherService << QStringLiteral("RegisteredStatusNotifierItems");
    const QDBusMessage reply = m_bus.call(get, QDBus::Block, 1'000);
    if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
        const QStringList items =
            reply.arguments().constFirst().value<QDBusVariant>().variant().toStringList();
        for (const QString& item : items) {
            if (const qint32 pid = pidOfItem(item); pid > 0) {
                pids.insert(pid);
            }
        }
    }
    if (pids != m_pids) {
        m_pids = pids;
        emit pidsChanged(m_pids);
    }
}

} // namespace vantle
