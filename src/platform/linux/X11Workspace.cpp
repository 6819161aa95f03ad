#include "platform/linux/X11Workspace.h"

#include "platform/Log.h"
#include "platform/linux/X11RunningApplication.h"

#include <cstdlib>
#include <memory>
#include <xcb/res.h>
#include <xcb/xcb_icccm.h>

namespace vantle {

namespace {

template <typename T>
std::unique_ptr<T, decltype(&std::free)> owned(T* reply) {
    return {reply, &std::free};
}

// Activation changes arrive in bursts (focus moving through a dialog and back); one settled read
// is enough.
constexpr int kActiveDebounceMs = 50;
// Icons are shown small; anything this size or just above scales down cleanly.
constexpr uint32_t kPreferredIconSize = 32;

// WM_CLASS holds two NUL-terminated strings: the instance, then the class.
std::pair<QString, QString> splitWmClass(const QByteArray& bytes) {
    const QList<QByteArray> parts = bytes.split('\0');
    return {parts.value(0).isEmpty() ? QString() : QString::fromUtf8(parts.value(0)),
            parts.value(1).isEmpty() ? QString() : QString::fromUtf8(parts.value(1))};
}

} // namespace

X11Workspace::X11Workspace(X11Connection& connection, QObject* parent)
    : Workspace(parent)
    , m_x(connection) {
    xcb_connection_t* c = m_x.connection();
    xcb_prefetch_extension_data(c, &xcb_res_id);
    const xcb_query_extension_reply_t* res = xcb_get_extension_data(c, &xcb_res_id);
    m_hasXRes = res && res->present;
    if (!m_hasXRes) {
        logLine(QStringLiteral("the X server has no X-Resource extension; process ids come from "
                               "_NET_WM_PID, which some clients do not set"));
    }
    m_gtkApplicationId = m_x.atom("_GTK_APPLICATION_ID");
    m_wmChangeState = m_x.atom("WM_CHANGE_STATE");
    m_trayManagerSelection =
        m_x.atom(QStringLiteral("_NET_SYSTEM_TRAY_S%1").arg(m_x.screenNumber()).toLatin1());

    m_rescanTimer.setSingleShot(true);
    m_rescanTimer.setInterval(0);
    connect(&m_rescanTimer, &QTimer::timeout, this, &X11Workspace::rescan);
    m_notifyTimer.setSingleShot(true);
    m_notifyTimer.setInterval(0);
    connect(&m_notifyTimer, &QTimer::timeout, this, &X11Workspace::notify);
    m_activeTimer.setSingleShot(true);
    m_activeTimer.setInterval(kActiveDebounceMs);
    connect(&m_activeTimer, &QTimer::timeout, this, &X11Workspace::updateActiveWindow);

    m_x.addListener([this](const xcb_generic_event_t& event) { onEvent(event); });
    m_x.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    rescan();
    updateActiveWindow();
}

X11Workspace::~X11Workspace() = default;

void X11Workspace::onEvent(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7f) {
    case XCB_PROPERTY_NOTIFY: {
        const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (notify.window != m_x.root()) {
            return;
        }
        if (notify.atom == m_x.ewmh()->_NET_CLIENT_LIST) {
            scheduleRescan();
        } else if (notify.atom == m_x.ewmh()->_NET_ACTIVE_WINDOW) {
            m_activeTimer.start();
        }
        return;
    }
    case XCB_CLIENT_MESSAGE: {
        // A tray manager announces itself with MANAGER on the root window.
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
        if (message.window == m_x.root() && message.data.data32[1] == m_trayManagerSelection) {
            scheduleRescan();
        }
        return;
    }
    case XCB_CREATE_NOTIFY:
    case XCB_DESTROY_NOTIFY:
    case XCB_REPARENT_NOTIFY:
        // Only the tray manager's children are watched this way.
        scheduleRescan();
        return;
    default:
        return;
    }
}

void X11Workspace::scheduleRescan() {
    m_dirty = true;
    m_rescanTimer.start();
}

void X11Workspace::ensureCurrent() const {
    // Answers reflect everything the server has already reported, even before the event loop
    // has got round to it.
    auto* self = const_cast<X11Workspace*>(this);
    if (m_rescanning) {
        return;
    }
    self->m_x.dispatchPending();
    if (m_dirty) {
        self->rescan();
    }
}

QList<RunningApplicationRef> X11Workspace::runningApplications() const {
    ensureCurrent();
    QList<RunningApplicationRef> list;
    list.reserve(m_order.size());
    for (const qint32 pid : m_order) {
        list.append(m_apps.value(pid));
    }
    return list;
}

RunningApplicationRef X11Workspace::application(qint32 pid) const {
    ensureCurrent();
    return m_apps.value(pid);
}

