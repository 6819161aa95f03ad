#include "model/ProductTexts.h"

namespace vantle {

const ProductTexts& ProductTexts::macOS() {
    static const ProductTexts texts{
        .systemName = QStringLiteral("macOS"),
        .powerSchedulerName = QStringLiteral("pmset"),
        .schedulerSyncFailed = QStringLiteral("pmset sync failed: "),
        .schedulerPasswordExplanation = QStringLiteral(
            "Vantle is handing your Wake and Power On times to the Mac's built-in power scheduler "
            "(pmset). Only an administrator is allowed to change it, so macOS will ask for your "
            "password next."),
        .alwaysAllowToolTip = QStringLiteral(
            "Adds a rule letting Vantle run %1 without a password. It grants no other access, and "
            "turning Always Allow off in Settings removes it."),
        .installRuleExplanation = QStringLiteral(
            "Vantle will add a rule letting it run %1 without a password, so your Wake and Power "
            "On schedules can be applied silently from now on.\n\nThis grants no other access, "
            "and turning \"Always Allow\" back off removes the rule.\n\nmacOS will ask for your "
            "password next."),
        .removeRuleExplanation = QStringLiteral(
            "Vantle will remove the rule that let it change the Mac's power schedule without a "
            "password. Your schedules keep working — macOS will simply ask for your password each "
            "time they change.\n\nmacOS will ask for your password next."),
        .removalCancelEventsStep = QStringLiteral("Cancel %1 Vantle registered with macOS"),
        .removalExplanation = QStringLiteral(
            "Dragging Vantle to the Trash is not enough on its own: Wake and Power On times are "
            "held by macOS and would still happen. This cancels them, removes the Always Allow "
            "rule if there is one, clears Vantle's settings and moves it to the Trash. It shows "
            "you exactly what it will do first."),
        .removalPasswordLine = QStringLiteral(
            "macOS will ask for your administrator password, because only an administrator can "
            "change the power schedule."),
        .removalSystemKeeps = QStringLiteral(
            "Two things macOS keeps, which Vantle cannot remove: its notification permission, "
            "under System Settings › Notifications, and its Automation permission, under Privacy "
            "& Security › Automation. Reinstalling reuses both, so you are not asked again."),
        .aboutTagline = QStringLiteral("App control for your menu bar"),
        .quitOnDemandDetail = QStringLiteral("Select apps in the menu bar and quit them together."),
        .systemIdleDetail = QStringLiteral("Clear everything once the Mac has sat unused."),
        .keyCaps = KeyCapStyle::macOS,
        .idleQuitToggle = QStringLiteral("Quit all apps when Mac is idle"),
        .idleQuitHelp = QStringLiteral(
            "One global rule, separate from the per-app timers above: when the Mac itself sits "
            "untouched this long, every app quits at once — except menu bar apps and anything on "
            "the Exclusions tab."),
        .quitNotificationHelp = QStringLiteral(
            "A banner with Quit Now and Cancel. Focus modes silence it and apps still quit on "
            "time; if notifications are denied, the window is used instead."),
        .scheduleIntro = QStringLiteral("Sleep and Shut Down fire at schedule time. Wake and "
                                        "Restart are registered with the OS via pmset."),
        .alwaysAllowHelp = QStringLiteral("Grant Vantle permanent access to pmset so schedules "
                                          "never ask for a password. Requires one-time admin "
                                          "approval."),
        .scheduleNotificationHelp = QStringLiteral(
            "A banner with Do It Now and Cancel. Focus modes silence it and the Mac still sleeps "
            "or shuts down on time; if notifications are denied, the window is used instead."),
        .scheduleWarningNote = QStringLiteral(
            "Applies to Sleep and Shut Down. Wake, Restart and Power On are handed to macOS via "
            "pmset, which runs them whether or not Vantle is open — so they can't be warned about "
            "or cancelled here."),
        .protectMenuBarAppsTitle = QString::fromUtf8(
            QT_TRANSLATE_NOOP("ProductTexts", "Protect menu bar apps from auto-quit")),
        .protectMenuBarAppsHelp = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Apps that live only in the menu bar (e.g. Carbon Copy Cloner, HazeOver) will never "
            "be hidden or quit automatically. Uncheck to allow them to be managed like any other "
            "app.")),
    };
    return texts;
}

