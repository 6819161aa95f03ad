// Random and extreme stored schedules through the start path: settings, schedule monitor, power
// sync. Built with the sanitizers, so an overflow or a bad conversion anywhere on the way fails.
#include "fakes/FakeAlerts.h"
#include "fakes/FakeBundleInfo.h"
#include "fakes/FakePowerAssertion.h"
#include "fakes/FakeScriptRunner.h"
#include "fakes/InlineExecutor.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "schedule/PmsetSync.h"
#include "schedule/PrivilegedRunner.h"
#include "schedule/ScheduleMonitorService.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>
#include <QTimeZone>

using namespace vantle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Action = ShutdownSchedule::Action;

namespace {

// Numbers a damaged or hand-edited file may hold where an hour or a minute belongs. JSON numbers
// are doubles, so the extremes are the largest whole values a double keeps below 2^63.
const QList<double> kExtremes{
    -9.2233720368547748e18, -1e18, -5, -1, 0, 23, 24, 59, 60, 99, 1439, 1e9, 1e18,
    9.2233720368547748e18,
};

struct StartPath {
    explicit StartPath(const QDateTime& start, const QByteArray& stored)
        : clock(start) {
        store.values.insert(u"shutdownSchedules"_s, stored);
        store.setObject(u"didAdoptPmsetEntries"_s, true);
        settings =
            std::make_unique<AppSettings>(store, bundle, clock, ProductTexts::linuxDesktop());
        monitor.setSettings(settings.get());
        monitor.setPmsetSync(&sync);
        monitor.onScheduledAction = [this](const ShutdownSchedule& s) { fired.append(s); };
        monitor.start();
        monitor.syncPmset();
    }

    LogCapture log;
    ManualClock clock;
    MemoryDefaultsStore store;
    FakeBundleInfo bundle;
    std::unique_ptr<AppSettings> settings;
    InlineExecutor executor;
    FakeScriptRunner scripts;
    FakeAlerts alerts;
    PrivilegedRunner runner{scripts, alerts, PowerSchedulerTool::linuxTool(u"/usr/libexec"_s),
                            ProductTexts::linuxDesktop(), u"ada"_s};
    PmsetSync sync{clock, executor, scripts, runner, store};
    FakePowerAssertion assertion;
    ScheduleMonitorService monitor{clock, assertion};
    QList<ShutdownSchedule> fired;
};

QByteArray scheduleJson(const QString& id, bool enabled, const QString& action,
                        const QList<int>& days, double hour, double minute) {
    QJsonArray dayArray;
    for (const int day : days) {
        dayArray.append(day);
    }
    const QJsonObject object{{u"id"_s, id},         {u"isEnabled"_s, enabled},
                             {u"action"_s, action}, {u"days"_s, dayArray},
                             {u"hour"_s, hour},     {u"minute"_s, minute}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QString uuidText(quint32 n) {
    return u"%1-0000-4000-8000-000000000000"_s.arg(n, 8, 16, QLatin1Char('0'));
}

} // namespace

class TestScheduleStartPath : public QObject {
    Q_OBJECT

private slots:
    // Every run must go on, fire only valid schedules, hand only valid times to the scheduler, and
    // leave the stored document exactly as it was.
    void randomAndExtremeValuesNeverStopTheStart() {
        QRandomGenerator random(20261116);
        const QStringList actions{u"Sleep"_s, u"Wake"_s, u"Shut Down"_s, u"Restart"_s,
                                  u"Power On"_s};
        const QTimeZone berlin("Europe/Berlin");
        const auto number = [&random](int inRange) {
            return random.bounded(3) == 0 ? kExtremes[random.bounded(kExtremes.size())]
                                          : double(random.bounded(inRange));
        };
        for (int run = 0; run < 1500; ++run) {
            QList<QByteArray> elements;
            const int count = random.bounded(5);
            for (int i = 0; i < count; ++i) {
                QList<int> days;
                for (int d = random.bounded(4); d > 0; --d) {
                    days.append(1 + random.bounded(7));
                }
                // Small id space: repeated ids come up often.
                elements.append(scheduleJson(uuidText(random.bounded(4u)), random.bounded(4) != 0,
                                             actions[random.bounded(actions.size())], days,
                                             number(24), number(60)));
            }
            const QByteArray stored = '[' + elements.join(',') + ']';
            // Any minute of a week that includes the end of summer time in Berlin.
            const QDateTime start =
                QDateTime(QDate(2026, 10, 22), QTime(0, 0), berlin)
                    .addSecs(qint64(random.bounded(7 * 24 * 60)) * 60 + random.bounded(60));

            StartPath path(start, stored);
            path.clock.advance(std::chrono::seconds(30 + random.bounded(120)));
            path.monitor.syncPmset();

            for (const ShutdownSchedule& schedule : std::as_const(path.fired)) {
                QVERIFY2(!schedule.problem(), stored.constData());
            }
            for (const QString& script : std::as_const(path.scripts.administratorRuns)) {
                // Only times of day a valid schedule can name reach the scheduler.
                static const QRegularExpression time(u"'\\d\\d/\\d\\d/\\d\\d "
                                                     u"([01]\\d|2[0-3]):[0-5]\\d:00'"_s);
                QVERIFY2(script.count(time) == script.count(QLatin1Char('\'')) / 2,
                         qPrintable(script));
            }
            QCOMPARE(path.store.values.value(u"shutdownSchedules"_s), DefaultsValue(stored));
            QVERIFY(path.monitor.lastFiredIDs().size() <= count);
        }
    }
};

QTEST_GUILESS_MAIN(TestScheduleStartPath)
#include "tst_schedulestartpath.moc"
