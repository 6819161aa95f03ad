#include "fakes/SettingsTabFixture.h"
#include "ui/settings/AutoQuitTab.h"
#include "ui/settings/ScheduleTab.h"
#include "ui/settings/ScheduleTabState.h"
#include "ui/settings/ShortcutsTab.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QSlider>
#include <QStandardItemModel>
#include <QTest>
#include <memory>

using namespace vantle;
using namespace Qt::StringLiterals;
using Action = ShutdownSchedule::Action;

namespace {

struct RunningApp {
    QString name;
    std::optional<QString> bundleId;
};

ShutdownSchedule schedule(Action action, qint64 hour = 22, qint64 minute = 0) {
    ShutdownSchedule s;
    s.action = action;
    s.days = {ShutdownSchedule::Weekday::monday};
    s.hour = hour;
    s.minute = minute;
    return s;
}

QList<ShutdownSchedule> schedules(const QList<Action>& actions) {
    QList<ShutdownSchedule> list;
    for (const Action action : actions) {
        list.append(schedule(action));
    }
    return list;
}

template <typename T>
T* child(QWidget* root, const QString& name) {
    T* found = root->findChild<T*>(name);
    if (!found) {
        qFatal("no %s named %s", T::staticMetaObject.className(), qPrintable(name));
    }
    return found;
}

QStringList buttonTexts(QWidget* root, const QString& name) {
    QStringList texts;
    for (auto* button : root->findChildren<QPushButton*>(name)) {
        texts.append(button->text());
    }
    return texts;
}

} // namespace

class TestSettingsTabs : public QObject {
    Q_OBJECT

    std::unique_ptr<SettingsTabFixture> f;

private slots:
    void init() { f = std::make_unique<SettingsTabFixture>(); }
    void cleanup() { f.reset(); }

    // The sheet offers each running app no rule names yet, once; choosing one rules it.
    void addSheetOffersUnruledApps_data() {
        QTest::addColumn<QList<RunningApp>>("running");
        QTest::addColumn<QStringList>("ruled");
        QTest::addColumn<QStringList>("offered");
        QTest::addColumn<QStringList>("rulesAfterFirstChoice");

        const RunningApp mail{u"Mail"_s, u"org.mail"_s};
        const RunningApp editor{u"Editor"_s, u"org.editor"_s};
        QTest::newRow("none ruled")
            << QList{mail, editor} << QStringList{} << QStringList{u"Editor"_s, u"Mail"_s}
            << QStringList{u"org.editor"_s};
        QTest::newRow("one ruled")
            << QList{mail, editor} << QStringList{u"org.editor"_s} << QStringList{u"Mail"_s}
            << QStringList{u"org.editor"_s, u"org.mail"_s};
        QTest::newRow("two processes of one app")
            << QList{mail, mail} << QStringList{} << QStringList{u"Mail"_s}
            << QStringList{u"org.mail"_s};
        QTest::newRow("no desktop entry: offered, but nothing to rule")
            << QList{RunningApp{u"Tool"_s, std::nullopt}} << QStringList{} << QStringList{u"Tool"_s}
            << QStringList{};
        QTest::newRow("every app ruled") << QList{mail} << QStringList{u"org.mail"_s}
                                         << QStringList{} << QStringList{u"org.mail"_s};
    }
    void addSheetOffersUnruledApps() {
        QFETCH(QList<RunningApp>, running);
        QFETCH(QStringList, ruled);
        QFETCH(QStringList, offered);
        QFETCH(QStringList, rulesAfterFirstChoice);
        qint32 pid = 10;
        for (const RunningApp& app : running) {
            f->launch(pid++, app.name, app.bundleId);
        }
        QList<AppRule> rules;
        for (const QString& id : ruled) {
            rules.append({.bundleID = id,
                          .name = id,
                          .action = AppRule::Action::hide,
                          .timeoutMinutes = 10});
        }
        f->settings.setAppRules(rules);
        AutoQuitTab tab(f->context);

        child<QPushButton>(&tab, u"addAppButton"_s)->click();
        QDialog* sheet = child<QDialog>(&tab, u"addAppSheet"_s);
        QCOMPARE(buttonTexts(sheet, u"addableApp"_s), offered);
        QCOMPARE(sheet->findChild<QLabel*>(u"allConfigured"_s) != nullptr, offered.isEmpty());
        if (offered.isEmpty()) {
            return;
        }
        sheet->findChildren<QPushButton*>(u"addableApp"_s).first()->click();
        QVERIFY(!sheet->isVisible());
        QStringList ids;
        for (const AppRule& rule : f->settings.appRules()) {
            ids.append(rule.bundleID);
        }
        QCOMPARE(ids, rulesAfterFirstChoice);
        if (ids.isEmpty()) {
            return;
        }
        const AppRule& added = f->settings.appRules().constLast();
        if (!ruled.contains(added.bundleID)) {
            QCOMPARE(added.action, AppRule::Action::quit);
            QCOMPARE(added.timeoutMinutes, 30.0);
        }
    }

