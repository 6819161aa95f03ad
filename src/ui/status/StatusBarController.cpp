#include "ui/status/StatusBarController.h"

#include "monitor/AppMonitorService.h"
#include "platform/DesktopAppearance.h"
#include "platform/Log.h"
#include "platform/TrayHost.h"
#include "ui/applist/AppListState.h"
#include "ui/applist/AppListView.h"
#include "ui/applist/Glyph.h"
#include "ui/status/PopupPlacement.h"
#include "ui/status/StatusMenu.h"

#include <QAction>
#include <QCoreApplication>
#include <QCursor>
#include <QEvent>
#include <QFrame>
#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QShortcut>
#include <QSystemTrayIcon>
#include <QVBoxLayout>

namespace vantle {

namespace {

using namespace std::chrono_literals;

// A click on the icon closes the open popup before the icon hears of it; a toggle this soon
// after a close is that same click.
constexpr Milliseconds kReopenGuard = 350ms;
const QString kThemeIconName = QStringLiteral("com.pelmark.vantle-symbolic");

QScreen* screenAt(const QPoint& point) {
    QScreen* screen = QGuiApplication::screenAt(point);
    return screen ? screen : QGuiApplication::primaryScreen();
}

} // namespace

StatusBarController::StatusBarController(AppMonitorService& monitor, AppSettings& settings,
                                         TrayHost& trayHost, DesktopAppearance* appearance,
                                         Clock& clock, Options options,
                                         std::function<void(AppCommand)> onCommand,
                                         std::function<QSet<AppCommand>()> unavailableShortcuts,
                                         QObject* parent)
    : QObject(parent)
    , m_monitor(monitor)
    , m_settings(settings)
    , m_trayHost(trayHost)
    , m_appearance(appearance)
    , m_clock(clock)
    , m_options(std::move(options))
    , m_onCommand(std::move(onCommand))
    , m_unavailable(std::move(unavailableShortcuts))
    , m_state(new AppListState(monitor, settings, m_options.keyCaps, this))
    , m_menu(std::make_unique<QMenu>()) {
    auto* frame = new QFrame;
    frame->setObjectName(QStringLiteral("appListPanel"));
    frame->setWindowTitle(QStringLiteral("Vantle"));
    frame->setFrameShape(QFrame::StyledPanel);
    auto* layout = new QVBoxLayout(frame);
    layout->setContentsMargins(0, 0, 0, 0);
    std::function<void()> openSettings;
    if (m_options.openSettings) {
        openSettings = [this] {
            hidePanel();
            m_options.openSettings();
        };
    }
    m_view = new AppListView(*m_state, std::move(openSettings), frame);
    layout->addWidget(m_view);
    m_panel.reset(frame);
    m_panel->installEventFilter(this);
    // Without a tray the list window is the only way in, so it also offers the way out.
    auto* quit = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), m_panel.get());
    connect(quit, &QShortcut::activated, qApp, &QCoreApplication::quit);

    m_state->onDismiss = [this] { hidePanel(); };
    connect(m_menu.get(), &QMenu::aboutToShow, this, &StatusBarController::rebuildMenu);
    connect(&m_trayHost, &TrayHost::availabilityChanged, this,
            &StatusBarController::trayAvailabilityChanged);
    if (m_appearance) {
        connect(m_appearance, &DesktopAppearance::isDarkChanged, this,
                &StatusBarController::updateIcon);
    }
    rebuildMenu();
}

StatusBarController::~StatusBarController() {
    // The panel reports its hiding to the monitor, which may already be on its way out.
    m_panel->removeEventFilter(this);
}

void StatusBarController::start() {
    if (m_trayHost.isAvailable()) {
        createTrayIcon();
        return;
    }
    m_trayWait = m_clock.singleShot(m_options.trayWait, [this] {
        if (m_tray) {
            return;
        }
        logLine(QStringLiteral("no system tray on this desktop: the app list opens as a window. "
                               "Closing it keeps Vantle running; start vantle again to bring it "
                               "back, or press Ctrl+Q in it to quit Vantle."));
        showWindow();
    });
}

void StatusBarController::trayAvailabilityChanged(bool available) {
    if (available && !m_tray) {
        m_trayWait.reset();
        createTrayIcon();
    } else if (!available && m_tray) {
        logLine(QStringLiteral("the system tray went away; start vantle again to show the app "
                               "list, or wait for the tray to come back"));
    }
}

void StatusBarController::createTrayIcon() {
    m_tray = new QSystemTrayIcon(trayIconImage(), this);
    m_tray->setToolTip(QStringLiteral("Vantle"));
    m_tray->setContextMenu(m_menu.get());
    connect(m_tray, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger) {
                    togglePopup();
                }
            });
    m_tray->show();
    logLine(QStringLiteral("tray icon shown (%1)")
                .arg(m_trayHost.hasStatusNotifierHost() ? QStringLiteral("StatusNotifierItem")
                                                        : QStringLiteral("XEmbed")));
}

QIcon StatusBarController::trayIconImage() const {
    // A StatusNotifierItem host finds the installed symbolic icon by name and colours it for
    // its panel; anything else gets pixels drawn for the desktop's appearance.
    if (m_trayHost.hasStatusNotifierHost() && QIcon::hasThemeIcon(kThemeIconName)) {
        return QIcon::fromTheme(kThemeIconName);
    }
    const bool dark = m_appearance && m_appearance->isDark();
    const QColor ink = dark ? QColor(0xee, 0xee, 0xec) : QColor(0x2e, 0x34, 0x36);
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        icon.addPixmap(glyph(QStringLiteral("vantle-tray"), ink, size).pixmap(size, size));
    }
    return icon;
}

