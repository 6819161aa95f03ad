#include "ui/settings/SettingsTab.h"

#include <QCoreApplication>

namespace vantle {

QString settingsTabTitle(SettingsTab tab) {
    switch (tab) {
    case SettingsTab::about:
        return QCoreApplication::translate("SettingsTab", "About");
    case SettingsTab::general:
        return QCoreApplication::translate("SettingsTab", "General");
    case SettingsTab::autoQuit:
        return QCoreApplication::translate("SettingsTab", "Auto-Quit");
    case SettingsTab::exclusions:
        return QCoreApplication::translate("SettingsTab", "Exclusions");
    case SettingsTab::schedule:
        return QCoreApplication::translate("SettingsTab", "Schedule");
    case SettingsTab::shortcuts:
        return QCoreApplication::translate("SettingsTab", "Shortcuts");
    case SettingsTab::advanced:
        return QCoreApplication::translate("SettingsTab", "Advanced");
    }
    return {};
}

QString settingsTabIconName(SettingsTab tab) {
    // Names from the freedesktop icon naming list where one fits; the rest are common in themes.
    switch (tab) {
    case SettingsTab::about:
        return QStringLiteral("help-about");
    case SettingsTab::general:
        return QStringLiteral("preferences-system");
    case SettingsTab::autoQuit:
        return QStringLiteral("appointment-soon");
    case SettingsTab::exclusions:
        return QStringLiteral("action-unavailable");
    case SettingsTab::schedule:
        return QStringLiteral("x-office-calendar");
    case SettingsTab::shortcuts:
        return QStringLiteral("input-keyboard");
    case SettingsTab::advanced:
        return QStringLiteral("preferences-other");
    }
    return {};
}

QString settingsTabGlyph(SettingsTab tab) {
    switch (tab) {
    case SettingsTab::about:
        return QStringLiteral("info-circle");
    case SettingsTab::general:
        return QStringLiteral("settings");
    case SettingsTab::autoQuit:
        return QStringLiteral("timer");
    case SettingsTab::exclusions:
        return QStringLiteral("nosign");
    case SettingsTab::schedule:
        return QStringLiteral("calendar-clock");
    case SettingsTab::shortcuts:
        return QStringLiteral("keyboard");
    case SettingsTab::advanced:
        return QStringLiteral("gears");
    }
    return {};
}

} // namespace vantle
