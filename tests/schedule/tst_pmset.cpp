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
#include "platform/PowerSchedulerTool.h"
#include "platform/linux/QtAlerts.h"
#include "platform/linux/ShellScriptRunner.h"
#include "schedule/PmsetCommands.h"
#include "schedule/PmsetSync.h"
#include "schedule/PrivilegedRunner.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <memory>

using namespace vantle;
using namespace Qt::StringLiterals;
using Action = ShutdownSchedule::Action;
using Weekday = ShutdownSchedule::Weekday;

namespace {

std::set<Weekday> everyDay() {
    return {ShutdownSchedule::allWeekdays.begin(), ShutdownSchedule::allWeekdays.end()};
}

// Ids aside, so events made by the code compare with ones the test writes.
QList<ShutdownSchedule> withoutIds(QList<ShutdownSchedule> list) {
    for (ShutdownSchedule& s : list) {
        s.id = QUuid();
    }
    return list;
}

const QString kRule = u"/etc/sudoers.d/vantle-pmset"_s;
const QString kTuesdayWake = u"wake|11/17/26 07:30:00"_s;
const QString kScheduleTuesdayWake = u"/usr/bin/pmset schedule wake '11/17/26 07:30:00'"_s;
const QString kListing = u"/usr/bin/pmset -g sched"_s;

// The privileged runner over fake scripts and alerts, for a user the rule can name.
struct RunnerRig {
    explicit RunnerRig(QString user = u"ada"_s,
                       PowerSchedulerTool tool = PowerSchedulerTool::macOS(),
                       const ProductTexts& productTexts = ProductTexts::macOS())
        : texts(productTexts)
        , runner(scripts, alerts, std::move(tool), texts, std::move(user)) {}
    const ProductTexts& texts;
    FakeScriptRunner scripts;
    FakeAlerts alerts;
    PrivilegedRunner runner;
    LogCapture log;
};

// Monday 2026-11-16 09:00, macOS command lines (or Linux ones).
template <typename ExecutorType>
struct Rig : RunnerRig {
    explicit Rig(QList<ShutdownSchedule> schedules = {}, bool linux = false)
        : RunnerRig(u"ada"_s,
                    linux ? PowerSchedulerTool::linuxTool(u"/usr/libexec"_s)
                          : PowerSchedulerTool::macOS(),
                    linux ? ProductTexts::linuxDesktop() : ProductTexts::macOS()) {
        settings.setShutdownSchedules(std::move(schedules));
        store.setObject(u"didAdoptPmsetEntries"_s, true);
    }
    void sync() { pmset->sync(&settings); }

    ManualClock clock;
    MemoryDefaultsStore store;
    FakeBundleInfo bundle;
    AppSettings settings{store, bundle, clock, texts};
    ExecutorType executor;
    std::unique_ptr<PmsetSync> pmset =
        std::make_unique<PmsetSync>(clock, executor, scripts, runner, store);
};
using InlineRig = Rig<InlineExecutor>;

// Always Allow before and after a run, the rule file before it, and the box ticked in between.
struct AllowCase {
    bool settingBefore = false, ruleBefore = false, tickBox = false, settingAfter = false,
         loggedGone = false;
};

// The Linux tool description around a binary root surely owns on any machine.
PowerSchedulerTool rootOwnedLinuxTool() {
    PowerSchedulerTool tool = PowerSchedulerTool::linuxTool(u"/usr/bin"_s);
    tool.path = u"/usr/bin/true"_s;
    return tool;
}

// Writes `name` (its folders too) under `dir`; its path, or nothing when it could not.
QString writeExecutable(const QTemporaryDir& dir, const QString& name, const QByteArray& text) {
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).absolutePath()) || !file.open(QIODevice::WriteOnly) ||
        file.write(text) != text.size()) {
        return {};
    }
    file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
    return path;
}

// What a script the test ran wrote, or "<missing>".
QString readText(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : u"<missing>"_s;
}

// Stands in for pkexec: records what it was asked to run (the script of /bin/sh
// -c, or the whole direct command line), and ends as $FAKE_PKEXEC_EXIT says
// (running it when that is 0).
QString writeFakePkexec(const QTemporaryDir& dir) {
    return writeExecutable(dir, u"pkexec"_s,
                           "#!/bin/sh\n"
                           "if [ \"$1\" = /bin/sh ]; then\n"
                           "  [ \"$2\" = -c ] || exit 99\n"
                           "  printf '%s' \"$3\" > \"$(dirname \"$0\")/script\"\n"
                           "else\n"
                           "  printf '%s\\n' \"$@\" > \"$(dirname \"$0\")/direct\"\n"
                           "fi\n"
                           "case \"$FAKE_PKEXEC_EXIT\" in\n"
                           "  0) exec \"$@\" ;;\n"
                           "  126) exit 126 ;;\n"
                           "  *) echo 'Error executing command as another user: Not authorized' "
                           ">&2; exit 1 ;;\n"
                           "esac\n");
}
} // namespace

