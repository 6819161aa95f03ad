#pragma once

#include "model/AppCommand.h"
#include "model/KeyCombo.h"

#include <QList>
#include <QSet>
#include <QString>
#include <optional>

namespace vantle {

class AppSettings;

// The contents of the tray item's menu, worked out fresh each time it opens, so the key caps
// always follow the switched-off and unclaimable shortcuts.
class StatusMenu final {
public:
    enum class Kind { showAppList, command, separator, about, settings, checkForUpdates, quit };

    struct Item {
        Kind kind;
        QString title;
        // Empty when the item shows no key.
        QString keyCap;
        std::optional<AppCommand> command;
    };

    struct Options {
        KeyCapStyle keyCaps = KeyCapStyle::macOS;
        // Some trays open the menu on a plain click, which then never reaches the list.
        bool leadWithAppList = false;
        // The settings window exists: About and Settings lead somewhere.
        bool hasSettingsWindow = false;
        // The app updates itself (rather than through a package manager).
        bool hasUpdater = false;
    };

    static QList<Item> items(const AppSettings& settings, const QSet<AppCommand>& unavailable,
                             const Options& options);
};

} // namespace vantle
