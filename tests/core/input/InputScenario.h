#pragma once

// A log in a temporary folder with the fixed wall clock, and the simulated keyboard.
#include <memory>
#include <string>
#include <vector>

#include "log/Log.h"
#include "sim/SimInput.h"
#include "sim/VirtualScheduler.h"
#include "support/TestSupport.h"

namespace lumora::test {

class InputScenario {
  protected:
    // The messages written so far, without their time stamps.
    std::vector<std::string> logged() {
        log.flush();
        std::vector<std::string> out;
        const std::string prefix = std::string(kFixedStamp) + " ";
        for (const std::string& line : log.tail(100)) {
            out.push_back(line.rfind(prefix, 0) == 0 ? line.substr(prefix.size()) : "?" + line);
        }
        return out;
    }

    TempDir dir;
    Log log{Log::Options{dir / "Lumora.log", fixedLocalTime, nullptr}};
    sim::VirtualScheduler clock;
    sim::SimInput input{true};
};

}  // namespace lumora::test
