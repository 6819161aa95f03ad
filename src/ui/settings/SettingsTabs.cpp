#include "ui/settings/SettingsTabs.h"

#include "ui/settings/ExclusionsTab.h"
#include "ui/settings/GeneralTab.h"

#include <QCoreApplication>
#include <QLabel>
#include <QVBoxLayout>

namespace vantle {

namespace {

// For the tabs that are not built yet: a page that says what will be there.
QWidget* placeholder(SettingsTab tab, QWidget* parent) {
    auto* page = new QWidget(parent);
    auto* layout = new QVBoxLayout(page);
    auto* label = new QLabel(
        QCoreApplication::translate("SettingsTabs", "%1 settings are not available in this build.")
            .arg(settingsTabTitle(tab)),
        page);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    layout->addWidget(label);
    return page;
}

} // namespace

QWidget* makeTab(SettingsTab tab, const SettingsContext& context, QWidget* parent) {
    switch (tab) {
    case SettingsTab::general:
        return new GeneralTab(context, parent);
    case SettingsTab::exclusions:
        return new ExclusionsTab(context, parent);
    case SettingsTab::about:
    case SettingsTab::autoQuit:
    case SettingsTab::schedule:
    case SettingsTab::shortcuts:
    case SettingsTab::advanced:
        break;
    }
    return placeholder(tab, parent);
}

} // namespace vantle
