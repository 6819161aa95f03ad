#include "fakes/FakeAlerts.h"
#include "fakes/FakeScriptRunner.h"
#include "fakes/LogCapture.h"
#include "model/ProductTexts.h"
#include "schedule/PrivilegedRunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace vantle;

namespace {

const QString kRule = QStringLiteral("/etc/sudoers.d/vantle-pmset");

// The Linux tool description around a binary root surely owns on any machine.
PowerSchedulerTool rootOwnedLinuxTool() {
    PowerSchedulerTool tool = PowerSchedulerTool::linuxTool(QStringLiteral("/usr/bin"));
    tool.path = QStringLiteral("/usr/bin/true");
    return tool;
}

struct Rig {
    explicit Rig(QString user = QStringLiteral("ada"),
                 PowerSchedulerTool tool = PowerSchedulerTool::macOS(),
                 const ProductTexts& texts = ProductTexts::macOS())
        : runner(scripts, alerts, std::move(tool), texts, std::move(user)) {}
    FakeScriptRunner scripts;
    FakeAlerts alerts;
    PrivilegedRunner runner;
    LogCapture log;
};

} // namespace

class TestPrivilegedRunner : public QObject {
    Q_OBJECT

private slots:
    void quotingForShellScripts() {
        QCOMPARE(doShellScriptSource(QStringLiteral("echo \"a\\b\""), true),
                 QStringLiteral("do shell script \"echo \\\"a\\\\b\\\"\" with administrator "
                                "privileges"));
        QCOMPARE(doShellScriptSource(QStringLiteral("/usr/bin/pmset -g sched"), false),
                 QStringLiteral("do shell script \"/usr/bin/pmset -g sched\""));
    }

    void runPrivilegedReportsHowTheRunEnded_data() {
        QTest::addColumn<ScriptOutcome>("outcome");
        QTest::addColumn<bool>("result");
        QTest::addColumn<QString>("logged");
        ScriptOutcome notCreated;
        notCreated.status = ScriptOutcome::Status::notCreated;
        QTest::newRow("success") << ScriptOutcome::success() << true << QString();
        QTest::newRow("script not created") << notCreated << true << QString();
        QTest::newRow("cancelled")
            << ScriptOutcome::userCancelled() << false
            << QStringLiteral("Vantle: privileged action cancelled by the user");
        QTest::newRow("failed") << ScriptOutcome::failure(1, QStringLiteral("x")) << false
                                << QStringLiteral("Vantle: privileged action failed (1): x — "
                                                  "script was: echo \"a\\b\"");
        QTest::newRow("failed without a message")
            << ScriptOutcome::failure(5, std::nullopt) << false
            << QStringLiteral("Vantle: privileged action failed (5): no message — script was: "
                              "echo \"a\\b\"");
    }
    void runPrivilegedReportsHowTheRunEnded() {
        QFETCH(ScriptOutcome, outcome);
        QFETCH(bool, result);
        QFETCH(QString, logged);
        Rig rig;
        rig.scripts.administratorOutcome = outcome;
        QCOMPARE(rig.runner.runPrivileged(QStringLiteral("echo \"a\\b\"")), result);
        QCOMPARE(rig.scripts.administratorRuns, QStringList{QStringLiteral("echo \"a\\b\"")});
        QCOMPARE(rig.log.lines, logged.isEmpty() ? QStringList{} : QStringList{logged});
    }

