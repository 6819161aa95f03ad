#include "support/DBusMock.h"
#include "support/VirtualDesktop.h"
#include "support/X11Client.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
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
    std::unique_ptr<MockedBus> m_bus;
    std::unique_ptr<QProcess> m_app; // killed with the test, before the display and bus go
    QTemporaryDir m_home;

    int suspends() const {
        return int(
            m_bus->calls(u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s, u"Suspend"_s)
                .size());
    }

    int vantle(const QStringList& arguments, QString* err) const {
        auto process = m_desktop->start(QStringLiteral(VANTLE_BINARY), arguments, m_bus->address());
        if (!process->waitForFinished(30'000)) {
            return -1;
        }
        *err = QString::fromUtf8(process->readAllStandardError());
        return process->exitCode();
    }

    // The settings windows on the display, by title.
    int settingsWindows() const {
        auto search = m_desktop->start(
            u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^Vantle Settings$"_s});
        search->waitForFinished(10'000);
        return int(search->readAllStandardOutput().count('\n'));
    }

private slots:
    void initTestCase() {
        m_desktop = std::make_unique<VirtualDesktop>();
        if (!m_desktop->isRunning()) {
            QSKIP(qPrintable(m_desktop->error()));
        }
        m_bus = std::make_unique<MockedBus>();
        VANTLE_SKIP_WITHOUT(*m_bus);
        // Everything started from here, the app included, sees the private bus as system bus:
        // its sleep reaches the mock, never this machine.
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus->address().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.path()));
        QVERIFY(m_bus->start(u"logind"_s, u"org.freedesktop.login1"_s));
        // Sleep at once, without a warning, so the effect is the logind call itself.
        QDir().mkpath(m_home.path() + u"/vantle"_s);
        QFile settings(m_home.path() + u"/vantle/com.pelmark.vantle.json"_s);
        QVERIFY(settings.open(QIODevice::WriteOnly));
        settings.write(R"({"scheduleWarningStyle": "never"})");
    }

    void noRunningCopyIsAnError() {
        QString err;
        QCOMPARE(vantle({u"--command"_s, u"sleep"_s}, &err), 1);
        QVERIFY2(err.contains(u"Vantle is not running"_s), qPrintable(err));
    }

    // `vantle --settings [tab]`: the first launch starts with the window open; later ones hand
    // the request to the running copy and leave, and no second window opens.
    void settingsOpenInTheRunningCopy() {
        // The window must be a real one on the test's display, where xdotool can find it.
        const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
        qputenv("QT_QPA_PLATFORM", "xcb");
        const auto restore = qScopeGuard([&platform] { qputenv("QT_QPA_PLATFORM", platform); });
        QString err;
        QCOMPARE(vantle({u"--settings"_s, u"colours"_s}, &err), 2);
        QVERIFY2(err.contains(u"unknown settings tab"_s), qPrintable(err));

        auto app = m_desktop->start(QStringLiteral(VANTLE_BINARY),
                                    {u"--settings"_s, u"exclusions"_s}, m_bus->address());
        QTRY_COMPARE_WITH_TIMEOUT(settingsWindows(), 1, 30'000);
        QCOMPARE(vantle({u"--settings"_s}, &err), 0);
        QCOMPARE(vantle({u"--settings"_s, u"about"_s}, &err), 0);
        QCOMPARE(settingsWindows(), 1);
        QCOMPARE(app->state(), QProcess::Running);
        app->terminate();
        QVERIFY(app->waitForFinished(10'000));
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
        QCOMPARE(vantle({u"--command"_s, u"sleep"_s}, &err), 0);
        QTRY_COMPARE_WITH_TIMEOUT(suspends(), 2, 10'000);
        QCOMPARE(m_app->state(), QProcess::Running);
    }
};

QTEST_GUILESS_MAIN(TestRemoteCommands)
#include "tst_remotecommands.moc"
