#include "monitor/FloatingPanelHost.h"

#include "monitor/CountdownParts.h"

#include <QEvent>
#include <QWidget>
#include <utility>

namespace vantle {

FloatingPanelHost::FloatingPanelHost(PanelPlacement& placement, QObject* parent)
    : QObject(parent)
    , m_placement(placement) {}

FloatingPanelHost::~FloatingPanelHost() {
    if (m_panel) {
        m_panel->removeEventFilter(this);
        delete m_panel.data();
    }
}

void FloatingPanelHost::show(QWidget* panel, const QString& title, QSize size,
                             std::function<void()> onCancel) {
    m_onCancel = std::move(onCancel);
    panel->installEventFilter(this);
    showFloatingPanel(*panel, title, size, m_placement);
    m_panel = panel;
}

void FloatingPanelHost::close() {
    if (!m_panel) {
        return;
    }
    QWidget* panel = m_panel;
    // Detach first: this close is ours, not the user's, so it is no cancel.
    panel->removeEventFilter(this);
    m_panel = nullptr;
    m_onCancel = nullptr;
    panel->close();
}

bool FloatingPanelHost::eventFilter(QObject* watched, QEvent* event) {
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
