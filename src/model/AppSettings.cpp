#include "model/AppSettings.h"

#include "model/DiagnosticsReport.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/Log.h"

#include <QThread>
#include <cmath>

namespace vantle {

namespace {

const QString kMigratedFlag = QStringLiteral("didMigrateLegacyDefaults");

// Every setting an earlier version may hold, in the order they are copied. The registered power
// events are left out on purpose: the system's own schedule is read back instead.
const std::array<QString, 16> kMigratedKeys{
    QStringLiteral("appRules"),
    QStringLiteral("idleQuitEnabled"),
    QStringLiteral("idleQuitTimeout"),
    QStringLiteral("showBackgroundApps"),
    QStringLiteral("excludedBundleIDs"),
    QStringLiteral("protectMenuBarApps"),
    QStringLiteral("launchAtLogin"),
    QStringLiteral("showInDock"),
    QStringLiteral("dockIconStyle"),
    QStringLiteral("shutdownSchedules"),
    QStringLiteral("pmsetAlwaysAllow"),
    QStringLiteral("quitWarningStyle"),
    QStringLiteral("quitWarningSeconds"),
    QStringLiteral("scheduleWarningStyle"),
    QStringLiteral("scheduleWarningSeconds"),
    QStringLiteral("disabledShortcutIDs"),
};

// Durations that are not strictly positive count as unset.
double positiveOr(double stored, double fallback) {
    return stored > 0 && std::isfinite(stored) ? stored : fallback;
}

// Booleans whose absence must show: only a real bool (or the number 0 or 1) counts.
bool strictBool(const DefaultsStore& defaults, const QString& key, bool fallback) {
    const std::optional<DefaultsValue> value = defaults.object(key);
    return value ? value->asStrictBool().value_or(fallback) : fallback;
}

// A stored list that cannot be decoded is left in place until the list is next assigned; its
// text goes to the log so it can be recovered even after that.
template <typename T>
QList<T> decodeList(const DefaultsStore& defaults, const QString& key,
                    std::optional<QList<T>> (*decode)(const QByteArray&)) {
    const std::optional<QByteArray> data = defaults.dataValue(key);
    if (!data) {
        if (defaults.object(key)) {
            logLine(QStringLiteral("stored %1 is not a list document; starting with an empty list")
                        .arg(key));
        }
        return {};
    }
    if (std::optional<QList<T>> decoded = decode(*data)) {
        return *decoded;
    }
    logLine(QStringLiteral("stored %1 could not be read; starting with an empty list until it is "
                           "next changed. Stored text: %2")
                .arg(key, QString::fromUtf8(data->left(4096))));
    return {};
}

} // namespace

AppSettings::AppSettings(DefaultsStore& defaults, const BundleInfo& bundle, const Clock& clock,
                         const ProductTexts& texts, QObject* parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_bundle(bundle)
    , m_clock(clock)
    , m_texts(texts) {
    m_didMigrateOnThisLaunch = migrateLegacyDefaults();
    load();
}

bool AppSettings::migrateLegacyDefaults() {
    if (m_defaults.boolValue(kMigratedFlag)) {
        return false;
    }
    bool copiedAny = false;
    for (const char* domainName : kLegacyDomains) {
        const std::optional<DefaultsDomain> domain =
            m_defaults.persistentDomain(QString::fromUtf8(domainName));
        if (!domain || domain->isEmpty()) {
            continue;
        }
        int copied = 0;
        for (const QString& key : kMigratedKeys) {
            // What the user already has always wins.
            if (m_defaults.object(key)) {
                continue;
            }
            const auto legacy = domain->constFind(key);
            if (legacy != domain->constEnd()) {
                m_defaults.setObject(key, *legacy);
                ++copied;
            }
        }
        if (copied > 0) {
            logLine(QStringLiteral("copied %1 settings from the earlier domain %2")
                        .arg(copied)
                        .arg(QString::fromUtf8(domainName)));
            copiedAny = true;
        }
    }
    m_defaults.setObject(kMigratedFlag, true);
    return copiedAny;
}

void AppSettings::load() {
    const DefaultsStore& d = m_defaults;
    m_appRules = decodeList<AppRule>(d, QStringLiteral("appRules"), decodeAppRules);
    m_idleQuitEnabled = d.boolValue(QStringLiteral("idleQuitEnabled"));
    m_idleQuitTimeout = positiveOr(d.doubleValue(QStringLiteral("idleQuitTimeout")), 30);
    m_showBackgroundApps = strictBool(d, QStringLiteral("showBackgroundApps"), false);
    m_excludedBundleIDs =
        d.stringArrayValue(QStringLiteral("excludedBundleIDs")).value_or(QStringList{});
    m_protectMenuBarApps = strictBool(d, QStringLiteral("protectMenuBarApps"), true);
    m_launchAtLogin = d.boolValue(QStringLiteral("launchAtLogin"));
    m_showInDock = strictBool(d, QStringLiteral("showInDock"), false);
    m_dockIconStyle =
        d.stringValue(QStringLiteral("dockIconStyle")).value_or(QStringLiteral("auto"));
    m_shutdownSchedules = decodeList<ShutdownSchedule>(d, QStringLiteral("shutdownSchedules"),
                                                       decodeShutdownSchedules);
    m_pmsetAlwaysAllow = d.boolValue(QStringLiteral("pmsetAlwaysAllow"));
    m_quitWarningStyle =
        d.stringValue(QStringLiteral("quitWarningStyle")).value_or(QStringLiteral("notification"));
    m_quitWarningSeconds = positiveOr(d.doubleValue(QStringLiteral("quitWarningSeconds")), 60);
    m_scheduleWarningStyle = d.stringValue(QStringLiteral("scheduleWarningStyle"))
                                 .value_or(QStringLiteral("notification"));
    m_scheduleWarningSeconds =
        positiveOr(d.doubleValue(QStringLiteral("scheduleWarningSeconds")), 60);
    m_pmsetRegistered =
        d.stringArrayValue(QStringLiteral("pmsetRegistered")).value_or(QStringList{});
    m_disabledShortcutIDs =
        d.stringArrayValue(QStringLiteral("disabledShortcutIDs")).value_or(QStringList{});
    reportScheduleProblems();
}

void AppSettings::reportScheduleProblems() {
    for (const ScheduleProblem& problem : findScheduleProblems(m_shutdownSchedules)) {
        const QString line =
            QStringLiteral("schedule %1 is not run: %2; it stays in the settings as written")
                .arg(describeSchedule(m_shutdownSchedules[problem.index]), problem.reason);
        if (!m_reportedScheduleProblems.contains(line)) {
            m_reportedScheduleProblems.insert(line);
            logLine(line);
        }
    }
}

void AppSettings::setAppRules(const QList<AppRule>& value) {
    if (m_appRules == value) {
        return;
    }
    m_appRules = value;
    emit appRulesChanged();
    if (const auto encoded = encodeAppRules(m_appRules)) {
        m_defaults.setObject(QStringLiteral("appRules"), *encoded);
    } else {
        logLine(QStringLiteral("rules not saved: a timeout is not a finite number"));
    }
}

void AppSettings::setIdleQuitEnabled(bool value) {
    if (m_idleQuitEnabled == value) {
        return;
    }
    m_idleQuitEnabled = value;
    emit idleQuitEnabledChanged();
    m_defaults.setObject(QStringLiteral("idleQuitEnabled"), m_idleQuitEnabled);
}

void AppSettings::setIdleQuitTimeout(double value) {
    if (m_idleQuitTimeout == value) {
        return;
    }
    m_idleQuitTimeout = value;
    emit idleQuitTimeoutChanged();
    m_defaults.setObject(QStringLiteral("idleQuitTimeout"), m_idleQuitTimeout);
}

void AppSettings::setShowBackgroundApps(bool value) {
    if (m_showBackgroundApps == value) {
        return;
    }
    m_showBackgroundApps = value;
    emit showBackgroundAppsChanged();
    m_defaults.setObject(QStringLiteral("showBackgroundApps"), m_showBackgroundApps);
}

void AppSettings::setExcludedBundleIDs(const QStringList& value) {
    if (m_excludedBundleIDs == value) {
        return;
    }
    m_excludedBundleIDs = value;
    emit excludedBundleIDsChanged();
    m_defaults.setObject(QStringLiteral("excludedBundleIDs"), m_excludedBundleIDs);
}

void AppSettings::setProtectMenuBarApps(bool value) {
    if (m_protectMenuBarApps == value) {
        return;
    }
    m_protectMenuBarApps = value;
    emit protectMenuBarAppsChanged();
    m_defaults.setObject(QStringLiteral("protectMenuBarApps"), m_protectMenuBarApps);
}

void AppSettings::setLaunchAtLogin(bool value) {
    if (m_launchAtLogin == value) {
        return;
    }
    m_launchAtLogin = value;
    emit launchAtLoginChanged();
    m_defaults.setObject(QStringLiteral("launchAtLogin"), m_launchAtLogin);
}

void AppSettings::setShowInDock(bool value) {
    if (m_showInDock == value) {
        return;
    }
    m_showInDock = value;
    emit showInDockChanged();
    m_defaults.setObject(QStringLiteral("showInDock"), m_showInDock);
}

void AppSettings::setDockIconStyle(const QString& value) {
    if (m_dockIconStyle == value) {
        return;
    }
    m_dockIconStyle = value;
    emit dockIconStyleChanged();
    m_defaults.setObject(QStringLiteral("dockIconStyle"), m_dockIconStyle);
}

void AppSettings::setShutdownSchedules(const QList<ShutdownSchedule>& value) {
    if (m_shutdownSchedules == value) {
        return;
    }
    m_shutdownSchedules = value;
    reportScheduleProblems();
    emit shutdownSchedulesChanged();
    m_defaults.setObject(QStringLiteral("shutdownSchedules"),
                         encodeShutdownSchedules(m_shutdownSchedules));
}

void AppSettings::setPmsetAlwaysAllow(bool value) {
    if (m_pmsetAlwaysAllow == value) {
        return;
    }
    m_pmsetAlwaysAllow = value;
    emit pmsetAlwaysAllowChanged();
    m_defaults.setObject(QStringLiteral("pmsetAlwaysAllow"), m_pmsetAlwaysAllow);
}

void AppSettings::setQuitWarningStyle(const QString& value) {
    if (m_quitWarningStyle == value) {
        return;
    }
    m_quitWarningStyle = value;
    emit quitWarningStyleChanged();
    m_defaults.setObject(QStringLiteral("quitWarningStyle"), m_quitWarningStyle);
}

void AppSettings::setQuitWarningSeconds(double value) {
    if (m_quitWarningSeconds == value) {
        return;
    }
    m_quitWarningSeconds = value;
    emit quitWarningSecondsChanged();
    m_defaults.setObject(QStringLiteral("quitWarningSeconds"), m_quitWarningSeconds);
}

void AppSettings::setScheduleWarningStyle(const QString& value) {
    if (m_scheduleWarningStyle == value) {
        return;
    }
    m_scheduleWarningStyle = value;
    emit scheduleWarningStyleChanged();
    m_defaults.setObject(QStringLiteral("scheduleWarningStyle"), m_scheduleWarningStyle);
}

void AppSettings::setScheduleWarningSeconds(double value) {
    if (m_scheduleWarningSeconds == value) {
        return;
    }
    m_scheduleWarningSeconds = value;
    emit scheduleWarningSecondsChanged();
    m_defaults.setObject(QStringLiteral("scheduleWarningSeconds"), m_scheduleWarningSeconds);
}

void AppSettings::setPmsetRegistered(const QStringList& value) {
    if (m_pmsetRegistered == value) {
        return;
    }
    m_pmsetRegistered = value;
    emit pmsetRegisteredChanged();
    m_defaults.setObject(QStringLiteral("pmsetRegistered"), m_pmsetRegistered);
}

void AppSettings::setDisabledShortcutIDs(const QStringList& value) {
    if (m_disabledShortcutIDs == value) {
        return;
    }
    m_disabledShortcutIDs = value;
    emit disabledShortcutIDsChanged();
    m_defaults.setObject(QStringLiteral("disabledShortcutIDs"), m_disabledShortcutIDs);
}

bool AppSettings::isShortcutEnabled(AppCommand command) const {
    return !m_disabledShortcutIDs.contains(rawValue(command));
}

void AppSettings::setShortcut(AppCommand command, bool enabled) {
    if (isShortcutEnabled(command) == enabled) {
        return;
    }
    QStringList disabled = m_disabledShortcutIDs;
    if (enabled) {
        disabled.removeAll(rawValue(command));
    } else {
        disabled.append(rawValue(command));
    }
    setDisabledShortcutIDs(disabled);
}

QList<AppCommand> AppSettings::enabledGlobalCommands() const {
    Q_ASSERT(QThread::currentThread() == thread());
    QList<AppCommand> enabled;
    for (const AppCommand command : allCases<AppCommand>()) {
        if (isGlobalCommand(command) && isShortcutEnabled(command)) {
            enabled.append(command);
        }
    }
    return enabled;
}

QString AppSettings::diagnosticsReport(const QString& notificationStatus) const {
    return buildDiagnosticsReport(*this, notificationStatus, m_bundle, m_texts, m_clock.now());
}

} // namespace vantle
