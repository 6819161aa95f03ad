#include "fakes/FakeBundleInfo.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppRule.h"
#include "model/AppSettings.h"
#include "model/DiagnosticsReport.h"
#include "model/KeyCombo.h"
#include "model/ProductTexts.h"
#include "model/ShutdownSchedule.h"

#include <QLocale>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>
#include <memory>

using namespace vantle;
using namespace Qt::StringLiterals;

namespace {

using Weekday = ShutdownSchedule::Weekday;

const QByteArray kRule = R"({"bundleID":"a.b","name":"A","action":"hide","timeoutMinutes":15})";
const QByteArray kSchedule = R"({"id":"0A7E5B1C-2D3F-4A5B-8C9D-0E1F2A3B4C5D","isEnabled":true,)"
                             R"("action":"Sleep","days":[2],"hour":1,"minute":2})";

QByteArray edited(QByteArray element, const char* from, const char* to) {
    Q_ASSERT(element.contains(from));
    return '[' + element.replace(from, to) + ']';
}
QByteArray rule(const char* from, const char* to) {
    return edited(kRule, from, to);
}
QByteArray schedule(const char* from, const char* to) {
    return edited(kSchedule, from, to);
}

// One switched off with its days out of order, one with no days at all.
const QList<ShutdownSchedule> kSchedules{
    {.isEnabled = false,
     .action = ShutdownSchedule::Action::wake,
     .days = {Weekday::saturday, Weekday::sunday},
     .hour = 7,
     .minute = 5},
    {.action = ShutdownSchedule::Action::sleep, .days = {}, .hour = 23}};

const QByteArray kBadRules =
    R"([{"bundleID":"a","name":"A","action":"explode","timeoutMinutes":1}])";

const QString kFreshReport = u"Vantle Diagnostics — %1\n"
                             "Version 2.3.1 (231) · com.pelmark.vantle\n"
                             "Linux Version 15.1 (Build 24B83) · arm64\n"
                             "Notifications: not determined\n"
                             "\n"
                             "Per-App Rules (0)\n"
                             "  none\n"
                             "\n"
                             "System Idle (all apps): off\n"
                             "Warning: notification, 60s grace\n"
                             "Exclusions (0): none\n"
                             "Protect menu bar apps: yes\n"
                             "Show background apps: no\n"
                             "Launch at login: no\n"
                             "Show in Dock: no\n"
                             "\n"
                             "Schedules (0)\n"
                             "  none\n"
                             "vantle-power always allow: no\n"
                             "Schedule warning: notification, 60s grace\n"
                             "\n"
                             "Shortcuts off (0): none"_s;

} // namespace

// The settings, the records they store, and the support report made from them.
class TestModel : public QObject {
    Q_OBJECT

    std::unique_ptr<MemoryDefaultsStore> store;
    FakeBundleInfo bundle;
    ManualClock clock;

    std::unique_ptr<AppSettings> make(const ProductTexts& texts = ProductTexts::macOS()) {
        return std::make_unique<AppSettings>(*store, bundle, clock, texts);
    }
    QString date() const { return mediumDateTime(clock.now(), QLocale()); }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void init() { store = std::make_unique<MemoryDefaultsStore>(); }

    // The fresh-install report below shows the other defaults.
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
        QTest::newRow("shutdownSchedules")
            << u"shutdownSchedules"_s << QVariant::fromValue(kSchedules)
            << DefaultsValue(encodeShutdownSchedules(kSchedules));
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

    // The support report.
    void mediumDate() {
        // Newer locale data puts a narrow no-break space before AM; either spacing is fine.
        QString text = date();
        text.replace(QChar(0x202F), u' ');
        QCOMPARE(text, u"Nov 16, 2026 at 9:00 AM"_s);
        // The weekday is dropped wherever the locale puts it, with its separator.
        const QString german =
            mediumDateTime(clock.now(), QLocale(QLocale::German, QLocale::Germany));
        QVERIFY2(german.startsWith(u"16. Nov"_s) && !german.contains(u"Montag"_s),
                 qPrintable(german));
        const QString hungarian = mediumDateTime(clock.now(), QLocale(QLocale::Hungarian));
        QVERIFY2(!hungarian.contains(u",,"_s) && !hungarian.contains(u"hétfő"_s),
                 qPrintable(hungarian));
    }

