#include "fakes/FakeWorkspace.h"
#include "fakes/ManualClock.h"
#include "monitor/AppMonitorService.h"

#include <QSignalSpy>
#include <QTest>
#include <memory>

using namespace vantle;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

constexpr qint32 kSelf = 1;

QList<qint32> ids(const QList<AppInfo>& apps) {
    QList<qint32> result;
    for (const AppInfo& app : apps) {
        result << app.id;
    }
    return result;
}

} // namespace

class TestAppMonitorService : public QObject {
    Q_OBJECT

    std::unique_ptr<FakeWorkspace> workspace;
    std::unique_ptr<ManualClock> clock;

    std::unique_ptr<AppMonitorService> make() {
        return std::make_unique<AppMonitorService>(*workspace, *clock, kSelf);
    }

private slots:
    void init() {
        workspace = std::make_unique<FakeWorkspace>();
        clock = std::make_unique<ManualClock>();
        workspace->add(kSelf, u"Vantle"_s, u"com.pelmark.vantle"_s, ActivationPolicy::accessory);
    }

    void listsOtherAppsRegularFirstThenByName() {
        workspace->add(10, u"Alpha"_s, {}, ActivationPolicy::accessory);
        workspace->add(11, u"zeta"_s);
        workspace->add(20, u"beta"_s);
        workspace->add(12, u"Beta"_s);
        workspace->add(13, u"alpha"_s);
        workspace->add(14, std::nullopt);
        workspace->add(15, u"Mail"_s, {}, ActivationPolicy::prohibited);
        // Enough equal names that an unstable sort would shuffle them.
        QList<qint32> helpers;
        for (qint32 pid = 140; pid > 100; --pid) {
            workspace->add(pid, u"Helper"_s, {}, ActivationPolicy::accessory);
            helpers << pid;
        }
        const auto monitor = make();

        // Equal names (20, 12) keep the system's order; case never decides.
        QCOMPARE(ids(monitor->runningApps()),
                 QList<qint32>({13, 20, 12, 14, 11, 10}) + helpers + QList<qint32>({15}));
        QCOMPARE(monitor->runningApps()[3].name, u"Unknown"_s);
    }

    void datesStartWhenFirstSeenAndDieWithTheProcess() {
        workspace->add(10, u"Old"_s);
        const QDateTime start = clock->now();
        const auto monitor = make();
        QCOMPARE(monitor->runningApps()[0].lastActiveDate, start);

        clock->advance(1min);
        workspace->emitDeactivate(10);
        clock->advance(1min);

        // Events that do not say which app change no date; launch and terminate still refresh.
        const int calls = workspace->listCalls;
        emit workspace->didActivateApplication(nullptr);
        emit workspace->didLaunchApplication(nullptr);
        emit workspace->didTerminateApplication(nullptr);
        QCOMPARE(workspace->listCalls, calls + 2);
        QCOMPARE(monitor->lastActiveDate(10), start.addSecs(60));

        workspace->emitTerminate(10);
        QVERIFY(!monitor->lastActiveDates().contains(10));
        clock->advance(1h);
        workspace->add(10, u"New"_s);
        monitor->refresh();
        QCOMPARE(monitor->lastActiveDate(10), clock->now());
    }

    void pollsOnlyWhileTheListIsVisible() {
        const auto monitor = make();
        QSignalSpy changes(monitor.get(), &AppMonitorService::runningAppsChanged);
        const int calls = workspace->listCalls;

        monitor->setListVisible(true);
        monitor->setListVisible(true); // a second show must not start a second loop
        QCOMPARE(workspace->listCalls, calls + 2);
        clock->advance(4999ms);
        QCOMPARE(workspace->listCalls, calls + 2);
        clock->advance(1ms);
        QCOMPARE(workspace->listCalls, calls + 3);
        clock->advance(5s);
        QCOMPARE(workspace->listCalls, calls + 4);
        QCOMPARE(changes.count(), 4); // notified although nothing changed

        monitor->setListVisible(false);
        clock->advance(1min);
        QCOMPARE(workspace->listCalls, calls + 4);
    }

    void quitReportsOnlyTheRefusersAfterTenSeconds() {
        workspace->add(10, u"Quits"_s);
        workspace->add(11, u"Refuses"_s)->refusesToQuit = true;
        workspace->add(12, u"Also quits"_s);
        auto monitor = make();
        const QList<AppInfo> listed = monitor->runningApps();
        AppInfo gone;
        gone.id = 99;

        std::optional<QList<qint32>> first;
        std::optional<QList<qint32>> second;
        monitor->quit({listed[1], listed[2], gone},
                      [&](const QList<AppInfo>& left) { first = ids(left); });
        // A new process taking the quit app's pid must not count as a refusal.
        workspace->add(10, u"Reborn"_s);

        clock->advance(5s);
        monitor->quit({listed[0]}, [&](const QList<AppInfo>& left) { second = ids(left); });
        clock->advance(4999ms);
        QVERIFY(!first);
        clock->advance(1ms);
        QCOMPARE(*first, QList<qint32>({11}));
        QVERIFY(ids(monitor->runningApps()).contains(10)); // refreshed before reporting
        clock->advance(5s);
        QCOMPARE(*second, QList<qint32>());

        // Checks still pending die with the service.
        bool called = false;
        monitor->quit(listed, [&](const QList<AppInfo>&) { called = true; });
        monitor->refreshAfterQuit();
        monitor.reset();
        clock->advance(1min);
        QVERIFY(!called);
        QCOMPARE(clock->pendingTimerCount(), std::size_t(0));
    }

    void quitAll_data() {
        QTest::addColumn<bool>("force");
        QTest::addColumn<bool>("protect");
        QTest::addColumn<QList<qint32>>("asked");
        // Excluded: com.a only (exact case); 11 and 13 have no bundle id.
        QTest::newRow("polite, menu bar protected") << false << true << QList<qint32>{11, 14};
        QTest::newRow("forced, unprotected") << true << false << QList<qint32>{11, 12, 13, 14};
    }

    void quitAll() {
        QFETCH(bool, force);
        QFETCH(bool, protect);
        QFETCH(QList<qint32>, asked);
        workspace->add(10, u"A"_s, u"com.a"_s);
        workspace->add(11, u"No id"_s);
        workspace->add(12, u"Menu"_s, u"com.menu"_s, ActivationPolicy::accessory);
        workspace->add(13, u"Agent"_s, {}, ActivationPolicy::prohibited);
        workspace->add(14, u"Other A"_s, u"com.A"_s);
        const QList<std::shared_ptr<FakeRunningApplication>> all = workspace->apps;
        const auto monitor = make();

        QList<qint32> returned;
        for (const RunningApplicationRef& app :
             monitor->quitAll(force, {u"com.a"_s, u"com.b"_s}, protect)) {
            returned << app->processIdentifier();
        }
        QCOMPARE(returned, asked);
        QList<qint32> requested;
        for (const auto& app : all) {
            QCOMPARE(force ? app->terminateRequests : app->forceRequests, 0);
            if (app->terminateRequests + app->forceRequests > 0) {
                requested << app->pid;
            }
        }
        QCOMPARE(requested, asked);

        // The list catches up 0.8 s later; a further request restarts the wait.
        const int calls = workspace->listCalls;
        clock->advance(500ms);
        monitor->refreshAfterQuit();
        clock->advance(799ms);
        QCOMPARE(workspace->listCalls, calls);
        clock->advance(1ms);
        QCOMPARE(workspace->listCalls, calls + 1);
    }
};

QTEST_GUILESS_MAIN(TestAppMonitorService)
#include "tst_appmonitorservice.moc"
