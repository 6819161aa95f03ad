#pragma once

#include <QString>

namespace vantle {

// The system's power-scheduler command and what surrounds it: the sync, the Always Allow rule and
// the uninstaller build their command lines from this, so one algorithm serves both platforms.
struct PowerSchedulerTool {
    // Absolute path of the scheduler command.
    QString path{};
    // Text that marks our own events in the scheduler's listing.
    QString listingMarker{};
    // Group that owns the Always Allow rule file.
    QString adminGroup{};
    QString ruleFile = QStringLiteral("/etc/sudoers.d/vantle-pmset");
    // Written by an earlier generation of the app; only ever removed. Empty where there is none.
    QString olderRuleFile = QStringLiteral("/etc/sudoers.d/ebb-pmset");
    // mktemp template of the rule's draft, checked by visudo before it is installed.
    QString ruleDraftTemplate = QStringLiteral("/tmp/vantle-pmset.XXXXXX");
    QString sudo = QStringLiteral("/usr/bin/sudo");
    QString visudo = QStringLiteral("/usr/sbin/visudo");
    // A rule naming a file the user could replace would hand them root without a password, so a
    // tool we ship ourselves must be owned and writable by root alone before a rule may name it.
    bool ruleNeedsRootOwnedTool = false;

    // `path` as one shell word.
    QString shellPath() const;
    // Whether a passwordless rule may name the tool: the path is plain and, where required, the
    // tool and its folder are owned by root and writable by no one else. Explains why not.
    bool isSafeForRule(QString* why = nullptr) const;

    static PowerSchedulerTool macOS();
    // The tool shipped with the application, in `directory`.
    static PowerSchedulerTool linuxTool(const QString& directory);
    // Where the tool shipped with the app in `appDirectory` lives: `installedRelative` from it
    // once installed (bin/ and libexec/ apart), else beside the app as in a build tree.
    static QString linuxToolDirectory(const QString& appDirectory,
                                      const QString& installedRelative);
};

} // namespace vantle
