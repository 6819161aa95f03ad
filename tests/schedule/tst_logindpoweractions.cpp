#include "fakes/FakeWorkspace.h"
#include "fakes/LogCapture.h"
#include "platform/linux/LogindPowerActions.h"
#include "platform/linux/LogindSleepWatcher.h"
#include "support/DBusMock.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <memory>

using namespace vantle;
using vantle::testing::MockedBus;

namespace {
const QString kLogin1 = QStringLiteral("org.freedesktop.login1");

// Stands in for GNOME's session manager.
class FakeGnomeSession : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.SessionManager")

public:
    QStringList calls;

public slots:
    void Reboot() { calls.append(QStringLiteral("Reboot")); }
    void Shutdown() { calls.append(QStringLiteral("Shutdown")); }
};
} // namespace

// Drives logind (python-dbusmock) on a private bus that stands in for both system and session bus.
// Counts a D-Bus signal, which can only be connected by slot name.
class SignalCounter : public QObject {
    Q_OBJECT
public slots:
    void count() { ++seen; }

public:
    int seen = 0;
};

class TestLogindPowerActions : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<MockedBus> m_bus;
    bool m_appsRunning = false;

    void startLogind(const QString& parameters = QStringLiteral("{}")) {
        QVERIFY(m_bus->start(QStringLiteral("logind"), kLogin1,
                             {QStringLiteral("--session"), QStringLiteral("-p"), parameters}));
    }

    QDBusMessage mock(const QString& method, const QVariantList& arguments) const {
        QDBusMessage call =
            QDBusMessage::createMethodCall(kLogin1, QStringLiteral("/org/freedesktop/login1"),
                                           QStringLiteral("org.freedesktop.DBus.Mock"), method);
        call.setArguments(arguments);
        return m_bus->connection().call(call, QDBus::Block, 5'000);
    }

    // The arguments of every call of `method` logind received.
    QList<QVariantList> calls(const QString& method) const {
        return m_bus->calls(kLogin1, QStringLiteral("/org/freedesktop/login1"), method);
    }

    std::unique_ptr<LogindPowerActions> makeActions() {
        return std::make_unique<LogindPowerActions>(m_bus->connection(), m_bus->connection());
    }
    // One app was asked to quit; it has gone unless m_appsRunning.
    QList<RunningApplicationRef> askedToQuit() const {
        auto app =
            std::make_shared<FakeRunningApplication>(4242, QStringLiteral("Editor"), std::nullopt);
        app->terminated = !m_appsRunning;
        return {app};
    }

    void prepareForSleep(bool goingToSleep) {
        mock(QStringLiteral("EmitSignal"),
             {QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"),
              QStringLiteral("b"), QVariantList{QVariant::fromValue(QDBusVariant(goingToSleep))}});
    }

private slots:
    void init() {
        m_appsRunning = false;
        m_bus = std::make_unique<MockedBus>();
        VANTLE_SKIP_WITHOUT(*m_bus);
    }
    void cleanup() { m_bus.reset(); }

    void withoutSessionManagerLogindActsInteractively() {
        startLogind(QStringLiteral(R"({"CanReboot": "challenge"})"));
        auto actions = makeActions();
        actions->sleep();
        actions->restart(askedToQuit());
        actions->shutDown(askedToQuit());
        QTRY_COMPARE_WITH_TIMEOUT(calls(QStringLiteral("PowerOff")), QList<QVariantList>({{true}}),
                                  10'000);
        QTRY_COMPARE_WITH_TIMEOUT(calls(QStringLiteral("Reboot")), QList<QVariantList>({{true}}),
                                  10'000);
        QTRY_COMPARE_WITH_TIMEOUT(calls(QStringLiteral("Suspend")), QList<QVariantList>({{true}}),
                                  10'000);
    }

    void refusalsAndRunningAppsStopTheAction() {
        startLogind(QStringLiteral(R"({"CanSuspend": "na"})"));
        auto actions = makeActions();
        LogCapture log;
        m_appsRunning = true;
        actions->sleep();
        actions->restart(askedToQuit());
        actions->shutDown(askedToQuit());
        QTRY_COMPARE_WITH_TIMEOUT(log.count(QStringLiteral("still running")), 2, 10'000);
        QTRY_COMPARE_WITH_TIMEOUT(log.count(QStringLiteral("CanSuspend answers \"na\"")), 1,
                                  10'000);
        QCOMPARE(calls(QStringLiteral("CanReboot")).size(), 0);
        QCOMPARE(calls(QStringLiteral("CanPowerOff")).size(), 0);
        QCOMPARE(calls(QStringLiteral("Suspend")).size(), 0);
    }

    void sessionManagerTakesOverRestartAndShutDown() {
        startLogind();
        FakeGnomeSession gnome;
        QDBusConnection gnomeBus =
            QDBusConnection::connectToBus(m_bus->address(), QStringLiteral("fake-gnome"));
        QVERIFY(gnomeBus.registerObject(QStringLiteral("/org/gnome/SessionManager"), &gnome,
                                        QDBusConnection::ExportAllSlots));
        QVERIFY(gnomeBus.registerService(QStringLiteral("org.gnome.SessionManager")));
        m_appsRunning = true; // the session manager lets them save, so this must not stop it
        auto actions = makeActions();
        actions->restart(askedToQuit());
        actions->shutDown(askedToQuit());
        QTRY_COMPARE_WITH_TIMEOUT(gnome.calls.size(), 2, 10'000);
        QCOMPARE(gnome.calls.at(0), QStringLiteral("Reboot"));
        QCOMPARE(gnome.calls.at(1), QStringLiteral("Shutdown"));
        QCOMPARE(calls(QStringLiteral("Reboot")).size(), 0);
        QCOMPARE(calls(QStringLiteral("PowerOff")).size(), 0);
        QDBusConnection::disconnectFromBus(QStringLiteral("fake-gnome"));
    }

    void onlyTheEndOfSleepIsAWake() {
        startLogind();
        LogindSleepWatcher watcher(m_bus->connection());
        QSignalSpy woke(&watcher, &LogindSleepWatcher::didWake);
        // Signals arrive in order: once the third is seen, the first two have been handled.
        SignalCounter counter;
        QVERIFY(m_bus->connection().connect(kLogin1, QStringLiteral("/org/freedesktop/login1"),
                                            QStringLiteral("org.freedesktop.login1.Manager"),
                                            QStringLiteral("PrepareForSleep"), &counter,
                                            SLOT(count())));
        prepareForSleep(true);
        prepareForSleep(false);
        prepareForSleep(true);
        QTRY_COMPARE_WITH_TIMEOUT(counter.seen, 3, 10'000);
        QCOMPARE(woke.count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestLogindPowerActions)
#include "tst_logindpoweractions.moc"
