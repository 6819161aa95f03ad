#include "ui/settings/SettingsTabs.h"

#include "ui/settings/AboutTab.h"
#include "ui/settings/AdvancedTab.h"
#include "ui/settings/AutoQuitTab.h"
#include "ui/settings/ExclusionsTab.h"
#include "ui/settings/GeneralTab.h"
#include "ui/settings/ScheduleTab.h"
#include "ui/settings/ShortcutsTab.h"

namespace vantle {

QWidget* makeTab(SettingsTab tab, const SettingsContext& context, QWidget* parent) {
    switch (tab) {
    case SettingsTab::general:
        return new GeneralTab(context, parent);
    case SettingsTab::exclusions:
        return new ExclusionsTab(context, parent);
    case SettingsTab::about:
        return new AboutTab(context, parent);
    case SettingsTab::autoQuit:
        return new AutoQuitTab(context, parent);
    case SettingsTab::schedule:
        return new ScheduleTab(context, parent);
    case SettingsTab::shortcuts:
        return new ShortcutsTab(context, parent);
    case SettingsTab::advanced:
        return new AdvancedTab(context, parent);
    }
    return new GeneralTab(context, parent);
}

} // namespace vantle
