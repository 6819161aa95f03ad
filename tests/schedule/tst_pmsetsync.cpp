#include "fakes/FakeAlerts.h"
#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeScriptRunner.h"
#include "fakes/InlineExecutor.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "fakes/ManualExecutor.h"
#include "fakes/MemoryDefaultsStore.h"
#include "fakes/Schedules.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "schedule/PmsetSync.h"
#include "schedule/PrivilegedRunner.h"

#include <QTest>

using namespace vantle;
using Action = ShutdownSchedule::Action;
using Weekday = ShutdownSchedule::Weekday;

namespace {

const QString kRule = QStringLiteral("/etc/sudoers.d/vantle-pmset");
const QString kTuesdayWake = QStringLiteral("wake|11/17/26 07:30:00");
const QString kScheduleTuesdayWake =
    QStringLiteral("/usr/bin/pmset schedule wake '11/17/26 07:30:00'");
const QString kListing = QStringLiteral("/usr/bin/pmset -g sched");

AlertResponse answer(int button, bool checked = false) {
    return {.button = button, .checkBoxChecked = checked};
}

// Monday 2026-11-16 09:00, macOS command lines (or Linux ones), a user the rule can name.
template <typename ExecutorType>
struct Rig {
    explicit Rig(QList<ShutdownSchedule> schedules = {}, bool linux = false)
        : onLinux(linux) {
        settings.setShutdownSchedules(std::move(schedules));
        store.setObject(QStringLiteral("didAdoptPmsetEntries"), true);
    }
    void sync() { pmset.sync(&settings); }
    const ProductTexts& texts() const {
        return onLinux ? ProductTexts::linuxDesktop() : ProductTexts::macOS();
    }

    const bool onLinux;
    ManualClock clock;
    MemoryDefaultsStore store;
    FakeBundleInfo bundle;
    AppSettings settings{store, bundle, clock, texts()};
    ExecutorType executor;
    FakeScriptRunner scripts;
    FakeAlerts alerts;
    PrivilegedRunner runner{scripts, alerts,
                            onLinux ? PowerSchedulerTool::linuxTool(QStringLiteral("/usr/libexec"))
                                    : PowerSchedulerTool::macOS(),
                            texts(), QStringLiteral("ada")};
    PmsetSync pmset{clock, executor, scripts, runner, store};
    LogCapture log;
};
using InlineRig = Rig<InlineExecutor>;

} // namespace

class TestPmsetSync : public QObject {
    Q_OBJECT

private slots:
    void nothingToScheduleRunsNothing() {
        InlineRig rig({schedule(Action::sleep, {Weekday::monday}, 23, 0)});
        rig.settings.setPmsetRegistered({QStringLiteral("stale")});
        rig.settings.setPmsetRegistered({});
        rig.sync();
        QVERIFY(rig.scripts.plainRuns.isEmpty());
        QVERIFY(rig.scripts.administratorRuns.isEmpty());
        QVERIFY(rig.alerts.shown.isEmpty());
        QVERIFY(rig.settings.pmsetRegistered().isEmpty());
        QVERIFY(!rig.pmset.syncInFlight());
    }

    // The first sync asks for the password once per launch, registers and remembers the events;
    // an unchanged sync later runs nothing; a changed one cancels the old event and asks only the
    // system's prompt.
    void administratorPathRegistersAndRemembers() {
        InlineRig rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.alerts.answer = answer(0);
        rig.sync();
        QCOMPARE(rig.alerts.shown.size(), 1);
        QCOMPARE(rig.alerts.shown[0].informativeText,
                 ProductTexts::macOS().schedulerPasswordExplanation);
        QCOMPARE(rig.scripts.administratorRuns, QStringList{kScheduleTuesdayWake});
        QCOMPARE(rig.settings.pmsetRegistered(), QStringList{kTuesdayWake});
        QCOMPARE(rig.store.stringArrayValue(QStringLiteral("pmsetRegistered")),
                 QStringList{kTuesdayWake});

        rig.sync();
        QCOMPARE(rig.scripts.administratorRuns.size(), 1);
        QVERIFY(rig.scripts.plainRuns.isEmpty());

        // Tuesday 07:30 has passed: the next one is a week later, out of reach; the old one goes.
        rig.clock.setNow(QDateTime(QDate(2026, 11, 17), QTime(8, 0)));
        rig.sync();
        QCOMPARE(rig.alerts.shown.size(), 1);
        QCOMPARE(rig.scripts.administratorRuns.last(),
                 QStringLiteral("/usr/bin/pmset schedule cancel wake '11/17/26 07:30:00' || true"));
        QVERIFY(rig.settings.pmsetRegistered().isEmpty());
    }