    // Rule rows edit their own rule; a timeout no picker offers is shown, not replaced.
    void ruleRowsEditTheirRule() {
        f->settings.setAppRules({{u"org.a"_s, u"A"_s, AppRule::Action::quit, 30},
                                 {u"org.b"_s, u"B"_s, AppRule::Action::hide, 7}});
        AutoQuitTab tab(f->context);
        QVERIFY(!child<QLabel>(&tab, u"noRules"_s)->isVisibleTo(&tab));
        QWidget* second = child<QWidget>(&tab, u"rule_1"_s);
        QCOMPARE(child<QComboBox>(second, u"ruleTimeout"_s)->currentText(), u"7 min"_s);

        auto* action = child<QComboBox>(second, u"ruleAction"_s);
        action->setCurrentIndex(action->findText(u"Quit"_s));
        QCOMPARE(f->settings.appRules()[1],
                 (AppRule{u"org.b"_s, u"B"_s, AppRule::Action::quit, 7}));
        child<QAbstractButton>(child<QWidget>(&tab, u"rule_0"_s), u"ruleDelete"_s)->click();
        QCOMPARE(f->settings.appRules().size(), 1);
        QCOMPARE(f->settings.appRules()[0].bundleID, u"org.b"_s);
        f->settings.setAppRules({});
        QVERIFY(child<QLabel>(&tab, u"noRules"_s)->isVisibleTo(&tab));
    }

    // The idle threshold moves in steps of 5 between 5 and 180 minutes; a stored value outside
    // that is shown at the nearest end but kept until the slider is moved.
    void idleSliderBounds_data() {
        QTest::addColumn<double>("stored");
        QTest::addColumn<int>("key");
        QTest::addColumn<double>("storedAfter");
        QTest::addColumn<QString>("label");
        QTest::newRow("step up") << 30.0 << int(Qt::Key_Right) << 35.0 << u"35 min"_s;
        QTest::newRow("step down") << 30.0 << int(Qt::Key_Left) << 25.0 << u"25 min"_s;
        QTest::newRow("floor") << 5.0 << int(Qt::Key_Left) << 5.0 << u"5 min"_s;
        QTest::newRow("ceiling") << 180.0 << int(Qt::Key_Right) << 180.0 << u"180 min"_s;
        QTest::newRow("stored above the range, untouched") << 300.0 << 0 << 300.0 << u"300 min"_s;
        QTest::newRow("stored below, moved up") << 0.5 << int(Qt::Key_Right) << 10.0 << u"10 min"_s;
    }
    void idleSliderBounds() {
        QFETCH(double, stored);
        QFETCH(int, key);
        QFETCH(double, storedAfter);
        QFETCH(QString, label);
        f->settings.setIdleQuitTimeout(stored);
        AutoQuitTab tab(f->context);
        auto* slider = child<QSlider>(&tab, u"idleQuitTimeout"_s);
        if (key != 0) {
            QTest::keyClick(slider, Qt::Key(key));
        }
        QCOMPARE(f->settings.idleQuitTimeout(), storedAfter);
        QCOMPARE(child<QLabel>(&tab, u"idleQuitMinutes"_s)->text(), label);
    }

