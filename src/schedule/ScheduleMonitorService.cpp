#include "schedule/ScheduleMonitorService.h"

#include "model/AppSettings.h"
#include "platform/PowerAssertion.h"
#include "schedule/PmsetSync.h"

namespace vantle {

namespace {

using namespace std::chrono_literals;

constexpr qint64 kMinutesPerDay = 1440;
constexpr qint64 kWindowMinutes = 2;

// Only for schedules without a problem(), whose hour and minute are in range.
qint64 minuteOfDay(const ShutdownSchedule& schedule) {
    return schedule.hour * 60 + schedule.minute;
}

qint64 minuteOfDay(const QTime& time) {
    return qint64(time.hour()) * 60 + time.minute();
}

bool inWindow(qint64 scheduleMinutes, qint64 nowMinutes) {
    return nowMinutes >= scheduleMinutes && nowMinutes - scheduleMinutes < kWindowMinutes;
}

bool holdsAwake(ShutdownSchedule::Action action) {
    return action == ShutdownSchedule::Action::sleep ||
           action == ShutdownSchedule::Action::shutdown;
}

// Five minutes ahead gives the warning time to run; one after covers a late tick.
bool closeEnough(qint64 minutesUntil) {
    return minutesUntil >= -1 && minutesUntil <= 5;
}

} // namespace

ScheduleMonitorService::ScheduleMonitorService(Clock& clock, PowerAssertion& assertion,
                                               QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_assertion(assertion) {}

ScheduleMonitorService::~ScheduleMonitorService() {
    // A hold must not outlive the service that knows why it was taken.
    setHoldingAwake(false);
}

void ScheduleMonitorService::setSettings(AppSettings* settings) {
    m_settings = settings;
}

void ScheduleMonitorService::setPmsetSync(PmsetSync* sync) {
    m_pmsetSync = sync;
}

void ScheduleMonitorService::syncPmset() {
    if (m_pmsetSync) {
        m_pmsetSync->sync(m_settings.data());
    }
}

void ScheduleMonitorService::start() {
    m_timer = m_clock.repeating(
        30s, [this] { check(); }, 5s);
}

bool ScheduleMonitorService::needsAwake(const QList<ShutdownSchedule>& schedules,
                                        const QDateTime& now) {
    const qint64 nowMinutes = minuteOfDay(now.time());
    const QDate today = now.date();
    const QDate tomorrow = today.addDays(1);
    for (const ShutdownSchedule& schedule : schedules) {
        if (!schedule.isEnabled || !holdsAwake(schedule.action) || schedule.problem()) {
            continue;
        }
        const qint64 scheduleMinutes = minuteOfDay(schedule);
        if ((schedule.occursOn(today) && closeEnough(scheduleMinutes - nowMinutes)) ||
            (schedule.occursOn(tomorrow) &&
             closeEnough(scheduleMinutes + kMinutesPerDay - nowMinutes))) {
            return true;
        }
    }
    return false;
}

void ScheduleMonitorService::check() {
    if (!m_settings) {
        setHoldingAwake(false);
        return;
    }
    // A schedule out of range or with a repeated id is skipped here; the settings log it once.
    const QList<ShutdownSchedule> schedules = usableSchedules(m_settings->shutdownSchedules());
    const QDateTime now = m_clock.now();
    setHoldingAwake(needsAwake(schedules, now));

    const qint64 nowMinutes = minuteOfDay(now.time());
    const QDate today = now.date();
    for (const ShutdownSchedule& schedule : schedules) {
        const qint64 scheduleMinutes = minuteOfDay(schedule);
        if (!schedule.isEnabled || !inWindow(scheduleMinutes, nowMinutes) ||
            !schedule.occursOn(today) || m_lastFiredIDs.contains(schedule.id)) {
            continue;
        }
        const Occurrence occurrence{today, scheduleMinutes};
        if (m_firedOccurrences.value(schedule.id) == occurrence) {
            continue;
        }
        m_lastFiredIDs.insert(schedule.id);
        m_firedOccurrences.insert(schedule.id, occurrence);
        if (holdsAwake(schedule.action) && onScheduledAction) {
            onScheduledAction(schedule);
        }
    }

    // The window test alone decides: a disabled or deleted schedule drops out here too.
    QSet<QUuid> stillInWindow;
    for (const ShutdownSchedule& schedule : schedules) {
        if (m_lastFiredIDs.contains(schedule.id) && inWindow(minuteOfDay(schedule), nowMinutes)) {
            stillInWindow.insert(schedule.id);
        }
    }
    m_lastFiredIDs = std::move(stillInWindow);
    if (!m_firedOccurrences.isEmpty()) {
        QSet<QUuid> known;
        for (const ShutdownSchedule& schedule : schedules) {
            known.insert(schedule.id);
        }
        m_firedOccurrences.removeIf(
            [&known](const auto& entry) { return !known.contains(entry.key()); });
    }
}

void ScheduleMonitorService::setHoldingAwake(bool want) {
    if (want == m_holdingAwake) {
        return;
    }
    if (want) {
        // On failure the next check tries again.
        m_holdingAwake = m_assertion.acquire(QStringLiteral("Vantle: scheduled action due"));
    } else {
        m_assertion.release();
        m_holdingAwake = false;
    }
}

} // namespace vantle
