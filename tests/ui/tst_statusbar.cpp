#include "fakes/AppListFixture.h"
#include "fakes/FakeTrayHost.h"
#include "fakes/LogCapture.h"
#include "ui/status/PopupPlacement.h"
#include "ui/status/StatusBarController.h"
#include "ui/status/StatusMenu.h"

#include <QAction>
#include <QMenu>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

Q_DECLARE_METATYPE(QSet<vantle::AppCommand>)

namespace {
QStringList rendered(const QList<StatusMenu::Item>& items) {
    QStringList lines;
    for (const StatusMenu::Item& item : items) {
        lines << (item.kind == StatusMenu::Kind::separator
                      ? u"---"_s
                      : item.title + (item.keyCap.isEmpty() ? QString() : u" "_s + item.keyCap));
    }
    return lines;
}
} // namespace

// The tray item: its menu, where the popup goes, and when the list shows as popup or window.
class TestStatusBar : public QObject {
    Q_OBJECT

    std::unique_ptr<AppListFixture> f;
    std::unique_ptr<FakeTrayHost> tray;
    std::unique_ptr<StatusBarController> bar;
    QList<AppCommand> commands;

    void makeBar() {
        StatusBarController::Options options;
        options.trayWait = 30s;
        bar = std::make_unique<StatusBarController>(
            f->monitor, f->settings, *tray, nullptr, f->clock, options,
            [this](AppCommand command) { commands << command; },
            [] { return QSet<AppCommand>{AppCommand::restart}; });
    }

private slots:
    void init() {
        f = std::make_unique<AppListFixture>();
        tray = std::make_unique<FakeTrayHost>();
        commands.clear();
    }
    void cleanup() {
        bar.reset();
        tray.reset();
        f.reset();
    }

    void menu_data() {
        QTest::addColumn<QStringList>("disabled");
        QTest::addColumn<QSet<AppCommand>>("unavailable");
        QTest::addColumn<bool>("macOS");
        QTest::addColumn<QStringList>("lines");
        const QStringList linuxTail{u"---"_s, u"Quit Vantle Ctrl+Q"_s};
        QTest::newRow("switched off and unclaimable keys are not shown")
            << QStringList{u"sleep"_s} << QSet<AppCommand>{AppCommand::restart} << false
            << QStringList{u"Show Running Apps"_s,
                           u"---"_s,
                           u"Quit All Apps Ctrl+Alt+Super+Q"_s,
                           u"Sleep"_s,
                           u"Restart"_s,
                           u"Shut Down Ctrl+Alt+Super+D"_s} +
                   linuxTail;
        QTest::newRow("macOS, with settings and updates")
            << QStringList{u"shutDown"_s} << QSet<AppCommand>() << true
            << QStringList{u"Quit All Apps ⌃⌥⌘Q"_s,
                           u"Sleep ⌃⌥⌘S"_s,
                           u"Restart ⌃⌥⌘R"_s,
                           u"Shut Down"_s,
                           u"---"_s,
                           u"About Vantle"_s,
                           u"Settings… ⌘,"_s,
                           u"Check for Updates…"_s,
                           u"---"_s,
                           u"Quit Vantle ⌘Q"_s};
    }
    void menu() {
        QFETCH(QStringList, disabled);
        QFETCH(QSet<AppCommand>, unavailable);
        QFETCH(bool, macOS);
        QFETCH(QStringList, lines);
        f->settings.setDisabledShortcutIDs(disabled);
        StatusMenu::Options options;
        options.keyCaps = macOS ? KeyCapStyle::macOS : KeyCapStyle::linuxDesktop;
        options.leadWithAppList = !macOS;
        options.hasSettingsWindow = macOS;
        options.hasUpdater = macOS;
        QCOMPARE(rendered(StatusMenu::items(f->settings, unavailable, options)), lines);
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
        makeBar();
        bar->start();
        f->clock.advance(29s);
        QVERIFY(!bar->panel()->isVisible());
        f->clock.advance(1s);
        QVERIFY(bar->panel()->isVisible());
        QVERIFY(!bar->isPopup());
        QVERIFY(f->monitor.isListVisible());
        QCOMPARE(log.count(u"no system tray"_s), 1);

        bar->panel()->close();
        QVERIFY(!f->monitor.isListVisible());
        QCOMPARE(log.count(u"keeps running"_s), 1);
        bar->showAppList(); // a second launch
        QVERIFY(bar->panel()->isVisible());
        QVERIFY(!bar->hasTrayIcon());
    }

    void aTrayThatAppearsLaterGetsTheIcon() {
        makeBar();
        bar->start();
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
        tray->available = true;
        makeBar();
        bar->start();
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
        tray->available = true;
        makeBar();
        bar->start();
        bar->togglePopup();
        emit bar->menu()->aboutToShow();
        QVERIFY(!bar->panel()->isVisible());
        QAction* restart = bar->menu()->findChild<QAction*>(u"restart"_s);
        QVERIFY(restart);
        QCOMPARE(restart->text(), u"Restart"_s); // unclaimable: no key shown
        QCOMPARE(bar->menu()->findChild<QAction*>(u"sleep"_s)->text(),
                 u"Sleep\tCtrl+Alt+Super+S"_s);
        bar->menu()->findChild<QAction*>(u"sleep"_s)->trigger();
        QCOMPARE(commands, QList<AppCommand>{AppCommand::sleep});
        QVERIFY(!bar->menu()->findChild<QAction*>(u"about"_s)); // no settings window yet

        bar->menu()->findChild<QAction*>(u"showAppList"_s)->trigger();
        QTRY_VERIFY(bar->panel()->isVisible());
    }
};

QTEST_MAIN(TestStatusBar)
#include "tst_statusbar.moc"
