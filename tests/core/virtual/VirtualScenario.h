#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "display/Displays.h"
#include "log/Log.h"
#include "platform/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"
#include "support/TestSupport.h"

namespace lumora::test {

// A simulated machine in virtual time, an in-memory defaults store, a log in a temporary
// folder and the Displays the virtual-display managers build on.
class VirtualScenario : public ::testing::Test {
  protected:
    static constexpr const char* kMonitors = "laptopAndLowDensityMonitors.json";

    VirtualScenario()
        : log_(std::make_unique<Log>(Log::Options{dir_ / "Lumora.log", fixedLocalTime, {}})) {}

    // Seed the defaults first: the managers read them once, when they are built.
    void startFixture(const std::string& name, bool virtualDisplays = true) {
        const char* folder = std::getenv("LUMORA_FIXTURES");
        if (folder == nullptr) ADD_FAILURE() << "LUMORA_FIXTURES is not set";
        auto loaded = sim::loadWorldFile(std::filesystem::path(folder ? folder : "") / name);
        if (!loaded.world) ADD_FAILURE() << loaded.error;
        sim::World world = loaded.world.value_or(sim::World{});
        world.virtualDisplays = virtualDisplays;
        startWorld(world);
    }
    void start(const std::string& worldJson) {
        auto parsed = sim::parseWorld(worldJson);
        if (!parsed.world) ADD_FAILURE() << parsed.error;
        startWorld(parsed.world.value_or(sim::World{}));
    }
    void startWorld(const sim::World& world) {
        machine = std::make_unique<sim::SimMachine>(world, scheduler);
        machine->setStateFile(dir_ / "state.json");
        displays = std::make_unique<Displays>(machine->displayServer(), defaults, *log_);
    }

    // Every line logged since the last call, without its time stamp.
    std::vector<std::string> logged() {
        log_->flush();
        const std::string stamp = std::string(kFixedStamp) + " ";
        std::vector<std::string> lines;
        auto all = log_->tail(10000);
        for (std::size_t i = seen_; i < all.size(); ++i) {
            EXPECT_EQ(all[i].rfind(stamp, 0), 0u) << all[i];
            lines.push_back(all[i].substr(stamp.size()));
        }
        seen_ = all.size();
        return lines;
    }

    // The state file as the simulated machine last wrote it.
    nlohmann::json state() const { return nlohmann::json::parse(readFile(dir_ / "state.json")); }

    nlohmann::json stateOf(DisplayID id) const {
        const auto all = state();
        for (const auto& d : all["displays"]) {
            if (d["id"] == id) return d;
        }
        return nullptr;
    }

    TempDir dir_;
    std::unique_ptr<Log> log_;
    std::size_t seen_ = 0;
    sim::VirtualScheduler scheduler;
    MemoryDefaults defaults;
    std::unique_ptr<sim::SimMachine> machine;
    std::unique_ptr<Displays> displays;
};

}  // namespace lumora::test
