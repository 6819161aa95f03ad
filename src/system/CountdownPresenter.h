#pragma once

#include <functional>

namespace vantle {

class CountdownState;

// Shows a warning's countdown as a floating panel that follows its CountdownState.
class CountdownPresenter {
public:
    virtual ~CountdownPresenter() = default;

    // Opens the panel. `onAnswer` gets true for the confirm button, false for Cancel or the
    // user's close button. Does nothing when a panel is already open: it keeps its first answer
    // and follows its state by itself.
    virtual void show(CountdownState& state, std::function<void(bool confirmed)> onAnswer) = 0;
    // Closes the panel without counting as an answer; nothing when none is open.
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
};

} // namespace vantle
