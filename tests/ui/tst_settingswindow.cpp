#include "fakes/SettingsFixture.h"
#include "model/AppSettings.h"
#include "system/HotKeyService.h"
#include "ui/settings/SettingsSelection.h"
#include "ui/settings/SettingsWindow.h"
#include "ui/settings/WheelGuard.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMetaProperty>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>

using namespace vantle;
using namespace Qt::StringLiterals;

namespace {

// Controls of every page the window has built, and of its tab bar.
QList<QWidget*> controls(SettingsWindow* window) {
    QList<QWidget*> found;
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        if (widget->focusPolicy() & Qt::TabFocus && !widget->objectName().startsWith(u"qt_"_s) &&
            !qobject_cast<QScrollArea*>(widget)) {
            found.append(widget);
        }
    }
    return found;
}

bool isSettingName(const QString& name) {
    return AppSettings::staticMetaObject.indexOfProperty(name.toLatin1().constData()) >= 0;
}

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

} // namespace

class TestSettingsWindow : public QObject {
    Q_OBJECT

private slots:
    // One window at a time: later requests bring it forward on the tab asked for, or on the one
    // it shows; closing forgets it, and the next window opens where the last was left.
    void oneWindowThatKeepsItsTab() {
        SettingsFixture fixture;
        SettingsWindowManager& manager = fixture.windows();
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
        QCOMPARE(manager.window(), first);
        QCOMPARE(first->currentTab(), SettingsTab::exclusions);
        manager.show();
        QCOMPARE(manager.window(), first);
        QCOMPARE(first->currentTab(), SettingsTab::exclusions);

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
        SettingsFixture fixture;
        fixture.windows().show(SettingsTab::general);
        SettingsWindow* window = fixture.windows().window();
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
        QCOMPARE(fixture.windows().selection().tab(), SettingsTab::exclusions);
        QVERIFY(window->page(SettingsTab::exclusions));
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
    // lands in the store. New bound controls must be listed here.
    void boundControlsRoundTrip_data() {
        QTest::addColumn<QString>("property");
        QTest::addColumn<QVariant>("first");
        QTest::addColumn<QVariant>("second");
        for (const BoundSetting& row : kBoundSettings) {
            QTest::newRow(row.property)
                << QString::fromLatin1(row.property) << row.first << row.second;
        }
    }
    void boundControlsRoundTrip() {
        QFETCH(QString, property);
        QFETCH(QVariant, first);
        QFETCH(QVariant, second);
        SettingsFixture fixture;
        for (const SettingsTab tab : allCases<SettingsTab>()) {
            fixture.windows().show(tab);
        }
        SettingsWindow* window = fixture.windows().window();
        auto* control = window->findChild<QWidget*>(property);
        if (!control) {
            QSKIP("no tab of this build shows this setting");
        }
        AppSettings& settings = fixture.settings();
        const QByteArray name = property.toLatin1();
        QVERIFY(settings.setProperty(name.constData(), first));
        const QVariant shownFirst = shownValue(control);
        QVERIFY(settings.setProperty(name.constData(), second));
        QVERIFY2(shownFirst != shownValue(control), "the control does not follow the setting");
        control->metaObject()->userProperty().write(control, shownFirst);
        QCOMPARE(settings.property(name.constData()), first);
    }

    void everyBoundControlIsInTheTable() {
        SettingsFixture fixture;
        for (const SettingsTab tab : allCases<SettingsTab>()) {
            fixture.windows().show(tab);
        }
        for (QWidget* widget : fixture.windows().window()->findChildren<QWidget*>()) {
            const QString name = widget->objectName();
            QVERIFY2(!isSettingName(name) ||
                         std::any_of(std::begin(kBoundSettings), std::end(kBoundSettings),
                                     [&name](const BoundSetting& row) {
                                         return name == QLatin1String(row.property);
                                     }),
                     qPrintable(name));
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
        SettingsFixture fixture;
        AppSettings& settings = fixture.settings();
        fixture.launch(40, u"Mail"_s, u"org.gnome.Evolution"_s);
        fixture.launch(41, u"Terminal"_s, std::nullopt);
        settings.setExcludedBundleIDs({u"org.gnome.Evolution"_s, u"gone.app"_s});
        settings.setAppRules({{u"org.gnome.Evolution"_s, u"Mail"_s, AppRule::Action::quit, 30},
                              {u"org.chat"_s, u"Chat"_s, AppRule::Action::hide, 7}});
        settings.setIdleQuitEnabled(true);
        settings.setQuitWarningStyle(QuitWarningStyle::window);
        ShutdownSchedule wake;
        wake.action = ShutdownSchedule::Action::wake;
        wake.days = {ShutdownSchedule::Weekday::monday, ShutdownSchedule::Weekday::tuesday};
        ShutdownSchedule skipped; // out of range and switched off
        skipped.hour = 25;
        skipped.isEnabled = false;
        settings.setShutdownSchedules({ShutdownSchedule{}, wake, skipped});
        settings.setDisabledShortcutIDs({u"restart"_s});
        fixture.fake.hotKeys->held = {HotKeyService::hotKeyId(AppCommand::shutDown)};
        fixture.delegate.hotKeyService().registerHotKeys(settings.enabledGlobalCommands());
        fixture.windows().show(tab);
        SettingsWindow* window = fixture.windows().window();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        const int needs = window->page(tab)->minimumSizeHint().width();
        QVERIFY2(needs <= 560, qPrintable(u"needs %1 px"_s.arg(needs)));

        QList<QWidget*> chain;
        QWidget* start = window->findChild<QWidget*>(u"tab-about"_s);
        for (QWidget* w = start; w && (chain.isEmpty() || w != start); w = w->nextInFocusChain()) {
            if (w->isVisible() && w->isEnabled() && (w->focusPolicy() & Qt::TabFocus) &&
                !qobject_cast<QScrollArea*>(w) && !w->objectName().startsWith(u"qt_"_s)) {
                chain.append(w);
            }
        }
        for (QWidget* w : controls(window)) {
            if (!w->isVisible()) {
                continue;
            }
            QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(w);
            QVERIFY2(accessible && !accessible->text(QAccessible::Name).isEmpty(),
                     qPrintable(u"%1 %2"_s.arg(QLatin1String(w->metaObject()->className()),
                                               w->objectName())));
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
};

QTEST_MAIN(TestSettingsWindow)
#include "tst_settingswindow.moc"