// The power scheduler's command lines, the sync that runs them, and the privileged runner it runs
// them with: over fake scripts and alerts, then the Linux script runner and alerts for real, with
// a pkexec that stands in for polkit's.
class TestPmset : public QObject {
    Q_OBJECT

private slots:
    // Scheduler events in list order, then a wake five minutes before every shut down, moved to
    // the day before when the shut down is just after midnight.
    void eventListAddsWakesBeforeShutDowns() {
        const QList<ShutdownSchedule> schedules{
            schedule(Action::shutdown, {Weekday::sunday}, 0, 3),
            schedule(Action::wake, {Weekday::monday}, 7, 30),
            schedule(Action::sleep, {Weekday::monday}, 23, 0),
            schedule(Action::shutdown, {Weekday::monday, Weekday::friday}, 22, 5),
            schedule(Action::restart, {Weekday::tuesday}, 3, 0, /*enabled=*/false),
            schedule(Action::shutdown, {Weekday::monday, Weekday::sunday}, 0, 0),
            schedule(Action::poweron, {Weekday::saturday}, 6, 0),
        };
        const QList<ShutdownSchedule> events = schedulerEventList(schedules);
        QCOMPARE(
            withoutIds(events),
            withoutIds({schedule(Action::wake, {Weekday::monday}, 7, 30),
                        schedule(Action::poweron, {Weekday::saturday}, 6, 0),
                        schedule(Action::wake, {Weekday::saturday}, 23, 58),
                        schedule(Action::wake, {Weekday::monday, Weekday::friday}, 22, 0),
                        schedule(Action::wake, {Weekday::sunday, Weekday::saturday}, 23, 55)}));
        QVERIFY(events[2].id != schedules[0].id);
    }

    void nextOccurrenceMoreThanAMinuteAhead_data() {
        QTest::addColumn<ShutdownSchedule>("event");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<QStringList>("keys");

        QTest::newRow("30 s ahead is too close: the next day")
            << schedule(Action::wake, everyDay(), 7, 30) << monday(7, 29, 30)
            << QStringList{u"wake|11/17/26 07:30:00"_s};
        QTest::newRow("61 s ahead is taken")
            << schedule(Action::wake, everyDay(), 7, 30) << monday(7, 28, 59)
            << QStringList{u"wake|11/16/26 07:30:00"_s};
        QTest::newRow("exactly 60 s ahead is too close")
            << schedule(Action::restart, {Weekday::monday, Weekday::wednesday}, 7, 30)
            << monday(7, 29) << QStringList{u"restart|11/18/26 07:30:00"_s};
        QTest::newRow("only day is today, already past: a week later is out of reach")
            << schedule(Action::poweron, {Weekday::monday}, 6, 0) << monday(9, 0) << QStringList{};
        QTest::newRow("no days") << schedule(Action::wake, {}, 6, 0) << monday(5, 0)
                                 << QStringList{};
        QTest::newRow("across the year end") << schedule(Action::poweron, {Weekday::friday}, 8, 5)
                                             << QDateTime(QDate(2026, 12, 31), QTime(23, 0))
                                             << QStringList{u"poweron|01/01/27 08:05:00"_s};
    }
    void nextOccurrenceMoreThanAMinuteAhead() {
        QFETCH(ShutdownSchedule, event);
        QFETCH(QDateTime, now);
        QFETCH(QStringList, keys);
        QCOMPARE(desiredSchedulerCommands({event}, now, PowerSchedulerTool::macOS()).keys, keys);
    }

    // Both platforms' command lines come from the same code; equal events give one command.
    void commandLinesForEachPlatform() {
        const QList<ShutdownSchedule> events{schedule(Action::wake, {Weekday::tuesday}, 7, 30),
                                             schedule(Action::wake, everyDay(), 7, 30),
                                             schedule(Action::restart, {Weekday::tuesday}, 3, 0)};
        const SchedulerCommands mac =
            desiredSchedulerCommands(events, monday(9, 0), PowerSchedulerTool::macOS());
        QCOMPARE(mac.commands,
                 (QStringList{u"/usr/bin/pmset schedule wake '11/17/26 07:30:00'"_s,
                              u"/usr/bin/pmset schedule restart '11/17/26 03:00:00'"_s}));
        QCOMPARE(mac.keys,
                 (QStringList{u"wake|11/17/26 07:30:00"_s, u"restart|11/17/26 03:00:00"_s}));

        const SchedulerCommands linux = desiredSchedulerCommands(
            events, monday(9, 0), PowerSchedulerTool::linuxTool(u"/opt/vantle"_s));
        QCOMPARE(linux.commands.first(),
                 u"/opt/vantle/vantle-power schedule wake '11/17/26 07:30:00'"_s);
        QCOMPARE(linux.keys, mac.keys);
    }

