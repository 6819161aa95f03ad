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
        .keyCaps = KeyCapStyle::linuxDesktop,
        .idleQuitToggle = QStringLiteral("Quit all apps when the computer is idle"),
        .idleQuitHelp = QStringLiteral(
            "One global rule, separate from the per-app timers above: when the computer itself "
            "sits untouched this long, every app quits at once — except menu bar apps and "
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
    };
    return texts;
}

} // namespace vantle
