#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "Listing.h"
#include "display/Brightness.h"
#include "display/Displays.h"
#include "log/Log.h"
#include "sim/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"

namespace {

// Exit status for unusable arguments or world files.
constexpr int kUsageError = 2;

int listSimulated(const lumora::app::CommandLine& cli) {
    using namespace lumora;
    sim::World world = sim::defaultWorld();
    if (cli.worldFile) {
        auto loaded = sim::loadWorldFile(*cli.worldFile);
        if (!loaded.world) {
            std::cerr << "lumora: " << loaded.error << "\n";
            return kUsageError;
        }
        world = std::move(*loaded.world);
    }
    // The listing needs no real waiting: the simulated monitor answers in virtual time.
    sim::VirtualScheduler scheduler;
    sim::SimMachine machine(std::move(world), scheduler);
    if (cli.stateFile) machine.setStateFile(*cli.stateFile);
    sim::MemoryDefaults defaults;
    Log log(Log::Options{});  // the listing writes no log file
    Displays displays(machine.displayServer(), defaults, log);
    Brightness brightness(machine.backlight());
    std::cout << "Lumora — simulated machine ("
              << (cli.worldFile ? cli.worldFile->string() : std::string("built-in world")) << ")\n";
    app::printListing(std::cout, displays, brightness, machine.avServices(), scheduler);
    if (cli.stateFile) machine.writeStateFile();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    auto cli = lumora::app::parseCommandLine(args);
    if (!cli.error.empty()) {
        std::cerr << "lumora: " << cli.error << "\n" << lumora::app::kUsage << "\n";
        return kUsageError;
    }
    if (cli.list) {
        if (cli.simulate) return listSimulated(cli);
        std::cerr << "lumora: this build has no backend for this platform's displays yet; "
                     "use --simulate\n";
        return kUsageError;
    }
    std::cerr << "lumora: the agent is not built yet; run with --simulate --list\n"
              << lumora::app::kUsage << "\n";
    return kUsageError;
}