    // Shown once per launch, whatever the answer; the check box turns "continue" into "always".
    void explanationBeforeTheSchedulersPrompt() {
        Rig rig;
        rig.alerts.answer = {.button = 0, .checkBoxChecked = true};
        QCOMPARE(rig.runner.pmsetPasswordExplanation(),
                 PrivilegedRunner::PasswordChoice::continueAlwaysAllow);
        QCOMPARE(rig.alerts.activations, 1);
        const AlertRequest& shown = rig.alerts.shown.first();
        QCOMPARE(shown.messageText, QStringLiteral("Vantle needs your administrator password"));
        QCOMPARE(shown.informativeText,
                 QStringLiteral("Vantle is handing your Wake and Power On times to the Mac's "
                                "built-in power scheduler (pmset). Only an administrator is "
                                "allowed to change it, so macOS will ask for your password next."));
        QCOMPARE(shown.buttons,
                 (QStringList{QStringLiteral("Continue"), QStringLiteral("Cancel")}));
        QCOMPARE(shown.checkBoxTitle,
                 QStringLiteral("Always allow — don't ask for my password again"));
        QCOMPARE(shown.checkBoxToolTip,
                 QStringLiteral("Adds a rule letting Vantle run /usr/bin/pmset without a password. "
                                "It grants no other access, and turning Always Allow off in "
                                "Settings removes it."));

        rig.alerts.answer = {.button = 1, .checkBoxChecked = false};
        QCOMPARE(rig.runner.pmsetPasswordExplanation(),
                 PrivilegedRunner::PasswordChoice::continueOnce);
        QCOMPARE(rig.alerts.shown.size(), 1);

        Rig other;
        other.alerts.answer = {.button = 1, .checkBoxChecked = true};
        QCOMPARE(other.runner.pmsetPasswordExplanation(), PrivilegedRunner::PasswordChoice::cancel);
        other.alerts.answer = {.button = 0, .checkBoxChecked = false};
        QCOMPARE(other.runner.pmsetPasswordExplanation(),
                 PrivilegedRunner::PasswordChoice::continueOnce);
    }

    void userNamesTheRuleCanHold_data() {
        QTest::addColumn<QString>("user");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("letters, digits, dot, hyphen, underscore")
            << QStringLiteral("john.doe-2_x") << true;
        QTest::newRow("letters of other scripts") << QStringLiteral("jürgen") << true;
        QTest::newRow("space") << QStringLiteral("john doe") << false;
        QTest::newRow("apostrophe") << QStringLiteral("o'neil") << false;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("shell") << QStringLiteral("a$(id)") << false;
        QTest::newRow("newline") << QStringLiteral("ada\nALL") << false;
    }
    void userNamesTheRuleCanHold() {
        QFETCH(QString, user);
        QFETCH(bool, accepted);
        Rig rig(user);
        QCOMPARE(rig.runner.alwaysAllowInstallScript().has_value(), accepted);
        // No script, no question and no prompt.
        if (!accepted) {
            QVERIFY(!rig.runner.installAlwaysAllowRule());
            QVERIFY(rig.alerts.shown.isEmpty());
            QVERIFY(rig.scripts.administratorRuns.isEmpty());
        }
    }

    void installScriptForEachPlatform() {
        Rig mac(QStringLiteral("ada"));
        QCOMPARE(
            mac.runner.alwaysAllowInstallScript(),
            QStringLiteral(
                "tmp=$(mktemp /tmp/vantle-pmset.XXXXXX)\n"
                "printf '%s\\n' 'ada ALL=(ALL) NOPASSWD: /usr/bin/pmset' > \"$tmp\"\n"
                "if /usr/sbin/visudo -cf \"$tmp\" >/dev/null 2>&1; then install -m 440 -o root "
                "-g wheel \"$tmp\" /etc/sudoers.d/vantle-pmset; fi\n"
                "rm -f \"$tmp\""));
        Rig linux(QStringLiteral("ada"), rootOwnedLinuxTool(), ProductTexts::linuxDesktop());
        const std::optional<QString> script = linux.runner.alwaysAllowInstallScript();
        QVERIFY(script);
        QVERIFY(
            script->contains(QStringLiteral("'ada ALL=(ALL) NOPASSWD: /usr/bin/true' > \"$tmp\"")));
        QVERIFY(script->contains(QStringLiteral("-g root \"$tmp\" /etc/sudoers.d/vantle-power")));
        // Nothing a Linux user sees or finds in the log names the macOS tool.
        QVERIFY2(!script->contains(QStringLiteral("pmset")), qPrintable(*script));
        linux.alerts.answer = {.button = 0};
        QVERIFY(linux.runner.removeAlwaysAllowRule());
        QCOMPARE(linux.scripts.administratorRuns,
                 QStringList{QStringLiteral("rm -f /etc/sudoers.d/vantle-power")});
    }

