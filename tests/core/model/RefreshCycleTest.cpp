// The model's refresh cycle: start-up order, reconfiguration bursts, the idle-sleep assertion,
// the lid's change callback, and delayed work that outlives the model.
#include <gtest/gtest.h>

#include "ModelScenario.h"

namespace lumora::test {
namespace {

class RefreshCycle : public ModelScenario {
  protected:
    std::size_t indexOf(const std::string& prefix) {
        const auto lines = logged();
        auto found = std::find_if(lines.begin(), lines.end(),
                                  [&](const std::string& l) { return l.starts_with(prefix); });
        return static_cast<std::size_t>(found - lines.begin());
    }
    nlohmann::json assertions() { return machine->state()["power"]["assertions"]; }

    int refreshes = 0;
    Subscription counting;
};

TEST_F(RefreshCycle, StartLogsTheVersionThenBringsTheSubsystemsUpInOrder) {
    VirtualScreenConfig side{VirtualScreens::kFirstID, "Side", 1920, 1080, 60, false, true};
    defaults.setJsonData(VirtualScreens::kStorageKey, VirtualScreenConfig::listToJson({side}));
    start("laptopAndExternal.json");
    EXPECT_EQ(logged().front(), "Lumora 0.1.0 start");
    EXPECT_LT(indexOf("virtual screen 'Side' 1920"), indexOf("lid: start"));
    EXPECT_LT(indexOf("lid: start"), indexOf("DDC: 1 external display(s) with a DDC channel, 1"));
    EXPECT_EQ(model->virtualConfigs().get(), std::vector<VirtualScreenConfig>{side});
    EXPECT_EQ(machine->input().registrations().size(), 4u);
    EXPECT_TRUE(machine->input().tapInstalled());
    EXPECT_EQ(model->lidMode().get(), LidMode::open);
    EXPECT_EQ(model->lidAngle().get(), 110);
    EXPECT_EQ(model->displays()->size(), 4u);
}

TEST_F(RefreshCycle, ABurstOfEventsMakesOneRefreshAFixedDelayAfterTheFirst) {
    start("laptopAndExternal.json", /*events=*/true);
    counting = model->displays().subscribe([this] { ++refreshes; });
    for (int i = 0; i < 5; ++i) {
        eventServer->fire(2, DisplayChange::changed);
        clock.advance(0.05);
    }
    // 0.3 s after the first event, not after the last.
    clock.advance(0.3 - 0.25 - 0.001);
    EXPECT_EQ(refreshes, 0);
    clock.advance(0.002);
    EXPECT_EQ(refreshes, 1);
    clock.advance(2.0);
    EXPECT_EQ(refreshes, 1);
}

// A dock: ten changes within a second, displays coming and going among them. The first
// refresh shows the first change quickly, one more shows the settled result, and the
// monitors are scanned once, when the burst has settled.
TEST_F(RefreshCycle, ADocksBurstMakesTwoRefreshesAndOneRescan) {
    start("laptopAndExternal.json", /*events=*/true);
    counting = model->displays().subscribe([this] { ++refreshes; });
    const auto scans = [this] {
        const auto lines = logged();
        return std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
            return line.starts_with("DDC: ") && line.ends_with(" answering");
        });
    };
    const auto scansBefore = scans();
    machine->clearWire();
    const double t0 = clock.uptime();
    const DisplayChange steps[] = {DisplayChange::removed, DisplayChange::changed,
                                   DisplayChange::added, DisplayChange::changed};
    for (int i = 0; i < 10; ++i) {
        eventServer->fire(i % 2 == 0 ? 3 : 2, steps[i % 4]);
        clock.advance(0.1);
    }
    EXPECT_EQ(refreshes, 1) << "the first, 0.3 s after the first event";
    clock.advance(10);
    EXPECT_EQ(refreshes, 2);
    EXPECT_EQ(scans() - scansBefore, 1);
    const auto wire = machine->wire();
    ASSERT_FALSE(wire.empty());
    // The last display came or went at 0.8 s.
    EXPECT_NEAR(wire.front().time - t0, 0.8 + ReconfigurationBurst::kSettle, 0.01)
        << "scanned once the burst had settled";

