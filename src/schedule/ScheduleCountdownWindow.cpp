#include "schedule/ScheduleCountdownWindow.h"

#include "model/RawEnum.h"
#include "monitor/CountdownParts.h"
#include "platform/PanelPlacement.h"
#include "schedule/ScheduleCountdownView.h"
#include "schedule/ScheduleWarningState.h"

#include <QEvent>
#include <utility>

namespace vantle {

namespace {
constexpr QSize kPanelSize(320, 260);
}

ScheduleCountdownWindow::ScheduleCountdownWindow(PanelPlacement& placement, QObject* parent)
    : QObject(parent)
    , m_placement(placement) {}

ScheduleCountdownWindow::~ScheduleCountdownWindow() {
    if (m_panel) {
        m_panel->removeEventFilter(this);
        delete m_panel.data();
    }
}

void ScheduleCountdownWindow::show(ScheduleWarningState& state, std::function<void()> onProceed,
                                   std::function<void()> onCancel) {
    if (m_panel) {
        return;
    }
    m_onCancel = onCancel;
    auto* panel = new ScheduleCountdownView(state, std::move(onProceed), std::move(onCancel));
    panel->installEventFilter(this);
    showFloatingPanel(*panel, rawValue(state.action()), kPanelSize, m_placement);
    m_panel = panel;
}

void ScheduleCountdownWindow::close() {
    if (!m_panel) {
        return;
    }
    ScheduleCountdownView* panel = m_panel;
    // Detach first: this close is ours, not the user's, so it skips nothing.
    panel->removeEventFilter(this);
    m_panel = nullptr;
    m_onCancel = nullptr;
    panel->close();
}

QWidget* ScheduleCountdownWindow::panel() const {
    return m_panel;
}

bool ScheduleCountdownWindow::eventFilter(QObject* watched, QEvent* event) {
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
