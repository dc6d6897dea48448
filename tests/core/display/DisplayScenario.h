#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/log/TestLog.h"
#include "display/Displays.h"
#include "platform/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"
#include "support/ForwardingDisplayServer.h"

namespace lumora::test {

// A listed display that is not online: switched off, or the absent built-in panel.
inline DisplayInfo offline(DisplayID id, std::string name, bool builtin = false) {
    return {.id = id, .name = std::move(name), .isBuiltin = builtin, .isAsleep = true, .mode = {}};
}

// The simulated display server with faults the simulated hardware cannot produce (a
// transaction that cannot begin, a completion that fails). It records the configuration
// calls, so tests can assert exactly what was issued.
class FaultyServer final : public ForwardingDisplayServer {
  public:
    using ForwardingDisplayServer::ForwardingDisplayServer;

    bool failBegin = false;
    std::optional<ConfigStatus> failComplete;
    Lines calls;

    std::unique_ptr<DisplayConfiguration> beginConfiguration() override {
        calls.emplace_back("begin");
        auto inner = failBegin ? nullptr : inner_.beginConfiguration();
        if (!inner) return nullptr;
        return std::make_unique<Recorder>(*this, std::move(inner));
    }

  private:
    class Recorder final : public DisplayConfiguration {
      public:
        Recorder(FaultyServer& owner, std::unique_ptr<DisplayConfiguration> inner)
            : owner_(owner), inner_(std::move(inner)) {}
        ConfigStatus setMode(DisplayID id, std::int32_t mode) override {
            return note("mode", id, std::to_string(mode)).setMode(id, mode);
        }
        ConfigStatus setOrigin(DisplayID id, std::int32_t x, std::int32_t y) override {
            return inner_->setOrigin(id, x, y);  // no test follows origins call by call
        }
        ConfigStatus setMain(DisplayID id) override { return note("main", id, "").setMain(id); }
        ConfigStatus setMirror(DisplayID id, DisplayID target) override {
            return note("mirror", id, std::to_string(target)).setMirror(id, target);
        }
        ConfigStatus setEnabled(DisplayID id, bool on) override {
            return note("enable", id, on ? "on" : "off").setEnabled(id, on);
        }
        ConfigStatus complete(ConfigureOption option) override {
            owner_.calls.emplace_back(option == ConfigureOption::permanently
                                          ? "complete permanently"
                                          : "complete for session");
            if (!owner_.failComplete) return inner_->complete(option);
            inner_->cancel();
            return *owner_.failComplete;
        }
        void cancel() override {
            owner_.calls.emplace_back("cancel");
            inner_->cancel();
        }

      private:
        // Records the call and hands back the configuration that carries it out.
        DisplayConfiguration& note(const char* what, DisplayID id, const std::string& rest) {
            owner_.calls.push_back(std::string(what) + " " + std::to_string(id) + " " + rest);
            return *inner_;
        }
        FaultyServer& owner_;
        std::unique_ptr<DisplayConfiguration> inner_;
    };
};

// A simulated machine, an in-memory defaults store, a log in a temporary folder and the
// Displays under test. Defaults must be seeded before start: Displays reads them once.
class DisplayScenario : public ::testing::Test, protected TestLog {
  protected:
    static constexpr const char* kFixture = "laptopDockedMonitorAndProjector.json";
    static constexpr const char* kMonitors = "laptopAndLowDensityMonitors.json";

    // A world that cannot be read fails the test and leaves an empty machine.
    void start(const std::string& worldJson, bool virtualDisplays = true) {
        auto parsed = sim::parseWorld(worldJson);
        if (!parsed.world) ADD_FAILURE() << parsed.error;
        sim::World world = parsed.world.value_or(sim::World{});
        if (!virtualDisplays) world.virtualDisplays = false;
        machine = std::make_unique<sim::SimMachine>(world, scheduler);
        server = std::make_unique<FaultyServer>(machine->displayServer());
        displays = std::make_unique<Displays>(*server, defaults, log);
    }
    void startFixture(const char* name = kFixture, bool virtualDisplays = true) {
        start(readFile(fixture(name)), virtualDisplays);
    }

    std::optional<nlohmann::json> storedDisconnected() const {
        return defaults.object(Displays::kDisconnectedKey);
    }
    nlohmann::json state() const { return machine->state(); }
    nlohmann::json stateOf(DisplayID id) const {
        const auto all = machine->state();
        for (const auto& d : all["displays"])
            if (d["id"] == id) return d;
        return nullptr;
    }

    sim::VirtualScheduler scheduler;
    MemoryDefaults defaults;
    std::unique_ptr<sim::SimMachine> machine;
    std::unique_ptr<FaultyServer> server;
    std::unique_ptr<Displays> displays;
};

}  // namespace lumora::test