    // Malformed keys are dropped; an install folder with a space or a quote is one shell word.
    void cancelCommandsDropMalformedKeys() {
        const QStringList malformed{u"wake|"_s, u"|11/17/26 07:30:00"_s, u"poweron"_s, u"a|b|c"_s};
        const QStringList keys = QStringList{u"wake|11/17/26 07:30:00"_s}
                                 << malformed << u"poweron|11/20/26 06:00:00"_s;
        const QString cancel = u"'/home/o'\\''neil/My Apps/vantle-power' schedule cancel "_s;
        QCOMPARE(
            cancelSchedulerCommands(keys, PowerSchedulerTool::linuxTool(u"/home/o'neil/My Apps"_s)),
            (QStringList{cancel + u"wake '11/17/26 07:30:00' || true"_s,
                         cancel + u"poweron '11/20/26 06:00:00' || true"_s}));
    }

    void listingKeepsOnlyOurEvents_data() {
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("marker");
        QTest::addColumn<QStringList>("keys");

        const QString macListing =
            u"Scheduled power events:\n"
            u" [0]  wake at 11/17/2026 07:30:00 by 'pmset'\n"
            u" [1]  wakepoweron at 11/18/2026 05:59:30 by 'com.example.alarms'\n"
            u" [2]  restart at 11/18/2026 03:00:00 by 'pmset'\n"
            u" [3]  poweron at 01/02/2027 06:00:00 by 'pmset'\n"
            u" [4]  sleep at 11/19/2026 23:00:00 by 'pmset'\n"
            u" [5]  wake at 11/17/2026 07:30:00 by 'pmset'\n"
            u"Repeating power events:\n"
            u"  wakepoweron at 8:00AM weekdays only\n"_s;
        QTest::newRow("macOS, with foreign, unknown and repeated lines")
            << macListing << u"by 'pmset'"_s
            << QStringList{u"wake|11/17/26 07:30:00"_s, u"restart|11/18/26 03:00:00"_s,
                           u"poweron|01/02/27 06:00:00"_s, u"wake|11/17/26 07:30:00"_s};
        QTest::newRow("another marker sees none of them")
            << macListing << u"by 'vantle'"_s << QStringList{};
        QTest::newRow("Linux tool")
            << u"Scheduled power events:\r\n"
               u" [0]  poweron at 11/18/2026 06:00:00 by 'vantle'\n"_s
            << u"by 'vantle'"_s << QStringList{u"poweron|11/18/26 06:00:00"_s};
        QTest::newRow("two-digit year is not our pattern")
            << u" [0]  wake at 11/17/26 07:30:00 by 'pmset'"_s << u"by 'pmset'"_s << QStringList{};
        QTest::newRow("empty output") << QString() << u"by 'pmset'"_s << QStringList{};
    }
    void listingKeepsOnlyOurEvents() {
        QFETCH(QString, output);
        QFETCH(QString, marker);
        QFETCH(QStringList, keys);
        QCOMPARE(parseSchedulerListing(output, marker), keys);
    }

