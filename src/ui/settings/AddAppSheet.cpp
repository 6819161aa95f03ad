#include "ui/settings/AddAppSheet.h"

#include "ui/settings/AutoQuitTabState.h"
#include "ui/settings/SettingsWidgets.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace vantle {

AddAppSheet::AddAppSheet(AutoQuitTabState& state, QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("addAppSheet"));
    setWindowTitle(tr("Add App to Watch"));
    setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(sectionHeading(tr("Add App to Watch"), this));

    const QList<AppInfo> apps = state.addableApps();
    if (apps.isEmpty()) {
        auto* symbol = new QLabel(this);
        symbol->setPixmap(
            symbolIcon(QStringLiteral("checkmark.circle"), secondaryColor(this), 32).pixmap(32));
        symbol->setAlignment(Qt::AlignCenter);
        auto* text = new QLabel(tr("All running apps are already configured."), this);
        text->setObjectName(QStringLiteral("allConfigured"));
        text->setAlignment(Qt::AlignCenter);
        layout->addStretch();
        layout->addWidget(symbol);
        layout->addWidget(text);
        layout->addStretch();
    } else {
        auto* list = new QWidget;
        auto* rows = new QVBoxLayout(list);
        rows->setSpacing(2);
        for (const AppInfo& app : apps) {
            const QIcon icon = app.icon.isNull()
                                   ? symbolIcon(QStringLiteral("app.fill"), secondaryColor(this))
                                   : app.icon;
            auto* button = new QPushButton(icon, app.name, list);
            button->setObjectName(QStringLiteral("addableApp"));
            button->setFlat(true);
            button->setIconSize(QSize(20, 20));
            button->setStyleSheet(QStringLiteral("text-align: left; padding: 4px;"));
            if (!app.bundleIdentifier) {
                button->setToolTip(tr("No desktop entry matches this app, so a rule could not "
                                      "tell it apart from others."));
            }
            connect(button, &QPushButton::clicked, this, [this, &state, app] {
                state.addRule(app);
                accept();
            });
            rows->addWidget(button);
        }
        rows->addStretch();
        auto* scroll = new QScrollArea(this);
        scroll->setWidget(list);
        scroll->setWidgetResizable(true);
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        layout->addWidget(scroll);
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    resize(360, 420);
}

} // namespace vantle
