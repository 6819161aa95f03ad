#pragma once

#include "model/AppCommand.h"
#include "model/AppRule.h"
#include "model/DockIconStyle.h"
#include "model/QuitWarningStyle.h"
#include "model/ShutdownSchedule.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <array>

namespace vantle {

class BundleInfo;
class Clock;
class DefaultsStore;
struct ProductTexts;

// The one observable store of every user setting. Each property is loaded from the defaults at
// construction (after the one-time legacy migration) and written back the moment it is assigned;
// there is no save step. Assigning an equal value changes nothing and notifies no one.
class AppSettings : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<AppRule> appRules READ appRules WRITE setAppRules NOTIFY appRulesChanged)
    Q_PROPERTY(bool idleQuitEnabled READ idleQuitEnabled WRITE setIdleQuitEnabled NOTIFY
                   idleQuitEnabledChanged)
    Q_PROPERTY(double idleQuitTimeout READ idleQuitTimeout WRITE setIdleQuitTimeout NOTIFY
                   idleQuitTimeoutChanged)
    Q_PROPERTY(bool showBackgroundApps READ showBackgroundApps WRITE setShowBackgroundApps NOTIFY
                   showBackgroundAppsChanged)
    Q_PROPERTY(QStringList excludedBundleIDs READ excludedBundleIDs WRITE setExcludedBundleIDs
                   NOTIFY excludedBundleIDsChanged)
    Q_PROPERTY(bool protectMenuBarApps READ protectMenuBarApps WRITE setProtectMenuBarApps NOTIFY
                   protectMenuBarAppsChanged)
    Q_PROPERTY(
        bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY launchAtLoginChanged)
    Q_PROPERTY(bool showInDock READ showInDock WRITE setShowInDock NOTIFY showInDockChanged)
    Q_PROPERTY(
        QString dockIconStyle READ dockIconStyle WRITE setDockIconStyle NOTIFY dockIconStyleChanged)
    Q_PROPERTY(QList<ShutdownSchedule> shutdownSchedules READ shutdownSchedules WRITE
                   setShutdownSchedules NOTIFY shutdownSchedulesChanged)
    Q_PROPERTY(bool pmsetAlwaysAllow READ pmsetAlwaysAllow WRITE setPmsetAlwaysAllow NOTIFY
                   pmsetAlwaysAllowChanged)
    Q_PROPERTY(QString quitWarningStyle READ quitWarningStyle WRITE setQuitWarningStyle NOTIFY
                   quitWarningStyleChanged)
    Q_PROPERTY(double quitWarningSeconds READ quitWarningSeconds WRITE setQuitWarningSeconds NOTIFY
                   quitWarningSecondsChanged)
    Q_PROPERTY(QString scheduleWarningStyle READ scheduleWarningStyle WRITE setScheduleWarningStyle
                   NOTIFY scheduleWarningStyleChanged)
    Q_PROPERTY(double scheduleWarningSeconds READ scheduleWarningSeconds WRITE
                   setScheduleWarningSeconds NOTIFY scheduleWarningSecondsChanged)
    Q_PROPERTY(QStringList pmsetRegistered READ pmsetRegistered WRITE setPmsetRegistered NOTIFY
                   pmsetRegisteredChanged)
    Q_PROPERTY(QStringList disabledShortcutIDs READ disabledShortcutIDs WRITE setDisabledShortcutIDs
                   NOTIFY disabledShortcutIDsChanged)

