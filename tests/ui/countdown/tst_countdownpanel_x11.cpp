#include "platform/linux/X11Connection.h"
#include "platform/linux/X11PanelPlacement.h"
#include "schedule/ScheduleWarningState.h"
#include "support/VirtualDesktop.h"
#include "ui/countdown/CountdownWindow.h"

#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QScreen>
#include <QStandardPaths>
#include <QTest>
#include <QWindow>
#include <algorithm>

using namespace vantle;
using namespace Qt::StringLiterals;
using vantle::testing::VirtualDesktop;

// The panel on a real X server and window manager: a panel out of the way of the app in front.
class TestCountdownPanelX11 : public QObject {
    Q_OBJECT

public:
    explicit TestCountdownPanelX11(VirtualDesktop& desktop)
        : m_desktop(desktop) {}

private:
    VirtualDesktop& m_desktop;
    std::unique_ptr<X11Connection> m_x;
    std::unique_ptr<QProcess> m_client;
    xcb_window_t m_clientWindow = XCB_WINDOW_NONE;

    std::vector<uint32_t> rootWindows(xcb_atom_t property) {
        return m_x->cardinalProperty(m_x->root(), property, XCB_ATOM_WINDOW);
    }

    xcb_window_t activeWindow() {
        const auto active = rootWindows(m_x->ewmh()->_NET_ACTIVE_WINDOW);
        return active.empty() ? xcb_window_t(XCB_WINDOW_NONE) : active.front();
    }

    xcb_window_t managedWindowOf(qint64 pid) {
        for (const uint32_t window : rootWindows(m_x->ewmh()->_NET_CLIENT_LIST)) {
            const auto pids =
                m_x->cardinalProperty(window, m_x->ewmh()->_NET_WM_PID, XCB_ATOM_CARDINAL);
            if (!pids.empty() && pids.front() == pid) {
                return window;
            }
        }
        return XCB_WINDOW_NONE;
    }

    static bool contains(const std::vector<uint32_t>& list, uint32_t item) {
        return std::find(list.begin(), list.end(), item) != list.end();
    }

private slots:
    void initTestCase() {
        for (const QString& tool : {u"Xvfb"_s, u"openbox"_s}) {
            if (QStandardPaths::findExecutable(tool).isEmpty()) {
                QSKIP(qPrintable(tool + u" is not installed"_s));
            }
        }
        QVERIFY2(m_desktop.isRunning(), qPrintable(m_desktop.error()));
        QCOMPARE(QGuiApplication::platformName(), u"xcb"_s);
        m_x = X11Connection::open(m_desktop.display());
        QVERIFY(m_x);

        // An app the user works in, which the panel must leave in front.
        m_client = m_desktop.start(QStringLiteral(VANTLE_REFUSER));
        QVERIFY(m_client->waitForReadyRead(10'000));
        QTRY_VERIFY_WITH_TIMEOUT((m_clientWindow = managedWindowOf(m_client->processId())), 10'000);
    }

    void cleanupTestCase() {
        if (m_client) {
            m_client->kill();
            m_client->waitForFinished(5'000);
        }
    }

    // Placement does not depend on the warning shown, so one kind stands for both.
    void panelStaysAPanel() {
        xcb_ewmh_request_change_active_window(m_x->ewmh(), 0, m_clientWindow,
                                              XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER, XCB_CURRENT_TIME,
                                              XCB_WINDOW_NONE);
        m_x->flush();
        QTRY_COMPARE_WITH_TIMEOUT(activeWindow(), m_clientWindow, 10'000);

        ScheduleWarningState state;
        state.setAction(ShutdownSchedule::Action::shutdown);
        state.setSecondsLeft(42);
        X11PanelPlacement placement(*m_x);
        CountdownWindow window(placement);
        window.show(state, [](bool) {});
        QWidget* panel = window.panel();
        const auto panelWindow = static_cast<xcb_window_t>(panel->winId());
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        QTRY_VERIFY(contains(rootWindows(m_x->ewmh()->_NET_CLIENT_LIST), panelWindow));

        // Focus moves, if at all, soon after the window manager takes the window on.
        QVERIFY2(!QTest::qWaitFor([&] { return activeWindow() != m_clientWindow; }, 1'000),
                 "the panel took the focus");
        QVERIFY(!panel->isActiveWindow());

        xcb_ewmh_connection_t* ewmh = m_x->ewmh();
        const auto desktop =
            m_x->cardinalProperty(panelWindow, ewmh->_NET_WM_DESKTOP, XCB_ATOM_CARDINAL);
        const auto states = m_x->cardinalProperty(panelWindow, ewmh->_NET_WM_STATE, XCB_ATOM_ATOM);
        QVERIFY((!desktop.empty() && desktop.front() == 0xFFFFFFFF) ||
                contains(states, ewmh->_NET_WM_STATE_STICKY));
        QVERIFY(contains(states, ewmh->_NET_WM_STATE_ABOVE));
        QVERIFY(contains(states, ewmh->_NET_WM_STATE_SKIP_TASKBAR));
        // A toolbar, which window managers give a title and close button but nothing to
        // minimise or maximise; the utility type is only the fallback for those that lack it.
        const auto types =
            m_x->cardinalProperty(panelWindow, ewmh->_NET_WM_WINDOW_TYPE, XCB_ATOM_ATOM);
        QVERIFY(!types.empty());
        QCOMPARE(types.front(), ewmh->_NET_WM_WINDOW_TYPE_TOOLBAR);
        // What the window manager lets the user do with it: move and close, nothing more.
        const auto allowed =
            m_x->cardinalProperty(panelWindow, ewmh->_NET_WM_ALLOWED_ACTIONS, XCB_ATOM_ATOM);
        QVERIFY(contains(allowed, ewmh->_NET_WM_ACTION_CLOSE));
        for (const xcb_atom_t action :
             {ewmh->_NET_WM_ACTION_MINIMIZE, ewmh->_NET_WM_ACTION_MAXIMIZE_HORZ,
              ewmh->_NET_WM_ACTION_MAXIMIZE_VERT, ewmh->_NET_WM_ACTION_RESIZE,
              ewmh->_NET_WM_ACTION_FULLSCREEN}) {
            QVERIFY2(!contains(allowed, action), qPrintable(QString::number(action)));
        }

        panel->repaint();
        const QString shot =
            QDir(QCoreApplication::applicationDirPath()).filePath(u"countdown-panel.png"_s);
        QVERIFY(QGuiApplication::primaryScreen()->grabWindow(0).save(shot));
        qInfo("screenshot: %s", qPrintable(shot));
    }
};

int main(int argc, char* argv[]) {
    // The display has to exist before the application connects to it.
    VirtualDesktop desktop;
    desktop.useForThisProcess();
    QApplication app(argc, argv);
    TestCountdownPanelX11 test(desktop);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_countdownpanel_x11.moc"
