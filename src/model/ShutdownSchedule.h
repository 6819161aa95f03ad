#pragma once

#include "model/RawEnum.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUuid>
#include <optional>
#include <set>

namespace vantle {

// One weekly power event.
struct ShutdownSchedule {
    enum class Action { sleep, wake, shutdown, restart, poweron };
    // Calendar weekday numbers: Sunday is 1.
    enum class Weekday { sunday = 1, monday, tuesday, wednesday, thursday, friday, saturday };

    QUuid id = QUuid::createUuid();
    bool isEnabled = true;
    Action action = Action::shutdown;
    std::set<Weekday> days;
    qint64 hour = 0;
    qint64 minute = 0;

    // Whether `date` falls on one of the schedule's days.
    bool occursOn(const QDate& date) const;
    // Why a stored record cannot be acted on (a damaged or hand-edited file may hold any hour or
    // minute); nothing when it can. The record itself keeps what was stored.
    std::optional<QString> problem() const;

    bool operator==(const ShutdownSchedule&) const = default;

    static std::optional<Weekday> weekdayFromInt(qint64 value);
    static constexpr std::array<Weekday, 7> allWeekdays{
        Weekday::sunday,   Weekday::monday, Weekday::tuesday, Weekday::wednesday,
        Weekday::thursday, Weekday::friday, Weekday::saturday};
    // The calendar weekday of `date` (QDate counts Monday as 1).
    static Weekday weekdayOf(const QDate& date);
};

// The raw values are also the names shown to the user.
template <>
struct RawValues<ShutdownSchedule::Action> {
    static constexpr std::array<std::pair<ShutdownSchedule::Action, const char*>, 5> table{{
        {ShutdownSchedule::Action::sleep, "Sleep"},
        {ShutdownSchedule::Action::wake, "Wake"},
        {ShutdownSchedule::Action::shutdown, "Shut Down"},
        {ShutdownSchedule::Action::restart, "Restart"},
        {ShutdownSchedule::Action::poweron, "Power On"},
    }};
};

// A schedule the services must not act on, and why.
struct ScheduleProblem {
    qsizetype index = 0;
    QString reason;
};
// The unusable schedules of a list, in list order. A repeated id makes every later copy
// unusable: the services tell schedules apart by id.
QList<ScheduleProblem> findScheduleProblems(const QList<ShutdownSchedule>& schedules);
// The schedules without a problem, in list order.
QList<ShutdownSchedule> usableSchedules(const QList<ShutdownSchedule>& schedules);
// "Sleep at 99:00 (id …)", naming a schedule in a log line.
QString describeSchedule(const ShutdownSchedule& schedule);

// The stored form: a JSON array of objects, keys in a fixed order, upper-case UUIDs.
QByteArray encodeShutdownSchedules(const QList<ShutdownSchedule>& schedules);
// Strict: one bad element fails the whole list.
std::optional<QList<ShutdownSchedule>> decodeShutdownSchedules(const QByteArray& json);

} // namespace vantle
