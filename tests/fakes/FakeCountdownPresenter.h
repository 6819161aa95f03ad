#pragma once

#include "platform/NotificationCenter.h"
#include "system/CountdownPresenter.h"

#include <QTest>
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

// Style and permission pairs under which either warning shows its panel instead of a
// notification; both warnings resolve the style the same way, so they share the rows.
inline void addPanelFallbackRows() {
    QTest::addColumn<QString>("style");
    QTest::addColumn<AuthorizationStatus>("status");
    QTest::newRow("window") << QStringLiteral("window") << AuthorizationStatus::authorized;
    QTest::newRow("denied") << QStringLiteral("notification") << AuthorizationStatus::denied;
    QTest::newRow("unknown style, not determined")
        << QStringLiteral("banner") << AuthorizationStatus::notDetermined;
}

} // namespace vantle
