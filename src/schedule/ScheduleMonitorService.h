#pragma once

#include "model/ShutdownSchedule.h"
#include "platform/Clock.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <functional>

namespace vantle {

class AppSettings;
class PmsetSync;
class PowerAssertion;

// Watches the clock for the user's weekly power schedules. Sleep and shut down are handed to the
// owner when due; wake, restart and power on belong to the system's power scheduler and are only
// marked as seen. Around a due sleep or shut down the machine is kept from idling to sleep.
class ScheduleMonitorService : public QObject {
    Q_OBJECT

public:
    ScheduleMonitorService(Clock& clock, PowerAssertion& assertion, QObject* parent = nullptr);
    ~ScheduleMonitorService() override;

    void setSettings(AppSettings* settings);
    // Where the wake, restart and power-on schedules are handed to the system.
    void setPmsetSync(PmsetSync* sync);

    // Called once per due sleep or shut down schedule, in list order, with the schedule that fired.
    std::function<void(const ShutdownSchedule&)> onScheduledAction;

    // Checks every 30 seconds from now on; the first check is one interval away.
    void start();
    // One evaluation of the schedules against the clock.
    void check();
    // Brings the system's power schedule in line with the schedules; overlapping requests
    // collapse into one further run.
    void syncPmset();

    const QSet<QUuid>& lastFiredIDs() const { return m_lastFiredIDs; }
    bool isHoldingAwake() const { return m_holdingAwake; }

    // Whether a sleep or shut down is due from five minutes before to one minute after `now`,
    // including one just past midnight.
    static bool needsAwake(const QList<ShutdownSchedule>& schedules, const QDateTime& now);

private:
    // The minute of the day a schedule's window opened, remembered per schedule so that a clock
    // set back, or the hour repeated at the end of daylight saving time, cannot fire it again.
    struct Occurrence {
        QDate date;
        qint64 minuteOfDay = 0;
        bool operator==(const Occurrence&) const = default;
    };

    void setHoldingAwake(bool want);

    Clock& m_clock;
    PowerAssertion& m_assertion;
    QPointer<AppSettings> m_settings;
    QPointer<PmsetSync> m_pmsetSync;
    Timer m_timer;
    QSet<QUuid> m_lastFiredIDs;
    QHash<QUuid, Occurrence> m_firedOccurrences;
    bool m_holdingAwake = false;
};

} // namespace vantle
