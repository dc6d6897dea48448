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
constexpr int kJsonIndent = 2;

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
    const auto document = listing(platform, displays, brightness, scheduler);
    if (cli.json) {
        // A name that is not UTF-8 (a monitor's garbage) is written with replacement characters.
        std::cout << document.dump(kJsonIndent, ' ', false,
                                   nlohmann::json::error_handler_t::replace)
                  << "\n";
    } else {
        std::cout << "Lumora — " << platform.name();
        if (cli.simulate) {
            std::cout << " ("
                      << (cli.worldFile ? cli.worldFile->string() : std::string("built-in world"))
                      << ")";
        }
        std::cout << "\n";
        printListing(std::cout, document);
    }
    if (cli.stateFile) {
        platform.attach(log);
        platform.persist();
    }
    return 0;
}

}  // namespace lumora::app
