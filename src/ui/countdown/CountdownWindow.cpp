#include "ui/countdown/CountdownWindow.h"

#include "platform/PanelPlacement.h"
#include "system/CountdownState.h"
#include "ui/countdown/CountdownPanel.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QStyle>
#include <QWindow>
#include <utility>

namespace vantle {

CountdownWindow::CountdownWindow(PanelPlacement& placement, QObject* parent)
    : QObject(parent)
    , m_placement(placement) {}

CountdownWindow::~CountdownWindow() {
    if (m_panel) {
        m_panel->removeEventFilter(this);
        delete m_panel.data();
    }
}

void CountdownWindow::show(CountdownState& state, std::function<void(bool confirmed)> onAnswer) {
    if (m_panel) {
        return;
    }
    m_onAnswer = onAnswer;
    auto* panel = new CountdownPanel(state, std::move(onAnswer));
    panel->setWindowFlags(Qt::Tool | Qt::WindowStaysOnTopHint | Qt::CustomizeWindowHint |
                          Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    panel->setAttribute(Qt::WA_ShowWithoutActivating);
    // Its buttons end the warning, which closes it, from inside their own click handlers: it
    // must go later, not now.
    panel->setAttribute(Qt::WA_DeleteOnClose);
    // A tray app keeps running when its last window goes.
    panel->setAttribute(Qt::WA_QuitOnClose, false);
    const QSize size = state.content().panelSize;
    panel->setFixedSize(size);
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        panel->setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size,
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

void CountdownWindow::close() {
    if (!m_panel) {
        return;
    }
    QWidget* panel = m_panel;
    // Detach first: this close is ours, not the user's, so it answers nothing.
    panel->removeEventFilter(this);
    m_panel = nullptr;
    m_onAnswer = nullptr;
    panel->close();
}

bool CountdownWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close && watched == m_panel.data()) {
        watched->removeEventFilter(this);
        m_panel = nullptr;
        // Taken before the call: cancelling closes the panel again, which must find nothing.
        if (const auto onAnswer = std::exchange(m_onAnswer, nullptr)) {
            onAnswer(false);
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace vantle
