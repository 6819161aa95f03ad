#include "fakes/AppListFixture.h"

#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// The app list's view state: what it shows, what it ticks, and what its buttons quit.
class TestAppListState : public QObject {
    Q_OBJECT

    std::unique_ptr<AppListFixture> f;

private slots:
    void init() { f = std::make_unique<AppListFixture>(); }
    void cleanup() { f.reset(); }

    void visibleApps_data() {
        QTest::addColumn<bool>("showBackground");
        QTest::addColumn<QString>("search");
        QTest::addColumn<QStringList>("visible");
        QTest::addColumn<QString>("count");
        QTest::addColumn<QString>("empty");
        const QStringList all{u"Files"_s, u"Safari"_s, u"Élan"_s, u"Tray Clock"_s};
        QTest::newRow("all, background shown")
            << true << QString() << all << u"4 / 4"_s << QString();
        QTest::newRow("background hidden")
            << false << QString() << all.mid(0, 3) << u"3 / 3"_s << QString();
        QTest::newRow("case-insensitive name match")
            << true << u"SAF"_s << QStringList{u"Safari"_s} << u"1 / 1"_s << QString();
        QTest::newRow("accents fold by case only")
            << true << u"élan"_s << QStringList{u"Élan"_s} << u"1 / 1"_s << QString();
        QTest::newRow("bundle id is not searched")
            << true << u"org.example"_s << QStringList() << u"0 / 0"_s << u"No apps match"_s;
        QTest::newRow("search never shows hidden background apps")
            << false << u"clock"_s << QStringList() << u"0 / 0"_s << u"No apps match"_s;
    }
    void visibleApps() {
        QFETCH(bool, showBackground);
        QFETCH(QString, search);
        QFETCH(QStringList, visible);
        QFETCH(QString, count);
        QFETCH(QString, empty);
        f->settings.setShowBackgroundApps(showBackground);
        f->launch(10, u"Safari"_s)->bundleId = u"org.example.safari"_s;
        f->launch(11, u"Files"_s)->bundleId = u"org.example.files"_s;
        f->launch(12, u"Élan"_s);
        f->launch(13, u"Tray Clock"_s, true);
        f->state.setSearchText(search);
        QCOMPARE(f->visibleNames(), visible);
        QCOMPARE(f->state.countText(), count);
        if (!empty.isEmpty()) {
            QCOMPARE(f->state.emptyText(), empty);
        }
    }

    void newAppsStartTickedAndReusedPidsAreForgotten() {
        f->launch(10, u"Mail"_s);
        f->launch(11, u"Notes"_s);
        f->state.setSelected(10, false);
        QCOMPARE(f->selectedNames(), QStringList{u"Notes"_s});
        f->launch(12, u"Music"_s);
        QVERIFY(f->state.isSelected(12));

        f->exit(10);
        QVERIFY(!f->state.deselectedPIDs().contains(10));
        f->launch(10, u"Terminal"_s); // the system hands the pid out again
        QVERIFY(f->state.isSelected(10));
    }

    void selectAllActsOnTheVisibleAppsOnly() {
        f->launch(10, u"Safari"_s);
        f->launch(11, u"Files"_s);
        f->launch(12, u"Firefox"_s);
        QCOMPARE(f->state.selectAllHelp(), u"Deselect all (Shift+Ctrl+A)"_s);
        f->state.setSearchText(u"f"_s);
        QCOMPARE(f->visibleNames(), (QStringList{u"Files"_s, u"Firefox"_s, u"Safari"_s}));
        f->state.setSearchText(u"fi"_s);
        QCOMPARE(f->state.selectAllHelp(), u"Deselect all matching apps (Shift+Ctrl+A)"_s);
        f->state.toggleAll();
        QCOMPARE(f->state.countText(), u"0 / 2"_s);
        QCOMPARE(f->state.selectAllHelp(), u"Select all matching apps (Shift+Ctrl+A)"_s);

        f->state.setSearchText({});
        QCOMPARE(f->selectedNames(), QStringList{u"Safari"_s});
        QVERIFY(!f->state.allSelected());
        QCOMPARE(f->state.selectAllHelp(), u"Select all (Shift+Ctrl+A)"_s);
        f->state.toggleAll();
        QVERIFY(f->state.allSelected());
    }

