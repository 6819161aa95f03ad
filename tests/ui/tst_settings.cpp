#include "fakes/LogCapture.h"
#include "fakes/RemovalFixture.h"
#include "fakes/Schedules.h"
#include "fakes/SettingsFixture.h"
#include "model/AppSettings.h"
#include "system/HotKeyService.h"
#include "ui/AppearancePalette.h"
#include "ui/settings/AboutTab.h"
#include "ui/settings/AdvancedTab.h"
#include "ui/settings/AutoQuitTab.h"
#include "ui/settings/ExclusionsState.h"
#include "ui/settings/ExclusionsTab.h"
#include "ui/settings/GeneralTab.h"
#include "ui/settings/RemovalSheet.h"
#include "ui/settings/ScheduleTab.h"
#include "ui/settings/ScheduleTabState.h"
#include "ui/settings/SettingsBinding.h"
#include "ui/settings/SettingsSelection.h"
#include "ui/settings/SettingsWindow.h"
#include "ui/settings/ShortcutsTab.h"
#include "ui/settings/WheelGuard.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QGraphicsOpacityEffect>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMetaProperty>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>
#include <memory>

using namespace vantle;
using namespace Qt::StringLiterals;
using Action = ShutdownSchedule::Action;
// A name and, if it has a desktop entry, its identifier.
using RunningApp = ExclusionsState::ChosenApp;

namespace {

// Seconds shown as tenths of a minute: a conversion each way that is not its own inverse.
const BindingConversion kSecondsAsTenthMinutes{
    [](const QVariant& seconds) { return QVariant(seconds.toDouble() / 6); },
    [](const QVariant& tenths) { return QVariant(tenths.toDouble() * 6); }};

// What a control shows: its text, its tick, its value.
QVariant shownValue(QWidget* control) {
    return control->metaObject()->userProperty().read(control);
}

void sendWheel(QWidget* target, int steps) {
    const QPointF at(target->width() / 2.0, target->height() / 2.0);
    QWheelEvent wheel(at, target->mapToGlobal(at), QPoint(), QPoint(0, -120 * steps), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(target, &wheel);
}

// Two values of each setting a control is tied to, told apart by every control that shows it.
struct BoundSetting {
    const char* property;
    QVariant first;
    QVariant second;
};
const BoundSetting kBoundSettings[]{
    {"launchAtLogin", true, false},
    {"showBackgroundApps", true, false},
    {"protectMenuBarApps", false, true},
    {"idleQuitEnabled", true, false},
    {"idleQuitTimeout", 45.0, 120.0},
    {"quitWarningStyle", u"window"_s, u"never"_s},
    {"quitWarningSeconds", 20.0, 90.0},
    {"scheduleWarningStyle", u"never"_s, u"notification"_s},
    {"scheduleWarningSeconds", 45.0, 120.0},
    {"dockIconStyle", u"dark"_s, u"light"_s},
    {"showInDock", false, true},
};

template <typename T>
T* child(QWidget* root, const QString& name) {
    T* found = root->findChild<T*>(name);
    if (!found) {
        qFatal("no %s named %s", T::staticMetaObject.className(), qPrintable(name));
    }
    return found;
}

// The texts of the labels or buttons under `root`, of those with `name` if one is given.
template <typename T>
QStringList textsOf(const QWidget& root, const QString& name = {}) {
    QStringList texts;
    for (const T* widget : root.findChildren<T*>(name)) {
        texts << widget->text();
    }
    return texts;
}

QImage pixmapOf(const QWidget& widget) {
    return widget.findChild<QLabel*>()->pixmap().toImage();
}

} // namespace

// The settings window and its tabs over the app's services and fakes: what they show, and what
// their controls change.
class TestSettings : public QObject {
    Q_OBJECT

    std::unique_ptr<SettingsFixture> f;
    // The About and Advanced tabs, and the removal they start, over fakes of their own.
    std::unique_ptr<RemovalFixture> r;

private slots:
    void init() {
        f = std::make_unique<SettingsFixture>();
        r = std::make_unique<RemovalFixture>();
    }

    // One window at a time: later requests bring it forward on the tab asked for, or on the one
    // it shows; closing forgets it, and the next window opens where the last was left.
    void oneWindowThatKeepsItsTab() {
        SettingsWindowManager& manager = f->windows();
        QVERIFY(!manager.window());
        manager.show();
        SettingsWindow* first = manager.window();
        QVERIFY(first && first->isVisible());
        QCOMPARE(first->windowTitle(), u"Vantle Settings"_s);
        QCOMPARE(first->minimumSize(), first->maximumSize()); // not resizable
        QVERIFY(!(first->windowFlags() & Qt::WindowMaximizeButtonHint));
        QVERIFY(first->windowFlags() & Qt::WindowCloseButtonHint);
        const QPoint offCentre = first->frameGeometry().center() -
                                 QGuiApplication::primaryScreen()->availableGeometry().center();
        QVERIFY2(offCentre.manhattanLength() <= 2,
                 qPrintable(u"%1,%2"_s.arg(offCentre.x()).arg(offCentre.y())));

        manager.show(SettingsTab::exclusions);
        QCOMPARE(std::pair(manager.window(), first->currentTab()),
                 std::pair(first, SettingsTab::exclusions));
        manager.show();
        QCOMPARE(std::pair(manager.window(), first->currentTab()),
                 std::pair(first, SettingsTab::exclusions));

        QPointer<SettingsWindow> closed(first);
        first->close();
        QTRY_VERIFY(!closed);
        QVERIFY(!manager.window());
        manager.show();
        QVERIFY(manager.window() && manager.window() != first);
        QCOMPARE(manager.window()->currentTab(), SettingsTab::exclusions);
        manager.show(SettingsTab::about);
        QCOMPARE(manager.window()->currentTab(), SettingsTab::about);
    }

