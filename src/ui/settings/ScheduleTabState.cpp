#include "ui/settings/ScheduleTabState.h"

#include "model/AppSettings.h"
#include "schedule/PrivilegedRunner.h"

#include <algorithm>

namespace vantle {

using Action = ShutdownSchedule::Action;

ScheduleTabState::ScheduleTabState(AppSettings& settings, PrivilegedRunner& privileged)
    : m_settings(settings)
    , m_privileged(privileged) {}

ShutdownSchedule ScheduleTabState::newSchedule(const QList<ShutdownSchedule>& schedules) {
    const bool shutdownTaken =
        std::any_of(schedules.begin(), schedules.end(),
                    [](const ShutdownSchedule& s) { return s.action == Action::shutdown; });
    ShutdownSchedule schedule;
    schedule.isEnabled = true;
    schedule.action = shutdownTaken ? Action::sleep : Action::shutdown;
    schedule.days = {ShutdownSchedule::allWeekdays.begin(), ShutdownSchedule::allWeekdays.end()};
    schedule.hour = 22;
    schedule.minute = 0;
    return schedule;
}

QSet<Action> ScheduleTabState::takenSingletons(const QList<ShutdownSchedule>& schedules,
                                               qsizetype index) {
    QSet<Action> taken;
    if (index < 0 || index >= schedules.size()) {
        return taken;
    }
    for (const ShutdownSchedule& other : schedules) {
        if (other.id != schedules[index].id &&
            (other.action == Action::shutdown || other.action == Action::restart)) {
            taken.insert(other.action);
        }
    }
    return taken;
}

void ScheduleTabState::addSchedule() {
    QList<ShutdownSchedule> schedules = m_settings.shutdownSchedules();
    schedules.append(newSchedule(schedules));
    m_settings.setShutdownSchedules(schedules);
}

void ScheduleTabState::removeSchedule(qsizetype index) {
    QList<ShutdownSchedule> schedules = m_settings.shutdownSchedules();
    if (index >= 0 && index < schedules.size()) {
        schedules.removeAt(index);
        m_settings.setShutdownSchedules(schedules);
    }
}

void ScheduleTabState::editSchedule(qsizetype index,
                                    const std::function<void(ShutdownSchedule&)>& edit) {
    QList<ShutdownSchedule> schedules = m_settings.shutdownSchedules();
    if (index >= 0 && index < schedules.size()) {
        edit(schedules[index]);
        m_settings.setShutdownSchedules(schedules);
    }
}

QHash<qsizetype, QString> ScheduleTabState::problems() const {
    QHash<qsizetype, QString> problems;
    for (const ScheduleProblem& problem : findScheduleProblems(m_settings.shutdownSchedules())) {
        problems.insert(problem.index, problem.reason);
    }
    return problems;
}

bool ScheduleTabState::canAlwaysAllow(QString* why) const {
    return m_privileged.tool().isSafeForRule(why);
}

bool ScheduleTabState::setAlwaysAllow(bool on) {
    if (on != m_settings.pmsetAlwaysAllow()) {
        const bool done =
            on ? m_privileged.installAlwaysAllowRule() : m_privileged.removeAlwaysAllowRule();
        if (done) {
            m_settings.setPmsetAlwaysAllow(on);
        }
        m_privileged.bringSettingsWindowForward();
    }
    return m_settings.pmsetAlwaysAllow();
}

} // namespace vantle
