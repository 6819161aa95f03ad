#include "fakes/FakeHotKeyRegistrar.h"
#include "system/HotKeyService.h"

#include <QSignalSpy>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;
using Command = AppCommand;

namespace {
const QList<Command> kGlobal{Command::quitAllApps, Command::sleep, Command::restart,
                             Command::shutDown};

struct Fixture {
    FakeHotKeyRegistrar registrar;
    HotKeyService service{registrar};
    QList<Command> received;

    Fixture() {
        service.onCommand = [this](Command command) { received.append(command); };
    }
};
} // namespace

class TestHotKeyService : public QObject {
    Q_OBJECT

private slots:
    void registersTheGlobalCommandsItIsGiven_data() {
        QTest::addColumn<QList<Command>>("commands");
        QTest::addColumn<QSet<quint32>>("held");
        QTest::addColumn<QList<quint32>>("registeredIds");
        QTest::addColumn<QList<Command>>("unavailable");

        QTest::newRow("all four") << kGlobal << QSet<quint32>{} << QList<quint32>{1, 2, 3, 4}
                                  << QList<Command>{};
        QTest::newRow("every shortcut off")
            << QList<Command>{} << QSet<quint32>{} << QList<quint32>{} << QList<Command>{};
        QTest::newRow("app-list commands are never global")
            << QList<Command>{Command::focusSearch, Command::selectAll, Command::quitSelected}
            << QSet<quint32>{} << QList<quint32>{} << QList<Command>{};
        QTest::newRow("one held elsewhere")
            << kGlobal << QSet<quint32>{1} << QList<quint32>{2, 3, 4}
            << QList<Command>{Command::quitAllApps};
        QTest::newRow("held but switched off is not unavailable")
            << QList<Command>{Command::sleep} << QSet<quint32>{1} << QList<quint32>{2}
            << QList<Command>{};
    }
    void registersTheGlobalCommandsItIsGiven() {
        QFETCH(QList<Command>, commands);
        QFETCH(QSet<quint32>, held);
        QFETCH(QList<quint32>, registeredIds);
        QFETCH(QList<Command>, unavailable);
        Fixture f;
        f.registrar.held = held;
        // The previous set is released, and its unavailable command is asked for afresh.
        f.registrar.held.insert(4);
        f.service.registerHotKeys(kGlobal);
        f.registrar.held = held;

        QSignalSpy published(&f.service, &HotKeyService::unavailableChanged);
        f.service.registerHotKeys(commands);
        QCOMPARE(f.registrar.activeIds(), registeredIds);
        QCOMPARE(f.service.unavailable(), unavailable);
        QCOMPARE(published.count(), 1); // published also when empty
        QCOMPARE(f.registrar.commits, 2);
    }

    void requestsCarryTheFixedCombinationAndTitle() {
        Fixture f;
        f.service.registerHotKeys({Command::restart});
        const auto& request = f.registrar.active.begin()->second;
        QCOMPARE(request.id, 3U);
        QCOMPARE(request.name, u"restart"_s);
        QCOMPARE(request.combo, commandBinding(Command::restart).combo);
        QCOMPARE(request.description, u"Restart"_s);
    }

    void pressesReachOnCommandOnlyForRegisteredIds() {
        Fixture f;
        f.registrar.held = {1};
        f.service.registerHotKeys({Command::quitAllApps, Command::sleep, Command::shutDown});
        const auto onCommand = std::exchange(f.service.onCommand, {});
        f.service.handle(2); // before onCommand is set: ignored, and no empty call
        f.service.onCommand = onCommand;
        for (const quint32 id : {2U, 1U, 3U, 4U, 0U, 7U, 99U}) {
            emit f.registrar.pressed(id);
        }
        QCOMPARE(f.received, (QList<Command>{Command::sleep, Command::shutDown}));

        // A press that arrives after its command was switched off.
        f.service.registerHotKeys({Command::shutDown});
        emit f.registrar.pressed(2);
        QCOMPARE(f.received.size(), 2);
    }

    void aLateRefusalMakesTheCommandUnavailable() {
        Fixture f;
        f.service.registerHotKeys(kGlobal);
        QSignalSpy published(&f.service, &HotKeyService::unavailableChanged);
        emit f.registrar.refused(4);
        emit f.registrar.refused(2);
        emit f.registrar.refused(2); // twice, or for an id never registered: no change
        QCOMPARE(f.service.unavailable(), (QList<Command>{Command::sleep, Command::shutDown}));
        QCOMPARE(published.count(), 2);
        QCOMPARE(f.registrar.activeIds(), (QList<quint32>{1, 3}));
        emit f.registrar.pressed(4);
        QVERIFY(f.received.isEmpty());
    }

    void keyCapShowsTheDesktopsTriggerUntilTheNextRegistration() {
        Fixture f;
        f.service.registerHotKeys({Command::sleep});
        QSignalSpy changed(&f.service, &HotKeyService::keyCapsChanged);
        emit f.registrar.triggerDescribed(2, u"Meta+F12"_s);
        emit f.registrar.triggerDescribed(1, u"Meta+F1"_s); // not registered
        QCOMPARE(f.service.keyCap(Command::sleep, KeyCapStyle::linuxDesktop), u"Meta+F12"_s);
        QCOMPARE(f.service.keyCap(Command::quitAllApps, KeyCapStyle::linuxDesktop),
                 u"Ctrl+Alt+Super+Q"_s);
        QCOMPARE(changed.count(), 1);

        f.service.registerHotKeys({Command::sleep});
        QCOMPARE(f.service.keyCap(Command::sleep, KeyCapStyle::linuxDesktop),
                 u"Ctrl+Alt+Super+S"_s);
        QCOMPARE(f.service.keyCap(Command::sleep, KeyCapStyle::macOS), u"\u2303\u2325\u2318S"_s);
        QCOMPARE(changed.count(), 2);
    }
};

QTEST_GUILESS_MAIN(TestHotKeyService)
#include "tst_hotkeyservice.moc"
