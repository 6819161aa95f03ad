#pragma once

#include <functional>

namespace vantle {

class ScheduleWarningState;

// Shows the schedule countdown as a floating panel that follows a ScheduleWarningState.
class ScheduleCountdownPresenter {
public:
    virtual ~ScheduleCountdownPresenter() = default;

    // Opens the panel; does nothing when one is already open.
    virtual void show(ScheduleWarningState& state, std::function<void()> onProceed,
                      std::function<void()> onCancel) = 0;
    // Closes the panel without counting as a cancel; nothing when none is open.
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
};

} // namespace vantle
