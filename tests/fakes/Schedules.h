#pragma once

#include "model/ShutdownSchedule.h"

namespace vantle {

// A schedule in one line, for tests.
inline ShutdownSchedule schedule(ShutdownSchedule::Action action,
                                 std::set<ShutdownSchedule::Weekday> days, int hour, int minute,
                                 bool enabled = true) {
    ShutdownSchedule s;
    s.action = action;
    s.days = std::move(days);
    s.hour = hour;
    s.minute = minute;
    s.isEnabled = enabled;
    return s;
}

} // namespace vantle
