#pragma once

#include "platform/Updater.h"

namespace vantle {

class FakeUpdater final : public Updater {
    Q_OBJECT
public:
    void startUpdater() override { ++starts; }
    bool canCheckForUpdates() const override { return canCheck; }
    bool automaticallyChecksForUpdates() const override { return automatic; }
    void setAutomaticallyChecksForUpdates(bool enabled) override { automatic = enabled; }
    std::optional<QDateTime> lastUpdateCheckDate() const override { return lastCheck; }
    void checkForUpdates() override { ++checks; }

    // The framework's own property changes, as its observation reports it.
    void setCanCheck(bool value) {
        canCheck = value;
        emit canCheckForUpdatesChanged(value);
    }

    bool canCheck = true;
    bool automatic = false;
    std::optional<QDateTime> lastCheck;
    int starts = 0;
    int checks = 0;
};

} // namespace vantle
