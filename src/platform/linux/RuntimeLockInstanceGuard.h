#pragma once

#include "platform/InstanceGuard.h"
#include "platform/linux/FileLock.h"

namespace vantle {

// The single-instance claim without a session bus: a lock file in the user's runtime folder
// ($XDG_RUNTIME_DIR), held for the life of the primary copy and dropped by the kernel however it
// ends. A later launch can tell that a copy runs but has no way to ask it to show itself.
class RuntimeLockInstanceGuard final : public InstanceGuard {
    Q_OBJECT
public:
    explicit RuntimeLockInstanceGuard(QString lockPath, QObject* parent = nullptr);

    Claim claim() override;
    // Can only tell whether a copy runs; without a bus there is no way to hand it the action.
    Delivery sendAction(const QString& name, QString* error) override;

    // <runtime folder>/<name>.lock
    static QString defaultPath(const QString& name);

private:
    FileLock m_lock;
};

} // namespace vantle
