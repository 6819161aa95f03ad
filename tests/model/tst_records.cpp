#include "model/AppRule.h"
#include "model/KeyCombo.h"
#include "model/ShutdownSchedule.h"

#include <QTest>

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

} // namespace

// What is stored as it is (rules, schedules) and the key bindings the commands are shown with.
class TestRecords : public QObject {
    Q_OBJECT

private slots:
    // Stored and shown as they are, so they must not drift; reading them back is exact. Command
    // names are covered through the stored shortcut list in tst_diagnostics.
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

    void encode() {
        // Keys in a fixed order; whole numbers without a fraction; upper-case UUIDs.
        for (const auto& [timeout, text] : {std::pair{45.0, "45"}, std::pair{2.5, "2.5"}}) {
            QCOMPARE(encodeAppRules(
                         {{u"com.apple.Safari"_s, u"Safari"_s, AppRule::Action::quit, timeout}}),
                     std::optional(QByteArray(R"([{"bundleID":"com.apple.Safari","name":"Safari",)"
                                              R"("action":"quit","timeoutMinutes":)") +
                                   text + "}]"));
        }
        const ShutdownSchedule weeknights{
            .id = QUuid::fromString(u"0a7e5b1c-2d3f-4a5b-8c9d-0e1f2a3b4c5d"_s),
            .action = ShutdownSchedule::Action::shutdown,
            .days = {Weekday::monday, Weekday::tuesday, Weekday::wednesday, Weekday::thursday,
                     Weekday::friday},
            .hour = 23};
        QCOMPARE(encodeShutdownSchedules({weeknights}),
                 QByteArray(R"([{"id":"0A7E5B1C-2D3F-4A5B-8C9D-0E1F2A3B4C5D","isEnabled":true,)"
                            R"("action":"Shut Down","days":[2,3,4,5,6],"hour":23,"minute":0}])"));
        QCOMPARE(encodeShutdownSchedules({}), QByteArray("[]"));
        // JSON has no NaN or infinity, and one such rule fails the whole list.
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
        QCOMPARE(rules ? encodeAppRules(*rules).value() : encodeShutdownSchedules(*schedules),
                 canonical);
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

        ShutdownSchedule schedule;
        schedule.days = {static_cast<Weekday>(weekday)};
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

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
