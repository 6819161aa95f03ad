#pragma once

#include "platform/Alerts.h"

#include <QList>

namespace vantle {

// Answers every alert with `answer` and keeps what was asked.
struct FakeAlerts final : Alerts {
    AlertResponse answer;
    QList<AlertRequest> shown;
    int activations = 0;
    QStringList broughtForward;

    void activateApp() override { ++activations; }
    AlertResponse runModal(const AlertRequest& request) override {
        shown.append(request);
        return answer;
    }
    void bringWindowsForward(const QString& title) override { broughtForward.append(title); }
};

} // namespace vantle
