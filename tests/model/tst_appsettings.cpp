#include "fakes/FakeBundleInfo.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"

#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>
#include <memory>

using namespace vantle;
using namespace Qt::StringLiterals;

namespace {

// Test rows carry plain QVariants; the store holds typed values.
DefaultsValue toDefaults(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Double:
        return value.toDouble();
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QByteArray:
        return value.toByteArray();
    case QMetaType::QStringList:
        return value.toStringList();
    default:
        qFatal("unsupported test value type");
    }
}

QMetaProperty metaProperty(const char* name) {
    const QMetaObject& meta = AppSettings::staticMetaObject;
    return meta.property(meta.indexOfProperty(name));
}

const QByteArray kBadRules =
    R"([{"bundleID":"a","name":"A","action":"explode","timeoutMinutes":1}])";

} // namespace

class TestAppSettings : public QObject {
    Q_OBJECT

    std::unique_ptr<MemoryDefaultsStore> store;
    FakeBundleInfo bundle;
    ManualClock clock;

    std::unique_ptr<AppSettings> make() {
        return std::make_unique<AppSettings>(*store, bundle, clock, ProductTexts::macOS());
    }

private slots:
    void init() { store = std::make_unique<MemoryDefaultsStore>(); }

    void freshInstallDefaults() {
        const auto s = make();
        QVERIFY(s->appRules().isEmpty());
        QCOMPARE(s->idleQuitEnabled(), false);
        QCOMPARE(s->idleQuitTimeout(), 30.0);
        QCOMPARE(s->showBackgroundApps(), false);
        QVERIFY(s->excludedBundleIDs().isEmpty());
        QCOMPARE(s->protectMenuBarApps(), true);
        QCOMPARE(s->launchAtLogin(), false);
        QCOMPARE(s->showInDock(), false);
        QCOMPARE(s->dockIconStyle(), u"auto"_s);
        QVERIFY(s->shutdownSchedules().isEmpty());
        QCOMPARE(s->pmsetAlwaysAllow(), false);
        QCOMPARE(s->quitWarningStyle(), u"notification"_s);
        QCOMPARE(s->quitWarningSeconds(), 60.0);
        QCOMPARE(s->scheduleWarningStyle(), u"notification"_s);
        QCOMPARE(s->scheduleWarningSeconds(), 60.0);
        QVERIFY(s->pmsetRegistered().isEmpty());
        QVERIFY(s->disabledShortcutIDs().isEmpty());
        QCOMPARE(s->didMigrateOnThisLaunch(), false);
        // Loading defaults writes nothing but the migration flag.
        QCOMPARE(store->values.keys(), QStringList{u"didMigrateLegacyDefaults"_s});
        QCOMPARE(store->values.value(u"didMigrateLegacyDefaults"_s), DefaultsValue(true));
    }

