#pragma once

#include "model/ShutdownSchedule.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <functional>

namespace vantle {

class AppSettings;
class PrivilegedRunner;

// What the Schedule tab does with the schedules and the Always Allow rule, apart from any widget.
class ScheduleTabState {
public:
    ScheduleTabState(AppSettings& settings, PrivilegedRunner& privileged);

    // The schedule "Add Schedule" appends to `schedules`: every day at 22:00, shutting down unless
    // a schedule already does, sleeping then.
    static ShutdownSchedule newSchedule(const QList<ShutdownSchedule>& schedules);
    // The one-per-list actions another schedule than `schedules[index]` already uses.
    static QSet<ShutdownSchedule::Action> takenSingletons(const QList<ShutdownSchedule>& schedules,
                                                          qsizetype index);

    void addSchedule();
    void removeSchedule(qsizetype index);
    // Changes one schedule; the others are written back exactly as they were stored.
    void editSchedule(qsizetype index, const std::function<void(ShutdownSchedule&)>& edit);
    // Why the services skip a schedule, by its index.
    QHash<qsizetype, QString> problems() const;

    // Whether Always Allow may be switched on; `why` says why not.
    bool canAlwaysAllow(QString* why = nullptr) const;
    // Installs or removes the rule and follows it in the setting only when that worked. Returns
    // the setting afterwards.
    bool setAlwaysAllow(bool on);

private:
    AppSettings& m_settings;
    PrivilegedRunner& m_privileged;
};

} // namespace vantle
