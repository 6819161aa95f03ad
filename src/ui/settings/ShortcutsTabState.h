#pragma once

#include "model/AppCommand.h"
#include "model/KeyCombo.h"

#include <QList>
#include <QString>

namespace vantle {

class AppSettings;
class HotKeyService;

// What the Shortcuts tab shows and changes, apart from any widget.
class ShortcutsTabState {
public:
    struct Row {
        AppCommand command{};
        QString keyCap{};
        // System-wide rows have a switch; app-list rows are always on.
        bool hasSwitch = false;
        bool isOn = true;
        bool isUnavailable = false;
        // The key cap is dimmed when the shortcut is off or could not be claimed.
        bool isDimmed() const { return hasSwitch && (!isOn || isUnavailable); }
    };
    enum class Section { systemWide, appList };
    // What the desktop lets the app do with system-wide keys, for the line under that section.
    enum class Desktop { appGrabsKeys, desktopBindsKeys, noHotKeys };

    ShortcutsTabState(AppSettings& settings, const HotKeyService& hotKeys, KeyCapStyle style);

    QList<Row> rows(Section section) const;
    // Switches a system-wide shortcut on or off; app-list shortcuts cannot be switched.
    void setEnabled(AppCommand command, bool on);
    Desktop desktop() const;

private:
    AppSettings& m_settings;
    const HotKeyService& m_hotKeys;
    KeyCapStyle m_style;
};

} // namespace vantle
