#include "ui/settings/AutoQuitTab.h"

#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "monitor/AppMonitorService.h"
#include "schedule/PrivilegedRunner.h"
#include "ui/settings/AddAppSheet.h"
#include "ui/settings/AutoQuitTabState.h"
#include "ui/settings/SettingsBinding.h"
#include "ui/settings/SettingsWidgets.h"
#include "ui/settings/WarningStyleSection.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>

namespace vantle {

namespace {

QString minutesText(double minutes) {
    return AutoQuitTab::tr("%1 min").arg(static_cast<qint64>(minutes));
}

QStringList ruleKeys(const QList<AppRule>& rules) {
    QStringList keys;
    for (const AppRule& rule : rules) {
        keys.append(rule.bundleID);
    }
    return keys;
}

// Shows `rule` in a row's pickers; a timeout that is not one of the offers is shown as it is.
void showRule(QWidget* row, const AppRule& rule, const QIcon& icon) {
    row->findChild<QLabel*>(QStringLiteral("ruleIcon"))->setPixmap(icon.pixmap(20, 20));
    auto* action = row->findChild<QComboBox*>(QStringLiteral("ruleAction"));
    auto* timeout = row->findChild<QComboBox*>(QStringLiteral("ruleTimeout"));
    const QSignalBlocker quietAction(action);
    const QSignalBlocker quietTimeout(timeout);
    action->setCurrentIndex(action->findData(rawValue(rule.action)));
    int index = timeout->findData(rule.timeoutMinutes);
    if (index < 0) {
        index = 0;
        while (index < timeout->count() &&
               timeout->itemData(index).toDouble() < rule.timeoutMinutes) {
            ++index;
        }
        timeout->insertItem(index, minutesText(rule.timeoutMinutes), rule.timeoutMinutes);
    }
    timeout->setCurrentIndex(index);
}

} // namespace

AutoQuitTab::AutoQuitTab(const SettingsContext& context, QWidget* parent)
    : QWidget(parent)
    , m_context(context)
    , m_state(std::make_unique<AutoQuitTabState>(context.settings, context.apps))
    , m_rulesIntro(helpText({}, this))
    , m_noRules(helpText(tr("No apps configured yet. Tap \"Add App\" above to choose which apps "
                            "Vantle watches, each with its own timer."),
                         this))
    , m_rows(new QVBoxLayout)
    , m_idleMinutes(new QLabel(this)) {
    const ProductTexts& texts = context.privileged.texts();
    AppSettings& settings = context.settings;
    auto* layout = new QVBoxLayout(this);

    // Per-App Rules
    auto* heading = new QHBoxLayout;
    heading->addWidget(sectionHeading(tr("Per-App Rules"), this));
    heading->addStretch();
    auto* add = new QPushButton(tr("Add App"), this);
    add->setObjectName(QStringLiteral("addAppButton"));
    connect(add, &QPushButton::clicked, this, &AutoQuitTab::showAddSheet);
    heading->addWidget(add);
    layout->addLayout(heading);
    m_rulesIntro->setObjectName(QStringLiteral("rulesIntro"));
    layout->addWidget(m_rulesIntro);
    m_noRules->setObjectName(QStringLiteral("noRules"));
    m_noRules->setAlignment(Qt::AlignCenter);
    m_noRules->setContentsMargins(24, 12, 24, 12);
    layout->addWidget(m_noRules);
    m_rows->setSpacing(2);
    layout->addLayout(m_rows);
    layout->addSpacing(12);

    // System Idle (All Apps)
    layout->addWidget(sectionHeading(tr("System Idle (All Apps)"), this));
    auto* idle = new QCheckBox(productText(texts.idleQuitToggle), this);
    idle->setObjectName(QStringLiteral("idleQuitEnabled"));
    layout->addWidget(idle);
    layout->addWidget(helpText(productText(texts.idleQuitHelp), this));
    auto* threshold = new QHBoxLayout;
    auto* thresholdLabel = new QLabel(tr("Idle threshold"), this);
    threshold->addWidget(thresholdLabel);
    // The slider counts steps, so it can only land on a multiple of the step.
    auto* slider = new QSlider(Qt::Horizontal, this);
    slider->setObjectName(QStringLiteral("idleQuitTimeout"));
    slider->setRange(AutoQuitTabState::kIdleMinimum / AutoQuitTabState::kIdleStep,
                     AutoQuitTabState::kIdleMaximum / AutoQuitTabState::kIdleStep);
    slider->setPageStep(3);
    slider->setAccessibleName(tr("Idle threshold"));
    thresholdLabel->setBuddy(slider);
    threshold->addWidget(slider, 1);
    // Right-aligned in a slot sized for the widest value (the interface fonts' digits share one
    // width), so the label does not jitter while the slider moves.
    m_idleMinutes->setObjectName(QStringLiteral("idleQuitMinutes"));
    m_idleMinutes->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_idleMinutes->setFixedWidth(m_idleMinutes->fontMetrics().horizontalAdvance(
                                     minutesText(AutoQuitTabState::kIdleMaximum)) +
                                 4);
    threshold->addWidget(m_idleMinutes);
    layout->addLayout(threshold);
    layout->addSpacing(12);

    // Before Quitting
    layout->addWidget(sectionHeading(tr("Before Quitting"), this));
    layout->addWidget(new WarningStyleSection(
        settings, WarningStyleSection::Warnings::quit,
        {.notification = productText(texts.quitNotificationHelp),
         .window = tr("A floating panel with Quit Now and Cancel. It won't take keyboard focus, "
                      "and closing it cancels the quit."),
         .never = tr("Apps are quit the moment their timer runs out, with no warning and no "
                     "chance to cancel.")},
        this));
    layout->addStretch();

    bindSetting(idle, settings);
    const int step = AutoQuitTabState::kIdleStep;
    bindSetting(
        slider, settings,
        {[step](const QVariant& minutes) { return QVariant(qRound(minutes.toDouble() / step)); },
         [step](const QVariant& steps) { return QVariant(steps.toDouble() * step); }});
    connect(&settings, &AppSettings::idleQuitTimeoutChanged, this, &AutoQuitTab::showIdleMinutes);
    showIdleMinutes();
    connect(&settings, &AppSettings::appRulesChanged, this, &AutoQuitTab::showRules);
    // A rule's icon comes from its app while that runs.
    connect(&context.apps, &AppMonitorService::runningAppsChanged, this, &AutoQuitTab::showRules);
    showRules();
}

AutoQuitTab::~AutoQuitTab() = default;

void AutoQuitTab::showAddSheet() {
    auto* sheet = new AddAppSheet(*m_state, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

void AutoQuitTab::showRules() {
    const QList<AppRule>& rules = m_context.settings.appRules();
    m_rulesIntro->setText(rules.isEmpty()
                              ? tr("Add an app to hide or quit it after its own inactivity period.")
                              : tr("Each app is hidden or quit after its own inactivity period."));
    m_noRules->setVisible(rules.isEmpty());
    const QStringList keys = ruleKeys(rules);
    if (keys == m_shownRules) {
        for (qsizetype i = 0; i < rules.size(); ++i) {
            showRule(m_rows->itemAt(int(i))->widget(), rules[i], ruleIcon(rules[i]));
        }
        return;
    }
    while (QLayoutItem* item = m_rows->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    for (qsizetype i = 0; i < rules.size(); ++i) {
        m_rows->addWidget(ruleRow(i));
    }
    m_shownRules = keys;
    chainTabOrder(this);
}

QWidget* AutoQuitTab::ruleRow(qsizetype index) {
    const AppRule& rule = m_context.settings.appRules()[index];
    auto* row = new QWidget(this);
    row->setObjectName(QStringLiteral("rule_%1").arg(index));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(4, 2, 4, 2);

    auto* iconLabel = new QLabel(row);
    iconLabel->setObjectName(QStringLiteral("ruleIcon"));
    layout->addWidget(iconLabel);
    auto* name = new QLabel(rule.name, row);
    name->setToolTip(rule.bundleID);
    layout->addWidget(name, 1);

    auto* action = new QComboBox(row);
    action->setObjectName(QStringLiteral("ruleAction"));
    action->setAccessibleName(tr("What to do with %1").arg(rule.name));
    action->addItem(tr("Hide"), rawValue(AppRule::Action::hide));
    action->addItem(tr("Quit"), rawValue(AppRule::Action::quit));
    layout->addWidget(action);
    auto* timeout = new QComboBox(row);
    timeout->setObjectName(QStringLiteral("ruleTimeout"));
    timeout->setAccessibleName(tr("Inactivity before %1 is hidden or quit").arg(rule.name));
    for (const int minutes : AutoQuitTabState::kTimeoutMinutes) {
        timeout->addItem(minutesText(minutes), double(minutes));
    }
    layout->addWidget(timeout);
    auto* remove = new QToolButton(row);
    remove->setObjectName(QStringLiteral("ruleDelete"));
    remove->setIcon(symbolIcon(QStringLiteral("minus.circle.fill"), secondaryColor(this)));
    remove->setAutoRaise(true);
    remove->setAccessibleName(tr("Delete the rule for %1").arg(rule.name));
    remove->setToolTip(remove->accessibleName());
    remove->setFocusPolicy(Qt::StrongFocus);
    layout->addWidget(remove);
    showRule(row, rule, ruleIcon(rule));

    connect(action, &QComboBox::currentIndexChanged, this, [this, index, action] {
        if (const auto value = fromRawValue<AppRule::Action>(action->currentData().toString())) {
            m_state->setAction(index, *value);
        }
    });
    connect(timeout, &QComboBox::currentIndexChanged, this, [this, index, timeout] {
        m_state->setTimeout(index, timeout->currentData().toDouble());
    });
    connect(remove, &QToolButton::clicked, this, [this, index] { m_state->removeRule(index); });
    return row;
}

QIcon AutoQuitTab::ruleIcon(const AppRule& rule) const {
    if (const auto app = m_state->runningApp(rule); app && !app->icon.isNull()) {
        return app->icon;
    }
    // A desktop entry's id is usually also its icon's name.
    QIcon icon = QIcon::fromTheme(rule.bundleID);
    return icon.isNull() ? symbolIcon(QStringLiteral("app.fill"), secondaryColor(this)) : icon;
}

void AutoQuitTab::showIdleMinutes() {
    m_idleMinutes->setText(minutesText(m_context.settings.idleQuitTimeout()));
}

} // namespace vantle
