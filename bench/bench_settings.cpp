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

// Opens the window on every tab, closes it, and again: what stays after the first round is
// caches (fonts, icons); what grows with every round would be a leak.
void BM_WindowMemory(benchmark::State& state) {
    SettingsFixture fixture;
    fill(fixture);
    double before = 0;
    double open = 0;
    double closed = 0;
    for (auto _ : state) {
        for (int round = 0; round < 2; ++round) {
            if (round == 1) {
                before = residentKiB();
            }
            for (const SettingsTab tab : allCases<SettingsTab>()) {
                fixture.windows().show(tab);
                QCoreApplication::processEvents();
            }
            if (round == 1) {
                open = residentKiB();
            }
            closeWindow(fixture);
        }
        closed = residentKiB();
    }
    state.counters["open_KiB"] = open - before;
    state.counters["after_close_KiB"] = closed - before;
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