std::optional<qint32> X11Workspace::frontmostApplication() const {
    ensureCurrent();
    return m_activePid;
}

void X11Workspace::setStatusNotifierPids(const QSet<qint32>& pids) {
    if (pids != m_statusNotifierPids) {
        m_statusNotifierPids = pids;
        scheduleRescan();
    }
}

void X11Workspace::readWindows(const std::vector<xcb_window_t>& windows, bool tray) {
    // Every request goes out before any reply is awaited: one round trip for the whole batch.
    xcb_connection_t* c = m_x.connection();
    struct Pending {
        xcb_window_t window;
        xcb_res_query_client_ids_cookie_t res;
        xcb_get_property_cookie_t netPid;
        xcb_get_property_cookie_t wmClass;
        xcb_get_property_cookie_t appId;
        xcb_get_property_cookie_t type;
    };
    std::vector<Pending> pending;
    pending.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        Pending p{window, {}, {}, {}, {}, {}};
        if (m_hasXRes) {
            const xcb_res_client_id_spec_t query{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
            p.res = xcb_res_query_client_ids(c, 1, &query);
        }
        p.netPid = xcb_get_property(c, 0, window, m_x.ewmh()->_NET_WM_PID, XCB_ATOM_CARDINAL, 0, 1);
        p.wmClass = xcb_get_property(c, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 256);
        p.appId =
            xcb_get_property(c, 0, window, m_gtkApplicationId, XCB_GET_PROPERTY_TYPE_ANY, 0, 256);
        p.type =
            xcb_get_property(c, 0, window, m_x.ewmh()->_NET_WM_WINDOW_TYPE, XCB_ATOM_ATOM, 0, 16);
        pending.push_back(p);
    }
    for (const Pending& p : pending) {
        Window info;
        info.isTray = tray;
        if (m_hasXRes) {
            if (auto reply = owned(xcb_res_query_client_ids_reply(c, p.res, nullptr))) {
                auto it = xcb_res_query_client_ids_ids_iterator(reply.get());
                for (; it.rem > 0; xcb_res_client_id_value_next(&it)) {
                    const auto& [client, length] = *it.data;
                    if (client.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID && length >= 1 &&
                        xcb_res_client_id_value_value_length(it.data) >= 1) {
                        info.pid = static_cast<qint32>(*xcb_res_client_id_value_value(it.data));
                    }
                }
            }
        }
        if (auto reply = owned(xcb_get_property_reply(c, p.netPid, nullptr))) {
            if (info.pid == 0 && reply->format == 32 &&
                xcb_get_property_value_length(reply.get()) == 4) {
                info.pid = static_cast<qint32>(
                    *static_cast<const uint32_t*>(xcb_get_property_value(reply.get())));
            }
        }
        if (auto reply = owned(xcb_get_property_reply(c, p.wmClass, nullptr))) {
            const QByteArray bytes(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                   xcb_get_property_value_length(reply.get()));
            std::tie(info.wmInstance, info.wmClass) = splitWmClass(bytes);
        }
        if (auto reply = owned(xcb_get_property_reply(c, p.appId, nullptr))) {
            if (reply->format == 8) {
                info.applicationId =
                    QString::fromUtf8(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                      xcb_get_property_value_length(reply.get()));
            }
        }
        bool desktopShell = false;
        if (auto reply = owned(xcb_get_property_reply(c, p.type, nullptr))) {
            const auto* types = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
            const int count = xcb_get_property_value_length(reply.get()) / 4;
            for (int i = 0; i < count; ++i) {
                desktopShell = desktopShell || types[i] == m_x.ewmh()->_NET_WM_WINDOW_TYPE_DOCK ||
                               types[i] == m_x.ewmh()->_NET_WM_WINDOW_TYPE_DESKTOP;
            }
        }
        // Panels and the desktop belong to the session itself, not to an application; a window
        // whose process cannot be told is not something to quit either. Both are remembered as
        // nobody's, so they are not read again on every change.
        if (desktopShell || info.pid <= 0) {
            info.pid = 0;
        }
        m_windows.insert(p.window, info);
    }
}

std::vector<xcb_window_t> X11Workspace::trayIconWindows() {
    xcb_connection_t* c = m_x.connection();
    auto owner = owned(xcb_get_selection_owner_reply(
        c, xcb_get_selection_owner(c, m_trayManagerSelection), nullptr));
    const xcb_window_t manager = owner ? owner->owner : xcb_window_t(XCB_WINDOW_NONE);
    if (manager != m_trayManager) {
        m_trayManager = manager;
        if (manager != XCB_WINDOW_NONE) {
            const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
            xcb_change_window_attributes(c, manager, XCB_CW_EVENT_MASK, &mask);
        }
    }
    if (manager == XCB_WINDOW_NONE) {
        return {};
    }
    auto tree = owned(xcb_query_tree_reply(c, xcb_query_tree(c, manager), nullptr));
    if (!tree) {
        return {};
    }
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    return {children, children + xcb_query_tree_children_length(tree.get())};
}

