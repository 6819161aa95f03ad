#pragma once

#include "platform/TrayHost.h"

namespace vantle {

// A tray that tests switch on and off.
class FakeTrayHost final : public TrayHost {
    Q_OBJECT
public:
    bool isAvailable() const override { return available; }
    bool hasStatusNotifierHost() const override { return false; }

    void setAvailable(bool value) {
        if (value != available) {
            available = value;
            emit availabilityChanged(value);
        }
    }

    bool available = false;
};

} // namespace vantle
