#include "ListCommand.h"

#include <iostream>
#include <string>
#include <utility>

#include "Listing.h"
#include "display/Brightness.h"
#include "display/Displays.h"
#include "log/Log.h"
#include "sim/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"

namespace lumora::app {

int listSimulated(const CommandLine& cli, sim::World world) {
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
    printListing(std::cout, displays, brightness, machine.avServices(), scheduler);
    if (cli.stateFile) machine.writeStateFile();
    return 0;
}

}  // namespace lumora::app