void X11Workspace::rescan() {
    if (m_rescanning) {
        return;
    }
    m_rescanning = true;
    m_dirty = false;
    m_rescanTimer.stop();
    xcb_connection_t* c = m_x.connection();

    xcb_ewmh_get_windows_reply_t clients{};
    std::vector<xcb_window_t> clientList;
    if (xcb_ewmh_get_client_list_reply(m_x.ewmh(),
                                       xcb_ewmh_get_client_list(m_x.ewmh(), m_x.screenNumber()),
                                       &clients, nullptr)) {
        clientList.assign(clients.windows, clients.windows + clients.windows_len);
        xcb_ewmh_get_windows_reply_wipe(&clients);
    }
    const std::vector<xcb_window_t> trayWindows = trayIconWindows();

    // Forget windows that are gone; read the new ones.
    QSet<xcb_window_t> present(clientList.begin(), clientList.end());
    present.unite(QSet<xcb_window_t>(trayWindows.begin(), trayWindows.end()));
    for (auto it = m_windows.begin(); it != m_windows.end();) {
        it = present.contains(it.key()) ? std::next(it) : m_windows.erase(it);
    }
    std::vector<xcb_window_t> fresh;
    for (const xcb_window_t window : clientList) {
        if (!m_windows.contains(window)) {
            fresh.push_back(window);
        }
    }
    readWindows(fresh, false);
    fresh.clear();
    for (const xcb_window_t window : trayWindows) {
        if (!m_windows.contains(window)) {
            fresh.push_back(window);
        }
    }
    readWindows(fresh, true);
    m_clientList = std::move(clientList);

    // Which processes are applications now, and how they present themselves.
    QList<qint32> windowOrder;
    QHash<qint32, ActivationPolicy> policies;
    for (const xcb_window_t window : m_clientList) {
        const auto it = m_windows.constFind(window);
        if (it != m_windows.constEnd() && it->pid > 0 && !policies.contains(it->pid)) {
            policies.insert(it->pid, ActivationPolicy::regular);
            windowOrder.append(it->pid);
        }
    }
    QSet<qint32> trayPids = m_statusNotifierPids;
    const qint32 managerPid = m_windows.value(m_trayManager).pid;
    for (const xcb_window_t window : trayWindows) {
        const qint32 pid = m_windows.value(window).pid;
        if (pid > 0 && pid != managerPid) {
            trayPids.insert(pid);
        }
    }
    for (const qint32 pid : std::as_const(trayPids)) {
        if (!policies.contains(pid)) {
            policies.insert(pid, ActivationPolicy::accessory);
            windowOrder.append(pid);
        }
    }

    QList<RunningApplicationRef> launched;
    QList<RunningApplicationRef> terminated;
    QList<qint32> order;
    // Known applications keep their place; newcomers join at the end in window order.
    for (const qint32 pid : std::as_const(m_order)) {
        const auto app = m_apps.value(pid);
        if (policies.contains(pid) && !app->isTerminated()) {
            order.append(pid);
        } else {
            terminated.append(app);
            m_apps.remove(pid);
        }
    }
    for (const qint32 pid : std::as_const(windowOrder)) {
        if (!m_apps.contains(pid)) {
            auto app = std::make_shared<X11RunningApplication>(this, pid);
            m_apps.insert(pid, app);
            order.append(pid);
            launched.append(app);
        }
    }
    for (auto it = policies.cbegin(); it != policies.cend(); ++it) {
        X11RunningApplication& app = *m_apps.value(it.key());
        app.setPolicy(it.value());
        if (!app.hasIdentity()) {
            resolveIdentity(app);
        }
    }
    m_order = std::move(order);
    m_rescanning = false;

    xcb_flush(c);
    // Told from the event loop, never from inside a query: a listener that reacts by asking
    // for the list again must not re-enter a scan.
    m_pendingTerminated.append(terminated);
    m_pendingLaunched.append(launched);
    if (!m_pendingTerminated.isEmpty() || !m_pendingLaunched.isEmpty()) {
        m_notifyTimer.start();
    }
}

void X11Workspace::notify() {
    const QList<RunningApplicationRef> terminated = std::exchange(m_pendingTerminated, {});
    const QList<RunningApplicationRef> launched = std::exchange(m_pendingLaunched, {});
    for (const auto& app : terminated) {
        emit didTerminateApplication(app);
    }
    for (const auto& app : launched) {
        emit didLaunchApplication(app);
    }
}

