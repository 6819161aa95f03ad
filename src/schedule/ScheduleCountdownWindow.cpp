#include "schedule/ScheduleCountdownWindow.h"

#include "model/RawEnum.h"
#include "platform/PanelPlacement.h"
#include "schedule/ScheduleCountdownView.h"
#include "schedule/ScheduleWarningState.h"

#include <utility>

namespace vantle {

namespace {
constexpr QSize kPanelSize(320, 260);
}

ScheduleCountdownWindow::ScheduleCountdownWindow(PanelPlacement& placement, QObject* parent)
    : QObject(parent)
    , m_host(placement) {}

void ScheduleCountdownWindow::show(ScheduleWarningState& state, std::function<void()> onProceed,
                                   std::function<void()> onCancel) {
    if (m_host.isOpen()) {
        return;
    }
    auto* view = new ScheduleCountdownView(state, std::move(onProceed), onCancel);
    m_host.show(view, rawValue(state.action()), kPanelSize, std::move(onCancel));
}

void ScheduleCountdownWindow::close() {
    m_host.close();
}

} // namespace vantle
