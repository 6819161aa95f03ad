#include "fakes/LogCapture.h"
#include "fakes/SettingsFixture.h"
#include "model/AppSettings.h"
#include "ui/settings/ExclusionsState.h"
#include "ui/settings/ExclusionsTab.h"
#include "ui/settings/GeneralTab.h"

#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

using namespace vantle;
using namespace Qt::StringLiterals;

using Chosen = QList<ExclusionsState::ChosenApp>;
Q_DECLARE_METATYPE(Chosen)

class TestGeneralExclusions : public QObject {
    Q_OBJECT

private slots:
    // Tray-only apps are named as a Linux user knows them. The login switch registers the login
    // item; a refusal is logged and the switch goes back.
    void generalTab() {
        SettingsFixture fixture;
        GeneralTab tab(fixture.context());
        QCOMPARE(tab.findChild<QCheckBox*>(u"protectMenuBarApps"_s)->text(),
                 u"Protect tray-only apps from auto-quit"_s);
        QVERIFY(!tab.findChild<QWidget*>(u"showInDock"_s));
        QVERIFY(!tab.findChild<QWidget*>(u"dockIconStyle"_s));

        auto* toggle = tab.findChild<QCheckBox*>(u"launchAtLogin"_s);
        toggle->click();
        QVERIFY(fixture.fake.loginItem->registered);
        QVERIFY(fixture.settings().launchAtLogin());
        toggle->click();
        QVERIFY(!fixture.fake.loginItem->registered);
        fixture.fake.loginItem->failRegistration = true;
        LogCapture log;
        toggle->click();
        QCOMPARE(log.count(u"Launch at login failed: refused"_s), 1);
        QVERIFY(!toggle->isChecked());
        QVERIFY(!fixture.settings().launchAtLogin());
    }

    // Running apps with their switches, and the excluded ones that are not running.
    void exclusionsFollowTheRunningApps() {
        SettingsFixture fixture;
        fixture.launch(10, u"Mail"_s, u"org.gnome.Evolution"_s);
        fixture.launch(11, u"Terminal"_s, std::nullopt);
        fixture.settings().setExcludedBundleIDs({u"gone.app"_s, u"org.gnome.Evolution"_s});
        ExclusionsState state(fixture.settings(), fixture.delegate.appMonitor());
        const auto rows = state.runningApps();
        QCOMPARE(rows.size(), 2);
        QVERIFY(rows[0].excluded);
        QVERIFY(!rows[1].excluded);
        QCOMPARE(state.notRunning(), QStringList{u"gone.app"_s});

        state.setExcluded(rows[1].app, true); // no identifier: nothing to store
        state.setExcluded(rows[0].app, false);
        QCOMPARE(fixture.settings().excludedBundleIDs(), QStringList{u"gone.app"_s});
        state.setExcluded(rows[0].app, true);
        state.setExcluded(rows[0].app, true);
        QCOMPARE(fixture.settings().excludedBundleIDs(),
                 (QStringList{u"gone.app"_s, u"org.gnome.Evolution"_s}));
        state.remove(u"gone.app"_s);
        QCOMPARE(fixture.settings().excludedBundleIDs(), QStringList{u"org.gnome.Evolution"_s});
        fixture.fake.workspace->emitTerminate(10);
        QCOMPARE(state.notRunning(), QStringList{u"org.gnome.Evolution"_s});
    }

    void chosenAppsAreAddedOrNamed_data() {
        QTest::addColumn<Chosen>("chosen");
        QTest::addColumn<QStringList>("excluded");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("text");
        const auto app = [](const char* name, std::optional<QString> id) {
            return ExclusionsState::ChosenApp{QLatin1String(name), std::move(id)};
        };
        QTest::newRow("all identified")
            << Chosen{app("Files", u"org.gnome.Nautilus"_s), app("Old", u"kept.app"_s)}
            << QStringList{u"kept.app"_s, u"org.gnome.Nautilus"_s} << QString() << QString();
        QTest::newRow("one without")
            << Chosen{app("notes.txt", std::nullopt)} << QStringList{u"kept.app"_s}
            << u"One app couldn't be added"_s
            << u"notes.txt — no bundle identifier, so there's nothing for Vantle to match "
               u"against."_s;
        QTest::newRow("two of three without")
            << Chosen{app("a", std::nullopt), app("Files", u"org.gnome.Nautilus"_s),
                      app("b", std::nullopt)}
            << QStringList{u"kept.app"_s, u"org.gnome.Nautilus"_s}
            << u"Some apps couldn't be added"_s
            << u"a, b — no bundle identifier, so there's nothing for Vantle to match against."_s;
    }
    void chosenAppsAreAddedOrNamed() {
        QFETCH(Chosen, chosen);
        QFETCH(QStringList, excluded);
        QFETCH(QString, title);
        QFETCH(QString, text);
        SettingsFixture fixture;
        fixture.settings().setExcludedBundleIDs({u"kept.app"_s});
        ExclusionsState state(fixture.settings(), fixture.delegate.appMonitor());
        const auto refusal = state.addChosen(chosen);
        QCOMPARE(fixture.settings().excludedBundleIDs(), excluded);
        QCOMPARE(refusal ? refusal->title : QString(), title);
        QCOMPARE(refusal ? refusal->text : QString(), text);
    }

