#include "fakes/FakeAlerts.h"
#include "fakes/LogCapture.h"
#include "model/ProductTexts.h"
#include "platform/linux/QtAlerts.h"
#include "platform/linux/ShellScriptRunner.h"
#include "schedule/PrivilegedRunner.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace vantle;

namespace {

// Stands in for pkexec: records what it was asked to run (the script of /bin/sh -c, or the whole
// direct command line), and ends as $FAKE_PKEXEC_EXIT says (running it when that is 0).
QString writeFakePkexec(const QTemporaryDir& dir) {
    const QString path = dir.filePath(QStringLiteral("pkexec"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return {};
    }
    file.write(
        "#!/bin/sh\n"
        "if [ \"$1\" = /bin/sh ]; then\n"
        "  [ \"$2\" = -c ] || exit 99\n"
        "  printf '%s' \"$3\" > \"$(dirname \"$0\")/script\"\n"
        "else\n"
        "  printf '%s\\n' \"$@\" > \"$(dirname \"$0\")/direct\"\n"
        "fi\n"
        "case \"$FAKE_PKEXEC_EXIT\" in\n"
        "  0) exec \"$@\" ;;\n"
        "  126) exit 126 ;;\n"
        "  *) echo 'Error executing command as another user: Not authorized' >&2; exit 1 ;;\n"
        "esac\n");
    file.close();
    file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
    return path;
}

} // namespace

class TestLinuxPrivileged : public QObject {
    Q_OBJECT

private slots:
    void plainRuns() {
        ShellScriptRunner runner;
        const ScriptOutcome listed =
            runner.run(QStringLiteral("printf 'a \"b\"\\n'; echo $((1+1))"));
        QVERIFY(listed.succeeded());
        QCOMPARE(listed.output, QStringLiteral("a \"b\"\n2\n"));
        const ScriptOutcome failed = runner.run(QStringLiteral("echo nope >&2; exit 3"));
        QCOMPARE(failed.status, ScriptOutcome::Status::failed);
        QCOMPARE(failed.errorNumber, 3);
        QCOMPARE(failed.errorMessage, QStringLiteral("nope"));
        QCOMPARE(runner.run(QStringLiteral("exit 4")).description(),
                 QStringLiteral("no message (4)"));
        QVERIFY(runner.fileExists(QStringLiteral("/bin/sh")));
        QVERIFY(!runner.fileExists(QStringLiteral("/nonexistent/vantle-pmset")));
    }

    // pkexec's own exits: 0 ran the script as root, 126 is the dismissed dialog, anything else
    // is a failure with pkexec's message; a missing pkexec fails the same way.
    void administratorRunsThroughPkexec_data() {
        QTest::addColumn<QString>("exit");
        QTest::addColumn<bool>("result");
        QTest::addColumn<QString>("logged");
        QTest::newRow("0") << QStringLiteral("0") << true << QString();
        QTest::newRow("126") << QStringLiteral("126") << false
                             << QStringLiteral("Vantle: privileged action cancelled by the user");
        QTest::newRow("1") << QStringLiteral("1") << false
                           << QStringLiteral("Vantle: privileged action failed (1): Error "
                                             "executing command as another user: Not authorized "
                                             "— script was: echo \"it's\" > \"$OUT\"");
        QTest::newRow("no pkexec") << QString() << false
                                   << QStringLiteral("Vantle: privileged action failed (127): "
                                                     "cannot run /nonexistent/pkexec — script "
                                                     "was: echo \"it's\" > \"$OUT\"");
    }
    void administratorRunsThroughPkexec() {
        QFETCH(QString, exit);
        QFETCH(bool, result);
        QFETCH(QString, logged);
        QTemporaryDir dir;
        const QString pkexec =
            exit.isEmpty() ? QStringLiteral("/nonexistent/pkexec") : writeFakePkexec(dir);
        qputenv("FAKE_PKEXEC_EXIT", exit.toUtf8());
        qputenv("OUT", dir.filePath(QStringLiteral("out")).toUtf8());
        ShellScriptRunner scripts(pkexec);
        FakeAlerts alerts;
        PrivilegedRunner runner(scripts, alerts, PowerSchedulerTool::linuxTool(dir.path()),
                                ProductTexts::linuxDesktop(), QStringLiteral("ada"));
        LogCapture log;
        const QString script = QStringLiteral("echo \"it's\" > \"$OUT\"");
        QCOMPARE(runner.runPrivileged(script), result);
        QCOMPARE(log.lines, logged.isEmpty() ? QStringList{} : QStringList{logged});
        if (exit.isEmpty()) {
            return;
        }
        // The script reaches the shell as one argument, unquoted and unchanged.
        QFile sent(dir.filePath(QStringLiteral("script")));
        QVERIFY(sent.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(sent.readAll()), script);
        QCOMPARE(QFile::exists(dir.filePath(QStringLiteral("out"))), result);
    }