    // The help text follows the style; "never" has no grace period; an unlisted period is kept.
    void warningStyleSection_data() {
        QTest::addColumn<QString>("style");
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("helpStart");
        QTest::addColumn<QString>("grace");
        QTest::newRow("notification") << u"notification"_s << 60.0 << u"A banner"_s << u"60 sec"_s;
        QTest::newRow("window, unlisted period")
            << u"window"_s << 75.0 << u"A floating panel"_s << u"75 sec"_s;
        QTest::newRow("never") << u"never"_s << 60.0 << u"Apps are quit"_s << QString();
    }
    void warningStyleSection() {
        QFETCH(QString, style);
        QFETCH(double, seconds);
        QFETCH(QString, helpStart);
        QFETCH(QString, grace);
        f->settings.setQuitWarningStyle(style);
        f->settings.setQuitWarningSeconds(seconds);
        AutoQuitTab tab(f->context);
        QVERIFY(child<QLabel>(&tab, u"quitWarningStyleHelp"_s)->text().startsWith(helpStart));
        auto* picker = child<QComboBox>(&tab, u"quitWarningSeconds"_s);
        QCOMPARE(picker->isVisibleTo(&tab), !grace.isEmpty());
        if (!grace.isEmpty()) {
            QCOMPARE(picker->currentText(), grace);
        }
        QCOMPARE(f->settings.quitWarningSeconds(), seconds);
    }

    // Shut down and restart belong to one schedule each; a row's own action never counts.
    void takenSingletons_data() {
        QTest::addColumn<QList<Action>>("actions");
        QTest::addColumn<int>("row");
        QTest::addColumn<QList<Action>>("taken");
        QTest::newRow("own shut down stays free")
            << QList{Action::shutdown, Action::sleep} << 0 << QList<Action>{};
        QTest::newRow("another's shut down")
            << QList{Action::shutdown, Action::sleep} << 1 << QList{Action::shutdown};
        QTest::newRow("both taken") << QList{Action::restart, Action::wake, Action::shutdown} << 1
                                    << QList{Action::shutdown, Action::restart};
        QTest::newRow("sleep and wake are never taken")
            << QList{Action::sleep, Action::wake, Action::poweron} << 0 << QList<Action>{};
    }
    void takenSingletons() {
        QFETCH(QList<Action>, actions);
        QFETCH(int, row);
        QFETCH(QList<Action>, taken);
        const QList<ShutdownSchedule> list = schedules(actions);
        QCOMPARE(ScheduleTabState::takenSingletons(list, row),
                 QSet<Action>(taken.begin(), taken.end()));

        f->settings.setShutdownSchedules(list);
        ScheduleTab tab(f->context);
        auto* picker =
            child<QComboBox>(child<QWidget>(&tab, u"schedule_%1"_s.arg(row)), u"scheduleAction"_s);
        auto* model = qobject_cast<QStandardItemModel*>(picker->model());
        for (int i = 0; i < picker->count(); ++i) {
            const Action action = *fromRawValue<Action>(picker->itemData(i).toString());
            QCOMPARE(model->item(i)->isEnabled(), !taken.contains(action));
        }
    }

    // A repeated id marks a copy of the same schedule, not another one.
    void takenSingletonsIgnoresCopiesOfItself() {
        QList<ShutdownSchedule> list = schedules({Action::shutdown, Action::shutdown});
        list[1].id = list[0].id;
        QVERIFY(ScheduleTabState::takenSingletons(list, 1).isEmpty());
    }

