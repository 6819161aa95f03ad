#include "model/AppCommand.h"
#include "model/AppInfo.h"
#include "model/AppRule.h"
#include "model/QuitWarningStyle.h"
#include "model/ShutdownSchedule.h"

#include <QSet>
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

// The table must list every case once, in declaration order, with the stored raw text.
template <typename E>
void checkRawValues(const QStringList& expected) {
    const auto cases = allCases<E>();
    QCOMPARE(qsizetype(cases.size()), expected.size());
    for (std::size_t i = 0; i < cases.size(); ++i) {
        QCOMPARE(static_cast<std::size_t>(cases[i]), i);
        QCOMPARE(rawValue(cases[i]), expected[qsizetype(i)]);
        QVERIFY(fromRawValue<E>(expected[qsizetype(i)]) == cases[i]);
    }
}

ShutdownSchedule weeknightShutdown() {
    ShutdownSchedule schedule;
    schedule.id = QUuid::fromString(u"0a7e5b1c-2d3f-4a5b-8c9d-0e1f2a3b4c5d"_s);
    schedule.isEnabled = true;
    schedule.action = ShutdownSchedule::Action::shutdown;
    schedule.days = {Weekday::monday, Weekday::tuesday, Weekday::wednesday, Weekday::thursday,
                     Weekday::friday};
    schedule.hour = 23;
    schedule.minute = 0;
    return schedule;
}

} // namespace

class TestRecords : public QObject {
    Q_OBJECT

private slots:
    void rawValuesRoundTrip() {
        checkRawValues<AppRule::Action>({u"hide"_s, u"quit"_s});
        checkRawValues<ShutdownSchedule::Action>(
            {u"Sleep"_s, u"Wake"_s, u"Shut Down"_s, u"Restart"_s, u"Power On"_s});
        checkRawValues<QuitWarningStyle>({u"notification"_s, u"window"_s, u"never"_s});
        checkRawValues<AppCommand>({u"quitAllApps"_s, u"sleep"_s, u"restart"_s, u"shutDown"_s,
                                    u"focusSearch"_s, u"selectAll"_s, u"quitSelected"_s});
        // Stored text must match exactly.
        for (const QString& raw : {u"shutdown"_s, u"Shutdown"_s, u" Shut Down"_s, u""_s}) {
            QVERIFY2(!fromRawValue<ShutdownSchedule::Action>(raw), qPrintable(raw));
        }
    }

    void encodeAppRules() {
        // Whole numbers are written without a fraction.
        for (const auto& [timeout, text] :
             {std::pair{45.0, "45"}, std::pair{2.5, "2.5"}, std::pair{0.0, "0"}}) {
            const auto encoded = vantle::encodeAppRules(
                {AppRule{u"com.apple.Safari"_s, u"Safari"_s, AppRule::Action::quit, timeout}});
            QVERIFY(encoded);
            QCOMPARE(*encoded, R"([{"bundleID":"com.apple.Safari","name":"Safari","action":"quit",)"
                               R"("timeoutMinutes":)" +
                                   QByteArray(text) + "}]");
        }
    }

    void encodeRejectsNonFiniteTimeout() {
        const AppRule good{u"a"_s, u"A"_s, AppRule::Action::hide, 5};
        for (const double timeout : {qQNaN(), qInf(), -qInf()}) {
            const AppRule bad{u"b"_s, u"B"_s, AppRule::Action::quit, timeout};
            QVERIFY(!vantle::encodeAppRules({good, bad}));
        }
    }

    void encodeSchedule() {
        QCOMPARE(encodeShutdownSchedules({weeknightShutdown()}),
                 QByteArray(R"([{"id":"0A7E5B1C-2D3F-4A5B-8C9D-0E1F2A3B4C5D","isEnabled":true,)"
                            R"("action":"Shut Down","days":[2,3,4,5,6],"hour":23,"minute":0}])"));
        QCOMPARE(encodeShutdownSchedules({}), QByteArray("[]"));
    }

    void roundTrip() {
        QList<AppRule> rules;
        for (const QString& text :
             {u"Say \"hi\""_s, u"C:\\Apps\\"_s, u"Café — 日本語 🚀"_s, u"line\nbreak\ttab"_s}) {
            rules.append(AppRule{text, text, AppRule::Action::hide, 1.0 / 3});
        }
        const auto encoded = vantle::encodeAppRules(rules);
        QVERIFY(encoded);
        QCOMPARE(decodeAppRules(*encoded), std::optional(rules));

        ShutdownSchedule wake;
        wake.isEnabled = false;
        wake.action = ShutdownSchedule::Action::poweron;
        wake.days = {Weekday::sunday, Weekday::saturday};
        wake.hour = 7;
        wake.minute = 5;
        const QList<ShutdownSchedule> schedules{weeknightShutdown(), wake};
        QCOMPARE(decodeShutdownSchedules(encodeShutdownSchedules(schedules)),
                 std::optional(schedules));
    }

