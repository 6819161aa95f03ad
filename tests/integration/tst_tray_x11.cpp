#include "support/DBusMock.h"
#include "support/PrivateSessionBus.h"
#include "support/VirtualDesktop.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QHash>
#include <QRect>
#include <QStandardPaths>
#include <QTest>

using vantle::testing::PrivateSessionBus;
using vantle::testing::VirtualDesktop;
using namespace Qt::StringLiterals;

// The tray item and its app list as a user meets them: a real X server and window manager, a
// real XEmbed tray (trayer) or a StatusNotifierWatcher on a private bus, and real xterms.
class TestTrayX11 : public QObject {
    Q_OBJECT

    std::unique_ptr<VirtualDesktop> m_desktop;
    std::unique_ptr<PrivateSessionBus> m_bus;
    std::vector<std::unique_ptr<QProcess>> m_processes;

    QProcess& start(const QString& program, const QStringList& arguments = {}) {
        m_processes.push_back(m_desktop->start(program, arguments, m_bus->address()));
        m_processes.back()->setProcessChannelMode(QProcess::ForwardedOutputChannel);
        return *m_processes.back();
    }
    QProcess& startVantle(int trayWaitSeconds) {
        qputenv("VANTLE_TRAY_WAIT_SECONDS", QByteArray::number(trayWaitSeconds));
        return start(QStringLiteral(VANTLE_BINARY));
    }