    // The first sync asks for the password once per launch, registers and remembers the events;
    // an unchanged sync later runs nothing; a changed one cancels the old event and asks only the
    // system's prompt.
    void administratorPathRegistersAndRemembers() {
        InlineRig rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.alerts.answer = {.button = 0};
        rig.sync();
        QCOMPARE(rig.alerts.shown.size(), 1);
        QCOMPARE(rig.scripts.administratorRuns, QStringList{kScheduleTuesdayWake});
        QCOMPARE(rig.settings.pmsetRegistered(), QStringList{kTuesdayWake});

        rig.sync();
        QCOMPARE(rig.scripts.administratorRuns.size(), 1);
        QVERIFY(rig.scripts.plainRuns.isEmpty());
        QCOMPARE(rig.settings.pmsetRegistered(), QStringList{kTuesdayWake});

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
        rig.alerts.answer = {.button = button};
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
        QTest::addColumn<AllowCase>("c");
        QTest::newRow("on, rule gone: password path, turned off")
            << AllowCase{.settingBefore = true, .loggedGone = true};
        QTest::newRow("off, no rule, box ticked: installed, yet ends off")
            << AllowCase{.tickBox = true, .loggedGone = true};
        QTest::newRow("off, rule present, box ticked: turned on")
            << AllowCase{.ruleBefore = true, .tickBox = true, .settingAfter = true};
        QTest::newRow("off, no rule, box not ticked: stays off") << AllowCase{};
    }
    void alwaysAllowFollowsTheRule() {
        QFETCH(AllowCase, c);
        const auto [settingBefore, ruleBefore, tickBox, settingAfter, loggedGone] = c;
        InlineRig rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.settings.setPmsetAlwaysAllow(settingBefore);
        if (ruleBefore) {
            rig.scripts.existingFiles.insert(kRule);
        }
        rig.scripts.filesCreatedByAdministrator.insert(kRule);
        rig.alerts.answer = {.button = 0, .checkBoxChecked = tickBox};
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
        rig.alerts.answer = {.button = 1};
        rig.sync();
        QVERIFY(rig.store.boolValue(u"didAdoptPmsetEntries"_s));
        QCOMPARE(rig.scripts.plainRuns, QStringList{kListing});
        // Cancelled prompt: the adopted event is kept, so a later run still cancels it.
        QCOMPARE(rig.settings.pmsetRegistered(), QStringList{u"poweron|11/20/26 06:00:00"_s});

        rig.alerts.answer = {.button = 0};
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
        rig.alerts.answer = {.button = 0};
        rig.sync();
        QVERIFY(!rig.scripts.plainRuns.contains(kListing));
        QVERIFY(rig.store.boolValue(u"didAdoptPmsetEntries"_s));
        QVERIFY(rig.settings.pmsetRegistered().isEmpty());
    }

