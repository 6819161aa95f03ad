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

// How a value is written to the defaults; nothing when it cannot be.
template <typename T>
std::optional<DefaultsValue> storedForm(const T& value) {
    return DefaultsValue(value);
}
std::optional<DefaultsValue> storedForm(const QList<AppRule>& rules) {
    if (const auto encoded = encodeAppRules(rules)) {
        return DefaultsValue(*encoded);
    }
    logLine(QStringLiteral("rules not saved: a timeout is not a finite number"));
    return std::nullopt;
}
std::optional<DefaultsValue> storedForm(const QList<ShutdownSchedule>& schedules) {
    return DefaultsValue(encodeShutdownSchedules(schedules));
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

template <typename T>
void AppSettings::assign(T& member, const T& value, void (AppSettings::*changed)(),
                         const QString& key) {
    if (member == value) {
        return;
    }
    member = value;
    emit(this->*changed)();
    if (const std::optional<DefaultsValue> stored = storedForm(member)) {
        m_defaults.setObject(key, *stored);
    }
}

void AppSettings::setAppRules(const QList<AppRule>& value) {
    assign(m_appRules, value, &AppSettings::appRulesChanged, QStringLiteral("appRules"));
}

void AppSettings::setIdleQuitEnabled(bool value) {
    assign(m_idleQuitEnabled, value, &AppSettings::idleQuitEnabledChanged,
           QStringLiteral("idleQuitEnabled"));
}

void AppSettings::setIdleQuitTimeout(double value) {
    assign(m_idleQuitTimeout, value, &AppSettings::idleQuitTimeoutChanged,
           QStringLiteral("idleQuitTimeout"));
}

void AppSettings::setShowBackgroundApps(bool value) {
    assign(m_showBackgroundApps, value, &AppSettings::showBackgroundAppsChanged,
           QStringLiteral("showBackgroundApps"));
}

void AppSettings::setExcludedBundleIDs(const QStringList& value) {
    assign(m_excludedBundleIDs, value, &AppSettings::excludedBundleIDsChanged,
           QStringLiteral("excludedBundleIDs"));
}

void AppSettings::setProtectMenuBarApps(bool value) {
    assign(m_protectMenuBarApps, value, &AppSettings::protectMenuBarAppsChanged,
           QStringLiteral("protectMenuBarApps"));
}

void AppSettings::setLaunchAtLogin(bool value) {
    assign(m_launchAtLogin, value, &AppSettings::launchAtLoginChanged,
           QStringLiteral("launchAtLogin"));
}

void AppSettings::setShowInDock(bool value) {
    assign(m_showInDock, value, &AppSettings::showInDockChanged, QStringLiteral("showInDock"));
}

void AppSettings::setDockIconStyle(const QString& value) {
    assign(m_dockIconStyle, value, &AppSettings::dockIconStyleChanged,
           QStringLiteral("dockIconStyle"));
}

void AppSettings::setShutdownSchedules(const QList<ShutdownSchedule>& value) {
    assign(m_shutdownSchedules, value, &AppSettings::shutdownSchedulesChanged,
           QStringLiteral("shutdownSchedules"));
    reportScheduleProblems();
}

void AppSettings::setPmsetAlwaysAllow(bool value) {
    assign(m_pmsetAlwaysAllow, value, &AppSettings::pmsetAlwaysAllowChanged,
           QStringLiteral("pmsetAlwaysAllow"));
}

void AppSettings::setQuitWarningStyle(const QString& value) {
    assign(m_quitWarningStyle, value, &AppSettings::quitWarningStyleChanged,
           QStringLiteral("quitWarningStyle"));
}

void AppSettings::setQuitWarningSeconds(double value) {
    assign(m_quitWarningSeconds, value, &AppSettings::quitWarningSecondsChanged,
           QStringLiteral("quitWarningSeconds"));
}

void AppSettings::setScheduleWarningStyle(const QString& value) {
    assign(m_scheduleWarningStyle, value, &AppSettings::scheduleWarningStyleChanged,
           QStringLiteral("scheduleWarningStyle"));
}

void AppSettings::setScheduleWarningSeconds(double value) {
    assign(m_scheduleWarningSeconds, value, &AppSettings::scheduleWarningSecondsChanged,
           QStringLiteral("scheduleWarningSeconds"));
}

void AppSettings::setPmsetRegistered(const QStringList& value) {
    assign(m_pmsetRegistered, value, &AppSettings::pmsetRegisteredChanged,
           QStringLiteral("pmsetRegistered"));
}

void AppSettings::setDisabledShortcutIDs(const QStringList& value) {
    assign(m_disabledShortcutIDs, value, &AppSettings::disabledShortcutIDsChanged,
           QStringLiteral("disabledShortcutIDs"));
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
