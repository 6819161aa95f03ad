#include "fakes/Schedules.h"
#include "platform/PowerSchedulerTool.h"
#include "schedule/PmsetCommands.h"

#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;
using Action = ShutdownSchedule::Action;
using Weekday = ShutdownSchedule::Weekday;

namespace {
// 2026-11-16 is a Monday.
QDateTime monday(int hour, int minute, int second = 0) {
    return QDateTime(QDate(2026, 11, 16), QTime(hour, minute, second));
}

std::set<Weekday> everyDay() {
    return {ShutdownSchedule::allWeekdays.begin(), ShutdownSchedule::allWeekdays.end()};
}

QString describe(const ShutdownSchedule& s) {
    QStringList days;
    for (const Weekday day : s.days) {
        days << QString::number(static_cast<int>(day));
    }
    return u"%1 %2:%3 [%4]"_s.arg(rawValue(s.action))
        .arg(s.hour)
        .arg(s.minute, 2, 10, QLatin1Char('0'))
        .arg(days.join(QLatin1Char(',')));
}
} // namespace

class TestPmsetCommands : public QObject {
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
        QStringList described;
        for (const ShutdownSchedule& event : schedulerEventList(schedules)) {
            described << describe(event);
        }
        QCOMPARE(described, (QStringList{
                                u"Wake 7:30 [2]"_s,
                                u"Power On 6:00 [7]"_s,
                                u"Wake 23:58 [7]"_s,
                                u"Wake 22:00 [2,6]"_s,
                                u"Wake 23:55 [1,7]"_s,
                            }));
        const QList<ShutdownSchedule> events = schedulerEventList(schedules);
        QVERIFY(events[2].isEnabled);
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
        const QList<ShutdownSchedule> events{
            schedule(Action::wake, {Weekday::tuesday}, 7, 30),
            schedule(Action::wake, everyDay(), 7, 30),
            schedule(Action::restart, {Weekday::tuesday}, 3, 0),
        };
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

        // An install folder with a space or a quote still makes one shell word.
        const QStringList odd =
            cancelSchedulerCommands({u"wake|11/17/26 07:30:00"_s},
                                    PowerSchedulerTool::linuxTool(u"/home/o'neil/My Apps"_s));
        QCOMPARE(odd, QStringList{u"'/home/o'\\''neil/My Apps/vantle-power' "
                                  u"schedule cancel wake '11/17/26 07:30:00' || true"_s});
    }

    void cancelCommandsDropMalformedKeys() {
        const QStringList keys{
            u"wake|11/17/26 07:30:00"_s,
            u"wake|"_s,
            u"|11/17/26 07:30:00"_s,
            u"poweron"_s,
            u"a|b|c"_s,
            u"poweron|11/20/26 06:00:00"_s,
        };
        QCOMPARE(
            cancelSchedulerCommands(keys, PowerSchedulerTool::macOS()),
            (QStringList{u"/usr/bin/pmset schedule cancel wake '11/17/26 07:30:00' || true"_s,
                         u"/usr/bin/pmset schedule cancel poweron '11/20/26 06:00:00' || true"_s}));
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
};

QTEST_GUILESS_MAIN(TestPmsetCommands)
#include "tst_pmsetcommands.moc"
