#include "fakes/RemovalFixture.h"
#include "ui/AppearancePalette.h"
#include "ui/settings/AboutTab.h"
#include "ui/settings/AdvancedTab.h"
#include "ui/settings/RemovalSheet.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(std::optional<QString>)
Q_DECLARE_METATYPE(AuthorizationStatus)

namespace {

const QString kRemovalFailed =
    u"Vantle could not change the power schedule, so nothing was removed. This usually means "
    u"the password prompt was cancelled."_s;

QStringList labelTexts(const QWidget& widget) {
    QStringList texts;
    for (const QLabel* label : widget.findChildren<QLabel*>()) {
        texts << label->text();
    }
    return texts;
}

QImage pixmapOf(const QWidget& widget) {
    return widget.findChild<QLabel*>()->pixmap().toImage();
}

} // namespace

class TestAboutAdvanced : public QObject {
    Q_OBJECT

    std::unique_ptr<RemovalFixture> f;

private slots:
    void init() { f = std::make_unique<RemovalFixture>(); }

    void versionLine_data() {
        QTest::addColumn<std::optional<QString>>("version");
        QTest::addColumn<std::optional<QString>>("build");
        QTest::addColumn<QString>("line");
        QTest::newRow("build differs")
            << std::optional(u"1.4"_s) << std::optional(u"212"_s) << u"Version 1.4 (212)"_s;
        QTest::newRow("build same")
            << std::optional(u"1.4"_s) << std::optional(u"1.4"_s) << u"Version 1.4"_s;
        QTest::newRow("no build") << std::optional(u"1.4"_s) << std::optional<QString>()
                                  << u"Version 1.4"_s;
        QTest::newRow("no version")
            << std::optional<QString>() << std::optional(u"9"_s) << u"Version — (9)"_s;
    }
    void versionLine() {
        QFETCH(std::optional<QString>, version);
        QFETCH(std::optional<QString>, build);
        QFETCH(QString, line);
        FakeBundleInfo bundle;
        bundle.shortVersionValue = version;
        bundle.buildNumberValue = build;
        QCOMPARE(AboutTab::versionLine(bundle), line);
    }

    // The Linux texts name the tray and the computer; the tip box needs both build settings; the
    // symbols are redrawn for a dark palette.
    void aboutTab() {
        AboutTab tab(f->build());
        const QStringList texts = labelTexts(tab);
        for (const QString& text :
             {u"Version 2.3.1 (231)"_s, u"App control for your system tray"_s, u"by Pelmark"_s,
              u"Select apps in the system tray and quit them together."_s,
              u"Clear everything once the computer has sat unused."_s,
              u"Quit everything, sleep, restart or shut down from any app."_s}) {
            QVERIFY2(texts.contains(text), qPrintable(text));
        }
        const bool tipConfigured =
            !AboutTab::tipServiceName().isEmpty() && !AboutTab::tipPageAddress().isEmpty();
        QCOMPARE(tab.findChild<QWidget*>(u"tipBox"_s) != nullptr, tipConfigured);

        tab.setPalette(AppearancePalette::lightPalette());
        const QImage light = pixmapOf(tab);
        tab.setPalette(AppearancePalette::darkPalette());
        QVERIFY(pixmapOf(tab) != light);
    }

    // The status as the report words it; a server that never answers leaves "unknown".
    void notificationStatus_data() {
        QTest::addColumn<bool>("answers");
        QTest::addColumn<AuthorizationStatus>("status");
        QTest::addColumn<QString>("text");
        QTest::newRow("denied") << true << AuthorizationStatus::denied
                                << u"DENIED (warnings fall back to the window)"_s;
        QTest::newRow("authorized") << true << AuthorizationStatus::authorized << u"authorized"_s;
        QTest::newRow("not determined")
            << true << AuthorizationStatus::notDetermined << u"not determined"_s;
        QTest::newRow("ephemeral") << true << AuthorizationStatus::ephemeral << u"unknown"_s;
        QTest::newRow("no answer") << false << AuthorizationStatus::authorized << u"unknown"_s;
    }
    void notificationStatus() {
        QFETCH(bool, answers);
        QFETCH(AuthorizationStatus, status);
        QFETCH(QString, text);
        f->notifications->answersStatus = answers;
        f->notifications->status = status;
        AdvancedTab tab(f->build());
        QCOMPARE(tab.notificationStatus(), u"checking"_s);
        tab.show();
        f->clock().advance(AdvancedTab::kStatusQueryLimit);
        QCOMPARE(tab.notificationStatus(), text);
        QVERIFY(labelTexts(tab).contains(u"Notifications: "_s + text));
        tab.copyButton()->click();
        QVERIFY(QApplication::clipboard()->text().contains(u"\nNotifications: "_s + text + u'\n'));
    }

