#pragma once

#include "model/RawEnum.h"

#include <QString>

namespace vantle {

// The tabs of the settings window, in the order they appear on screen.
enum class SettingsTab { about, general, autoQuit, exclusions, schedule, shortcuts, advanced };

template <>
struct RawValues<SettingsTab> {
    static constexpr std::array<std::pair<SettingsTab, const char*>, 7> table{{
        {SettingsTab::about, "about"},
        {SettingsTab::general, "general"},
        {SettingsTab::autoQuit, "autoQuit"},
        {SettingsTab::exclusions, "exclusions"},
        {SettingsTab::schedule, "schedule"},
        {SettingsTab::shortcuts, "shortcuts"},
        {SettingsTab::advanced, "advanced"},
    }};
};

// The tab's name on its button, translated.
QString settingsTabTitle(SettingsTab tab);
// The icon theme's name for the tab's symbol, and the bundled glyph used where the theme has none.
QString settingsTabIconName(SettingsTab tab);
QString settingsTabGlyph(SettingsTab tab);

} // namespace vantle
