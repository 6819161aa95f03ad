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

    // The fresh-install report in tst_diagnostics shows the other defaults.
    void freshInstallDefaults() {
        const auto s = make();
        QCOMPARE(s->idleQuitTimeout(), 30.0);
        QCOMPARE(s->dockIconStyle(), u"auto"_s);
        QVERIFY(s->pmsetRegistered().isEmpty());
        QVERIFY(!s->didMigrateOnThisLaunch());
        // Loading defaults writes nothing but the migration flag.
        QCOMPARE(store->values, (DefaultsDomain{{u"didMigrateLegacyDefaults"_s, true}}));
    }

    void loadsStoredValue_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<DefaultsValue>("stored");
        QTest::addColumn<QVariant>("expected");
        const auto row = [](const char* name, const QString& key, const DefaultsValue& stored,
                            const QVariant& expected) {
            QTest::newRow(name) << key << stored << expected;
        };
        // Not strictly positive means unset; fractions are read back in writesBack.
        for (const auto& [key, fallback] :
             {std::pair{u"idleQuitTimeout"_s, 30.0}, std::pair{u"quitWarningSeconds"_s, 60.0},
              std::pair{u"scheduleWarningSeconds"_s, 60.0}}) {
            row(qPrintable(key + u" 0"_s), key, 0.0, fallback);
            row(qPrintable(key + u" -5"_s), key, -5.0, fallback);
        }
        row("idleQuitTimeout numeric text", u"idleQuitTimeout"_s, u"12"_s, 12.0);
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
        QFETCH(DefaultsValue, stored);
        QFETCH(QVariant, expected);
        store->values.insert(key, stored);
        QCOMPARE(make()->property(qPrintable(key)), expected);
        QCOMPARE(store->values.value(key), stored);
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
        QCOMPARE(store->values.value(u"appRules"_s), DefaultsValue(*encodeAppRules(rules)));
        QCOMPARE(store->values.value(u"shutdownSchedules"_s), DefaultsValue(u"[]"_s));
    }

    void writesBack_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<DefaultsValue>("stored"); // same type, not just same text
        const auto row = [](const char* key, const auto& value) {
            QTest::newRow(key) << QString::fromUtf8(key) << QVariant::fromValue(value)
                               << DefaultsValue(value);
        };
        for (const char* key : {"idleQuitEnabled", "showBackgroundApps", "launchAtLogin",
                                "showInDock", "pmsetAlwaysAllow"}) {
            row(key, true);
        }
        row("protectMenuBarApps", false);
        row("idleQuitTimeout", 12.5);
        row("quitWarningSeconds", 10.5);
        row("scheduleWarningSeconds", 0.25);
        row("dockIconStyle", u"dark"_s);
        row("quitWarningStyle", u"window"_s);
        row("scheduleWarningStyle", u"never"_s);
        const QStringList list{u"b.b"_s, u"a.a"_s, u"b.b"_s};
        row("excludedBundleIDs", list);
        row("pmsetRegistered", list);
        row("disabledShortcutIDs", list);
        // Lists are stored as their encoded data and must read back exactly.
        const QList<AppRule> rules{
            AppRule{u"Say \"hi\""_s, u"C:\\Apps\\"_s, AppRule::Action::quit, 1.0 / 3},
            AppRule{u"Café — 日本語 🚀"_s, u"line\nbreak\ttab"_s, AppRule::Action::hide, 10}};
        QTest::newRow("appRules") << u"appRules"_s << QVariant::fromValue(rules)
                                  << DefaultsValue(*encodeAppRules(rules));
        const QList<ShutdownSchedule> schedules{
            {.isEnabled = false,
             .action = ShutdownSchedule::Action::poweron,
             .days = {ShutdownSchedule::Weekday::sunday, ShutdownSchedule::Weekday::saturday},
             .hour = 7,
             .minute = 5},
            {.action = ShutdownSchedule::Action::restart, .days = {}, .hour = 23}};
        QTest::newRow("shutdownSchedules")
            << u"shutdownSchedules"_s << QVariant::fromValue(schedules)
            << DefaultsValue(encodeShutdownSchedules(schedules));
    }
    void writesBack() {
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        QFETCH(DefaultsValue, stored);
        const auto s = make();
        const QMetaObject& meta = AppSettings::staticMetaObject;
        const QMetaProperty property = meta.property(meta.indexOfProperty(qPrintable(key)));
        QSignalSpy spy(s.get(), property.notifySignal());
        const int writes = store->writeCount;

        for (int pass = 0; pass < 2; ++pass) { // the second pass assigns an equal value
            QVERIFY(property.write(s.get(), value));
            QCOMPARE(spy.count(), 1);
            QCOMPARE(store->writeCount, writes + 1);
        }
        QCOMPARE(store->values.value(key), stored);
        QCOMPARE(make()->property(qPrintable(key)), value);
    }

    // Consumers read the styles typed; text this version does not know stays as it is stored.
    void typedStyles() {
        store->values[u"quitWarningStyle"_s] = u"Window"_s;
        store->values[u"dockIconStyle"_s] = u"dark"_s;
        const auto s = make();
        QCOMPARE(s->quitWarningStyleValue(), std::nullopt);
        QCOMPARE(s->scheduleWarningStyleValue(), QuitWarningStyle::notification);
        QCOMPARE(s->dockIconStyleValue(), DockIconStyle::dark);
        QCOMPARE(store->values.value(u"quitWarningStyle"_s), DefaultsValue(u"Window"_s));
        s->setQuitWarningStyle(QuitWarningStyle::never);
        s->setDockIconStyle(DockIconStyle::automatic);
        QCOMPARE(store->values.value(u"quitWarningStyle"_s), DefaultsValue(u"never"_s));
        QCOMPARE(store->values.value(u"dockIconStyle"_s), DefaultsValue(u"auto"_s));
    }

    void shortcuts() {
        store->values.insert(
            u"disabledShortcutIDs"_s,
            QStringList{u"sleep"_s, u"restart"_s, u"sleep"_s, u"x"_s, u"focusSearch"_s});
        const auto s = make();
        QSignalSpy spy(s.get(), &AppSettings::disabledShortcutIDsChanged);
        QVERIFY(!s->isShortcutEnabled(AppCommand::sleep));
        s->setShortcut(AppCommand::sleep, true);
        QVERIFY(s->isShortcutEnabled(AppCommand::sleep));
        QCOMPARE(s->disabledShortcutIDs(), (QStringList{u"restart"_s, u"x"_s, u"focusSearch"_s}));

        s->setShortcut(AppCommand::sleep, false);
        s->setShortcut(AppCommand::sleep, false);
        s->setShortcut(AppCommand::quitAllApps, true); // already on
        QCOMPARE(s->disabledShortcutIDs(),
                 (QStringList{u"restart"_s, u"x"_s, u"focusSearch"_s, u"sleep"_s}));
        QCOMPARE(spy.count(), 2);
        // Only the system-wide commands, in their fixed order.
        QCOMPARE(s->enabledGlobalCommands(),
                 (QList<AppCommand>{AppCommand::quitAllApps, AppCommand::shutDown}));
    }

    void migration() {
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
        QCOMPARE(store->otherDomains, legacy);

        // Done once: a migrated key the user has since removed stays removed.
        store->values.remove(u"launchAtLogin"_s);
        QVERIFY(!make()->didMigrateOnThisLaunch());
        QVERIFY(!store->values.contains(u"launchAtLogin"_s));

        // A run that finds every legacy key already set has migrated nothing.
        store->values.remove(u"didMigrateLegacyDefaults"_s);
        store->values.insert(u"launchAtLogin"_s, false);
        const DefaultsDomain before = store->values;
        QVERIFY(!make()->didMigrateOnThisLaunch());
        store->values.remove(u"didMigrateLegacyDefaults"_s);
        QCOMPARE(store->values, before);
    }
};

QTEST_GUILESS_MAIN(TestAppSettings)
#include "tst_appsettings.moc"
