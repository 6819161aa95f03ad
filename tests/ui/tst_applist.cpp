#include "fakes/AppListFixture.h"
#include "fakes/FakeTrayHost.h"
#include "fakes/LogCapture.h"
#include "ui/applist/AppListModel.h"
#include "ui/applist/AppListView.h"
#include "ui/applist/AppRowDelegate.h"
#include "ui/status/PopupPlacement.h"
#include "ui/status/StatusBarController.h"
#include "ui/status/StatusMenu.h"

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
// The menu as one line: its entries with their key caps, separators as "---".
QString rendered(const QList<StatusMenu::Item>& items) {
    QStringList lines;
    for (const StatusMenu::Item& item : items) {
        lines << (item.kind == StatusMenu::Kind::separator
                      ? u"---"_s
                      : item.title + (item.keyCap.isEmpty() ? QString() : u" "_s + item.keyCap));
    }
    return lines.join(u" | "_s);
}
} // namespace

// The app list: its view state (what it shows, ticks and quits), its widgets driven as a user
// would, by keys and clicks; and the tray item that shows it: its menu, where the popup goes,
// and when the list shows as popup or window.
class TestAppList : public QObject {
    Q_OBJECT

    std::unique_ptr<AppListFixture> f;
    std::unique_ptr<AppListView> view;
    std::unique_ptr<FakeTrayHost> tray;
    std::unique_ptr<StatusBarController> bar;
    QList<AppCommand> commands;

    template <typename T>
    T* child(const char* name) const {
        T* widget = view->findChild<T*>(QLatin1String(name));
        if (!widget) {
            qFatal("no child %s", name);
        }
        return widget;
    }
    QListView* list() const { return child<QListView>("apps"); }
    QString count() const { return child<QLabel>("count")->text(); }
    QString page() const {
        return view->findChild<QStackedWidget*>()->currentWidget()->objectName();
    }
    void show() {
        view->show();
        view->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(view.get()));
    }
    QPoint rowPoint(int row, bool quitButton) const {
        const QRect rect = list()->visualRect(list()->model()->index(row, 0));
        return quitButton ? AppRowDelegate::quitRect(rect).center() : rect.center();
    }

    // The tray item over a tray that is there from the start, or not.
    void startBar(bool trayAvailable) {
        tray->available = trayAvailable;
        StatusBarController::Options options;
        options.trayWait = 30s;
        bar = std::make_unique<StatusBarController>(
            f->monitor, f->settings, *tray, nullptr, f->clock, options,
            [this](AppCommand command) { commands << command; },
            [] { return QSet<AppCommand>{AppCommand::restart}; });
        bar->start();
    }

