#include "model/ProductTexts.h"

#include <QCoreApplication>

namespace vantle {

QString ProductTexts::translated(const QString& text) {
    return QCoreApplication::translate("ProductTexts", text.toUtf8().constData());
}

const ProductTexts& ProductTexts::macOS() {
    static const ProductTexts texts{
        .systemName = QStringLiteral("macOS"),
        .powerSchedulerName = QStringLiteral("pmset"),
        .schedulerSyncFailed = QStringLiteral("pmset sync failed: "),
        .schedulerPasswordExplanation = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Vantle is handing your Wake and Power On times to the Mac's built-in power scheduler "
            "(pmset). Only an administrator is allowed to change it, so macOS will ask for your "
            "password next.")),
        .alwaysAllowToolTip = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Adds a rule letting Vantle run %1 without a password. It grants no other access, and "
            "turning Always Allow off in Settings removes it.")),
        .installRuleExplanation = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Vantle will add a rule letting it run %1 without a password, so your Wake and Power "
            "On schedules can be applied silently from now on.\n\nThis grants no other access, "
            "and turning \"Always Allow\" back off removes the rule.\n\nmacOS will ask for your "
            "password next.")),
        .removeRuleExplanation = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Vantle will remove the rule that let it change the Mac's power schedule without a "
            "password. Your schedules keep working — macOS will simply ask for your password each "
            "time they change.\n\nmacOS will ask for your password next.")),
        .removalCancelEventsStep = QString::fromUtf8(
            QT_TRANSLATE_NOOP("ProductTexts", "Cancel %1 Vantle registered with macOS")),
        .removalExplanation = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Dragging Vantle to the Trash is not enough on its own: Wake and Power On times are "
            "held by macOS and would still happen. This cancels them, removes the Always Allow "
            "rule if there is one, clears Vantle's settings and moves it to the Trash. It shows "
            "you exactly what it will do first.")),
        .removalPasswordLine = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "macOS will ask for your administrator password, because only an administrator can "
            "change the power schedule.")),
        .removalSystemKeeps = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Two things macOS keeps, which Vantle cannot remove: its notification permission, "
            "under System Settings › Notifications, and its Automation permission, under Privacy "
            "& Security › Automation. Reinstalling reuses both, so you are not asked again.")),
        .aboutTagline =
            QString::fromUtf8(QT_TRANSLATE_NOOP("ProductTexts", "App control for your menu bar")),
        .quitOnDemandDetail = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts", "Select apps in the menu bar and quit them together.")),
        .systemIdleDetail = QString::fromUtf8(
            QT_TRANSLATE_NOOP("ProductTexts", "Clear everything once the Mac has sat unused.")),
        .keyCaps = KeyCapStyle::macOS,
        .idleQuitToggle =
            QString::fromUtf8(QT_TRANSLATE_NOOP("ProductTexts", "Quit all apps when Mac is idle")),
        .idleQuitHelp = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "One global rule, separate from the per-app timers above: when the Mac itself sits "
            "untouched this long, every app quits at once — except menu bar apps and anything on "
            "the Exclusions tab.")),
        .quitNotificationHelp = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "A banner with Quit Now and Cancel. Focus modes silence it and apps still quit on "
            "time; if notifications are denied, the window is used instead.")),
        .scheduleIntro = QString::fromUtf8(
            QT_TRANSLATE_NOOP("ProductTexts", "Sleep and Shut Down fire at schedule time. Wake and "
                                              "Restart are registered with the OS via pmset.")),
        .alwaysAllowHelp = QString::fromUtf8(
            QT_TRANSLATE_NOOP("ProductTexts", "Grant Vantle permanent access to pmset so schedules "
                                              "never ask for a password. Requires one-time admin "
                                              "approval.")),
        .scheduleNotificationHelp = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "A banner with Do It Now and Cancel. Focus modes silence it and the Mac still sleeps "
            "or shuts down on time; if notifications are denied, the window is used instead.")),
        .scheduleWarningNote = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Applies to Sleep and Shut Down. Wake, Restart and Power On are handed to macOS via "
            "pmset, which runs them whether or not Vantle is open — so they can't be warned about "
            "or cancelled here.")),
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
        .schedulerPasswordExplanation = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Vantle is handing your Wake and Power On times to the system's power scheduler "
            "(systemd timers). Only an administrator is allowed to change it, so Linux will ask "
            "for your password next.")),
        .alwaysAllowToolTip = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Adds a rule letting Vantle run %1 without a password. It grants no other access, and "
            "turning Always Allow off in Settings removes it.")),
        .installRuleExplanation = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Vantle will add a rule letting it run %1 without a password, so your Wake and Power "
            "On schedules can be applied silently from now on.\n\nThis grants no other access, "
            "and turning \"Always Allow\" back off removes the rule.\n\nLinux will ask for your "
            "password next.")),
        .removeRuleExplanation = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Vantle will remove the rule that let it change the computer's power schedule without "
            "a password. Your schedules keep working — Linux will simply ask for your password "
            "each time they change.\n\nLinux will ask for your password next.")),
        .removalCancelEventsStep = QString::fromUtf8(
            QT_TRANSLATE_NOOP("ProductTexts", "Cancel %1 Vantle registered with systemd")),
        .removalExplanation = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Deleting Vantle's program is not enough on its own: Wake and Power On times are held "
            "by systemd and would still happen. This cancels them, removes the Always Allow rule "
            "if there is one, clears Vantle's settings and removes the program where it can. It "
            "shows you exactly what it will do first.")),
        .removalPasswordLine = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Linux will ask for your administrator password, because only an administrator can "
            "change the power schedule.")),
        .removalSystemKeeps = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Things the desktop keeps, which Vantle cannot remove: its notification setting, in "
            "the desktop's notification settings, and on Wayland its shortcut bindings, in the "
            "desktop's keyboard settings. Reinstalling reuses them, so you are not asked again.")),
        .aboutTagline = QString::fromUtf8(
            QT_TRANSLATE_NOOP("ProductTexts", "App control for your system tray")),
        .quitOnDemandDetail = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts", "Select apps in the system tray and quit them together.")),
        .systemIdleDetail = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts", "Clear everything once the computer has sat unused.")),
        .keyCaps = KeyCapStyle::linuxDesktop,
        .idleQuitToggle = QString::fromUtf8(
            QT_TRANSLATE_NOOP("ProductTexts", "Quit all apps when the computer is idle")),
        .idleQuitHelp = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "One global rule, separate from the per-app timers above: when the computer itself "
            "sits untouched this long, every app quits at once — except tray-only apps and "
            "anything on the Exclusions tab.")),
        .quitNotificationHelp = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "A banner with Quit Now and Cancel. Do Not Disturb silences it and apps still quit on "
            "time; if notifications are denied, the window is used instead.")),
        .scheduleIntro = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts", "Sleep and Shut Down fire at schedule time. Wake and "
                            "Restart are registered with the OS via systemd timers.")),
        .alwaysAllowHelp = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts", "Grant Vantle permanent access to vantle-power so "
                            "schedules never ask for a password. Requires one-time "
                            "admin approval.")),
        .scheduleNotificationHelp = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "A banner with Do It Now and Cancel. Do Not Disturb silences it and the computer "
            "still sleeps or shuts down on time; if notifications are denied, the window is used "
            "instead.")),
        .scheduleWarningNote = QString::fromUtf8(QT_TRANSLATE_NOOP(
            "ProductTexts",
            "Applies to Sleep and Shut Down. Wake, Restart and Power On are handed to Linux via "
            "systemd timers, which run them whether or not Vantle is open — so they can't be "
            "warned about or cancelled here.")),
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