    void cancelledOrFailedRunKeepsTheRegisteredEvents_data() {
        QTest::addColumn<int>("button");
        QTest::addColumn<ScriptOutcome>("outcome");
        QTest::addColumn<QString>("logged");
        QTest::addColumn<bool>("onLinux");
        QTest::newRow("explanation cancelled")
            << 1 << ScriptOutcome::success() << QString() << false;
        QTest::newRow("password prompt cancelled")
            << 0 << ScriptOutcome::failure(-128, QStringLiteral("User canceled."))
            << QStringLiteral("Vantle: pmset sync failed: User canceled. (-128)") << false;
        QTest::newRow("script failed")
            << 0 << ScriptOutcome::failure(1, std::nullopt)
            << QStringLiteral("Vantle: pmset sync failed: no message (1)") << false;
        QTest::newRow("Linux names its own scheduler")
            << 0 << ScriptOutcome::failure(127, QStringLiteral("Not authorized"))
            << QStringLiteral("Vantle: vantle-power sync failed: Not authorized (127)") << true;
    }
    void cancelledOrFailedRunKeepsTheRegisteredEvents() {
        QFETCH(int, button);
        QFETCH(ScriptOutcome, outcome);
        QFETCH(QString, logged);
        QFETCH(bool, onLinux);
        InlineRig rig({schedule(Action::poweron, {Weekday::wednesday}, 6, 0)}, onLinux);
        rig.settings.setPmsetRegistered({kTuesdayWake});
        rig.alerts.answer = answer(button);
        rig.scripts.administratorOutcome = outcome;
        rig.sync();
        QCOMPARE(rig.scripts.administratorRuns.size(), button == 0 ? 1 : 0);
        QCOMPARE(rig.settings.pmsetRegistered(), QStringList{kTuesdayWake});
        QCOMPARE(rig.log.lines, logged.isEmpty() ? QStringList{} : QStringList{logged});
        QVERIFY(!rig.pmset.syncInFlight());
    }

    // With the rule in place every command goes through sudo -n in one plain script.
    void passwordlessPath() {
        InlineRig rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.settings.setPmsetAlwaysAllow(true);
        rig.settings.setPmsetRegistered(
            {QStringLiteral("wake|"), QStringLiteral("restart|11/16/26 03:00:00")});
        rig.scripts.existingFiles.insert(kRule);
        rig.sync();
        QVERIFY(rig.alerts.shown.isEmpty());
        QVERIFY(rig.scripts.administratorRuns.isEmpty());
        QCOMPARE(
            rig.scripts.plainRuns,
            QStringList{
                QStringLiteral(
                    "/usr/bin/sudo -n /usr/bin/pmset schedule cancel restart '11/16/26 03:00:00' "
                    "|| true; /usr/bin/sudo -n ") +
                kScheduleTuesdayWake});
        QCOMPARE(rig.settings.pmsetRegistered(), QStringList{kTuesdayWake});
        QVERIFY(rig.settings.pmsetAlwaysAllow());

        rig.clock.setNow(QDateTime(QDate(2026, 11, 17), QTime(8, 0)));
        rig.scripts.plainOutcome = [](const QString&) {
            return ScriptOutcome::failure(1, QStringLiteral("sudo: a password is required"));
        };
        rig.sync();
        QCOMPARE(rig.settings.pmsetRegistered(), QStringList{kTuesdayWake});
        QCOMPARE(rig.log.lines,
                 QStringList{QStringLiteral(
                     "Vantle: pmset sync failed: sudo: a password is required (1)")});
    }

    // Who turns Always Allow on or off at the end of a run, including the kept quirk: a run
    // that begins without the rule and installs it ends with the setting off.
    void alwaysAllowFollowsTheRule_data() {
        QTest::addColumn<bool>("settingBefore");
        QTest::addColumn<bool>("ruleBefore");
        QTest::addColumn<bool>("tickBox");
        QTest::addColumn<bool>("settingAfter");
        QTest::addColumn<bool>("loggedGone");
        QTest::newRow("on, rule gone: password path, turned off")
            << true << false << false << false << true;
        QTest::newRow("off, no rule, box ticked: installed, yet ends off")
            << false << false << true << false << true;
        QTest::newRow("off, rule present, box ticked: turned on")
            << false << true << true << true << false;
        QTest::newRow("off, no rule, box not ticked: stays off")
            << false << false << false << false << false;
    }
    void alwaysAllowFollowsTheRule() {
        QFETCH(bool, settingBefore);
        QFETCH(bool, ruleBefore);
        QFETCH(bool, tickBox);
        QFETCH(bool, settingAfter);
        QFETCH(bool, loggedGone);
        InlineRig rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.settings.setPmsetAlwaysAllow(settingBefore);
        if (ruleBefore) {
            rig.scripts.existingFiles.insert(kRule);
        }
        rig.scripts.filesCreatedByAdministrator.insert(kRule);
        rig.alerts.answer = answer(0, tickBox);
        rig.sync();
        QCOMPARE(rig.scripts.administratorRuns.size(), 1);
        const QString body = rig.scripts.administratorRuns.first();
        QCOMPARE(body.startsWith(QStringLiteral("tmp=$(mktemp /tmp/vantle-pmset.XXXXXX)\n")),
                 tickBox);
        QVERIFY(body.endsWith(QLatin1Char('\n') + kScheduleTuesdayWake) || !tickBox);
        QCOMPARE(rig.settings.pmsetAlwaysAllow(), settingAfter);
        QCOMPARE(rig.log.count(QStringLiteral(
                     "Vantle: Always Allow was on but /etc/sudoers.d/vantle-pmset is gone; "
                     "turning it off")),
                 loggedGone ? 1 : 0);
    }

