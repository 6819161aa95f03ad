#pragma once

#include "platform/LoginItem.h"

#include <QStringList>

namespace vantle {

struct FakeLoginItem final : LoginItem {
    bool registered = false;
    bool failRegistration = false;
    int registerCalls = 0;
    // When set, unregistering is written here, in order with other fakes' changes.
    QStringList* journal = nullptr;

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
        if (journal) {
            journal->append(QStringLiteral("unregister login item"));
        }
        registered = false;
        return true;
    }
};

} // namespace vantle
