#pragma once

#include "platform/PowerActions.h"

#include <QStringList>

namespace vantle {

// Records the requests in order: "sleep", "restart", "shutDown".
struct FakePowerActions final : PowerActions {
    QStringList calls;

    void sleep() override { calls.append(QStringLiteral("sleep")); }
    void restart(const QList<RunningApplicationRef>& apps) override {
        calls.append(QStringLiteral("restart"));
        askedToQuit = apps;
    }
    void shutDown(const QList<RunningApplicationRef>& apps) override {
        calls.append(QStringLiteral("shutDown"));
        askedToQuit = apps;
    }
    // What the last restart or shut down was told about the apps asked to quit.
    QList<RunningApplicationRef> askedToQuit;
};

} // namespace vantle
