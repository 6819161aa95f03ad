// Benchmark for the schedule monitor: the cost of one check over 500 schedules, a few of them
// inside their window so the fired set is rebuilt as in a real tick.
#include "fakes/FakeBundleInfo.h"
#include "fakes/FakePowerAssertion.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "schedule/ScheduleMonitorService.h"

#include <QCoreApplication>
#include <benchmark/benchmark.h>

using namespace vantle;

namespace {

constexpr int kSchedules = 500;

void BM_ScheduleCheck(benchmark::State& state) {
    ManualClock clock(QDateTime(QDate(2026, 11, 16), QTime(12, 0, 10)));
    MemoryDefaultsStore store;
    FakeBundleInfo bundle;
    AppSettings settings(store, bundle, clock, ProductTexts::macOS());
    QList<ShutdownSchedule> schedules;
    for (int i = 0; i < kSchedules; ++i) {
        ShutdownSchedule schedule;
        schedule.action = static_cast<ShutdownSchedule::Action>(i % 5);
        schedule.days = {ShutdownSchedule::allWeekdays[static_cast<std::size_t>(i % 7)],
                         ShutdownSchedule::Weekday::monday};
        // Spread around noon so that some are due, some need the machine awake, most neither.
        const int minuteOfDay = 11 * 60 + (i * 7) % 120;
        schedule.hour = minuteOfDay / 60;
        schedule.minute = minuteOfDay % 60;
        schedules.append(schedule);
    }
    settings.setShutdownSchedules(schedules);
    FakePowerAssertion assertion;
    ScheduleMonitorService service(clock, assertion);
    service.setSettings(&settings);
    int fired = 0;
    service.onScheduledAction = [&fired](const ShutdownSchedule&) { ++fired; };
    for (auto _ : state) {
        service.check();
        benchmark::DoNotOptimize(service.lastFiredIDs().size());
    }
    state.counters["fired"] = fired;
}
BENCHMARK(BM_ScheduleCheck)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
