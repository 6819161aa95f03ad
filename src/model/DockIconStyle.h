#pragma once

#include "model/RawEnum.h"

namespace vantle {

// Which Dock icon macOS shows: following the system's appearance, or always one of the two.
enum class DockIconStyle { automatic, light, dark };

template <>
struct RawValues<DockIconStyle> {
    static constexpr std::array<std::pair<DockIconStyle, const char*>, 3> table{{
        {DockIconStyle::automatic, "auto"},
        {DockIconStyle::light, "light"},
        {DockIconStyle::dark, "dark"},
    }};
};

} // namespace vantle