const ProductTexts& ProductTexts::linuxDesktop() {
    static const ProductTexts texts{
        .systemName = QStringLiteral("Linux"),
        .powerSchedulerName = QStringLiteral("vantle-power"),
        .schedulerSyncFailed = QStringLiteral("vantle-power sync failed: "),
        .schedulerPasswordExplanation = QStringLiteral(
            "Vantle is handing your Wake and Power On times to the system's power scheduler "
            "(systemd timers). Only an administrator is allowed to change it, so Linux will ask "
            "for your password next."),
        .alwaysAllowToolTip = QStringLiteral(
            "Adds a rule letting Vantle run %1 without a password. It grants no other access, and "
            "turning Always Allow off in Settings removes it."),
        .installRuleExplanation = QStringLiteral(
            "Vantle will add a rule letting it run %1 without a password, so your Wake and Power "
            "On schedules can be applied silently from now on.\n\nThis grants no other access, "
            "and turning \"Always Allow\" back off removes the rule.\n\nLinux will ask for your "
            "password next."),
        .removeRuleExplanation = QStringLiteral(
            "Vantle will remove the rule that let it change the computer's power schedule without "
            "a password. Your schedules keep working — Linux will simply ask for your password "
            "each time they change.\n\nLinux will ask for your password next."),
        .removalCancelEventsStep = QStringLiteral("Cancel %1 Vantle registered with systemd"),
        .removalExplanation = QStringLiteral(
            "Deleting Vantle's program is not enough on its own: Wake and Power On times are held "
            "by systemd and would still happen. This cancels them, removes the Always Allow rule "
            "if there is one, clears Vantle's settings and removes the program where it can. It "
            "shows you exactly what it will do first."),
        .removalPasswordLine = QStringLiteral(
            "Linux will ask for your administrator password, because only an administrator can "
            "change the power schedule."),
        .removalSystemKeeps = QStringLiteral(
            "Things the desktop keeps, which Vantle cannot remove: its notification setting, in "
            "the desktop's notification settings, and on Wayland its shortcut bindings, in the "
            "desktop's keyboard settings. Reinstalling reuses them, so you are not asked again."),
        .aboutTagline = QStringLiteral("App control for your system tray"),
        .quitOnDemandDetail =
            QStringLiteral("Select apps in the system tray and quit them together."),
        .systemIdleDetail = QStringLiteral("Clear everything once the computer has sat unused."),
        .keyCaps = KeyCapStyle::linuxDesktop,
        .idleQuitToggle = QStringLiteral("Quit all apps when the computer is idle"),
        .idleQuitHelp = QStringLiteral(
            "One global rule, separate from the per-app timers above: when the computer itself "
            "sits untouched this long, every app quits at once — except tray-only apps and "
            "anything on the Exclusions tab."),
        .quitNotificationHelp = QStringLiteral(
            "A banner with Quit Now and Cancel. Do Not Disturb silences it and apps still quit on "
            "time; if notifications are denied, the window is used instead."),
        .scheduleIntro = QStringLiteral("Sleep and Shut Down fire at schedule time. Wake and "
                                        "Restart are registered with the OS via systemd timers."),
        .alwaysAllowHelp = QStringLiteral("Grant Vantle permanent access to vantle-power so "
                                          "schedules never ask for a password. Requires one-time "
                                          "admin approval."),
        .scheduleNotificationHelp = QStringLiteral(
            "A banner with Do It Now and Cancel. Do Not Disturb silences it and the computer "
            "still sleeps or shuts down on time; if notifications are denied, the window is used "
            "instead."),
        .scheduleWarningNote = QStringLiteral(
            "Applies to Sleep and Shut Down. Wake, Restart and Power On are handed to Linux via "
            "systemd timers, which run them whether or not Vantle is open — so they can't be "
            "warned about or cancelled here."),
        .protectMenuBarAppsTitle = QString::fromUtf8(
            QT_TRANSLATE_NOOP("ProductTexts", "Protect tray-only apps from auto-quit")),
        .protectMenuBarAppsHelp = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Apps that live only in the system tray (e.g. Nextcloud, KeePassXC) will never be "
            "hidden or quit automatically. Uncheck to allow them to be managed like any other "
            "app.")),
    };
    return texts;
}

} // namespace vantle
