#include "monitor/QuitWarningState.h"
#include "platform/NullPanelPlacement.h"
#include "schedule/ScheduleWarningState.h"
#include "ui/countdown/CountdownWindow.h"

#include <QLabel>
#include <QLayout>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <memory>

using namespace vantle;
using namespace Qt::StringLiterals;
using Action = ShutdownSchedule::Action;

namespace {

const QString kAutoQuit = u"auto-quit"_s;
const QString kScheduleCaption = u"Cancel skips this one. The schedule itself is unchanged."_s;

// The state of either warning: `kind` is kAutoQuit or the raw value of a scheduled action.
std::unique_ptr<CountdownState> makeState(const QString& kind) {
    if (fromRawValue<Action>(kind)) {
        return std::make_unique<ScheduleWarningState>();
    }
    return std::make_unique<QuitWarningState>();
}

// Gives a state made for `kind` that kind's content: the action, or apps with these names.
void setContent(CountdownState& state, const QString& kind, const QStringList& names = {}) {
    if (auto* schedule = qobject_cast<ScheduleWarningState*>(&state)) {
        schedule->setAction(*fromRawValue<Action>(kind));
        return;
    }
    QList<AppInfo> apps;
    for (const QString& name : names) {
        AppInfo app;
        app.id = static_cast<qint32>(apps.size()) + 1;
        app.name = name;
        apps << app;
    }
    static_cast<QuitWarningState&>(state).setApps(apps);
}

// Content of the same kind, but different.
QString otherKind(const QString& kind) {
    if (kind == kAutoQuit) {
        return kAutoQuit;
    }
    return rawValue(kind == rawValue(Action::restart) ? Action::sleep : Action::restart);
}

QString text(const QWidget& panel, const QString& label) {
    return panel.findChild<QLabel*>(label)->text();
}

QPushButton* button(const QWidget& panel, const QString& title) {
    for (QPushButton* candidate : panel.findChildren<QPushButton*>()) {
        if (candidate->text() == title) {
            return candidate;
        }
    }
    return nullptr;
}

} // namespace

class TestCountdownPanel : public QObject {
    Q_OBJECT

    // A panel as the warning services use it: every answer ends the warning and closes it.
    struct Rig {
        NullPanelPlacement placement;
        CountdownWindow window{placement};
        std::unique_ptr<CountdownState> state;
        QList<bool> answers;

