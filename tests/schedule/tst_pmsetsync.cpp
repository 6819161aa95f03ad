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
#include <memory>

using namespace vantle;
using namespace Qt::StringLiterals;
using Action = ShutdownSchedule::Action;
using Weekday = ShutdownSchedule::Weekday;

namespace {

const QString kRule = u"/etc/sudoers.d/vantle-pmset"_s;
const QString kTuesdayWake = u"wake|11/17/26 07:30:00"_s;
const QString kScheduleTuesdayWake = u"/usr/bin/pmset schedule wake '11/17/26 07:30:00'"_s;
const QString kListing = u"/usr/bin/pmset -g sched"_s;

AlertResponse answer(int button, bool checked = false) {
    return {.button = button, .checkBoxChecked = checked};
}

// Monday 2026-11-16 09:00, macOS command lines (or Linux ones), a user the rule can name.
template <typename ExecutorType>
struct Rig {
    explicit Rig(QList<ShutdownSchedule> schedules = {}, bool linux = false)
        : onLinux(linux) {
        settings.setShutdownSchedules(std::move(schedules));
        store.setObject(u"didAdoptPmsetEntries"_s, true);
    }
    void sync() { pmset->sync(&settings); }
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
                            onLinux ? PowerSchedulerTool::linuxTool(u"/usr/libexec"_s)
                                    : PowerSchedulerTool::macOS(),
                            texts(), u"ada"_s};
    std::unique_ptr<PmsetSync> pmset =
        std::make_unique<PmsetSync>(clock, executor, scripts, runner, store);
    LogCapture log;
};
using InlineRig = Rig<InlineExecutor>;

} // namespace

class TestPmsetSync : public QObject {
    Q_OBJECT

private slots:
    void nothingToScheduleRunsNothing() {
        InlineRig rig({schedule(Action::sleep, {Weekday::monday}, 23, 0)});
        rig.settings.setPmsetRegistered({u"stale"_s});
        rig.settings.setPmsetRegistered({});
        rig.sync();
        QVERIFY(rig.scripts.plainRuns.isEmpty());
        QVERIFY(rig.scripts.administratorRuns.isEmpty());
        QVERIFY(rig.alerts.shown.isEmpty());
        QVERIFY(rig.settings.pmsetRegistered().isEmpty());
        QVERIFY(!rig.pmset->syncInFlight());
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

        rig.sync();
        QCOMPARE(rig.scripts.administratorRuns.size(), 1);
        QVERIFY(rig.scripts.plainRuns.isEmpty());

        // Tuesday 07:30 has passed: the next one is a week later, out of reach; the old one goes.
        rig.clock.setNow(QDateTime(QDate(2026, 11, 17), QTime(8, 0)));
        rig.sync();
        QCOMPARE(rig.alerts.shown.size(), 1);
        QCOMPARE(rig.scripts.administratorRuns.last(),
                 u"/usr/bin/pmset schedule cancel wake '11/17/26 07:30:00' || true"_s);
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
            << 0 << ScriptOutcome::failure(-128, u"User canceled."_s)
            << u"Vantle: pmset sync failed: User canceled. (-128)"_s << false;
        QTest::newRow("script failed") << 0 << ScriptOutcome::failure(1, std::nullopt)
                                       << u"Vantle: pmset sync failed: no message (1)"_s << false;
        QTest::newRow("Linux names its own scheduler")
            << 0 << ScriptOutcome::failure(127, u"Not authorized"_s)
            << u"Vantle: vantle-power sync failed: Not authorized (127)"_s << true;
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
        QVERIFY(!rig.pmset->syncInFlight());
    }

    // With the rule in place every command goes through sudo -n in one plain script.
    void passwordlessPath() {
        InlineRig rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.settings.setPmsetAlwaysAllow(true);
        rig.settings.setPmsetRegistered({u"wake|"_s, u"restart|11/16/26 03:00:00"_s});
        rig.scripts.existingFiles.insert(kRule);
        rig.sync();
        QVERIFY(rig.alerts.shown.isEmpty());
        QVERIFY(rig.scripts.administratorRuns.isEmpty());
        QCOMPARE(rig.scripts.plainRuns,
                 QStringList{
                     u"/usr/bin/sudo -n /usr/bin/pmset schedule cancel restart '11/16/26 03:00:00' "
                     u"|| true; /usr/bin/sudo -n "_s +
                     kScheduleTuesdayWake});
        QCOMPARE(rig.settings.pmsetRegistered(), QStringList{kTuesdayWake});
        QVERIFY(rig.settings.pmsetAlwaysAllow());

        rig.clock.setNow(QDateTime(QDate(2026, 11, 17), QTime(8, 0)));
        rig.scripts.plainOutcome = [](const QString&) {
            return ScriptOutcome::failure(1, u"sudo: a password is required"_s);
        };
        rig.sync();
        QCOMPARE(rig.settings.pmsetRegistered(), QStringList{kTuesdayWake});
        QCOMPARE(rig.log.lines,
                 QStringList{u"Vantle: pmset sync failed: sudo: a password is required (1)"_s});
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
        QCOMPARE(body.startsWith(u"tmp=$(mktemp /tmp/vantle-pmset.XXXXXX)\n"_s), tickBox);
        QVERIFY(body.endsWith(QLatin1Char('\n') + kScheduleTuesdayWake) || !tickBox);
        QCOMPARE(rig.settings.pmsetAlwaysAllow(), settingAfter);
        QCOMPARE(
            rig.log.count(u"Vantle: Always Allow was on but /etc/sudoers.d/vantle-pmset is gone; "
                          u"turning it off"_s),
            loggedGone ? 1 : 0);
    }