    QString xdotool(const QStringList& arguments) const {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"DISPLAY"_s, m_desktop->display());
        process.setProcessEnvironment(env);
        process.start(u"xdotool"_s, arguments);
        process.waitForFinished(10'000);
        return QString::fromLatin1(process.readAllStandardOutput()).trimmed();
    }
    QRect geometry(const QString& window) const {
        QHash<QString, int> shell; // X=, Y=, WIDTH=, HEIGHT= lines
        for (const QString& line :
             xdotool({u"getwindowgeometry"_s, u"--shell"_s, window}).split(QLatin1Char('\n'))) {
            shell.insert(line.section(QLatin1Char('='), 0, 0),
                         line.section(QLatin1Char('='), 1).toInt());
        }
        return {shell.value(u"X"_s), shell.value(u"Y"_s), shell.value(u"WIDTH"_s),
                shell.value(u"HEIGHT"_s)};
    }
    // Vantle's visible windows, the tray icon (small) or the list (large).
    QRect vantleWindow(bool list) const {
        const QString found =
            xdotool({u"search"_s, u"--onlyvisible"_s, u"--classname"_s, u"^vantle$"_s});
        for (const QString& window : found.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            const QRect rect = geometry(window);
            if ((rect.width() > 200) == list && rect.width() > 4) {
                return rect;
            }
        }
        return {};
    }
    QRect trayIcon() const { return vantleWindow(false); }
    QRect appList() const { return vantleWindow(true); }
    void click(const QPoint& point) {
        xdotool({u"mousemove"_s, QString::number(point.x()), QString::number(point.y()), u"click"_s,
                 u"1"_s});
    }

private slots:
    void initTestCase() {
        // The tests run offscreen; the Vantle they start must use the virtual display.
        qputenv("QT_QPA_PLATFORM", "xcb");
        for (const char* tool : {"xdotool", "trayer", "xterm"}) {
            if (QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty()) {
                QFAIL(qPrintable(u"%1 is not installed; scripts/dev deps installs it"_s.arg(
                    QString::fromLatin1(tool))));
            }
        }
    }
    void init() {
        m_desktop = std::make_unique<VirtualDesktop>();
        QVERIFY2(m_desktop->isRunning(), qPrintable(m_desktop->error()));
        m_bus = std::make_unique<PrivateSessionBus>();
        QVERIFY2(m_bus->isRunning(), qPrintable(m_bus->error()));
    }
    void cleanup() {
        for (auto it = m_processes.rbegin(); it != m_processes.rend(); ++it) {
            (*it)->terminate();
            if (!(*it)->waitForFinished(5'000)) {
                (*it)->kill();
                (*it)->waitForFinished();
            }
        }
        m_processes.clear();
        m_bus.reset();
        m_desktop.reset();
    }

    void xembedTrayOpensTheListAndQuitsAnXterm() {
        start(u"trayer"_s, {u"--edge"_s, u"top"_s, u"--align"_s, u"right"_s, u"--widthtype"_s,
                            u"request"_s, u"--height"_s, u"24"_s, u"--SetDockType"_s, u"true"_s});
        QProcess& xterm =
            start(u"xterm"_s, {u"-title"_s, u"victim"_s, u"-e"_s, u"sleep"_s, u"100000"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!xdotool({u"search"_s, u"--name"_s, u"^victim$"_s}).isEmpty(),
                                 20'000);
        startVantle(30);
        QTRY_VERIFY_WITH_TIMEOUT(trayIcon().isValid(), 20'000);
        const QRect icon = trayIcon();
        QVERIFY2(icon.top() < 24, "the icon is not embedded in the top panel");

        click(icon.center());
        QTRY_VERIFY_WITH_TIMEOUT(appList().isValid(), 10'000);
        const QRect list = appList();
        QVERIFY2(list.top() >= icon.bottom() && list.top() <= icon.bottom() + 12,
                 "the list does not hang from the icon");
        QVERIFY(list.right() <= 1280 && list.left() <= icon.center().x());

        xdotool({u"key"_s, u"Escape"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!appList().isValid(), 5'000);
        click(icon.center());
        QTRY_VERIFY_WITH_TIMEOUT(appList().isValid(), 10'000);
        // Narrow to the xterm (the tray is an app too), then Quit Selected.
        xdotool({u"type"_s, u"xterm"_s});
        xdotool({u"key"_s, u"ctrl+Return"_s});
        QTRY_VERIFY_WITH_TIMEOUT(xterm.state() == QProcess::NotRunning, 10'000);
        QTRY_VERIFY_WITH_TIMEOUT(!appList().isValid(), 5'000);

        click(icon.center());
        QTRY_VERIFY_WITH_TIMEOUT(appList().isValid(), 10'000);
        click({300, 600}); // elsewhere
        QTRY_VERIFY_WITH_TIMEOUT(!appList().isValid(), 5'000);
    }

    void statusNotifierItemRegistersAndActivates() {
        if (!vantle::testing::hasDBusMock()) {
            QSKIP("python3-dbusmock is not installed; scripts/dev deps installs it");
        }
        const QString watcher = u"org.kde.StatusNotifierWatcher"_s;
        const QString path = u"/StatusNotifierWatcher"_s;
        m_processes.push_back(
            vantle::testing::startDBusMockObject(m_bus->address(), watcher, path, watcher));
        QDBusConnection bus = m_bus->connection();
        QTRY_VERIFY_WITH_TIMEOUT(bus.interface()->isServiceRegistered(watcher), 10'000);
        // A plain message rather than QDBusInterface, whose introspection cache outlives the bus.
        const auto mock = [&](const QString& method, const QVariantList& arguments) {
            QDBusMessage call = QDBusMessage::createMethodCall(
                watcher, path, u"org.freedesktop.DBus.Mock"_s, method);
            call.setArguments(arguments);
            return bus.call(call, QDBus::Block, 5'000);
        };
        const QVariantMap properties{{u"IsStatusNotifierHostRegistered"_s, true},
                                     {u"ProtocolVersion"_s, 0},
                                     {u"RegisteredStatusNotifierItems"_s, QStringList()}};
        QDBusMessage reply = mock(u"AddProperties"_s, {watcher, properties});
        QVERIFY2(reply.type() == QDBusMessage::ReplyMessage, qPrintable(reply.errorMessage()));
        for (const QString& method :
             {u"RegisterStatusNotifierItem"_s, u"RegisterStatusNotifierHost"_s}) {
            reply = mock(u"AddMethod"_s, {watcher, method, u"s"_s, u""_s, u""_s});
            QVERIFY2(reply.type() == QDBusMessage::ReplyMessage, qPrintable(reply.errorMessage()));
        }

        startVantle(30);
        QList<QVariantList> calls;
        QTRY_VERIFY_WITH_TIMEOUT(!(calls = vantle::testing::mockedCalls(
                                       bus, watcher, path, u"RegisterStatusNotifierItem"_s))
                                      .isEmpty(),
                                 20'000);
        const QString item = calls.constFirst().value(0).toString();
        QVERIFY(!item.isEmpty());
        QVERIFY(!appList().isValid());

        // Items register as "<bus name>" or "<bus name>/<object path>".
        const QString service = item.section(QLatin1Char('/'), 0, 0);
        const QString object = item.contains(QLatin1Char('/'))
                                   ? QLatin1Char('/') + item.section(QLatin1Char('/'), 1)
                                   : u"/StatusNotifierItem"_s;
        QDBusMessage activate = QDBusMessage::createMethodCall(
            service, object, u"org.kde.StatusNotifierItem"_s, u"Activate"_s);
        activate << 640 << 12;
        reply = bus.call(activate, QDBus::Block, 5'000);
        QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
        QTRY_VERIFY_WITH_TIMEOUT(appList().isValid(), 10'000);
    }

    void withoutTrayTheWindowOpensAtStartAndOnASecondLaunch() {
        QProcess& vantle = startVantle(0);
        QTRY_VERIFY_WITH_TIMEOUT(appList().isValid(), 20'000);
        const QString window =
            xdotool({u"search"_s, u"--onlyvisible"_s, u"--classname"_s, u"^vantle$"_s});
        xdotool({u"windowactivate"_s, u"--sync"_s, window.section(QLatin1Char('\n'), 0, 0)});
        xdotool({u"key"_s, u"alt+F4"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!appList().isValid(), 10'000);
        QVERIFY(vantle.state() == QProcess::Running);

        QProcess& second = startVantle(0);
        QVERIFY(second.waitForFinished(20'000));
        QCOMPARE(second.exitCode(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(appList().isValid(), 10'000);
    }
};

QTEST_GUILESS_MAIN(TestTrayX11)
#include "tst_tray_x11.moc"
