#include "monitor/AutoQuitCountdownWindow.h"

#include "monitor/AutoQuitCountdownView.h"
#include "platform/PanelPlacement.h"

#include <utility>

namespace vantle {

namespace {
constexpr QSize kPanelSize(320, 280);
}

AutoQuitCountdownWindow::AutoQuitCountdownWindow(PanelPlacement& placement, QObject* parent)
    : QObject(parent)
    , m_host(placement) {}

void AutoQuitCountdownWindow::show(QuitWarningState& state, std::function<void()> onQuitNow,
                                   std::function<void()> onCancel) {
    if (m_host.isOpen()) {
        return;
    }
    auto* view = new AutoQuitCountdownView(state, std::move(onQuitNow), onCancel);
    m_host.show(view, QStringLiteral("Auto-Quit"), kPanelSize, std::move(onCancel));
}

void AutoQuitCountdownWindow::close() {
    m_host.close();
}

} // namespace vantle
