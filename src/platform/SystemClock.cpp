#include "platform/SystemClock.h"

#include <QTimer>

namespace vantle {

namespace {

class QtTimerHandle final : public TimerHandle {
public:
    QtTimerHandle(Milliseconds interval, bool singleShot, std::function<void()> callback,
                  std::optional<Milliseconds> tolerance) {
        // Coarse timers let the kernel coalesce wake-ups; Qt allows them up to 5% late, which
        // covers the tolerances the services ask for.
        m_timer.setTimerType(tolerance ? Qt::CoarseTimer : Qt::PreciseTimer);
        m_timer.setSingleShot(singleShot);
        m_timer.setInterval(interval);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, std::move(callback));
        m_timer.start();
    }

private:
    QTimer m_timer;
};

} // namespace

SystemClock::SystemClock() {
    m_monotonic.start();
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
