#pragma once

#include "system/CountdownPresenter.h"

#include <functional>

namespace vantle {

// Opens at most one panel, as the real one does, and answers as its buttons would.
struct FakeCountdownPresenter final : CountdownPresenter {
    bool open = false;
    int shows = 0;
    std::function<void(bool confirmed)> onAnswer;

    void show(CountdownState&, std::function<void(bool confirmed)> answer) override {
        ++shows;
        if (!open) {
            open = true;
            onAnswer = std::move(answer);
        }
    }
    void close() override { open = false; }
    bool isOpen() const override { return open; }

    void confirm() const { onAnswer(true); }
    void cancel() const { onAnswer(false); }
};

} // namespace vantle
