#pragma once

#include "model/RawEnum.h"

#include <QList>

namespace vantle {

// Commands that shortcuts and menu items deliver. The first four are global (system-wide hot
// keys); the rest act only inside the app list.
enum class AppCommand {
    quitAllApps,
    sleep,
    restart,
    shutDown,
    focusSearch,
    selectAll,
    quitSelected
};

template <>
struct RawValues<AppCommand> {
    static constexpr std::array<std::pair<AppCommand, const char*>, 7> table{{
        {AppCommand::quitAllApps, "quitAllApps"},
        {AppCommand::sleep, "sleep"},
        {AppCommand::restart, "restart"},
        {AppCommand::shutDown, "shutDown"},
        {AppCommand::focusSearch, "focusSearch"},
        {AppCommand::selectAll, "selectAll"},
        {AppCommand::quitSelected, "quitSelected"},
    }};
};

constexpr int kGlobalCommandCount = 4;

constexpr bool isGlobalCommand(AppCommand command) {
    return static_cast<int>(command) < kGlobalCommandCount;
}

} // namespace vantle
