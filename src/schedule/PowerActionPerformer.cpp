#include "schedule/PowerActionPerformer.h"

#include "platform/PowerActions.h"

namespace vantle {

void performPowerAction(ShutdownSchedule::Action action, PowerActions& actions,
                        const QList<RunningApplicationRef>& askedToQuit) {
    switch (action) {
    case ShutdownSchedule::Action::sleep:
        actions.sleep();
        return;
    case ShutdownSchedule::Action::shutdown:
        actions.shutDown(askedToQuit);
        return;
    case ShutdownSchedule::Action::restart:
        actions.restart(askedToQuit);
        return;
    case ShutdownSchedule::Action::wake:
    case ShutdownSchedule::Action::poweron:
        return;
    }
}

} // namespace vantle
