#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <functional>
#include <optional>
#include <vector>
#include <xcb/xcb.h>
#include <xcb/xcb_ewmh.h>

class QSocketNotifier;

namespace vantle {

// One connection of Vantle's own to the X server, shared by the X11 backends. It is separate
// from Qt's, so the backends work whatever Qt platform plugin is in use and see every event they
// asked for. Events are read when the socket becomes readable and handed to each listener.
class X11Connection final : public QObject {
    Q_OBJECT
public:
    using EventListener = std::function<void(const xcb_generic_event_t&)>;

    // Connects to `displayName` (empty: $DISPLAY). Null, with a log line, when that fails.
    static std::unique_ptr<X11Connection> open(const QString& displayName = {});
    ~X11Connection() override;

    xcb_connection_t* connection() const { return m_connection; }
    xcb_ewmh_connection_t* ewmh() { return &m_ewmh; }
    xcb_window_t root() const { return m_root; }
    int screenNumber() const { return m_screenNumber; }

    xcb_atom_t atom(const char* name);
    // Adds to the root window's event mask.
    void selectRootEvents(uint32_t mask);

    void addListener(EventListener listener);
    // Reads and dispatches whatever the server has already sent, so state is current.
    void dispatchPending();
    // Sends queued requests.
    void flush();

    // Property helpers; nothing when the property is missing or of another format.
    std::optional<QByteArray> stringProperty(xcb_window_t window, xcb_atom_t property,
                                             xcb_atom_t type);
    std::vector<uint32_t> cardinalProperty(xcb_window_t window, xcb_atom_t property,
                                           xcb_atom_t type, uint32_t maxItems = 1u << 20);

private:
    X11Connection(xcb_connection_t* connection, int screenNumber);

    xcb_connection_t* m_connection;
    xcb_ewmh_connection_t m_ewmh{};
    xcb_window_t m_root = 0;
    int m_screenNumber = 0;
    uint32_t m_rootMask = 0;
    QSocketNotifier* m_notifier = nullptr;
    std::vector<EventListener> m_listeners;
    bool m_reportedDisconnect = false;
};

} // namespace vantle
