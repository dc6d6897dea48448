// The lid's one-second timer with the lid open, the state it is in almost all the time:
// LidMachine::tick alone, and the controller's whole tick on the simulated laptop with an
// external monitor (display snapshot, the machine's tick, every fifth tick the sensor poll).
#include <benchmark/benchmark.h>

#include <ctime>
#include <filesystem>
#include <memory>

#include "display/Displays.h"
#include "lid/LidController.h"
#include "lid/LidMachine.h"
#include "log/Log.h"
#include "platform/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"

namespace lumora {
namespace {

constexpr std::int64_t kOpenAngle = 110;

void BM_LidTickOpen(benchmark::State& state) {
    LidInputs inputs{0, kOpenAngle, 1, true, false};
    LidMachine machine{LidConfig{}};
    machine.tick(inputs);  // past its first decision: every measured tick is a steady one
    for (auto _ : state) {
        inputs.now += 1;
        auto actions = machine.tick(inputs);
        benchmark::DoNotOptimize(actions);
    }
}
BENCHMARK(BM_LidTickOpen);

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

void BM_LidControllerTickOpen(benchmark::State& state) {
    Laptop laptop;
    for (auto _ : state)
        laptop.scheduler.advance(LidController::kTickInterval);
    benchmark::DoNotOptimize(laptop.lid->machine().mode());
}
BENCHMARK(BM_LidControllerTickOpen);

}  // namespace
}  // namespace lumora
