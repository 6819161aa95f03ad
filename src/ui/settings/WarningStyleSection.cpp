#include "ui/settings/WarningStyleSection.h"

#include "model/AppSettings.h"
#include "ui/settings/SettingsBinding.h"
#include "ui/settings/SettingsWidgets.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>

namespace vantle {

const QList<int> WarningStyleSection::kGraceSeconds{10, 20, 30, 45, 60, 90, 120};

namespace {

QString secondsText(double seconds) {
    return WarningStyleSection::tr("%1 sec").arg(static_cast<qint64>(seconds));
}

} // namespace

WarningStyleSection::WarningStyleSection(AppSettings& settings, Warnings warnings, HelpTexts help,
                                         QWidget* parent)
    : QWidget(parent)
    , m_settings(settings)
    , m_warnings(warnings)
    , m_help(std::move(help))
    , m_style(new QComboBox(this))
    , m_styleHelp(helpText({}, this))
    , m_graceLabel(new QLabel(tr("Grace period"), this))
    , m_grace(new QComboBox(this)) {
    const bool quit = warnings == Warnings::quit;
    m_style->setObjectName(quit ? QStringLiteral("quitWarningStyle")
                                : QStringLiteral("scheduleWarningStyle"));
    m_grace->setObjectName(quit ? QStringLiteral("quitWarningSeconds")
                                : QStringLiteral("scheduleWarningSeconds"));
    m_styleHelp->setObjectName(m_style->objectName() + QStringLiteral("Help"));

    m_style->addItem(tr("Notification"), rawValue(QuitWarningStyle::notification));
    m_style->addItem(tr("Window"), rawValue(QuitWarningStyle::window));
    m_style->addItem(tr("Never"), rawValue(QuitWarningStyle::never));
    m_style->setAccessibleName(tr("Warn me with"));
    for (const int seconds : kGraceSeconds) {
        m_grace->addItem(secondsText(seconds), double(seconds));
    }
    m_grace->setAccessibleName(tr("Grace period"));
    m_graceLabel->setBuddy(m_grace);

    auto* styleLabel = new QLabel(tr("Warn me with"), this);
    styleLabel->setBuddy(m_style);
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(styleLabel, 0, 0);
    grid->addWidget(m_style, 0, 1, Qt::AlignLeft);
    grid->addWidget(m_styleHelp, 1, 0, 1, 2);
    grid->addWidget(m_graceLabel, 2, 0);
    grid->addWidget(m_grace, 2, 1, Qt::AlignLeft);
    grid->setColumnStretch(1, 1);

    // Connected before the bindings, so a stored period is on offer before it is looked up.
    const auto secondsChanged = quit ? &AppSettings::quitWarningSecondsChanged
                                     : &AppSettings::scheduleWarningSecondsChanged;
    connect(&m_settings, secondsChanged, this, &WarningStyleSection::offerStoredSeconds);
    offerStoredSeconds();
    bindSetting(m_style, m_settings);
    bindSetting(m_grace, m_settings);
    connect(&m_settings,
            quit ? &AppSettings::quitWarningStyleChanged
                 : &AppSettings::scheduleWarningStyleChanged,
            this, &WarningStyleSection::showStyle);
    showStyle();
}

QString WarningStyleSection::style() const {
    return m_warnings == Warnings::quit ? m_settings.quitWarningStyle()
                                        : m_settings.scheduleWarningStyle();
}

double WarningStyleSection::seconds() const {
    return m_warnings == Warnings::quit ? m_settings.quitWarningSeconds()
                                        : m_settings.scheduleWarningSeconds();
}

void WarningStyleSection::showStyle() {
    const std::optional<QuitWarningStyle> value = fromRawValue<QuitWarningStyle>(style());
    QString help;
    if (value == QuitWarningStyle::notification) {
        help = m_help.notification;
    } else if (value == QuitWarningStyle::window) {
        help = m_help.window;
    } else if (value == QuitWarningStyle::never) {
        help = m_help.never;
    }
    m_styleHelp->setText(help);
    m_styleHelp->setVisible(!help.isEmpty());
    const bool counts = value != QuitWarningStyle::never;
    m_graceLabel->setVisible(counts);
    m_grace->setVisible(counts);
}

void WarningStyleSection::offerStoredSeconds() {
    const double stored = seconds();
    if (m_grace->findData(stored) >= 0) {
        return;
    }
    int index = 0;
    while (index < m_grace->count() && m_grace->itemData(index).toDouble() < stored) {
        ++index;
    }
    m_grace->insertItem(index, secondsText(stored), stored);
}

} // namespace vantle
