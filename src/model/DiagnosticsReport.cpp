#include "model/DiagnosticsReport.h"

#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "platform/BundleInfo.h"

#include <QLocale>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>

namespace vantle {

namespace {

const QString kDash = QStringLiteral("—");

QString yesNo(bool value) {
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

// Minutes and seconds are shown as whole numbers, truncated toward zero. Values beyond any
// sensible duration (only possible by editing the file) saturate instead of overflowing.
QString whole(double value) {
    if (std::isnan(value)) {
        return QStringLiteral("0");
    }
    constexpr double limit = 9.0e18;
    return QString::number(static_cast<qint64>(std::trunc(std::clamp(value, -limit, limit))));
}

QString commandTitle(AppCommand command) {
    switch (command) {
    case AppCommand::quitAllApps:
        return QStringLiteral("Quit All Apps");
    case AppCommand::sleep:
        return QStringLiteral("Sleep");
    case AppCommand::restart:
        return QStringLiteral("Restart");
    case AppCommand::shutDown:
        return QStringLiteral("Shut Down");
    case AppCommand::focusSearch:
        return QStringLiteral("Search A Apps");
    case AppCommand::selectAll:
        return QStringLiteral("Select All or None");
    case AppCommand::quitSelected:
        return QStringLiteral("Quit Selected Apps");
    }
    return {};
}

QString weekdayAbbreviation(ShutdownSchedule::Weekday day) {
    static const std::array<QString, 7> names{
        QStringLiteral("Su"), QStringLiteral("Mo"), QStringLiteral("Tu"), QStringLiteral("We"),
        QStringLiteral("Th"), QStringLiteral("Fr"), QStringLiteral("Sa")};
    return names[static_cast<std::size_t>(static_cast<int>(day) - 1)];
}

QString scheduleLine(const ShutdownSchedule& schedule) {
    QStringList days;
    for (const auto day : schedule.days) {
        days.append(weekdayAbbreviation(day));
    }
    return QStringLiteral("  %1 at %2:%3 — %4 [%5]")
        .arg(rawValue(schedule.action))
        .arg(schedule.hour, 2, 10, QLatin1Char('0'))
        .arg(schedule.minute, 2, 10, QLatin1Char('0'))
        .arg(days.join(QLatin1Char(' ')),
             schedule.isEnabled ? QStringLiteral("enabled") : QStringLiteral("disabled"));
}

} // namespace

QString mediumDateTime(const QDateTime& when, const QLocale& locale) {
    // Qt has no "medium" date style: take the locale's long date, drop the weekday and shorten
    // the month name.
    QString dateFormat = locale.dateFormat(QLocale::LongFormat);
    // The weekday may lead ("dddd, MMMM d, yyyy") or trail ("yyyy. MMMM d., dddd").
    static const QRegularExpression weekday(QStringLiteral(",?\\s*d{4}[,.]?\\s*"));
    dateFormat.remove(weekday);
    dateFormat.replace(QStringLiteral("MMMM"), QStringLiteral("MMM"));
    const QString date = locale.toString(when.date(), dateFormat.trimmed());
    const QString time = locale.toString(when.time(), QLocale::ShortFormat);
    const QString joiner =
        locale.language() == QLocale::English ? QStringLiteral(" at ") : QStringLiteral(", ");
    return date + joiner + time;
}

QString buildDiagnosticsReport(const AppSettings& s, const QString& notificationStatus,
                               const BundleInfo& bundle, const ProductTexts& texts,
                               const QDateTime& now) {
    QStringList lines;
    lines << QStringLiteral("Vantle Diagnostics — ") + mediumDateTime(now, QLocale());
    lines << QStringLiteral("Version %1 (%2) · %3")
                 .arg(bundle.shortVersion().value_or(kDash), bundle.buildNumber().value_or(kDash),
                      bundle.bundleIdentifier().value_or(kDash));
    lines << QStringLiteral("%1 %2 · %3")
                 .arg(texts.systemName, bundle.osVersionString(), bundle.architecture());
    lines << QStringLiteral("Notifications: ") + notificationStatus;
    lines << QString();

    lines << QStringLiteral("Per-App Rules (%1)").arg(s.appRules().size());
    for (const AppRule& rule : s.appRules()) {
        lines << QStringLiteral("  %1 (%2) — %3 after %4 min")
                     .arg(rule.name, rule.bundleID, rawValue(rule.action),
                          whole(rule.timeoutMinutes));
    }
    if (s.appRules().isEmpty()) {
        lines << QStringLiteral("  none");
    }
    lines << QString();

    lines << QStringLiteral("System Idle (all apps): ") +
                 (s.idleQuitEnabled()
                      ? QStringLiteral("ON at %1 min").arg(whole(s.idleQuitTimeout()))
                      : QStringLiteral("off"));
    lines << QStringLiteral("Warning: %1, %2s grace")
                 .arg(s.quitWarningStyle(), whole(s.quitWarningSeconds()));
    lines << QStringLiteral("Exclusions (%1): %2")
                 .arg(s.excludedBundleIDs().size())
                 .arg(s.excludedBundleIDs().isEmpty()
                          ? QStringLiteral("none")
                          : s.excludedBundleIDs().join(QStringLiteral(", ")));
    lines << QStringLiteral("Protect menu bar apps: ") + yesNo(s.protectMenuBarApps());
    lines << QStringLiteral("Show background apps: ") + yesNo(s.showBackgroundApps());
    lines << QStringLiteral("Launch at login: ") + yesNo(s.launchAtLogin());
    lines << QStringLiteral("Show in Dock: ") +
                 (s.showInDock() ? QStringLiteral("yes (%1)").arg(s.dockIconStyle())
                                 : QStringLiteral("no"));
    lines << QString();

    lines << QStringLiteral("Schedules (%1)").arg(s.shutdownSchedules().size());
    for (const ShutdownSchedule& schedule : s.shutdownSchedules()) {
        lines << scheduleLine(schedule);
    }
    if (s.shutdownSchedules().isEmpty()) {
        lines << QStringLiteral("  none");
    }
    lines << QStringLiteral("%1 always allow: %2")
                 .arg(texts.powerSchedulerName, yesNo(s.pmsetAlwaysAllow()));
    lines << QStringLiteral("Schedule warning: %1, %2s grace")
                 .arg(s.scheduleWarningStyle(), whole(s.scheduleWarningSeconds()));
    lines << QString();

    QStringList disabled;
    for (const AppCommand command : allCases<AppCommand>()) {
        if (s.disabledShortcutIDs().contains(rawValue(command))) {
            disabled << commandTitle(command);
        }
    }
    lines << QStringLiteral("Shortcuts off (%1): %2")
                 .arg(disabled.size())
                 .arg(disabled.isEmpty() ? QStringLiteral("none")
                                         : disabled.join(QStringLiteral(", ")));
    return lines.join(QLatin1Char('\n'));
}

} // namespace vantle
