#pragma once

#include "platform/TrayHost.h"

#include <QDBusConnection>
#include <xcb/xcb.h>

namespace vantle {

class X11Connection;

// A tray is there when the session's org.kde.StatusNotifierWatcher says a host is registered,
// or when some window owns the XEmbed selection _NET_SYSTEM_TRAY_S<screen>. Both are watched
// for the life of the process, so a panel that starts (or restarts) later is noticed.
class LinuxTrayHost final : public TrayHost {
    Q_OBJECT
public:
    // `x11` may be null (a Wayland session): then only StatusNotifierItem hosts count.
    LinuxTrayHost(QDBusConnection bus, X11Connection* x11, QObject* parent = nullptr);

    bool isAvailable() const override { return m_hasHost || m_xembedOwner != XCB_WINDOW_NONE; }
    bool hasStatusNotifierHost() const override { return m_hasHost; }
    bool hasXEmbedTray() const { return m_xembedOwner != XCB_WINDOW_NONE; }

private slots:
    void readWatcher();

private:
    void readSelectionOwner();
    void handleX11Event(const xcb_generic_event_t& event);
    void publish(bool wasAvailable);

    QDBusConnection m_bus;
    X11Connection* m_x11;
    xcb_atom_t m_selection = XCB_ATOM_NONE;
    xcb_atom_t m_manager = XCB_ATOM_NONE;
    xcb_window_t m_xembedOwner = XCB_WINDOW_NONE;
    bool m_hasHost = false;
};

} // namespace vantle
