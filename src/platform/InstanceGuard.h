#pragma once

#include <QObject>

namespace vantle {

// Keeps one running copy per user session. The first copy claims the session; a later launch
// finds it, asks it to show itself and leaves.
class InstanceGuard : public QObject {
    Q_OBJECT
public:
    enum class Claim {
        Primary,        // this copy is the one that runs
        AlreadyRunning, // another copy runs and has been asked to show itself
        Unavailable,    // the session offers no way to tell; run anyway
    };

    using QObject::QObject;
    ~InstanceGuard() override = default;

    virtual Claim claim() = 0;

    enum class Delivery {
        Delivered,  // the running copy took the action
        NotRunning, // no copy runs in this session
        Failed,     // a copy runs but did not answer; see `error`
    };
    // From a launch that is not the running copy: asks that copy to run the named action.
    virtual Delivery sendAction(const QString& name, QString* error) = 0;

signals:
    // A later launch asked this (primary) copy to show itself.
    void activationRequested();
    // A later launch asked this (primary) copy to run an action (a command's raw value).
    void actionRequested(const QString& name);
};

} // namespace vantle