    void loadsStoredValue_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QVariant>("expected");
        const auto row = [](const char* name, const QString& key, const QVariant& stored,
                            const QVariant& expected) {
            QTest::newRow(name) << key << stored << expected;
        };
        for (const auto& [key, fallback] :
             {std::pair{u"idleQuitTimeout"_s, 30.0}, std::pair{u"quitWarningSeconds"_s, 60.0},
              std::pair{u"scheduleWarningSeconds"_s, 60.0}}) {
            row(qPrintable(key + u" 0"_s), key, 0.0, fallback);
            row(qPrintable(key + u" -5"_s), key, -5.0, fallback);
            row(qPrintable(key + u" 0.5"_s), key, 0.5, 0.5);
            row(qPrintable(key + u" text"_s), key, u"soon"_s, fallback);
        }
        row("idleQuitTimeout numeric text", u"idleQuitTimeout"_s, u"12"_s, 12.0);
        row("protectMenuBarApps false", u"protectMenuBarApps"_s, false, false);
        row("protectMenuBarApps \"no\"", u"protectMenuBarApps"_s, u"no"_s, true);
        row("protectMenuBarApps 0", u"protectMenuBarApps"_s, 0.0, false);
        row("protectMenuBarApps 2", u"protectMenuBarApps"_s, 2.0, true);
        row("showInDock \"yes\"", u"showInDock"_s, u"yes"_s, false);
        row("showBackgroundApps 1", u"showBackgroundApps"_s, 1.0, true);
        row("idleQuitEnabled \"YES\"", u"idleQuitEnabled"_s, u"YES"_s, true);
        row("idleQuitEnabled 1", u"idleQuitEnabled"_s, 1.0, true);
        row("idleQuitEnabled \"no\"", u"idleQuitEnabled"_s, u"no"_s, false);
        row("quitWarningStyle unknown", u"quitWarningStyle"_s, u"banner"_s, u"banner"_s);
        row("excludedBundleIDs not a list", u"excludedBundleIDs"_s, u"a.b"_s, QStringList{});
    }
    void loadsStoredValue() {
        QFETCH(QString, key);
        QFETCH(QVariant, stored);
        QFETCH(QVariant, expected);
        store->values.insert(key, toDefaults(stored));
        const auto s = make();
        QCOMPARE(s->property(qPrintable(key)), expected);
        QCOMPARE(store->values.value(key), toDefaults(stored));
    }

    void undecodableListsStayStored() {
        store->values.insert(u"appRules"_s, kBadRules);
        store->values.insert(u"shutdownSchedules"_s, u"[]"_s); // text, not data
        LogCapture log;
        auto s = make();
        QVERIFY(s->appRules().isEmpty());
        QVERIFY(s->shutdownSchedules().isEmpty());
        QCOMPARE(log.count(u"explode"_s), 1); // the stored text is logged for recovery
        QCOMPARE(store->writeCount, 1);       // the migration flag only
        QCOMPARE(store->values.value(u"appRules"_s), DefaultsValue(kBadRules));

        const QList<AppRule> rules{AppRule{u"a"_s, u"A"_s, AppRule::Action::hide, 3}};
        s->setAppRules(rules);
        const QByteArray* stored = store->values[u"appRules"_s].get<QByteArray>();
        QVERIFY(stored);
        QCOMPARE(decodeAppRules(*stored), std::optional(rules));
        QCOMPARE(store->values.value(u"shutdownSchedules"_s), DefaultsValue(u"[]"_s));
    }

    void writesBack_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        for (const char* key : {"idleQuitEnabled", "showBackgroundApps", "launchAtLogin",
                                "showInDock", "pmsetAlwaysAllow"}) {
            QTest::newRow(key) << QString::fromUtf8(key) << QVariant(true);
        }
        QTest::newRow("protectMenuBarApps") << u"protectMenuBarApps"_s << QVariant(false);
        QTest::newRow("idleQuitTimeout") << u"idleQuitTimeout"_s << QVariant(12.5);
        QTest::newRow("quitWarningSeconds") << u"quitWarningSeconds"_s << QVariant(10.0);
        QTest::newRow("scheduleWarningSeconds") << u"scheduleWarningSeconds"_s << QVariant(0.25);
        QTest::newRow("dockIconStyle") << u"dockIconStyle"_s << QVariant(u"dark"_s);
        QTest::newRow("quitWarningStyle") << u"quitWarningStyle"_s << QVariant(u"window"_s);
        QTest::newRow("scheduleWarningStyle") << u"scheduleWarningStyle"_s << QVariant(u"never"_s);
        const QStringList list{u"b.b"_s, u"a.a"_s, u"b.b"_s};
        QTest::newRow("excludedBundleIDs") << u"excludedBundleIDs"_s << QVariant(list);
        QTest::newRow("pmsetRegistered") << u"pmsetRegistered"_s << QVariant(list);
        QTest::newRow("disabledShortcutIDs") << u"disabledShortcutIDs"_s << QVariant(list);
    }
    void writesBack() {
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        const auto s = make();
        const QMetaProperty meta = metaProperty(qPrintable(key));
        QSignalSpy spy(s.get(), meta.notifySignal());
        const int writes = store->writeCount;

        QVERIFY(meta.write(s.get(), value));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(store->writeCount, writes + 1);
        QCOMPARE(store->values.value(key), toDefaults(value)); // same type, not just same text

        QVERIFY(meta.write(s.get(), value));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(store->writeCount, writes + 1);

        QCOMPARE(make()->property(qPrintable(key)), value);
    }

    void listsWriteBackAsData() {
        const auto s = make();
        QSignalSpy rulesSpy(s.get(), &AppSettings::appRulesChanged);
        QSignalSpy schedulesSpy(s.get(), &AppSettings::shutdownSchedulesChanged);
        const QList<AppRule> rules{AppRule{u"com.x"_s, u"X \"1\""_s, AppRule::Action::quit, 2.5},
                                   AppRule{u"com.y"_s, u"Y"_s, AppRule::Action::hide, 10}};
        ShutdownSchedule schedule;
        schedule.action = ShutdownSchedule::Action::wake;
        schedule.days = {ShutdownSchedule::Weekday::sunday};
        schedule.hour = 6;
        schedule.minute = 30;
        const QList<ShutdownSchedule> schedules{schedule};

        for (int pass = 0; pass < 2; ++pass) { // the second pass assigns equal values
            s->setAppRules(rules);
            s->setShutdownSchedules(schedules);
        }
        QCOMPARE(rulesSpy.count(), 1);
        QCOMPARE(schedulesSpy.count(), 1);
        QCOMPARE(store->writeCount, 3);
        const QByteArray* storedRules = store->values[u"appRules"_s].get<QByteArray>();
        const QByteArray* storedSchedules =
            store->values[u"shutdownSchedules"_s].get<QByteArray>();
        QVERIFY(storedRules && storedSchedules);
        QCOMPARE(decodeAppRules(*storedRules), std::optional(rules));
        QCOMPARE(decodeShutdownSchedules(*storedSchedules), std::optional(schedules));

        const auto reloaded = make();
        QCOMPARE(reloaded->appRules(), rules);
        QCOMPARE(reloaded->shutdownSchedules(), schedules);
    }

    void shortcuts() {
        store->values.insert(u"disabledShortcutIDs"_s,
                             QStringList{u"sleep"_s, u"restart"_s, u"sleep"_s, u"x"_s, u"sleep"_s});
        const auto s = make();
        QSignalSpy spy(s.get(), &AppSettings::disabledShortcutIDsChanged);
        QVERIFY(!s->isShortcutEnabled(AppCommand::sleep));
        s->setShortcut(AppCommand::sleep, true);
        QVERIFY(s->isShortcutEnabled(AppCommand::sleep));
        QCOMPARE(s->disabledShortcutIDs(), (QStringList{u"restart"_s, u"x"_s}));

        s->setShortcut(AppCommand::sleep, false);
        s->setShortcut(AppCommand::sleep, false);
        s->setShortcut(AppCommand::quitAllApps, true); // already on
        QCOMPARE(s->disabledShortcutIDs(), (QStringList{u"restart"_s, u"x"_s, u"sleep"_s}));
        QCOMPARE(spy.count(), 2);
    }

    void enabledGlobalCommands() {
        store->values.insert(u"disabledShortcutIDs"_s, QStringList{u"sleep"_s, u"focusSearch"_s});
        QCOMPARE(make()->enabledGlobalCommands(),
                 (QList<AppCommand>{AppCommand::quitAllApps, AppCommand::restart,
                                    AppCommand::shutDown}));
    }

    void migratesOnce() {
        store->otherDomains[u"com.quorel.vantle"_s] = {{u"idleQuitTimeout"_s, 45.0}};
        const auto legacy = store->otherDomains;
        const auto first = make();
        QCOMPARE(first->idleQuitTimeout(), 45.0);
        QVERIFY(first->didMigrateOnThisLaunch());

        store->values.remove(u"idleQuitTimeout"_s);
        const auto second = make();
        QCOMPARE(second->idleQuitTimeout(), 30.0);
        QVERIFY(!second->didMigrateOnThisLaunch());
        QCOMPARE(store->otherDomains, legacy);
    }

    void migrationPrecedence() {
        const QByteArray newer =
            *encodeAppRules({AppRule{u"n"_s, u"N"_s, AppRule::Action::hide, 1}});
        const QByteArray older =
            *encodeAppRules({AppRule{u"o"_s, u"O"_s, AppRule::Action::quit, 2}});
        store->otherDomains[u"com.quorel.vantle"_s] = {{u"appRules"_s, newer},
                                                       {u"idleQuitTimeout"_s, 45.0},
                                                       {u"pmsetRegistered"_s, QStringList{u"x"_s}}};
        store->otherDomains[u"com.yourname.EBB"_s] = {{u"appRules"_s, older},
                                                      {u"launchAtLogin"_s, true}};
        store->values.insert(u"idleQuitTimeout"_s, 20.0);
        const auto legacy = store->otherDomains;

        const auto s = make();
        QVERIFY(s->didMigrateOnThisLaunch());
        QCOMPARE(store->values.value(u"appRules"_s), DefaultsValue(newer)); // first domain wins
        QCOMPARE(s->idleQuitTimeout(), 20.0);                               // current value wins
        QVERIFY(s->launchAtLogin()); // keys the first lacks still come across
        QVERIFY(!store->values.contains(u"pmsetRegistered"_s));
        QVERIFY(s->pmsetRegistered().isEmpty());
        QCOMPARE(store->otherDomains, legacy);
    }

    void migrationThatCopiesNothing_data() {
        QTest::addColumn<DefaultsDomain>("domain");
        QTest::newRow("empty") << DefaultsDomain{};
        QTest::newRow("pmsetRegistered") << DefaultsDomain{{u"pmsetRegistered"_s, QStringList{}}};
        QTest::newRow("already set") << DefaultsDomain{{u"showInDock"_s, false}};
    }
    void migrationThatCopiesNothing() {
        QFETCH(DefaultsDomain, domain);
        store->values.insert(u"showInDock"_s, true);
        store->otherDomains[u"com.quorel.vantle"_s] = domain;
        const auto s = make();
        QVERIFY(!s->didMigrateOnThisLaunch());
        QVERIFY(s->showInDock());
        QCOMPARE(store->values.keys(),
                 (QStringList{u"didMigrateLegacyDefaults"_s, u"showInDock"_s}));
    }
};

QTEST_GUILESS_MAIN(TestAppSettings)
#include "tst_appsettings.moc"
