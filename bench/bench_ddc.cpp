// DDC/CI reads and writes through the transport on the simulated wire, for a monitor that
// answers in 40 ms and one that answers in 5 ms, at the default waits and after learning.
// The waits are virtual: `wire_ms` is the time one operation takes on the wire; the wall
// clock time is the host's own cost.
#include <benchmark/benchmark.h>

#include <memory>

#include "ddc/DDC.h"
#include "ddc/DDCService.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"

namespace {

using namespace lumora;

// Reads that teach the learner all it can learn about a monitor.
constexpr int kLearningReads = 60;

struct Wire {
    explicit Wire(double replyDelay) {
        world = sim::defaultWorld();
        for (auto& display : world.displays) {
            if (display.id == 2) display.ddc->replyDelay = replyDelay;
        }
        machine = std::make_unique<sim::SimMachine>(world, clock);
        service =
            DDC::services(machine->avServices(), clock, DDC::targets(machine->displayServer(), {2}))
                .at(2);
    }
    void learn() {
        for (int i = 0; i < kLearningReads; ++i)
            service->read(0x10);
    }

    sim::VirtualScheduler clock{1000.0};
    sim::World world;
    std::unique_ptr<sim::SimMachine> machine;
    std::shared_ptr<DDCService> service;
};

// Arguments: reply delay in ms, learned (0 or 1), write (0: read, 1: write).
void ddcOperation(benchmark::State& state) {
    Wire wire(static_cast<double>(state.range(0)) / 1000);
    const bool learned = state.range(1) != 0;
    if (learned) wire.learn();
    const bool write = state.range(2) != 0;
    double wireSeconds = 0;
    std::int64_t operations = 0;
    for (auto _ : state) {
        // Before learning means every operation at the defaults.
        if (!learned) wire.service->useLearner(DdcTimingLearner{});
        const double start = wire.clock.uptime();
        if (write) {
            benchmark::DoNotOptimize(wire.service->write(0x10, 40));
        } else {
            benchmark::DoNotOptimize(wire.service->read(0x10));
        }
        wireSeconds += wire.clock.uptime() - start;
        ++operations;
        wire.machine->clearWire();
    }
    state.counters["wire_ms"] = wireSeconds * 1000 / static_cast<double>(operations);
}
BENCHMARK(ddcOperation)
    ->ArgNames({"replyMs", "learned", "write"})
    ->ArgsProduct({{40, 5}, {0, 1}, {0, 1}})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
