#pragma once

#include "model/RawEnum.h"

namespace vantle {

// How a pending automatic action is announced.
enum class QuitWarningStyle { notification, window, never };

template <>
struct RawValues<QuitWarningStyle> {
    static constexpr std::array<std::pair<QuitWarningStyle, const char*>, 3> table{{
        {QuitWarningStyle::notification, "notification"},
        {QuitWarningStyle::window, "window"},
        {QuitWarningStyle::never, "never"},
    }};
};

} // namespace vantle
