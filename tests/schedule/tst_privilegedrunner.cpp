#include "fakes/FakeAlerts.h"
#include "fakes/FakeScriptRunner.h"
#include "fakes/LogCapture.h"
#include "model/ProductTexts.h"
#include "schedule/PrivilegedRunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;

namespace {

const QString kRule = u"/etc/sudoers.d/vantle-pmset"_s;

// The Linux tool description around a binary root surely owns on any machine.
PowerSchedulerTool rootOwnedLinuxTool() {
    PowerSchedulerTool tool = PowerSchedulerTool::linuxTool(u"/usr/bin"_s);
    tool.path = u"/usr/bin/true"_s;
    return tool;
}

struct Rig {
    explicit Rig(QString user = u"ada"_s, PowerSchedulerTool tool = PowerSchedulerTool::macOS(),
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
        QCOMPARE(doShellScriptSource(u"echo \"a\\b\""_s, true),
                 u"do shell script \"echo \\\"a\\\\b\\\"\" with administrator "
                 u"privileges"_s);
        QCOMPARE(doShellScriptSource(u"/usr/bin/pmset -g sched"_s, false),
                 u"do shell script \"/usr/bin/pmset -g sched\""_s);
    }

    void runPrivilegedReportsHowTheRunEnded_data() {
        QTest::addColumn<ScriptOutcome>("outcome");
        QTest::addColumn<bool>("result");
        QTest::addColumn<QString>("logged");
        ScriptOutcome notCreated;
        notCreated.status = ScriptOutcome::Status::notCreated;
        QTest::newRow("success") << ScriptOutcome::success() << true << QString();
        QTest::newRow("script not created") << notCreated << true << QString();
        QTest::newRow("cancelled") << ScriptOutcome::userCancelled() << false
                                   << u"Vantle: privileged action cancelled by the user"_s;
        QTest::newRow("failed") << ScriptOutcome::failure(1, u"x"_s) << false
                                << u"Vantle: privileged action failed (1): x — "
                                   u"script was: echo \"a\\b\""_s;
        QTest::newRow("failed without a message")
            << ScriptOutcome::failure(5, std::nullopt) << false
            << u"Vantle: privileged action failed (5): no message — script was: "
               u"echo \"a\\b\""_s;
    }
    void runPrivilegedReportsHowTheRunEnded() {
        QFETCH(ScriptOutcome, outcome);
        QFETCH(bool, result);
        QFETCH(QString, logged);
        Rig rig;
        rig.scripts.administratorOutcome = outcome;
        QCOMPARE(rig.runner.runPrivileged(u"echo \"a\\b\""_s), result);
        QCOMPARE(rig.scripts.administratorRuns, QStringList{u"echo \"a\\b\""_s});
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
        QCOMPARE(shown.messageText, u"Vantle needs your administrator password"_s);
        QCOMPARE(shown.informativeText,
                 u"Vantle is handing your Wake and Power On times to the Mac's "
                 u"built-in power scheduler (pmset). Only an administrator is "
                 u"allowed to change it, so macOS will ask for your password next."_s);
        QCOMPARE(shown.buttons, (QStringList{u"Continue"_s, u"Cancel"_s}));
        QCOMPARE(shown.checkBoxTitle, u"Always allow — don't ask for my password again"_s);
        QCOMPARE(shown.checkBoxToolTip,
                 u"Adds a rule letting Vantle run /usr/bin/pmset without a password. "
                 u"It grants no other access, and turning Always Allow off in "
                 u"Settings removes it."_s);

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
        QTest::newRow("letters, digits, dot, hyphen, underscore") << u"john.doe-2_x"_s << true;
        QTest::newRow("letters of other scripts") << u"jürgen"_s << true;
        QTest::newRow("space") << u"john doe"_s << false;
        QTest::newRow("apostrophe") << u"o'neil"_s << false;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("shell") << u"a$(id)"_s << false;
        QTest::newRow("newline") << u"ada\nALL"_s << false;
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
        Rig mac(u"ada"_s);
        QCOMPARE(mac.runner.alwaysAllowInstallScript(),
                 u"tmp=$(mktemp /tmp/vantle-pmset.XXXXXX)\n"
                 u"printf '%s\\n' 'ada ALL=(ALL) NOPASSWD: /usr/bin/pmset' > \"$tmp\"\n"
                 u"if /usr/sbin/visudo -cf \"$tmp\" >/dev/null 2>&1; then install -m 440 -o root "
                 u"-g wheel \"$tmp\" /etc/sudoers.d/vantle-pmset; fi\n"
                 u"rm -f \"$tmp\""_s);
        Rig linux(u"ada"_s, rootOwnedLinuxTool(), ProductTexts::linuxDesktop());
        // Its rule and script are checked against the real visudo below.
        linux.alerts.answer = {.button = 0};
        QVERIFY(linux.runner.removeAlwaysAllowRule());
        QCOMPARE(linux.scripts.administratorRuns,
                 QStringList{u"rm -f /etc/sudoers.d/vantle-power"_s});
    }

