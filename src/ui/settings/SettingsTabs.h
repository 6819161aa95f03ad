#pragma once

#include "ui/settings/SettingsTab.h"

class QWidget;

namespace vantle {

struct SettingsContext;

// Builds the page of one tab. The one place that knows which class shows which tab.
QWidget* makeTab(SettingsTab tab, const SettingsContext& context, QWidget* parent = nullptr);

} // namespace vantle