    void anAppHiddenBySearchIsNeverQuitByTheMainButton() {
        auto safari = f->launch(10, u"Safari"_s);
        auto files = f->launch(11, u"Files"_s);
        f->state.setSearchText(u"saf"_s);
        int dismissed = 0;
        f->state.onDismiss = [&] { ++dismissed; };
        f->state.quitSelected();
        QCOMPARE(safari->terminateRequests, 1);
        QCOMPARE(files->terminateRequests, 0);
        QCOMPARE(dismissed, 1);
        // The list catches up 0.8 s later.
        f->clock.advance(800ms);
        QCOMPARE(f->names(f->monitor.runningApps()), QStringList{u"Files"_s});
    }

    void mainButtonTexts_data() {
        QTest::addColumn<bool>("force");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("help");
        QTest::addColumn<QString>("rowHelp");
        QTest::newRow("quit") << false << u"Quit Selected"_s
                              << u"Quit the ticked apps (Ctrl+Enter)"_s << u"Quit Mail"_s;
        QTest::newRow("force") << true << u"Force Quit"_s
                               << u"Force quit the ticked apps (Ctrl+Enter)"_s
                               << u"Force quit Mail"_s;
    }
    void mainButtonTexts() {
        QFETCH(bool, force);
        QFETCH(QString, title);
        QFETCH(QString, help);
        QFETCH(QString, rowHelp);
        f->launch(10, u"Mail"_s);
        f->state.setForceMode(force);
        QCOMPARE(f->state.quitButtonTitle(), title);
        QCOMPARE(f->state.quitButtonHelp(), help);
        QCOMPARE(f->state.rowQuitHelp(f->state.visibleApps().constFirst()), rowHelp);
    }

    void nothingTickedQuitsNothing() {
        auto mail = f->launch(10, u"Mail"_s);
        f->state.setSelected(10, false);
        QVERIFY(!f->state.canQuitSelected());
        for (const bool force : {false, true}) {
            f->state.setForceMode(force);
            f->state.quitSelected();
            QVERIFY(!f->state.isConfirmingForceQuit());
        }
        QCOMPARE(mail->terminateRequests + mail->forceRequests, 0);
    }

    void forceModeQuitsOnlyAfterConfirmation() {
        auto mail = f->launch(10, u"Mail"_s);
        auto notes = f->launch(11, u"Notes"_s);
        f->state.setForceMode(true);
        int dismissed = 0;
        f->state.onDismiss = [&] { ++dismissed; };

        f->state.quitSelected();
        QVERIFY(f->state.isConfirmingForceQuit());
        QCOMPARE(f->state.confirmationTitle(), u"Force quit 2 apps?"_s);
        f->state.cancelForceQuit();
        QVERIFY(!f->state.isConfirmingForceQuit());
        QCOMPARE(mail->forceRequests + notes->forceRequests + mail->terminateRequests, 0);

        f->state.setSelected(11, false);
        f->state.quitSelected();
        QCOMPARE(f->state.confirmationTitle(), u"Force quit Mail?"_s);
        f->state.confirmForceQuit();
        QCOMPARE(mail->forceRequests, 1);
        QCOMPARE(notes->forceRequests, 0);
        QCOMPARE(dismissed, 0);
        // Force-quit mode stays on until the user turns it off.
        QVERIFY(f->state.isForceMode());
        QVERIFY(!f->state.isConfirmingForceQuit());

        // The app goes while the question is open: nothing left to force.
        f->state.quitSelected();
        f->exit(10);
        QCOMPARE(f->state.confirmationTitle(), u"Force quit this app?"_s);
        f->state.confirmForceQuit();
        QVERIFY(!f->state.isConfirmingForceQuit());
        QCOMPARE(mail->forceRequests, 1);
    }

    void rowButtonQuitsAtOnceInEitherMode() {
        auto mail = f->launch(10, u"Mail"_s);
        auto notes = f->launch(11, u"Notes"_s);
        f->state.quitOne(10);
        QCOMPARE(mail->terminateRequests, 1);
        f->state.setForceMode(true);
        f->state.quitOne(11);
        QCOMPARE(notes->forceRequests, 1);
        QVERIFY(!f->state.isConfirmingForceQuit());
    }

    void hidingTheListClearsTheSearchOnly() {
        f->launch(10, u"Mail"_s);
        f->launch(11, u"Notes"_s);
        f->monitor.setListVisible(true);
        f->state.setSearchText(u"ma"_s);
        f->state.setSelected(10, false);
        f->state.setForceMode(true);
        f->monitor.setListVisible(false);
        QCOMPARE(f->state.searchText(), QString());
        QVERIFY(!f->state.isSelected(10));
        QVERIFY(f->state.isForceMode());
    }
};

QTEST_GUILESS_MAIN(TestAppListState)
#include "tst_appliststate.moc"
