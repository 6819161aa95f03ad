#pragma once

#include <QDateTime>
#include <QObject>

namespace vantle {

class Clock;
class Updater;

// Finding and installing newer versions of Vantle, where the platform has an update framework.
// Without one (Linux: the package manager updates Vantle) every check is unavailable and the
// views hide their update controls.
class UpdateService final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool canCheckForUpdates READ canCheckForUpdates NOTIFY canCheckForUpdatesChanged)
public:
    // `updater` may be null.
    UpdateService(Updater* updater, const Clock& clock, QObject* parent = nullptr);

    // Whether there is anything to show: false where the package manager updates Vantle.
    bool hasUpdater() const { return m_updater != nullptr; }
    bool canCheckForUpdates() const { return m_canCheck; }
    // Once, after the services exist and before the hot keys are registered.
    void startUpdater();
    bool automaticallyChecksForUpdates() const;
    void setAutomaticallyChecksForUpdates(bool enabled);
    void checkForUpdates();
    // When the last check ran, "Today at 9:41 AM" or a medium date; empty before any check.
    QString lastCheckText() const;

signals:
    void canCheckForUpdatesChanged();

private:
    void setCanCheck(bool canCheck);

    Updater* m_updater;
    const Clock& m_clock;
    bool m_canCheck = false;
};

} // namespace vantle