        explicit Rig(const QString& kind)
            : state(makeState(kind)) {
            setContent(*state, kind, {u"Other"_s});
        }
        QPointer<QWidget> open() {
            window.show(*state, [this](bool confirmed) {
                answers << confirmed;
                window.close();
            });
            QWidget* panel = window.panel();
            panel->activateWindow();
            return QTest::qWaitForWindowActive(panel) ? panel : nullptr;
        }
    };

private slots:
    void contentFollowsTheState_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("windowTitle");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("confirm");
        const QSize quitSize(320, 280);
        const QSize scheduleSize(320, 260);
        const auto quitRow = [&](const char* name, const QStringList& names, const QString& title) {
            QTest::newRow(name) << kAutoQuit << names << u"Auto-Quit"_s << quitSize << title
                                << QString() << u"Quit Now"_s;
        };
        quitRow("one app", {u"Mail"_s}, u"Quitting Idle App"_s);
        quitRow("two apps, one named like markup", {u"Notes"_s, u"<b>Mail</b>"_s},
                u"Quitting Idle Apps"_s);
        quitRow("no apps", {}, u"Quitting Idle Apps"_s);
        quitRow("a name too long for a line", {u"Mail"_s, u"An Editor "_s.repeated(20)},
                u"Quitting Idle Apps"_s);
        const auto scheduleRow = [&](Action action, const QString& title, const QString& confirm) {
            QTest::newRow(qPrintable(rawValue(action)))
                << rawValue(action) << QStringList() << rawValue(action) << scheduleSize << title
                << kScheduleCaption << confirm;
        };
        scheduleRow(Action::sleep, u"Going to Sleep"_s, u"Sleep Now"_s);
        scheduleRow(Action::wake, u"Waking"_s, u"Continue"_s);
        scheduleRow(Action::shutdown, u"Shutting Down"_s, u"Shut Down Now"_s);
        scheduleRow(Action::restart, u"Restarting"_s, u"Restart Now"_s);
        scheduleRow(Action::poweron, u"Waking"_s, u"Continue"_s);
    }
    void contentFollowsTheState() {
        QFETCH(QString, kind);
        QFETCH(QStringList, names);
        QFETCH(QString, windowTitle);
        QFETCH(QSize, size);
        QFETCH(QString, title);
        QFETCH(QString, caption);
        QFETCH(QString, confirm);
        // Opened with other content first: the panel has to follow the change.
        Rig rig(otherKind(kind));
        rig.state->setSecondsLeft(42);
        rig.window.show(*rig.state, {});
        const QWidget& panel = *rig.window.panel();
        QCOMPARE(panel.size(), size);
        QVERIFY(panel.windowFlags().testFlags(Qt::Tool | Qt::WindowStaysOnTopHint |
                                              Qt::WindowCloseButtonHint));
        setContent(*rig.state, kind, names);

        QCOMPARE(std::tuple(panel.windowTitle(), text(panel, u"title"_s),
                            text(panel, u"countdown"_s), text(panel, u"caption"_s),
                            panel.findChild<QLabel*>(u"caption"_s)->isVisible()),
                 std::tuple(windowTitle, title, u"in 42s"_s, caption, !caption.isEmpty()));
        // Everything fits in the fixed size: no line is squeezed below its own height.
        panel.layout()->activate();
        for (const QLabel* label : panel.findChildren<QLabel*>()) {
            if (label->isVisible() && !label->wordWrap()) {
                QVERIFY2(label->height() >= label->sizeHint().height(),
                         qPrintable(label->objectName()));
            }
        }
        QVERIFY(!panel.findChild<QLabel*>(u"symbol"_s)->pixmap().isNull());
        QVERIFY(button(panel, confirm) && button(panel, u"Cancel"_s));

        // One line per name, as plain text; a long one is shortened, not wrapped.
        const QLabel* namesLabel = panel.findChild<QLabel*>(u"names"_s);
        QCOMPARE(namesLabel->textFormat(), Qt::PlainText);
        const QStringList lines = namesLabel->text().split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), names.size());
        const QFontMetrics metrics(namesLabel->font());
        for (qsizetype i = 0; i < lines.size(); ++i) {
            QVERIFY(metrics.horizontalAdvance(lines[i]) <= namesLabel->parentWidget()->width());
            if (lines[i] != names[i]) {
                QVERIFY(lines[i].endsWith(QChar(0x2026)));
                QVERIFY(names[i].startsWith(lines[i].chopped(1)));
            }
        }

        rig.state->setSecondsLeft(1);
        QCOMPARE(text(panel, u"countdown"_s), u"in 1s"_s);
    }

    void answersOnceByKeyButtonOrCloseButton_data() {
        QTest::addColumn<QString>("kind");
        QTest::newRow("auto-quit") << kAutoQuit;
        QTest::newRow("schedule") << rawValue(Action::shutdown);
    }
    void answersOnceByKeyButtonOrCloseButton() {
        QFETCH(QString, kind);
        Rig rig(kind);
        QPointer<QWidget> panel = rig.open();
        QVERIFY(panel);
        bool laterAnswerRan = false;
        rig.window.show(*rig.state, [&](bool) { laterAnswerRan = true; });
        QCOMPARE(rig.window.panel(), panel.data());

        // Return confirms even while Cancel has the focus, also once the content has changed
        // (renaming a button resets its shortcut). Shortcuts click a moment later.
        setContent(*rig.state, otherKind(kind), {u"Notes"_s});
        button(*panel, u"Cancel"_s)->setFocus();
        QTest::keyClick(panel, Qt::Key_Return);
        QTRY_COMPARE(rig.answers, QList<bool>{true});
        QTRY_VERIFY(panel.isNull());

        QVERIFY((panel = rig.open()));
        QTest::keyClick(panel, Qt::Key_Escape);
        QTRY_COMPARE(rig.answers, (QList<bool>{true, false}));

        // The buttons close the panel from inside their own click.
        QVERIFY((panel = rig.open()));
        QTest::mouseClick(button(*panel, u"Cancel"_s), Qt::LeftButton);
        QVERIFY((panel = rig.open()));
        QTest::mouseClick(button(*panel, rig.state->content().confirmLabel), Qt::LeftButton);
        QTRY_VERIFY(panel.isNull());
        QCOMPARE(rig.answers, (QList<bool>{true, false, false, true}));

        // The user's close button cancels once; closing from the program answers nothing.
        QVERIFY((panel = rig.open()));
        QVERIFY(panel->close());
        QVERIFY(!rig.window.isOpen());
        QTRY_VERIFY(panel.isNull());
        QVERIFY((panel = rig.open()));
        rig.window.close();
        rig.window.close();
        QVERIFY(!rig.window.isOpen());
        QTRY_VERIFY(panel.isNull());
        QCOMPARE(rig.answers, (QList<bool>{true, false, false, true, false}));
        QVERIFY(!laterAnswerRan);
    }
};

QTEST_MAIN(TestCountdownPanel)
#include "tst_countdownpanel.moc"
