#pragma once

#include <optional>

namespace vantle {

// How long the whole session has gone without user input.
class IdleTime {
public:
    virtual ~IdleTime() = default;

    // Seconds since the last input event of any kind (keyboard, pointer, touch); nothing when
    // the session cannot tell, in which case callers treat the user as present.
    virtual std::optional<double> secondsSinceLastInput() = 0;
};

} // namespace vantle
