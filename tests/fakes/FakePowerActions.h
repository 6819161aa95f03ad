#pragma once

#include "platform/PowerActions.h"

#include <QStringList>

namespace vantle {

// Records the requests in order: "sleep", "restart", "shutDown".
struct FakePowerActions final : PowerActions {
    QStringList calls;

    void sleep() override { calls.append(QStringLiteral("sleep")); }
    void restart() override { calls.append(QStringLiteral("restart")); }
    void shutDown() override { calls.append(QStringLiteral("shutDown")); }
};

} // namespace vantle
