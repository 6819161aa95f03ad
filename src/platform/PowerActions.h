#pragma once

#include "platform/RunningApplication.h"

#include <QList>

namespace vantle {

// Asks the system to sleep, restart or shut down. Every request is asynchronous: it returns at
// once and the machine goes down (or not) later. Failures, refusals and a platform without the
// facility are silent to the user; the reason goes to the log.
class PowerActions {
public:
    virtual ~PowerActions() = default;

    virtual void sleep() = 0;
    // Restart and shut down never destroy unsaved work: when the desktop cannot save or ask on the
    // user's behalf and any of `askedToQuit` (the apps asked to quit just before) still runs,
    // nothing happens.
    virtual void restart(const QList<RunningApplicationRef>& askedToQuit) = 0;
    virtual void shutDown(const QList<RunningApplicationRef>& askedToQuit) = 0;
};

} // namespace vantle
