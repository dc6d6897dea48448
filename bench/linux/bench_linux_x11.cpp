// The model's refresh after a reconfiguration, and the display listing under it, over a real
// Xorg with all sixteen dummy outputs lit. Every other port is the simulated machine's.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "XorgServer.h"
#include "display/Displays.h"
#include "log/Log.h"
#include "model/AppModel.h"
#include "platform/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/SimSession.h"
#include "sim/VirtualScheduler.h"
#include "support/ServerSwap.h"
#include "support/TestSupport.h"
#include "x11/X11DisplayServer.h"

namespace lumora {
namespace {

constexpr int kOutputs = 16;  // DUMMY0-15, every output the dummy driver has
// Small enough that sixteen side by side stay within the driver's largest screen.
constexpr const char* kMode = "1024x768";
// Virtual time for what the model schedules at start (the DDC rescan, the status file).
constexpr double kSettleSeconds = 5.0;

// One server for the whole program, lit once: starting it costs far more than a run.
struct LitServer {
    LitServer() {
        xorg = lx::test::XorgServer::start(whyNot);
        for (int n = 1; xorg && n < kOutputs; ++n) {
            const std::string output = "DUMMY" + std::to_string(n);
            const std::string left = "DUMMY" + std::to_string(n - 1);
            if (!xrandr({"--addmode", output, kMode}) ||
                !xrandr({"--output", output, "--mode", kMode, "--right-of", left})) {
                whyNot = "xrandr could not light " + output;
                xorg.reset();
            }
        }
        if (xorg) xrandr({});  // lit outputs report themselves connected from the next probe on
    }
    bool xrandr(std::vector<std::string> args) {
        args.insert(args.begin(), "xrandr");
        return lx::test::runTool(args, xorg->display()).exitCode == 0;
    }
    std::unique_ptr<lx::test::XorgServer> xorg;
    std::string whyNot;
};

struct Model {
    explicit Model(std::unique_ptr<lx::X11DisplayServer> server) : x11(std::move(server)) {
        model = AppModel::create(
            AppPorts{platform, clock, machine.osd(), session, defaults, displays, log});
        model->start();
        clock.advance(kSettleSeconds);
    }

    test::TempDir home;  // the status file's, private to this run
    Log log{Log::Options{}};
    sim::VirtualScheduler clock;
    MemoryDefaults defaults;
    sim::SimSession session{home.path(), "bench"};
    sim::SimMachine machine{sim::World{}, clock};
    std::unique_ptr<lx::X11DisplayServer> x11;
    test::ServerSwap platform{machine, *x11};
    Displays displays{*x11, defaults, log};
    std::shared_ptr<AppModel> model;
};

// The model over the lit server, or nothing with the reason given to `state`.
std::unique_ptr<Model> openModel(benchmark::State& state) {
    static LitServer lit;
    if (!lit.xorg) {
        state.SkipWithError(("no dummy Xorg: " + lit.whyNot).c_str());
        return nullptr;
    }
    auto server = lx::X11DisplayServer::open(lit.xorg->display());
    if (!server) {
        state.SkipWithError("cannot connect to the dummy Xorg");
        return nullptr;
    }
    auto model = std::make_unique<Model>(std::move(server));
    if (model->model->displays()->size() != kOutputs) {
        state.SkipWithError("the model does not see all sixteen outputs");
        return nullptr;
    }
    return model;
}

void BM_X11Refresh(benchmark::State& state) {
    auto model = openModel(state);
    if (!model) return;
    for (auto _ : state)
        model->model->refresh();
}
BENCHMARK(BM_X11Refresh)->Unit(benchmark::kMillisecond);

void BM_X11DisplaysList(benchmark::State& state) {
    auto model = openModel(state);
    if (!model) return;
    for (auto _ : state)
        benchmark::DoNotOptimize(model->displays.list());
}
BENCHMARK(BM_X11DisplaysList)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumora
