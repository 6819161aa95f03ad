#include "fakes/FakeCountdownPresenter.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "monitor/QuitWarningService.h"
#include "platform/linux/FreedesktopNotificationCenter.h"
#include "schedule/ScheduleWarningService.h"
#include "support/DBusMock.h"
#include "support/PrivateSessionBus.h"
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
using vantle::testing::mockedCalls;
using vantle::testing::PrivateSessionBus;

namespace {
const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kQuitNow = QStringLiteral("Vantle.autoQuit.quitNow");

AppInfo app(qint32 pid, const QString& name) {
    AppInfo info;
    info.id = pid;
    info.name = name;
    return info;
}
} // namespace

// Talks to a real notification server (python-dbusmock) on a private session bus.
class TestFreedesktopNotifications : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PrivateSessionBus> m_bus;
    std::unique_ptr<QProcess> m_server;

    void startServer(const QString& capabilities) {
        m_server = vantle::testing::startDBusMock(
            m_bus->address(), QStringLiteral("notification_daemon"),
            {QStringLiteral("-p"), QStringLiteral(R"({"capabilities": "%1"})").arg(capabilities)});
    }

    void stopServer() {
        if (m_server) {
            m_server->terminate();
            m_server->waitForFinished(5'000);
            m_server.reset();
        }
    }

    QDBusMessage mock(const QString& method, const QVariantList& arguments) const {
        QDBusMessage call = QDBusMessage::createMethodCall(
            kService, QStringLiteral("/org/freedesktop/Notifications"),
            QStringLiteral("org.freedesktop.DBus.Mock"), method);
        call.setArguments(arguments);
        return m_bus->connection().call(call, QDBus::Block, 5'000);
    }

    // The arguments of every call of `method` the server received, oldest first.
    QList<QVariantList> calls(const QString& method) const {
        return mockedCalls(m_bus->connection(), kService,
                           QStringLiteral("/org/freedesktop/Notifications"), method);
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
        m_bus = std::make_unique<PrivateSessionBus>();
        if (!m_bus->isRunning()) {
            QSKIP(qPrintable(m_bus->error()));
        }
        if (!vantle::testing::hasDBusMock()) {
            QSKIP("python3-dbusmock is not installed for /usr/bin/python3");
        }
    }
    void cleanup() {
        stopServer();
        m_bus.reset();
    }

    void postsReplacesClosesAndReportsResponses() {
        startServer(QStringLiteral("actions body"));
        QTRY_VERIFY_WITH_TIMEOUT(m_bus->connection().interface()->isServiceRegistered(kService),
                                 20'000);
        FreedesktopNotificationCenter center(m_bus->connection());
        QSignalSpy responses(&center, &NotificationCenter::didReceiveResponse);
        center.setCategories(
            {{QStringLiteral("Vantle.autoQuit"),
              {{kQuitNow, QStringLiteral("Quit Now")},
               {QStringLiteral("Vantle.autoQuit.cancel"), QStringLiteral("Cancel")}}}});
        const NotificationRequest warning{
            QStringLiteral("autoQuit"), QStringLiteral("Quitting"), QStringLiteral("in 10 seconds"),
            QStringLiteral("Vantle.autoQuit"), InterruptionLevel::timeSensitive};
        // The repost goes out before the first answer; it must wait for the id to replace it.
        center.add(warning);
        center.add(warning);
        center.add({QStringLiteral("plain"),
                    QStringLiteral("t"),
                    QStringLiteral("b"),
                    {},
                    InterruptionLevel::critical});
        QTRY_COMPARE_WITH_TIMEOUT(calls(QStringLiteral("Notify")).size(), 3, 10'000);
        const QList<QVariantList> notify = calls(QStringLiteral("Notify"));
        const QVariantList &first = notify.at(0), &plain = notify.at(1), &again = notify.at(2);

        QCOMPARE(first.mid(0, 5),
                 QVariantList({QStringLiteral("Vantle"), 0u, QStringLiteral("com.pelmark.vantle"),
                               warning.title, warning.body}));
        const auto hints = [](const QVariantList& call) {
            return qdbus_cast<QVariantMap>(call.at(6).value<QDBusArgument>());
        };
        // Servers ignore an urgency that is not a byte.
        QCOMPARE(hints(first).value(QStringLiteral("urgency")).typeId(), QMetaType::UChar);
        QCOMPARE(hints(first).value(QStringLiteral("urgency")), QVariant(1));
        QCOMPARE(hints(first).value(QStringLiteral("resident")), QVariant(false));
        QCOMPARE(first.at(7), QVariant(0));
        QCOMPARE(hints(plain).value(QStringLiteral("urgency")), QVariant(2));
        QCOMPARE(plain.at(7), QVariant(-1));
        QCOMPARE(again.at(1), QVariant(1u)); // the mock numbers from 1

        // Signals may overtake the last Notify answer, but id 1 was known before the repost.
        for (const auto& [id, key] : {std::pair(77u, kQuitNow), std::pair(1u, kQuitNow),
                                      std::pair(1u, QStringLiteral("default"))}) {
            const QVariantList arguments{QVariant::fromValue(QDBusVariant(id)),
                                         QVariant::fromValue(QDBusVariant(key))};
            mock(QStringLiteral("EmitSignal"),
                 {QString(), QStringLiteral("ActionInvoked"), QStringLiteral("us"), arguments});
        }
        QTRY_COMPARE_WITH_TIMEOUT(responses.count(), 2, 10'000);
        QCOMPARE(responses.at(0), QVariantList({warning.identifier, kQuitNow}));
        QCOMPARE(responses.at(1),
                 QVariantList({warning.identifier, NotificationCenter::kDefaultActionIdentifier}));

        center.removeDelivered({warning.identifier, QStringLiteral("never posted")});
        QTRY_COMPARE_WITH_TIMEOUT(calls(QStringLiteral("CloseNotification")),
                                  QList<QVariantList>({{1}}), 10'000);
        QCOMPARE(responses.count(), 2);
    }

    // The buttons of each kind of notification, as the server receives them: only real buttons,
    // and a click action only where one is declared, with its label.
    void eachKindCarriesOnlyItsOwnActions_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QStringList>("actions");
        QTest::newRow("auto-quit warning")
            << "autoQuit"
            << QStringList{kQuitNow, QStringLiteral("Quit Now"),
                           QStringLiteral("Vantle.autoQuit.cancel"), QStringLiteral("Cancel")};
        QTest::newRow("refusal notice") << "refused" << QStringList();
        QTest::newRow("schedule warning")
            << "schedule"
            << QStringList{QStringLiteral("Vantle.schedule.now"), QStringLiteral("Do It Now"),
                           QStringLiteral("Vantle.schedule.cancel"), QStringLiteral("Cancel")};
        QTest::newRow("declared click")
            << "click"
            << QStringList{QStringLiteral("default"), QStringLiteral("Show"), QStringLiteral("x"),
                           QStringLiteral("X")};
    }
    void eachKindCarriesOnlyItsOwnActions() {
        QFETCH(QString, kind);
        QFETCH(QStringList, actions);
        startServer(QStringLiteral("actions body"));
        QTRY_VERIFY_WITH_TIMEOUT(m_bus->connection().interface()->isServiceRegistered(kService),
                                 20'000);
        FreedesktopNotificationCenter center(m_bus->connection());
        NotificationAuthority authority(center);
        ManualClock clock;
        // Registered as the app does at start-up.
        QuitWarningService quitWarning(center, authority, clock,
                                       std::make_unique<FakeCountdownPresenter>());
        ScheduleWarningService scheduleWarning(center, authority, clock,
                                               std::make_unique<FakeCountdownPresenter>());
        quitWarning.registerCategory();
        scheduleWarning.registerCategory();
        clock.advance(std::chrono::seconds(0));
        QTRY_COMPARE_WITH_TIMEOUT(authority.status(), AuthorizationStatus::authorized, 10'000);

        if (kind == QLatin1String("autoQuit")) {
            quitWarning.present({app(11, QStringLiteral("Safari"))});
        } else if (kind == QLatin1String("refused")) {
            quitWarning.reportRefused({app(11, QStringLiteral("Safari"))});
        } else if (kind == QLatin1String("schedule")) {
            scheduleWarning.warn(ShutdownSchedule::Action::shutdown);
        } else {
            center.setCategories(
                {{QStringLiteral("c"),
                  {{NotificationCenter::kDefaultActionIdentifier, QStringLiteral("Show")},
                   {QStringLiteral("x"), QStringLiteral("X")}}}});
            center.add({QStringLiteral("n"), QStringLiteral("t"), QStringLiteral("b"),
                        QStringLiteral("c"), InterruptionLevel::active});
        }
        QTRY_COMPARE_WITH_TIMEOUT(calls(QStringLiteral("Notify")).size(), 1, 10'000);
        QCOMPARE(calls(QStringLiteral("Notify")).at(0).at(5).toStringList(), actions);
    }

    void statusFollowsTheServer() {
        FreedesktopNotificationCenter center(m_bus->connection());
        QSignalSpy mayHaveChanged(&center, &NotificationCenter::authorizationMayHaveChanged);
        NotificationRequest note;
        note.identifier = QStringLiteral("a");
        LogCapture log;
        QCOMPARE(statusOf(center), AuthorizationStatus::denied);
        center.add(note);
        center.add(note);

        startServer(QStringLiteral("actions"));
        QTRY_COMPARE_WITH_TIMEOUT(mayHaveChanged.count(), 1, 20'000);
        QCOMPARE(statusOf(center), AuthorizationStatus::authorized);
        center.add(note);
        QTRY_COMPARE_WITH_TIMEOUT(calls(QStringLiteral("Notify")).size(), 1, 10'000);
        // Failing posts are logged once per run of failures.
        QCOMPARE(log.count(QStringLiteral("could not post a notification")), 1);

        stopServer();
        QTRY_COMPARE_WITH_TIMEOUT(mayHaveChanged.count(), 2, 10'000);
        QCOMPARE(statusOf(center), AuthorizationStatus::denied);

        // A server without buttons cannot answer a warning, and it knows none of the old ids.
        startServer(QStringLiteral("body"));
        QTRY_COMPARE_WITH_TIMEOUT(mayHaveChanged.count(), 3, 20'000);
        QCOMPARE(statusOf(center), AuthorizationStatus::denied);
        std::optional<bool> granted;
        center.requestAuthorization([&granted](bool g) { granted = g; });
        QTRY_COMPARE_WITH_TIMEOUT(granted, std::optional(false), 10'000);
        center.add(note);
        QTRY_COMPARE_WITH_TIMEOUT(calls(QStringLiteral("Notify")).size(), 1, 10'000);
        QCOMPARE(calls(QStringLiteral("Notify")).at(0).at(1), QVariant(0u));
    }

    // The auto-quit warning as a user with a notification server sees and answers it.
    void quitWarningThroughARealServer() {
        startServer(QStringLiteral("actions body"));
        QTRY_VERIFY_WITH_TIMEOUT(m_bus->connection().interface()->isServiceRegistered(kService),
                                 20'000);
        FreedesktopNotificationCenter center(m_bus->connection());
        NotificationAuthority authority(center);
        ManualClock clock;
        auto* presenter = new FakeCountdownPresenter;
        QuitWarningService service(center, authority, clock,
                                   std::unique_ptr<CountdownPresenter>(presenter));
        QList<qint32> quit;
        service.onQuit = [&quit](const QList<AppInfo>& apps) {
            for (const AppInfo& a : apps) {
                quit << a.id;
            }
        };
        service.registerCategory();
        clock.advance(std::chrono::seconds(0));
        QTRY_COMPARE_WITH_TIMEOUT(authority.status(), AuthorizationStatus::authorized, 10'000);

        service.present({app(11, QStringLiteral("Safari")), app(12, QStringLiteral("Notes"))});
        QTRY_COMPARE_WITH_TIMEOUT(calls(QStringLiteral("Notify")).size(), 1, 10'000);
        const QVariantList first = calls(QStringLiteral("Notify")).at(0);
        QCOMPARE(first.at(3), QVariant(QStringLiteral("Quitting Idle Apps")));
        QCOMPARE(first.at(4),
                 QVariant(QStringLiteral("Safari, Notes — in 60s. Cancel to keep them open.")));

        // A newcomer replaces the notification rather than adding a second one.
        clock.advance(std::chrono::seconds(5));
        service.present({app(13, QStringLiteral("Mail"))});
        QTRY_COMPARE_WITH_TIMEOUT(calls(QStringLiteral("Notify")).size(), 2, 10'000);
        QCOMPARE(calls(QStringLiteral("Notify")).at(1).at(1), QVariant(1u));

        const QVariantList pressed{QVariant::fromValue(QDBusVariant(1u)),
                                   QVariant::fromValue(QDBusVariant(kQuitNow))};
        mock(QStringLiteral("EmitSignal"),
             {QString(), QStringLiteral("ActionInvoked"), QStringLiteral("us"), pressed});
        QTRY_COMPARE_WITH_TIMEOUT(quit, (QList<qint32>{11, 12, 13}), 10'000);
        QTRY_COMPARE_WITH_TIMEOUT(calls(QStringLiteral("CloseNotification")).size(), 1, 10'000);
        QVERIFY(!presenter->open);

        // With the server gone, the next warning falls back to the panel.
        stopServer();
        QTRY_COMPARE_WITH_TIMEOUT(authority.status(), AuthorizationStatus::denied, 10'000);
        service.present({app(14, QStringLiteral("Pages"))});
        QVERIFY(presenter->open);
    }
};

QTEST_GUILESS_MAIN(TestFreedesktopNotifications)
#include "tst_freedesktopnotifications.moc"
