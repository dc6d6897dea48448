// LidMachine::tick per call in the steady states the one-second timer sees most.
#include <benchmark/benchmark.h>

#include "lid/LidMachine.h"

namespace lumora {
namespace {

constexpr std::int64_t kOpenAngle = 110;
constexpr std::int64_t kClosedAngle = 0;

// A machine already past its first decision, so every measured tick is a steady one.
LidMachine settled(const LidConfig& config, LidInputs& inputs) {
    LidMachine machine{config};
    machine.tick(inputs);
    inputs.now += config.closeDebounce;
    machine.tick(inputs);
    return machine;
}

void runTicks(benchmark::State& state, LidMachine& machine, LidInputs inputs) {
    for (auto _ : state) {
        inputs.now += 1;
        auto actions = machine.tick(inputs);
        benchmark::DoNotOptimize(actions);
    }
}

void BM_LidTickOpen(benchmark::State& state) {
    LidInputs inputs{0, kOpenAngle, 1, true, false};
    LidMachine machine = settled(LidConfig{}, inputs);
    runTicks(state, machine, inputs);
}
BENCHMARK(BM_LidTickOpen);

// Closed alone with the panel asleep and timed system sleep off: the duties find nothing due.
void BM_LidTickClosedAloneAsleep(benchmark::State& state) {
    LidConfig config;
    config.sleepDelay = 0;
    LidInputs inputs{0, kClosedAngle, 0, true, true};
    LidMachine machine = settled(config, inputs);
    runTicks(state, machine, inputs);
}
BENCHMARK(BM_LidTickClosedAloneAsleep);

// Closed alone with something waking the panel every second: a displaySleep on every tick.
void BM_LidTickClosedAloneResleep(benchmark::State& state) {
    LidConfig config;
    config.sleepDelay = 0;
    LidInputs inputs{0, kClosedAngle, 0, true, false};
    LidMachine machine = settled(config, inputs);
    runTicks(state, machine, inputs);
}
BENCHMARK(BM_LidTickClosedAloneResleep);

}  // namespace
}  // namespace lumora
