#pragma once

#include "CommandLine.h"
#include "sim/World.h"

namespace lumora::app {

// `lumora --simulate --list`: the listing of the simulated machine; the exit status.
int listSimulated(const CommandLine& cli, sim::World world);

}  // namespace lumora::app
