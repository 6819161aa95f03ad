#pragma once

#include "model/AppCommand.h"
#include "model/KeyCombo.h"
#include "platform/Clock.h"

#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <functional>
#include <memory>

class QMenu;
class QSystemTrayIcon;
class QWidget;

namespace vantle {

class AppListState;
class AppListView;
class AppMonitorService;
class AppSettings;
class DesktopAppearance;
class TrayHost;

// Vantle's one permanent piece of screen: the tray icon, its menu, and the app list it opens as
// a popup. Where the desktop has no tray the list is an ordinary window instead, opened at start
// and on every later launch. The controller tells the monitor while the list is on screen, so
// it polls only then; menu commands go to `onCommand`, which performs them.
class StatusBarController final : public QObject {
    Q_OBJECT
public:
    struct Options {
        KeyCapStyle keyCaps = KeyCapStyle::linuxDesktop;
        // Put "Show Running Apps" first in the menu (trays that open the menu on a left click).
        bool leadMenuWithAppList = true;
        // How long to wait at start for a panel that comes up after Vantle before falling back
        // to the window.
        Milliseconds trayWait{30'000};
        // Empty until those windows exist; then the menu offers About and Settings.
        std::function<void()> openSettings;
        std::function<void()> openAbout;
    };

    StatusBarController(AppMonitorService& monitor, AppSettings& settings, TrayHost& trayHost,
                        DesktopAppearance* appearance, Clock& clock, Options options,
                        std::function<void(AppCommand)> onCommand,
                        std::function<QSet<AppCommand>()> unavailableShortcuts,
                        QObject* parent = nullptr);
    ~StatusBarController() override;

    // Shows the tray icon, or waits for a tray and falls back to the window.
    void start();
    // What a second launch asks for: the popup at the icon, or the window without a tray.
    void showAppList();
    // A click on the icon: opens the popup, or closes it when open.
    void togglePopup();

    bool hasTrayIcon() const { return m_tray != nullptr; }
    QSystemTrayIcon* trayIcon() const { return m_tray; }
    QWidget* panel() const { return m_panel.get(); }
    bool isPopup() const;
    AppListState& listState() const { return *m_state; }
    // The menu as it is shown; rebuilt each time it is about to open.
    QMenu* menu() const { return m_menu.get(); }
    void rebuildMenu();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void trayAvailabilityChanged(bool available);
    void createTrayIcon();
    void showPopup();
    void showWindow();
    void hidePanel();
    void updateIcon();
    QIcon trayIconImage() const;

    AppMonitorService& m_monitor;
    AppSettings& m_settings;
    TrayHost& m_trayHost;
    QPointer<DesktopAppearance> m_appearance;
    Clock& m_clock;
    Options m_options;
    std::function<void(AppCommand)> m_onCommand;
    std::function<QSet<AppCommand>()> m_unavailable;

    AppListState* m_state;
    std::unique_ptr<QWidget> m_panel;
    AppListView* m_view = nullptr;
    std::unique_ptr<QMenu> m_menu;
    QSystemTrayIcon* m_tray = nullptr;
    Timer m_trayWait;
    // When the popup last closed: the click on the icon that closed it must not reopen it.
    std::optional<Milliseconds> m_lastPopupClose;
    bool m_windowClosedNoted = false;
};

} // namespace vantle
