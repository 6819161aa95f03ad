#pragma once

#include "model/ShutdownSchedule.h"
#include "platform/PowerSchedulerTool.h"

#include <QDateTime>
#include <QList>
#include <QStringList>

namespace vantle {

// The pure parts of handing schedules to the power scheduler: which events, which command lines,
// and reading the scheduler's listing back. A registered event is known by its key,
// "<word>|MM/dd/yy HH:mm:ss".

// The scheduler's word for an action; empty for sleep and shut down, which it does not run.
QString schedulerEventWord(ShutdownSchedule::Action action);
// The date as the scheduler's commands write it.
QString schedulerDateText(const QDateTime& date);

// The enabled wake, restart and power-on schedules, then a wake five minutes before every enabled
// shut down, so a sleeping machine is awake to carry it out.
QList<ShutdownSchedule> schedulerEventList(const QList<ShutdownSchedule>& schedules);

struct SchedulerCommands {
    QStringList commands;
    QStringList keys;
};

// One command per distinct next occurrence (more than 60 seconds after `now`, within a week).
SchedulerCommands desiredSchedulerCommands(const QList<ShutdownSchedule>& events,
                                           const QDateTime& now, const PowerSchedulerTool& tool);
// Cancels for the registered keys; malformed keys are dropped and a failed cancel never stops
// the script.
QStringList cancelSchedulerCommands(const QStringList& registeredKeys,
                                    const PowerSchedulerTool& tool);
// The keys of the events in the scheduler's listing that carry `marker`, in line order.
QStringList parseSchedulerListing(const QString& output, const QString& marker);

} // namespace vantle
