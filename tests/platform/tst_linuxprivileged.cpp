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
using namespace Qt::StringLiterals;

namespace {

QString writeExecutable(const QTemporaryDir& dir, const QString& name, const QByteArray& text) {
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        return {};
    }
    file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
    return path;
}

// What a script the test ran wrote, or "<missing>".
QString readText(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : u"<missing>"_s;
}

// Stands in for pkexec: records what it was asked to run (the script of /bin/sh
// -c, or the whole direct command line), and ends as $FAKE_PKEXEC_EXIT says
// (running it when that is 0).
QString writeFakePkexec(const QTemporaryDir& dir) {
    return writeExecutable(dir, u"pkexec"_s,
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
                           "  *) echo 'Error executing command as another user: Not authorized' "
                           ">&2; exit 1 ;;\n"
                           "esac\n");
}

} // namespace

class TestLinuxPrivileged : public QObject {
    Q_OBJECT

private slots:
    void plainRuns() {
        ShellScriptRunner runner;
        const ScriptOutcome listed = runner.run(u"printf 'a \"b\"\\n'; echo $((1+1))"_s);
        QVERIFY(listed.succeeded());
        QCOMPARE(listed.output, u"a \"b\"\n2\n"_s);
        const ScriptOutcome failed = runner.run(u"echo nope >&2; exit 3"_s);
        QCOMPARE(failed.status, ScriptOutcome::Status::failed);
        QCOMPARE(failed.errorNumber, 3);
        QCOMPARE(failed.errorMessage, u"nope"_s);
        QCOMPARE(runner.run(u"exit 4"_s).description(), u"no message (4)"_s);
        QVERIFY(runner.fileExists(u"/bin/sh"_s));
        QVERIFY(!runner.fileExists(u"/nonexistent/vantle-pmset"_s));
    }

    // pkexec's own exits: 0 ran the script as root, 126 is the dismissed dialog,
    // anything else is a failure with pkexec's message; a missing pkexec fails
    // the same way.
    void administratorRunsThroughPkexec_data() {
        QTest::addColumn<QString>("exit");
        QTest::addColumn<bool>("result");
        QTest::addColumn<QString>("logged");
        QTest::newRow("0") << u"0"_s << true << QString();
        QTest::newRow("126") << u"126"_s << false
                             << u"Vantle: privileged action cancelled by the user"_s;
        QTest::newRow("1") << u"1"_s << false
                           << u"Vantle: privileged action failed (1): Error "
                              u"executing command as another user: Not authorized "
                              u"— script was: echo \"it's\" > \"$OUT\""_s;
        QTest::newRow("no pkexec") << QString() << false
                                   << u"Vantle: privileged action failed (127): "
                                      u"cannot run /nonexistent/pkexec — script "
                                      u"was: echo \"it's\" > \"$OUT\""_s;
    }
    void administratorRunsThroughPkexec() {
        QFETCH(QString, exit);
        QFETCH(bool, result);
        QFETCH(QString, logged);
        QTemporaryDir dir;
        const QString pkexec = exit.isEmpty() ? u"/nonexistent/pkexec"_s : writeFakePkexec(dir);
        qputenv("FAKE_PKEXEC_EXIT", exit.toUtf8());
        qputenv("OUT", dir.filePath(u"out"_s).toUtf8());
        ShellScriptRunner scripts(pkexec);
        FakeAlerts alerts;
        PrivilegedRunner runner(scripts, alerts, PowerSchedulerTool::linuxTool(dir.path()),
                                ProductTexts::linuxDesktop(), u"ada"_s);
        LogCapture log;
        const QString script = u"echo \"it's\" > \"$OUT\""_s;
        QCOMPARE(runner.runPrivileged(script), result);
        QCOMPARE(log.lines, logged.isEmpty() ? QStringList{} : QStringList{logged});
        if (exit.isEmpty()) {
            return;
        }
        // The script reaches the shell as one argument, unquoted and unchanged.
        QCOMPARE(readText(dir.filePath(u"script"_s)), script);
        QCOMPARE(QFile::exists(dir.filePath(u"out"_s)), result);
    }