    // The tab by its controls: switches, "No apps running", the remove buttons.
    void exclusionsTabRows() {
        SettingsFixture fixture;
        ExclusionsTab empty(fixture.context());
        QVERIFY(empty.findChild<QLabel*>(u"noAppsRunning"_s));

        fixture.launch(10, u"Mail"_s, u"org.gnome.Evolution"_s);
        fixture.settings().setExcludedBundleIDs({u"gone.app"_s});
        ExclusionsTab tab(fixture.context());
        QVERIFY(!tab.findChild<QLabel*>(u"noAppsRunning"_s));
        tab.findChild<QCheckBox*>(u"exclude-10"_s)->click();
        QCOMPARE(fixture.settings().excludedBundleIDs(),
                 (QStringList{u"gone.app"_s, u"org.gnome.Evolution"_s}));
        // The rows are rebuilt once the click has returned.
        QTRY_VERIFY(tab.findChild<QCheckBox*>(u"exclude-10"_s)->isChecked());
        tab.findChild<QToolButton*>(u"remove-gone.app"_s)->click();
        QCOMPARE(fixture.settings().excludedBundleIDs(), QStringList{u"org.gnome.Evolution"_s});
        QTRY_VERIFY(!tab.findChild<QToolButton*>(u"remove-gone.app"_s));
    }

    // "Add App": installed apps, searchable, several at once; files from elsewhere are read for
    // their entry, and those that are none are named in the warning.
    void addAppChoosesInstalledApps() {
        SettingsFixture fixture;
        fixture.fake.applications->installed = {
            {u"org.gnome.Nautilus"_s, u"Files"_s, u"org.gnome.Nautilus"_s},
            {u"firefox-esr"_s, u"Firefox ESR"_s, u"firefox-esr"_s},
            {u"org.keepassxc.KeePassXC"_s, u"KeePassXC"_s, {}},
        };
        ExclusionsTab tab(fixture.context());
        tab.findChild<QPushButton*>(u"addApp"_s)->click();
        auto* chooser = tab.findChild<QDialog*>(u"appChooser"_s);
        QVERIFY(chooser && chooser->isVisible());
        QCOMPARE(fixture.fake.alerts->activations, 1);
        auto* list = chooser->findChild<QListWidget*>(u"applications"_s);
        QCOMPARE(list->count(), 3);
        chooser->findChild<QLineEdit*>(u"search"_s)->setText(u"f"_s);
        QVERIFY(list->item(2)->isHidden()); // KeePassXC has no "f"
        list->item(0)->setSelected(true);
        list->item(1)->setSelected(true);
        auto* choose = chooser->findChild<QPushButton*>(u"choose"_s);
        QCOMPARE(choose->text(), u"Exclude"_s);
        choose->click();
        QCOMPARE(fixture.settings().excludedBundleIDs(),
                 (QStringList{u"org.gnome.Nautilus"_s, u"firefox-esr"_s}));
        QVERIFY(fixture.fake.alerts->shown.isEmpty());

        fixture.fake.applications->files.insert(u"/tmp/vlc.desktop"_s, {u"vlc"_s, u"VLC"_s, {}});
        tab.exclude({}, {u"/tmp/vlc.desktop"_s, u"/tmp/readme.txt"_s, u"/tmp/link.desktop"_s});
        QCOMPARE(fixture.settings().excludedBundleIDs().last(), u"vlc"_s);
        QCOMPARE(fixture.fake.alerts->shown.size(), 1);
        QCOMPARE(fixture.fake.alerts->shown.first().messageText, u"Some apps couldn't be added"_s);
        QVERIFY(
            fixture.fake.alerts->shown.first().informativeText.startsWith(u"readme, link — "_s));
    }
};

QTEST_MAIN(TestGeneralExclusions)
#include "tst_generalexclusions.moc"
