#include "ListCommand.h"

#include <iostream>
#include <string>
#include <utility>

#include "Listing.h"
#include "PlatformChoice.h"
#include "display/Brightness.h"
#include "display/Displays.h"
#include "log/Log.h"
#include "platform/MemoryDefaults.h"
#include "runtime/QtScheduler.h"

namespace lumora::app {

namespace {

// Exit status when there is no machine to list.
constexpr int kNoPlatform = 2;

}  // namespace

int listDisplays(const CommandLine& cli) {
    QtScheduler scheduler;
    Log log(Log::Options{});  // the listing writes no log file
    PlatformChoice choice = choosePlatform(cli, scheduler, log);
    if (!choice.platform) {
        std::cerr << "lumora: " << choice.error << "\n";
        return kNoPlatform;
    }
    Platform& platform = *choice.platform;
    MemoryDefaults defaults;  // the listing keeps nothing
    Displays displays(platform.displayServer(), defaults, log);
    Brightness brightness(platform.backlight());
    std::cout << "Lumora — " << platform.name();
    if (cli.simulate) {
        std::cout << " ("
                  << (cli.worldFile ? cli.worldFile->string() : std::string("built-in world"))
                  << ")";
    }
    std::cout << "\n";
    printListing(std::cout, platform, displays, brightness, scheduler);
    if (cli.stateFile) {
        platform.attach(log);
        platform.persist();
    }
    return 0;
}

}  // namespace lumora::app
