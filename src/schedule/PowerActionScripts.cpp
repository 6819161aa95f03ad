#include "schedule/PowerActionScripts.h"

namespace vantle {

std::optional<QString> powerActionScript(ShutdownSchedule::Action action) {
    switch (action) {
    case ShutdownSchedule::Action::sleep:
        return QStringLiteral("tell application \"System Events\" to sleep");
    case ShutdownSchedule::Action::shutdown:
        return QStringLiteral("tell application \"System Events\" to shut down");
    case ShutdownSchedule::Action::restart:
        return QStringLiteral("tell application \"System Events\" to restart");
    case ShutdownSchedule::Action::wake:
    case ShutdownSchedule::Action::poweron:
        break;
    }
    return std::nullopt;
}

} // namespace vantle
