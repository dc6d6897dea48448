// The application model's hot paths on a simulated machine with eight displays: the refresh
// after every reconfiguration, a "status" command with its file write, and the main-thread
// cost of one debounced DDC write while a slider is dragged.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>

#include "display/Displays.h"
#include "log/Log.h"
#include "model/AppModel.h"
#include "platform/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/SimSession.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"

namespace lumora {
namespace {

constexpr int kExternalDisplays = 7;  // plus the built-in panel: eight displays
// Cancelled debounce items stay queued until the scheduler next runs; clear them this often
// so that the queue's growth does not show up in the measured cost.
constexpr int kDdcCallsPerDrain = 1024;

// A laptop panel and seven monitors side by side, every other one speaking DDC/CI.
std::string eightDisplays() {
    std::string text = R"({"main": 1, "displays": [
      {"id": 1, "name": "Built-in Retina Display", "builtin": true, "vendor": 1552,
       "modes": [{"id": 10, "width": 1512, "height": 982, "pixelWidth": 3024,
                  "pixelHeight": 1964, "refresh": 120}]})";
    for (int i = 0; i < kExternalDisplays; ++i) {
        const std::string id = std::to_string(2 + i);
        text += R"(, {"id": )" + id + R"(, "name": "Monitor )" + id +
                R"(", "vendor": 4268, "model": 41234, "serial": )" + id +
                R"(, "modes": [{"id": 20, "width": 2560, "height": 1440, "refresh": 60},
                               {"id": 21, "width": 1920, "height": 1080, "refresh": 60}])" +
                (i % 2 == 0 ? R"(, "ddc": {})" : "") + "}";
    }
    return text + "]}";
}

struct Bench {
    explicit Bench(const std::filesystem::path& folder)
        : log(Log::Options{folder / "Lumora.log", [] { return std::tm{}; }, nullptr}),
          session(folder / "home", "bench"),
          machine(sim::parseWorld(eightDisplays()).world.value(), clock),
          displays(machine.displayServer(), defaults, log) {
        model = AppModel::create(
            AppPorts{machine, clock, machine.osd(), session, defaults, displays, log});
        model->start();
        clock.advance(5.0);  // the start-up DDC rescan of four monitors
    }
    ~Bench() { model.reset(); }

    Log log;
    sim::VirtualScheduler clock;
    MemoryDefaults defaults;
    sim::SimSession session;
    sim::SimMachine machine;
    Displays displays;
    std::shared_ptr<AppModel> model;
};

std::filesystem::path scratch(const char* name) {
    auto folder = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directories(folder);
    return folder;
}

void BM_Refresh(benchmark::State& state) {
    Bench bench(scratch("lumora-bench-refresh"));
    for (auto _ : state) {
        bench.model->refresh();
    }
    state.counters["displays"] = static_cast<double>(bench.model->displays()->size());
}
BENCHMARK(BM_Refresh);

void BM_StatusCommand(benchmark::State& state) {
    Bench bench(scratch("lumora-bench-status"));
    const Query none;
    for (auto _ : state) {
        bench.model->dispatcher().handle("status", none, nullptr);
    }
}
BENCHMARK(BM_StatusCommand);

void BM_SetDDCBurst(benchmark::State& state) {
    Bench bench(scratch("lumora-bench-ddc"));
    int calls = 0;
    for (auto _ : state) {
        bench.model->ddc().set(2, VCP::brightness, (calls % 100) / 100.0, 100);
        if (++calls % kDdcCallsPerDrain == 0) {
            state.PauseTiming();
            bench.clock.runDue();
            state.ResumeTiming();
        }
    }
}
BENCHMARK(BM_SetDDCBurst);

// Sliders of one or of all four DDC monitors (each on its own bus) moved at once: the time on
// the simulated wire until the last monitor has its value (debounce included).
void BM_SetMonitorsAtOnce(benchmark::State& state) {
    Bench bench(scratch("lumora-bench-buses"));
    const auto monitors = static_cast<DisplayID>(state.range(0));
    double wireSeconds = 0;
    std::int64_t rounds = 0;
    for (auto _ : state) {
        bench.machine.clearWire();
        const double start = bench.clock.uptime();
        for (DisplayID i = 0; i < monitors; ++i)
            bench.model->ddc().set(2 + 2 * i, VCP::brightness, rounds % 2 ? 0.3 : 0.6, 100);
        bench.clock.advance(1.0);
        double last = start;
        for (const auto& e : bench.machine.wire())
            last = std::max(last, e.time);
        wireSeconds += last - start;
        ++rounds;
    }
    state.counters["wire_ms"] = wireSeconds * 1000 / static_cast<double>(rounds);
}
BENCHMARK(BM_SetMonitorsAtOnce)->Arg(1)->Arg(4)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace lumora