    // Pressed twice on an empty list: shut down every day at 22:00, then sleep.
    void addScheduleTwice() {
        ScheduleTab tab(f->context);
        QVERIFY(child<QLabel>(&tab, u"noSchedules"_s)->isVisibleTo(&tab));
        auto* add = child<QPushButton>(&tab, u"addScheduleButton"_s);
        add->click();
        add->click();
        const QList<ShutdownSchedule>& added = f->settings.shutdownSchedules();
        QCOMPARE(added.size(), 2);
        QCOMPARE(added[0].action, Action::shutdown);
        QCOMPARE(added[1].action, Action::sleep);
        QVERIFY(added[0].id != added[1].id);
        for (const ShutdownSchedule& s : added) {
            QVERIFY(s.isEnabled);
            QCOMPARE(s.hour, 22);
            QCOMPARE(s.minute, 0);
            QCOMPARE(s.days.size(), size_t(7));
        }
        QVERIFY(!child<QLabel>(&tab, u"noSchedules"_s)->isVisibleTo(&tab));
        QVERIFY(tab.findChild<QWidget*>(u"schedule_1"_s));
    }

    // A schedule the services skip is shown as stored, says why, and keeps its values when
    // another row, or another field of its own row, is edited.
    void outOfRangeScheduleIsKept() {
        f->settings.setShutdownSchedules(
            {schedule(Action::sleep, 99, 7), schedule(Action::wake, 6, 30)});
        ScheduleTab tab(f->context);
        QWidget* broken = child<QWidget>(&tab, u"schedule_0"_s);
        QCOMPARE(child<QComboBox>(broken, u"scheduleHour"_s)->currentText(), u"99"_s);
        QCOMPARE(child<QComboBox>(broken, u"scheduleMinute"_s)->currentText(), u"07"_s);
        QVERIFY(child<QLabel>(broken, u"scheduleProblem"_s)->text().contains(u"0-23"_s));
        QVERIFY(!child<QLabel>(child<QWidget>(&tab, u"schedule_1"_s), u"scheduleProblem"_s)
                     ->isVisibleTo(&tab));

        child<QAbstractButton>(child<QWidget>(&tab, u"schedule_1"_s), u"scheduleDay1"_s)->click();
        auto* day = child<QAbstractButton>(broken, u"scheduleDay7"_s);
        day->click();
        const QList<ShutdownSchedule>& stored = f->settings.shutdownSchedules();
        QCOMPARE(stored[0].hour, 99);
        QCOMPARE(stored[0].minute, 7);
        QVERIFY(stored[0].days.contains(ShutdownSchedule::Weekday::saturday));
        QVERIFY(stored[1].days.contains(ShutdownSchedule::Weekday::sunday));
    }

    // The setting follows the rule only when installing or removing it worked; otherwise the
    // switch stays where it was. The settings window comes back forward after every attempt.
    void alwaysAllowSwitch_data() {
        QTest::addColumn<bool>("initially");
        QTest::addColumn<int>("alertButton"); // 0 Continue, 1 Cancel
        QTest::addColumn<int>("prompt");      // how the password prompt ends
        QTest::addColumn<bool>("ruleAppears");
        QTest::addColumn<bool>("after");
        const int ok = int(ScriptOutcome::Status::succeeded);
        const int cancelled = int(ScriptOutcome::Status::cancelled);
        QTest::newRow("on: installed") << false << 0 << ok << true << true;
        QTest::newRow("on: explanation cancelled") << false << 1 << ok << true << false;
        QTest::newRow("on: password cancelled") << false << 0 << cancelled << true << false;
        QTest::newRow("on: rule rejected by visudo") << false << 0 << ok << false << false;
        QTest::newRow("off: removed") << true << 0 << ok << false << false;
        QTest::newRow("off: explanation cancelled") << true << 1 << ok << false << true;
        QTest::newRow("off: password cancelled") << true << 0 << cancelled << false << true;
    }
    void alwaysAllowSwitch() {
        QFETCH(bool, initially);
        QFETCH(int, alertButton);
        QFETCH(int, prompt);
        QFETCH(bool, ruleAppears);
        QFETCH(bool, after);
        f->settings.setPmsetAlwaysAllow(initially);
        f->alerts.answer.button = alertButton;
        f->scripts.administratorOutcome.status = ScriptOutcome::Status(prompt);
        if (ruleAppears) {
            f->scripts.filesCreatedByAdministrator.insert(f->privileged.tool().ruleFile);
        }
        ScheduleTab tab(f->context);
        auto* toggle = child<QCheckBox>(&tab, u"pmsetAlwaysAllowSwitch"_s);
        QVERIFY(toggle->isEnabled());
        toggle->click();
        QCOMPARE(f->settings.pmsetAlwaysAllow(), after);
        QCOMPARE(toggle->isChecked(), after);
        QCOMPARE(f->alerts.broughtForward, QStringList{u"Vantle Settings"_s});
    }

