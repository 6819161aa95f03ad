#pragma once

#include "platform/Updater.h"

namespace vantle {

// The update framework's standard controller, created without starting; it fetches the feed,
// compares versions, shows its own windows and installs. Built only when the framework is found.
class SparkleUpdater final : public Updater {
    Q_OBJECT
public:
    explicit SparkleUpdater(QObject* parent = nullptr);
    ~SparkleUpdater() override;

    void startUpdater() override;
    bool canCheckForUpdates() const override;
    bool automaticallyChecksForUpdates() const override;
    void setAutomaticallyChecksForUpdates(bool enabled) override;
    std::optional<QDateTime> lastUpdateCheckDate() const override;
    void checkForUpdates() override;

    // Called by the framework's observer on the main thread.
    void publishCanCheck(bool canCheck) { emit canCheckForUpdatesChanged(canCheck); }

private:
    struct Objects;
    Objects* m_objects;
};

} // namespace vantle