    // A single monitor plugged in later: shown after 0.3 s, scanned when nothing follows.
    machine->clearWire();
    const double t1 = clock.uptime();
    eventServer->fire(3, DisplayChange::added);
    clock.advance(AppModel::kRefreshDelay);
    EXPECT_EQ(refreshes, 3);
    clock.advance(10);
    EXPECT_EQ(refreshes, 3);
    EXPECT_EQ(scans() - scansBefore, 2);
    ASSERT_FALSE(machine->wire().empty());
    EXPECT_NEAR(machine->wire().front().time - t1, ReconfigurationBurst::kSettle, 0.01);
}

// A monitor pulled out while a write to it is on its way: the exchange fails at its first
// transfer, nothing is retried past the monitor's normal timeouts, and a command for it
// afterwards is answered at once.
TEST_F(RefreshCycle, AMonitorPulledDuringAnExchangeFailsItAndNothingWaitsForIt) {
    start("laptopAndExternal.json");
    machine->clearWire();
    model->handleURL("lumora://brightness?display=2&value=80");
    const double pulled = clock.uptime();
    machine->setOnline(2, false);
    clock.advance(10);
    const auto wire = machine->wire();
    ASSERT_FALSE(wire.empty()) << "the queued write still tried";
    for (const auto& event : wire) {
        EXPECT_NE(event.status, 0) << "no device answers";
        EXPECT_LT(event.time - pulled, 1.0);
    }
    EXPECT_FALSE(model->ddcAvailable()->contains(2));
    std::optional<CommandResult> result;
    model->handleURL("lumora://ddc?display=2&vcp=0x10&value=50",
                     [&](const CommandResult& r) { result = r; });
    ASSERT_TRUE(result.has_value()) << "answered at once";
    EXPECT_EQ(result->problem, "display 2 has no DDC/CI channel");
}

TEST_F(RefreshCycle, SleepAssertionFollowsTheExternalDisplays) {
    start("laptopAndExternal.json");
    EXPECT_TRUE(assertions().empty());
    model->setPreventSleepWithExternal(true);
    EXPECT_EQ(defaults.boolean(kPreventSleepKey), true);
    EXPECT_EQ(assertions(), nlohmann::json::array({AppModel::kSleepInhibitionReason}));

    machine->setOnline(2, false);
    machine->setOnline(3, false);
    clock.advance(AppModel::kRefreshDelay);
    EXPECT_TRUE(assertions().empty());
    machine->setOnline(3, true);
    EXPECT_TRUE(assertions().empty());  // taken at the next refresh, not before
    clock.advance(ReconfigurationBurst::kSettle);
    EXPECT_EQ(assertions().size(), 1u);

    model->setPreventSleepWithExternal(false);
    EXPECT_TRUE(assertions().empty());
}

TEST_F(RefreshCycle, LidChangesAndLidSettingsReachTheModel) {
    start("laptopAndExternal.json");
    machine->setLidAngle(0);
    clock.advance(3.0);
    EXPECT_EQ(model->lidMode().get(), LidMode::closedExternal);
    EXPECT_EQ(model->lidAngle().get(), 0);

    const auto before = logged().size();
    model->setLidConfig(LidConfig{});  // equal: nothing at all
    EXPECT_EQ(logged().size(), before);
    EXPECT_FALSE(defaults.contains(kLidConfigKey));
    LidConfig config;
    config.sleepDelay = 0;
    model->setLidConfig(config);
    EXPECT_EQ(model->lidConfig().get(), config);
    EXPECT_EQ(LidConfig::fromJson(*defaults.jsonData(kLidConfigKey)), config);
    EXPECT_TRUE(wasLogged("lid: config " + config.describe()));
}

TEST_F(RefreshCycle, DelayedWorkOutlivingTheModelDoesNothing) {
    start("laptopAndExternal.json");
    model->setHiDPI(2, true);         // a second refresh is queued
    model->brightness().set(2, 0.9);  // a DDC write is queued
    machine->setOnline(3, false);     // a coalesced refresh is queued
    std::weak_ptr<AppModel> weak = model;
    model.reset();
    EXPECT_TRUE(weak.expired());
    clock.advance(3.0);
    machine->setOnline(3, true);
    clock.advance(1.0);
    EXPECT_EQ(stateOf(2)["vcp"]["0x10"], 90);  // the pending write still reached the monitor
}

}  // namespace
}  // namespace lumora::test
