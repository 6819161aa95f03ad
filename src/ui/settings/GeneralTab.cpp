#include "ui/settings/GeneralTab.h"

#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "platform/Platform.h"
#include "ui/settings/HelpText.h"
#include "ui/settings/LaunchAtLogin.h"
#include "ui/settings/SettingsBinding.h"
#include "ui/settings/SettingsWidgets.h"

#include <QCheckBox>
#include <QVBoxLayout>

namespace vantle {

namespace {

QCheckBox* toggle(const QString& property, const QString& text, QWidget* parent) {
    auto* box = new QCheckBox(text, parent);
    box->setObjectName(property);
    return box;
}

} // namespace

GeneralTab::GeneralTab(const SettingsContext& context, QWidget* parent)
    : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 20, 28, 20);
    layout->setSpacing(10);
    layout->addWidget(toggle(QStringLiteral("launchAtLogin"), tr("Launch Vantle at login"), this));
    layout->addWidget(
        toggle(QStringLiteral("showBackgroundApps"), tr("Show background apps in list"), this));
    const ProductTexts& texts = *context.platform.texts;
    layout->addWidget(toggle(QStringLiteral("protectMenuBarApps"),
                             productText(texts.protectMenuBarAppsTitle), this));
    auto* help = new HelpText(productText(texts.protectMenuBarAppsHelp), this);
    help->setContentsMargins(24, 0, 0, 0);
    layout->addWidget(help);
    layout->addStretch();

    bindSettings(this, context.settings);
    new LaunchAtLogin(context.settings, *context.platform.loginItem, this);
}

} // namespace vantle