    void copyDiagnosticsSaysSoForTwoSeconds() {
        AdvancedTab tab(f->build());
        QApplication::clipboard()->clear();
        tab.copyButton()->click();
        QCOMPARE(QApplication::clipboard()->text(), f->settings->diagnosticsReport(u"checking"_s));
        QCOMPARE(tab.copyButton()->text(), u"Copied to Clipboard"_s);
        f->clock().advance(AdvancedTab::kCopiedFor - Milliseconds(1));
        // A second copy starts the two seconds again.
        tab.copyButton()->click();
        f->clock().advance(Milliseconds(1999));
        QCOMPARE(tab.copyButton()->text(), u"Copied to Clipboard"_s);
        f->clock().advance(Milliseconds(1));
        QCOMPARE(tab.copyButton()->text(), u"Copy Diagnostics"_s);
    }

    // The sheet lists the plan, asks for the password only when a step needs it, and shows a
    // failure in place; Cancel changes nothing.
    void removalSheet_data() {
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<bool>("dismiss");
        QTest::addColumn<bool>("passwordLine");
        QTest::newRow("nothing privileged") << QStringList{} << false << false;
        QTest::newRow("events, password given")
            << QStringList{u"wake|11/17/26 07:30:00"_s} << false << true;
        QTest::newRow("events, prompt dismissed")
            << QStringList{u"wake|11/17/26 07:30:00"_s} << true << true;
    }
    void removalSheet() {
        QFETCH(QStringList, events);
        QFETCH(bool, dismiss);
        QFETCH(bool, passwordLine);
        f->loginItem->registered = true;
        f->files->paths << f->platform.installation.path;
        AdvancedTab tab(f->build());
        f->settings->setPmsetRegistered(events);
        if (dismiss) {
            f->scripts->administratorOutcome = ScriptOutcome::userCancelled();
        }
        tab.show();

        tab.removeButton()->click();
        QPointer<RemovalSheet> sheet = tab.removalSheet();
        QVERIFY(sheet && sheet->isVisible());
        const QString steps = sheet->findChild<QLabel*>(u"steps"_s)->text();
        QVERIFY(steps.contains(u"Stop Vantle opening at login"_s));
        QVERIFY(steps.endsWith(u"<li>Move Vantle to the Trash</li></ul>"_s));
        QCOMPARE(sheet->findChild<QLabel*>(u"passwordLine"_s) != nullptr, passwordLine);
        QVERIFY(labelTexts(*sheet).contains(
            u"Vantle goes to the Trash, so you can put it back if you change your mind."_s));

        sheet->cancelButton()->click();
        QTRY_VERIFY(!sheet);
        QVERIFY(f->scripts->administratorRuns.isEmpty());

        tab.removeButton()->click();
        sheet = tab.removalSheet();
        sheet->removeButton()->click();
        QCOMPARE(sheet->removeButton()->text(), u"Removing…"_s);
        QVERIFY(!sheet->cancelButton()->isEnabled());
        if (dismiss) {
            QTRY_COMPARE(sheet->errorText(), kRemovalFailed);
            QVERIFY(sheet->isVisible());
            QCOMPARE(sheet->removeButton()->text(), u"Remove Vantle"_s);
            QVERIFY(f->loginItem->registered);
            QCOMPARE(f->removedCount, 0);
        } else {
            QTRY_VERIFY(!sheet);
            QCOMPARE(f->removedCount, 1);
            QVERIFY(!f->loginItem->registered);
            QVERIFY(!f->files->exists(f->platform.installation.path));
        }
        QCOMPARE(f->scripts->administratorRuns.size(), passwordLine ? 1 : 0);
    }
};

QTEST_MAIN(TestAboutAdvanced)
#include "tst_aboutadvanced.moc"
