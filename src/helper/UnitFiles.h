#pragma once

#include "PowerEvent.h"
#include "Process.h"

#include <string>
#include <string_view>

namespace vantle::power {

// Stopped at shutdown, when it arms the real-time clock for the next power-on.
inline constexpr std::string_view rtcHookName = "vantle-power-rtc.service";

std::string timerUnit(const PowerEvent& event);
std::string serviceUnit(const PowerEvent& event, const Programs& programs);
std::string rtcHookUnit(const Programs& programs);

} // namespace vantle::power