    // Only the sync's own script, exactly as it writes it, becomes a direct call
    // of the tool.
    void directPowerToolCalls_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("call");
        const QString tool = u"/usr/local/bin/vantle-power"_s;
        const QString cancel = tool + u" schedule cancel wake '11/17/26 07:30:00' || true"_s;
        const QString wake = tool + u" schedule poweron '11/18/26 06:00:00'"_s;
        QTest::newRow("cancels then schedules")
            << cancel + u"; "_s + wake << QStringList{tool,
                                                      u"apply"_s,
                                                      u"cancel"_s,
                                                      u"wake"_s,
                                                      u"11/17/26 07:30:00"_s,
                                                      u"schedule"_s,
                                                      u"poweron"_s,
                                                      u"11/18/26 06:00:00"_s};
        const QStringList none;
        QTest::newRow("cancel without || true") << cancel.chopped(8) << none;
        QTest::newRow("schedule with || true") << wake + u" || true"_s << none;
        QTest::newRow("rule installation first") << u"rm -f \"$tmp\"\n"_s + wake << none;
        QTest::newRow("two tools")
            << u"/tmp/vantle-power schedule wake '11/18/26 06:00:00'; "_s + wake << none;
        QTest::newRow("another program")
            << u"/usr/bin/pmset schedule wake '11/18/26 06:00:00'"_s << none;
        QTest::newRow("a command after it") << wake + u"; reboot"_s << none;
        QTest::newRow("quoted path")
            << u"'/opt/my apps/vantle-power' schedule wake '11/18/26 06:00:00'"_s << none;
        QTest::newRow("empty") << QString() << none;
    }
    void directPowerToolCalls() {
        QFETCH(QString, script);
        QFETCH(QStringList, call);
        QCOMPARE(directPowerToolCall(script).value_or(QStringList{}), call);
    }

    // The direct call goes through pkexec with the tool first, so polkit can
    // match its action.
    void syncScriptRunsTheToolThroughPkexec() {
        QTemporaryDir dir;
        const QString pkexec = writeFakePkexec(dir);
        const QString tool = writeExecutable(dir, u"vantle-power"_s,
                                             "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$OUT\"\n");
        qputenv("FAKE_PKEXEC_EXIT", "0");
        qputenv("OUT", dir.filePath(u"out"_s).toUtf8());

        ShellScriptRunner runner(pkexec);
        const ScriptOutcome outcome =
            runner.runAsAdministrator(tool + u" schedule restart '11/17/26 07:30:00'"_s);
        QVERIFY(outcome.succeeded());
        QCOMPARE(readText(dir.filePath(u"direct"_s)),
                 tool + u"\napply\nschedule\nrestart\n11/17/26 07:30:00\n"_s);
        QVERIFY(!QFile::exists(dir.filePath(u"script"_s)));
        QVERIFY(QFile::exists(dir.filePath(u"out"_s)));
    }

    // The Qt alert: default Continue, Cancel on Escape, the check box with its
    // tool tip.
    void qtAlertsAnswer() {
        QtAlerts alerts;
        const AlertRequest request{.messageText = u"Title"_s,
                                   .informativeText = u"Body"_s,
                                   .buttons = {u"Continue"_s, u"Cancel"_s},
                                   .checkBoxTitle = u"Always"_s,
                                   .checkBoxToolTip = u"Tip"_s};
        auto answerWith = [](const std::function<void(QMessageBox&)>& act) {
            QTimer::singleShot(0, [act] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                QVERIFY(box);
                act(*box);
            });
        };
        answerWith([](QMessageBox& box) {
            QCOMPARE(box.text(), u"Title"_s);
            QCOMPARE(box.informativeText(), u"Body"_s);
            QCOMPARE(box.checkBox()->toolTip(), u"Tip"_s);
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
