#include "ddc/DdcTiming.h"

#include <gtest/gtest.h>

#include <vector>

#include "ddc/DDC.h"
#include "ddc/DDCService.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"

namespace lumora {
namespace {

using Reading = std::pair<std::uint16_t, std::uint16_t>;
using Change = DdcTimingLearner::Change;

TEST(DdcTimingLearner, ShortensOnlyAfterSuccessesStepsBackAtOneFailureAndNeverRepeatsIt) {
    DdcTimingLearner learner;
    const auto succeed = [&](int times) {
        std::vector<Change> changes;
        for (int i = 0; i < times; ++i)
            changes.push_back(learner.succeeded());
        return changes;
    };
    succeed(DdcTimingLearner::kLearnAfter - 1);
    EXPECT_EQ(learner.timing(), DdcTiming{}) << "not before a whole run of successes";
    succeed(1);
    EXPECT_DOUBLE_EQ(learner.timing().quiet, 0.035);
    EXPECT_DOUBLE_EQ(learner.timing().replyWait, 0.035);
    succeed(DdcTimingLearner::kLearnAfter);
    const DdcTiming lastGood = learner.timing();  // 24.5 ms
    succeed(DdcTimingLearner::kLearnAfter);       // 17.15 ms: too short for this monitor
    EXPECT_EQ(learner.failed(), Change::steppedBack);
    EXPECT_EQ(learner.timing(), DdcTiming{});
    EXPECT_EQ(learner.failed(), Change::none) << "already at the defaults";

    // Learning again stops at the last waits that worked, and says so once.
    std::vector<Change> changes = succeed(4 * DdcTimingLearner::kLearnAfter);
    EXPECT_EQ(learner.timing(), lastGood);
    EXPECT_EQ(std::count(changes.begin(), changes.end(), Change::settled), 1);

    // Waits learned in an earlier run that fail: a step above them from then on.
    DdcTimingLearner resumed(DdcTiming{0.004, 0.004});
    EXPECT_EQ(resumed.failed(), Change::steppedBack);
    for (int i = 0; i < 40; ++i)
        resumed.succeeded();
    EXPECT_NEAR(resumed.timing().quiet, 0.004 / DdcTimingLearner::kStep, 1e-12);
}

// The simulated machine's office monitor (display 2) with the given firmware.
struct OfficeMonitor {
    explicit OfficeMonitor(const std::function<void(sim::WorldDdc&)>& firmware) {
        world = sim::defaultWorld();
        for (auto& display : world.displays) {
            if (display.id == 2) firmware(*display.ddc);
        }
        machine = std::make_unique<sim::SimMachine>(world, clock);
        service =
            DDC::services(machine->avServices(), clock, DDC::targets(machine->displayServer(), {2}))
                .at(2);
    }
    // Virtual seconds one read takes.
    double timedRead(std::uint8_t code, std::optional<Reading>* out = nullptr) {
        const double start = clock.uptime();
        auto reading = service->read(code);
        if (out) *out = reading;
        return clock.uptime() - start;
    }

    sim::VirtualScheduler clock{1000.0};
    sim::World world;
    std::unique_ptr<sim::SimMachine> machine;
    std::shared_ptr<DDCService> service;
};

TEST(DdcTiming, AFastMonitorIsLearnedASlowListenerAndANoisyCableNeverGiveAWrongValue) {
    // Answers in 5 ms: learned to well under 20 ms a read, every value right on the way.
    OfficeMonitor fast([](sim::WorldDdc& ddc) { ddc.replyDelay = 0.005; });
    std::vector<Change> told;
    fast.service->setTimingListener([&](const DdcTimingLearner&, Change change) {
        if (change != Change::shortened) told.push_back(change);
    });
    EXPECT_NEAR(fast.timedRead(0x10), 0.100, 1e-9) << "the defaults first";
    for (int i = 0; i < 40; ++i) {
        std::optional<Reading> reading;
        fast.timedRead(0x10, &reading);
        ASSERT_EQ(reading, (Reading{50, 100})) << "read " << i;
    }
    EXPECT_LT(fast.timedRead(0x10), 0.020);
    EXPECT_EQ(told, (std::vector<Change>{Change::steppedBack, Change::settled}));

    // Ignores requests sooner than 50 ms after its last reply: every value is read all the
    // same, whatever the learning tries.
    OfficeMonitor deaf([](sim::WorldDdc& ddc) { ddc.quietTime = 0.050; });
    for (int round = 0; round < 10; ++round) {
        for (auto [code, value] : {std::pair{0x10, 50}, std::pair{0x12, 75}, std::pair{0x62, 30}}) {
            EXPECT_EQ(deaf.service->read(static_cast<std::uint8_t>(code)),
                      (Reading{static_cast<std::uint16_t>(value), 100}))
                << "round " << round;
        }
    }

    // Flipped bits under a good checksum: retried, counted, never reported.
    OfficeMonitor noisy([](sim::WorldDdc& ddc) { ddc.corruptReplies = 2; });
    EXPECT_EQ(noisy.service->read(0x62), (Reading{30, 100}));
    EXPECT_EQ(noisy.service->counters().invalidReplies, 2u);
    EXPECT_EQ(noisy.service->counters().attempts, 3u);
}

}  // namespace
}  // namespace lumora
