#include "fakes/ManualClock.h"
#include "monitor/AppMonitorService.h"
#include "platform/linux/StatusNotifierTray.h"
#include "platform/linux/X11Connection.h"
#include "platform/linux/X11HotKeyRegistrar.h"
#include "platform/linux/X11Workspace.h"
#include "platform/linux/XScreenSaverIdleTime.h"
#include "support/PrivateSessionBus.h"
#include "support/VirtualDesktop.h"
#include "support/X11Client.h"
#include "system/HotKeyService.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <unistd.h>
#include <xcb/xcb_icccm.h>
#include <xcb/xtest.h>

using namespace vantle;
using std::chrono::seconds;
using namespace vantle::testing;
using Command = AppCommand;
using namespace Qt::StringLiterals;

namespace {

const QList<Command> kGlobal{Command::quitAllApps, Command::sleep, Command::restart,
                             Command::shutDown};

const AppInfo* findByPid(const QList<AppInfo>& apps, qint64 pid) {
    for (const AppInfo& app : apps) {
        if (app.id == pid) {
            return &app;
        }
    }
    return nullptr;
}

// Stands in for the desktop's tray host: reports which items are registered.
class FakeStatusNotifierWatcher final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems MEMBER items)
public:
    explicit FakeStatusNotifierWatcher(QObject* parent)
        : QDBusAbstractAdaptor(parent) {}
    QStringList items;
signals:
    void StatusNotifierItemRegistered(const QString& item);
};

} // namespace

// The X11 backend against a real X server, window manager and clients; key presses come through
// xdotool or XTEST.
class TestX11Backend : public QObject {
    Q_OBJECT

    std::unique_ptr<VirtualDesktop> m_desktop;
    std::unique_ptr<X11Connection> m_x;
    std::unique_ptr<X11Workspace> m_workspace;
    std::unique_ptr<ManualClock> m_clock;
    std::unique_ptr<AppMonitorService> m_monitor;
    QTemporaryDir m_data;
    std::vector<std::unique_ptr<QProcess>> m_clients;
    std::unique_ptr<X11HotKeyRegistrar> m_registrar;
    std::unique_ptr<HotKeyService> m_service;
    QList<Command> m_received;

    QProcess& startClient(const QString& program, const QStringList& arguments) {
        m_clients.push_back(m_desktop->start(program, arguments));
        QProcess& client = *m_clients.back();
        client.setProcessChannelMode(QProcess::MergedChannels);
        return client;
    }
    QProcess& startRefuser(const QStringList& arguments = {}) {
        return startClient(QStringLiteral(VANTLE_REFUSER), arguments);
    }
    static qint32 pidOf(const QProcess& process) {
        return static_cast<qint32>(process.processId());
    }

    bool listed(qint32 pid) { return findByPid(m_monitor->runningApps(), pid) != nullptr; }

    // The top-level windows the window manager lists for a process.
    QList<xcb_window_t> windowsOf(qint32 pid) {
        QList<xcb_window_t> windows;
        xcb_ewmh_get_windows_reply_t list{};
        if (xcb_ewmh_get_client_list_reply(m_x->ewmh(), xcb_ewmh_get_client_list(m_x->ewmh(), 0),
                                           &list, nullptr)) {
            for (uint32_t i = 0; i < list.windows_len; ++i) {
                const auto pids = m_x->cardinalProperty(list.windows[i], m_x->ewmh()->_NET_WM_PID,
                                                        XCB_ATOM_CARDINAL);
                if (!pids.empty() && static_cast<qint32>(pids.front()) == pid) {
                    windows << list.windows[i];
                }
            }
            xcb_ewmh_get_windows_reply_wipe(&list);
        }
        return windows;
    }

    // Iconic per ICCCM WM_STATE, which the window manager sets.
    bool isIconic(qint32 pid) {
        const xcb_atom_t wmState = m_x->atom("WM_STATE");
        const QList<xcb_window_t> windows = windowsOf(pid);
        const auto state = windows.isEmpty()
                               ? std::vector<uint32_t>()
                               : m_x->cardinalProperty(windows.first(), wmState, wmState);
        return !state.empty() && state.front() == XCB_ICCCM_WM_STATE_ICONIC;
    }

    void activate(qint32 pid) {
        for (const xcb_window_t window : windowsOf(pid)) {
            xcb_ewmh_request_change_active_window(m_x->ewmh(), 0, window,
                                                  XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER,
                                                  XCB_CURRENT_TIME, XCB_WINDOW_NONE);
        }
        m_x->flush();
    }

