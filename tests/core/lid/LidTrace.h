#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "lid/LidMachine.h"

namespace lumora::test {

using Actions = std::vector<LidAction>;
using A = LidAction;

// One recorded sample. The panel is online and awake unless a step says otherwise.
struct Sample {
    double now = 0;
    std::optional<std::int64_t> angle;
    std::int64_t externals = 0;
    bool builtinOnline = true;
    bool builtinAsleep = false;
};

struct Step {
    Sample sample;
    Actions expected;
};

// Feeds the samples in order and checks every step's actions exactly.
inline void play(LidMachine& machine, const std::vector<Step>& steps) {
    for (const auto& [s, expected] : steps) {
        SCOPED_TRACE("t=" + std::to_string(s.now));
        EXPECT_EQ(machine.tick({s.now, s.angle, s.externals, s.builtinOnline, s.builtinAsleep}),
                  expected);
    }
}

// A fresh machine fed the steps, for traces that start from nothing.
inline LidMachine played(const std::vector<Step>& steps, const LidConfig& config = {}) {
    LidMachine machine{config};
    play(machine, steps);
    return machine;
}

inline LidAction say(std::string message) {
    return LidAction::log(std::move(message));
}

inline constexpr const char* kFirstSleep = "lid closed, nothing external: display sleep";
inline constexpr const char* kSystemSleep600 =
    "lid closed 600 s without an external display: system sleep";

inline std::string wokeAgain(int sofar) {
    return "display woke with the lid closed (HID tickle): display sleep again (" +
           std::to_string(sofar) + " so far)";
}

// Entering closedAlone with the panel online and awake: every duty at once.
inline Actions closedAloneAwake(const std::string& from, std::int64_t angle) {
    return {
        say("mode " + from + " -> closedAlone (angle " + std::to_string(angle) + ", external 0)"),
        A::dimBuiltin(true), say(kFirstSleep), A::displaySleep()};
}

}  // namespace lumora::test
