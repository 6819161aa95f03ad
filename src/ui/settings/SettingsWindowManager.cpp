#include "ui/settings/SettingsWindowManager.h"

#include "ui/settings/SettingsSelection.h"
#include "ui/settings/SettingsWindow.h"

#include <QGuiApplication>
#include <QScreen>

namespace vantle {

SettingsWindowManager::SettingsWindowManager(const SettingsContext& context, QObject* parent)
    : QObject(parent)
    , m_context(context)
    , m_selection(new SettingsSelection(this)) {}

SettingsWindowManager::~SettingsWindowManager() {
    // A window still open goes with its manager; its pages hold on to the same services.
    delete m_window;
}

void SettingsWindowManager::show(std::optional<SettingsTab> tab) {
    if (tab) {
        m_selection->setTab(*tab);
    }
    if (!m_window) {
        // Deletes itself on close, which clears the pointer: the next request builds a new one.
        m_window = new SettingsWindow(m_context, *m_selection);
        m_window->show();
        // Centred once shown, when the frame the window manager adds is known.
        QScreen* screen =
            m_window->screen() ? m_window->screen() : QGuiApplication::primaryScreen();
        if (screen) {
            QRect frame = m_window->frameGeometry();
            frame.moveCenter(screen->availableGeometry().center());
            m_window->move(frame.topLeft());
        }
    }
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

} // namespace vantle