void StatusBarController::updateIcon() {
    if (m_tray) {
        m_tray->setIcon(trayIconImage());
    }
}

bool StatusBarController::isPopup() const {
    return m_panel->windowFlags().testFlag(Qt::Popup);
}

void StatusBarController::showAppList() {
    if (m_tray && m_trayHost.isAvailable()) {
        if (!m_panel->isVisible()) {
            showPopup();
        }
        m_view->focusSearch();
    } else {
        showWindow();
    }
}

void StatusBarController::togglePopup() {
    if (m_panel->isVisible()) {
        hidePanel();
        return;
    }
    if (m_lastPopupClose && m_clock.monotonicNow() - *m_lastPopupClose < kReopenGuard) {
        return;
    }
    showPopup();
}

void StatusBarController::showPopup() {
    if (!isPopup()) {
        m_panel->hide();
        m_panel->setWindowFlags(Qt::Popup | Qt::FramelessWindowHint);
        static_cast<QFrame*>(m_panel.get())->setFrameShape(QFrame::StyledPanel);
    }
    m_panel->adjustSize();
    const QRect icon = m_tray ? m_tray->geometry() : QRect();
    const QPoint pointer = QCursor::pos();
    QScreen* screen = screenAt(icon.isValid() ? icon.center() : pointer);
    m_panel->move(popupPosition(icon, pointer, m_panel->size(), screen->availableGeometry()));
    m_panel->show();
    m_panel->raise();
    m_panel->activateWindow();
    m_view->focusSearch();
}

void StatusBarController::showWindow() {
    if (isPopup() || !m_panel->isVisible()) {
        m_panel->hide();
        m_panel->setWindowFlags(Qt::Window);
        static_cast<QFrame*>(m_panel.get())->setFrameShape(QFrame::NoFrame);
        m_panel->adjustSize();
        const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
        m_panel->move(available.center() - m_panel->rect().center());
    }
    m_windowClosedNoted = false;
    m_panel->show();
    m_panel->raise();
    m_panel->activateWindow();
    m_view->focusSearch();
}

void StatusBarController::hidePanel() {
    m_panel->hide();
}

void StatusBarController::rebuildMenu() {
    // The menu and the popup never show together.
    if (m_panel && m_panel->isVisible() && isPopup()) {
        hidePanel();
    }
    m_menu->clear();
    StatusMenu::Options options;
    options.keyCaps = m_options.keyCaps;
    options.leadWithAppList = m_options.leadMenuWithAppList;
    options.hasSettingsWindow = m_options.openSettings && m_options.openAbout;
    options.hasUpdater = false;
    const QSet<AppCommand> unavailable = m_unavailable ? m_unavailable() : QSet<AppCommand>();
    for (const StatusMenu::Item& item : StatusMenu::items(m_settings, unavailable, options)) {
        if (item.kind == StatusMenu::Kind::separator) {
            m_menu->addSeparator();
            continue;
        }
        // The key cap goes after a tab, where menus show shortcuts; the keys themselves are
        // grabbed system-wide, not by the menu.
        const QString text =
            item.keyCap.isEmpty() ? item.title : item.title + QLatin1Char('\t') + item.keyCap;
        QAction* action = m_menu->addAction(text);
        if (item.command) {
            action->setObjectName(rawValue(*item.command));
        }
        switch (item.kind) {
        case StatusMenu::Kind::showAppList:
            action->setObjectName(QStringLiteral("showAppList"));
            // After the menu has closed, or the popup would close with it.
            connect(action, &QAction::triggered, this, &StatusBarController::showAppList,
                    Qt::QueuedConnection);
            break;
        case StatusMenu::Kind::command:
            connect(action, &QAction::triggered, this, [this, command = *item.command] {
                if (m_onCommand) {
                    m_onCommand(command);
                }
            });
            break;
        case StatusMenu::Kind::about:
            action->setObjectName(QStringLiteral("about"));
            connect(action, &QAction::triggered, this, [this] { m_options.openAbout(); });
            break;
        case StatusMenu::Kind::settings:
            action->setObjectName(QStringLiteral("settings"));
            connect(action, &QAction::triggered, this, [this] { m_options.openSettings(); });
            break;
        case StatusMenu::Kind::quit:
            action->setObjectName(QStringLiteral("quit"));
            connect(action, &QAction::triggered, qApp, &QCoreApplication::quit,
                    Qt::QueuedConnection);
            break;
        case StatusMenu::Kind::checkForUpdates:
        case StatusMenu::Kind::separator:
            break;
        }
    }
}

bool StatusBarController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_panel.get()) {
        switch (event->type()) {
        case QEvent::Show:
            m_monitor.setListVisible(true);
            break;
        case QEvent::Hide:
            m_monitor.setListVisible(false);
            // Only a press outside the popup can be a press on the icon; Escape or a quit is not.
            m_lastPopupClose = QGuiApplication::mouseButtons() != Qt::NoButton
                                   ? std::optional(m_clock.monotonicNow())
                                   : std::nullopt;
            break;
        case QEvent::Close:
            if (!isPopup() && !m_windowClosedNoted) {
                m_windowClosedNoted = true;
                logLine(QStringLiteral("the app list window was closed; Vantle keeps running. "
                                       "Start vantle again to bring it back."));
            }
            break;
        default:
            break;
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace vantle
