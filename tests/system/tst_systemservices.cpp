#include "fakes/FakeHotKeyRegistrar.h"
#include "fakes/FakeNotificationCenter.h"
#include "fakes/FakeUpdater.h"
#include "fakes/ManualClock.h"
#include "model/DiagnosticsReport.h"
#include "system/HotKeyService.h"
#include "system/NotificationAuthority.h"
#include "system/UpdateService.h"
#include "ui/settings/NotificationDeniedNotice.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;
using Command = AppCommand;
using Status = AuthorizationStatus;

namespace {
const QList<Command> kGlobal{Command::quitAllApps, Command::sleep, Command::restart,
                             Command::shutDown};

struct Fixture {
    FakeHotKeyRegistrar registrar;
    HotKeyService service{registrar};
    QList<Command> received;

    Fixture() {
        service.onCommand = [this](Command command) { received.append(command); };
    }
};
} // namespace

// The system services over fakes of what they stand on: notification permission, updates and
// global shortcuts.
class TestSystemServices : public QObject {
    Q_OBJECT

    ManualClock clock;

private slots:
    void initTestCase() {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        clock.setNow(QDateTime(QDate(2026, 11, 16), QTime(0, 30)));
    }

    // Where the package manager updates Vantle there is nothing to check, start or show.
    void withoutAnUpdater() {
        UpdateService service(nullptr, clock);
        QVERIFY(!service.hasUpdater());
        QVERIFY(!service.canCheckForUpdates());
        QVERIFY(!service.automaticallyChecksForUpdates());
        service.startUpdater();
        service.checkForUpdates();
        QCOMPARE(service.lastCheckText(), QString());
    }

    // The service mirrors the framework's own answer and only checks when it may.
    void mirrorsTheFramework() {
        FakeUpdater updater;
        UpdateService service(&updater, clock);
        QSignalSpy changed(&service, &UpdateService::canCheckForUpdatesChanged);
        QVERIFY(service.canCheckForUpdates());
        service.startUpdater();
        QCOMPARE(updater.starts, 1);
        updater.setCanCheck(false);
        QCOMPARE(changed.size(), 1);
        QVERIFY(!service.canCheckForUpdates());
        service.checkForUpdates();
        QCOMPARE(updater.checks, 0);
        updater.setCanCheck(true);
        service.checkForUpdates();
        QCOMPARE(updater.checks, 1);
    }

    void lastCheckText_data() {
        QTest::addColumn<QDateTime>("last");
        QTest::addColumn<QString>("text");
        const QLocale locale;
        const QTime morning(9, 41);
        const QString late = locale.toString(QTime(23, 59), QLocale::ShortFormat);
        QTest::newRow("never") << QDateTime() << QString();
        QTest::newRow("earlier today")
            << QDateTime(QDate(2026, 11, 16), QTime(0, 5))
            << u"Today at "_s + locale.toString(QTime(0, 5), QLocale::ShortFormat);
        QTest::newRow("just before midnight")
            << QDateTime(QDate(2026, 11, 15), QTime(23, 59)) << u"Yesterday at "_s + late;
        QTest::newRow("two days ago")
            << QDateTime(QDate(2026, 11, 14), morning)
            << mediumDateTime(QDateTime(QDate(2026, 11, 14), morning), locale);
    }
    void lastCheckText() {
        QFETCH(QDateTime, last);
        QFETCH(QString, text);
        FakeUpdater updater;
        if (last.isValid()) {
            updater.lastCheck = last;
        }
        QCOMPARE(UpdateService(&updater, clock).lastCheckText(), text);
    }

    void followsTheCentreAndPostsOnlyWhenAuthorizedOrProvisional() {
        FakeNotificationCenter center;
        NotificationAuthority authority(center);
        const QList<std::pair<Status, bool>> cases{{Status::provisional, true},
                                                   {Status::ephemeral, false},
                                                   {Status::denied, false},
                                                   {Status::notDetermined, false},
                                                   {Status::authorized, true}};
        for (const auto& [status, allowed] : cases) {
            center.status = status;
            emit center.authorizationMayHaveChanged();
            QCOMPARE(authority.status(), status);
            QCOMPARE(authority.canPostNotifications(), allowed);
        }
        QCOMPARE(NotificationAuthority::statusText(Status::denied),
                 QStringLiteral("DENIED (warnings fall back to the window)"));
    }

    void noticeShowsOnlyWhileNotificationsAreChosenButDenied() {
        FakeNotificationCenter center;
        center.status = Status::denied;
        NotificationAuthority authority(center);
        QWidget window;
        NotificationDeniedNotice notice(authority, &window);
        QVERIFY(!notice.isHidden());
        for (const QuitWarningStyle style : {QuitWarningStyle::window, QuitWarningStyle::never}) {
            notice.setStyle(style);
            QVERIFY(notice.isHidden());
        }
        notice.setStyle(QuitWarningStyle::notification);
        for (const Status status : {Status::notDetermined, Status::authorized, Status::denied}) {
            center.status = status;
            emit center.authorizationMayHaveChanged();
            QCOMPARE(notice.isHidden(), status != Status::denied);
        }

        auto* button = notice.findChild<QPushButton*>();
        QVERIFY(button);
        QCOMPARE(button->text(), QStringLiteral("Open Notification Settings\u2026"));
        button->click();
        QCOMPARE(center.settingsOpened, 1);
    }

