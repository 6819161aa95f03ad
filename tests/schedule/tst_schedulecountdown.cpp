#include "platform/NullPanelPlacement.h"
#include "schedule/ScheduleCountdownView.h"
#include "schedule/ScheduleCountdownWindow.h"
#include "schedule/ScheduleWarningState.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;
using Action = ShutdownSchedule::Action;

namespace {

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

class TestScheduleCountdown : public QObject {
    Q_OBJECT

private slots:
    void contentNamesTheAction_data() {
        QTest::addColumn<Action>("action");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("confirm");
        QTest::addColumn<QString>("windowTitle");
        QTest::newRow("sleep") << Action::sleep << u"Going to Sleep"_s << u"Sleep Now"_s
                               << u"Sleep"_s;
        QTest::newRow("wake") << Action::wake << u"Waking"_s << u"Continue"_s << u"Wake"_s;
        QTest::newRow("shut down")
            << Action::shutdown << u"Shutting Down"_s << u"Shut Down Now"_s << u"Shut Down"_s;
        QTest::newRow("restart") << Action::restart << u"Restarting"_s << u"Restart Now"_s
                                 << u"Restart"_s;
        QTest::newRow("power on") << Action::poweron << u"Waking"_s << u"Continue"_s
                                  << u"Power On"_s;
    }
    void contentNamesTheAction() {
        QFETCH(Action, action);
        QFETCH(QString, title);
        QFETCH(QString, confirm);
        QFETCH(QString, windowTitle);
        ScheduleWarningState state;
        state.setAction(action);
        state.setSecondsLeft(42);
        NullPanelPlacement placement;
        ScheduleCountdownWindow window(placement);
        window.show(state, {}, {});
        const QWidget& panel = *window.panel();
        QCOMPARE(panel.windowTitle(), windowTitle);
        QCOMPARE(panel.size(), QSize(320, 260));
        QVERIFY(panel.windowFlags().testFlags(Qt::Tool | Qt::WindowStaysOnTopHint |
                                              Qt::WindowCloseButtonHint));
        QCOMPARE(text(panel, "title"), title);
        QCOMPARE(text(panel, "countdown"), u"in 42s"_s);
        QCOMPARE(text(panel, "caption"),
                 u"Cancel skips this one. The schedule itself is unchanged."_s);
        QVERIFY(!panel.findChild<QLabel*>(u"symbol"_s)->pixmap().isNull());
        QVERIFY(button(panel, confirm));
        QVERIFY(button(panel, u"Cancel"_s));
        state.setSecondsLeft(1);
        QCOMPARE(text(panel, "countdown"), u"in 1s"_s);
    }

    void keysRunTheirActions() {
        ScheduleWarningState state;
        state.setAction(Action::sleep);
        int proceeds = 0;
        int cancels = 0;
        ScheduleCountdownView view(
            state, [&] { ++proceeds; }, [&] { ++cancels; });
        view.show();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        // Renaming the confirm button must keep its key.
        state.setAction(Action::restart);
        QVERIFY(button(view, u"Restart Now"_s));

        // Return means proceed even while Cancel has the focus. Shortcuts click a moment later.
        button(view, u"Cancel"_s)->setFocus();
        QTest::keyClick(&view, Qt::Key_Return);
        QTRY_COMPARE(proceeds, 1);
        QCOMPARE(cancels, 0);
        QTest::keyClick(&view, Qt::Key_Escape);
        QTRY_COMPARE(cancels, 1);
        QCOMPARE(proceeds, 1);
    }

    void panelOpensOnceAndOnlyTheUserCloseCancels() {
        ScheduleWarningState state;
        NullPanelPlacement placement;
        ScheduleCountdownWindow window(placement);
        int proceeds = 0;
        int cancels = 0;
        // As the warning service does: both answers end the warning, which closes the panel.
        const auto proceed = [&] {
            ++proceeds;
            window.close();
        };
        const auto cancel = [&] {
            ++cancels;
            window.close();
        };

        window.show(state, proceed, cancel);
        QPointer<QWidget> panel = window.panel();
        bool secondActionRan = false;
        window.show(
            state, [&] { secondActionRan = true; }, [&] { secondActionRan = true; });
        QCOMPARE(window.panel(), panel.data());

        // The user's close button.
        QVERIFY(panel->close());
        QCOMPARE(cancels, 1);
        QVERIFY(!window.isOpen());
        QTRY_VERIFY(panel.isNull());

        window.show(state, proceed, cancel);
        panel = window.panel();
        window.close();
        QTRY_VERIFY(panel.isNull());
        QCOMPARE(cancels, 1);

        // A button closes the panel from inside its own click.
        window.show(state, proceed, cancel);
        panel = window.panel();
        QTest::mouseClick(button(*panel, u"Shut Down Now"_s), Qt::LeftButton);
        QTRY_VERIFY(panel.isNull());
        QCOMPARE(proceeds, 1);
        QCOMPARE(cancels, 1);
        QVERIFY(!secondActionRan);
    }
};

QTEST_MAIN(TestScheduleCountdown)
#include "tst_schedulecountdown.moc"
