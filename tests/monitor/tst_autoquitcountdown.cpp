#include "monitor/AutoQuitCountdownView.h"
#include "monitor/AutoQuitCountdownWindow.h"
#include "monitor/QuitWarningState.h"
#include "platform/NullPanelPlacement.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;

namespace {

AppInfo app(qint32 id, const QString& name) {
    AppInfo info;
    info.id = id;
    info.name = name;
    return info;
}

QString text(const QWidget& view, const char* label) {
    return view.findChild<QLabel*>(QLatin1String(label))->text();
}

QPushButton* button(const QWidget& view, const QString& title) {
    for (QPushButton* candidate : view.findChildren<QPushButton*>()) {
        if (candidate->text() == title) {
            return candidate;
        }
    }
    return nullptr;
}

} // namespace

class TestAutoQuitCountdown : public QObject {
    Q_OBJECT

private slots:
    void contentFollowsTheState() {
        QuitWarningState state;
        state.setApps({app(7, u"Mail"_s)});
        state.setSecondsLeft(42);
        AutoQuitCountdownView view(state, {}, {});
        QCOMPARE(text(view, "title"), u"Quitting Idle App"_s);
        QCOMPARE(text(view, "countdown"), u"in 42s"_s);
        QCOMPARE(text(view, "apps"), u"Mail"_s);

        state.setSecondsLeft(1);
        QCOMPARE(text(view, "countdown"), u"in 1s"_s);
        state.setApps({app(9, u"Notes"_s), app(7, u"<b>Mail</b>"_s)});
        QCOMPARE(text(view, "title"), u"Quitting Idle Apps"_s);
        QCOMPARE(text(view, "apps"), u"Notes\n<b>Mail</b>"_s);
        QCOMPARE(view.findChild<QLabel*>(u"apps"_s)->textFormat(), Qt::PlainText);
        state.setApps({});
        QCOMPARE(text(view, "title"), u"Quitting Idle Apps"_s);

        state.setApps({app(7, u"Mail"_s), app(8, u"An Editor "_s.repeated(20))});
        const QStringList lines = text(view, "apps").split(u'\n');
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[1].endsWith(QChar(0x2026)));
    }

    void keysAndButtonsRunTheirActions() {
        QuitWarningState state;
        int quits = 0;
        int cancels = 0;
        AutoQuitCountdownView view(
            state, [&] { ++quits; }, [&] { ++cancels; });
        view.show();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        QPushButton* cancel = button(view, u"Cancel"_s);
        QPushButton* quitNow = button(view, u"Quit Now"_s);
        QVERIFY(quitNow->isDefault());

        // Return means Quit Now even while Cancel has the focus. Shortcuts click a moment later.
        cancel->setFocus();
        QTest::keyClick(&view, Qt::Key_Return);
        QTRY_COMPARE(quits, 1);
        QCOMPARE(cancels, 0);
        QTest::keyClick(&view, Qt::Key_Escape);
        QTRY_COMPARE(cancels, 1);
        QCOMPARE(quits, 1);
        QTest::mouseClick(cancel, Qt::LeftButton);
        QTest::mouseClick(quitNow, Qt::LeftButton);
        QCOMPARE(quits, 2);
        QCOMPARE(cancels, 2);
    }

    void panelOpensOnceAndOnlyTheUserCloseCancels() {
        QuitWarningState state;
        state.setApps({app(7, u"Mail"_s)});
        NullPanelPlacement placement;
        AutoQuitCountdownWindow window(placement);
        int quits = 0;
        int cancels = 0;
        // As the quit warning service does: both answers end the warning, which closes the panel.
        const auto quitNow = [&] {
            ++quits;
            window.close();
        };
        const auto cancel = [&] {
            ++cancels;
            window.close();
        };

        window.show(state, quitNow, cancel);
        QVERIFY(window.isOpen());
        QPointer<QWidget> panel = window.panel();
        QVERIFY(panel->isVisible());
        QCOMPARE(panel->size(), QSize(320, 280));
        QCOMPARE(panel->windowTitle(), u"Auto-Quit"_s);
        QVERIFY(panel->windowFlags().testFlags(Qt::Tool | Qt::WindowStaysOnTopHint |
                                               Qt::WindowCloseButtonHint));

        bool secondActionRan = false;
        window.show(
            state, [&] { secondActionRan = true; }, [&] { secondActionRan = true; });
        QCOMPARE(window.panel(), panel.data());
        state.setSecondsLeft(3);
        QCOMPARE(text(*panel, "countdown"), u"in 3s"_s);

        // The user's close button.
        QVERIFY(panel->close());
        QCOMPARE(cancels, 1);
        QVERIFY(!window.isOpen());
        QTRY_VERIFY(panel.isNull());

        window.show(state, quitNow, cancel);
        panel = window.panel();
        window.close();
        window.close();
        QVERIFY(!window.isOpen());
        QTRY_VERIFY(panel.isNull());
        QCOMPARE(cancels, 1);

        // A button closes the panel from inside its own click.
        window.show(state, quitNow, cancel);
        panel = window.panel();
        QTest::mouseClick(button(*panel, u"Quit Now"_s), Qt::LeftButton);
        QTRY_VERIFY(panel.isNull());
        QCOMPARE(quits, 1);
        QCOMPARE(cancels, 1);
        QVERIFY(!secondActionRan);
    }
};

QTEST_MAIN(TestAutoQuitCountdown)
#include "tst_autoquitcountdown.moc"
