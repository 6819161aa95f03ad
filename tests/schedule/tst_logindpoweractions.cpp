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
using namespace Qt::StringLiterals;
using vantle::testing::MockedBus;

namespace {
const QString kLogin1 = u"org.freedesktop.login1"_s;

// Stands in for GNOME's session manager.
class FakeGnomeSession : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.SessionManager")

public:
    QStringList calls;

public slots:
    void Reboot() { calls.append(u"Reboot"_s); }
    void Shutdown() { calls.append(u"Shutdown"_s); }
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

    void startLogind(const QString& parameters = u"{}"_s) {
        QVERIFY(m_bus->start(u"logind"_s, kLogin1, {u"--session"_s, u"-p"_s, parameters}));
    }

    // The arguments of every call of `method` logind received.
    QList<QVariantList> calls(const QString& method) const {
        return m_bus->calls(kLogin1, u"/org/freedesktop/login1"_s, method);
    }

    std::unique_ptr<LogindPowerActions> makeActions() {
        return std::make_unique<LogindPowerActions>(m_bus->connection(), m_bus->connection());
    }
    // One app was asked to quit; it has gone unless m_appsRunning.
    QList<RunningApplicationRef> askedToQuit() const {
        auto app = std::make_shared<FakeRunningApplication>(4242, u"Editor"_s, std::nullopt);
        app->terminated = !m_appsRunning;
        return {app};
    }

    void prepareForSleep(bool goingToSleep) {
        QDBusMessage call = QDBusMessage::createMethodCall(
            kLogin1, u"/org/freedesktop/login1"_s, u"org.freedesktop.DBus.Mock"_s, u"EmitSignal"_s);
        call.setArguments({u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s, u"b"_s,
                           QVariantList{QVariant::fromValue(QDBusVariant(goingToSleep))}});
        m_bus->connection().call(call, QDBus::Block, 5'000);
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
        QTRY_COMPARE_WITH_TIMEOUT(calls(u"PowerOff"_s), QList<QVariantList>({{true}}), 10'000);
        QTRY_COMPARE_WITH_TIMEOUT(calls(u"Reboot"_s), QList<QVariantList>({{true}}), 10'000);
        QTRY_COMPARE_WITH_TIMEOUT(calls(u"Suspend"_s), QList<QVariantList>({{true}}), 10'000);
    }

    void refusalsAndRunningAppsStopTheAction() {
        startLogind(QStringLiteral(R"({"CanSuspend": "na"})"));
        auto actions = makeActions();
        LogCapture log;
        m_appsRunning = true;
        actions->sleep();
        actions->restart(askedToQuit());
        actions->shutDown(askedToQuit());
        QTRY_COMPARE_WITH_TIMEOUT(log.count(u"still running"_s), 2, 10'000);
        QTRY_COMPARE_WITH_TIMEOUT(log.count(u"CanSuspend answers \"na\""_s), 1, 10'000);
        QCOMPARE(calls(u"CanReboot"_s).size(), 0);
        QCOMPARE(calls(u"CanPowerOff"_s).size(), 0);
        QCOMPARE(calls(u"Suspend"_s).size(), 0);
    }

    void sessionManagerTakesOverRestartAndShutDown() {
        startLogind();
        FakeGnomeSession gnome;
        QDBusConnection gnomeBus = QDBusConnection::connectToBus(m_bus->address(), u"fake-gnome"_s);
        QVERIFY(gnomeBus.registerObject(u"/org/gnome/SessionManager"_s, &gnome,
                                        QDBusConnection::ExportAllSlots));
        QVERIFY(gnomeBus.registerService(u"org.gnome.SessionManager"_s));
        m_appsRunning = true; // the session manager lets them save, so this must not stop it
        auto actions = makeActions();
        actions->restart(askedToQuit());
        actions->shutDown(askedToQuit());
        QTRY_COMPARE_WITH_TIMEOUT(gnome.calls.size(), 2, 10'000);
        QCOMPARE(gnome.calls.at(0), u"Reboot"_s);
        QCOMPARE(gnome.calls.at(1), u"Shutdown"_s);
        QCOMPARE(calls(u"Reboot"_s).size(), 0);
        QCOMPARE(calls(u"PowerOff"_s).size(), 0);
        QDBusConnection::disconnectFromBus(u"fake-gnome"_s);
    }

    void onlyTheEndOfSleepIsAWake() {
        startLogind();
        LogindSleepWatcher watcher(m_bus->connection());
        QSignalSpy woke(&watcher, &LogindSleepWatcher::didWake);
        // Signals arrive in order: once the third is seen, the first two have been handled.
        SignalCounter counter;
        QVERIFY(m_bus->connection().connect(kLogin1, u"/org/freedesktop/login1"_s,
                                            u"org.freedesktop.login1.Manager"_s,
                                            u"PrepareForSleep"_s, &counter, SLOT(count())));
        prepareForSleep(true);
        prepareForSleep(false);
        prepareForSleep(true);
        QTRY_COMPARE_WITH_TIMEOUT(counter.seen, 3, 10'000);
        QCOMPARE(woke.count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestLogindPowerActions)
#include "tst_logindpoweractions.moc"
