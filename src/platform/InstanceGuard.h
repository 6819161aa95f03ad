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

signals:
    // A later launch asked this (primary) copy to show itself.
    void activationRequested();
};

} // namespace vantle
