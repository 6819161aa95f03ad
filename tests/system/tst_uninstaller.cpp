#include "fakes/LogCapture.h"
#include "fakes/RemovalFixture.h"

#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;

using Kind = AppInstallation::Kind;
using Status = ScriptOutcome::Status;

using Plan = Uninstaller::Plan;

Q_DECLARE_METATYPE(AppInstallation)
Q_DECLARE_METATYPE(Uninstaller::Plan)

namespace {

const QString kAppImage = u"/home/ada/Apps/Vantle.AppImage"_s;
const QString kTool = u"/usr/libexec/vantle/vantle-power"_s;
const QString kWake = u"wake|11/17/26 07:30:00"_s;
const QString kPowerOn = u"poweron|11/18/26 06:00:00"_s;
const AppInstallation kTrash{Kind::trash, kAppImage};

QString cancelOf(const QString& word, const QString& date) {
    return kTool + u" schedule cancel "_s + word + u" '"_s + date + u"' || true"_s;
}

// The data removal, the same after every run that gets past the administrator step.
QStringList dataRemovals() {
    QStringList lines;
    for (const QString& domain : Uninstaller::kSettingsDomains) {
        lines << u"remove /home/ada/.config/vantle/"_s + domain + u".json"_s;
    }
    return lines << u"remove /home/ada/.config/vantle"_s << u"remove /home/ada/.cache/vantle"_s
                 << u"remove /home/ada/.local/state/vantle"_s;
}

ScriptOutcome notCreated() {
    ScriptOutcome outcome;
    outcome.status = Status::notCreated;
    return outcome;
}

} // namespace

class TestUninstaller : public QObject {
    Q_OBJECT

    std::unique_ptr<RemovalFixture> f;
    QStringList journal;

    void start(const AppInstallation& installation) {
        f = std::make_unique<RemovalFixture>();
        journal.clear();
        f->files->journal = &journal;
        f->scripts->journal = &journal;
        f->loginItem->journal = &journal;
        f->platform.installation = installation;
        f->files->paths = {kAppImage, u"/home/ada/.config/vantle"_s};
        f->build();
        f->uninstaller->onRemoved = [this] { journal << u"quit"_s; };
    }

private slots:
    // The sentences shown before the removal, on both platforms and for every kind of install.
    void stepLines_data() {
        QTest::addColumn<Plan>("plan");
        QTest::addColumn<bool>("macOS");
        QTest::addColumn<QStringList>("lines");
        const QString settings = u"Delete Vantle's settings, rules and schedules"_s;
        const QString toTrash = u"Move Vantle to the Trash"_s;
        QTest::newRow("nothing set up")
            << Plan{{}, false, false, kTrash} << true << QStringList{settings, toTrash};
        QTest::newRow("one event, macOS")
            << Plan{{kWake}, false, false, kTrash} << true
            << QStringList{u"Cancel 1 scheduled power event Vantle registered with macOS"_s,
                           settings, toTrash};
        QTest::newRow("everything, Linux")
            << Plan{{kWake, kPowerOn, u"restart|11/19/26 05:00:00"_s}, true, true, kTrash} << false
            << QStringList{u"Cancel 3 scheduled power events Vantle registered with systemd"_s,
                           u"Remove the rule allowing Vantle to change the power schedule "
                           u"without a password"_s,
                           u"Stop Vantle opening at login"_s, settings, toTrash};
        QTest::newRow("home install")
            << Plan{{}, false, false, {Kind::manifest, u"/home/ada/.local/share/vantle/m.txt"_s}}
            << false
            << QStringList{settings,
                           u"Delete the Vantle program files installed in your home folder"_s};
        QTest::newRow("package") << Plan{{}, false, false, {Kind::packageManager, u"/usr/bin"_s}}
                                 << false
                                 << QStringList{
                                        settings,
                                        u"Leave the Vantle program itself: uninstall its package "
                                        u"with your software manager"_s};
        QTest::newRow("build folder")
            << Plan{{}, false, false, {Kind::unmanaged, u"/home/ada/src/vantle/build/src"_s}}
            << false
            << QStringList{
                   settings,
                   u"Leave the Vantle program in /home/ada/src/vantle/build/src as it is"_s};
    }
    void stepLines() {
        QFETCH(Plan, plan);
        QFETCH(bool, macOS);
        QFETCH(QStringList, lines);
        QCOMPARE(plan.stepLines(macOS ? ProductTexts::macOS() : ProductTexts::linuxDesktop()),
                 lines);
    }