    // Any number of requests during a run collapse into exactly one more run, which sees the
    // schedules as they are by then.
    void requestsDuringARunCollapseIntoOne() {
        Rig<ManualExecutor> rig({schedule(Action::wake, {Weekday::tuesday}, 7, 30)});
        rig.alerts.answer = {.button = 0};
        rig.sync();
        rig.sync();
        rig.settings.setShutdownSchedules({schedule(Action::restart, {Weekday::tuesday}, 3, 0)});
        rig.sync();
        QVERIFY(rig.executor.runNext());
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

    void quotingForShellScripts() {
        QCOMPARE(doShellScriptSource(u"echo \"a\\b\""_s, true),
                 u"do shell script \"echo \\\"a\\\\b\\\"\" with administrator "
                 u"privileges"_s);
        QCOMPARE(doShellScriptSource(u"/usr/bin/pmset -g sched"_s, false),
                 u"do shell script \"/usr/bin/pmset -g sched\""_s);
    }

    void runPrivilegedReportsHowTheRunEnded_data() {
        QTest::addColumn<ScriptOutcome>("outcome");
        QTest::addColumn<bool>("result");
        QTest::addColumn<QString>("logged");
        QTest::newRow("success") << ScriptOutcome::success() << true << QString();
        ScriptOutcome notCreated;
        notCreated.status = ScriptOutcome::Status::notCreated;
        QTest::newRow("script not created") << notCreated << true << QString();
        // Cancelled and failed runs are logged as the pkexec cases below show.
        QTest::newRow("failed without a message")
            << ScriptOutcome::failure(5, std::nullopt) << false
            << u"Vantle: privileged action failed (5): no message — script was: "
               u"echo \"a\\b\""_s;
    }
    void runPrivilegedReportsHowTheRunEnded() {
        QFETCH(ScriptOutcome, outcome);
        QFETCH(bool, result);
        QFETCH(QString, logged);
        RunnerRig rig;
        rig.scripts.administratorOutcome = outcome;
        QCOMPARE(rig.runner.runPrivileged(u"echo \"a\\b\""_s), result);
        QCOMPARE(rig.scripts.administratorRuns, QStringList{u"echo \"a\\b\""_s});
        QCOMPARE(rig.log.lines, logged.isEmpty() ? QStringList{} : QStringList{logged});
    }

    // Shown once per launch, whatever the answer; the check box turns "continue" into "always".
    void explanationBeforeTheSchedulersPrompt() {
        RunnerRig rig;
        rig.alerts.answer = {.button = 0, .checkBoxChecked = true};
        QCOMPARE(rig.runner.pmsetPasswordExplanation(),
                 PrivilegedRunner::PasswordChoice::continueAlwaysAllow);
        QCOMPARE(rig.alerts.activations, 1);
        const AlertRequest& shown = rig.alerts.shown.first();
        QCOMPARE(shown.messageText, u"Vantle needs your administrator password"_s);
        QCOMPARE(shown.informativeText,
                 u"Vantle is handing your Wake and Power On times to the Mac's "
                 u"built-in power scheduler (pmset). Only an administrator is "
                 u"allowed to change it, so macOS will ask for your password next."_s);
        QCOMPARE(shown.buttons, (QStringList{u"Continue"_s, u"Cancel"_s}));
        QCOMPARE(shown.checkBoxTitle, u"Always allow — don't ask for my password again"_s);
        QCOMPARE(shown.checkBoxToolTip,
                 u"Adds a rule letting Vantle run /usr/bin/pmset without a password. "
                 u"It grants no other access, and turning Always Allow off in "
                 u"Settings removes it."_s);

        rig.alerts.answer = {.button = 1, .checkBoxChecked = false};
        QCOMPARE(rig.runner.pmsetPasswordExplanation(),
                 PrivilegedRunner::PasswordChoice::continueOnce);
        QCOMPARE(rig.alerts.shown.size(), 1);

        RunnerRig other;
        other.alerts.answer = {.button = 1, .checkBoxChecked = true};
        QCOMPARE(other.runner.pmsetPasswordExplanation(), PrivilegedRunner::PasswordChoice::cancel);
        other.alerts.answer = {.button = 0, .checkBoxChecked = false};
        QCOMPARE(other.runner.pmsetPasswordExplanation(),
                 PrivilegedRunner::PasswordChoice::continueOnce);
    }

    void userNamesTheRuleCanHold_data() {
        QTest::addColumn<QString>("user");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("letters, digits, dot, hyphen, underscore") << u"john.doe-2_x"_s << true;
        QTest::newRow("letters of other scripts") << u"jürgen"_s << true;
        QTest::newRow("space") << u"john doe"_s << false;
        QTest::newRow("apostrophe") << u"o'neil"_s << false;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("shell") << u"a$(id)"_s << false;
        QTest::newRow("newline") << u"ada\nALL"_s << false;
    }
    void userNamesTheRuleCanHold() {
        QFETCH(QString, user);
        QFETCH(bool, accepted);
        RunnerRig rig(user);
        QCOMPARE(rig.runner.alwaysAllowInstallScript().has_value(), accepted);
        // No script, no question and no prompt.
        if (!accepted) {
            QVERIFY(!rig.runner.installAlwaysAllowRule());
            QVERIFY(rig.alerts.shown.isEmpty());
            QVERIFY(rig.scripts.administratorRuns.isEmpty());
        }
    }

    void installScriptForEachPlatform() {
        RunnerRig mac(u"ada"_s);
        QCOMPARE(mac.runner.alwaysAllowInstallScript(),
                 u"tmp=$(mktemp /tmp/vantle-pmset.XXXXXX)\n"
                 u"printf '%s\\n' 'ada ALL=(ALL) NOPASSWD: /usr/bin/pmset' > \"$tmp\"\n"
                 u"if /usr/sbin/visudo -cf \"$tmp\" >/dev/null 2>&1; then install -m 440 -o root "
                 u"-g wheel \"$tmp\" /etc/sudoers.d/vantle-pmset; fi\n"
                 u"rm -f \"$tmp\""_s);
        RunnerRig linux(u"ada"_s, rootOwnedLinuxTool(), ProductTexts::linuxDesktop());
        // Its rule and script are checked against the real visudo below.
        linux.alerts.answer = {.button = 0};
        QVERIFY(linux.runner.removeAlwaysAllowRule());
        QCOMPARE(linux.scripts.administratorRuns,
                 QStringList{u"rm -f /etc/sudoers.d/vantle-power"_s});
    }

    // The installed app finds the tool in libexec by a clean path, the one the rule and the polkit
    // action name; a build tree keeps it beside the app.
    void toolFoundWhereTheAppIsInstalled_data() {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("expected");
        const QString installed = u"libexec/vantle/vantle-power"_s;
        const QString beside = u"bin/vantle-power"_s;
        QTest::newRow("installed") << QStringList{installed} << u"libexec/vantle"_s;
        QTest::newRow("build tree") << QStringList{beside} << u"bin"_s;
        QTest::newRow("both") << QStringList{beside, installed} << u"libexec/vantle"_s;
        QTest::newRow("neither") << QStringList{} << u"bin"_s;
        QTest::newRow("a folder of that name") << QStringList{installed + u"/x"_s} << u"bin"_s;
    }

    void toolFoundWhereTheAppIsInstalled() {
        QFETCH(QStringList, files);
        QFETCH(QString, expected);
        QTemporaryDir prefix;
        QVERIFY(QDir(prefix.path()).mkpath(u"bin"_s));
        for (const QString& file : files) {
            QVERIFY(!writeExecutable(prefix, file, {}).isEmpty());
        }
        QCOMPARE(PowerSchedulerTool::linuxToolDirectory(prefix.filePath(u"bin"_s),
                                                        u"../libexec/vantle"_s),
                 prefix.filePath(expected));
    }

    // A rule naming a tool the user could swap would be a passwordless root shell.
    void ruleRefusedForAToolOthersCanChange() {
        QTemporaryDir dir;
        QVERIFY(!writeExecutable(dir, u"vantle-power"_s, {}).isEmpty());
        QFile::setPermissions(dir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                              QFileDevice::ExeOwner | QFileDevice::WriteGroup |
                                              QFileDevice::ExeGroup);
        RunnerRig rig(u"ada"_s, PowerSchedulerTool::linuxTool(dir.path()),
                      ProductTexts::linuxDesktop());
        QVERIFY(!rig.runner.alwaysAllowInstallScript());
        QCOMPARE(rig.log.count(u"must be owned by root and writable only by root"_s), 1);
    }

    void installAndRemoveTheRule() {
        RunnerRig rig;
        rig.alerts.answer = {.button = 1};
        QVERIFY(!rig.runner.installAlwaysAllowRule());
        QVERIFY(rig.scripts.administratorRuns.isEmpty());
        QCOMPARE(rig.alerts.shown.first().informativeText,
                 u"Vantle will add a rule letting it run /usr/bin/pmset without a "
                 u"password, so your Wake and Power On schedules can be applied "
                 u"silently from now on.\n\nThis grants no other access, and turning "
                 u"\"Always Allow\" back off removes the rule.\n\nmacOS will ask for "
                 u"your password next."_s);
        QVERIFY(!rig.alerts.shown.first().checkBoxTitle);

        // The run's own result is not trusted: only the file counts.
        rig.alerts.answer = {.button = 0};
        rig.scripts.administratorOutcome = ScriptOutcome::failure(1, u"x"_s);
        rig.scripts.existingFiles.insert(kRule);
        QVERIFY(rig.runner.installAlwaysAllowRule());
        rig.scripts.administratorOutcome = ScriptOutcome::success();
        rig.scripts.existingFiles.clear();
        QVERIFY(!rig.runner.installAlwaysAllowRule());

        // Switching off and cancelling leaves the rule alone.
        rig.scripts.administratorRuns.clear();
        rig.alerts.answer = {.button = 1};
        QVERIFY(!rig.runner.removeAlwaysAllowRule());
        QVERIFY(rig.scripts.administratorRuns.isEmpty());
        QCOMPARE(rig.alerts.shown.last().informativeText,
                 u"Vantle will remove the rule that let it change the Mac's power "
                 u"schedule without a password. Your schedules keep working — macOS "
                 u"will simply ask for your password each time they change.\n\n"
                 u"macOS will ask for your password next."_s);
        rig.alerts.answer = {.button = 0};
        QVERIFY(rig.runner.removeAlwaysAllowRule());
        QCOMPARE(rig.scripts.administratorRuns,
                 QStringList{u"rm -f /etc/sudoers.d/vantle-pmset /etc/sudoers.d/ebb-pmset"_s});
        rig.scripts.administratorOutcome = ScriptOutcome::userCancelled();
        QVERIFY(!rig.runner.removeAlwaysAllowRule());

        rig.runner.bringSettingsWindowForward();
        QCOMPARE(rig.alerts.broughtForward, QStringList{u"Vantle Settings"_s});
    }

    // The installation script run for real, with the real visudo, installing into a folder of
    // the test's own: visudo accepts the rule we write and turns down a broken one.
    void installScriptAgainstTheRealVisudo_data() {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("brokenRule");
        QTest::newRow("our rule") << u"john.doe-2_x"_s << QString();
        QTest::newRow("a broken rule installs nothing")
            << u"ada"_s << u"ada ALL=(ALL) NOPASSWD /usr/bin/true"_s;
    }
    void installScriptAgainstTheRealVisudo() {
        QFETCH(QString, user);
        QFETCH(QString, brokenRule);
        QVERIFY2(QFile::exists(u"/usr/sbin/visudo"_s),
                 "visudo is missing: scripts/dev deps installs it (Debian's sudo package)");
        QTemporaryDir dir;
        // Only `install` is replaced, so the rule lands in the test's folder, not /etc.
        QVERIFY(
            !writeExecutable(dir, u"install"_s,
                             "#!/bin/sh\necho \"$@\" > \"$OUT/args\"\ncp \"$7\" \"$OUT/rule\"\n")
                 .isEmpty());

        RunnerRig rig(user, rootOwnedLinuxTool(), ProductTexts::linuxDesktop());
        QString script = rig.runner.alwaysAllowInstallScript().value();
        if (!brokenRule.isEmpty()) {
            const QString line = u"%1 ALL=(ALL) NOPASSWD: /usr/bin/true"_s.arg(user);
            QVERIFY(script.contains(line));
            script.replace(line, brokenRule);
        }
        QProcess sh;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"PATH"_s, dir.path() + u":/usr/bin:/bin"_s);
        env.insert(u"OUT"_s, dir.path());
        sh.setProcessEnvironment(env);
        sh.start(u"/bin/sh"_s, {u"-c"_s, script});
        QVERIFY(sh.waitForFinished());
        QCOMPARE(sh.exitCode(), 0);

        const auto written = [&dir](const QString& name) { return readText(dir.filePath(name)); };
        if (!brokenRule.isEmpty()) {
            QCOMPARE(written(u"args"_s), u"<missing>"_s);
            return;
        }
        const QRegularExpressionMatch args =
            QRegularExpression(u"^-m 440 -o root -g root (/tmp/vantle-power\\.\\w+) "
                               u"/etc/sudoers\\.d/vantle-power\n$"_s)
                .match(written(u"args"_s));
        QVERIFY2(args.hasMatch(), qPrintable(written(u"args"_s)));
        QVERIFY2(!QFile::exists(args.captured(1)), "the temporary file is removed");
        QCOMPARE(written(u"rule"_s), u"john.doe-2_x ALL=(ALL) NOPASSWD: /usr/bin/true\n"_s);
    }

