#pragma once

#include <memory>
#include <string>

#include "CommandLine.h"
#include "platform/Platform.h"

namespace lumora {
class Log;
class Scheduler;
}  // namespace lumora

namespace lumora::app {

// The one place that knows the backends: --simulate gives the simulated machine, otherwise
// this platform's own backend. `error` says why there is none (exit status 2).
struct PlatformChoice {
    std::unique_ptr<Platform> platform;
    std::string error;
};

PlatformChoice choosePlatform(const CommandLine& cli, Scheduler& scheduler, Log& log);

}  // namespace lumora::app
