#include "platform/linux/X11PanelPlacement.h"

#include "platform/linux/X11Connection.h"

#include <QGuiApplication>
#include <QWindow>
#include <cstdlib>
#include <iterator>

namespace vantle {

namespace {
constexpr uint32_t kAllDesktops = 0xFFFFFFFF;
}

X11PanelPlacement::X11PanelPlacement(X11Connection& connection)
    : m_x(connection) {}

void X11PanelPlacement::prepare(QWindow& window) {
    // Only under Qt's xcb platform is the window id an X window on our server.
    if (QGuiApplication::platformName() != QLatin1String("xcb")) {
        return;
    }
    const auto id = static_cast<xcb_window_t>(window.winId());
    xcb_connection_t* c = m_x.connection();
    xcb_ewmh_connection_t* ewmh = m_x.ewmh();
    // Window managers read these when they manage the window, so they must be there at map.
    xcb_ewmh_set_wm_desktop(ewmh, id, kAllDesktops);
    // A panel, not a window of its own: no taskbar or pager entry. Appended: Qt merges its own
    // states into whatever the window already has.
    const xcb_atom_t states[] = {ewmh->_NET_WM_STATE_STICKY, ewmh->_NET_WM_STATE_ABOVE,
                                 ewmh->_NET_WM_STATE_SKIP_TASKBAR, ewmh->_NET_WM_STATE_SKIP_PAGER};
    xcb_change_property(c, XCB_PROP_MODE_APPEND, id, ewmh->_NET_WM_STATE, XCB_ATOM_ATOM, 32,
                        static_cast<uint32_t>(std::size(states)), states);
    // Nothing to minimise or maximise either. Motif hints cannot say so to every window manager
    // (openbox keeps both buttons of a utility window whatever they ask), but a toolbar gets
    // neither while keeping its title and close button; a manager that does not know toolbars
    // takes the utility type Qt gave the window.
    xcb_atom_t types[] = {ewmh->_NET_WM_WINDOW_TYPE_TOOLBAR, ewmh->_NET_WM_WINDOW_TYPE_UTILITY};
    xcb_ewmh_set_wm_window_type(ewmh, id, static_cast<uint32_t>(std::size(types)), types);
    // A user time of 0 means "do not focus me when mapped".
    xcb_ewmh_set_wm_user_time(ewmh, id, 0);
    // Qt maps the window over its own connection; a round trip makes sure the server has
    // applied these first.
    std::free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
}

} // namespace vantle