    // A tool a passwordless rule must not name: the switch is disabled with the reason, unless
    // Always Allow is already on, so that it can still be turned off.
    void alwaysAllowNeedsASafeTool_data() {
        QTest::addColumn<bool>("initially");
        QTest::newRow("off") << false;
        QTest::newRow("on") << true;
    }
    void alwaysAllowNeedsASafeTool() {
        QFETCH(bool, initially);
        PowerSchedulerTool tool = SettingsTabFixture::rootOwnedTool();
        tool.path = u"/home/me/my tools/vantle-power"_s;
        f = std::make_unique<SettingsTabFixture>(tool);
        f->settings.setPmsetAlwaysAllow(initially);
        ScheduleTab tab(f->context);
        QCOMPARE(child<QCheckBox>(&tab, u"pmsetAlwaysAllowSwitch"_s)->isEnabled(), initially);
        auto* why = child<QLabel>(&tab, u"alwaysAllowUnavailable"_s);
        QVERIFY(why->isVisibleTo(&tab));
        QVERIFY(why->text().contains(tool.path));
    }

    // Each system-wide row shows its state: the key cap dims when off or unclaimed, and an
    // unclaimed combination replaces the detail line.
    void shortcutRows_data() {
        QTest::addColumn<QStringList>("disabled");
        QTest::addColumn<QList<quint32>>("held");
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("on");
        QTest::addColumn<bool>("unavailable");
        QTest::newRow("on and held by us")
            << QStringList{} << QList<quint32>{} << u"sleep"_s << true << false;
        QTest::newRow("switched off")
            << QStringList{u"sleep"_s} << QList<quint32>{} << u"sleep"_s << false << false;
        QTest::newRow("held by another program")
            << QStringList{} << QList<quint32>{2} << u"sleep"_s << true << true;
        QTest::newRow("another row unaffected")
            << QStringList{} << QList<quint32>{2} << u"restart"_s << true << false;
    }
    void shortcutRows() {
        QFETCH(QStringList, disabled);
        QFETCH(QList<quint32>, held);
        QFETCH(QString, command);
        QFETCH(bool, on);
        QFETCH(bool, unavailable);
        f->settings.setDisabledShortcutIDs(disabled);
        f->registrar.held = QSet<quint32>(held.begin(), held.end());
        f->hotKeys.registerHotKeys(f->settings.enabledGlobalCommands());
        ShortcutsTab tab(f->context);

        QWidget* row = child<QWidget>(&tab, u"shortcut_"_s + command);
        const AppCommand cmd = *fromRawValue<AppCommand>(command);
        QCOMPARE(child<QCheckBox>(row, u"shortcutSwitch"_s)->isChecked(), on);
        QCOMPARE(child<QLabel>(row, u"shortcutUnavailable"_s)->isVisibleTo(&tab), unavailable);
        QCOMPARE(child<QLabel>(row, u"shortcutDetail"_s)->isVisibleTo(&tab), !unavailable);
        auto* keyCap = child<QLabel>(row, u"keyCap"_s);
        QCOMPARE(keyCap->text(), commandBinding(cmd).keyCap(KeyCapStyle::linuxDesktop));
        const auto* effect = static_cast<QGraphicsOpacityEffect*>(keyCap->graphicsEffect());
        QCOMPARE(effect->opacity(), on && !unavailable ? 1.0 : 0.35);
    }

