#include "monitor/AutoQuitCountdownWindow.h"

#include "monitor/AutoQuitCountdownView.h"
#include "platform/PanelPlacement.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QStyle>
#include <QWindow>
#include <utility>

namespace vantle {

namespace {
constexpr QSize kPanelSize(320, 280);
}

AutoQuitCountdownWindow::AutoQuitCountdownWindow(PanelPlacement& placement, QObject* parent)
    : QObject(parent)
    , m_placement(placement) {}

AutoQuitCountdownWindow::~AutoQuitCountdownWindow() {
    if (m_panel) {
        m_panel->removeEventFilter(this);
        delete m_panel.data();
    }
}

void AutoQuitCountdownWindow::show(QuitWarningState& state, std::function<void()> onQuitNow,
                                   std::function<void()> onCancel) {
    if (m_panel) {
        return;
    }
    m_onCancel = onCancel;
    auto* panel = new AutoQuitCountdownView(state, std::move(onQuitNow), std::move(onCancel));
    panel->setWindowFlags(Qt::Tool | Qt::WindowStaysOnTopHint | Qt::CustomizeWindowHint |
                          Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    panel->setWindowTitle(QStringLiteral("Auto-Quit"));
    panel->setAttribute(Qt::WA_ShowWithoutActivating);
    // Its buttons close it from inside their own click handlers, so it must go later, not now.
    panel->setAttribute(Qt::WA_DeleteOnClose);
    // A tray app keeps running when its last window goes.
    panel->setAttribute(Qt::WA_QuitOnClose, false);
    panel->setFixedSize(kPanelSize);
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        panel->setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, kPanelSize,
                                               screen->availableGeometry()));
    }
    panel->installEventFilter(this);
    // Asking for the id creates the native window, which has to be prepared before it is shown.
    panel->winId();
    m_placement.prepare(*panel->windowHandle());
    panel->show();
    panel->raise();
    m_panel = panel;
}

void AutoQuitCountdownWindow::close() {
    if (!m_panel) {
        return;
    }
    AutoQuitCountdownView* panel = m_panel;
    // Detach first: this close is ours, not the user's, so it is no cancel.
    panel->removeEventFilter(this);
    m_panel = nullptr;
    m_onCancel = nullptr;
    panel->close();
}

QWidget* AutoQuitCountdownWindow::panel() const {
    return m_panel;
}

bool AutoQuitCountdownWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close && watched == m_panel.data()) {
        watched->removeEventFilter(this);
        m_panel = nullptr;
        // Taken before the call: cancelling closes the panel again, which must find nothing.
        if (const std::function<void()> onCancel = std::exchange(m_onCancel, nullptr)) {
            onCancel();
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace vantle
