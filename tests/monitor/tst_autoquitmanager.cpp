#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeIdleTime.h"
#include "fakes/FakeWorkspace.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "monitor/AppMonitorService.h"
#include "monitor/AutoQuitManager.h"
#include "monitor/IdleMonitorService.h"

#include <QSignalSpy>
#include <QTest>
#include <memory>

using namespace vantle;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

using Batches = QList<QList<qint32>>;

// Everything the engine reads, wired as the application wires it.
struct Rig {
    FakeWorkspace workspace;
    ManualClock clock;
    FakeIdleTime idle;
    MemoryDefaultsStore store;
    FakeBundleInfo bundle;
    AppSettings settings{store, bundle, clock, ProductTexts::macOS()};
    std::unique_ptr<AppMonitorService> apps;
    IdleMonitorService idleMonitor{idle, clock};
    AutoQuitManager manager{workspace, clock};
    Batches batches;
    QList<AutoQuitTrigger> triggers;

    // Call once the workspace holds its apps: they are first seen now.
    void wire() {
        apps = std::make_unique<AppMonitorService>(workspace, clock, 1);
        manager.setAppMonitor(apps.get());
        manager.setIdleMonitor(&idleMonitor);
        manager.setSettings(&settings);
        manager.onAppsReadyToQuit = [this](const QList<AppInfo>& batch, AutoQuitTrigger trigger) {
            triggers << trigger;
            QList<qint32> pids;
            for (const AppInfo& app : batch) {
                pids << app.id;
            }
            batches << pids;
        };
    }
    void idleFor(double seconds) {
        idle.seconds = seconds;
        idleMonitor.start(30);
    }
    void quitRule(const QString& bundleID, double minutes) {
        QList<AppRule> rules = settings.appRules();
        rules << AppRule{bundleID, bundleID, AppRule::Action::quit, minutes};
        settings.setAppRules(rules);
    }
};

} // namespace

class TestAutoQuitManager : public QObject {
    Q_OBJECT

private slots:
    void idleIsSampledAtOnceThenEveryIntervalAndNoReadingMeansPresent() {
        Rig r;
        LogCapture log;
        QSignalSpy published(&r.idleMonitor, &IdleMonitorService::systemIdleSecondsChanged);

        r.idle.seconds = 42;
        r.idleMonitor.start(30);
        QCOMPARE(r.idleMonitor.systemIdleSeconds(), 42.0);
        r.clock.advance(29999ms);
        QCOMPARE(r.idle.samples, 1);
        r.clock.advance(1ms);
        QCOMPARE(r.idle.samples, 2);
        QCOMPARE(published.count(), 2); // unchanged samples are published too

        // A second start replaces the loop rather than adding one.
        r.idle.seconds = 7.5;
        r.idleMonitor.start(10);
        QCOMPARE(r.idleMonitor.systemIdleSeconds(), 7.5);
        r.clock.advance(30s);
        QCOMPARE(r.idle.samples, 3 + 3);

        // Without a reading the user counts as present; that is logged once.
        r.idle.seconds = std::nullopt;
        r.clock.advance(10s);
        QCOMPARE(r.idleMonitor.systemIdleSeconds(), 0.0);
        r.clock.advance(5min);
        QCOMPARE(log.count(u"idle time is unavailable"_s), 1);
    }

    void idleSweepFiresOncePerIdlePeriod() {
        Rig r;
        r.workspace.add(10, u"Front"_s, u"com.front"_s);
        r.workspace.add(11, u"Menu"_s, u"com.menu"_s, ActivationPolicy::accessory);
        r.workspace.add(12, u"Kept"_s, u"com.keep"_s);
        r.workspace.add(13, u"Tool"_s);
        r.workspace.add(14, u"Other kept"_s, u"com.Keep"_s);
        r.workspace.frontmost = 10;
        r.wire();
        r.settings.setIdleQuitEnabled(true);
        r.settings.setIdleQuitTimeout(30);
        r.settings.setExcludedBundleIDs({u"com.keep"_s});

        r.idleFor(30 * 60 - 0.001);
        r.manager.evaluate();
        QCOMPARE(r.batches, Batches());
        r.idleFor(30 * 60);
        r.manager.evaluate();
        r.manager.evaluate();
        // Frontmost included; menu-bar app protected; exclusion is case-sensitive.
        QCOMPARE(r.batches, Batches({{10, 14, 13}}));

        // Switched off, the sweep neither fires nor forgets that it fired.
        r.settings.setIdleQuitEnabled(false);
        r.idleFor(0);
        r.manager.evaluate();
        QVERIFY(r.manager.idleQuitFired());

        r.settings.setIdleQuitEnabled(true);
        r.manager.evaluate();
        QVERIFY(!r.manager.idleQuitFired());
        r.idleFor(4000);
        r.manager.evaluate();
        QCOMPARE(r.batches.size(), 2);
    }

