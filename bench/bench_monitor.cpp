// Benchmarks for the monitor: the cost of one refresh of the running-app list (against a real X
// server with 200 client windows, and against a fake of 200 apps) and of one auto-quit pass with
// 50 rules over 200 apps.
#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeIdleTime.h"
#include "fakes/FakeWorkspace.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "monitor/AppMonitorService.h"
#include "monitor/AutoQuitManager.h"
#include "monitor/IdleMonitorService.h"
#include "platform/linux/X11Connection.h"
#include "platform/linux/X11Workspace.h"
#include "support/VirtualDesktop.h"

#include <QGuiApplication>
#include <QTest>
#include <benchmark/benchmark.h>
#include <memory>
#include <vector>

using namespace vantle;

namespace {

constexpr int kApps = 200;
constexpr int kRules = 50;
constexpr int kWindowsPerClient = 2;

void fillFakeWorkspace(FakeWorkspace& workspace) {
    for (int i = 0; i < kApps; ++i) {
        workspace.add(1000 + i, QStringLiteral("App %1").arg((i * 7919) % kApps),
                      QStringLiteral("com.example.app%1").arg(i),
                      i % 10 == 0 ? ActivationPolicy::accessory : ActivationPolicy::regular);
    }
}

void BM_RefreshFakeWorkspace(benchmark::State& state) {
    FakeWorkspace workspace;
    fillFakeWorkspace(workspace);
    ManualClock clock;
    AppMonitorService monitor(workspace, clock, 1);
    for (auto _ : state) {
        monitor.refresh();
        benchmark::DoNotOptimize(monitor.runningApps().size());
    }
}
BENCHMARK(BM_RefreshFakeWorkspace)->Unit(benchmark::kMicrosecond);

// Every rule's apps are due, so each pass builds the full quit batch: the worst case.
void BM_AutoQuitPass(benchmark::State& state) {
    FakeWorkspace workspace;
    fillFakeWorkspace(workspace);
    ManualClock clock;
    MemoryDefaultsStore defaults;
    FakeBundleInfo bundle;
    QList<AppRule> rules;
    for (int i = 0; i < kRules; ++i) {
        rules.append(AppRule{QStringLiteral("com.example.app%1").arg(i * 3), QStringLiteral("App"),
                             AppRule::Action::quit, 5});
    }
    defaults.values[QStringLiteral("appRules")] = *encodeAppRules(rules);
    defaults.values[QStringLiteral("idleQuitEnabled")] = true;
    AppSettings settings(defaults, bundle, clock, ProductTexts::linuxDesktop());
    AppMonitorService monitor(workspace, clock, 1);
    FakeIdleTime idleTime;
    IdleMonitorService idle(idleTime, clock);
    AutoQuitManager autoQuit(workspace, clock);
    autoQuit.setAppMonitor(&monitor);
    autoQuit.setIdleMonitor(&idle);
    autoQuit.setSettings(&settings);
    qsizetype handedOver = 0;
    autoQuit.onAppsReadyToQuit = [&](const QList<AppInfo>& apps, AutoQuitTrigger) {
        handedOver += apps.size();
    };
    clock.setNow(clock.now().addSecs(3600));
    for (auto _ : state) {
        autoQuit.evaluate();
    }
    state.counters["apps_per_pass"] =
        benchmark::Counter(double(handedOver), benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_AutoQuitPass)->Unit(benchmark::kMicrosecond);

struct X11Fixture {
    std::unique_ptr<testing::VirtualDesktop> desktop;
    std::vector<std::unique_ptr<QProcess>> clients;
};
X11Fixture* g_x11 = nullptr;

// The 5-second poll while the list is open: a refresh against the live X11 workspace.
void BM_RefreshX11Workspace(benchmark::State& state) {
    auto x = X11Connection::open(g_x11->desktop->display());
    X11Workspace workspace(*x);
    ManualClock clock;
    AppMonitorService monitor(workspace, clock, 1);
    for (auto _ : state) {
        monitor.refresh();
        benchmark::DoNotOptimize(monitor.runningApps().size());
    }
    state.counters["apps"] = double(monitor.runningApps().size());
}
BENCHMARK(BM_RefreshX11Workspace)->Unit(benchmark::kMicrosecond);

// A change to the client list: the backend re-reads the window list and the tray.
void BM_RescanX11ClientList(benchmark::State& state) {
    auto x = X11Connection::open(g_x11->desktop->display());
    X11Workspace workspace(*x);
    for (auto _ : state) {
        workspace.rescan();
    }
}
BENCHMARK(BM_RescanX11ClientList)->Unit(benchmark::kMicrosecond);

// Start-up: the first look at 200 windows, naming each app from its desktop entry.
void BM_FirstScanX11(benchmark::State& state) {
    auto x = X11Connection::open(g_x11->desktop->display());
    for (auto _ : state) {
        X11Workspace workspace(*x);
        benchmark::DoNotOptimize(workspace.runningApplications().size());
    }
}
BENCHMARK(BM_FirstScanX11)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char* argv[]) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);

    X11Fixture fixture;
    fixture.desktop = std::make_unique<testing::VirtualDesktop>();
    if (fixture.desktop->isRunning()) {
        for (int i = 0; i < kApps / kWindowsPerClient; ++i) {
            fixture.clients.push_back(fixture.desktop->start(
                QStringLiteral(VANTLE_REFUSER),
                {QStringLiteral("--class"), QStringLiteral("Client%1").arg(i),
                 QStringLiteral("--windows"), QString::number(kWindowsPerClient)}));
        }
        for (auto& client : fixture.clients) {
            client->waitForReadyRead(10'000);
        }
        // Let the window manager adopt every window.
        QTest::qWait(2'000);
        g_x11 = &fixture;
    } else {
        std::fprintf(stderr, "skipping X11 benchmarks: %s\n", qPrintable(fixture.desktop->error()));
        benchmark::RegisterBenchmark(
            "X11 unavailable", [](benchmark::State& s) { s.SkipWithError("no virtual desktop"); });
    }
    if (!g_x11) {
        // Without a display only the logic benchmarks mean anything.
        static const char* filter = "--benchmark_filter=Fake|AutoQuit";
        std::vector<char*> args(argv, argv + argc);
        args.push_back(const_cast<char*>(filter));
        int count = static_cast<int>(args.size());
        benchmark::Initialize(&count, args.data());
    }
    benchmark::RunSpecifiedBenchmarks();
    for (auto& client : fixture.clients) {
        client->kill();
        client->waitForFinished();
    }
    return 0;
}
