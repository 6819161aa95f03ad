#pragma once

#include "model/AppInfo.h"
#include "model/KeyCombo.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <functional>

namespace vantle {

class AppMonitorService;
class AppSettings;

// Everything the app list shows and does, without a widget: the search, the ticks (stored as
// the unticked pids, so a new app starts ticked), force-quit mode and its confirmation, and the
// texts derived from them. It lives as long as the list, so it survives closing the popup.
class AppListState final : public QObject {
    Q_OBJECT
public:
    AppListState(AppMonitorService& monitor, AppSettings& settings, KeyCapStyle keyCaps,
                 QObject* parent = nullptr);

    // Closes the popup (or the window) after a quit of the selection.
    std::function<void()> onDismiss;

    // The monitor's apps, without background ones unless shown, narrowed by the search; in the
    // monitor's order.
    const QList<AppInfo>& visibleApps() const { return m_visible; }
    QList<AppInfo> selectedApps() const;
    bool isSelected(qint32 pid) const { return !m_deselected.contains(pid); }
    bool allSelected() const;
    const QSet<qint32>& deselectedPIDs() const { return m_deselected; }

    const QString& searchText() const { return m_searchText; }
    bool isForceMode() const { return m_forceMode; }
    bool isConfirmingForceQuit() const { return m_confirming; }
    // The monitor has listed nothing yet (or there is nothing to list).
    bool isLoading() const;

    // Texts of the controls.
    QString searchPlaceholder() const;
    QString selectAllHelp() const;
    QString countText() const;
    QString quitButtonTitle() const;
    QString quitButtonHelp() const;
    bool canQuitSelected() const { return !selectedApps().isEmpty(); }
    QString emptyText() const;
    QString rowQuitHelp(const AppInfo& app) const;
    QString confirmationTitle() const;
    static QString confirmationMessage();
    QString keyCap(AppCommand command) const;

    void setSearchText(const QString& text);
    void setSelected(qint32 pid, bool selected);
    // Ticks (or unticks) every visible app; hidden ones keep their state.
    void setAllSelected(bool selected);
    // The select-all shortcut: all when not all are ticked, else none.
    void toggleAll() { setAllSelected(!allSelected()); }
    void setForceMode(bool force);

    // The main button. In force-quit mode it only asks for the confirmation.
    void quitSelected();
    void confirmForceQuit();
    void cancelForceQuit();
    // A row's own button: at once, forced in force-quit mode, never confirmed.
    void quitOne(qint32 pid);

signals:
    // Any of the above changed: the visible apps, the ticks, the search, the mode.
    void changed();
    // The list has just become visible: the search field should take the keyboard.
    void focusSearchRequested();

private:
    void rebuild();
    void listVisibilityChanged();

    AppMonitorService& m_monitor;
    AppSettings& m_settings;
    const KeyCapStyle m_keyCaps;
    QList<AppInfo> m_visible;
    QSet<qint32> m_deselected;
    QString m_searchText;
    bool m_forceMode = false;
    bool m_confirming = false;
};

} // namespace vantle
