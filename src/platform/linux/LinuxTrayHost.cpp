#include "platform/linux/LinuxTrayHost.h"

#include "platform/linux/X11Connection.h"

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QPointer>
#include <cstdlib>
#include <memory>

namespace vantle {

namespace {
const QString kWatcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kWatcherPath = QStringLiteral("/StatusNotifierWatcher");
} // namespace

LinuxTrayHost::LinuxTrayHost(QDBusConnection bus, X11Connection* x11, QObject* parent)
    : TrayHost(parent)
    , m_bus(std::move(bus))
    , m_x11(x11) {
    if (m_bus.isConnected()) {
        for (const char* signal :
             {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
            m_bus.connect(kWatcherService, kWatcherPath, kWatcherService,
                          QString::fromLatin1(signal), this, SLOT(readWatcher()));
        }
        auto* watcher = new QDBusServiceWatcher(kWatcherService, m_bus,
                                                QDBusServiceWatcher::WatchForOwnerChange, this);
        connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
                &LinuxTrayHost::readWatcher);
        readWatcher();
    }
    if (m_x11) {
        m_selection = m_x11->atom(
            QStringLiteral("_NET_SYSTEM_TRAY_S%1").arg(m_x11->screenNumber()).toLatin1());
        m_manager = m_x11->atom("MANAGER");
        // A tray that takes the selection announces it on the root window.
        m_x11->selectRootEvents(XCB_EVENT_MASK_STRUCTURE_NOTIFY);
        QPointer<LinuxTrayHost> self(this);
        m_x11->addListener([self](const xcb_generic_event_t& event) {
            if (self) {
                self->handleX11Event(event);
            }
        });
        readSelectionOwner();
    }
}

void LinuxTrayHost::readWatcher() {
    const bool wasAvailable = isAvailable();
    QDBusMessage get = QDBusMessage::createMethodCall(
        kWatcherService, kWatcherPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    get << kWatcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    const QDBusMessage reply = m_bus.call(get, QDBus::Block, 1'000);
    m_hasHost = reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty() &&
                reply.arguments().constFirst().value<QDBusVariant>().variant().toBool();
    publish(wasAvailable);
}

void LinuxTrayHost::readSelectionOwner() {
    const bool wasAvailable = isAvailable();
    xcb_connection_t* c = m_x11->connection();
    const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> reply(
        xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, m_selection), nullptr),
        &std::free);
    m_xembedOwner = reply ? reply->owner : xcb_window_t(XCB_WINDOW_NONE);
    if (m_xembedOwner != XCB_WINDOW_NONE) {
        // Its destruction is how a tray that goes away shows it.
        const uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(c, m_xembedOwner, XCB_CW_EVENT_MASK, &mask);
        m_x11->flush();
    }
    publish(wasAvailable);
}

void LinuxTrayHost::handleX11Event(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7f) {
    case XCB_CLIENT_MESSAGE: {
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
        if (message.type == m_manager && message.data.data32[1] == m_selection) {
            readSelectionOwner();
        }
        break;
    }
    case XCB_DESTROY_NOTIFY: {
        const auto& destroyed = reinterpret_cast<const xcb_destroy_notify_event_t&>(event);
        if (destroyed.window == m_xembedOwner) {
            readSelectionOwner();
        }
        break;
    }
    default:
        break;
    }
}

void LinuxTrayHost::publish(bool wasAvailable) {
    if (isAvailable() != wasAvailable) {
        emit availabilityChanged(isAvailable());
    }
}

} // namespace vantle