    // Seven tab buttons in order; a page is built the first time its tab is chosen.
    void tabsAreBuiltWhenFirstShown() {
        f->windows().show(SettingsTab::general);
        SettingsWindow* window = f->windows().window();
        QStringList order;
        auto* bar = window->findChild<QWidget*>(u"tabBar"_s);
        for (int i = 0; i < bar->layout()->count(); ++i) {
            if (QWidget* w = bar->layout()->itemAt(i)->widget()) {
                order << w->objectName();
            }
        }
        QCOMPARE(order, (QStringList{u"tab-about"_s, u"tab-general"_s, u"tab-autoQuit"_s,
                                     u"tab-exclusions"_s, u"tab-schedule"_s, u"tab-shortcuts"_s,
                                     u"tab-advanced"_s}));
        QVERIFY(window->page(SettingsTab::general));
        QVERIFY(!window->page(SettingsTab::exclusions));
        window->findChild<QAbstractButton*>(u"tab-exclusions"_s)->click();
        QCOMPARE(f->windows().selection().tab(), SettingsTab::exclusions);
        QVERIFY(window->page(SettingsTab::exclusions)->isVisible());
        QVERIFY(!window->page(SettingsTab::general)->isVisible());
    }

    // Over a control without focus the wheel scrolls the page; once focused, it changes it.
    void wheelScrollsPastUnfocusedControls() {
        QScrollArea area;
        area.resize(300, 200);
        auto* page = new QWidget;
        page->setMinimumHeight(2000);
        auto* layout = new QVBoxLayout(page);
        area.setWidget(page);
        WheelGuard guard;
        guard.guard(page);
        // Added after the guard, as a new row would be.
        auto* combo = new QComboBox;
        combo->addItems({u"a"_s, u"b"_s, u"c"_s});
        combo->setCurrentIndex(1);
        auto* slider = new QSlider(Qt::Horizontal);
        slider->setValue(50);
        auto* spin = new QSpinBox;
        spin->setValue(50);
        const QList<QWidget*> wheeled{combo, slider, spin};
        for (QWidget* widget : wheeled) {
            layout->addWidget(widget);
        }
        auto* elsewhere = new QLineEdit;
        layout->addWidget(elsewhere);
        area.show();
        area.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&area));

