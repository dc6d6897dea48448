#include "PlatformChoice.h"

#include "sim/World.h"
#include "sim/agent/SimAgentPlatform.h"
#if defined(LUMORA_HAVE_LINUX_BACKEND)
#include "platform/LinuxPlatform.h"
#endif
#if defined(LUMORA_HAVE_MACOS_BACKEND)
#include "MacPlatform.h"
#endif

namespace lumora::app {

PlatformChoice choosePlatform(const CommandLine& cli, Scheduler& scheduler, Log& log) {
    if (cli.simulate) {
        sim::World world = sim::defaultWorld();
        if (cli.worldFile) {
            auto loaded = sim::loadWorldFile(*cli.worldFile);
            if (!loaded.world) return {nullptr, loaded.error};
            world = std::move(*loaded.world);
        }
        return {std::make_unique<sim::SimAgentPlatform>(std::move(world), cli.worldFile,
                                                        cli.stateFile, scheduler),
                {}};
    }
#if defined(LUMORA_HAVE_LINUX_BACKEND)
    return {lx::makeLinuxPlatform(scheduler, log), {}};
#elif defined(LUMORA_HAVE_MACOS_BACKEND)
    (void)scheduler;
    (void)log;
    // Headless, there is no application event loop: no hot keys, no opened URLs.
    return {mac::makeMacPlatform(!cli.headless), {}};
#else
    (void)scheduler;
    (void)log;
    return {nullptr,
            "this build has no backend for this platform's displays yet; run it with --simulate"};
#endif
}

}  // namespace lumora::app
