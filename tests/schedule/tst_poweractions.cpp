#include "fakes/FakePowerActions.h"
#include "schedule/PowerActionPerformer.h"
#include "schedule/PowerActionScripts.h"

#include <QTest>

using namespace vantle;
using Action = ShutdownSchedule::Action;

class TestPowerActions : public QObject {
    Q_OBJECT

private slots:
    void scriptsAreExact() {
        QCOMPARE(powerActionScript(Action::sleep),
                 QStringLiteral("tell application \"System Events\" to sleep"));
        QCOMPARE(powerActionScript(Action::shutdown),
                 QStringLiteral("tell application \"System Events\" to shut down"));
        QCOMPARE(powerActionScript(Action::restart),
                 QStringLiteral("tell application \"System Events\" to restart"));
        QVERIFY(!powerActionScript(Action::wake));
        QVERIFY(!powerActionScript(Action::poweron));
    }

    void performsExactlyOneMatchingAction_data() {
        QTest::addColumn<Action>("action");
        QTest::addColumn<QStringList>("calls");
        QTest::newRow("sleep") << Action::sleep << QStringList{QStringLiteral("sleep")};
        QTest::newRow("shut down") << Action::shutdown << QStringList{QStringLiteral("shutDown")};
        QTest::newRow("restart") << Action::restart << QStringList{QStringLiteral("restart")};
        QTest::newRow("wake") << Action::wake << QStringList();
        QTest::newRow("power on") << Action::poweron << QStringList();
    }
    void performsExactlyOneMatchingAction() {
        QFETCH(Action, action);
        QFETCH(QStringList, calls);
        FakePowerActions actions;
        performPowerAction(action, actions);
        QCOMPARE(actions.calls, calls);
    }
};

QTEST_GUILESS_MAIN(TestPowerActions)
#include "tst_poweractions.moc"