    // The switch edits disabledShortcutIDs; app-list rows have none and never dim.
    void shortcutSwitches() {
        ShortcutsTab tab(f->context);
        auto* sleep =
            child<QCheckBox>(child<QWidget>(&tab, u"shortcut_sleep"_s), u"shortcutSwitch"_s);
        sleep->click();
        QCOMPARE(f->settings.disabledShortcutIDs(), QStringList{u"sleep"_s});
        sleep->click();
        QVERIFY(f->settings.disabledShortcutIDs().isEmpty());
        f->settings.setDisabledShortcutIDs({u"quitAllApps"_s});
        QVERIFY(
            !child<QCheckBox>(child<QWidget>(&tab, u"shortcut_quitAllApps"_s), u"shortcutSwitch"_s)
                 ->isChecked());
        QWidget* search = child<QWidget>(&tab, u"shortcut_focusSearch"_s);
        QVERIFY(!search->findChild<QCheckBox*>());
        QCOMPARE(child<QLabel>(search, u"keyCap"_s)->text(), u"Ctrl+F"_s);
    }

    // Where the desktop picks the keys, the row shows what it bound and the note says where to
    // change it; with no shortcuts at all, the note says what to bind instead.
    void desktopNote_data() {
        QTest::addColumn<bool>("desktopBinds");
        QTest::addColumn<bool>("offers");
        QTest::addColumn<QString>("noteContains");
        QTest::newRow("keys grabbed by the app") << false << true << QString();
        QTest::newRow("keys bound by the desktop") << true << true << u"keyboard shortcut"_s;
        QTest::newRow("no shortcuts on this desktop")
            << true << false << u"vantle --command quitAllApps"_s;
    }
    void desktopNote() {
        QFETCH(bool, desktopBinds);
        QFETCH(bool, offers);
        QFETCH(QString, noteContains);
        f->registrar.desktopBinds = desktopBinds;
        f->registrar.offers = offers;
        f->hotKeys.registerHotKeys(f->settings.enabledGlobalCommands());
        ShortcutsTab tab(f->context);
        auto* note = child<QLabel>(&tab, u"desktopShortcutsNote"_s);
        QCOMPARE(note->isVisibleTo(&tab), !noteContains.isEmpty());
        QVERIFY(note->text().contains(noteContains));
        if (desktopBinds && offers) {
            emit f->registrar.triggerDescribed(HotKeyService::hotKeyId(AppCommand::sleep),
                                               u"Super+Z"_s);
            QCOMPARE(child<QLabel>(child<QWidget>(&tab, u"shortcut_sleep"_s), u"keyCap"_s)->text(),
                     u"Super+Z"_s);
        }
    }

    // The Linux set of the tabs' texts names no macOS facility, and differs from the macOS set
    // exactly where that one does.
    void linuxTextsNameLinuxFacilities() {
        const ProductTexts& macTexts = ProductTexts::macOS();
        const ProductTexts& linuxTexts = ProductTexts::linuxDesktop();
        const QList<std::pair<QString, QString>> texts{
            {macTexts.idleQuitToggle, linuxTexts.idleQuitToggle},
            {macTexts.idleQuitHelp, linuxTexts.idleQuitHelp},
            {macTexts.quitNotificationHelp, linuxTexts.quitNotificationHelp},
            {macTexts.scheduleIntro, linuxTexts.scheduleIntro},
            {macTexts.alwaysAllowHelp, linuxTexts.alwaysAllowHelp},
            {macTexts.scheduleNotificationHelp, linuxTexts.scheduleNotificationHelp},
            {macTexts.scheduleWarningNote, linuxTexts.scheduleWarningNote}};
        static const QRegularExpression macWords(u"\\b(Mac|macOS|pmset|Focus)\\b"_s);
        for (const auto& [macText, linuxText] : texts) {
            QVERIFY2(macText.contains(macWords), qPrintable(macText));
            QVERIFY2(!linuxText.contains(macWords), qPrintable(linuxText));
        }
    }
};

QTEST_MAIN(TestSettingsTabs)
#include "tst_settingstabs.moc"
