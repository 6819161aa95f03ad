#include "support/VirtualDesktop.h"

#include <QStandardPaths>
#include <QTest>
#include <algorithm>
#include <xcb/xcb.h>
#include <xcb/xcb_ewmh.h>

namespace vantle::testing {

namespace {

bool displayAccepts(const QString& display) {
    xcb_connection_t* c = xcb_connect(display.toLocal8Bit().constData(), nullptr);
    const bool ok = xcb_connection_has_error(c) == 0;
    xcb_disconnect(c);
    return ok;
}

// True once a window manager has put up its EWMH check window.
bool windowManagerReady(const QString& display) {
    xcb_connection_t* c = xcb_connect(display.toLocal8Bit().constData(), nullptr);
    bool ready = false;
    if (xcb_connection_has_error(c) == 0) {
        xcb_ewmh_connection_t ewmh{};
        if (xcb_ewmh_init_atoms_replies(&ewmh, xcb_ewmh_init_atoms(c, &ewmh), nullptr)) {
            xcb_window_t check = XCB_WINDOW_NONE;
            ready = xcb_ewmh_get_supporting_wm_check_reply(
                        &ewmh, xcb_ewmh_get_supporting_wm_check(&ewmh, ewmh.screens[0]->root),
                        &check, nullptr) &&
                    check != XCB_WINDOW_NONE;
            xcb_ewmh_connection_wipe(&ewmh);
        }
    }
    xcb_disconnect(c);
    return ready;
}

// openbox announces itself before its event loop runs and can drop a window mapped in between:
// wait until it has really taken on a window (mapping it again if dropped).
bool windowManagerTakesWindows(const QString& display) {
    xcb_connection_t* c = xcb_connect(display.toLocal8Bit().constData(), nullptr);
    if (xcb_connection_has_error(c) != 0) {
        xcb_disconnect(c);
        return false;
    }
    xcb_ewmh_connection_t ewmh{};
    if (!xcb_ewmh_init_atoms_replies(&ewmh, xcb_ewmh_init_atoms(c, &ewmh), nullptr)) {
        xcb_disconnect(c);
        return false;
    }
    const xcb_window_t root = ewmh.screens[0]->root;
    const auto managed = [&](xcb_window_t window) {
        xcb_ewmh_get_windows_reply_t list{};
        if (!xcb_ewmh_get_client_list_reply(&ewmh, xcb_ewmh_get_client_list(&ewmh, 0), &list,
                                            nullptr)) {
            return false;
        }
        const bool found = std::find(list.windows, list.windows + list.windows_len, window) !=
                           list.windows + list.windows_len;
        xcb_ewmh_get_windows_reply_wipe(&list);
        return found;
    };
    const xcb_window_t probe = xcb_generate_id(c);
    xcb_create_window(c, XCB_COPY_FROM_PARENT, probe, root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    bool taken = false;
    for (int attempt = 0; attempt < 40 && !taken; ++attempt) {
        xcb_map_window(c, probe);
        xcb_flush(c);
        taken = QTest::qWaitFor([&] { return managed(probe); }, 500);
    }
    xcb_destroy_window(c, probe);
    xcb_ewmh_connection_wipe(&ewmh);
    xcb_disconnect(c);
    return taken;
}

} // namespace

VirtualDesktop::VirtualDesktop() {
    for (const char* tool : {"Xvfb", "openbox"}) {
        if (QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty()) {
            m_error = QStringLiteral("%1 is not installed").arg(QString::fromLatin1(tool));
            return;
        }
    }
    // Xvfb picks a free display and writes its number to the given descriptor (stdout here).
    m_xvfb.start(QStringLiteral("Xvfb"),
                 {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                  QStringLiteral("0"), QStringLiteral("1280x800x24"), QStringLiteral("-nolisten"),
                  QStringLiteral("tcp"),
                  // Probing connections must not reset the server.
                  QStringLiteral("-noreset")});
    if (!m_xvfb.waitForStarted(10'000) || !m_xvfb.waitForReadyRead(20'000)) {
        m_error = QStringLiteral("Xvfb did not start: %1")
                      .arg(QString::fromLocal8Bit(m_xvfb.readAllStandardError()));
        return;
    }
    const QString display =
        QLatin1Char(':') + QString::fromLatin1(m_xvfb.readAllStandardOutput()).trimmed();

    // Xvfb may announce its display a moment before it accepts clients.
    if (!QTest::qWaitFor([&] { return displayAccepts(display); }, 20'000)) {
        m_error = QStringLiteral("Xvfb on %1 accepts no connection").arg(display);
        return;
    }
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DISPLAY"), display);
    m_windowManager.setProcessEnvironment(env);
    m_windowManager.setProcessChannelMode(QProcess::MergedChannels);
    m_windowManager.start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")});
    if (!m_windowManager.waitForStarted(10'000) ||
        !QTest::qWaitFor([&] { return windowManagerReady(display); }, 20'000) ||
        !windowManagerTakesWindows(display)) {
        m_error = QStringLiteral("openbox did not start on %1 (exit code %2): %3")
                      .arg(display)
                      .arg(m_windowManager.exitCode())
                      .arg(QString::fromLocal8Bit(m_windowManager.readAll()));
        return;
    }
    m_display = display;
}

VirtualDesktop::~VirtualDesktop() {
    for (QProcess* process : {&m_windowManager, &m_xvfb}) {
        if (process->state() != QProcess::NotRunning) {
            process->terminate();
            if (!process->waitForFinished(5'000)) {
                process->kill();
                process->waitForFinished();
            }
        }
    }
}

std::unique_ptr<QProcess> VirtualDesktop::start(const QString& program,
                                                const QStringList& arguments,
                                                const QString& busAddress) const {
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DISPLAY"), m_display);
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    if (!busAddress.isEmpty()) {
        env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress);
    }
    process->setProcessEnvironment(env);
    process->start(program, arguments);
    return process;
}

void VirtualDesktop::useForThisProcess() const {
    if (isRunning()) {
        qputenv("QT_QPA_PLATFORM", "xcb");
        qputenv("DISPLAY", m_display.toLocal8Bit());
    } else {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
}

} // namespace vantle::testing
