#pragma once

#include "model/ShutdownSchedule.h"
#include "system/CountdownState.h"

namespace vantle {

// The scheduled action under warning and its countdown, observed by the countdown panel.
class ScheduleWarningState final : public CountdownState {
    Q_OBJECT
    Q_PROPERTY(vantle::ShutdownSchedule::Action action READ action NOTIFY contentChanged)
public:
    using CountdownState::CountdownState;

    ShutdownSchedule::Action action() const { return m_action; }
    void setAction(ShutdownSchedule::Action action) {
        m_action = action;
        emit contentChanged();
    }

    // The heading of both the notification and the panel.
    static QString title(ShutdownSchedule::Action action);

    CountdownContent content() const override;

private:
    ShutdownSchedule::Action m_action = ShutdownSchedule::Action::shutdown;
};

} // namespace vantle
