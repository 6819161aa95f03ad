#pragma once

#include <QDateTime>
#include <QObject>
#include <optional>

namespace vantle {

// The platform's self-update framework. Absent (no object at all) where the package manager
// keeps Vantle up to date.
class Updater : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    ~Updater() override = default;

    // No scheduled check runs before this.
    virtual void startUpdater() = 0;
    // Whether a user-initiated check may start now.
    virtual bool canCheckForUpdates() const = 0;
    // Stored by the framework, not by the settings store.
    virtual bool automaticallyChecksForUpdates() const = 0;
    virtual void setAutomaticallyChecksForUpdates(bool enabled) = 0;
    virtual std::optional<QDateTime> lastUpdateCheckDate() const = 0;
    // A user-initiated check; the framework shows its own window.
    virtual void checkForUpdates() = 0;

signals:
    void canCheckForUpdatesChanged(bool canCheck);
};

} // namespace vantle