    void freshInstall() {
        QCOMPARE(make(ProductTexts::linuxDesktop())->diagnosticsReport(u"not determined"_s),
                 kFreshReport.arg(date()));
    }

    void configuredInstall() {
        FakeBundleInfo bare;
        bare.shortVersionValue.reset();
        bare.buildNumberValue.reset();
        bare.bundleIdentifierValue.reset();
        AppSettings s(*store, bare, clock, ProductTexts::linuxDesktop());
        s.setAppRules({AppRule{u"com.apple.Safari"_s, u"Safari"_s, AppRule::Action::quit, 2.9},
                       AppRule{u"org.x.Notes"_s, u"Notes 100%"_s, AppRule::Action::hide, 60}});
        s.setIdleQuitEnabled(true);
        s.setIdleQuitTimeout(1e300); // only a hand-edited file holds this; it must saturate
        s.setQuitWarningStyle(u"banner"_s);
        s.setQuitWarningSeconds(59.9);
        s.setExcludedBundleIDs({u"z.last"_s, u"a.first"_s});
        s.setProtectMenuBarApps(false);
        s.setShowBackgroundApps(true);
        s.setLaunchAtLogin(true);
        s.setShowInDock(true);
        s.setDockIconStyle(u"dark"_s);
        s.setShutdownSchedules(kSchedules);
        s.setPmsetAlwaysAllow(true);
        s.setScheduleWarningStyle(u"window"_s);
        s.setScheduleWarningSeconds(120);
        s.setDisabledShortcutIDs({u"quitSelected"_s, u"restart"_s, u"bogus"_s, u"focusSearch"_s,
                                  u"selectAll"_s, u"sleep"_s, u"shutDown"_s, u"quitAllApps"_s});

        const QStringList expected{
            u"Vantle Diagnostics — "_s + date(),
            u"Version — (—) · —"_s,
            u"Linux Version 15.1 (Build 24B83) · arm64"_s,
            u"Notifications: denied"_s,
            u""_s,
            u"Per-App Rules (2)"_s,
            u"  Safari (com.apple.Safari) — quit after 2 min"_s,
            u"  Notes 100% (org.x.Notes) — hide after 60 min"_s,
            u""_s,
            u"System Idle (all apps): ON at 9000000000000000000 min"_s,
            u"Warning: banner, 59s grace"_s,
            u"Exclusions (2): z.last, a.first"_s,
            u"Protect menu bar apps: no"_s,
            u"Show background apps: yes"_s,
            u"Launch at login: yes"_s,
            u"Show in Dock: yes (dark)"_s,
            u""_s,
            u"Schedules (2)"_s,
            u"  Wake at 07:05 — Su Sa [disabled]"_s,
            u"  Sleep at 23:00 —  [enabled]"_s,
            u"vantle-power always allow: yes"_s,
            u"Schedule warning: window, 120s grace"_s,
            u""_s,
            u"Shortcuts off (7): Quit All Apps, Sleep, Restart, Shut Down, Search A Apps, "
            "Select All or None, Quit Selected Apps"_s,
        };
        QCOMPARE(s.diagnosticsReport(u"denied"_s), expected.join(u'\n'));
    }

    // What is stored as it is (rules, schedules) and the key bindings the commands are shown
    // with.
    // Stored and shown as they are, so they must not drift; reading them back is exact. Command
    // names are covered through the stored shortcut list in the support report.
    void scheduleActionNames() {
        using Action = ShutdownSchedule::Action;
        const QStringList names{u"Sleep"_s, u"Wake"_s, u"Shut Down"_s, u"Restart"_s, u"Power On"_s};
        const auto cases = allCases<Action>();
        QCOMPARE(qsizetype(cases.size()), names.size());
        for (std::size_t i = 0; i < cases.size(); ++i) {
            QCOMPARE(rawValue(cases[i]), names[qsizetype(i)]);
            QVERIFY(fromRawValue<Action>(names[qsizetype(i)]) == cases[i]);
        }
        for (const QString& raw : {u"shutdown"_s, u"Shutdown"_s, u" Shut Down"_s, u""_s}) {
            QVERIFY2(!fromRawValue<Action>(raw), qPrintable(raw));
        }
    }

