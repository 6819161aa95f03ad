#include "ui/applist/AppListState.h"

#include "model/AppSettings.h"
#include "monitor/AppMonitorService.h"

#include <QLocale>

namespace vantle {

AppListState::AppListState(AppMonitorService& monitor, AppSettings& settings, KeyCapStyle keyCaps,
                           QObject* parent)
    : QObject(parent)
    , m_monitor(monitor)
    , m_settings(settings)
    , m_keyCaps(keyCaps) {
    connect(&m_monitor, &AppMonitorService::runningAppsChanged, this, [this] {
        // A pid that is gone is forgotten, so the system reusing it later starts ticked.
        QSet<qint32> running;
        for (const AppInfo& app : m_monitor.runningApps()) {
            running.insert(app.id);
        }
        m_deselected.intersect(running);
        rebuild();
    });
    connect(&m_monitor, &AppMonitorService::isListVisibleChanged, this,
            &AppListState::listVisibilityChanged);
    connect(&m_settings, &AppSettings::showBackgroundAppsChanged, this, &AppListState::rebuild);
    rebuild();
}

void AppListState::rebuild() {
    const bool showBackground = m_settings.showBackgroundApps();
    const QLocale locale;
    const QString needle = locale.toLower(m_searchText);
    m_visible.clear();
    for (const AppInfo& app : m_monitor.runningApps()) {
        if (app.isBackground && !showBackground) {
            continue;
        }
        if (!needle.isEmpty() && !locale.toLower(app.name).contains(needle)) {
            continue;
        }
        m_visible.append(app);
    }
    emit changed();
}

void AppListState::listVisibilityChanged() {
    if (m_monitor.isListVisible()) {
        emit focusSearchRequested();
    } else if (!m_searchText.isEmpty()) {
        // Ticks and the mode stay; a search is for one look at the list.
        setSearchText({});
    }
}

QList<AppInfo> AppListState::selectedApps() const {
    QList<AppInfo> selected;
    for (const AppInfo& app : m_visible) {
        if (!m_deselected.contains(app.id)) {
            selected.append(app);
        }
    }
    return selected;
}

bool AppListState::allSelected() const {
    return !m_visible.isEmpty() &&
           std::none_of(m_visible.cbegin(), m_visible.cend(),
                        [this](const AppInfo& app) { return m_deselected.contains(app.id); });
}

bool AppListState::isLoading() const {
    return m_monitor.runningApps().isEmpty();
}

QString AppListState::keyCap(AppCommand command) const {
    return commandBinding(command).keyCap(m_keyCaps);
}

QString AppListState::searchPlaceholder() const {
    return tr("Search apps (%1)").arg(keyCap(AppCommand::focusSearch));
}

QString AppListState::selectAllHelp() const {
    // Whole sentences, so a translation can order the words its own way.
    const QString key = keyCap(AppCommand::selectAll);
    if (m_searchText.isEmpty()) {
        return allSelected() ? tr("Deselect all (%1)").arg(key) : tr("Select all (%1)").arg(key);
    }
    return allSelected() ? tr("Deselect all matching apps (%1)").arg(key)
                         : tr("Select all matching apps (%1)").arg(key);
}

QString AppListState::countText() const {
    return QStringLiteral("%1 / %2").arg(selectedApps().size()).arg(m_visible.size());
}

QString AppListState::quitButtonTitle() const {
    return m_forceMode ? tr("Force Quit") : tr("Quit Selected");
}

QString AppListState::quitButtonHelp() const {
    const QString key = keyCap(AppCommand::quitSelected);
    return m_forceMode ? tr("Force quit the ticked apps (%1)").arg(key)
                       : tr("Quit the ticked apps (%1)").arg(key);
}

QString AppListState::emptyText() const {
    return isLoading() ? tr("Loading…") : tr("No apps match");
}

QString AppListState::rowQuitHelp(const AppInfo& app) const {
    return m_forceMode ? tr("Force quit %1").arg(app.name) : tr("Quit %1").arg(app.name);
}

QString AppListState::confirmationTitle() const {
    const QList<AppInfo> selected = selectedApps();
    if (selected.size() == 1) {
        return tr("Force quit %1?").arg(selected.constFirst().name);
    }
    if (selected.isEmpty()) {
        return tr("Force quit this app?");
    }
    return tr("Force quit %1 apps?").arg(selected.size());
}

QString AppListState::confirmationMessage() {
    return tr(
        "They will be killed immediately. Anything unsaved is lost, with no chance to save it.");
}

void AppListState::setSearchText(const QString& text) {
    if (text == m_searchText) {
        return;
    }
    m_searchText = text;
    rebuild();
}

void AppListState::setSelected(qint32 pid, bool selected) {
    if (selected == isSelected(pid)) {
        return;
    }
    if (selected) {
        m_deselected.remove(pid);
    } else {
        m_deselected.insert(pid);
    }
    emit changed();
}

void AppListState::setAllSelected(bool selected) {
    for (const AppInfo& app : std::as_const(m_visible)) {
        if (selected) {
            m_deselected.remove(app.id);
        } else {
            m_deselected.insert(app.id);
        }
    }
    emit changed();
}

void AppListState::setForceMode(bool force) {
    if (force == m_forceMode) {
        return;
    }
    m_forceMode = force;
    if (!force) {
        m_confirming = false;
    }
    emit changed();
}

void AppListState::quitSelected() {
    const QList<AppInfo> selected = selectedApps();
    if (selected.isEmpty()) {
        return;
    }
    if (m_forceMode) {
        m_confirming = true;
        emit changed();
        return;
    }
    m_monitor.quit(selected, {});
    m_monitor.refreshAfterQuit();
    if (onDismiss) {
        onDismiss();
    }
}

void AppListState::confirmForceQuit() {
    if (!m_confirming) {
        return;
    }
    m_confirming = false;
    m_monitor.forceQuit(selectedApps());
    m_monitor.refreshAfterQuit();
    emit changed();
}

void AppListState::cancelForceQuit() {
    if (m_confirming) {
        m_confirming = false;
        emit changed();
    }
}

void AppListState::quitOne(qint32 pid) {
    for (const AppInfo& app : std::as_const(m_visible)) {
        if (app.id != pid) {
            continue;
        }
        if (m_forceMode) {
            m_monitor.forceQuit({app});
        } else {
            m_monitor.quit({app}, {});
        }
        return;
    }
}

} // namespace vantle
