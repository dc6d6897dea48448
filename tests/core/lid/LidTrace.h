#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <sstream>
#include <vector>

#include "lid/LidMachine.h"

namespace lumora::test {

using Actions = std::vector<LidAction>;

// One recorded sample. The panel is online and awake unless a step says otherwise.
struct Sample {
    double now = 0;
    std::optional<std::int64_t> angle;
    std::int64_t externals = 0;
    bool builtinOnline = true;
    bool builtinAsleep = false;

    [[nodiscard]] LidInputs inputs() const {
        return {now, angle, externals, builtinOnline, builtinAsleep};
    }
};

struct Step {
    Sample sample;
    Actions expected;
};

// Feeds the samples in order and checks every step's actions exactly.
inline void play(LidMachine& machine, const std::vector<Step>& steps) {
    for (const Step& step : steps) {
        std::ostringstream where;
        where << "t=" << step.sample.now
              << " angle=" << (step.sample.angle ? std::to_string(*step.sample.angle) : "none");
        SCOPED_TRACE(where.str());
        EXPECT_EQ(machine.tick(step.sample.inputs()), step.expected);
    }
}

inline LidAction say(std::string message) {
    return LidAction::log(std::move(message));
}

inline constexpr const char* kFirstSleep = "lid closed, nothing external: display sleep";

}  // namespace lumora::test
