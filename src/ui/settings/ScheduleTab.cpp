#include "ui/settings/ScheduleTab.h"

#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "schedule/PrivilegedRunner.h"
#include "ui/settings/ScheduleTabState.h"
#include "ui/settings/SettingsWidgets.h"
#include "ui/settings/WarningStyleSection.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStandardItemModel>
#include <QToolButton>
#include <vector>

namespace vantle {

namespace {

using Action = ShutdownSchedule::Action;
using Weekday = ShutdownSchedule::Weekday;

// A chosen day is filled, so the week reads at a glance.
const QString kDayStyle = QStringLiteral(
    "QToolButton { border: 1px solid palette(mid); border-radius: 4px; padding: 2px; }"
    "QToolButton:checked { background: palette(highlight); color: palette(highlighted-text); "
    "border-color: palette(highlight); }"
    "QToolButton:focus { border: 2px solid palette(highlight); }");

QString actionTitle(Action action) {
    switch (action) {
    case Action::sleep:
        return ScheduleTab::tr("Sleep");
    case Action::wake:
        return ScheduleTab::tr("Wake");
    case Action::shutdown:
        return ScheduleTab::tr("Shut Down");
    case Action::restart:
        return ScheduleTab::tr("Restart");
    case Action::poweron:
        return ScheduleTab::tr("Power On");
    }
    return {};
}

// Selects `value` in a time picker; a stored value the picker does not offer (a minute off the
// five-minute grid, an hour out of range) is added as it is, so showing it never changes it.
void selectTime(QComboBox* combo, qint64 value, const QString& format) {
    int index = combo->findData(value);
    if (index < 0) {
        index = 0;
        while (index < combo->count() && combo->itemData(index).toLongLong() < value) {
            ++index;
        }
        combo->insertItem(index, QString::asprintf(qPrintable(format), int(value)), value);
    }
    combo->setCurrentIndex(index);
}

QList<QUuid> scheduleIds(const QList<ShutdownSchedule>& schedules) {
    QList<QUuid> ids;
    for (const ShutdownSchedule& schedule : schedules) {
        ids.append(schedule.id);
    }
    return ids;
}

} // namespace

ScheduleTab::ScheduleTab(const SettingsContext& context, QWidget* parent)
    : QWidget(parent)
    , m_context(context)
    , m_state(std::make_unique<ScheduleTabState>(context.settings, context.privileged))
    , m_noSchedules(helpText(tr("No schedules yet. Tap \"Add Schedule\" to create one."), this))
    , m_rows(new QVBoxLayout)
    , m_alwaysAllow(new QCheckBox(tr("Always Allow"), this))
    , m_alwaysAllowUnavailable(warningText({}, this))
    , m_warningNote(helpText({}, this)) {
    const ProductTexts& texts = context.privileged.texts();
    AppSettings& settings = context.settings;
    auto* layout = new QVBoxLayout(this);

    auto* intro = new QHBoxLayout;
    intro->addWidget(helpText(productText(texts.scheduleIntro), this), 1);
    auto* add = new QPushButton(symbolIcon(QStringLiteral("plus"), palette().buttonText().color()),
                                tr("Add Schedule"), this);
    add->setObjectName(QStringLiteral("addScheduleButton"));
    connect(add, &QPushButton::clicked, this, [this] { m_state->addSchedule(); });
    intro->addWidget(add, 0, Qt::AlignTop);
    layout->addLayout(intro);
    m_noSchedules->setObjectName(QStringLiteral("noSchedules"));
    m_noSchedules->setAlignment(Qt::AlignCenter);
    m_noSchedules->setContentsMargins(24, 12, 24, 12);
    layout->addWidget(m_noSchedules);
    m_rows->setSpacing(2);
    layout->addLayout(m_rows);
    layout->addSpacing(12);

    m_alwaysAllow->setObjectName(QStringLiteral("pmsetAlwaysAllowSwitch"));
    layout->addWidget(m_alwaysAllow);
    layout->addWidget(helpText(productText(texts.alwaysAllowHelp), this));
    m_alwaysAllowUnavailable->setObjectName(QStringLiteral("alwaysAllowUnavailable"));
    layout->addWidget(m_alwaysAllowUnavailable);
    layout->addSpacing(12);

    layout->addWidget(sectionHeading(tr("Before It Happens"), this));
    layout->addWidget(new WarningStyleSection(
        settings, WarningStyleSection::Warnings::schedule,
        {.notification = productText(texts.scheduleNotificationHelp),
         .window = tr("A floating panel with Cancel and a confirm button. It won't take keyboard "
                      "focus, and closing it skips this occurrence."),
         .never = tr("Sleep and Shut Down happen the moment the schedule matches, with no warning "
                     "and no chance to cancel.")},
        this));
    m_warningNote->setObjectName(QStringLiteral("scheduleWarningNote"));
    m_warningNote->setText(productText(texts.scheduleWarningNote));
    layout->addWidget(m_warningNote);
    layout->addStretch();

    connect(m_alwaysAllow, &QCheckBox::toggled, this, &ScheduleTab::switchAlwaysAllow);
    connect(&settings, &AppSettings::pmsetAlwaysAllowChanged, this, &ScheduleTab::showAlwaysAllow);
    showAlwaysAllow();
    const auto showNote = [this] {
        m_warningNote->setVisible(m_context.settings.scheduleWarningStyleValue() !=
                                  QuitWarningStyle::never);
    };
    connect(&settings, &AppSettings::scheduleWarningStyleChanged, this, showNote);
    showNote();
    connect(&settings, &AppSettings::shutdownSchedulesChanged, this, &ScheduleTab::showSchedules);
    showSchedules();
}

ScheduleTab::~ScheduleTab() = default;

void ScheduleTab::showSchedules() {
    const QList<ShutdownSchedule>& schedules = m_context.settings.shutdownSchedules();
    m_noSchedules->setVisible(schedules.isEmpty());
    const QList<QUuid> ids = scheduleIds(schedules);
    if (ids != m_shownIds) {
        while (QLayoutItem* item = m_rows->takeAt(0)) {
            item->widget()->hide();
            item->widget()->deleteLater();
            delete item;
        }
        for (qsizetype i = 0; i < schedules.size(); ++i) {
            m_rows->addWidget(scheduleRow(i));
        }
        m_shownIds = ids;
        chainTabOrder(this);
    }
    for (qsizetype i = 0; i < schedules.size(); ++i) {
        showSchedule(m_rows->itemAt(int(i))->widget(), i);
    }
}

QWidget* ScheduleTab::scheduleRow(qsizetype index) {
    auto* row = new QWidget(this);
    row->setObjectName(QStringLiteral("schedule_%1").arg(index));
    auto* rowLayout = new QVBoxLayout(row);
    rowLayout->setContentsMargins(4, 2, 4, 2);
    rowLayout->setSpacing(2);
    auto* controls = new QHBoxLayout;
    rowLayout->addLayout(controls);
    const QString number = QString::number(index + 1);

    auto* enabled = new QCheckBox(row);
    enabled->setObjectName(QStringLiteral("scheduleEnabled"));
    enabled->setAccessibleName(tr("Schedule %1 on").arg(number));
    controls->addWidget(enabled);
    connect(enabled, &QCheckBox::toggled, this, [this, index](bool on) {
        m_state->editSchedule(index, [on](ShutdownSchedule& s) { s.isEnabled = on; });
    });

    auto* action = new QComboBox(row);
    action->setObjectName(QStringLiteral("scheduleAction"));
    action->setAccessibleName(tr("Schedule %1 action").arg(number));
    for (const auto& [value, raw] : RawValues<Action>::table) {
        action->addItem(actionTitle(value), QString::fromLatin1(raw));
    }
    controls->addWidget(action);
    connect(action, &QComboBox::currentIndexChanged, this, [this, index, action] {
        if (const auto value = fromRawValue<Action>(action->currentData().toString())) {
            m_state->editSchedule(index, [value](ShutdownSchedule& s) { s.action = *value; });
        }
    });

    auto* hour = new QComboBox(row);
    hour->setObjectName(QStringLiteral("scheduleHour"));
    hour->setAccessibleName(tr("Schedule %1 hour").arg(number));
    for (qint64 h = 0; h < 24; ++h) {
        hour->addItem(QString::number(h), h);
    }
    controls->addWidget(hour);
    controls->addWidget(new QLabel(QStringLiteral(":"), row));
    auto* minute = new QComboBox(row);
    minute->setObjectName(QStringLiteral("scheduleMinute"));
    minute->setAccessibleName(tr("Schedule %1 minute").arg(number));
    for (qint64 m = 0; m < 60; m += 5) {
        minute->addItem(QString::asprintf("%02d", int(m)), m);
    }
    controls->addWidget(minute);
    connect(hour, &QComboBox::currentIndexChanged, this, [this, index, hour] {
        const qint64 value = hour->currentData().toLongLong();
        m_state->editSchedule(index, [value](ShutdownSchedule& s) { s.hour = value; });
    });
    connect(minute, &QComboBox::currentIndexChanged, this, [this, index, minute] {
        const qint64 value = minute->currentData().toLongLong();
        m_state->editSchedule(index, [value](ShutdownSchedule& s) { s.minute = value; });
    });
    controls->addSpacing(8);

    const QLocale locale;
    for (const Weekday day : ShutdownSchedule::allWeekdays) {
        // QLocale counts Monday as 1 and Sunday as 7.
        const int qtDay = day == Weekday::sunday ? 7 : int(day) - 1;
        auto* toggle = new QToolButton(row);
        toggle->setObjectName(QStringLiteral("scheduleDay%1").arg(int(day)));
        toggle->setCheckable(true);
        // Two letters tell Tuesday from Thursday, where one would not.
        toggle->setText(locale.dayName(qtDay, QLocale::ShortFormat).left(2));
        toggle->setStyleSheet(kDayStyle);
        toggle->setAccessibleName(
            tr("Schedule %1 on %2").arg(number, locale.dayName(qtDay, QLocale::LongFormat)));
        toggle->setToolTip(locale.dayName(qtDay, QLocale::LongFormat));
        toggle->setFixedWidth(30);
        toggle->setFocusPolicy(Qt::StrongFocus);
        controls->addWidget(toggle);
        connect(toggle, &QToolButton::toggled, this, [this, index, day](bool on) {
            m_state->editSchedule(index, [day, on](ShutdownSchedule& s) {
                if (on) {
                    s.days.insert(day);
                } else {
                    s.days.erase(day);
                }
            });
        });
    }
    controls->addStretch();

    auto* remove = new QToolButton(row);
    remove->setObjectName(QStringLiteral("scheduleDelete"));
    remove->setIcon(symbolIcon(QStringLiteral("minus.circle.fill"), secondaryColor(this)));
    remove->setAutoRaise(true);
    remove->setAccessibleName(tr("Delete schedule %1").arg(number));
    remove->setToolTip(tr("Delete this schedule"));
    remove->setFocusPolicy(Qt::StrongFocus);
    controls->addWidget(remove);
    connect(remove, &QToolButton::clicked, this, [this, index] { m_state->removeSchedule(index); });

    auto* problem = warningText({}, row);
    problem->setObjectName(QStringLiteral("scheduleProblem"));
    rowLayout->addWidget(problem);
    return row;
}

void ScheduleTab::showSchedule(QWidget* row, qsizetype index) {
    const QList<ShutdownSchedule>& schedules = m_context.settings.shutdownSchedules();
    const ShutdownSchedule& schedule = schedules[index];
    const QList<QWidget*> controls = row->findChildren<QWidget*>();
    std::vector<QSignalBlocker> quiet;
    quiet.reserve(static_cast<size_t>(controls.size()));
    for (QWidget* control : controls) {
        quiet.emplace_back(control);
    }

    row->findChild<QCheckBox*>(QStringLiteral("scheduleEnabled"))->setChecked(schedule.isEnabled);
    auto* action = row->findChild<QComboBox*>(QStringLiteral("scheduleAction"));
    action->setCurrentIndex(action->findData(rawValue(schedule.action)));
    // Taken actions stay listed, so the user sees why they cannot be chosen.
    const QSet<Action> taken = ScheduleTabState::takenSingletons(schedules, index);
    auto* model = qobject_cast<QStandardItemModel*>(action->model());
    for (int i = 0; i < action->count(); ++i) {
        const auto value = fromRawValue<Action>(action->itemData(i).toString());
        model->item(i)->setEnabled(!value || !taken.contains(*value));
    }
    selectTime(row->findChild<QComboBox*>(QStringLiteral("scheduleHour")), schedule.hour,
               QStringLiteral("%d"));
    selectTime(row->findChild<QComboBox*>(QStringLiteral("scheduleMinute")), schedule.minute,
               QStringLiteral("%02d"));
    for (const Weekday day : ShutdownSchedule::allWeekdays) {
        row->findChild<QToolButton*>(QStringLiteral("scheduleDay%1").arg(int(day)))
            ->setChecked(schedule.days.contains(day));
    }
    const QString reason = m_state->problems().value(index);
    auto* problem = row->findChild<QLabel*>(QStringLiteral("scheduleProblem"));
    problem->setText(reason.isEmpty() ? QString()
                                      : tr("Vantle skips this schedule: %1.").arg(reason));
    problem->setVisible(!reason.isEmpty());
}

void ScheduleTab::showAlwaysAllow() {
    const QSignalBlocker quiet(m_alwaysAllow);
    const bool on = m_context.settings.pmsetAlwaysAllow();
    m_alwaysAllow->setChecked(on);
    QString why;
    const bool possible = m_state->canAlwaysAllow(&why);
    // A rule that is already on can always be removed.
    m_alwaysAllow->setEnabled(possible || on);
    m_alwaysAllowUnavailable->setText(
        possible ? QString()
                 : tr("Unavailable: %1 is not installed as root's own file (owned by root and "
                      "writable by no one else), so a rule naming it could be abused.")
                       .arg(m_context.privileged.tool().path));
    m_alwaysAllowUnavailable->setVisible(!possible);
}

void ScheduleTab::switchAlwaysAllow(bool on) {
    m_state->setAlwaysAllow(on);
    // A failed install or removal leaves the switch where it was.
    showAlwaysAllow();
}

} // namespace vantle
