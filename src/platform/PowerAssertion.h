#pragma once

#include <QString>

namespace vantle {

// Keeps the machine from idling into sleep while something is due.
class PowerAssertion {
public:
    virtual ~PowerAssertion() = default;

    // Whether the machine is held awake afterwards. Failures are logged here, never thrown; the
    // caller simply tries again later. A call while already held changes nothing and returns true.
    virtual bool acquire(const QString& reason) = 0;
    // Lets the machine sleep again; does nothing when not held.
    virtual void release() = 0;
    virtual bool isHeld() const = 0;
};

} // namespace vantle