    // The installed app finds the tool in libexec by a clean path, the one the rule and the polkit
    // action name; a build tree keeps it beside the app.
    void toolFoundWhereTheAppIsInstalled_data() {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("expected");
        const QString installed = u"libexec/vantle/vantle-power"_s;
        const QString beside = u"bin/vantle-power"_s;
        QTest::newRow("installed") << QStringList{installed} << u"libexec/vantle"_s;
        QTest::newRow("build tree") << QStringList{beside} << u"bin"_s;
        QTest::newRow("both") << QStringList{beside, installed} << u"libexec/vantle"_s;
        QTest::newRow("neither") << QStringList{} << u"bin"_s;
        QTest::newRow("a folder of that name") << QStringList{installed + u"/x"_s} << u"bin"_s;
    }

    void toolFoundWhereTheAppIsInstalled() {
        QFETCH(QStringList, files);
        QFETCH(QString, expected);
        QTemporaryDir prefix;
        QVERIFY(QDir(prefix.path()).mkpath(u"bin"_s));
        for (const QString& file : files) {
            const QString path = prefix.filePath(file);
            QVERIFY(QDir().mkpath(QFileInfo(path).absolutePath()));
            QFile created(path);
            QVERIFY(created.open(QIODevice::WriteOnly));
        }
        QCOMPARE(PowerSchedulerTool::linuxToolDirectory(prefix.filePath(u"bin"_s),
                                                        u"../libexec/vantle"_s),
                 prefix.filePath(expected));
    }

    // A rule naming a tool the user could swap would be a passwordless root shell.
    void ruleRefusedForAToolOthersCanChange() {
        QTemporaryDir dir;
        QFile tool(dir.filePath(u"vantle-power"_s));
        QVERIFY(tool.open(QIODevice::WriteOnly));
        tool.close();
        QFile::setPermissions(dir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                              QFileDevice::ExeOwner | QFileDevice::WriteGroup |
                                              QFileDevice::ExeGroup);
        Rig rig(u"ada"_s, PowerSchedulerTool::linuxTool(dir.path()), ProductTexts::linuxDesktop());
        QVERIFY(!rig.runner.alwaysAllowInstallScript());
        QCOMPARE(rig.log.count(u"must be owned by root and writable only by root"_s), 1);
    }