    // Only the sync's own script, exactly as it writes it, becomes a direct call of the tool.
    void directPowerToolCalls_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("call");
        const QString tool = QStringLiteral("/usr/local/bin/vantle-power");
        const QString cancel =
            tool + QStringLiteral(" schedule cancel wake '11/17/26 07:30:00' || true");
        const QString wake = tool + QStringLiteral(" schedule poweron '11/18/26 06:00:00'");
        QTest::newRow("cancels then schedules") << cancel + QStringLiteral("; ") + wake
                                                << QStringList{tool,
                                                               QStringLiteral("apply"),
                                                               QStringLiteral("cancel"),
                                                               QStringLiteral("wake"),
                                                               QStringLiteral("11/17/26 07:30:00"),
                                                               QStringLiteral("schedule"),
                                                               QStringLiteral("poweron"),
                                                               QStringLiteral("11/18/26 06:00:00")};
        const QStringList none;
        QTest::newRow("cancel without || true") << cancel.chopped(8) << none;
        QTest::newRow("schedule with || true") << wake + QStringLiteral(" || true") << none;
        QTest::newRow("rule installation first")
            << QStringLiteral("rm -f \"$tmp\"\n") + wake << none;
        QTest::newRow("two tools")
            << QStringLiteral("/tmp/vantle-power schedule wake '11/18/26 06:00:00'; ") + wake
            << none;
        QTest::newRow("another program")
            << QStringLiteral("/usr/bin/pmset schedule wake '11/18/26 06:00:00'") << none;
        QTest::newRow("a command after it") << wake + QStringLiteral("; reboot") << none;
        QTest::newRow("quoted path")
            << QStringLiteral("'/opt/my apps/vantle-power' schedule wake '11/18/26 06:00:00'")
            << none;
        QTest::newRow("empty") << QString() << none;
    }
    void directPowerToolCalls() {
        QFETCH(QString, script);
        QFETCH(QStringList, call);
        QCOMPARE(directPowerToolCall(script).value_or(QStringList{}), call);
    }

    // The direct call goes through pkexec with the tool first, so polkit can match its action.
    void syncScriptRunsTheToolThroughPkexec() {
        QTemporaryDir dir;
        const QString pkexec = writeFakePkexec(dir);
        const QString tool = dir.filePath(QStringLiteral("vantle-power"));
        QFile file(tool);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$OUT\"\n");
        file.close();
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
        qputenv("FAKE_PKEXEC_EXIT", "0");
        qputenv("OUT", dir.filePath(QStringLiteral("out")).toUtf8());

        ShellScriptRunner runner(pkexec);
        const ScriptOutcome outcome = runner.runAsAdministrator(
            tool + QStringLiteral(" schedule restart '11/17/26 07:30:00'"));
        QVERIFY(outcome.succeeded());
        QFile direct(dir.filePath(QStringLiteral("direct")));
        QVERIFY(direct.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(direct.readAll()),
                 tool + QStringLiteral("\napply\nschedule\nrestart\n11/17/26 07:30:00\n"));
        QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("script"))));
        QVERIFY(QFile::exists(dir.filePath(QStringLiteral("out"))));
    }

    // The Qt alert: default Continue, Cancel on Escape, the check box with its tool tip.
    void qtAlertsAnswer() {
        QtAlerts alerts;
        const AlertRequest request{
            .messageText = QStringLiteral("Title"),
            .informativeText = QStringLiteral("Body"),
            .buttons = {QStringLiteral("Continue"), QStringLiteral("Cancel")},
            .checkBoxTitle = QStringLiteral("Always"),
            .checkBoxToolTip = QStringLiteral("Tip")};
        auto answerWith = [](const std::function<void(QMessageBox&)>& act) {
            QTimer::singleShot(0, [act] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                QVERIFY(box);
                act(*box);
            });
        };
        answerWith([](QMessageBox& box) {
            QCOMPARE(box.text(), QStringLiteral("Title"));
            QCOMPARE(box.informativeText(), QStringLiteral("Body"));
            QCOMPARE(box.checkBox()->toolTip(), QStringLiteral("Tip"));
            box.checkBox()->setChecked(true);
            QTest::keyClick(&box, Qt::Key_Return);
        });
        AlertResponse response = alerts.runModal(request);
        QCOMPARE(response.button, 0);
        QVERIFY(response.checkBoxChecked);

        answerWith([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
        response = alerts.runModal(request);
        QCOMPARE(response.button, 1);
        QVERIFY(!response.checkBoxChecked);

        AlertRequest plain = request;
        plain.checkBoxTitle.reset();
        answerWith([](QMessageBox& box) {
            QVERIFY(!box.checkBox());
            box.buttons().constFirst()->click();
        });
        alerts.runModal(plain);
    }
};

QTEST_MAIN(TestLinuxPrivileged)
#include "tst_linuxprivileged.moc"