public:
    // Domains an earlier version kept its settings in, read once, first one winning.
    static constexpr std::array<const char*, 2> kLegacyDomains{"com.quorel.vantle",
                                                               "com.yourname.EBB"};

    AppSettings(DefaultsStore& defaults, const BundleInfo& bundle, const Clock& clock,
                const ProductTexts& texts, QObject* parent = nullptr);

    // True when the legacy migration copied at least one value during this launch.
    bool didMigrateOnThisLaunch() const { return m_didMigrateOnThisLaunch; }

    const QList<AppRule>& appRules() const { return m_appRules; }
    bool idleQuitEnabled() const { return m_idleQuitEnabled; }
    double idleQuitTimeout() const { return m_idleQuitTimeout; }
    bool showBackgroundApps() const { return m_showBackgroundApps; }
    const QStringList& excludedBundleIDs() const { return m_excludedBundleIDs; }
    bool protectMenuBarApps() const { return m_protectMenuBarApps; }
    bool launchAtLogin() const { return m_launchAtLogin; }
    bool showInDock() const { return m_showInDock; }
    const QString& dockIconStyle() const { return m_dockIconStyle; }
    const QList<ShutdownSchedule>& shutdownSchedules() const { return m_shutdownSchedules; }
    bool pmsetAlwaysAllow() const { return m_pmsetAlwaysAllow; }
    const QString& quitWarningStyle() const { return m_quitWarningStyle; }
    double quitWarningSeconds() const { return m_quitWarningSeconds; }
    const QString& scheduleWarningStyle() const { return m_scheduleWarningStyle; }
    double scheduleWarningSeconds() const { return m_scheduleWarningSeconds; }
    const QStringList& pmsetRegistered() const { return m_pmsetRegistered; }
    const QStringList& disabledShortcutIDs() const { return m_disabledShortcutIDs; }

    void setAppRules(const QList<AppRule>& value);
    void setIdleQuitEnabled(bool value);
    void setIdleQuitTimeout(double value);
    void setShowBackgroundApps(bool value);
    void setExcludedBundleIDs(const QStringList& value);
    void setProtectMenuBarApps(bool value);
    void setLaunchAtLogin(bool value);
    void setShowInDock(bool value);
    void setDockIconStyle(const QString& value);
    void setShutdownSchedules(const QList<ShutdownSchedule>& value);
    void setPmsetAlwaysAllow(bool value);
    void setQuitWarningStyle(const QString& value);
    void setQuitWarningSeconds(double value);
    void setScheduleWarningStyle(const QString& value);
    void setScheduleWarningSeconds(double value);
    void setPmsetRegistered(const QStringList& value);
    void setDisabledShortcutIDs(const QStringList& value);

    // The stored styles as enumerations, so no consumer parses the text; nothing when the stored
    // text names none (a hand edit, a later version). The text itself is kept as stored.
    std::optional<QuitWarningStyle> quitWarningStyleValue() const {
        return fromRawValue<QuitWarningStyle>(m_quitWarningStyle);
    }
    std::optional<QuitWarningStyle> scheduleWarningStyleValue() const {
        return fromRawValue<QuitWarningStyle>(m_scheduleWarningStyle);
    }
    std::optional<DockIconStyle> dockIconStyleValue() const {
        return fromRawValue<DockIconStyle>(m_dockIconStyle);
    }
    void setQuitWarningStyle(QuitWarningStyle style) { setQuitWarningStyle(rawValue(style)); }
    void setScheduleWarningStyle(QuitWarningStyle style) {
        setScheduleWarningStyle(rawValue(style));
    }
    void setDockIconStyle(DockIconStyle style) { setDockIconStyle(rawValue(style)); }

    bool isShortcutEnabled(AppCommand command) const;
    // Disabling appends the command once; enabling removes every copy of it.
    void setShortcut(AppCommand command, bool enabled);
    // The global commands whose shortcut is on, in command order.
    QList<AppCommand> enabledGlobalCommands() const;

    // The plain-text support report of the whole configuration.
    QString diagnosticsReport(const QString& notificationStatus) const;

signals:
    void appRulesChanged();
    void idleQuitEnabledChanged();
    void idleQuitTimeoutChanged();
    void showBackgroundAppsChanged();
    void excludedBundleIDsChanged();
    void protectMenuBarAppsChanged();
    void launchAtLoginChanged();
    void showInDockChanged();
    void dockIconStyleChanged();
    void shutdownSchedulesChanged();
    void pmsetAlwaysAllowChanged();
    void quitWarningStyleChanged();
    void quitWarningSecondsChanged();
    void scheduleWarningStyleChanged();
    void scheduleWarningSecondsChanged();
    void pmsetRegisteredChanged();
    void disabledShortcutIDsChanged();

private:
    // Every setter: stores `value` under `key` and notifies, unless it equals the current value.
    template <typename T>
    void assign(T& member, const T& value, void (AppSettings::*changed)(), const QString& key);
    bool migrateLegacyDefaults();
    void load();
    // Logs each schedule the services will skip, once per launch.
    void reportScheduleProblems();

    DefaultsStore& m_defaults;
    const BundleInfo& m_bundle;
    const Clock& m_clock;
    const ProductTexts& m_texts;
    bool m_didMigrateOnThisLaunch = false;

    QList<AppRule> m_appRules{};
    bool m_idleQuitEnabled{};
    double m_idleQuitTimeout{};
    bool m_showBackgroundApps{};
    QStringList m_excludedBundleIDs{};
    bool m_protectMenuBarApps{};
    bool m_launchAtLogin{};
    bool m_showInDock{};
    QString m_dockIconStyle{};
    QList<ShutdownSchedule> m_shutdownSchedules{};
    bool m_pmsetAlwaysAllow{};
    QString m_quitWarningStyle{};
    double m_quitWarningSeconds{};
    QString m_scheduleWarningStyle{};
    double m_scheduleWarningSeconds{};
    QStringList m_pmsetRegistered{};
    QStringList m_disabledShortcutIDs{};
    QSet<QString> m_reportedScheduleProblems;
};

} // namespace vantle
