#pragma once

#include <algorithm>
#include <cmath>

namespace vantle {

// Used when no settings store is around, or the stored length makes no sense.
constexpr int kDefaultWarningSeconds = 60;

// The stored warning length in whole seconds, truncated toward zero; a hand-edited absurd value
// cannot overflow.
inline int wholeWarningSeconds(double seconds) {
    if (!std::isfinite(seconds)) {
        return kDefaultWarningSeconds;
    }
    return static_cast<int>(std::trunc(std::clamp(seconds, -1.0e9, 1.0e9)));
}

} // namespace vantle
