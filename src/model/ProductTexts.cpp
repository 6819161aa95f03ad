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
    };
    return texts;
}

} // namespace vantle
