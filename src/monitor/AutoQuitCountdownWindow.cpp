#include "monitor/AutoQuitCountdownWindow.h"

#include "monitor/AutoQuitCountdownView.h"
#include "monitor/CountdownParts.h"
#include "platform/PanelPlacement.h"

#include <QEvent>
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
    panel->installEventFilter(this);
    showFloatingPanel(*panel, QStringLiteral("Auto-Quit"), kPanelSize, m_placement);
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
