#pragma once

#include "platform/Workspace.h"
#include "platform/linux/DesktopEntryIndex.h"
#include "platform/linux/X11Connection.h"

#include <QHash>
#include <QImage>
#include <QSet>
#include <QTimer>

namespace vantle {

class X11RunningApplication;

// Running applications on an X11 desktop, read from the window manager's EWMH client list. An
// application is a process owning managed windows (regular) or only a tray icon (accessory);
// windowless processes are not listed. Launches and exits follow _NET_CLIENT_LIST, activation
// follows _NET_ACTIVE_WINDOW.
class X11Workspace final : public Workspace {
    Q_OBJECT
public:
    explicit X11Workspace(X11Connection& connection, QObject* parent = nullptr);
    ~X11Workspace() override;

    bool isSupported() const override { return true; }
    QList<RunningApplicationRef> runningApplications() const override;
    RunningApplicationRef application(qint32 pid) const override;
    std::optional<qint32> frontmostApplication() const override;

    // Processes that show a StatusNotifierItem; they count as tray applications.
    void setStatusNotifierPids(const QSet<qint32>& pids);

    // Asks every window of `pid` to close (the application may refuse). Returns how many.
    int closeWindows(qint32 pid);
    // Iconifies every window of `pid`. Returns how many.
    int iconifyWindows(qint32 pid);
    // The best-sized _NET_WM_ICON of the process's first window, if it has one.
    QImage windowIcon(qint32 pid);

    // Re-reads the client list and the tray now.
    void rescan();

private:
    struct Window {
        qint32 pid = 0;
        QString wmInstance;
        QString wmClass;
        QString applicationId;
        bool isTray = false;
    };

    void onEvent(const xcb_generic_event_t& event);
    void scheduleRescan();
    void ensureCurrent() const;
    void readWindows(const std::vector<xcb_window_t>& windows, bool tray);
    std::vector<xcb_window_t> trayIconWindows();
    void updateActiveWindow();
    void notify();
    void resolveIdentity(X11RunningApplication& app);
    QList<xcb_window_t> windowsOf(qint32 pid, bool includeTray = false) const;

    X11Connection& m_x;
    DesktopEntryIndex m_entries;
    bool m_hasXRes = false;
    xcb_atom_t m_gtkApplicationId = XCB_ATOM_NONE;
    xcb_atom_t m_trayManagerSelection = XCB_ATOM_NONE;
    xcb_atom_t m_wmChangeState = XCB_ATOM_NONE;
    xcb_window_t m_trayManager = XCB_WINDOW_NONE;

    std::vector<xcb_window_t> m_clientList;
    QHash<xcb_window_t, Window> m_windows;
    QList<qint32> m_order;
    QHash<qint32, std::shared_ptr<X11RunningApplication>> m_apps;
    QSet<qint32> m_statusNotifierPids;
    std::optional<qint32> m_activePid;

    QList<RunningApplicationRef> m_pendingLaunched;
    QList<RunningApplicationRef> m_pendingTerminated;
    QTimer m_rescanTimer;
    QTimer m_notifyTimer;
    QTimer m_activeTimer;
    bool m_dirty = true;
    bool m_rescanning = false;
};

} // namespace vantle
