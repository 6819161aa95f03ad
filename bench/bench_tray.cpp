// From a click on the tray icon to the app list painted, with 40 running apps: the first
// opening (the list is built) and every later one.
#include "fakes/AppListFixture.h"
#include "fakes/FakeTrayHost.h"
#include "ui/status/StatusBarController.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QWidget>
#include <benchmark/benchmark.h>
#include <chrono>
#include <memory>

using namespace vantle;
using namespace std::chrono_literals;

namespace {

struct Tray {
    AppListFixture apps;
    FakeTrayHost host;
    std::unique_ptr<StatusBarController> bar;

    Tray() {
        for (qint32 pid = 100; pid < 140; ++pid) {
            apps.launch(pid, QStringLiteral("App %1").arg(pid));
        }
        host.available = true;
        bar = std::make_unique<StatusBarController>(
            apps.monitor, apps.settings, host, nullptr, apps.clock, StatusBarController::Options{},
            [](AppCommand) {}, [] { return QSet<AppCommand>(); });
        bar->start();
    }

    // The click, then until the popup has been laid out and painted.
    void clickAndPaint() {
        bar->togglePopup();
        bar->panel()->repaint();
        QCoreApplication::processEvents();
    }
    void close() {
        bar->togglePopup();
        QCoreApplication::processEvents();
        apps.clock.advance(1s); // past the guard against the closing click reopening it
    }
};

void firstOpening(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto tray = std::make_unique<Tray>();
        state.ResumeTiming();
        tray->clickAndPaint();
        state.PauseTiming();
        tray.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(firstOpening)->Unit(benchmark::kMillisecond)->Iterations(20);

void laterOpening(benchmark::State& state) {
    Tray tray;
    tray.clickAndPaint();
    tray.close();
    for (auto _ : state) {
        tray.clickAndPaint();
        state.PauseTiming();
        tray.close();
        state.ResumeTiming();
    }
}
BENCHMARK(laterOpening)->Unit(benchmark::kMillisecond)->Iterations(50);

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
