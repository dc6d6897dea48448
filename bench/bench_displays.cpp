// Hot paths of the display core: the listing every refresh and lid tick makes, the mode list
// of a display card, and the gamma reload after every colour change.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <map>
#include <memory>

#include "display/Displays.h"
#include "display/Gamma.h"
#include "platform/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"

namespace lumora {
namespace {

constexpr int kDisplays = 8;
constexpr int kModesPerDisplay = 40;
constexpr int kManyModes = 200;
constexpr int kAdjustedDisplays = 4;

// Sizes, HiDPI variants and refresh rates mixed so that sorting and dedup have work to do.
std::vector<sim::WorldMode> worldModes(int count, std::int32_t firstID) {
    std::vector<sim::WorldMode> modes;
    const double refreshes[] = {60, 59.94, 120, 50, 30};
    for (int i = 0; i < count; ++i) {
        const std::int64_t width = 640 + 64 * (i / 4);
        const std::int64_t height = width * 9 / 16;
        const std::int64_t scale = i % 2 == 0 ? 2 : 1;  // every other one HiDPI
        modes.push_back({firstID + i, width, height, scale * width, scale * height,
                         refreshes[i % 5], i % 7 != 6});
    }
    return modes;
}

sim::World world(int displays, int modesPerDisplay) {
    sim::World w;
    for (int d = 0; d < displays; ++d) {
        w.displays.push_back({.id = static_cast<DisplayID>(d + 1),
                              .name = "Monitor " + std::to_string(d + 1),
                              .builtin = d == 0,
                              .vendor = 4268,
                              .model = 41234,
                              .serial = static_cast<std::uint32_t>(d),
                              .sizeMM = Size{600, 340},
                              .modes = worldModes(modesPerDisplay, (d + 1) * 1000)});
    }
    return w;
}

struct Machine {
    explicit Machine(const sim::World& w)
        : log(Log::Options{std::filesystem::temp_directory_path() / "lumora-bench.log", {}, {}}),
          machine(w, scheduler),
          displays(machine.displayServer(), defaults, log) {}
    sim::VirtualScheduler scheduler;
    MemoryDefaults defaults;
    Log log;
    sim::SimMachine machine;
    Displays displays;
};

void listEightDisplays(benchmark::State& state) {
    Machine m(world(kDisplays, kModesPerDisplay));
    for (auto _ : state) {
        auto list = m.displays.list();
        benchmark::DoNotOptimize(list);
    }
    // items/s here are displays listed per second.
    state.SetItemsProcessed(state.iterations() * kDisplays);
}
BENCHMARK(listEightDisplays)->Unit(benchmark::kMicrosecond);

void displaysModesOf200(benchmark::State& state) {
    Machine m(world(1, kManyModes));
    for (auto _ : state) {
        auto modes = m.displays.modes(1);
        benchmark::DoNotOptimize(modes);
    }
}
BENCHMARK(displaysModesOf200)->Unit(benchmark::kMicrosecond);

void applyAllFourDisplays(benchmark::State& state) {
    Machine m(world(kAdjustedDisplays, 1));
    Gamma gamma(m.machine.displayServer());
    std::map<DisplayID, ColorAdjust> adjustments;
    for (int d = 0; d < kAdjustedDisplays; ++d) {
        adjustments[static_cast<DisplayID>(d + 1)] = {
            .dim = 0.6 + 0.1 * d, .contrast = 1.1, .temperature = 0.5 - 0.3 * d, .gamma = 1.2};
    }
    for (auto _ : state) {
        gamma.applyAll(adjustments);
    }
}
BENCHMARK(applyAllFourDisplays)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace lumora