void X11Workspace::resolveIdentity(X11RunningApplication& app) {
    const qint32 pid = app.processIdentifier();
    DesktopEntryIndex::Clues clues;
    clues.pid = pid;
    for (const xcb_window_t window : windowsOf(pid, true)) {
        const Window& info = m_windows[window];
        if (clues.applicationId.isEmpty()) {
            clues.applicationId = info.applicationId;
        }
        if (clues.wmClass.isEmpty()) {
            clues.wmClass = info.wmClass;
            clues.wmInstance = info.wmInstance;
        }
    }
    if (const auto entry = m_entries.match(clues)) {
        app.setIdentity(entry->name.isEmpty() ? std::nullopt : std::optional(entry->name),
                        entry->id, entry->iconName);
    } else {
        app.setIdentity(clues.wmClass.isEmpty() ? std::nullopt : std::optional(clues.wmClass),
                        std::nullopt, QString());
    }
}

QList<xcb_window_t> X11Workspace::windowsOf(qint32 pid, bool includeTray) const {
    QList<xcb_window_t> windows;
    for (const xcb_window_t window : m_clientList) {
        const auto it = m_windows.constFind(window);
        if (it != m_windows.constEnd() && it->pid == pid) {
            windows.append(window);
        }
    }
    if (includeTray) {
        for (auto it = m_windows.cbegin(); it != m_windows.cend(); ++it) {
            if (it->isTray && it->pid == pid) {
                windows.append(it.key());
            }
        }
    }
    return windows;
}

void X11Workspace::updateActiveWindow() {
    xcb_window_t active = XCB_WINDOW_NONE;
    xcb_ewmh_get_active_window_reply(
        m_x.ewmh(), xcb_ewmh_get_active_window(m_x.ewmh(), m_x.screenNumber()), &active, nullptr);
    if (active != XCB_WINDOW_NONE && !m_windows.contains(active)) {
        rescan();
    }
    const auto it = m_windows.constFind(active);
    const std::optional<qint32> pid =
        it == m_windows.constEnd() || it->pid <= 0 ? std::nullopt : std::optional(it->pid);
    if (pid == m_activePid) {
        return;
    }
    const std::optional<qint32> previous = std::exchange(m_activePid, pid);
    if (previous) {
        emit didDeactivateApplication(m_apps.value(*previous));
    }
    if (pid) {
        emit didActivateApplication(m_apps.value(*pid));
    }
}

int X11Workspace::closeWindows(qint32 pid) {
    const QList<xcb_window_t> windows = windowsOf(pid);
    for (const xcb_window_t window : windows) {
        xcb_ewmh_request_close_window(m_x.ewmh(), m_x.screenNumber(), window, XCB_CURRENT_TIME,
                                      XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER);
    }
    m_x.flush();
    return static_cast<int>(windows.size());
}

int X11Workspace::iconifyWindows(qint32 pid) {
    const QList<xcb_window_t> windows = windowsOf(pid);
    for (const xcb_window_t window : windows) {
        // ICCCM: the window manager iconifies on a WM_CHANGE_STATE request to the root window.
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = m_wmChangeState;
        message.data.data32[0] = XCB_ICCCM_WM_STATE_ICONIC;
        xcb_send_event(m_x.connection(), 0, m_x.root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
    }
    m_x.flush();
    return static_cast<int>(windows.size());
}

QImage X11Workspace::windowIcon(qint32 pid) {
    for (const xcb_window_t window : windowsOf(pid)) {
        // _NET_WM_ICON: width, height, then width*height ARGB pixels, repeated per size.
        const std::vector<uint32_t> data =
            m_x.cardinalProperty(window, m_x.ewmh()->_NET_WM_ICON, XCB_ATOM_CARDINAL);
        std::size_t best = data.size();
        uint32_t bestSize = 0;
        for (std::size_t i = 0; i + 2 <= data.size();) {
            const uint32_t w = data[i];
            const uint32_t h = data[i + 1];
            const std::size_t pixels = std::size_t(w) * h;
            if (w == 0 || h == 0 || i + 2 + pixels > data.size()) {
                break;
            }
            const bool better =
                best == data.size() ||
                (w >= kPreferredIconSize ? bestSize < kPreferredIconSize || w < bestSize
                                         : w > bestSize);
            if (better) {
                best = i;
                bestSize = w;
            }
            i += 2 + pixels;
        }
        if (best == data.size()) {
            continue;
        }
        const int w = static_cast<int>(data[best]);
        const int h = static_cast<int>(data[best + 1]);
        QImage image(w, h, QImage::Format_ARGB32);
        for (int y = 0; y < h; ++y) {
            auto* line = reinterpret_cast<uint32_t*>(image.scanLine(y));
            for (int x = 0; x < w; ++x) {
                line[x] = data[best + 2 + std::size_t(y) * std::size_t(w) + std::size_t(x)];
            }
        }
        return image;
    }
    return {};
}

} // namespace vantle
