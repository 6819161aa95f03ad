#pragma once

#include "ui/settings/SettingsContext.h"
#include "ui/settings/SettingsTab.h"
#include "ui/settings/SettingsWindow.h"

#include <QObject>
#include <QPointer>
#include <optional>

namespace vantle {

class SettingsSelection;

// Owns the one settings window: made on the first request, brought forward on every later one,
// forgotten when the user closes it. The selected tab belongs to the manager, so a new window
// opens on the tab the last one showed.
class SettingsWindowManager final : public QObject {
    Q_OBJECT
public:
    SettingsWindowManager(const SettingsContext& context, QObject* parent = nullptr);
    ~SettingsWindowManager() override;

    // Shows the window on `tab`, or on the tab it already shows when none is given.
    void show(std::optional<SettingsTab> tab = std::nullopt);

    // Null while no window is open.
    SettingsWindow* window() const { return m_window; }
    SettingsSelection& selection() const { return *m_selection; }

private:
    SettingsContext m_context;
    SettingsSelection* m_selection;
    QPointer<SettingsWindow> m_window;
};

} // namespace vantle