    // The plan reads the registered events, the rule files and the login item as they are now.
    void planReadsTheMachine_data() {
        QTest::addColumn<bool>("macTool");
        QTest::addColumn<QString>("ruleFile");
        QTest::addColumn<bool>("rule");
        QTest::addColumn<QString>("script");
        QTest::newRow("no rule") << false << QString() << false
                                 << cancelOf(u"wake"_s, u"11/17/26 07:30:00"_s);
        QTest::newRow("Linux rule") << false << u"/etc/sudoers.d/vantle-power"_s << true
                                    << cancelOf(u"wake"_s, u"11/17/26 07:30:00"_s) +
                                           u"; rm -f /etc/sudoers.d/vantle-power"_s;
        QTest::newRow("only the older macOS rule")
            << true << u"/etc/sudoers.d/ebb-pmset"_s << true
            << u"/usr/bin/pmset schedule cancel wake '11/17/26 07:30:00' || true; "
               u"rm -f /etc/sudoers.d/vantle-pmset /etc/sudoers.d/ebb-pmset"_s;
    }
    void planReadsTheMachine() {
        QFETCH(bool, macTool);
        QFETCH(QString, ruleFile);
        QFETCH(bool, rule);
        QFETCH(QString, script);
        RemovalFixture fixture;
        if (macTool) {
            fixture.platform.schedulerTool = PowerSchedulerTool::macOS();
            fixture.platform.schedulerTool.path = u"/usr/bin/pmset"_s;
        }
        fixture.scripts->existingFiles = {ruleFile};
        fixture.loginItem->registered = true;
        fixture.build();
        // A damaged settings file must never put its text into a script that runs as root.
        fixture.settings->setPmsetRegistered(
            {kWake, u"wake|11/17/26 07:30:00'; rm -rf / '"_s, u"sleep|11/17/26 07:30:00"_s});
        const Uninstaller::Plan plan = fixture.uninstaller->plan();
        QCOMPARE(plan.pmsetEvents.size(), 3);
        QCOMPARE(plan.hasSudoersRule, rule);
        QVERIFY(plan.isLoginItem);
        QCOMPARE(plan.installation, fixture.platform.installation);
        LogCapture log;
        QCOMPARE(Uninstaller::administratorScript(plan, fixture.platform.schedulerTool), script);
        QCOMPARE(log.count(u"not cancelling malformed power event"_s), 2);
    }

    // The administrator step comes first and is all or nothing; every later step is tried in
    // order, whatever fails, and the app ends.
    void runOrder_data() {
        QTest::addColumn<Plan>("plan");
        QTest::addColumn<ScriptOutcome>("admin");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QString>("logged");
        const QString cancels = cancelOf(u"wake"_s, u"11/17/26 07:30:00"_s) + u"; "_s +
                                cancelOf(u"poweron"_s, u"11/18/26 06:00:00"_s);
        const QString ruleRemoval = u"rm -f /etc/sudoers.d/vantle-power"_s;
        QTest::newRow("nothing privileged: no prompt")
            << Plan{{}, false, false, kTrash} << ScriptOutcome::success()
            << dataRemovals() + QStringList{u"trash "_s + kAppImage, u"quit"_s}
            << u"Vantle: moved to /home/ada/.local/share/Trash/files/Vantle.AppImage"_s;
        QTest::newRow("events, rule and login item")
            << Plan{{kWake, kPowerOn}, true, true, kTrash} << ScriptOutcome::success()
            << QStringList{u"admin "_s + cancels + u"; "_s + ruleRemoval,
                           u"unregister login item"_s} +
                   dataRemovals() + QStringList{u"trash "_s + kAppImage, u"quit"_s}
            << u"Vantle: removed; quitting"_s;
        for (const auto& [name, outcome] :
             {std::pair{"password prompt dismissed", ScriptOutcome::userCancelled()},
              std::pair{"administrator run failed", ScriptOutcome::failure(1, u"Not authorized"_s)},
              std::pair{"no administrator facility", notCreated()}}) {
            QTest::newRow(name) << Plan{{kWake, kPowerOn}, true, true, kTrash} << outcome
                                << QStringList{u"admin "_s + cancels + u"; "_s + ruleRemoval}
                                << u"Vantle: removal stopped, nothing removed"_s;
        }
        QTest::newRow("package copy is left alone")
            << Plan{{}, false, true, {Kind::packageManager, u"/usr/bin"_s}}
            << ScriptOutcome::success()
            << QStringList{u"unregister login item"_s} + dataRemovals() + QStringList{u"quit"_s}
            << u"Vantle: the program in /usr/bin belongs to the package manager"_s;
        QTest::newRow("trash fails, the run goes on")
            << Plan{{}, false, false, {Kind::trash, u"/media/ro/Vantle.AppImage"_s}}
            << ScriptOutcome::success()
            << dataRemovals() + QStringList{u"trash /media/ro/Vantle.AppImage"_s, u"quit"_s}
            << u"Vantle: could not move /media/ro/Vantle.AppImage to the Trash: no trash on this "
               u"volume"_s;
    }
    void runOrder() {
        QFETCH(Plan, plan);
        QFETCH(ScriptOutcome, admin);
        QFETCH(QStringList, expected);
        QFETCH(QString, logged);
        start(plan.installation);
        f->scripts->administratorOutcome = admin;
        f->loginItem->registered = plan.isLoginItem;
        LogCapture log;
        const std::optional<Uninstaller::UninstallError> error = f->uninstaller->run(plan);
        QCOMPARE(journal, expected);
        QVERIFY2(log.count(logged) == 1, qPrintable(log.lines.join(u'\n')));
        const bool stopped = !admin.succeeded();
        QCOMPARE(error.has_value(), stopped);
        // Stopped: the settings were not even flushed, the login item and the app are in place.
        QCOMPARE(f->defaults->flushCount > 0, !stopped);
        QCOMPARE(f->loginItem->registered, plan.isLoginItem && stopped);
        QCOMPARE(f->files->exists(u"/home/ada/.config/vantle"_s), stopped);
    }