    void press(const QString& keys) {
        auto xdotool = m_desktop->start(u"xdotool"_s, {u"key"_s, keys});
        QVERIFY(xdotool->waitForFinished(10'000));
        QCOMPARE(xdotool->exitCode(), 0);
    }

private slots:
    void initTestCase() {
        m_desktop = std::make_unique<VirtualDesktop>();
        if (!m_desktop->isRunning()) {
            QSKIP(qPrintable(m_desktop->error()));
        }
        // A desktop entry so the refuser's class maps to an id and a localised name.
        QDir().mkpath(m_data.filePath(u"applications"_s));
        QFile entry(m_data.filePath(u"applications/org.example.Refuser.desktop"_s));
        QVERIFY(entry.open(QIODevice::WriteOnly));
        // GIO ignores entries whose program does not exist, so name the real one.
        entry.write("[Desktop Entry]\nType=Application\nName=Stubborn Editor\nExec=" VANTLE_REFUSER
                    "\nStartupWMClass=Refuser\nIcon=text-editor\n");
        qputenv("XDG_DATA_DIRS", m_data.path().toLocal8Bit());
        qputenv("XDG_DATA_HOME", m_data.path().toLocal8Bit());
    }

    void init() {
        m_x = X11Connection::open(m_desktop->display());
        QVERIFY(m_x);
        m_workspace = std::make_unique<X11Workspace>(*m_x);
        m_clock = std::make_unique<ManualClock>();
        m_monitor = std::make_unique<AppMonitorService>(*m_workspace, *m_clock,
                                                        static_cast<qint32>(::getpid()));
        m_registrar = std::make_unique<X11HotKeyRegistrar>(*m_x);
        m_service = std::make_unique<HotKeyService>(*m_registrar);
        m_received.clear();
        m_service->onCommand = [this](Command command) { m_received.append(command); };
    }

    void cleanup() {
        m_clients.clear(); // a QProcess kills its program when it goes
        m_service.reset();
        m_registrar.reset();
        m_monitor.reset();
        m_workspace.reset();
        m_x.reset();
    }

    void listsRealClientsWithTheirIdentityAsListAppsDoes() {
        QProcess& xterm = startClient(u"xterm"_s, {});
        QProcess& refuser = startRefuser();
        // An X client of this very process: the monitor must leave it out.
        QProcess& own = startRefuser({u"--class"_s, u"Own"_s});
        QTRY_VERIFY_WITH_TIMEOUT(listed(pidOf(xterm)) && listed(pidOf(refuser)), 20'000);

        const AppInfo* editor = findByPid(m_monitor->runningApps(), pidOf(refuser));
        QCOMPARE(editor->name, u"Stubborn Editor"_s);
        QCOMPARE(editor->bundleIdentifier, std::optional(u"org.example.Refuser"_s));
        QVERIFY(!editor->isBackground);
        const AppInfo* terminal = findByPid(m_monitor->runningApps(), pidOf(xterm));
        QCOMPARE(terminal->name, u"XTerm"_s);
        QVERIFY(!terminal->isBackground);

        AppMonitorService self(*m_workspace, *m_clock, pidOf(own));
        QTRY_VERIFY(listed(pidOf(own)));
        self.refresh();
        QVERIFY(!findByPid(self.runningApps(), pidOf(own)));
        QVERIFY(findByPid(self.runningApps(), pidOf(xterm)));

        // `vantle --list-apps` shows the same snapshot.
        auto listing = m_desktop->start(QStringLiteral(VANTLE_BINARY), {u"--list-apps"_s});
        QVERIFY(listing->waitForFinished(30'000));
        QCOMPARE(listing->exitCode(), 0);
        const QStringList lines =
            QString::fromUtf8(listing->readAllStandardOutput()).split(QLatin1Char('\n'));
        QVERIFY(lines.first().startsWith(u"PID"_s));
        const QString row =
            lines.filter(QRegularExpression(u"^%1\\s"_s.arg(pidOf(refuser)))).value(0);
        QVERIFY2(row.contains(u"Stubborn Editor"_s) && row.contains(u"org.example.Refuser"_s) &&
                     row.contains(u"regular"_s),
                 qPrintable(lines.join(QLatin1Char('\n'))));
    }

    // Activation stamps the last active date; hiding iconifies; a polite quit closes what agrees
    // and reports refusers; forcing does not ask, and a process that has exited stays terminated.
    void activateHideThenQuitPolitelyThenByForce() {
        QProcess& xterm = startClient(u"xterm"_s, {});
        QProcess& refuser = startRefuser();
        QTRY_VERIFY_WITH_TIMEOUT(listed(pidOf(xterm)) && listed(pidOf(refuser)), 20'000);
        const QList<AppInfo> batch{*findByPid(m_monitor->runningApps(), pidOf(xterm)),
                                   *findByPid(m_monitor->runningApps(), pidOf(refuser))};

        activate(pidOf(xterm));
        QTRY_COMPARE(m_workspace->frontmostApplication(), std::optional(pidOf(xterm)));
        m_clock->advance(seconds(600));
        const QDateTime switchedAt = m_clock->now();
        activate(pidOf(refuser));
        QTRY_COMPARE(m_workspace->frontmostApplication(), std::optional(pidOf(refuser)));
        // Both the app that came to the front and the one that left it are stamped.
        QTRY_COMPARE(m_monitor->lastActiveDate(pidOf(refuser)), switchedAt);
        QCOMPARE(m_monitor->lastActiveDate(pidOf(xterm)), switchedAt);

        const RunningApplicationRef handle = m_workspace->application(pidOf(refuser));
        QVERIFY(!isIconic(pidOf(refuser)));
        QVERIFY(handle->hide());
        QTRY_VERIFY(isIconic(pidOf(refuser)));

        std::optional<QList<AppInfo>> stillRunning;
        m_monitor->quit(batch, [&](QList<AppInfo> apps) { stillRunning = apps; });
        QVERIFY(xterm.waitForFinished(10'000));
        QByteArray said;
        QTRY_VERIFY2((said += refuser.readAll()).contains("close requested"), said.constData());
        m_clock->advance(seconds(10));
        QCOMPARE(stillRunning, std::optional(QList<AppInfo>{batch[1]}));
        QTRY_VERIFY(!listed(pidOf(xterm)));
        QCOMPARE(refuser.state(), QProcess::Running);
        QVERIFY(!handle->isTerminated());

        QVERIFY(handle->forceTerminate());
        QVERIFY(refuser.waitForFinished(10'000));
        QCOMPARE(refuser.exitStatus(), QProcess::CrashExit);
        QTRY_VERIFY(!listed(pidOf(refuser)));
        QTRY_VERIFY(handle->isTerminated());
        QVERIFY(!handle->terminate());
        QVERIFY(!handle->forceTerminate());
    }

    // A process with a tray item and no window is a background app, not a missing one.
    void trayOnlyProcessIsListedAsBackground() {
        PrivateSessionBus bus;
        if (!bus.isRunning()) {
            QSKIP(qPrintable(bus.error()));
        }
        const auto trayApp = m_desktop->start(
            u"/usr/bin/python3"_s,
            {u"-c"_s, QStringLiteral("import dbus, time\n"
                                     "dbus.SessionBus().request_name('org.example.TrayOnly')\n"
                                     "print('ready', flush=True)\ntime.sleep(600)")},
            bus.address());
        QVERIFY(trayApp->waitForReadyRead(10'000));

        QDBusConnection connection = bus.connection();
        QObject host;
        auto* watcher = new FakeStatusNotifierWatcher(&host);
        watcher->items = {u"org.example.TrayOnly/StatusNotifierItem"_s};
        QVERIFY(connection.registerObject(u"/StatusNotifierWatcher"_s, &host));
        QVERIFY(connection.registerService(u"org.kde.StatusNotifierWatcher"_s));

        StatusNotifierTray tray(connection);
        QCOMPARE(tray.pids(), QSet<qint32>{pidOf(*trayApp)});
        m_workspace->setStatusNotifierPids(tray.pids());
        QTRY_VERIFY(listed(pidOf(*trayApp)));
        QVERIFY(findByPid(m_monitor->runningApps(), pidOf(*trayApp))->isBackground);
        // Nothing to close politely: the request is refused rather than turned into a signal.
        QVERIFY(!m_workspace->application(pidOf(*trayApp))->terminate());
        QCOMPARE(trayApp->state(), QProcess::Running);
    }

    void inputResetsTheIdleTime() {
        XScreenSaverIdleTime idle(*m_x);
        QTRY_VERIFY_WITH_TIMEOUT(idle.secondsSinceLastInput().value_or(0) >= 1.0, 5'000);
        xcb_connection_t* c = m_x->connection();
        xcb_test_fake_input(c, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, m_x->root(), 40, 40, 0);
        xcb_test_fake_input(c, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, m_x->root(), 80, 80, 0);
        m_x->flush();
        QTRY_VERIFY(idle.secondsSinceLastInput().value_or(99) < 0.5);
    }

    // Global shortcuts.
    void aPressReachesOnCommandWhateverTheLocks_data() {
        QTest::addColumn<QString>("lockKey");
        QTest::addColumn<int>("lockMask");
        QTest::newRow("no lock") << QString() << 0;
        QTest::newRow("NumLock on") << u"Num_Lock"_s << int(XCB_MOD_MASK_2);
        QTest::newRow("CapsLock on") << u"Caps_Lock"_s << int(XCB_MOD_MASK_LOCK);
    }
    void aPressReachesOnCommandWhateverTheLocks() {
        QFETCH(QString, lockKey);
        QFETCH(int, lockMask);
        m_service->registerHotKeys(kGlobal);
        QVERIFY(m_service->unavailable().isEmpty());

        X11Client probe(m_desktop->display());
        if (!lockKey.isEmpty()) {
            press(lockKey);
            QTRY_VERIFY((probe.modifierState() & lockMask) != 0);
        }
        press(u"ctrl+alt+super+s"_s);
        press(u"ctrl+alt+super+d"_s);
        press(u"ctrl+alt+s"_s); // not a shortcut of ours
        QTRY_COMPARE(m_received, (QList<Command>{Command::sleep, Command::shutDown}));
        if (!lockKey.isEmpty()) {
            press(lockKey);
            QTRY_COMPARE(probe.modifierState() & lockMask, 0);
        }
    }

    void aCombinationHeldElsewhereIsUnavailableAndTheOthersWork() {
        X11Client other(m_desktop->display());
        const xcb_keycode_t q = other.keycodeOf('q');
        QVERIFY(q != 0);
        QVERIFY(other.grab(q, kCtrlAltSuper));

        m_service->registerHotKeys(kGlobal);
        QCOMPARE(m_service->unavailable(), QList<Command>{Command::quitAllApps});
        // The lock variants taken before the clash showed were let go again.
        for (const uint16_t lock : {uint16_t(XCB_MOD_MASK_LOCK), uint16_t(XCB_MOD_MASK_2)}) {
            QVERIFY(other.canGrab(q, kCtrlAltSuper | lock));
        }
        press(u"ctrl+alt+super+q"_s);
        press(u"ctrl+alt+super+r"_s);
        QTRY_COMPARE(m_received, QList<Command>{Command::restart});

        // Once the other program lets go, the next registration claims it.
        other.ungrab(q, kCtrlAltSuper);
        QTRY_VERIFY((m_service->registerHotKeys(kGlobal), m_service->unavailable().isEmpty()));
        press(u"ctrl+alt+super+q"_s);
        QTRY_COMPARE(m_received, (QList<Command>{Command::restart, Command::quitAllApps}));

        // Switched off, a shortcut is released for another program to take.
        m_service->registerHotKeys({Command::shutDown});
        QVERIFY(other.canGrab(other.keycodeOf('s'), kCtrlAltSuper));
        press(u"ctrl+alt+super+d"_s);
        QTRY_COMPARE(m_received.last(), Command::shutDown);
    }

    void aNewKeyboardMapKeepsTheShortcuts() {
        m_service->registerHotKeys({Command::sleep});
        X11Client other(m_desktop->display());
        const xcb_keycode_t oldCode = other.keycodeOf('s');
        const std::vector<xcb_keysym_t> sSyms = other.keysymsOf(oldCode);
        const std::vector<xcb_keysym_t> none(sSyms.size(), 0);
        // A key the map leaves empty takes over S, as a layout switch would move it.
        xcb_keycode_t newCode = 250;
        while (newCode > 200 && other.keysymsOf(newCode) != none) {
            --newCode;
        }
        QVERIFY(newCode > 200);
        other.setKeysyms(newCode, sSyms);
        other.setKeysyms(oldCode, none);
        QTRY_COMPARE(other.keycodeOf('s'), newCode);
        // Ours once another client can no longer take it.
        QTRY_VERIFY(!other.canGrab(newCode, kCtrlAltSuper));

        // xdotool would remap a key of its own for S here; a raw key press is what a user makes.
        other.press(
            {other.keycodeOf(0xffe3), other.keycodeOf(0xffe9), other.keycodeOf(0xffeb), newCode});
        QTRY_COMPARE(m_received, QList<Command>{Command::sleep});
        QVERIFY(other.canGrab(oldCode, kCtrlAltSuper));

        other.setKeysyms(oldCode, sSyms);
        other.setKeysyms(newCode, none);
    }
};

QTEST_GUILESS_MAIN(TestX11Backend)
#include "tst_x11backend.moc"
