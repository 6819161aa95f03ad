#pragma once

#include "platform/LoginItem.h"

namespace vantle {

struct FakeLoginItem final : LoginItem {
    bool registered = false;
    bool failRegistration = false;
    int registerCalls = 0;

    bool isRegistered() const override { return registered; }
    bool registerItem(QString* error) override {
        ++registerCalls;
        if (failRegistration) {
            if (error) {
                *error = QStringLiteral("refused");
            }
            return false;
        }
        registered = true;
        return true;
    }
    bool unregisterItem(QString*) override {
        registered = false;
        return true;
    }
};

} // namespace vantle
