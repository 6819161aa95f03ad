#include "platform/SystemClock.h"

#include <QTimer>
#include <chrono>

namespace vantle {

namespace {

using namespace std::chrono_literals;

// The monotonic clock Qt's timers run on (CLOCK_MONOTONIC), so a grid point here is one there.
Milliseconds steadyNow() {
    return std::chrono::duration_cast<Milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

class QtTimerHandle final : public TimerHandle {
public:
    QtTimerHandle(Milliseconds interval, bool singleShot, std::function<void()> callback,
                  std::optional<Milliseconds> tolerance) {
        if (!tolerance) {
            m_timer.setTimerType(Qt::PreciseTimer);
            m_timer.setSingleShot(singleShot);
            QObject::connect(&m_timer, &QTimer::timeout, &m_timer, std::move(callback));
            m_timer.start(interval);
            return;
        }
        // The first run lands exactly on the grid point; the runs after it are coarse, which Qt
        // allows up to 5% late and keeps on whole seconds from 20 s up.
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer,
                         [this, interval, singleShot, callback = std::move(callback)] {
                             if (!singleShot && m_timer.isSingleShot()) {
                                 m_timer.setTimerType(Qt::CoarseTimer);
                                 m_timer.setSingleShot(false);
                                 m_timer.start(interval);
                             }
                             // May destroy this handle: nothing may follow it.
                             callback();
                         });
        m_timer.start(SystemClock::alignedDelay(steadyNow(), interval, *tolerance));
    }

private:
    QTimer m_timer;
};

} // namespace

SystemClock::SystemClock() {
    m_monotonic.start();
}

Milliseconds SystemClock::alignedDelay(Milliseconds now, Milliseconds interval,
                                       Milliseconds tolerance) {
    const Milliseconds grid = std::chrono::duration_cast<std::chrono::seconds>(tolerance);
    if (grid < 1s || tolerance >= interval) {
        return interval;
    }
    // The latest grid point that is not late; the grid is no coarser than the tolerance, so it
    // is never more than that early.
    const Milliseconds due = now + interval;
    return due / grid * grid - now;
}

QDateTime SystemClock::now() const {
    return QDateTime::currentDateTime();
}

Milliseconds SystemClock::monotonicNow() const {
    return Milliseconds(m_monotonic.elapsed());
}

Timer SystemClock::singleShot(Milliseconds delay, std::function<void()> callback,
                              std::optional<Milliseconds> tolerance) {
    return std::make_unique<QtTimerHandle>(delay, true, std::move(callback), tolerance);
}

Timer SystemClock::repeating(Milliseconds interval, std::function<void()> callback,
                             std::optional<Milliseconds> tolerance) {
    return std::make_unique<QtTimerHandle>(interval, false, std::move(callback), tolerance);
}

} // namespace vantle