    // The installed app finds the tool in libexec by a clean path, the one the rule and the polkit
    // action name; a build tree keeps it beside the app.
    void toolFoundWhereTheAppIsInstalled_data() {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("expected");
        const QString installed = QStringLiteral("libexec/vantle/vantle-power");
        const QString beside = QStringLiteral("bin/vantle-power");
        QTest::newRow("installed") << QStringList{installed} << QStringLiteral("libexec/vantle");
        QTest::newRow("build tree") << QStringList{beside} << QStringLiteral("bin");
        QTest::newRow("both") << QStringList{beside, installed} << QStringLiteral("libexec/vantle");
        QTest::newRow("neither") << QStringList{} << QStringLiteral("bin");
        QTest::newRow("a folder of that name")
            << QStringList{installed + QStringLiteral("/x")} << QStringLiteral("bin");
    }

    void toolFoundWhereTheAppIsInstalled() {
        QFETCH(QStringList, files);
        QFETCH(QString, expected);
        QTemporaryDir prefix;
        QVERIFY(QDir(prefix.path()).mkpath(QStringLiteral("bin")));
        for (const QString& file : files) {
            const QString path = prefix.filePath(file);
            QVERIFY(QDir().mkpath(QFileInfo(path).absolutePath()));
            QFile created(path);
            QVERIFY(created.open(QIODevice::WriteOnly));
        }
        QCOMPARE(PowerSchedulerTool::linuxToolDirectory(prefix.filePath(QStringLiteral("bin")),
                                                        QStringLiteral("../libexec/vantle")),
                 prefix.filePath(expected));
    }

    // A rule naming a tool the user could swap would be a passwordless root shell.
    void ruleRefusedForAToolOthersCanChange() {
        QTemporaryDir dir;
        QFile tool(dir.filePath(QStringLiteral("vantle-power")));
        QVERIFY(tool.open(QIODevice::WriteOnly));
        tool.close();
        QFile::setPermissions(dir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                              QFileDevice::ExeOwner | QFileDevice::WriteGroup |
                                              QFileDevice::ExeGroup);
        Rig rig(QStringLiteral("ada"), PowerSchedulerTool::linuxTool(dir.path()),
                ProductTexts::linuxDesktop());
        QVERIFY(!rig.runner.alwaysAllowInstallScript());
        QCOMPARE(rig.log.count(QStringLiteral("must be owned by root and writable only by root")),
                 1);
    }

    void installAndRemoveTheRule() {
        Rig rig;
        rig.alerts.answer = {.button = 1};
        QVERIFY(!rig.runner.installAlwaysAllowRule());
        QVERIFY(rig.scripts.administratorRuns.isEmpty());
        QCOMPARE(rig.alerts.shown.first().informativeText,
                 QStringLiteral("Vantle will add a rule letting it run /usr/bin/pmset without a "
                                "password, so your Wake and Power On schedules can be applied "
                                "silently from now on.\n\nThis grants no other access, and turning "
                                "\"Always Allow\" back off removes the rule.\n\nmacOS will ask for "
                                "your password next."));
        QVERIFY(!rig.alerts.shown.first().checkBoxTitle);

        // The run's own result is not trusted: only the file counts.
        rig.alerts.answer = {.button = 0};
        rig.scripts.administratorOutcome = ScriptOutcome::failure(1, QStringLiteral("x"));
        rig.scripts.existingFiles.insert(kRule);
        QVERIFY(rig.runner.installAlwaysAllowRule());
        rig.scripts.administratorOutcome = ScriptOutcome::success();
        rig.scripts.existingFiles.clear();
        QVERIFY(!rig.runner.installAlwaysAllowRule());

        // Switching off and cancelling leaves the rule alone.
        rig.scripts.administratorRuns.clear();
        rig.alerts.answer = {.button = 1};
        QVERIFY(!rig.runner.removeAlwaysAllowRule());
        QVERIFY(rig.scripts.administratorRuns.isEmpty());
        QCOMPARE(rig.alerts.shown.last().informativeText,
                 QStringLiteral("Vantle will remove the rule that let it change the Mac's power "
                                "schedule without a password. Your schedules keep working — macOS "
                                "will simply ask for your password each time they change.\n\n"
                                "macOS will ask for your password next."));
        rig.alerts.answer = {.button = 0};
        QVERIFY(rig.runner.removeAlwaysAllowRule());
        QCOMPARE(rig.scripts.administratorRuns,
                 QStringList{
                     QStringLiteral("rm -f /etc/sudoers.d/vantle-pmset /etc/sudoers.d/ebb-pmset")});
        rig.scripts.administratorOutcome = ScriptOutcome::userCancelled();
        QVERIFY(!rig.runner.removeAlwaysAllowRule());

        rig.runner.bringSettingsWindowForward();
        QCOMPARE(rig.alerts.broughtForward, QStringList{QStringLiteral("Vantle Settings")});
    }

