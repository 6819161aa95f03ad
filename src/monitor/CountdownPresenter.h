#pragma once

#include <functional>

namespace vantle {

class QuitWarningState;

// Shows the auto-quit countdown as a floating panel that follows a QuitWarningState.
class CountdownPresenter {
public:
    virtual ~CountdownPresenter() = default;

    // Opens the panel; does nothing when one is already open (it keeps its first actions and
    // follows the state by itself).
    virtual void show(QuitWarningState& state, std::function<void()> onQuitNow,
                      std::function<void()> onCancel) = 0;
    // Closes the panel without counting as a cancel; nothing when none is open.
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
};

} // namespace vantle
