#include "fakes/FakePowerActions.h"
#include "schedule/PowerActionPerformer.h"
#include "schedule/PowerActionScripts.h"

#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;
using Action = ShutdownSchedule::Action;

class TestPowerActions : public QObject {
    Q_OBJECT

private slots:
    // Each action's macOS script and the one platform call it makes; wake and power on do nothing.
    void eachActionDoesExactlyItsOwnThing_data() {
        QTest::addColumn<Action>("action");
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("calls");
        const QString tell = u"tell application \"System Events\" to "_s;
        QTest::newRow("sleep") << Action::sleep << tell + u"sleep"_s << QStringList{u"sleep"_s};
        QTest::newRow("shut down")
            << Action::shutdown << tell + u"shut down"_s << QStringList{u"shutDown"_s};
        QTest::newRow("restart") << Action::restart << tell + u"restart"_s
                                 << QStringList{u"restart"_s};
        QTest::newRow("wake") << Action::wake << QString() << QStringList();
        QTest::newRow("power on") << Action::poweron << QString() << QStringList();
    }
    void eachActionDoesExactlyItsOwnThing() {
        QFETCH(Action, action);
        QFETCH(QString, script);
        QFETCH(QStringList, calls);
        QCOMPARE(powerActionScript(action).value_or(QString()), script);
        FakePowerActions actions;
        performPowerAction(action, actions);
        QCOMPARE(actions.calls, calls);
    }
};

QTEST_GUILESS_MAIN(TestPowerActions)
#include "tst_poweractions.moc"