    // Events left by an earlier installation are read once and cancelled with the rest.
    void adoptsTheSchedulersEventsOnce() {
        InlineRig rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.store.removeObject(u"didAdoptPmsetEntries"_s);
        rig.scripts.plainOutcome = [](const QString& script) {
            return script == kListing
                       ? ScriptOutcome::success(
                             u" [0]  poweron at 11/20/2026 06:00:00 by 'pmset'\n"
                             u" [1]  wake at 11/17/2026 07:30:00 by 'someone else'\n"_s)
                       : ScriptOutcome::success();
        };
        rig.alerts.answer = answer(1);
        rig.sync();
        QVERIFY(rig.store.boolValue(u"didAdoptPmsetEntries"_s));
        QCOMPARE(rig.scripts.plainRuns, QStringList{kListing});
        // Cancelled prompt: the adopted event is kept, so a later run still cancels it.
        QCOMPARE(rig.settings.pmsetRegistered(), QStringList{u"poweron|11/20/26 06:00:00"_s});

        rig.alerts.answer = answer(0);
        rig.runner.pmsetPasswordExplanation();
        rig.sync();
        QCOMPARE(rig.scripts.plainRuns.size(), 1);
        QCOMPARE(
            rig.scripts.administratorRuns,
            QStringList{u"/usr/bin/pmset schedule cancel poweron '11/20/26 06:00:00' || true; "_s +
                        kScheduleTuesdayWake});
    }

    void noAdoptionWhenEventsAreAlreadyRegistered() {
        InlineRig rig;
        rig.store.removeObject(u"didAdoptPmsetEntries"_s);
        rig.settings.setPmsetRegistered({kTuesdayWake});
        rig.alerts.answer = answer(0);
        rig.sync();
        QVERIFY(!rig.scripts.plainRuns.contains(kListing));
        QVERIFY(rig.store.boolValue(u"didAdoptPmsetEntries"_s));
        QVERIFY(rig.settings.pmsetRegistered().isEmpty());
    }

    // Any number of requests during a run collapse into exactly one more run, which sees the
    // schedules as they are by then.
    void requestsDuringARunCollapseIntoOne() {
        Rig<ManualExecutor> rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.alerts.answer = answer(0);
        rig.sync();
        QVERIFY(rig.pmset->syncInFlight());
        rig.sync();
        QVERIFY(rig.pmset->resyncRequested());
        rig.settings.setShutdownSchedules({schedule(Action::restart, {Weekday::tuesday}, 3, 0)});
        rig.sync();
        QCOMPARE(rig.executor.pending.size(), 1);

        QVERIFY(rig.executor.runNext());
        QVERIFY(rig.pmset->syncInFlight());
        QVERIFY(!rig.pmset->resyncRequested());
        QVERIFY(rig.executor.runNext());
        QVERIFY(!rig.executor.runNext());
        QVERIFY(!rig.pmset->syncInFlight());
        QCOMPARE(rig.scripts.administratorRuns,
                 (QStringList{kScheduleTuesdayWake,
                              u"/usr/bin/pmset schedule cancel wake '11/17/26 "
                              u"07:30:00' || true; /usr/bin/pmset schedule restart "
                              u"'11/17/26 03:00:00'"_s}));
    }

    // A result arriving after the sync is gone changes nothing.
    void resultForAGoneSyncIsDropped() {
        Rig<ManualExecutor> rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.sync();
        rig.pmset.reset();
        QVERIFY(rig.executor.runNext());
        QVERIFY(rig.alerts.shown.isEmpty());
        QVERIFY(rig.settings.pmsetRegistered().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestPmsetSync)
#include "tst_pmsetsync.moc"