    void idleSweepWithNothingToQuitStillLatches() {
        Rig r;
        r.workspace.add(11, u"Menu"_s, u"com.menu"_s, ActivationPolicy::accessory);
        r.wire();
        r.settings.setIdleQuitEnabled(true);
        r.idleFor(24 * 3600);
        r.manager.evaluate();
        QVERIFY(r.manager.idleQuitFired());
        QCOMPARE(r.batches, Batches());
    }

    // Inclusive time-outs; the frontmost app and, while protected, menu-bar apps are spared.
    void rulesActAtTheirTimeoutAndSpareAppsInUse() {
        Rig r;
        r.workspace.add(10, u"Quit"_s, u"com.quit"_s);
        auto hidden = r.workspace.add(11, u"Hide"_s, u"com.hide"_s);
        r.workspace.add(12, u"Front"_s, u"com.front"_s);
        r.workspace.add(13, u"Menu"_s, u"com.menu"_s, ActivationPolicy::accessory);
        r.workspace.frontmost = 12;
        r.wire();
        r.settings.setAppRules({AppRule{u"com.quit"_s, u"Quit"_s, AppRule::Action::quit, 5},
                                AppRule{u"com.hide"_s, u"Hide"_s, AppRule::Action::hide, 5}});
        r.quitRule(u"com.front"_s, 1);
        r.quitRule(u"com.menu"_s, 1);

        // Never activated: idle since first seen.
        r.clock.advance(299'999ms);
        r.manager.evaluate();
        QCOMPARE(r.batches, Batches());
        QCOMPARE(hidden->hideRequests, 0);
        r.clock.advance(1ms);
        r.manager.evaluate();
        QCOMPARE(r.batches, Batches({{10}}));
        QCOMPARE(hidden->hideRequests, 1);

        r.settings.setProtectMenuBarApps(false);
        r.workspace.frontmost.reset();
        r.manager.evaluate();
        QCOMPARE(r.batches.last(), QList<qint32>({10, 12, 13}));
    }

    void onePassHandsOverTheSweepThenTheRulesInRuleOrder() {
        Rig r;
        r.workspace.add(10, u"A"_s, u"com.a"_s);
        r.workspace.add(11, u"B1"_s, u"com.b"_s);
        r.workspace.add(12, u"B2"_s, u"com.b"_s);
        r.workspace.add(13, u"No id"_s);
        r.wire();
        r.quitRule(u"com.b"_s, 1);
        r.quitRule(u"com.a"_s, 1);
        r.quitRule(u"com.b"_s, 1);
        r.quitRule(QString(), 0); // an app without a bundle id matches no rule
        r.settings.setIdleQuitEnabled(true);
        r.settings.setIdleQuitTimeout(1);

        r.clock.advance(1min);
        r.idleFor(60);
        r.manager.evaluate();
        QCOMPARE(r.batches, Batches({{10, 11, 12, 13}, {11, 12, 10, 11, 12}}));
        QCOMPARE(r.triggers, QList({AutoQuitTrigger::idleSweep, AutoQuitTrigger::rule}));
    }

    void passesComeEveryMinuteWhileTheSourcesLive() {
        Rig r;
        r.workspace.add(10, u"App"_s, u"com.app"_s);
        r.wire();
        r.quitRule(u"com.app"_s, 0);
        r.manager.start();
        r.clock.advance(59'999ms);
        QCOMPARE(r.batches.size(), 0);
        r.clock.advance(1ms);
        QCOMPARE(r.batches.size(), 1);

        r.apps.reset();
        r.clock.advance(5min);
        QCOMPARE(r.batches.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestAutoQuitManager)
#include "tst_autoquitmanager.moc"
