#pragma once

#include <QDateTime>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace vantle {

using Milliseconds = std::chrono::milliseconds;

// A scheduled timer. Destroying the handle cancels the timer, so a service that keeps its handles
// as members can never be called back after it is gone.
class TimerHandle {
public:
    virtual ~TimerHandle() = default;
};
using Timer = std::unique_ptr<TimerHandle>;

// The one source of time. Services never read the system clock or own a QTimer themselves, so
// tests can drive every timeout with ManualClock instead of sleeping.
class Clock {
public:
    virtual ~Clock() = default;

    // Wall-clock now, in the local time zone. May jump (clock changes, DST, wake from sleep).
    virtual QDateTime now() const = 0;

    // Monotonic time since an arbitrary origin; never jumps backwards.
    virtual Milliseconds monotonicNow() const = 0;

    // Runs `callback` once, `delay` from now on the monotonic clock. A tolerance lets the system
    // batch wake-ups; without one the timer is precise.
    virtual Timer singleShot(Milliseconds delay, std::function<void()> callback,
                             std::optional<Milliseconds> tolerance = std::nullopt) = 0;

    // Runs `callback` every `interval` until the handle is destroyed. The first run is one
    // interval from now.
    virtual Timer repeating(Milliseconds interval, std::function<void()> callback,
                            std::optional<Milliseconds> tolerance = std::nullopt) = 0;
};

} // namespace vantle
