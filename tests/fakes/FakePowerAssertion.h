#pragma once

#include "platform/PowerAssertion.h"

namespace vantle {

struct FakePowerAssertion final : PowerAssertion {
    bool fail = false;
    bool held = false;
    int acquired = 0;
    int released = 0;
    QString reason;

    bool acquire(const QString& why) override {
        if (held) {
            return true;
        }
        if (fail) {
            return false;
        }
        ++acquired;
        held = true;
        reason = why;
        return true;
    }
    void release() override {
        if (held) {
            ++released;
            held = false;
        }
    }
    bool isHeld() const override { return held; }
};

} // namespace vantle
