#include "fakes/FakeCountdownPresenter.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "monitor/QuitWarningService.h"
#include "platform/linux/FreedesktopNotificationCenter.h"
#include "support/DBusMock.h"
#include "system/NotificationAuthority.h"

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
const QString kService = u"org.freedesktop.Notifications"_s;
const QString kPath = u"/org/freedesktop/Notifications"_s;
const QString kQuitNow = u"Vantle.autoQuit.quitNow"_s;

AppInfo app(qint32 pid, const QString& name) {
    AppInfo info;
    info.id = pid;
    info.name = name;
    return info;
}

// The auto-quit warning on a real centre, its category registered as the app does at start-up.
struct Warnings {
    explicit Warnings(const QDBusConnection& bus)
        : center(bus) {
        quit.registerCategory();
        clock.advance(std::chrono::seconds(0));
    }
    FreedesktopNotificationCenter center;
    NotificationAuthority authority{center};
    ManualClock clock;
    FakeCountdownPresenter* presenter = new FakeCountdownPresenter;
    QuitWarningService quit{center, authority, clock,
                            std::unique_ptr<CountdownPresenter>(presenter)};
};
} // namespace

// Talks to a real notification server (python-dbusmock) on a private session bus.
class TestFreedesktopNotifications : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<MockedBus> m_bus;
    std::unique_ptr<QProcess> m_server;

    // Returns once the server owns its name.
    void startServer(const QString& capabilities) {
        m_server = vantle::testing::startDBusMock(
            m_bus->address(), u"notification_daemon"_s,
            {u"-p"_s, uR"({"capabilities": "%1"})"_s.arg(capabilities)});
        QTRY_VERIFY_WITH_TIMEOUT(m_bus->connection().interface()->isServiceRegistered(kService),
                                 20'000);
    }

    void stopServer() {
        if (m_server) {
            m_server->terminate();
            m_server->waitForFinished(5'000);
            m_server.reset();
        }
    }

    // The server's user pressing `key` on notification `id`.
    void invoke(uint id, const QString& key) const {
        QDBusMessage call = QDBusMessage::createMethodCall(
            kService, kPath, u"org.freedesktop.DBus.Mock"_s, u"EmitSignal"_s);
        call.setArguments({QString(), u"ActionInvoked"_s, u"us"_s,
                           QVariantList{QVariant::fromValue(QDBusVariant(id)),
                                        QVariant::fromValue(QDBusVariant(key))}});
        m_bus->connection().call(call, QDBus::Block, 5'000);
    }

    // The arguments of every call of `method` the server received, oldest first.
    QList<QVariantList> calls(const QString& method = u"Notify"_s) const {
        return m_bus->calls(kService, kPath, method);
    }

    // Not determined stands for a wrong answer: given inside the call, or never.
    static AuthorizationStatus statusOf(NotificationCenter& center) {
        std::optional<AuthorizationStatus> status;
        center.readAuthorizationStatus([&status](AuthorizationStatus s) { status = s; });
        if (status || !QTest::qWaitFor([&status] { return status.has_value(); }, 10'000)) {
            return AuthorizationStatus::notDetermined;
        }
        return *status;
    }

private slots:
    void init() {
        m_bus = std::make_unique<MockedBus>();
        VANTLE_SKIP_WITHOUT(*m_bus);
    }
    void cleanup() {
        stopServer();
        m_bus.reset();
    }

    void postsReplacesClosesAndReportsResponses() {
        startServer(u"actions body"_s);
        FreedesktopNotificationCenter center(m_bus->connection());
        QSignalSpy responses(&center, &NotificationCenter::didReceiveResponse);
        center.setCategories(
            {{u"Vantle.autoQuit"_s,
              {{kQuitNow, u"Quit Now"_s}, {u"Vantle.autoQuit.cancel"_s, u"Cancel"_s}}}});
        const NotificationRequest warning{u"autoQuit"_s, u"Quitting"_s, u"in 10 seconds"_s,
                                          u"Vantle.autoQuit"_s, InterruptionLevel::timeSensitive};
        // The repost goes out before the first answer; it must wait for the id to replace it.
        center.add(warning);
        center.add(warning);
        center.add({u"plain"_s, u"t"_s, u"b"_s, {}, InterruptionLevel::critical});
        QTRY_COMPARE_WITH_TIMEOUT(calls().size(), 3, 10'000);
        const QList<QVariantList> notify = calls();
        const QVariantList &first = notify.at(0), &plain = notify.at(1), &again = notify.at(2);

        QCOMPARE(first.mid(0, 5), QVariantList({u"Vantle"_s, 0u, u"com.pelmark.vantle"_s,
                                                warning.title, warning.body}));
        const auto hints = [](const QVariantList& call) {
            return qdbus_cast<QVariantMap>(call.at(6).value<QDBusArgument>());
        };
        // Servers ignore an urgency that is not a byte.
        QCOMPARE(hints(first).value(u"urgency"_s).typeId(), QMetaType::UChar);
        QCOMPARE(hints(first), (QVariantMap{{u"desktop-entry"_s, u"com.pelmark.vantle"_s},
                                            {u"urgency"_s, 1},
                                            {u"resident"_s, false}}));
        QCOMPARE(hints(plain).value(u"urgency"_s), QVariant(2));
        QCOMPARE((QVariantList{first.at(7), plain.at(7)}), (QVariantList{0, -1}));
        QCOMPARE(again.at(1), QVariant(1u)); // the mock numbers from 1

        // Signals may overtake the last Notify answer, but id 1 was known before the repost.
        invoke(77, kQuitNow);
        invoke(1, kQuitNow);
        invoke(1, u"default"_s);
        QTRY_COMPARE_WITH_TIMEOUT(responses.count(), 2, 10'000);
        QCOMPARE(responses.at(0), QVariantList({warning.identifier, kQuitNow}));
        QCOMPARE(responses.at(1),
                 QVariantList({warning.identifier, NotificationCenter::kDefaultActionIdentifier}));

        center.removeDelivered({warning.identifier, u"never posted"_s});
        QTRY_COMPARE_WITH_TIMEOUT(calls(u"CloseNotification"_s), QList<QVariantList>({{1}}),
                                  10'000);
        QCOMPARE(responses.count(), 2);
    }

    // The buttons as the server receives them: only real buttons, and a click action only where
    // one is declared, with its label. (Each warning's own buttons are its service's tests'.)
    void eachKindCarriesOnlyItsOwnActions() {
        startServer(u"actions body"_s);
        Warnings w(m_bus->connection());
        QTRY_COMPARE_WITH_TIMEOUT(w.authority.status(), AuthorizationStatus::authorized, 10'000);
        w.quit.reportRefused({app(11, u"Safari"_s)});
        w.center.setCategories(
            {{u"c"_s,
              {{NotificationCenter::kDefaultActionIdentifier, u"Show"_s}, {u"x"_s, u"X"_s}}}});
        w.center.add({u"n"_s, u"t"_s, u"b"_s, u"c"_s, InterruptionLevel::active});
        QTRY_COMPARE_WITH_TIMEOUT(calls().size(), 2, 10'000);
        QCOMPARE(calls().at(0).at(5).toStringList(), QStringList());
        QCOMPARE(calls().at(1).at(5).toStringList(),
                 (QStringList{u"default"_s, u"Show"_s, u"x"_s, u"X"_s}));
    }

    void statusFollowsTheServer() {
        FreedesktopNotificationCenter center(m_bus->connection());
        QSignalSpy mayHaveChanged(&center, &NotificationCenter::authorizationMayHaveChanged);
        NotificationRequest note;
        note.identifier = u"a"_s;
        LogCapture log;
        QCOMPARE(statusOf(center), AuthorizationStatus::denied);
        center.add(note);
        center.add(note);

        startServer(u"actions"_s);
        QTRY_COMPARE_WITH_TIMEOUT(mayHaveChanged.count(), 1, 20'000);
        QCOMPARE(statusOf(center), AuthorizationStatus::authorized);
        center.add(note);
        QTRY_COMPARE_WITH_TIMEOUT(calls().size(), 1, 10'000);
        // Failing posts are logged once per run of failures.
        QCOMPARE(log.count(u"could not post a notification"_s), 1);

        stopServer();
        QTRY_COMPARE_WITH_TIMEOUT(mayHaveChanged.count(), 2, 10'000);
        QCOMPARE(statusOf(center), AuthorizationStatus::denied);

        // A server without buttons cannot answer a warning, and it knows none of the old ids.
        startServer(u"body"_s);
        QTRY_COMPARE_WITH_TIMEOUT(mayHaveChanged.count(), 3, 20'000);
        QCOMPARE(statusOf(center), AuthorizationStatus::denied);
        std::optional<bool> granted;
        center.requestAuthorization([&granted](bool g) { granted = g; });
        QTRY_COMPARE_WITH_TIMEOUT(granted, std::optional(false), 10'000);
        center.add(note);
        QTRY_COMPARE_WITH_TIMEOUT(calls().size(), 1, 10'000);
        QCOMPARE(calls().at(0).at(1), QVariant(0u));
    }

    // The auto-quit warning as a user with a notification server sees and answers it.
    void quitWarningThroughARealServer() {
        startServer(u"actions body"_s);
        Warnings w(m_bus->connection());
        QList<qint32> quit;
        w.quit.onQuit = [&quit](const QList<AppInfo>& apps) {
            for (const AppInfo& a : apps) {
                quit << a.id;
            }
        };
        QTRY_COMPARE_WITH_TIMEOUT(w.authority.status(), AuthorizationStatus::authorized, 10'000);

        w.quit.present({app(11, u"Safari"_s), app(12, u"Notes"_s)});
        QTRY_COMPARE_WITH_TIMEOUT(calls().size(), 1, 10'000);
        QCOMPARE(calls().at(0).mid(3, 2),
                 QVariantList({u"Quitting Idle Apps"_s,
                               u"Safari, Notes — in 60s. Cancel to keep them open."_s}));

        // A newcomer replaces the notification rather than adding a second one.
        w.clock.advance(std::chrono::seconds(5));
        w.quit.present({app(13, u"Mail"_s)});
        QTRY_COMPARE_WITH_TIMEOUT(calls().size(), 2, 10'000);
        QCOMPARE(calls().at(1).at(1), QVariant(1u));

        invoke(1, kQuitNow);
        QTRY_COMPARE_WITH_TIMEOUT(quit, (QList<qint32>{11, 12, 13}), 10'000);
        QTRY_COMPARE_WITH_TIMEOUT(calls(u"CloseNotification"_s).size(), 1, 10'000);
        QVERIFY(!w.presenter->open);

        // With the server gone, the next warning falls back to the panel.
        stopServer();
        QTRY_COMPARE_WITH_TIMEOUT(w.authority.status(), AuthorizationStatus::denied, 10'000);
        w.quit.present({app(14, u"Pages"_s)});
        QVERIFY(w.presenter->open);
    }
};

QTEST_GUILESS_MAIN(TestFreedesktopNotifications)
#include "tst_freedesktopnotifications.moc"