    // The installation script run for real, with the real visudo, installing into a folder of
    // the test's own: visudo accepts the rule we write and turns down a broken one.
    void installScriptAgainstTheRealVisudo_data() {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("brokenRule");
        QTest::newRow("our rule") << QStringLiteral("john.doe-2_x") << QString();
        QTest::newRow("a broken rule installs nothing")
            << QStringLiteral("ada") << QStringLiteral("ada ALL=(ALL) NOPASSWD /usr/bin/true");
    }
    void installScriptAgainstTheRealVisudo() {
        QFETCH(QString, user);
        QFETCH(QString, brokenRule);
        QVERIFY2(QFile::exists(QStringLiteral("/usr/sbin/visudo")),
                 "visudo is missing: scripts/dev deps installs it (Debian's sudo package)");
        QTemporaryDir dir;
        // Only `install` is replaced, so the rule lands in the test's folder, not /etc.
        const QString shim = dir.filePath(QStringLiteral("install"));
        QFile file(shim);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$OUT/args\"\ncp \"$7\" \"$OUT/rule\"\n");
        file.close();
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);

        Rig rig(user, rootOwnedLinuxTool(), ProductTexts::linuxDesktop());
        QString script = rig.runner.alwaysAllowInstallScript().value();
        if (!brokenRule.isEmpty()) {
            const QString line = QStringLiteral("%1 ALL=(ALL) NOPASSWD: /usr/bin/true").arg(user);
            QVERIFY(script.contains(line));
            script.replace(line, brokenRule);
        }
        QProcess sh;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("PATH"), dir.path() + QStringLiteral(":/usr/bin:/bin"));
        env.insert(QStringLiteral("OUT"), dir.path());
        sh.setProcessEnvironment(env);
        sh.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script});
        QVERIFY(sh.waitForFinished());
        QCOMPARE(sh.exitCode(), 0);

        QFile args(dir.filePath(QStringLiteral("args")));
        if (!brokenRule.isEmpty()) {
            QVERIFY(!args.exists());
            return;
        }
        QVERIFY(args.open(QIODevice::ReadOnly));
        const QStringList argv = QString::fromUtf8(args.readAll()).split(QLatin1Char('\n'));
        QCOMPARE(argv.mid(0, 6), (QStringList{QStringLiteral("-m"), QStringLiteral("440"),
                                              QStringLiteral("-o"), QStringLiteral("root"),
                                              QStringLiteral("-g"), QStringLiteral("root")}));
        QCOMPARE(argv[7], QStringLiteral("/etc/sudoers.d/vantle-power"));
        QVERIFY(argv[6].startsWith(QStringLiteral("/tmp/vantle-power.")));
        QVERIFY2(!QFile::exists(argv[6]), "the temporary file is removed");
        QFile rule(dir.filePath(QStringLiteral("rule")));
        QVERIFY(rule.open(QIODevice::ReadOnly));
        QCOMPARE(rule.readAll(), QByteArray("john.doe-2_x ALL=(ALL) NOPASSWD: /usr/bin/true\n"));
    }
};

QTEST_GUILESS_MAIN(TestPrivilegedRunner)
#include "tst_privilegedrunner.moc"