    void installAndRemoveTheRule() {
        Rig rig;
        rig.alerts.answer = {.button = 1};
        QVERIFY(!rig.runner.installAlwaysAllowRule());
        QVERIFY(rig.scripts.administratorRuns.isEmpty());
        QCOMPARE(rig.alerts.shown.first().informativeText,
                 u"Vantle will add a rule letting it run /usr/bin/pmset without a "
                 u"password, so your Wake and Power On schedules can be applied "
                 u"silently from now on.\n\nThis grants no other access, and turning "
                 u"\"Always Allow\" back off removes the rule.\n\nmacOS will ask for "
                 u"your password next."_s);
        QVERIFY(!rig.alerts.shown.first().checkBoxTitle);

        // The run's own result is not trusted: only the file counts.
        rig.alerts.answer = {.button = 0};
        rig.scripts.administratorOutcome = ScriptOutcome::failure(1, u"x"_s);
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
                 u"Vantle will remove the rule that let it change the Mac's power "
                 u"schedule without a password. Your schedules keep working — macOS "
                 u"will simply ask for your password each time they change.\n\n"
                 u"macOS will ask for your password next."_s);
        rig.alerts.answer = {.button = 0};
        QVERIFY(rig.runner.removeAlwaysAllowRule());
        QCOMPARE(rig.scripts.administratorRuns,
                 QStringList{u"rm -f /etc/sudoers.d/vantle-pmset /etc/sudoers.d/ebb-pmset"_s});
        rig.scripts.administratorOutcome = ScriptOutcome::userCancelled();
        QVERIFY(!rig.runner.removeAlwaysAllowRule());

        rig.runner.bringSettingsWindowForward();
        QCOMPARE(rig.alerts.broughtForward, QStringList{u"Vantle Settings"_s});
    }

    // The installation script run for real, with the real visudo, installing into a folder of
    // the test's own: visudo accepts the rule we write and turns down a broken one.
    void installScriptAgainstTheRealVisudo_data() {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("brokenRule");
        QTest::newRow("our rule") << u"john.doe-2_x"_s << QString();
        QTest::newRow("a broken rule installs nothing")
            << u"ada"_s << u"ada ALL=(ALL) NOPASSWD /usr/bin/true"_s;
    }
    void installScriptAgainstTheRealVisudo() {
        QFETCH(QString, user);
        QFETCH(QString, brokenRule);
        QVERIFY2(QFile::exists(u"/usr/sbin/visudo"_s),
                 "visudo is missing: scripts/dev deps installs it (Debian's sudo package)");
        QTemporaryDir dir;
        // Only `install` is replaced, so the rule lands in the test's folder, not /etc.
        QFile shim(dir.filePath(u"install"_s));
        QVERIFY(shim.open(QIODevice::WriteOnly));
        shim.write("#!/bin/sh\necho \"$@\" > \"$OUT/args\"\ncp \"$7\" \"$OUT/rule\"\n");
        shim.close();
        QVERIFY(shim.setPermissions(shim.permissions() | QFileDevice::ExeOwner));

        Rig rig(user, rootOwnedLinuxTool(), ProductTexts::linuxDesktop());
        QString script = rig.runner.alwaysAllowInstallScript().value();
        if (!brokenRule.isEmpty()) {
            const QString line = u"%1 ALL=(ALL) NOPASSWD: /usr/bin/true"_s.arg(user);
            QVERIFY(script.contains(line));
            script.replace(line, brokenRule);
        }
        QProcess sh;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"PATH"_s, dir.path() + u":/usr/bin:/bin"_s);
        env.insert(u"OUT"_s, dir.path());
        sh.setProcessEnvironment(env);
        sh.start(u"/bin/sh"_s, {u"-c"_s, script});
        QVERIFY(sh.waitForFinished());
        QCOMPARE(sh.exitCode(), 0);

        const auto written = [&dir](const QString& name) {
            QFile file(dir.filePath(name));
            return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        };
        if (!brokenRule.isEmpty()) {
            QCOMPARE(written(u"args"_s), QString());
            return;
        }
        const QRegularExpressionMatch args =
            QRegularExpression(u"^-m 440 -o root -g root (/tmp/vantle-power\\.\\w+) "
                               u"/etc/sudoers\\.d/vantle-power\n$"_s)
                .match(written(u"args"_s));
        QVERIFY2(args.hasMatch(), qPrintable(written(u"args"_s)));
        QVERIFY2(!QFile::exists(args.captured(1)), "the temporary file is removed");
        QCOMPARE(written(u"rule"_s), u"john.doe-2_x ALL=(ALL) NOPASSWD: /usr/bin/true\n"_s);
    }
};

QTEST_GUILESS_MAIN(TestPrivilegedRunner)
#include "tst_privilegedrunner.moc"
