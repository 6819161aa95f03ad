#pragma once

#include "model/ShutdownSchedule.h"

#include <QDateTime>

namespace vantle {

// A schedule in one line, for tests.
inline ShutdownSchedule schedule(ShutdownSchedule::Action action,
                                 std::set<ShutdownSchedule::Weekday> days, qint64 hour,
                                 qint64 minute, bool enabled = true) {
    ShutdownSchedule s;
    s.action = action;
    s.days = std::move(days);
    s.hour = hour;
    s.minute = minute;
    s.isEnabled = enabled;
    return s;
}

// The same, on Mondays only.
inline ShutdownSchedule schedule(ShutdownSchedule::Action action, qint64 hour = 22,
                                 qint64 minute = 0) {
    return schedule(action, {ShutdownSchedule::Weekday::monday}, hour, minute);
}

// 2026-11-16 is a Monday.
inline QDateTime monday(int hour, int minute, int second = 0) {
    return QDateTime(QDate(2026, 11, 16), QTime(hour, minute, second));
}

} // namespace vantle