        for (QWidget* control : wheeled) {
            const QVariant before = shownValue(control);
            elsewhere->setFocus();
            area.verticalScrollBar()->setValue(0);
            sendWheel(control, 1);
            QCOMPARE(shownValue(control), before);
            QVERIFY(area.verticalScrollBar()->value() > 0);
            control->setFocus();
            sendWheel(control, -1);
            QVERIFY2(shownValue(control) != before, control->metaObject()->className());
        }
    }

    // Every control tied to a setting shows a change made elsewhere, and a change made in it
    // lands in the store. New bound controls must be listed in kBoundSettings.
    void boundControlsRoundTrip() {
        for (const SettingsTab tab : allCases<SettingsTab>()) {
            f->windows().show(tab);
        }
        AppSettings& settings = f->settings();
        for (QWidget* control : f->windows().window()->findChildren<QWidget*>()) {
            const QByteArray name = control->objectName().toLatin1();
            if (AppSettings::staticMetaObject.indexOfProperty(name.constData()) < 0) {
                continue;
            }
            const auto* row =
                std::find_if(std::begin(kBoundSettings), std::end(kBoundSettings),
                             [&name](const BoundSetting& bound) { return name == bound.property; });
            QVERIFY2(row != std::end(kBoundSettings), name.constData());
            QVERIFY(settings.setProperty(name.constData(), row->first));
            const QVariant shownFirst = shownValue(control);
            QVERIFY(settings.setProperty(name.constData(), row->second));
            QVERIFY2(shownFirst != shownValue(control), name.constData());
            control->metaObject()->userProperty().write(control, shownFirst);
            QCOMPARE(settings.property(name.constData()), row->first);
        }
    }

    // Each page, filled in, fits the window's width; every control says what it is to a screen
    // reader, and Tab walks the window top to bottom, left to right.
    void filledPagesFitAndReadInOrder_data() {
        QTest::addColumn<SettingsTab>("tab");
        for (const SettingsTab tab : allCases<SettingsTab>()) {
            QTest::newRow(qPrintable(rawValue(tab))) << tab;
        }
    }
    void filledPagesFitAndReadInOrder() {
        QFETCH(SettingsTab, tab);
        AppSettings& settings = f->settings();
        f->launch(40, u"Mail"_s, u"org.gnome.Evolution"_s);
        f->launch(41, u"Terminal"_s, std::nullopt);
        settings.setExcludedBundleIDs({u"org.gnome.Evolution"_s, u"gone.app"_s});
        settings.setAppRules({{u"org.gnome.Evolution"_s, u"Mail"_s, AppRule::Action::quit, 30},
                              {u"org.chat"_s, u"Chat"_s, AppRule::Action::hide, 7}});
        settings.setIdleQuitEnabled(true);
        settings.setQuitWarningStyle(QuitWarningStyle::window);
        ShutdownSchedule skipped = schedule(Action::sleep, 25); // out of range and switched off
        skipped.isEnabled = false;
        settings.setShutdownSchedules({ShutdownSchedule{}, schedule(Action::wake), skipped});
        settings.setDisabledShortcutIDs({u"restart"_s});
        f->fake.hotKeys->held = {HotKeyService::hotKeyId(AppCommand::shutDown)};
        f->delegate.hotKeyService().registerHotKeys(settings.enabledGlobalCommands());
        f->windows().show(tab);
        SettingsWindow* window = f->windows().window();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        const int needs = window->page(tab)->minimumSizeHint().width();
        QVERIFY2(needs <= 560, qPrintable(u"needs %1 px"_s.arg(needs)));

        // Every visible control, the disabled ones too, has a name; the enabled ones are Tab's.
        QList<QWidget*> chain;
        QWidget* start = window->findChild<QWidget*>(u"tab-about"_s);
        for (QWidget* w = start; w && (chain.isEmpty() || w != start); w = w->nextInFocusChain()) {
            if (!w->isVisible() || !(w->focusPolicy() & Qt::TabFocus) ||
                qobject_cast<QScrollArea*>(w) || w->objectName().startsWith(u"qt_"_s)) {
                continue;
            }
            QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(w);
            QVERIFY2(accessible && !accessible->text(QAccessible::Name).isEmpty(),
                     qPrintable(u"%1 %2"_s.arg(QLatin1String(w->metaObject()->className()),
                                               w->objectName())));
            if (w->isEnabled()) {
                chain.append(w);
            }
        }
        for (qsizetype i = 1; i < chain.size(); ++i) {
            const QRect a(chain[i - 1]->mapTo(window, QPoint()), chain[i - 1]->size());
            const QRect b(chain[i]->mapTo(window, QPoint()), chain[i]->size());
            const bool sameRow = a.top() < b.bottom() && b.top() < a.bottom();
            QVERIFY2(sameRow ? a.left() < b.left() : a.top() < b.top(),
                     qPrintable(u"%1 before %2"_s.arg(chain[i - 1]->objectName(),
                                                      chain[i]->objectName())));
        }
    }

    // One call binds every named control under a page, each through the conversion given for
    // it; unnamed and unrelated controls are left alone, and a control that cannot show its
    // setting says so.
    void bindsAPage() {
        AppSettings& settings = f->settings();
        settings.setScheduleWarningSeconds(45);
        QWidget page;
        auto* toggle = new QCheckBox(&page);
        toggle->setObjectName(u"showBackgroundApps"_s);
        auto* slider = new QSlider(&page);
        slider->setObjectName(u"idleQuitTimeout"_s);
        slider->setRange(5, 180);
        auto* tenths = new QDoubleSpinBox(&page);
        tenths->setObjectName(u"scheduleWarningSeconds"_s);
        new QCheckBox(&page); // unnamed
        auto* other = new QLineEdit(&page);
        other->setObjectName(u"search"_s);
        QCOMPARE(
            bindSettings(&page, settings, {{u"scheduleWarningSeconds"_s, kSecondsAsTenthMinutes}}),
            3);
        QCOMPARE(std::pair(slider->value(), tenths->value()), std::pair(30, 7.5));
        toggle->click();
        QCOMPARE(settings.showBackgroundApps(), toggle->isChecked());
        QTest::keyClick(tenths, Qt::Key_Up);
        QCOMPARE(settings.scheduleWarningSeconds(), 51.0);

        LogCapture log;
        QWidget wrongKind;
        wrongKind.setObjectName(u"idleQuitEnabled"_s);
        QVERIFY(!bindSetting(&wrongKind, settings));
        QCOMPARE(log.count(u"cannot show a setting"_s), 1);
    }

    // The sheet offers each running app no rule names yet, once; choosing one rules it.
    void addSheetOffersUnruledApps_data() {
        QTest::addColumn<QList<RunningApp>>("running");
        QTest::addColumn<QStringList>("ruled");
        QTest::addColumn<QStringList>("offered");
        QTest::addColumn<QString>("added"); // by choosing the first offered; none if empty
        const RunningApp mail{u"Mail"_s, u"org.mail"_s};
        const RunningApp editor{u"Editor"_s, u"org.editor"_s};
        QTest::newRow("none ruled") << QList{mail, editor} << QStringList{}
                                    << QStringList{u"Editor"_s, u"Mail"_s} << u"org.editor"_s;
        QTest::newRow("one ruled") << QList{mail, editor} << QStringList{u"org.editor"_s}
                                   << QStringList{u"Mail"_s} << u"org.mail"_s;
        QTest::newRow("two processes of one app")
            << QList{mail, mail} << QStringList{} << QStringList{u"Mail"_s} << u"org.mail"_s;
        QTest::newRow("no desktop entry: offered, but nothing to rule")
            << QList{RunningApp{u"Tool"_s, std::nullopt}} << QStringList{} << QStringList{u"Tool"_s}
            << QString();
        QTest::newRow("every app ruled")
            << QList{mail} << QStringList{u"org.mail"_s} << QStringList{} << QString();
    }
    void addSheetOffersUnruledApps() {
        QFETCH(QList<RunningApp>, running);
        QFETCH(QStringList, ruled);
        QFETCH(QStringList, offered);
        QFETCH(QString, added);
        qint32 pid = 10;
        for (const RunningApp& app : running) {
            f->launch(pid++, app.name, app.bundleIdentifier);
        }
        QList<AppRule> rules;
        for (const QString& id : ruled) {
            rules.append({.bundleID = id,
                          .name = id,
                          .action = AppRule::Action::hide,
                          .timeoutMinutes = 10});
        }
        f->settings().setAppRules(rules);
        AutoQuitTab tab(f->context());

        child<QPushButton>(&tab, u"addAppButton"_s)->click();
        QDialog* sheet = child<QDialog>(&tab, u"addAppSheet"_s);
        QCOMPARE(textsOf<QPushButton>(*sheet, u"addableApp"_s), offered);
        QCOMPARE(sheet->findChild<QLabel*>(u"allConfigured"_s) != nullptr, offered.isEmpty());
        if (offered.isEmpty()) {
            return;
        }
        sheet->findChildren<QPushButton*>(u"addableApp"_s).first()->click();
        QVERIFY(!sheet->isVisible());
        if (!added.isEmpty()) {
            rules.append({added, offered.first(), AppRule::Action::quit, 30});
        }
        QCOMPARE(f->settings().appRules(), rules);
    }

    // Rule rows edit their own rule; a timeout no picker offers is shown, not replaced.
    void ruleRowsEditTheirRule() {
        f->settings().setAppRules({{u"org.a"_s, u"A"_s, AppRule::Action::quit, 30},
                                   {u"org.b"_s, u"B"_s, AppRule::Action::hide, 7}});
        AutoQuitTab tab(f->context());
        QVERIFY(!child<QLabel>(&tab, u"noRules"_s)->isVisibleTo(&tab));
        QWidget* second = child<QWidget>(&tab, u"rule_1"_s);
        QCOMPARE(child<QComboBox>(second, u"ruleTimeout"_s)->currentText(), u"7 min"_s);

        auto* action = child<QComboBox>(second, u"ruleAction"_s);
        action->setCurrentIndex(action->findText(u"Quit"_s));
        QCOMPARE(f->settings().appRules()[1],
                 (AppRule{u"org.b"_s, u"B"_s, AppRule::Action::quit, 7}));
        child<QAbstractButton>(child<QWidget>(&tab, u"rule_0"_s), u"ruleDelete"_s)->click();
        QCOMPARE(f->settings().appRules().size(), 1);
        QCOMPARE(f->settings().appRules()[0].bundleID, u"org.b"_s);
        f->settings().setAppRules({});
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
        f->settings().setIdleQuitTimeout(stored);
        AutoQuitTab tab(f->context());
        auto* slider = child<QSlider>(&tab, u"idleQuitTimeout"_s);
        if (key != 0) {
            QTest::keyClick(slider, Qt::Key(key));
        }
        QCOMPARE(f->settings().idleQuitTimeout(), storedAfter);
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
        f->settings().setQuitWarningStyle(style);
        f->settings().setQuitWarningSeconds(seconds);
        AutoQuitTab tab(f->context());
        QVERIFY(child<QLabel>(&tab, u"quitWarningStyleHelp"_s)->text().startsWith(helpStart));
        auto* picker = child<QComboBox>(&tab, u"quitWarningSeconds"_s);
        QCOMPARE(picker->isVisibleTo(&tab), !grace.isEmpty());
        if (!grace.isEmpty()) {
            QCOMPARE(picker->currentText(), grace);
        }
        QCOMPARE(f->settings().quitWarningSeconds(), seconds);
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
        QList<ShutdownSchedule> list;
        for (const Action action : actions) {
            list.append(schedule(action));
        }
        QCOMPARE(ScheduleTabState::takenSingletons(list, row),
                 QSet<Action>(taken.begin(), taken.end()));

        f->settings().setShutdownSchedules(list);
        ScheduleTab tab(f->context());
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
        QList<ShutdownSchedule> list{schedule(Action::shutdown), schedule(Action::shutdown)};
        list[1].id = list[0].id;
        QVERIFY(ScheduleTabState::takenSingletons(list, 1).isEmpty());
    }

    // Pressed twice on an empty list: shut down every day at 22:00, then sleep.
    void addScheduleTwice() {
        ScheduleTab tab(f->context());
        QVERIFY(child<QLabel>(&tab, u"noSchedules"_s)->isVisibleTo(&tab));
        auto* add = child<QPushButton>(&tab, u"addScheduleButton"_s);
        add->click();
        add->click();
        QStringList added;
        for (const ShutdownSchedule& s : f->settings().shutdownSchedules()) {
            added << u"%1 %2:%3 %4 days %5"_s.arg(rawValue(s.action))
                         .arg(s.hour)
                         .arg(s.minute)
                         .arg(s.days.size())
                         .arg(s.isEnabled ? u"on"_s : u"off"_s);
        }
        QCOMPARE(added, (QStringList{u"Shut Down 22:0 7 days on"_s, u"Sleep 22:0 7 days on"_s}));
        const QList<ShutdownSchedule>& stored = f->settings().shutdownSchedules();
        QVERIFY(stored[0].id != stored[1].id);
        QVERIFY(!child<QLabel>(&tab, u"noSchedules"_s)->isVisibleTo(&tab));
        QVERIFY(tab.findChild<QWidget*>(u"schedule_1"_s));
    }

    // A schedule the services skip is shown as stored, says why, and keeps its values when
    // another row, or another field of its own row, is edited.
    void outOfRangeScheduleIsKept() {
        QList<ShutdownSchedule> expected{schedule(Action::sleep, 99, 7),
                                         schedule(Action::wake, 6, 30)};
        f->settings().setShutdownSchedules(expected);
        ScheduleTab tab(f->context());
        QWidget* broken = child<QWidget>(&tab, u"schedule_0"_s);
        QCOMPARE(child<QComboBox>(broken, u"scheduleHour"_s)->currentText(), u"99"_s);
        QCOMPARE(child<QComboBox>(broken, u"scheduleMinute"_s)->currentText(), u"07"_s);
        QVERIFY(child<QLabel>(broken, u"scheduleProblem"_s)->text().contains(u"0-23"_s));
        QVERIFY(!child<QLabel>(child<QWidget>(&tab, u"schedule_1"_s), u"scheduleProblem"_s)
                     ->isVisibleTo(&tab));

        child<QAbstractButton>(child<QWidget>(&tab, u"schedule_1"_s), u"scheduleDay1"_s)->click();
        auto* day = child<QAbstractButton>(broken, u"scheduleDay7"_s);
        day->click();
        expected[0].days.insert(ShutdownSchedule::Weekday::saturday);
        expected[1].days.insert(ShutdownSchedule::Weekday::sunday);
        QCOMPARE(f->settings().shutdownSchedules(), expected);
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
        // Root's own file in root's own folder: a tool a passwordless rule may name.
        f = std::make_unique<SettingsFixture>(u"/usr/bin/true"_s);
        f->settings().setPmsetAlwaysAllow(initially);
        f->fake.alerts->answer.button = alertButton;
        f->fake.scripts->administratorOutcome.status = ScriptOutcome::Status(prompt);
        if (ruleAppears) {
            f->fake.scripts->filesCreatedByAdministrator.insert(
                f->delegate.privilegedRunner().tool().ruleFile);
        }
        ScheduleTab tab(f->context());
        auto* toggle = child<QCheckBox>(&tab, u"pmsetAlwaysAllowSwitch"_s);
        QVERIFY(toggle->isEnabled());
        toggle->click();
        QCOMPARE(std::pair(f->settings().pmsetAlwaysAllow(), toggle->isChecked()),
                 std::pair(after, after));
        QCOMPARE(f->fake.alerts->broughtForward, QStringList{u"Vantle Settings"_s});
    }

    // A tool a passwordless rule must not name: the switch is disabled with the reason, unless
    // Always Allow is already on, so that it can still be turned off.
    void alwaysAllowNeedsASafeTool() {
        const QString path = u"/home/me/my tools/vantle-power"_s;
        for (const bool initially : {false, true}) {
            f = std::make_unique<SettingsFixture>(path);
            f->settings().setPmsetAlwaysAllow(initially);
            ScheduleTab tab(f->context());
            QCOMPARE(child<QCheckBox>(&tab, u"pmsetAlwaysAllowSwitch"_s)->isEnabled(), initially);
            auto* why = child<QLabel>(&tab, u"alwaysAllowUnavailable"_s);
            QVERIFY(why->isVisibleTo(&tab));
            QVERIFY(why->text().contains(path));
        }
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
        f->settings().setDisabledShortcutIDs(disabled);
        f->fake.hotKeys->held = QSet<quint32>(held.begin(), held.end());
        f->delegate.hotKeyService().registerHotKeys(f->settings().enabledGlobalCommands());
        ShortcutsTab tab(f->context());

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
        ShortcutsTab tab(f->context());
        auto* sleep =
            child<QCheckBox>(child<QWidget>(&tab, u"shortcut_sleep"_s), u"shortcutSwitch"_s);
        sleep->click();
        QCOMPARE(f->settings().disabledShortcutIDs(), QStringList{u"sleep"_s});
        sleep->click();
        QVERIFY(f->settings().disabledShortcutIDs().isEmpty());
        f->settings().setDisabledShortcutIDs({u"quitAllApps"_s});
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
        f->fake.hotKeys->desktopBinds = desktopBinds;
        f->fake.hotKeys->offers = offers;
        f->delegate.hotKeyService().registerHotKeys(f->settings().enabledGlobalCommands());
        ShortcutsTab tab(f->context());
        auto* note = child<QLabel>(&tab, u"desktopShortcutsNote"_s);
        QCOMPARE(note->isVisibleTo(&tab), !noteContains.isEmpty());
        QVERIFY(note->text().contains(noteContains));
        if (desktopBinds && offers) {
            emit f->fake.hotKeys->triggerDescribed(HotKeyService::hotKeyId(AppCommand::sleep),
                                                   u"Super+Z"_s);
            QCOMPARE(child<QLabel>(child<QWidget>(&tab, u"shortcut_sleep"_s), u"keyCap"_s)->text(),
                     u"Super+Z"_s);
        }
    }

    // The Linux set of the tabs' texts names no macOS facility, and differs from the macOS set
    // exactly where that one does.
    void linuxTextsNameLinuxFacilities() {
        static const QRegularExpression macWords(u"\\b(Mac|macOS|pmset|Focus)\\b"_s);
        for (const QString ProductTexts::*text :
             {&ProductTexts::idleQuitToggle, &ProductTexts::idleQuitHelp,
              &ProductTexts::quitNotificationHelp, &ProductTexts::scheduleIntro,
              &ProductTexts::alwaysAllowHelp, &ProductTexts::scheduleNotificationHelp,
              &ProductTexts::scheduleWarningNote}) {
            QVERIFY2((ProductTexts::macOS().*text).contains(macWords),
                     qPrintable(ProductTexts::macOS().*text));
            QVERIFY2(!(ProductTexts::linuxDesktop().*text).contains(macWords),
                     qPrintable(ProductTexts::linuxDesktop().*text));
        }
    }

    // Tray-only apps are named as a Linux user knows them. The login switch registers the login
    // item; a refusal is logged and the switch goes back.
    void generalTab() {
        GeneralTab tab(f->context());
        QCOMPARE(tab.findChild<QCheckBox*>(u"protectMenuBarApps"_s)->text(),
                 u"Protect tray-only apps from auto-quit"_s);
        QVERIFY(!tab.findChild<QWidget*>(u"showInDock"_s));
        QVERIFY(!tab.findChild<QWidget*>(u"dockIconStyle"_s));

        auto* toggle = tab.findChild<QCheckBox*>(u"launchAtLogin"_s);
        toggle->click();
        QVERIFY(f->fake.loginItem->registered);
        QVERIFY(f->settings().launchAtLogin());
        toggle->click();
        QVERIFY(!f->fake.loginItem->registered);
        f->fake.loginItem->failRegistration = true;
        LogCapture log;
        toggle->click();
        QCOMPARE(log.count(u"Launch at login failed: refused"_s), 1);
        QVERIFY(!toggle->isChecked());
        QVERIFY(!f->settings().launchAtLogin());
    }

    // Running apps with their switches, and the excluded ones that are not running with a button
    // to remove them; the rows follow the settings and the apps.
    void exclusionsFollowTheRunningApps() {
        ExclusionsTab empty(f->context());
        QVERIFY(empty.findChild<QLabel*>(u"noAppsRunning"_s));
        f->launch(10, u"Mail"_s, u"org.gnome.Evolution"_s);
        f->launch(11, u"Terminal"_s, std::nullopt);
        f->settings().setExcludedBundleIDs({u"gone.app"_s, u"org.gnome.Evolution"_s});
        ExclusionsTab tab(f->context());
        QVERIFY(!tab.findChild<QLabel*>(u"noAppsRunning"_s));
        QCOMPARE(std::pair(tab.findChild<QCheckBox*>(u"exclude-10"_s)->isChecked(),
                           tab.findChild<QCheckBox*>(u"exclude-11"_s)->isChecked()),
                 std::pair(true, false));
        tab.findChild<QCheckBox*>(u"exclude-10"_s)->click();
        QCOMPARE(f->settings().excludedBundleIDs(), QStringList{u"gone.app"_s});
        // The rows are rebuilt once the click has returned.
        QTRY_VERIFY(!tab.findChild<QCheckBox*>(u"exclude-10"_s)->isChecked());

        ExclusionsState state(f->settings(), f->delegate.appMonitor());
        const auto rows = state.runningApps();
        state.setExcluded(rows[1].app, true); // no identifier: nothing to store
        state.setExcluded(rows[0].app, true);
        state.setExcluded(rows[0].app, true);
        QCOMPARE(f->settings().excludedBundleIDs(),
                 (QStringList{u"gone.app"_s, u"org.gnome.Evolution"_s}));
        tab.findChild<QToolButton*>(u"remove-gone.app"_s)->click();
        QCOMPARE(f->settings().excludedBundleIDs(), QStringList{u"org.gnome.Evolution"_s});
        QTRY_VERIFY(!tab.findChild<QToolButton*>(u"remove-gone.app"_s));
        f->fake.workspace->emitTerminate(10);
        QCOMPARE(state.notRunning(), QStringList{u"org.gnome.Evolution"_s});
        QTRY_VERIFY(tab.findChild<QToolButton*>(u"remove-org.gnome.Evolution"_s));
    }

    // "Add App": installed apps, searchable, several at once; files from elsewhere are read for
    // their entry, and those that are none are named in the warning.
    void addAppChoosesInstalledApps() {
        f->fake.applications->installed = {
            {u"org.gnome.Nautilus"_s, u"Files"_s, u"org.gnome.Nautilus"_s},
            {u"firefox-esr"_s, u"Firefox ESR"_s, u"firefox-esr"_s},
            {u"org.keepassxc.KeePassXC"_s, u"KeePassXC"_s, {}},
        };
        f->settings().setExcludedBundleIDs({u"firefox-esr"_s}); // chosen again: kept once
        ExclusionsTab tab(f->context());
        tab.findChild<QPushButton*>(u"addApp"_s)->click();
        auto* chooser = tab.findChild<QDialog*>(u"appChooser"_s);
        QVERIFY(chooser && chooser->isVisible());
        QCOMPARE(f->fake.alerts->activations, 1);
        auto* list = chooser->findChild<QListWidget*>(u"applications"_s);
        QCOMPARE(list->count(), 3);
        chooser->findChild<QLineEdit*>(u"search"_s)->setText(u"f"_s);
        QVERIFY(list->item(2)->isHidden()); // KeePassXC has no "f"
        list->item(0)->setSelected(true);
        list->item(1)->setSelected(true);
        auto* choose = chooser->findChild<QPushButton*>(u"choose"_s);
        QCOMPARE(choose->text(), u"Exclude"_s);
        choose->click();
        QCOMPARE(f->settings().excludedBundleIDs(),
                 (QStringList{u"firefox-esr"_s, u"org.gnome.Nautilus"_s}));
        QVERIFY(f->fake.alerts->shown.isEmpty());

        tab.exclude({}, {u"/tmp/notes.txt"_s});
        QCOMPARE(f->fake.alerts->shown.constLast().messageText, u"One app couldn't be added"_s);
        QCOMPARE(
            f->fake.alerts->shown.constLast().informativeText,
            u"notes — no bundle identifier, so there's nothing for Vantle to match against."_s);
        f->fake.applications->files.insert(u"/tmp/vlc.desktop"_s, {u"vlc"_s, u"VLC"_s, {}});
        tab.exclude({}, {u"/tmp/vlc.desktop"_s, u"/tmp/readme.txt"_s, u"/tmp/link.desktop"_s});
        QCOMPARE(f->settings().excludedBundleIDs().last(), u"vlc"_s);
        QCOMPARE(f->fake.alerts->shown.size(), 2);
        QCOMPARE(f->fake.alerts->shown.constLast().messageText, u"Some apps couldn't be added"_s);
        QVERIFY(f->fake.alerts->shown.constLast().informativeText.startsWith(u"readme, link — "_s));
    }

    void versionLine_data() {
        QTest::addColumn<std::optional<QString>>("version");
        QTest::addColumn<std::optional<QString>>("build");
        QTest::addColumn<QString>("line");
        const std::optional<QString> none;
        const std::optional v14(u"1.4"_s);
        QTest::newRow("build differs") << v14 << std::optional(u"212"_s) << u"Version 1.4 (212)"_s;
        QTest::newRow("build same") << v14 << v14 << u"Version 1.4"_s;
        QTest::newRow("no build") << v14 << none << u"Version 1.4"_s;
        QTest::newRow("no version") << none << std::optional(u"9"_s) << u"Version — (9)"_s;
    }
    void versionLine() {
        QFETCH(std::optional<QString>, version);
        QFETCH(std::optional<QString>, build);
        QFETCH(QString, line);
        FakeBundleInfo bundle;
        bundle.shortVersionValue = version;
        bundle.buildNumberValue = build;
        QCOMPARE(AboutTab::versionLine(bundle), line);
    }

    // The Linux texts name the tray and the computer; the tip box needs both build settings; the
    // symbols are redrawn for a dark palette.
    void aboutTab() {
        AboutTab tab(r->build());
        const QStringList texts = textsOf<QLabel>(tab);
        for (const QString& text :
             {u"Version 2.3.1 (231)"_s, u"App control for your system tray"_s, u"by Pelmark"_s,
              u"Select apps in the system tray and quit them together."_s,
              u"Clear everything once the computer has sat unused."_s,
              u"Quit everything, sleep, restart or shut down from any app."_s}) {
            QVERIFY2(texts.contains(text), qPrintable(text));
        }
        const bool tipConfigured =
            !AboutTab::tipServiceName().isEmpty() && !AboutTab::tipPageAddress().isEmpty();
        QCOMPARE(tab.findChild<QWidget*>(u"tipBox"_s) != nullptr, tipConfigured);

        tab.setPalette(AppearancePalette::lightPalette());
        const QImage light = pixmapOf(tab);
        tab.setPalette(AppearancePalette::darkPalette());
        QVERIFY(pixmapOf(tab) != light);
    }

    // The status as the report words it; a server that never answers leaves "unknown".
    void notificationStatus_data() {
        QTest::addColumn<bool>("answers");
        QTest::addColumn<AuthorizationStatus>("status");
        QTest::addColumn<QString>("text");
        QTest::newRow("denied") << true << AuthorizationStatus::denied
                                << u"DENIED (warnings fall back to the window)"_s;
        QTest::newRow("authorized") << true << AuthorizationStatus::authorized << u"authorized"_s;
        QTest::newRow("not determined")
            << true << AuthorizationStatus::notDetermined << u"not determined"_s;
        QTest::newRow("ephemeral") << true << AuthorizationStatus::ephemeral << u"unknown"_s;
        QTest::newRow("no answer") << false << AuthorizationStatus::authorized << u"unknown"_s;
    }
    void notificationStatus() {
        QFETCH(bool, answers);
        QFETCH(AuthorizationStatus, status);
        QFETCH(QString, text);
        r->notifications->answersStatus = answers;
        r->notifications->status = status;
        AdvancedTab tab(r->build());
        QCOMPARE(tab.notificationStatus(), u"checking"_s);
        tab.show();
        r->clock().advance(AdvancedTab::kStatusQueryLimit);
        QCOMPARE(tab.notificationStatus(), text);
        QVERIFY(textsOf<QLabel>(tab).contains(u"Notifications: "_s + text));
        tab.copyButton()->click();
        QVERIFY(QApplication::clipboard()->text().contains(u"\nNotifications: "_s + text + u'\n'));
    }

    void copyDiagnosticsSaysSoForTwoSeconds() {
        AdvancedTab tab(r->build());
        QApplication::clipboard()->clear();
        tab.copyButton()->click();
        QCOMPARE(QApplication::clipboard()->text(), r->settings->diagnosticsReport(u"checking"_s));
        QCOMPARE(tab.copyButton()->text(), u"Copied to Clipboard"_s);
        r->clock().advance(AdvancedTab::kCopiedFor - Milliseconds(1));
        // A second copy starts the two seconds again.
        tab.copyButton()->click();
        r->clock().advance(Milliseconds(1999));
        QCOMPARE(tab.copyButton()->text(), u"Copied to Clipboard"_s);
        r->clock().advance(Milliseconds(1));
        QCOMPARE(tab.copyButton()->text(), u"Copy Diagnostics"_s);
    }

    // The sheet lists the plan, asks for the password only when a step needs it, and shows a
    // failure in place; Cancel changes nothing.
    void removalSheet_data() {
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<bool>("dismiss");
        QTest::addColumn<bool>("passwordLine");
        QTest::newRow("nothing privileged") << QStringList{} << false << false;
        QTest::newRow("events, password given")
            << QStringList{u"wake|11/17/26 07:30:00"_s} << false << true;
        QTest::newRow("events, prompt dismissed")
            << QStringList{u"wake|11/17/26 07:30:00"_s} << true << true;
    }
    void removalSheet() {
        QFETCH(QStringList, events);
        QFETCH(bool, dismiss);
        QFETCH(bool, passwordLine);
        r->loginItem->registered = true;
        r->files->paths << r->platform.installation.path;
        AdvancedTab tab(r->build());
        r->settings->setPmsetRegistered(events);
        if (dismiss) {
            r->scripts->administratorOutcome = ScriptOutcome::userCancelled();
        }
        tab.show();

        tab.removeButton()->click();
        QPointer<RemovalSheet> sheet = tab.removalSheet();
        QVERIFY(sheet && sheet->isVisible());
        const QString steps = sheet->findChild<QLabel*>(u"steps"_s)->text();
        QVERIFY(steps.contains(u"Stop Vantle opening at login"_s));
        QVERIFY(steps.endsWith(u"<li>Move Vantle to the Trash</li></ul>"_s));
        QCOMPARE(sheet->findChild<QLabel*>(u"passwordLine"_s) != nullptr, passwordLine);
        QVERIFY(textsOf<QLabel>(*sheet).contains(
            u"Vantle goes to the Trash, so you can put it back if you change your mind."_s));

        sheet->cancelButton()->click();
        QTRY_VERIFY(!sheet);
        QVERIFY(r->scripts->administratorRuns.isEmpty());

        tab.removeButton()->click();
        sheet = tab.removalSheet();
        sheet->removeButton()->click();
        QCOMPARE(sheet->removeButton()->text(), u"Removing…"_s);
        QVERIFY(!sheet->cancelButton()->isEnabled());
        if (dismiss) {
            QTRY_COMPARE(sheet->errorText(),
                         u"Vantle could not change the power schedule, so nothing was removed. "
                         u"This usually means the password prompt was cancelled."_s);
            QCOMPARE(std::tuple(sheet->isVisible(), sheet->removeButton()->text(),
                                r->loginItem->registered, r->removedCount),
                     std::tuple(true, u"Remove Vantle"_s, true, 0));
        } else {
            QTRY_VERIFY(!sheet);
            QCOMPARE(std::tuple(r->removedCount, r->loginItem->registered,
                                r->files->exists(r->platform.installation.path)),
                     std::tuple(1, false, false));
        }
        QCOMPARE(r->scripts->administratorRuns.size(), passwordLine ? 1 : 0);
    }
};

QTEST_MAIN(TestSettings)
#include "tst_settings.moc"