    // Events left by an earlier installation are read once and cancelled with the rest.
    void adoptsTheSchedulersEventsOnce() {
        InlineRig rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.store.removeObject(QStringLiteral("didAdoptPmsetEntries"));
        rig.scripts.plainOutcome = [](const QString& script) {
            return script == kListing
                       ? ScriptOutcome::success(QStringLiteral(
                             " [0]  poweron at 11/20/2026 06:00:00 by 'pmset'\n"
                             " [1]  wake at 11/17/2026 07:30:00 by 'someone else'\n"))
                       : ScriptOutcome::success();
        };
        rig.alerts.answer = answer(1);
        rig.sync();
        QVERIFY(rig.store.boolValue(QStringLiteral("didAdoptPmsetEntries")));
        QCOMPARE(rig.scripts.plainRuns, QStringList{kListing});
        // Cancelled prompt: the adopted event is kept, so a later run still cancels it.
        QCOMPARE(rig.settings.pmsetRegistered(),
                 QStringList{QStringLiteral("poweron|11/20/26 06:00:00")});

        rig.alerts.answer = answer(0);
        rig.runner.pmsetPasswordExplanation();
        rig.sync();
        QCOMPARE(rig.scripts.plainRuns.size(), 1);
        QCOMPARE(rig.scripts.administratorRuns,
                 QStringList{
                     QStringLiteral(
                         "/usr/bin/pmset schedule cancel poweron '11/20/26 06:00:00' || true; ") +
                     kScheduleTuesdayWake});
    }

    void noAdoptionWhenEventsAreAlreadyRegistered() {
        InlineRig rig;
        rig.store.removeObject(QStringLiteral("didAdoptPmsetEntries"));
        rig.settings.setPmsetRegistered({kTuesdayWake});
        rig.alerts.answer = answer(0);
        rig.sync();
        QVERIFY(!rig.scripts.plainRuns.contains(kListing));
        QVERIFY(rig.store.boolValue(QStringLiteral("didAdoptPmsetEntries")));
        QVERIFY(rig.settings.pmsetRegistered().isEmpty());
    }

    // Any number of requests during a run collapse into exactly one more run, which sees the
    // schedules as they are by then.
    void requestsDuringARunCollapseIntoOne() {
        Rig<ManualExecutor> rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.alerts.answer = answer(0);
        rig.sync();
        QVERIFY(rig.pmset.syncInFlight());
        rig.sync();
        QVERIFY(rig.pmset.resyncRequested());
        rig.settings.setShutdownSchedules({schedule(Action::restart, {Weekday::tuesday}, 3, 0)});
        rig.sync();
        QCOMPARE(rig.executor.pending.size(), 1);

        QVERIFY(rig.executor.runNext());
        QVERIFY(rig.pmset.syncInFlight());
        QVERIFY(!rig.pmset.resyncRequested());
        QVERIFY(rig.executor.runNext());
        QVERIFY(!rig.executor.runNext());
        QVERIFY(!rig.pmset.syncInFlight());
        QCOMPARE(rig.scripts.administratorRuns,
                 (QStringList{kScheduleTuesdayWake,
                              QStringLiteral("/usr/bin/pmset schedule cancel wake '11/17/26 "
                                             "07:30:00' || true; /usr/bin/pmset schedule restart "
                                             "'11/17/26 03:00:00'")}));
    }

    // A result arriving after the sync is gone changes nothing.
    void resultForAGoneSyncIsDropped() {
        ManualClock clock;
        MemoryDefaultsStore store;
        FakeBundleInfo bundle;
        AppSettings settings{store, bundle, clock, ProductTexts::macOS()};
        settings.setShutdownSchedules({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        ManualExecutor executor;
        FakeScriptRunner scripts;
        FakeAlerts alerts;
        PrivilegedRunner runner{scripts, alerts, PowerSchedulerTool::macOS(), ProductTexts::macOS(),
                                QStringLiteral("ada")};
        auto pmset = std::make_unique<PmsetSync>(clock, executor, scripts, runner, store);
        pmset->sync(&settings);
        pmset.reset();
        QVERIFY(executor.runNext());
        QVERIFY(alerts.shown.isEmpty());
        QVERIFY(settings.pmsetRegistered().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestPmsetSync)
#include "tst_pmsetsync.moc"
