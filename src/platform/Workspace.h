#pragma once

#include "platform/RunningApplication.h"

#include <QList>
#include <QObject>
#include <optional>

namespace vantle {

// The running applications of this login session and their activity.
class Workspace : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    ~Workspace() override = default;

    // False where the session offers no way to list applications (a Wayland compositor without
    // an app-list protocol, say); the list is then always empty and no events arrive.
    virtual bool isSupported() const = 0;

    // Every running application, this program included, in the system's own order.
    virtual QList<RunningApplicationRef> runningApplications() const = 0;
    // The running application with that process id, or null when there is none.
    virtual RunningApplicationRef application(qint32 processIdentifier) const = 0;
    // The process id of the application in front, if any.
    virtual std::optional<qint32> frontmostApplication() const = 0;

signals:
    // Each carries the application concerned, or null when the system did not say which.
    void didLaunchApplication(const vantle::RunningApplicationRef& app);
    void didTerminateApplication(const vantle::RunningApplicationRef& app);
    void didActivateApplication(const vantle::RunningApplicationRef& app);
    void didDeactivateApplication(const vantle::RunningApplicationRef& app);
    // The machine woke from sleep.
    void didWake();
};

} // namespace vantle