    // A home-folder install deletes exactly the files its manifest lists inside its prefix.
    void manifestRemoval() {
        const QString manifest = u"/home/ada/.local/share/vantle/install_manifest.txt"_s;
        start({Kind::manifest, manifest});
        const QStringList installed{u"/home/ada/.local/bin/vantle"_s,
                                    u"/home/ada/.local/bin/vantle-power"_s,
                                    u"/home/ada/.local/share/icons/hicolor/vantle.svg"_s, manifest};
        f->files->paths.unite(QSet<QString>(installed.cbegin(), installed.cend()));
        f->files->paths << u"/home/ada/.bashrc"_s << u"/etc/passwd"_s;
        f->files->textFiles[manifest] =
            installed +
            QStringList{u"/etc/passwd"_s, u"/home/ada/.local/../.bashrc"_s, u"relative/file"_s};
        LogCapture log;
        QVERIFY(!f->uninstaller->run({{}, false, false, {Kind::manifest, manifest}}));
        // What is left: the foreign files, and the AppImage path the fixture always has.
        QCOMPARE(f->files->paths,
                 (QSet<QString>{kAppImage, u"/home/ada/.bashrc"_s, u"/etc/passwd"_s}));
        QCOMPARE(log.count(u"left in place"_s), 3);
        QCOMPARE(log.count(u"deleted 4 installed files"_s), 1);
        QCOMPARE(journal.last(), u"quit"_s);
        // An unreadable manifest deletes nothing of the program, and still ends the run.
        start({Kind::manifest, manifest});
        f->files->paths << u"/home/ada/.local/bin/vantle"_s;
        QVERIFY(!f->uninstaller->run({{}, false, false, {Kind::manifest, manifest}}));
        QVERIFY(f->files->exists(u"/home/ada/.local/bin/vantle"_s));
        QCOMPARE(journal.last(), u"quit"_s);
    }

    void detectInstallation_data() {
        QTest::addColumn<QString>("appImage");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<bool>("manifest");
        QTest::addColumn<AppInstallation>("expected");
        QTest::newRow("AppImage") << kAppImage << u"/tmp/.mount_Vantle/usr/bin"_s << false
                                  << kTrash;
        QTest::newRow("home install")
            << QString() << u"/home/ada/.local/bin"_s << true
            << AppInstallation{Kind::manifest,
                               u"/home/ada/.local/share/vantle/install_manifest.txt"_s};
        QTest::newRow("home, no manifest")
            << QString() << u"/home/ada/src/build/src"_s << false
            << AppInstallation{Kind::unmanaged, u"/home/ada/src/build/src"_s};
        QTest::newRow("package") << QString() << u"/usr/bin"_s << false
                                 << AppInstallation{Kind::packageManager, u"/usr/bin"_s};
        // Installed by an administrator outside the package manager: not ours to remove either.
        QTest::newRow("/usr/local") << QString() << u"/usr/local/bin"_s << true
                                    << AppInstallation{Kind::unmanaged, u"/usr/local/bin"_s};
    }
    void detectInstallation() {
        QFETCH(QString, appImage);
        QFETCH(QString, folder);
        QFETCH(bool, manifest);
        QFETCH(AppInstallation, expected);
        FakeFileOps files;
        if (manifest) {
            files.paths << QDir::cleanPath(folder + u"/../share/vantle/install_manifest.txt"_s);
        }
        QCOMPARE(AppInstallation::detect(appImage, folder, u"/home/ada"_s, files), expected);
    }
};

QTEST_GUILESS_MAIN(TestUninstaller)
#include "tst_uninstaller.moc"
