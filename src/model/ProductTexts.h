#pragma once

#include <QString>

namespace vantle {

// Texts that name an operating-system facility. macOS shows them as written; Linux names the
// equivalent it really uses. Both sets are compiled and tested everywhere; the composition root
// picks the one for the running platform.
struct ProductTexts {
    // The operating system's name, as it heads the system line of the diagnostics report.
    QString systemName;
    // The power scheduler the schedules are handed to.
    QString powerSchedulerName;
    // Heads the log line of a failed power-schedule sync; the error follows.
    QString schedulerSyncFailed;
    // Shown before the password prompt of a power-schedule change.
    QString schedulerPasswordExplanation;
    // The "always allow" check box's tool tip; %1 is the scheduler's path.
    QString alwaysAllowToolTip;
    // Before installing and before removing the Always Allow rule; %1 is the scheduler's path.
    QString installRuleExplanation;
    QString removeRuleExplanation;

    static const ProductTexts& macOS();
    static const ProductTexts& linuxDesktop();
};

} // namespace vantle
