// One tick of the lid controller's one-second timer on the simulated laptop with an external
// monitor: the display snapshot, the machine's tick and (every fifth tick) the sensor poll.
#include <benchmark/benchmark.h>

#include <ctime>
#include <filesystem>
#include <memory>

#include "display/Displays.h"
#include "lid/LidController.h"
#include "log/Log.h"
#include "platform/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"

namespace lumora {
namespace {

struct Laptop {
    Laptop()
        : log(Log::Options{std::filesystem::temp_directory_path() / "lumora-bench-lid.log",
                           [] { return std::tm{}; }, nullptr}),
          machine(sim::defaultWorld(), scheduler),
          displays(machine.displayServer(), defaults, log),
          lid(LidController::create(
              LidConfig{},
              {scheduler, machine.displayServer(), displays, machine.backlight(), machine.power(),
               machine.lidSensor(), machine.systemEvents(), defaults, log})) {
        lid->start();
    }

    Log log;
    sim::VirtualScheduler scheduler;
    MemoryDefaults defaults;
    sim::SimMachine machine;
    Displays displays;
    std::shared_ptr<LidController> lid;
};

// Lid open, nothing to do: the steady state the timer sees almost all the time.
void BM_LidControllerTickOpen(benchmark::State& state) {
    Laptop laptop;
    for (auto _ : state)
        laptop.scheduler.advance(LidController::kTickInterval);
    benchmark::DoNotOptimize(laptop.lid->machine().mode());
}
BENCHMARK(BM_LidControllerTickOpen);

// Lid closed on the external monitor with the panel already off.
void BM_LidControllerTickClosedExternal(benchmark::State& state) {
    Laptop laptop;
    laptop.machine.setLidAngle(0);
    laptop.scheduler.advance(10 * LidController::kTickInterval);
    for (auto _ : state)
        laptop.scheduler.advance(LidController::kTickInterval);
    benchmark::DoNotOptimize(laptop.lid->machine().mode());
}
BENCHMARK(BM_LidControllerTickClosedExternal);

}  // namespace
}  // namespace lumora