    void decodeRejects_data() {
        QTest::addColumn<bool>("isSchedule");
        QTest::addColumn<QByteArray>("document");
        const QByteArray lowerHide = rule("hide", "Hide");
        const QByteArray day0 = schedule("[2]", "[0]");
        QTest::newRow("rule: missing key") << false << rule(R"("name":"A",)", "");
        QTest::newRow("rule: timeout as string") << false << rule(":15", R"(:"15")");
        QTest::newRow("rule: unknown action") << false << rule("hide", "shutdown");
        QTest::newRow("rule: good then bad") << false << '[' + kRule + ',' + lowerHide.mid(1);
        QTest::newRow("rule: top level object") << false << kRule;
        QTest::newRow("rule: element not object") << false << QByteArray("[1]");
        QTest::newRow("rule: not json") << false << QByteArray("[{");
        QTest::newRow("schedule: day 0") << true << day0;
        QTest::newRow("schedule: day 8") << true << schedule("[2]", "[2,8]");
        QTest::newRow("schedule: day 1.5") << true << schedule("[2]", "[1.5]");
        QTest::newRow("schedule: day as string") << true << schedule("[2]", R"(["2"])");
        QTest::newRow("schedule: days not array") << true << schedule("[2]", "2");
        QTest::newRow("schedule: action case") << true << schedule("Sleep", "sleep");
        QTest::newRow("schedule: hour 1.5") << true << schedule(":1,", ":1.5,");
        QTest::newRow("schedule: hour as string") << true << schedule(":1,", R"(:"1",)");
        QTest::newRow("schedule: isEnabled as 1") << true << schedule("true", "1");
        QTest::newRow("schedule: missing minute") << true << schedule(R"(,"minute":2)", "");
        QTest::newRow("schedule: uuid too short") << true << schedule("4C5D\"", "4C5\"");
        QTest::newRow("schedule: uuid braces")
            << true
            << schedule("\"0A7E5B1C-2D3F-4A5B-8C9D-0E1F2A3B4C5D\"",
                        "\"{0A7E5B1C-2D3F-4A5B-8C9D-0E1F2A3B4C5D}\"");
        QTest::newRow("schedule: uuid not hex") << true << schedule("0A7E", "0G7E");
        QTest::newRow("schedule: uuid no hyphen") << true << schedule("-2D3F", "X2D3F");
        QTest::newRow("schedule: good then bad") << true << '[' + kSchedule + ',' + day0.mid(1);
        QTest::newRow("schedule: element not object") << true << QByteArray(R"(["x"])");
    }
    void decodeRejects() {
        QFETCH(bool, isSchedule);
        QFETCH(QByteArray, document);
        if (isSchedule) {
            QVERIFY(!decodeShutdownSchedules(document));
        } else {
            QVERIFY(!decodeAppRules(document));
        }
    }

    void decodeIgnoresKeyOrderAndExtras() {
        // A whole number still reads as a double; a lower-case UUID is accepted.
        QCOMPARE(decodeAppRules(R"([{"x":[1],"timeoutMinutes":15,"action":"hide","name":"A",)"
                                R"("bundleID":"a.b"}])"),
                 std::optional(QList<AppRule>{{u"a.b"_s, u"A"_s, AppRule::Action::hide, 15.0}}));
        QCOMPARE(decodeShutdownSchedules(
                     R"([{"minute":0,"note":"x","hour":23,"days":[6,2,3,4,5],"action":"Shut Down",)"
                     R"("isEnabled":true,"id":"0a7e5b1c-2d3f-4a5b-8c9d-0e1f2a3b4c5d"}])"),
                 std::optional(QList<ShutdownSchedule>{weeknightShutdown()}));
        QCOMPARE(decodeAppRules("[]"), std::optional(QList<AppRule>{}));
    }

    void decodeScheduleDays_data() {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QList<int>>("expected");
        QTest::newRow("both ends") << QByteArray("[1,7]") << QList<int>{1, 7};
        QTest::newRow("empty") << QByteArray("[]") << QList<int>{};
        QTest::newRow("duplicates") << QByteArray("[4,2,4,4]") << QList<int>{2, 4};
        QTest::newRow("whole as 3.0") << QByteArray("[3.0]") << QList<int>{3};
    }
    void decodeScheduleDays() {
        QFETCH(QByteArray, stored);
        QFETCH(QList<int>, expected);
        const auto decoded = decodeShutdownSchedules(schedule("[2]", stored.constData()));
        QVERIFY(decoded);
        QCOMPARE(decoded->size(), 1);
        QList<int> days;
        for (const Weekday day : decoded->first().days) {
            days.append(static_cast<int>(day));
        }
        QCOMPARE(days, expected);
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

    void appInfoIdentityIsThePid() {
        AppInfo first;
        first.id = 412;
        first.name = u"Mail"_s;
        AppInfo renamed = first;
        renamed.name = u"Mail (2)"_s;
        renamed.isBackground = true;
        QCOMPARE(first, renamed);
        QCOMPARE(qHash(first, 7), qHash(renamed, 7));
        QCOMPARE(std::hash<AppInfo>{}(first), std::hash<AppInfo>{}(renamed));
        QCOMPARE((QSet<AppInfo>{first, renamed}).size(), 1);
        AppInfo other = first;
        other.id = 413;
        QVERIFY(!(first == other));
    }
};

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
