#pragma once

#include "platform/IdleTime.h"

namespace vantle {

class X11Connection;

// Idle time from the X server's MIT-SCREEN-SAVER extension: milliseconds since the last input
// event of any device.
class XScreenSaverIdleTime final : public IdleTime {
public:
    explicit XScreenSaverIdleTime(X11Connection& connection);
    std::optional<double> secondsSinceLastInput() override;

private:
    X11Connection& m_x;
    bool m_present = false;
};

} // namespace vantle
