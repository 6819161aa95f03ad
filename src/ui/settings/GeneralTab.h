#pragma once

#include "ui/settings/SettingsContext.h"

#include <QWidget>

namespace vantle {

// Start at login, what the app list shows, and whether tray-only apps are spared. The Dock
// and update controls have no counterpart on this platform and are not shown.
class GeneralTab final : public QWidget {
    Q_OBJECT
public:
    explicit GeneralTab(const SettingsContext& context, QWidget* parent = nullptr);
};

} // namespace vantle
