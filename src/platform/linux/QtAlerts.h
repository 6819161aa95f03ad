#pragma once

#include "platform/Alerts.h"

namespace vantle {

// Alerts as Qt message boxes, kept above other windows since a tray app has none of its own in
// front when one opens.
class QtAlerts final : public Alerts {
public:
    void activateApp() override;
    AlertResponse runModal(const AlertRequest& request) override;
    void bringWindowsForward(const QString& title) override;
};

} // namespace vantle