    // JSON has no NaN or infinity, and one such rule fails the whole list. The stored form
    // itself is pinned by decodeAccepts.
    void encodeRefusesTimeoutsJsonCannotHold() {
        const AppRule good{u"a"_s, u"A"_s, AppRule::Action::hide, 5};
        for (const double timeout : {qQNaN(), qInf(), -qInf()}) {
            QVERIFY(!encodeAppRules({good, {u"b"_s, u"B"_s, AppRule::Action::quit, timeout}}));
        }
    }

    void decodeRejects_data() {
        QTest::addColumn<QByteArray>("document");
        QTest::newRow("rule: missing key") << rule(R"("name":"A",)", "");
        QTest::newRow("rule: timeout as string") << rule(":15", R"(:"15")");
        QTest::newRow("rule: unknown action") << rule("hide", "shutdown");
        QTest::newRow("rule: good then bad") << '[' + kRule + ',' + rule("hide", "Hide").mid(1);
        QTest::newRow("rule: top level object") << kRule;
        QTest::newRow("rule: element not object") << QByteArray("[1]");
        QTest::newRow("rule: not json") << QByteArray("[{");
        QTest::newRow("schedule: day 0") << schedule("[2]", "[0]");
        QTest::newRow("schedule: day 8") << schedule("[2]", "[2,8]");
        QTest::newRow("schedule: day 1.5") << schedule("[2]", "[1.5]");
        QTest::newRow("schedule: day as string") << schedule("[2]", R"(["2"])");
        QTest::newRow("schedule: days not array") << schedule("[2]", "2");
        QTest::newRow("schedule: action case") << schedule("Sleep", "sleep");
        QTest::newRow("schedule: hour 1.5") << schedule(":1,", ":1.5,");
        QTest::newRow("schedule: hour as string") << schedule(":1,", R"(:"1",)");
        QTest::newRow("schedule: isEnabled as 1") << schedule("true", "1");
        QTest::newRow("schedule: missing minute") << schedule(R"(,"minute":2)", "");
        QTest::newRow("schedule: uuid too short") << schedule("4C5D\"", "4C5\"");
        QTest::newRow("schedule: uuid braces")
            << schedule("\"0A7E5B1C-2D3F-4A5B-8C9D-0E1F2A3B4C5D\"",
                        "\"{0A7E5B1C-2D3F-4A5B-8C9D-0E1F2A3B4C5D}\"");
        QTest::newRow("schedule: uuid not hex") << schedule("0A7E", "0G7E");
        QTest::newRow("schedule: uuid no hyphen") << schedule("-2D3F", "X2D3F");
    }
    // Each document is bad for both kinds, so a wrong acceptance by either fails.
    void decodeRejects() {
        QFETCH(QByteArray, document);
        QVERIFY(!decodeAppRules(document));
        QVERIFY(!decodeShutdownSchedules(document));
    }

    // Whatever decodes re-encodes in the one stored form.
    void decodeAccepts_data() {
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<QByteArray>("canonical");
        QTest::newRow("rule: key order, extras")
            << QByteArray(R"([{"x":[1],"timeoutMinutes":15,"action":"hide","name":"A",)"
                          R"("bundleID":"a.b"}])")
            << '[' + kRule + ']';
        QTest::newRow("rule: fraction") << rule(":15", ":2.5") << rule(":15", ":2.5");
        QTest::newRow("schedule: key order, extras, lower-case id")
            << QByteArray(R"([{"minute":2,"note":"x","hour":1,"days":[2],"action":"Sleep",)"
                          R"("isEnabled":true,"id":"0a7e5b1c-2d3f-4a5b-8c9d-0e1f2a3b4c5d"}])")
            << '[' + kSchedule + ']';
        QTest::newRow("days: both ends") << schedule("[2]", "[1,7]") << schedule("[2]", "[1,7]");
        QTest::newRow("days: empty") << schedule("[2]", "[]") << schedule("[2]", "[]");
        QTest::newRow("days: duplicates")
            << schedule("[2]", "[4,2,4,4]") << schedule("[2]", "[2,4]");
        QTest::newRow("days: 3.0") << schedule("[2]", "[3.0]") << schedule("[2]", "[3]");
        QTest::newRow("empty list") << QByteArray("[]") << QByteArray("[]");
    }
    void decodeAccepts() {
        QFETCH(QByteArray, document);
        QFETCH(QByteArray, canonical);
        const auto rules = decodeAppRules(document);
        const auto schedules = decodeShutdownSchedules(document);
        QVERIFY(rules || schedules);
        QCOMPARE(rules ? encodeAppRules(*rules).value() : canonical, canonical);
        QCOMPARE(schedules ? encodeShutdownSchedules(*schedules) : canonical, canonical);
    }

