#pragma once

#include "model/ShutdownSchedule.h"

#include <QString>
#include <optional>

namespace vantle {

// The AppleScript source that performs `action` through System Events; nothing for wake and
// power on, which a running app cannot perform.
std::optional<QString> powerActionScript(ShutdownSchedule::Action action);

} // namespace vantle