    void plainRuns() {
        ShellScriptRunner runner;
        const ScriptOutcome listed = runner.run(u"printf 'a \"b\"\\n'; echo $((1+1))"_s);
        QVERIFY(listed.succeeded());
        QCOMPARE(listed.output, u"a \"b\"\n2\n"_s);
        const ScriptOutcome failed = runner.run(u"echo nope >&2; exit 3"_s);
        QCOMPARE(failed.status, ScriptOutcome::Status::failed);
        QCOMPARE(failed.errorNumber, 3);
        QCOMPARE(failed.errorMessage, u"nope"_s);
        QCOMPARE(runner.run(u"exit 4"_s).description(), u"no message (4)"_s);
        QVERIFY(runner.fileExists(u"/bin/sh"_s));
        QVERIFY(!runner.fileExists(u"/nonexistent/vantle-pmset"_s));
    }

    // pkexec's own exits: 0 ran the script as root, 126 is the dismissed dialog,
    // anything else is a failure with pkexec's message; a missing pkexec fails
    // the same way.
    void administratorRunsThroughPkexec_data() {
        QTest::addColumn<QString>("exit");
        QTest::addColumn<bool>("result");
        QTest::addColumn<QString>("logged");
        QTest::newRow("0") << u"0"_s << true << QString();
        QTest::newRow("126") << u"126"_s << false
                             << u"Vantle: privileged action cancelled by the user"_s;
        QTest::newRow("1") << u"1"_s << false
                           << u"Vantle: privileged action failed (1): Error "
                              u"executing command as another user: Not authorized "
                              u"— script was: echo \"it's\" > \"$OUT\""_s;
        QTest::newRow("no pkexec") << QString() << false
                                   << u"Vantle: privileged action failed (127): "
                                      u"cannot run /nonexistent/pkexec — script "
                                      u"was: echo \"it's\" > \"$OUT\""_s;
    }
    void administratorRunsThroughPkexec() {
        QFETCH(QString, exit);
        QFETCH(bool, result);
        QFETCH(QString, logged);
        QTemporaryDir dir;
        const QString pkexec = exit.isEmpty() ? u"/nonexistent/pkexec"_s : writeFakePkexec(dir);
        qputenv("FAKE_PKEXEC_EXIT", exit.toUtf8());
        qputenv("OUT", dir.filePath(u"out"_s).toUtf8());
        ShellScriptRunner scripts(pkexec);
        FakeAlerts alerts;
        PrivilegedRunner runner(scripts, alerts, PowerSchedulerTool::linuxTool(dir.path()),
                                ProductTexts::linuxDesktop(), u"ada"_s);
        LogCapture log;
        const QString script = u"echo \"it's\" > \"$OUT\""_s;
        QCOMPARE(runner.runPrivileged(script), result);
        QCOMPARE(log.lines, logged.isEmpty() ? QStringList{} : QStringList{logged});
        if (exit.isEmpty()) {
            return;
        }
        // The script reaches the shell as one argument, unquoted and unchanged.
        QCOMPARE(readText(dir.filePath(u"script"_s)), script);
        QCOMPARE(QFile::exists(dir.filePath(u"out"_s)), result);
    }

