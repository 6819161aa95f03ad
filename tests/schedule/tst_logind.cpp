#include "fakes/FakeWorkspace.h"
#include "fakes/LogCapture.h"
#include "platform/linux/LogindPowerActions.h"
#include "platform/linux/LogindPowerAssertion.h"
#include "platform/linux/LogindSleepWatcher.h"
#include "support/DBusMock.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QSignalSpy>
#include <QTest>
#include <memory>

using namespace vantle;
using namespace Qt::StringLiterals;
using vantle::testing::MockedBus;

namespace {
const QString kLogin1 = u"org.freedesktop.login1"_s;
const QString kLogin1Path = u"/org/freedesktop/login1"_s;

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

// Counts a D-Bus signal, which can only be connected by slot name.
class SignalCounter : public QObject {
    Q_OBJECT
public slots:
    void count() { ++seen; }

public:
    int seen = 0;
};

// Power actions, the sleep watcher and the idle inhibitor against logind (python-dbusmock), on a
// private bus that stands in for both the system and the session bus.
class TestLogind : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<MockedBus> m_bus;
    bool m_appsRunning = false;

    void startLogind(const QString& parameters = u"{}"_s) {
        QVERIFY(m_bus->start(u"logind"_s, kLogin1, {u"--session"_s, u"-p"_s, parameters}));
    }

    // The arguments of every call of `method` logind received.
    QList<QVariantList> calls(const QString& method) const {
        return m_bus->calls(kLogin1, kLogin1Path, method);
    }

    // Asks for sleep, restart and shut down; the actions must outlive the test's waits.
    std::unique_ptr<LogindPowerActions> requestEveryAction() {
        auto actions =
            std::make_unique<LogindPowerActions>(m_bus->connection(), m_bus->connection());
        actions->sleep();
        actions->restart(askedToQuit());
        actions->shutDown(askedToQuit());
        return actions;
    }
    // One app was asked to quit; it has gone unless m_appsRunning.
    QList<RunningApplicationRef> askedToQuit() const {
        auto app = std::make_shared<FakeRunningApplication>(4242, u"Editor"_s, std::nullopt);
        app->terminated = !m_appsRunning;
        return {app};
    }

