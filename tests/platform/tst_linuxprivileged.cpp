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

// Stands in for pkexec: checks it was asked to run /bin/sh -c, records the script, and ends as
// $FAKE_PKEXEC_EXIT says (running the script when that is 0).
QString writeFakePkexec(const QTemporaryDir& dir) {
    const QString path = dir.filePath(QStringLiteral("pkexec"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return {};
    }
    file.write(
        "#!/bin/sh\n"
        "[ \"$1\" = /bin/sh ] && [ \"$2\" = -c ] || exit 99\n"
        "printf '%s' \"$3\" > \"$(dirname \"$0\")/script\"\n"
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
