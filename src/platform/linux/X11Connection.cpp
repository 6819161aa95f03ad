#include "platform/linux/X11Connection.h"

#include "platform/Log.h"

#include <QSocketNotifier>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace vantle {

namespace {
template <typename T>
using XcbReply = std::unique_ptr<T, decltype(&std::free)>;
}

std::unique_ptr<X11Connection> X11Connection::open(const QString& displayName) {
    const QByteArray name = displayName.toLocal8Bit();
    int screen = 0;
    xcb_connection_t* connection =
        xcb_connect(name.isEmpty() ? nullptr : name.constData(), &screen);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        logLine(QStringLiteral("cannot connect to the X display %1")
                    .arg(name.isEmpty() ? qEnvironmentVariable("DISPLAY") : displayName));
        return nullptr;
    }
    return std::unique_ptr<X11Connection>(new X11Connection(connection, screen));
}

X11Connection::X11Connection(xcb_connection_t* connection, int screenNumber)
    : m_connection(connection)
    , m_screenNumber(screenNumber) {
    xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    for (int i = 0; i < screenNumber && it.rem > 0; ++i) {
        xcb_screen_next(&it);
    }
    m_root = it.data->root;

    xcb_intern_atom_cookie_t* cookies = xcb_ewmh_init_atoms(m_connection, &m_ewmh);
    xcb_ewmh_init_atoms_replies(&m_ewmh, cookies, nullptr);

    m_notifier =
        new QSocketNotifier(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &X11Connection::dispatchPending);
}

X11Connection::~X11Connection() {
    xcb_ewmh_connection_wipe(&m_ewmh);
    xcb_disconnect(m_connection);
}

xcb_atom_t X11Connection::atom(const char* name) {
    const auto cookie =
        xcb_intern_atom(m_connection, 0, static_cast<uint16_t>(std::strlen(name)), name);
    XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookie, nullptr),
                                            &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

void X11Connection::selectRootEvents(uint32_t mask) {
    m_rootMask |= mask;
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &m_rootMask);
    xcb_flush(m_connection);
}

void X11Connection::addListener(EventListener listener) {
    m_listeners.push_back(std::move(listener));
}

void X11Connection::dispatchPending() {
    while (xcb_generic_event_t* event = xcb_poll_for_event(m_connection)) {
        const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> owned(event, &std::free);
        for (const EventListener& listener : m_listeners) {
            listener(*event);
        }
    }
    if (xcb_connection_has_error(m_connection) != 0 && !m_reportedDisconnect) {
        // The server went away (the session is ending); stop listening rather than spin.
        m_reportedDisconnect = true;
        m_notifier->setEnabled(false);
        logLine(QStringLiteral("lost the connection to the X server"));
    }
}

void X11Connection::flush() {
    xcb_flush(m_connection);
}

std::optional<QByteArray> X11Connection::stringProperty(xcb_window_t window, xcb_atom_t property,
                                                        xcb_atom_t type) {
    const auto cookie = xcb_get_property(m_connection, 0, window, property, type, 0, 4096);
    XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection, cookie, nullptr),
                                             &std::free);
    if (!reply || reply->format != 8 || reply->type == XCB_ATOM_NONE) {
        return std::nullopt;
    }
    return QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

std::vector<uint32_t> X11Connection::cardinalProperty(xcb_window_t window, xcb_atom_t property,
                                                      xcb_atom_t type, uint32_t maxItems) {
    const auto cookie = xcb_get_property(m_connection, 0, window, property, type, 0, maxItems);
    XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection, cookie, nullptr),
                                             &std::free);
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto* values = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}

} // namespace vantle