    // Only the sync's own script, exactly as it writes it, becomes a direct call
    // of the tool.
    void directPowerToolCalls_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("call");
        const QString tool = u"/usr/local/bin/vantle-power"_s;
        const QString cancel = tool + u" schedule cancel wake '11/17/26 07:30:00' || true"_s;
        const QString wake = tool + u" schedule poweron '11/18/26 06:00:00'"_s;
        const QStringList both{
            tool,          u"apply"_s,   u"cancel"_s,           u"wake"_s, u"11/17/26 07:30:00"_s,
            u"schedule"_s, u"poweron"_s, u"11/18/26 06:00:00"_s};
        QTest::newRow("cancels then schedules") << cancel + u"; "_s + wake << both;
        const QStringList none;
        QTest::newRow("cancel without || true") << cancel.chopped(8) << none;
        QTest::newRow("schedule with || true") << wake + u" || true"_s << none;
        QTest::newRow("rule installation first") << u"rm -f \"$tmp\"\n"_s + wake << none;
        QTest::newRow("two tools")
            << u"/tmp/vantle-power schedule wake '11/18/26 06:00:00'; "_s + wake << none;
        QTest::newRow("another program")
            << u"/usr/bin/pmset schedule wake '11/18/26 06:00:00'"_s << none;
        QTest::newRow("a command after it") << wake + u"; reboot"_s << none;
        QTest::newRow("quoted path")
            << u"'/opt/my apps/vantle-power' schedule wake '11/18/26 06:00:00'"_s << none;
        QTest::newRow("empty") << QString() << none;
    }
    void directPowerToolCalls() {
        QFETCH(QString, script);
        QFETCH(QStringList, call);
        QCOMPARE(directPowerToolCall(script).value_or(QStringList{}), call);
    }

    // The direct call goes through pkexec with the tool first, so polkit can
    // match its action.
    void syncScriptRunsTheToolThroughPkexec() {
        QTemporaryDir dir;
        const QString pkexec = writeFakePkexec(dir);
        const QString tool = writeExecutable(dir, u"vantle-power"_s,
                                             "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$OUT\"\n");
        qputenv("FAKE_PKEXEC_EXIT", "0");
        qputenv("OUT", dir.filePath(u"out"_s).toUtf8());

        ShellScriptRunner runner(pkexec);
        const ScriptOutcome outcome =
            runner.runAsAdministrator(tool + u" schedule restart '11/17/26 07:30:00'"_s);
        QVERIFY(outcome.succeeded());
        QCOMPARE(readText(dir.filePath(u"direct"_s)),
                 tool + u"\napply\nschedule\nrestart\n11/17/26 07:30:00\n"_s);
        QVERIFY(!QFile::exists(dir.filePath(u"script"_s)));
        QVERIFY(QFile::exists(dir.filePath(u"out"_s)));
    }

    // The Qt alert: default Continue, Cancel on Escape, the check box with its
    // tool tip.
    void qtAlertsAnswer() {
        QtAlerts alerts;
        const AlertRequest request{.messageText = u"Title"_s,
                                   .informativeText = u"Body"_s,
                                   .buttons = {u"Continue"_s, u"Cancel"_s},
                                   .checkBoxTitle = u"Always"_s,
                                   .checkBoxToolTip = u"Tip"_s};
        auto answerWith = [](const std::function<void(QMessageBox&)>& act) {
            QTimer::singleShot(0, [act] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                QVERIFY(box);
                act(*box);
            });
        };
        answerWith([](QMessageBox& box) {
            QCOMPARE(box.text(), u"Title"_s);
            QCOMPARE(box.informativeText(), u"Body"_s);
            QCOMPARE(box.checkBox()->toolTip(), u"Tip"_s);
            box.checkBox()->setChecked(true);
            QTest::keyClick(&box, Qt::Key_Return);
        });
        AlertResponse response = alerts.runModal(request);
        QCOMPARE(response.button, 0);
        QVERIFY(response.checkBoxChecked);

        answerWith([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
        response = alerts.runModal(request);
        QCOMPARE(response.button, 1);
        QVERIFY(!response.checkBoxChecked);

        AlertRequest plain = request;
        plain.checkBoxTitle.reset();
        answerWith([](QMessageBox& box) {
            QVERIFY(!box.checkBox());
            box.buttons().constFirst()->click();
        });
        alerts.runModal(plain);
    }
};

QTEST_MAIN(TestPmset)
#include "tst_pmset.moc"