    void registersTheGlobalCommandsItIsGiven_data() {
        QTest::addColumn<QList<Command>>("commands");
        QTest::addColumn<QSet<quint32>>("held");
        QTest::addColumn<QList<quint32>>("registeredIds");
        QTest::addColumn<QList<Command>>("unavailable");

        QTest::newRow("all four") << kGlobal << QSet<quint32>{} << QList<quint32>{1, 2, 3, 4}
                                  << QList<Command>{};
        QTest::newRow("every shortcut off")
            << QList<Command>{} << QSet<quint32>{} << QList<quint32>{} << QList<Command>{};
        QTest::newRow("app-list commands are never global")
            << QList<Command>{Command::focusSearch, Command::selectAll, Command::quitSelected}
            << QSet<quint32>{} << QList<quint32>{} << QList<Command>{};
        QTest::newRow("one held elsewhere")
            << kGlobal << QSet<quint32>{1} << QList<quint32>{2, 3, 4}
            << QList<Command>{Command::quitAllApps};
        QTest::newRow("held but switched off is not unavailable")
            << QList<Command>{Command::sleep} << QSet<quint32>{1} << QList<quint32>{2}
            << QList<Command>{};
    }
    void registersTheGlobalCommandsItIsGiven() {
        QFETCH(QList<Command>, commands);
        QFETCH(QSet<quint32>, held);
        QFETCH(QList<quint32>, registeredIds);
        QFETCH(QList<Command>, unavailable);
        Fixture f;
        f.registrar.held = held;
        // The previous set is released, and its unavailable command is asked for afresh.
        f.registrar.held.insert(4);
        f.service.registerHotKeys(kGlobal);
        f.registrar.held = held;

        QSignalSpy published(&f.service, &HotKeyService::unavailableChanged);
        f.service.registerHotKeys(commands);
        QCOMPARE(f.registrar.activeIds(), registeredIds);
        QCOMPARE(f.service.unavailable(), unavailable);
        QCOMPARE(published.count(), 1); // published also when empty
        QCOMPARE(f.registrar.commits, 2);
    }

    void requestsCarryTheFixedCombinationAndTitle() {
        Fixture f;
        f.service.registerHotKeys({Command::restart});
        const auto& request = f.registrar.active.begin()->second;
        QCOMPARE(std::tuple(request.id, request.name, request.description),
                 std::tuple(3U, u"restart"_s, u"Restart"_s));
        QCOMPARE(request.combo, commandBinding(Command::restart).combo);
    }

    void pressesReachOnCommandOnlyForRegisteredIds() {
        Fixture f;
        f.registrar.held = {1};
        f.service.registerHotKeys({Command::quitAllApps, Command::sleep, Command::shutDown});
        const auto onCommand = std::exchange(f.service.onCommand, {});
        f.service.handle(2); // before onCommand is set: ignored, and no empty call
        f.service.onCommand = onCommand;
        for (const quint32 id : {2U, 1U, 3U, 4U, 0U, 7U, 99U}) {
            emit f.registrar.pressed(id);
        }
        QCOMPARE(f.received, (QList<Command>{Command::sleep, Command::shutDown}));

        // A press that arrives after its command was switched off.
        f.service.registerHotKeys({Command::shutDown});
        emit f.registrar.pressed(2);
        QCOMPARE(f.received.size(), 2);
    }

    void aLateRefusalMakesTheCommandUnavailable() {
        Fixture f;
        f.service.registerHotKeys(kGlobal);
        QSignalSpy published(&f.service, &HotKeyService::unavailableChanged);
        emit f.registrar.refused(4);
        emit f.registrar.refused(2);
        emit f.registrar.refused(2); // twice, or for an id never registered: no change
        QCOMPARE(f.service.unavailable(), (QList<Command>{Command::sleep, Command::shutDown}));
        QCOMPARE(published.count(), 2);
        QCOMPARE(f.registrar.activeIds(), (QList<quint32>{1, 3}));
        emit f.registrar.pressed(4);
        QVERIFY(f.received.isEmpty());
    }

    void keyCapShowsTheDesktopsTriggerUntilTheNextRegistration() {
        Fixture f;
        f.service.registerHotKeys({Command::sleep});
        QSignalSpy changed(&f.service, &HotKeyService::keyCapsChanged);
        emit f.registrar.triggerDescribed(2, u"Meta+F12"_s);
        emit f.registrar.triggerDescribed(1, u"Meta+F1"_s); // not registered
        QCOMPARE(f.service.keyCap(Command::sleep, KeyCapStyle::linuxDesktop), u"Meta+F12"_s);
        QCOMPARE(f.service.keyCap(Command::quitAllApps, KeyCapStyle::linuxDesktop),
                 u"Ctrl+Alt+Super+Q"_s);
        QCOMPARE(changed.count(), 1);

        f.service.registerHotKeys({Command::sleep});
        QCOMPARE(f.service.keyCap(Command::sleep, KeyCapStyle::linuxDesktop),
                 u"Ctrl+Alt+Super+S"_s);
        QCOMPARE(f.service.keyCap(Command::sleep, KeyCapStyle::macOS), u"\u2303\u2325\u2318S"_s);
        QCOMPARE(changed.count(), 2);
    }
};

QTEST_MAIN(TestSystemServices)
#include "tst_systemservices.moc"
