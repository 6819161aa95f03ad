#include "support/DBusMock.h"
#include "support/PrivateSessionBus.h"
#include "support/VirtualDesktop.h"
#include "support/X11Client.h"

#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace vantle::testing;
using namespace Qt::StringLiterals;

// The real app on a private X server and bus, with logind mocked: a shortcut and
// `vantle --command` both reach the command dispatch of the running copy.
class TestRemoteCommands : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<VirtualDesktop> m_desktop;
    std::unique_ptr<PrivateSessionBus> m_bus;
    std::unique_ptr<QProcess> m_logind;
    std::unique_ptr<QProcess> m_app;
    QTemporaryDir m_home;

    int suspends() const {
        return int(mockedCalls(m_bus->connection(), u"org.freedesktop.login1"_s,
                               u"/org/freedesktop/login1"_s, u"Suspend"_s)
                       .size());
    }

    int vantleCommand(const QString& name, QString* err) const {
        auto process = m_desktop->start(QStringLiteral(VANTLE_BINARY), {u"--command"_s, name},
                                        m_bus->address());
        if (!process->waitForFinished(30'000)) {
            return -1;
        }
        *err = QString::fromUtf8(process->readAllStandardError());
        return process->exitCode();
    }

private slots:
    void initTestCase() {
        m_desktop = std::make_unique<VirtualDesktop>();
        if (!m_desktop->isRunning()) {
            QSKIP(qPrintable(m_desktop->error()));
        }
        if (!hasDBusMock()) {
            QSKIP("python3-dbusmock is not installed");
        }
        m_bus = std::make_unique<PrivateSessionBus>();
        QVERIFY2(m_bus->isRunning(), qPrintable(m_bus->error()));
        // Everything started from here, the app included, sees the private bus as system bus:
        // its sleep reaches the mock, never this machine.
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus->address().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.path()));
        m_logind = startDBusMock(m_bus->address(), u"logind"_s);
        QTRY_VERIFY_WITH_TIMEOUT(
            m_bus->connection().interface()->isServiceRegistered(u"org.freedesktop.login1"_s),
            20'000);
        // Sleep at once, without a warning, so the effect is the logind call itself.
        QDir().mkpath(m_home.path() + u"/vantle"_s);
        QFile settings(m_home.path() + u"/vantle/com.pelmark.vantle.json"_s);
        QVERIFY(settings.open(QIODevice::WriteOnly));
        settings.write(R"({"scheduleWarningStyle": "never"})");
    }

    void cleanupTestCase() {
        for (auto* process : {m_app.get(), m_logind.get()}) {
            if (process) {
                process->terminate();
                process->waitForFinished(10'000);
            }
        }
    }

    void noRunningCopyIsAnError() {
        QString err;
        QCOMPARE(vantleCommand(u"sleep"_s, &err), 1);
        QVERIFY2(err.contains(u"Vantle is not running"_s), qPrintable(err));
    }

    void aShortcutAndTheCommandLineBothSleep() {
        m_app = m_desktop->start(QStringLiteral(VANTLE_BINARY), {}, m_bus->address());
        // Ready once the sleep shortcut is held.
        X11Client other(m_desktop->display());
        const xcb_keycode_t s = other.keycodeOf('s');
        QTRY_VERIFY_WITH_TIMEOUT(!other.canGrab(s, kCtrlAltSuper), 30'000);

        auto xdotool = m_desktop->start(u"xdotool"_s, {u"key"_s, u"ctrl+alt+super+s"_s});
        QVERIFY(xdotool->waitForFinished(10'000));
        QTRY_COMPARE_WITH_TIMEOUT(suspends(), 1, 10'000);

        QString err;
        QCOMPARE(vantleCommand(u"sleep"_s, &err), 0);
        QTRY_COMPARE_WITH_TIMEOUT(suspends(), 2, 10'000);
        QCOMPARE(m_app->state(), QProcess::Running);
    }
};

QTEST_GUILESS_MAIN(TestRemoteCommands)
#include "tst_remotecommands.moc"
