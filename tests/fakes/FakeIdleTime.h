#pragma once

#include "platform/IdleTime.h"

namespace vantle {

struct FakeIdleTime final : IdleTime {
    std::optional<double> seconds = 0.0;
    int samples = 0;
    std::optional<double> secondsSinceLastInput() override {
        ++samples;
        return seconds;
    }
};

} // namespace vantle
