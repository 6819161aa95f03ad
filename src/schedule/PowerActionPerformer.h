#pragma once

#include "model/ShutdownSchedule.h"
#include "platform/RunningApplication.h"

#include <QList>

namespace vantle {

class PowerActions;

// Performs a scheduled or commanded action once its warning is over. Wake and power on are left
// to the system's power scheduler, so they do nothing here. Quitting apps before a restart or
// shut down is the caller's job; `askedToQuit` are the apps it asked. Main thread.
void performPowerAction(ShutdownSchedule::Action action, PowerActions& actions,
                        const QList<RunningApplicationRef>& askedToQuit = {});

} // namespace vantle