private slots:
    void init() {
        // The last case's widgets go before the fixture they show.
        bar.reset();
        view.reset();
        f = std::make_unique<AppListFixture>();
        view = std::make_unique<AppListView>(f->state, nullptr);
        tray = std::make_unique<FakeTrayHost>();
        commands.clear();
    }

    // Every app shown starts ticked, so the count is always "n / n".
    void visibleApps_data() {
        QTest::addColumn<bool>("showBackground");
        QTest::addColumn<QString>("search");
        QTest::addColumn<QStringList>("visible");
        const QStringList all{u"Files"_s, u"Safari"_s, u"Élan"_s, u"Tray Clock"_s};
        QTest::newRow("all, background shown") << true << QString() << all;
        QTest::newRow("background hidden") << false << QString() << all.mid(0, 3);
        QTest::newRow("case-insensitive name match")
            << true << u"SAF"_s << QStringList{u"Safari"_s};
        QTest::newRow("matches inside a name") << true << u"ari"_s << QStringList{u"Safari"_s};
        QTest::newRow("accents fold by case only") << true << u"élan"_s << QStringList{u"Élan"_s};
        QTest::newRow("bundle id is not searched") << true << u"org.example"_s << QStringList();
        QTest::newRow("search never shows hidden background apps")
            << false << u"clock"_s << QStringList();
    }
    void visibleApps() {
        QFETCH(bool, showBackground);
        QFETCH(QString, search);
        QFETCH(QStringList, visible);
        f->settings.setShowBackgroundApps(showBackground);
        f->launch(10, u"Safari"_s)->bundleId = u"org.example.safari"_s;
        f->launch(11, u"Files"_s)->bundleId = u"org.example.files"_s;
        f->launch(12, u"Élan"_s);
        f->launch(13, u"Tray Clock"_s, true);
        f->state.setSearchText(search);
        QCOMPARE(f->visibleNames(), visible);
        QCOMPARE(f->state.countText(), u"%1 / %1"_s.arg(visible.size()));
        if (visible.isEmpty()) {
            QCOMPARE(f->state.emptyText(), u"No apps match"_s);
        }
    }

    void keyboardDrivesTheList() {
        auto safari = f->launch(10, u"Safari"_s);
        auto files = f->launch(11, u"Files"_s);
        show();
        auto* search = child<QLineEdit>("search");
        auto* selectAll = child<QCheckBox>("selectAll");
        QCOMPARE(search->placeholderText(), u"Search apps (Ctrl+F)"_s);
        QCOMPARE(selectAll->toolTip(), u"Deselect all (Shift+Ctrl+A)"_s);
        QVERIFY(!view->findChild<QWidget*>(u"settings"_s)); // no settings window yet

        list()->setFocus();
        QTest::keyClick(view.get(), Qt::Key_F, Qt::ControlModifier);
        QTRY_VERIFY(search->hasFocus());
        QTest::keyClicks(search, u"saf"_s);
        QCOMPARE(list()->model()->rowCount(), 1);
        QCOMPARE(count(), u"1 / 1"_s);
        QCOMPARE(selectAll->toolTip(), u"Deselect all matching apps (Shift+Ctrl+A)"_s);

        // Select all acts on the apps the search shows.
        QTest::keyClick(view.get(), Qt::Key_A, Qt::ShiftModifier | Qt::ControlModifier);
        QCOMPARE(std::pair(count(), selectAll->toolTip()),
                 std::pair(u"0 / 1"_s, u"Select all matching apps (Shift+Ctrl+A)"_s));
        QVERIFY(!child<QPushButton>("quitSelected")->isEnabled());
        QTest::keyClick(view.get(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(safari->terminateRequests, 0);
        search->clear();
        QCOMPARE(std::tuple(count(), selectAll->isChecked(), selectAll->toolTip()),
                 std::tuple(u"1 / 2"_s, false, u"Select all (Shift+Ctrl+A)"_s));
        QTest::keyClick(view.get(), Qt::Key_A, Qt::ShiftModifier | Qt::ControlModifier);
        QVERIFY(selectAll->isChecked());

        QTest::keyClicks(search, u"saf"_s);
        int dismissed = 0;
        f->state.onDismiss = [&] { ++dismissed; };
        QTest::keyClick(view.get(), Qt::Key_Enter, Qt::ControlModifier);
        // An app hidden by the search is never quit by the main button.
        QCOMPARE(std::tuple(safari->terminateRequests, files->terminateRequests, dismissed),
                 std::tuple(1, 0, 1));
        // The list catches up 0.8 s later.
        f->clock.advance(800ms);
        QCOMPARE(f->names(f->monitor.runningApps()), QStringList{u"Files"_s});
    }

    void rowsTickAndQuitByClick() {
        auto mail = f->launch(10, u"Mail"_s);
        auto notes = f->launch(11, u"Notes"_s);
        show();
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, rowPoint(0, false));
        QVERIFY(!f->state.isSelected(10));
        QCOMPARE(count(), u"1 / 2"_s);
        QVERIFY(!child<QCheckBox>("selectAll")->isChecked());
        // Space on the current row ticks it again.
        list()->setFocus();
        list()->setCurrentIndex(list()->model()->index(0, 0));
        QTest::keyClick(list(), Qt::Key_Space);
        QVERIFY(f->state.isSelected(10));

        // The row button quits at once, forced in force-quit mode, without asking.
        child<QCheckBox>("forceMode")->click();
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, rowPoint(1, true));
        QCOMPARE(std::pair(notes->forceRequests, page()), std::pair(1, u"apps"_s));
        child<QCheckBox>("forceMode")->click();
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, rowPoint(0, true));
        QCOMPARE(mail->terminateRequests, 1);
    }

    void emptyStates() {
        show();
        QCOMPARE(page(), u"empty"_s);
        QCOMPARE(child<QLabel>("emptyText")->text(), u"Loading…"_s);
        QCOMPARE(count(), u"0 / 0"_s);
        QVERIFY(!child<QCheckBox>("selectAll")->isChecked());
        QVERIFY(!child<QPushButton>("quitSelected")->isEnabled());
        f->launch(10, u"Mail"_s);
        QCOMPARE(page(), u"apps"_s);
        QTest::keyClicks(child<QLineEdit>("search"), u"zz"_s);
        QCOMPARE(page(), u"empty"_s);
        QCOMPARE(child<QLabel>("emptyText")->text(), u"No apps match"_s);
    }

    // Force-quit mode asks first, in the list itself, and stays on until turned off.
    void forceQuitIsConfirmedInPlace() {
        auto mail = f->launch(10, u"Mail"_s);
        auto notes = f->launch(11, u"Notes"_s);
        show();
        auto* quit = child<QPushButton>("quitSelected");
        // The button, its help and the rows' help say which quit they do.
        const auto texts = [&] {
            return std::tuple(quit->text(), quit->toolTip(),
                              f->state.rowQuitHelp(f->state.visibleApps().constFirst()));
        };
        QCOMPARE(texts(), std::tuple(u"Quit Selected"_s, u"Quit the ticked apps (Ctrl+Enter)"_s,
                                     u"Quit Mail"_s));
        child<QCheckBox>("forceMode")->click();
        QCOMPARE(texts(), std::tuple(u"Force Quit"_s, u"Force quit the ticked apps (Ctrl+Enter)"_s,
                                     u"Force quit Mail"_s));
        int dismissed = 0;
        f->state.onDismiss = [&] { ++dismissed; };

        QTest::keyClick(view.get(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(page(), u"forceQuitConfirmation"_s);
        QCOMPARE(child<QLabel>("confirmTitle")->text(), u"Force quit 2 apps?"_s);
        QVERIFY(!quit->isEnabled());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QCOMPARE(page(), u"apps"_s);
        QCOMPARE(mail->forceRequests + notes->forceRequests + mail->terminateRequests, 0);

        // Nothing ticked: nothing to confirm.
        f->state.setSelected(10, false);
        f->state.setSelected(11, false);
        QTest::keyClick(view.get(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(page(), u"apps"_s);

        f->state.setSelected(10, true);
        quit->click();
        QCOMPARE(child<QLabel>("confirmTitle")->text(), u"Force quit Mail?"_s);
        child<QPushButton>("confirmForceQuit")->click();
        QCOMPARE(std::tuple(mail->forceRequests, mail->terminateRequests, notes->forceRequests,
                            dismissed, page(), f->state.isForceMode()),
                 std::tuple(1, 0, 0, 0, u"apps"_s, true));

        // The app goes while the question is open: nothing left to force.
        quit->click();
        f->exit(10);
        QCOMPARE(f->state.confirmationTitle(), u"Force quit this app?"_s);
        child<QPushButton>("confirmForceQuit")->click();
        QCOMPARE(std::pair(mail->forceRequests, page()), std::pair(1, u"apps"_s));

        // Hiding the list clears the search, and nothing else.
        f->monitor.setListVisible(true);
        f->state.setSearchText(u"no"_s);
        f->monitor.setListVisible(false);
        QCOMPARE(std::tuple(f->state.searchText(), f->state.isSelected(11), f->state.isForceMode()),
                 std::tuple(QString(), false, true));
    }

    // The monitor refreshes on every focus change; rows must follow by pid, not be rebuilt.
    void rowsFollowAppsByPid() {
        f->launch(10, u"Mail"_s);
        f->launch(12, u"Terminal"_s);
        auto* model = qobject_cast<AppListModel*>(list()->model());
        QSignalSpy inserted(model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy changed(model, &QAbstractItemModel::dataChanged);
        QSignalSpy reset(model, &QAbstractItemModel::modelReset);

        f->monitor.refresh();
        QCOMPARE(changed.count() + inserted.count() + removed.count(), 0);
        f->launch(11, u"Notes"_s);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(inserted.constFirst().at(1).toInt(), 1); // sorted between Mail and Terminal
        f->exit(10);
        QCOMPARE(removed.count(), 1);
        f->state.setSelected(12, false);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(model->data(model->index(1), AppListModel::SelectedRole).toBool(), false);
        QCOMPARE(reset.count(), 0);
        QStringList rows;
        for (int row = 0; row < model->rowCount(); ++row) {
            rows << model->data(model->index(row), Qt::DisplayRole).toString();
        }
        QCOMPARE(rows, f->visibleNames());

        // New apps start ticked, also one given the pid of an unticked app that left.
        f->state.setSelected(11, false);
        f->exit(11);
        f->launch(11, u"Music"_s);
        QCOMPARE(f->names(f->state.selectedApps()), QStringList{u"Music"_s});
    }

    void menu_data() {
        QTest::addColumn<QStringList>("disabled");
        QTest::addColumn<QSet<AppCommand>>("unavailable");
        QTest::addColumn<bool>("macOS");
        QTest::addColumn<QString>("menu");
        QTest::newRow("switched off and unclaimable keys are not shown")
            << QStringList{u"sleep"_s} << QSet<AppCommand>{AppCommand::restart} << false
            << u"Show Running Apps | --- | Quit All Apps Ctrl+Alt+Super+Q | Sleep | Restart | "
               u"Shut Down Ctrl+Alt+Super+D | --- | Quit Vantle Ctrl+Q"_s;
        QTest::newRow("macOS, with settings and updates")
            << QStringList{u"shutDown"_s} << QSet<AppCommand>() << true
            << u"Quit All Apps ⌃⌥⌘Q | Sleep ⌃⌥⌘S | Restart ⌃⌥⌘R | Shut Down | --- | About Vantle | "
               u"Settings… ⌘, | Check for Updates… | --- | Quit Vantle ⌘Q"_s;
    }
    void menu() {
        QFETCH(QStringList, disabled);
        QFETCH(QSet<AppCommand>, unavailable);
        QFETCH(bool, macOS);
        QFETCH(QString, menu);
        f->settings.setDisabledShortcutIDs(disabled);
        StatusMenu::Options options;
        options.keyCaps = macOS ? KeyCapStyle::macOS : KeyCapStyle::linuxDesktop;
        options.leadWithAppList = !macOS;
        options.hasSettingsWindow = macOS;
        options.hasUpdater = macOS;
        QCOMPARE(rendered(StatusMenu::items(f->settings, unavailable, options)), menu);
    }

    void popupPlacement_data() {
        QTest::addColumn<QRect>("icon");
        QTest::addColumn<QPoint>("pointer");
        QTest::addColumn<QPoint>("expected");
        // A 1280x800 screen with a 24-pixel top panel; the popup is 300x200.
        QTest::newRow("under a top-panel icon")
            << QRect(600, 0, 24, 24) << QPoint() << QPoint(461, 28);
        QTest::newRow("clamped at the right edge")
            << QRect(1256, 0, 24, 24) << QPoint() << QPoint(980, 28);
        QTest::newRow("above a bottom-panel icon")
            << QRect(10, 776, 24, 24) << QPoint() << QPoint(0, 572);
        QTest::newRow("at the pointer without icon geometry")
            << QRect() << QPoint(700, 300) << QPoint(550, 305);
    }
    void popupPlacement() {
        QFETCH(QRect, icon);
        QFETCH(QPoint, pointer);
        QFETCH(QPoint, expected);
        const QRect available(0, 24, 1280, 776);
        QCOMPARE(popupPosition(icon, pointer, QSize(300, 200), available), expected);
    }

    void withoutTrayTheWindowOpensAfterTheWait() {
        LogCapture log;
        startBar(false);
        f->clock.advance(29s);
        QVERIFY(!bar->panel()->isVisible());
        f->clock.advance(1s);
        QCOMPARE(std::tuple(bar->panel()->isVisible(), bar->isPopup(), f->monitor.isListVisible(),
                            log.count(u"no system tray"_s)),
                 std::tuple(true, false, true, 1));

        bar->panel()->close();
        QCOMPARE(std::pair(f->monitor.isListVisible(), log.count(u"keeps running"_s)),
                 std::pair(false, 1));
        bar->showAppList(); // a second launch
        QCOMPARE(std::pair(bar->panel()->isVisible(), bar->hasTrayIcon()), std::pair(true, false));
    }

    void aTrayThatAppearsLaterGetsTheIcon() {
        startBar(false);
        f->clock.advance(10s);
        tray->setAvailable(true);
        QVERIFY(bar->hasTrayIcon());
        f->clock.advance(60s);
        QVERIFY(!bar->panel()->isVisible());
        bar->showAppList();
        QVERIFY(bar->isPopup());
        QVERIFY(bar->panel()->isVisible());
    }

    void clicksToggleThePopupAndItsPolling() {
        startBar(true);
        QVERIFY(bar->hasTrayIcon());
        bar->togglePopup();
        QVERIFY(bar->panel()->isVisible());
        QVERIFY(bar->isPopup());
        QVERIFY(f->monitor.isListVisible());
        QTest::mousePress(bar->panel(), Qt::LeftButton, {}, QPoint(-20, -20)); // elsewhere
        QVERIFY(!bar->panel()->isVisible());
        QVERIFY(!f->monitor.isListVisible());
        bar->togglePopup(); // the same click landing on the icon
        QVERIFY(!bar->panel()->isVisible());
        f->clock.advance(1s);
        bar->togglePopup();
        QVERIFY(bar->panel()->isVisible());
        QTest::mouseRelease(bar->panel(), Qt::LeftButton, {}, QPoint(-20, -20));
        bar->togglePopup();
        QVERIFY(!bar->panel()->isVisible());
        // Escape leaves no click behind: the icon opens the list again at once.
        bar->togglePopup();
        QTest::keyClick(bar->panel(), Qt::Key_Escape);
        QVERIFY(!bar->panel()->isVisible());
        bar->togglePopup();
        QVERIFY(bar->panel()->isVisible());
    }

    void theMenuClosesThePopupAndSendsCommands() {
        startBar(true);
        bar->togglePopup();
        emit bar->menu()->aboutToShow();
        QVERIFY(!bar->panel()->isVisible());
        // Unclaimable: no key shown.
        QCOMPARE(bar->menu()->findChild<QAction*>(u"restart"_s)->text(), u"Restart"_s);
        QCOMPARE(bar->menu()->findChild<QAction*>(u"sleep"_s)->text(),
                 u"Sleep\tCtrl+Alt+Super+S"_s);
        bar->menu()->findChild<QAction*>(u"sleep"_s)->trigger();
        QCOMPARE(commands, QList<AppCommand>{AppCommand::sleep});
        QVERIFY(!bar->menu()->findChild<QAction*>(u"about"_s)); // no settings window yet

        bar->menu()->findChild<QAction*>(u"showAppList"_s)->trigger();
        QTRY_VERIFY(bar->panel()->isVisible());
    }
};

QTEST_MAIN(TestAppList)
#include "tst_applist.moc"
