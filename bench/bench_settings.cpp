// Benchmark for the settings window: the time from the request to a shown window on each tab
// (the page built on first show, as a user meets it), and the memory the window holds while open
// and leaves behind once closed.
#include "fakes/SettingsFixture.h"
#include "model/AppSettings.h"
#include "ui/settings/SettingsWindow.h"

#include <QApplication>
#include <QFile>
#include <QPointer>
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

using namespace vantle;

namespace {

// Resident memory of this process, in KiB.
double residentKiB() {
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields[1].toDouble() * double(sysconf(_SC_PAGESIZE)) / 1024 : 0;
}

// Bytes the heap holds for the program right now, in KiB: unlike the resident size, it falls
// again when the window's memory is freed.
double heapKiB() {
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks + info.hblkhd) / 1024;
}

// A configuration like a real one: a few running apps, rules, exclusions.
void fill(SettingsFixture& fixture) {
    for (qint32 pid = 100; pid < 120; ++pid) {
        fixture.launch(pid, QStringLiteral("App %1").arg(pid),
                       QStringLiteral("org.app%1").arg(pid));
    }
    fixture.settings().setExcludedBundleIDs(
        {QStringLiteral("org.app101"), QStringLiteral("org.app105"), QStringLiteral("gone.app")});
}

void closeWindow(SettingsFixture& fixture) {
    QPointer<SettingsWindow> window = fixture.windows().window();
    window->close();
    while (window) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }
}

void BM_FirstShow(benchmark::State& state) {
    const auto tab = allCases<SettingsTab>()[static_cast<std::size_t>(state.range(0))];
    SettingsFixture fixture;
    fill(fixture);
    for (auto _ : state) {
        fixture.windows().show(tab);
        QCoreApplication::processEvents();
        state.PauseTiming();
        closeWindow(fixture);
        state.ResumeTiming();
    }
    state.SetLabel(rawValue(tab).toStdString());
}
BENCHMARK(BM_FirstShow)->DenseRange(0, 6)->Unit(benchmark::kMillisecond)->Iterations(20);

// Opens the window on every tab and closes it, twice. The first round counts what the window
// holds while open; what the heap still holds after the second round is caches (fonts, icons)
// or a leak, and a leak would grow with every round.
void BM_WindowMemory(benchmark::State& state) {
    SettingsFixture fixture;
    fill(fixture);
    QList<double> heap;
    double residentBefore = 0;
    double residentOpen = 0;
    for (auto _ : state) {
        heap.append(heapKiB());
        residentBefore = residentKiB();
        for (int round = 0; round < 2; ++round) {
            for (const SettingsTab tab : allCases<SettingsTab>()) {
                fixture.windows().show(tab);
                QCoreApplication::processEvents();
            }
            heap.append(heapKiB());
            if (round == 0) {
                residentOpen = residentKiB();
            }
            closeWindow(fixture);
            heap.append(heapKiB());
        }
    }
    state.counters["heap_open_KiB"] = heap[1] - heap[0];
    state.counters["heap_after_close_KiB"] = heap[2] - heap[0];
    state.counters["heap_second_round_KiB"] = heap[4] - heap[2];
    state.counters["resident_open_KiB"] = residentOpen - residentBefore;
}
BENCHMARK(BM_WindowMemory)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
