#pragma once

#include "platform/Clock.h"

#include <QElapsedTimer>

namespace vantle {

// Clock backed by QDateTime and QTimer on the calling (main) thread.
// Timers with a tolerance share wake-ups: their first run is moved (never later than asked, at most
// the tolerance earlier) onto a grid of whole seconds of the monotonic clock, and from there Qt
// keeps coarse timers of 20 s and more on whole seconds. So the idle sample, the auto-quit pass
// and the schedule tick, started together, keep firing in one wake-up.
class SystemClock final : public Clock {
public:
    SystemClock();

    // The delay of a tolerant timer's first run, started at monotonic time `now`: the last grid
    // point in [now + interval - tolerance, now + interval]. The grid is the tolerance in whole
    // seconds; a tolerance under a second leaves the delay as it is.
    static Milliseconds alignedDelay(Milliseconds now, Milliseconds interval,
                                     Milliseconds tolerance);

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