    void weekdayOf_data() {
        QTest::addColumn<QDate>("date");
        QTest::addColumn<int>("weekday");
        QTest::newRow("sunday") << QDate(2026, 11, 22) << 1;
        QTest::newRow("monday") << QDate(2026, 11, 16) << 2;
        QTest::newRow("saturday") << QDate(2026, 11, 21) << 7;
    }
    void weekdayOf() {
        QFETCH(QDate, date);
        QFETCH(int, weekday);
        QCOMPARE(static_cast<int>(ShutdownSchedule::weekdayOf(date)), weekday);

        const ShutdownSchedule schedule{.days = {static_cast<Weekday>(weekday)}};
        QVERIFY(schedule.occursOn(date));
        QVERIFY(!schedule.occursOn(date.addDays(1)));
        QVERIFY(!schedule.occursOn(date.addDays(-1)));
    }

    // The key caps both platforms show, and the masks the macOS calls and menus take.
    void bindings_data() {
        QTest::addColumn<AppCommand>("command");
        QTest::addColumn<QString>("mac");
        QTest::addColumn<QString>("onLinux");
        QTest::addColumn<quint32>("hotKeyMask");
        QTest::addColumn<quint64>("menuMask");
        QTest::addColumn<int>("keyCode");
        const auto row = [](AppCommand c, QString mac, QString onLinux, quint32 hot, quint64 menu,
                            int code) {
            QTest::newRow(qPrintable(rawValue(c))) << c << mac << onLinux << hot << menu << code;
        };
        row(AppCommand::quitAllApps, u"⌃⌥⌘Q"_s, u"Ctrl+Alt+Super+Q"_s, 0x1900, 0x1C0000, 12);
        row(AppCommand::sleep, u"⌃⌥⌘S"_s, u"Ctrl+Alt+Super+S"_s, 0x1900, 0x1C0000, 1);
        row(AppCommand::restart, u"⌃⌥⌘R"_s, u"Ctrl+Alt+Super+R"_s, 0x1900, 0x1C0000, 15);
        row(AppCommand::shutDown, u"⌃⌥⌘D"_s, u"Ctrl+Alt+Super+D"_s, 0x1900, 0x1C0000, 2);
        row(AppCommand::focusSearch, u"⌘F"_s, u"Ctrl+F"_s, 0x100, 0x100000, -1);
        row(AppCommand::selectAll, u"⇧⌘A"_s, u"Shift+Ctrl+A"_s, 0x300, 0x120000, -1);
        row(AppCommand::quitSelected, u"⌘↩"_s, u"Ctrl+Enter"_s, 0x100, 0x100000, -1);
    }
    void bindings() {
        QFETCH(AppCommand, command);
        QFETCH(QString, mac);
        QFETCH(QString, onLinux);
        QFETCH(quint32, hotKeyMask);
        QFETCH(quint64, menuMask);
        QFETCH(int, keyCode);
        const CommandBinding& binding = commandBinding(command);
        QCOMPARE(binding.command, command);
        QCOMPARE(binding.keyCap(KeyCapStyle::macOS), mac);
        QCOMPARE(binding.keyCap(KeyCapStyle::linuxDesktop), onLinux);
        QCOMPARE(binding.combo.hotKeyModifierMask(), hotKeyMask);
        QCOMPARE(binding.combo.menuModifierMask(), menuMask);
        // Only the system-wide commands have a key of their own.
        QCOMPARE(binding.combo.carbonKeyCode,
                 keyCode >= 0 ? std::optional(quint32(keyCode)) : std::nullopt);
        QCOMPARE(isGlobalCommand(command), keyCode >= 0);
    }
};

QTEST_GUILESS_MAIN(TestModel)
#include "tst_model.moc"
