#pragma once

#include "CommandLine.h"

namespace lumora::app {

// `lumora --list`: the listing of the machine the command line chose; the exit status.
int listDisplays(const CommandLine& cli);

}  // namespace lumora::app
