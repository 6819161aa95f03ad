#include "support/DBusMock.h"
#include "support/VirtualDesktop.h"
#include "support/X11Client.h"

#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <memory>

using namespace vantle::testing;
using namespace Qt::StringLiterals;

namespace {

using Env = QMap<QString, QString>;

const QString kServiceName = u"com.pelmark.vantle"_s;
const QString kNoBus = u"unix:path=/nonexistent/vantle-test-bus"_s;
// Settings files as the app writes them; the rule list is stored as readable text.
const QByteArray kConfigured =
    "{\"idleQuitEnabled\": true, \"idleQuitTimeout\": 20, \"disabledShortcutIDs\": [\"sleep\"],"
    " \"appRules\": {\"utf8\": \"[{\\\"bundleID\\\":\\\"org.gnome.Nautilus\\\",\\\"name\\\":"
    "\\\"Files\\\",\\\"action\\\":\\\"hide\\\",\\\"timeoutMinutes\\\":5}]\"}}";
const QByteArray kLegacy = "{\"idleQuitTimeout\": 99, \"quitWarningStyle\": \"window\"}";

Env offscreen(const QString& busAddress = kNoBus) {
    return {{u"QT_QPA_PLATFORM"_s, u"offscreen"_s}, {u"DBUS_SESSION_BUS_ADDRESS"_s, busAddress}};
}

void stop(QProcess& process, int signalNumber) {
    ::kill(static_cast<pid_t>(process.processId()), signalNumber);
    QVERIFY(process.waitForFinished(10'000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
}

// Waits until the process has said `text` on its error output.
bool says(QProcess& process, QString& log, const QString& text) {
    log += QString::fromUtf8(process.readAllStandardError());
    return log.contains(text);
}

} // namespace

// The real vantle binary, each copy with the test's own settings and runtime folders and, unless
// a test gives them, no display and no session bus: its options, and how a second start and
// `vantle --command` reach the running copy.
class TestLaunch : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_home;
    QTemporaryDir m_runtime;
    std::unique_ptr<VirtualDesktop> m_desktop; // for the copies a user would drive

    QString settingsDir() const { return m_home.path() + u"/config/vantle"_s; }

    struct Result {
        int exitCode;
        QString out;
        QString err;
    };

    std::unique_ptr<QProcess> start(const QStringList& arguments, const Env& extra = {}) const {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const QString& name : {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s}) {
            env.remove(name);
        }
        env.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, kNoBus);
        env.insert(u"XDG_CONFIG_HOME"_s, m_home.path() + u"/config"_s);
        env.insert(u"XDG_RUNTIME_DIR"_s, m_runtime.path());
        env.insert(u"LANG"_s, u"C.UTF-8"_s);
        for (auto it = extra.cbegin(); it != extra.cend(); ++it) {
            env.insert(it.key(), it.value());
        }
        process->setProcessEnvironment(env);
        process->start(QStringLiteral(VANTLE_BINARY), arguments);
        return process;
    }

    Result vantle(const QStringList& arguments, const Env& extra = {}) const {
        const auto process = start(arguments, extra);
        if (!process->waitForFinished(30'000)) {
            process->kill();
            process->waitForFinished();
        }
        return {process->exitStatus() == QProcess::NormalExit ? process->exitCode() : -1,
                QString::fromUtf8(process->readAllStandardOutput()),
                QString::fromUtf8(process->readAllStandardError())};
    }

    // The bus serves as the system bus too: a sleep reaches its mock, never this machine.
    Env onDesktop(const QString& platform, const MockedBus& bus) const {
        return {{u"DISPLAY"_s, m_desktop->display()},
                {u"QT_QPA_PLATFORM"_s, platform},
                {u"DBUS_SESSION_BUS_ADDRESS"_s, bus.address()},
                {u"DBUS_SYSTEM_BUS_ADDRESS"_s, bus.address()}};
    }

    void writeSettings(const QString& domain, const QByteArray& json) const {
        QDir().mkpath(settingsDir());
        QFile file(settingsDir() + u'/' + domain + u".json"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(json);
    }

    QMap<QString, QByteArray> snapshotSettings() const {
        QMap<QString, QByteArray> files;
        const QDir dir(settingsDir());
        for (const QString& name : dir.entryList(QDir::Files | QDir::Hidden)) {
            QFile file(dir.filePath(name));
            if (file.open(QIODevice::ReadOnly)) {
                files.insert(name, file.readAll());
            }
        }
        return files;
    }

    QByteArray lockHolder() const {
        QFile lock(m_runtime.filePath(u"com.pelmark.vantle.lock"_s));
        return lock.open(QIODevice::ReadOnly) ? lock.readAll().trimmed() : QByteArray();
    }

    // The settings windows on the display, by title.
    int settingsWindows() const {
        auto search = m_desktop->start(
            u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^Vantle Settings$"_s});
        search->waitForFinished(10'000);
        return int(search->readAllStandardOutput().count('\n'));
    }

private slots:
    void initTestCase() { m_desktop = std::make_unique<VirtualDesktop>(); }

    void init() { QDir(m_home.path()).removeRecursively(); }

    void options() {
        // --version and --help need no display; running the app does.
        Result result = vantle({u"--version"_s});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, u"Vantle " VANTLE_VERSION " (" VANTLE_BUILD_NUMBER ")\n"_s);
        result = vantle({u"--help"_s});
        QVERIFY(result.exitCode == 0 && result.out.contains(u"--diagnostics"_s));
        result = vantle({});
        QVERIFY(result.exitCode == 1 && result.err.contains(u"Vantle: no graphical display"_s));
        result = vantle({u"--frobnicate"_s}, offscreen());
        QVERIFY(result.exitCode == 1 && result.err.contains(u"frobnicate"_s));
        // Only the system-wide commands can be sent; the app-list ones need the open list.
        for (const QStringList& arguments :
             {QStringList{u"--command"_s, u"dance"_s}, QStringList{u"--command=focusSearch"_s}}) {
            result = vantle(arguments);
            QCOMPARE(result.exitCode, 2);
            QVERIFY2(result.err.contains(u"The commands are: quitAllApps, sleep, restart, "
                                         u"shutDown."_s),
                     qPrintable(result.err));
        }
    }

    // The report's layout is checked in tst_model; here it shows what the binary would load
    // (legacy settings included, a corrupt file as defaults) and changes nothing on disk.
    void diagnostics_data() {
        QTest::addColumn<QByteArray>("settings");
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QString>("err");
        QTest::newRow("fresh") << QByteArray()
                               << QStringList{u"Version " VANTLE_VERSION " (" VANTLE_BUILD_NUMBER
                                              ") · com.pelmark.vantle"_s,
                                              u"Shortcuts off (0): none"_s}
                               << QString();
        QTest::newRow("configured")
            << kConfigured
            << QStringList{u"  Files (org.gnome.Nautilus) — hide after 5 min"_s,
                           u"System Idle (all apps): ON at 20 min"_s,
                           u"Warning: window, 60s grace"_s, u"Shortcuts off (1): Sleep"_s}
            << QString();
        QTest::newRow("corrupt") << QByteArray("{\"idleQuitEnabled\": tru")
                                 << QStringList{u"System Idle (all apps): off"_s}
                                 << u"is unreadable"_s;
    }
    void diagnostics() {
        QFETCH(QByteArray, settings);
        QFETCH(QStringList, lines);
        QFETCH(QString, err);
        if (!settings.isEmpty()) {
            writeSettings(u"com.pelmark.vantle"_s, settings);
            writeSettings(u"com.quorel.vantle"_s, kLegacy);
        }
        const auto before = snapshotSettings();
        const Result result = vantle({u"--diagnostics"_s});
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.out.startsWith(u"Vantle Diagnostics — "_s));
        QVERIFY(result.out.contains(u"\nLinux "_s));
        for (const QString& line : lines) {
            QVERIFY2(result.out.contains(u'\n' + line + u'\n'), qPrintable(line));
        }
        QVERIFY2(result.err.contains(err), qPrintable(result.err));
        QCOMPARE(snapshotSettings(), before);
        QCOMPARE(QDir(settingsDir()).exists(), !settings.isEmpty());
    }

    void secondLaunchShowsTheFirstAndLeaves() {
        PrivateSessionBus bus;
        if (!bus.isRunning()) {
            QSKIP(qPrintable(bus.error()));
        }
        const auto nameOwned = [&bus] {
            return bus.connection().interface()->isServiceRegistered(kServiceName).value();
        };
        // Before any copy runs, a command finds none to take it.
        const Result command = vantle({u"--command"_s, u"sleep"_s}, offscreen(bus.address()));
        QCOMPARE(command.exitCode, 1);
        QVERIFY2(command.err.contains(u"Vantle is not running"_s), qPrintable(command.err));

        auto first = start({}, offscreen(bus.address()));
        QTRY_VERIFY_WITH_TIMEOUT(nameOwned(), 20'000);
        auto second = start({}, offscreen(bus.address()));
        QVERIFY(second->waitForFinished(20'000));
        QCOMPARE(second->exitStatus(), QProcess::NormalExit);
        QCOMPARE(second->exitCode(), 0);

        QString firstLog;
        QTRY_VERIFY_WITH_TIMEOUT(says(*first, firstLog, u"another launch asked to show Vantle"_s),
                                 10'000);
        QCOMPARE(first->state(), QProcess::Running);
        stop(*first, SIGTERM);
        QVERIFY(!nameOwned());
    }

    void copiesStartedTogetherLeaveExactlyOneRunning() {
        PrivateSessionBus bus;
        if (!bus.isRunning()) {
            QSKIP(qPrintable(bus.error()));
        }
        auto a = start({}, offscreen(bus.address()));
        auto b = start({}, offscreen(bus.address()));
        QTRY_VERIFY_WITH_TIMEOUT(
            a->state() == QProcess::NotRunning || b->state() == QProcess::NotRunning, 20'000);
        QProcess& ended = a->state() == QProcess::NotRunning ? *a : *b;
        QProcess& running = a->state() == QProcess::NotRunning ? *b : *a;
        QCOMPARE(ended.exitCode(), 0);
        // The survivor is the copy that holds the name, not one still on its way out.
        QTRY_COMPARE_WITH_TIMEOUT(bus.connection().interface()->servicePid(kServiceName).value(),
                                  uint(running.processId()), 20'000);
        QCOMPARE(running.state(), QProcess::Running);
        stop(running, SIGINT);
    }

    // Without a bus the runtime folder's lock keeps to one copy, and the first copy ending
    // (even killed) frees it for the next.
    void withoutASessionBusALockKeepsToOneCopy() {
        for (const int endSignal : {SIGKILL, SIGTERM}) {
            auto first = start({}, offscreen());
            // The holder writes its pid once it has the lock.
            QTRY_COMPARE_WITH_TIMEOUT(lockHolder(), QByteArray::number(first->processId()), 20'000);
            // The pipe may deliver the log line after the lock file shows the pid.
            QString firstLog;
            QTRY_VERIFY_WITH_TIMEOUT(says(*first, firstLog, u"no D-Bus session bus"_s), 10'000);
            auto second = start({}, offscreen());
            QVERIFY(second->waitForFinished(20'000));
            QCOMPARE(second->exitCode(), 0);
            QVERIFY(QString::fromUtf8(second->readAllStandardError())
                        .contains(u"already running (process %1)"_s.arg(first->processId())));
            QCOMPARE(first->state(), QProcess::Running);
            if (endSignal == SIGKILL) {
                first->kill();
                QVERIFY(first->waitForFinished(10'000));
            } else {
                stop(*first, endSignal);
            }
        }
    }

    // On a desktop, `vantle --settings [tab]` starts the first copy with the window open; later
    // ones hand the request to the running copy and leave, and no second window opens. A shortcut
    // and `vantle --command` both reach that copy's command dispatch.
    void laterLaunchesAndShortcutsReachTheRunningCopy() {
        if (!m_desktop->isRunning()) {
            QSKIP(qPrintable(m_desktop->error()));
        }
        MockedBus bus;
        VANTLE_SKIP_WITHOUT(bus);
        QVERIFY(bus.start(u"logind"_s, u"org.freedesktop.login1"_s));
        const auto suspends = [&bus] {
            return bus
                .calls(u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s, u"Suspend"_s)
                .size();
        };
        // The window must be a real one on the test's display, where xdotool can find it.
        const Env xcb = onDesktop(u"xcb"_s, bus);
        const Result unknown = vantle({u"--settings"_s, u"colours"_s}, xcb);
        QCOMPARE(unknown.exitCode, 2);
        QVERIFY2(unknown.err.contains(u"unknown settings tab"_s), qPrintable(unknown.err));
        // The report carries the notification status the running app would act on.
        QVERIFY(
            vantle({u"--diagnostics"_s}, xcb)
                .out.contains(u"\nNotifications: DENIED (warnings fall back to the window)\n"_s));
        QVERIFY(bus.start(u"notification_daemon"_s, u"org.freedesktop.Notifications"_s,
                          {u"-p"_s, uR"({"capabilities": "body actions"})"_s}));
        QVERIFY(vantle({u"--diagnostics"_s}, xcb).out.contains(u"\nNotifications: authorized\n"_s));

        // Sleep at once, without a warning, so the effect is the logind call itself.
        writeSettings(u"com.pelmark.vantle"_s, R"({"scheduleWarningStyle": "never"})");
        auto app = start({u"--settings"_s, u"exclusions"_s}, xcb);
        QTRY_COMPARE_WITH_TIMEOUT(settingsWindows(), 1, 30'000);
        QCOMPARE(vantle({u"--settings"_s}, xcb).exitCode, 0);
        QCOMPARE(vantle({u"--settings"_s, u"about"_s}, xcb).exitCode, 0);
        QCOMPARE(settingsWindows(), 1);

        // Ready once the sleep shortcut is held.
        X11Client other(m_desktop->display());
        QTRY_VERIFY_WITH_TIMEOUT(!other.canGrab(other.keycodeOf('s'), kCtrlAltSuper), 30'000);
        auto xdotool = m_desktop->start(u"xdotool"_s, {u"key"_s, u"ctrl+alt+super+s"_s});
        QVERIFY(xdotool->waitForFinished(10'000));
        QTRY_COMPARE_WITH_TIMEOUT(suspends(), 1, 10'000);
        QCOMPARE(vantle({u"--command"_s, u"sleep"_s}, xcb).exitCode, 0);
        QTRY_COMPARE_WITH_TIMEOUT(suspends(), 2, 10'000);
        QCOMPARE(app->state(), QProcess::Running);
        app->terminate();
        QVERIFY(app->waitForFinished(10'000));
    }
};

QTEST_GUILESS_MAIN(TestLaunch)
#include "tst_launch.moc"
