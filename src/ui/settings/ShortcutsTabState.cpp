#include "ui/settings/ShortcutsTabState.h"

#include "model/AppSettings.h"
#include "system/HotKeyService.h"

namespace vantle {

ShortcutsTabState::ShortcutsTabState(AppSettings& settings, const HotKeyService& hotKeys,
                                     KeyCapStyle style)
    : m_settings(settings)
    , m_hotKeys(hotKeys)
    , m_style(style) {}

QList<ShortcutsTabState::Row> ShortcutsTabState::rows(Section section) const {
    QList<Row> rows;
    for (const auto& [command, raw] : RawValues<AppCommand>::table) {
        const bool global = isGlobalCommand(command);
        if (global != (section == Section::systemWide)) {
            continue;
        }
        Row row{.command = command};
        if (global) {
            // The desktop may have bound other keys than the ones asked for.
            row.keyCap = m_hotKeys.keyCap(command, m_style);
            row.hasSwitch = true;
            row.isOn = m_settings.isShortcutEnabled(command);
            row.isUnavailable = m_hotKeys.isUnavailable(command);
        } else {
            row.keyCap = commandBinding(command).keyCap(m_style);
        }
        rows.append(row);
    }
    return rows;
}

void ShortcutsTabState::setEnabled(AppCommand command, bool on) {
    if (isGlobalCommand(command)) {
        m_settings.setShortcut(command, on);
    }
}

ShortcutsTabState::Desktop ShortcutsTabState::desktop() const {
    if (!m_hotKeys.offersHotKeys()) {
        return Desktop::noHotKeys;
    }
    return m_hotKeys.desktopBindsKeys() ? Desktop::desktopBindsKeys : Desktop::appGrabsKeys;
}

} // namespace vantle