    void prepareForSleep(bool goingToSleep) {
        QDBusMessage call = QDBusMessage::createMethodCall(
            kLogin1, kLogin1Path, u"org.freedesktop.DBus.Mock"_s, u"EmitSignal"_s);
        call.setArguments({u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s, u"b"_s,
                           QVariantList{QVariant::fromValue(QDBusVariant(goingToSleep))}});
        m_bus->connection().call(call, QDBus::Block, 5'000);
    }

    // (what, who, why, mode) of each inhibitor logind lists.
    QList<QStringList> inhibitors() const {
        const QDBusMessage reply = m_bus->connection().call(
            QDBusMessage::createMethodCall(
                kLogin1, kLogin1Path, u"org.freedesktop.login1.Manager"_s, u"ListInhibitors"_s),
            QDBus::Block, 5'000);
        QList<QStringList> result;
        if (reply.type() != QDBusMessage::ReplyMessage) {
            return result;
        }
        const auto list = reply.arguments().constFirst().value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            QString what, who, why, mode;
            uint uid = 0, pid = 0;
            list.beginStructure();
            list >> what >> who >> why >> mode >> uid >> pid;
            list.endStructure();
            result.append({what, who, why, mode});
        }
        list.endArray();
        return result;
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
        const auto actions = requestEveryAction();
        QTRY_COMPARE_WITH_TIMEOUT(calls(u"PowerOff"_s), QList<QVariantList>({{true}}), 10'000);
        QTRY_COMPARE_WITH_TIMEOUT(calls(u"Reboot"_s), QList<QVariantList>({{true}}), 10'000);
        QTRY_COMPARE_WITH_TIMEOUT(calls(u"Suspend"_s), QList<QVariantList>({{true}}), 10'000);
    }

    void refusalsAndRunningAppsStopTheAction() {
        startLogind(QStringLiteral(R"({"CanSuspend": "na"})"));
        LogCapture log;
        m_appsRunning = true;
        const auto actions = requestEveryAction();
        QTRY_COMPARE_WITH_TIMEOUT(log.count(u"still running"_s), 2, 10'000);
        QTRY_COMPARE_WITH_TIMEOUT(log.count(u"CanSuspend answers \"na\""_s), 1, 10'000);
        for (const QString& method : {u"CanReboot"_s, u"CanPowerOff"_s, u"Suspend"_s}) {
            QCOMPARE(calls(method).size(), 0);
        }
    }

    void sessionManagerTakesOverRestartAndShutDown() {
        startLogind();
        FakeGnomeSession gnome;
        QDBusConnection gnomeBus = QDBusConnection::connectToBus(m_bus->address(), u"fake-gnome"_s);
        QVERIFY(gnomeBus.registerObject(u"/org/gnome/SessionManager"_s, &gnome,
                                        QDBusConnection::ExportAllSlots));
        QVERIFY(gnomeBus.registerService(u"org.gnome.SessionManager"_s));
        m_appsRunning = true; // the session manager lets them save, so this must not stop it
        const auto actions = requestEveryAction();
        QTRY_COMPARE_WITH_TIMEOUT(gnome.calls, (QStringList{u"Reboot"_s, u"Shutdown"_s}), 10'000);
        QCOMPARE(calls(u"Reboot"_s).size() + calls(u"PowerOff"_s).size(), 0);
        QDBusConnection::disconnectFromBus(u"fake-gnome"_s);
    }

    void onlyTheEndOfSleepIsAWake() {
        startLogind();
        LogindSleepWatcher watcher(m_bus->connection());
        QSignalSpy woke(&watcher, &LogindSleepWatcher::didWake);
        // Signals arrive in order: once the third is seen, the first two have been handled.
        SignalCounter counter;
        QVERIFY(m_bus->connection().connect(kLogin1, kLogin1Path,
                                            u"org.freedesktop.login1.Manager"_s,
                                            u"PrepareForSleep"_s, &counter, SLOT(count())));
        prepareForSleep(true);
        prepareForSleep(false);
        prepareForSleep(true);
        QTRY_COMPARE_WITH_TIMEOUT(counter.seen, 3, 10'000);
        QCOMPARE(woke.count(), 1);
    }

    void inhibitorIsListedOnlyWhileHeld() {
        QVERIFY(m_bus->start(u"logind"_s, kLogin1));

        LogCapture log;
        LogindPowerAssertion assertion(m_bus->connection(), m_bus->connection());
        QVERIFY(assertion.acquire(u"scheduled action due"_s));
        QVERIFY(assertion.acquire(u"again"_s)); // no second inhibitor
        QVERIFY(assertion.isHeld());
        QTRY_COMPARE_WITH_TIMEOUT(
            inhibitors(),
            QList<QStringList>({{u"idle"_s, u"Vantle"_s, u"scheduled action due"_s, u"block"_s}}),
            5'000);
        // This bus has no desktop inhibitor: said once, not an error.
        QCOMPARE(log.lines.size(), 1);
        QVERIFY(log.lines.constFirst().contains(u"no idle inhibitor"_s));

        assertion.release();
        QVERIFY(!assertion.isHeld());
        QTRY_VERIFY_WITH_TIMEOUT(inhibitors().isEmpty(), 5'000);

        // Held again after a release, and dropped when the object goes.
        {
            LogindPowerAssertion again(m_bus->connection(), m_bus->connection());
            QVERIFY(again.acquire(u"x"_s));
            QTRY_COMPARE_WITH_TIMEOUT(inhibitors().size(), 1, 5'000);
        }
        QTRY_VERIFY_WITH_TIMEOUT(inhibitors().isEmpty(), 5'000);
    }

    void withoutLogindTheInhibitorFailsWithOneLogLine() {
        LogCapture log;
        LogindPowerAssertion assertion(m_bus->connection(), m_bus->connection());
        QVERIFY(!assertion.acquire(u"scheduled action due"_s));
        QVERIFY(!assertion.acquire(u"scheduled action due"_s));
        QVERIFY(!assertion.isHeld());
        assertion.release();
        QCOMPARE(log.count(u"could not keep the machine awake through logind"_s), 1);
    }
};

QTEST_GUILESS_MAIN(TestLogind)
#include "tst_logind.moc"
