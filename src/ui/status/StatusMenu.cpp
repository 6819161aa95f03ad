#include "ui/status/StatusMenu.h"

#include "model/AppSettings.h"

#include <QCoreApplication>

namespace vantle {

namespace {
QString commandKeyCap(QChar key, KeyCapStyle style) {
    KeyCombo combo;
    combo.character = key;
    combo.modifiers = KeyCombo::command;
    return combo.displayString(style, false);
}
} // namespace

QList<StatusMenu::Item> StatusMenu::items(const AppSettings& settings,
                                          const QSet<AppCommand>& unavailable,
                                          const Options& options) {
    QList<Item> items;
    if (options.leadWithAppList) {
        items.append({Kind::showAppList,
                      QCoreApplication::translate("StatusMenu", "Show Running Apps"),
                      {},
                      std::nullopt});
        items.append({Kind::separator, {}, {}, std::nullopt});
    }
    for (int i = 0; i < kGlobalCommandCount; ++i) {
        const auto command = static_cast<AppCommand>(i);
        const CommandBinding& binding = commandBinding(command);
        const bool showsKey = settings.isShortcutEnabled(command) && !unavailable.contains(command);
        items.append({Kind::command,
                      QCoreApplication::translate("vantle::CommandBinding", binding.title),
                      showsKey ? binding.keyCap(options.keyCaps) : QString(), command});
    }
    items.append({Kind::separator, {}, {}, std::nullopt});
    if (options.hasSettingsWindow) {
        items.append({Kind::about,
                      QCoreApplication::translate("StatusMenu", "About Vantle"),
                      {},
                      std::nullopt});
        items.append({Kind::settings, QCoreApplication::translate("StatusMenu", "Settings…"),
                      commandKeyCap(QLatin1Char(','), options.keyCaps), std::nullopt});
    }
    if (options.hasUpdater) {
        items.append({Kind::checkForUpdates,
                      QCoreApplication::translate("StatusMenu", "Check for Updates…"),
                      {},
                      std::nullopt});
    }
    if (options.hasSettingsWindow || options.hasUpdater) {
        items.append({Kind::separator, {}, {}, std::nullopt});
    }
    items.append({Kind::quit, QCoreApplication::translate("StatusMenu", "Quit Vantle"),
                  commandKeyCap(QLatin1Char('q'), options.keyCaps), std::nullopt});
    return items;
}

} // namespace vantle
