#include "monitor/IdleMonitorService.h"

#include "platform/IdleTime.h"
#include "platform/Log.h"

#include <cmath>

namespace vantle {

IdleMonitorService::IdleMonitorService(IdleTime& idleTime, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_idleTime(idleTime)
    , m_clock(clock) {}

void IdleMonitorService::start(double intervalSeconds) {
    m_monitorTimer.reset();
    sample();
    // A non-positive interval would spin; the clock's shortest tick is the floor.
    const double milliseconds = std::isfinite(intervalSeconds) ? intervalSeconds * 1000 : 0;
    const Milliseconds interval(milliseconds >= 1 ? std::llround(milliseconds) : 1);
    // The idle quit counts in minutes, so a sample a few seconds off changes nothing; the
    // tolerance lets the clock take it in the same wake-up as the other periodic work.
    m_monitorTimer = m_clock.repeating(
        interval, [this] { sample(); }, interval / 6);
}

void IdleMonitorService::sample() {
    const std::optional<double> seconds = m_idleTime.secondsSinceLastInput();
    if (seconds && std::isfinite(*seconds)) {
        m_systemIdleSeconds = *seconds;
    } else {
        // Without a reading the user is taken to be present, so nothing is quit for idleness.
        m_systemIdleSeconds = 0;
        if (!m_reportedUnavailable) {
            m_reportedUnavailable = true;
            logLine(QStringLiteral(
                "idle time is unavailable in this session; the system idle quit will not act"));
        }
    }
    emit systemIdleSecondsChanged();
}

} // namespace vantle
