#pragma once

#include "platform/Clock.h"

#include <QElapsedTimer>

namespace vantle {

// Clock backed by QDateTime and QTimer on the calling (main) thread.
class SystemClock final : public Clock {
public:
    SystemClock();

    QDateTime now() const override;
    Milliseconds monotonicNow() const override;
    Timer singleShot(Milliseconds delay, std::function<void()> callback,
                     std::optional<Milliseconds> tolerance) override;
    Timer repeating(Milliseconds interval, std::function<void()> callback,
                    std::optional<Milliseconds> tolerance) override;

private:
    QElapsedTimer m_monotonic;
};

} // namespace vantle
