#pragma once

// A simulated machine in virtual time with the application model on top, as the application
// builds it: one Displays, the session in a temporary home, the log in a temporary folder.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "model/AppModel.h"
#include "sim/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/SimSession.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"
#include "support/ForwardingDisplayServer.h"
#include "support/TestSupport.h"

namespace lumora::test {

// The display server with a hand on the reconfiguration events, so a test can deliver exactly
// the flags it wants (the simulated hardware always sends begin and change together).
class EventServer final : public ForwardingDisplayServer {
  public:
    using ForwardingDisplayServer::ForwardingDisplayServer;

    void fire(DisplayID id, std::uint32_t flags) {
        for (auto& handler : handlers_)
            handler(id, flags);
    }

    // Kept here only: the hardware's own events do not reach the model through this server.
    int addReconfigurationHandler(ReconfigurationHandler handler) override {
        handlers_.push_back(std::move(handler));
        return static_cast<int>(handlers_.size());
    }
    void removeReconfigurationHandler(int) override {}

  private:
    std::vector<ReconfigurationHandler> handlers_;
};

inline std::filesystem::path fixture(const std::string& name) {
    const char* folder = std::getenv("LUMORA_FIXTURES");
    return std::filesystem::path(folder ? folder : "tests/fixtures") / name;
}

inline sim::World fixtureWorld(const std::string& name) {
    sim::WorldResult result = sim::loadWorldFile(fixture(name));
    EXPECT_TRUE(result.world.has_value()) << result.error;
    return result.world.value_or(sim::World{});
}

class ModelScenario : public ::testing::Test {
  protected:
    // Enough virtual time for the start-up DDC rescan of a few monitors.
    static constexpr double kSettle = 2.0;

    // Builds the model on `world` and starts it; with `events`, reconfiguration events come
    // only from the test's fire().
    void boot(sim::World world, bool events = false) {
        model.reset();
        displays.reset();
        eventServer.reset();
        machine = std::make_unique<sim::SimMachine>(std::move(world), clock);
        DisplayServer* server = &machine->displayServer();
        if (events) {
            eventServer = std::make_unique<EventServer>(machine->displayServer());
            server = eventServer.get();
        }
        displays = std::make_unique<Displays>(*server, defaults, log);
        model = AppModel::create(AppPorts{
            clock, *server, machine->backlight(), machine->avServices(), machine->virtualDisplays(),
            machine->power(), machine->lidSensor(), machine->systemEvents(), machine->input(),
            machine->osd(), session, defaults, *displays, log});
    }
    void start(const std::string& fixtureName, bool events = false) {
        boot(fixtureWorld(fixtureName), events);
        model->start();
        clock.advance(kSettle);
    }

    // The messages written so far, without their time stamps.
    std::vector<std::string> logged() {
        log.flush();
        std::vector<std::string> out;
        const std::string prefix = std::string(kFixedStamp) + " ";
        for (const std::string& line : log.tail(1000)) {
            out.push_back(line.rfind(prefix, 0) == 0 ? line.substr(prefix.size()) : "?" + line);
        }
        return out;
    }
    bool wasLogged(const std::string& line) {
        auto lines = logged();
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }

    std::string statusText() { return readFile(session.statusFile()); }
    nlohmann::json status() { return nlohmann::json::parse(statusText(), nullptr, false); }
    // One display's entry of the status file.
    nlohmann::json statusOf(DisplayID id) {
        const nlohmann::json all = status();
        for (const auto& d : all["displays"]) {
            if (d["id"] == id) return d;
        }
        return nullptr;
    }
    // One display's entry of the simulated hardware's state.
    nlohmann::json stateOf(DisplayID id) {
        const nlohmann::json all = machine->state();
        for (const auto& d : all["displays"]) {
            if (d["id"] == id) return d;
        }
        return nullptr;
    }

    TempDir dir;
    Log log{Log::Options{dir / "Lumora.log", fixedLocalTime, nullptr}};
    sim::VirtualScheduler clock;
    sim::MemoryDefaults defaults;
    sim::SimSession session{dir.path() / "home", "0.1.0"};
    std::unique_ptr<sim::SimMachine> machine;
    std::unique_ptr<EventServer> eventServer;
    std::unique_ptr<Displays> displays;
    std::shared_ptr<AppModel> model;
};

}  // namespace lumora::test
