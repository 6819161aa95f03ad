#include "ui/settings/ShortcutsTab.h"

#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "schedule/PrivilegedRunner.h"
#include "system/HotKeyService.h"
#include "ui/settings/SettingsWidgets.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>

namespace vantle {

namespace {

using Section = ShortcutsTabState::Section;
using Desktop = ShortcutsTabState::Desktop;

constexpr qreal kDimmedOpacity = 0.35;

QString rowName(AppCommand command) {
    return QStringLiteral("shortcut_") + rawValue(command);
}

QString title(AppCommand command) {
    return QCoreApplication::translate("vantle::CommandBinding", commandBinding(command).title);
}

QString detail(AppCommand command) {
    return QCoreApplication::translate("vantle::CommandBinding", commandBinding(command).detail);
}

} // namespace

ShortcutsTab::ShortcutsTab(const SettingsContext& context, QWidget* parent)
    : QWidget(parent)
    , m_context(context)
    , m_state(std::make_unique<ShortcutsTabState>(context.settings, context.hotKeys,
                                                  context.privileged.texts().keyCaps)) {
    auto* layout = new QVBoxLayout(this);
    addSection(layout, Section::systemWide);
    layout->addSpacing(12);
    addSection(layout, Section::appList);
    layout->addStretch();
    chainTabOrder(this);

    connect(&context.settings, &AppSettings::disabledShortcutIDsChanged, this,
            &ShortcutsTab::showRows);
    connect(&context.hotKeys, &HotKeyService::unavailableChanged, this, &ShortcutsTab::showRows);
    connect(&context.hotKeys, &HotKeyService::keyCapsChanged, this, &ShortcutsTab::showRows);
    showRows();
}

ShortcutsTab::~ShortcutsTab() = default;

void ShortcutsTab::addSection(QVBoxLayout* layout, Section section) {
    const bool systemWide = section == Section::systemWide;
    layout->addWidget(sectionHeading(systemWide ? tr("System-Wide") : tr("In the App List"), this));
    for (const ShortcutsTabState::Row& row : m_state->rows(section)) {
        layout->addWidget(shortcutRow(row));
    }
    layout->addWidget(helpText(systemWide ? tr("They work in any app. Turn one off if it clashes "
                                               "with a shortcut you already use.")
                                          : tr("Live only while the list is open."),
                               this));
    if (systemWide) {
        m_desktopNote = helpText({}, this);
        m_desktopNote->setObjectName(QStringLiteral("desktopShortcutsNote"));
        layout->addWidget(m_desktopNote);
    }
}

QWidget* ShortcutsTab::shortcutRow(const ShortcutsTabState::Row& row) {
    auto* widget = new QWidget(this);
    widget->setObjectName(rowName(row.command));
    auto* layout = new QHBoxLayout(widget);
    layout->setContentsMargins(4, 4, 4, 4);

    auto* symbol = new QLabel(widget);
    symbol->setPixmap(
        symbolIcon(QString::fromLatin1(commandBinding(row.command).symbol), secondaryColor(this))
            .pixmap(16, 16));
    symbol->setFixedWidth(18);
    symbol->setAlignment(Qt::AlignCenter);
    layout->addWidget(symbol, 0, Qt::AlignTop);

    auto* text = new QVBoxLayout;
    text->setSpacing(0);
    text->addWidget(new QLabel(title(row.command), widget));
    auto* detailLine = helpText({}, widget);
    detailLine->setObjectName(QStringLiteral("shortcutDetail"));
    text->addWidget(detailLine);
    auto* unavailableLine = warningText(
        tr("Vantle could not claim this combination — something else may hold it."), widget);
    unavailableLine->setObjectName(QStringLiteral("shortcutUnavailable"));
    text->addWidget(unavailableLine);
    layout->addLayout(text, 1);

    auto* keyCap = new QLabel(widget);
    keyCap->setObjectName(QStringLiteral("keyCap"));
    keyCap->setStyleSheet(QStringLiteral("QLabel { border: 1px solid palette(mid); border-radius: "
                                         "4px; padding: 2px 6px; }"));
    keyCap->setGraphicsEffect(new QGraphicsOpacityEffect(keyCap));
    layout->addWidget(keyCap, 0, Qt::AlignVCenter);

    if (row.hasSwitch) {
        auto* toggle = new QCheckBox(widget);
        toggle->setObjectName(QStringLiteral("shortcutSwitch"));
        toggle->setAccessibleName(title(row.command));
        layout->addWidget(toggle, 0, Qt::AlignVCenter);
        const AppCommand command = row.command;
        connect(toggle, &QCheckBox::toggled, this,
                [this, command](bool on) { m_state->setEnabled(command, on); });
    } else {
        // Keeps the key caps of both sections in one column.
        layout->addSpacing(QCheckBox().sizeHint().width() + layout->spacing());
    }
    return widget;
}

void ShortcutsTab::showRows() {
    const Desktop desktop = m_state->desktop();
    for (const Section section : {Section::systemWide, Section::appList}) {
        for (const ShortcutsTabState::Row& row : m_state->rows(section)) {
            auto* widget = findChild<QWidget*>(rowName(row.command));
            auto* detailLine = widget->findChild<QLabel*>(QStringLiteral("shortcutDetail"));
            auto* unavailableLine =
                widget->findChild<QLabel*>(QStringLiteral("shortcutUnavailable"));
            detailLine->setText(detail(row.command));
            detailLine->setVisible(!row.isUnavailable);
            unavailableLine->setVisible(row.isUnavailable);
            if (desktop == Desktop::noHotKeys) {
                unavailableLine->setText(tr("This desktop offers no system-wide shortcuts."));
            }
            auto* keyCap = widget->findChild<QLabel*>(QStringLiteral("keyCap"));
            keyCap->setText(row.keyCap);
            static_cast<QGraphicsOpacityEffect*>(keyCap->graphicsEffect())
                ->setOpacity(row.isDimmed() ? kDimmedOpacity : 1.0);
            if (auto* toggle = widget->findChild<QCheckBox*>(QStringLiteral("shortcutSwitch"))) {
                const QSignalBlocker quiet(toggle);
                toggle->setChecked(row.isOn);
            }
        }
    }
    switch (desktop) {
    case Desktop::appGrabsKeys:
        m_desktopNote->clear();
        break;
    case Desktop::desktopBindsKeys:
        m_desktopNote->setText(tr("Your desktop decides which keys trigger these and shows the "
                                  "keys it bound here. Change them in the desktop's keyboard "
                                  "shortcut settings."));
        break;
    case Desktop::noHotKeys:
        m_desktopNote->setText(tr("System-wide shortcuts need the desktop's GlobalShortcuts "
                                  "portal, which this desktop does not offer. Bind \"vantle "
                                  "--command quitAllApps\" (or sleep, restart, shutDown) in the "
                                  "desktop's own keyboard shortcut settings instead."));
        break;
    }
    m_desktopNote->setVisible(desktop != Desktop::appGrabsKeys);
}

} // namespace vantle
