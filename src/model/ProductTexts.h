#pragma once

#include "model/KeyCombo.h"

#include <QString>

namespace vantle {

// Texts that name an operating-system facility. macOS shows them as written; Linux names the
// equivalent it really uses. Both sets are compiled and tested everywhere; the composition root
// picks the one for the running platform. The user-facing fields are marked for translation in
// the "ProductTexts" context but stored in English, so the log stays English; whoever shows one
// passes it through translated().
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
    // Removing Vantle: the first step line (%1 is "N scheduled power event(s)"), the Advanced
    // tab's explanation, the removal sheet's password line and what the system keeps.
    QString removalCancelEventsStep;
    QString removalExplanation;
    QString removalPasswordLine;
    QString removalSystemKeeps;
    // The About tab: the tagline, and the two feature details that name the desktop.
    QString aboutTagline;
    QString quitOnDemandDetail;
    QString systemIdleDetail;

    // How the system writes key combinations.
    KeyCapStyle keyCaps = KeyCapStyle::macOS;

    // The settings window's Auto-Quit and Schedule tabs.
    QString idleQuitToggle;
    QString idleQuitHelp;
    QString quitNotificationHelp;
    QString scheduleIntro;
    QString alwaysAllowHelp;
    QString scheduleNotificationHelp;
    QString scheduleWarningNote;

    // The General tab's switch that spares apps living only in the menu bar or tray, and its
    // help.
    QString protectMenuBarAppsTitle;
    QString protectMenuBarAppsHelp;

    // A field as the user should see it, in the running translation.
    static QString translated(const QString& text);

    static const ProductTexts& macOS();
    static const ProductTexts& linuxDesktop();
};

} // namespace vantle
