#pragma once

// A simulated machine in virtual time with the application model on top, as the application
// builds it: one Displays, the session in a temporary home, the log in a temporary folder.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "ddc/DdcPacket.h"
#include "model/AppModel.h"
#include "platform/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/SimSession.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"
#include "support/ForwardingDisplayServer.h"
#include "support/ServerSwap.h"
#include "support/TestSupport.h"

namespace lumora::test {

// The display server with a hand on the reconfiguration events, so a test can deliver exactly
// the events it wants.
class EventServer final : public ForwardingDisplayServer {
  public:
    using ForwardingDisplayServer::ForwardingDisplayServer;

    void fire(DisplayID id, DisplayChange change) {
        for (auto& handler : handlers_)
            handler(id, change);
    }

    // Where the pointer is: false makes it unknown, as on Wayland.
    bool pointerKnown = true;
    std::optional<Point> pointerLocation() const override {
        return pointerKnown ? ForwardingDisplayServer::pointerLocation() : std::nullopt;
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

using DdcWrites = std::vector<std::pair<DisplayID, int>>;

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
        platform.reset();
        eventServer.reset();
        machine = std::make_unique<sim::SimMachine>(std::move(world), clock);
        Platform* used = machine.get();
        if (events) {
            eventServer = std::make_unique<EventServer>(machine->displayServer());
            platform = std::make_unique<ServerSwap>(*machine, *eventServer);
            used = platform.get();
        }
        displays = std::make_unique<Displays>(used->displayServer(), defaults, log);
        model = AppModel::create(
            AppPorts{*used, clock, machine->osd(), session, defaults, *displays, log});
    }
    void start(sim::World world, bool events = false) {
        boot(std::move(world), events);
        model->start();
        clock.advance(kSettle);
    }
    void start(const std::string& fixtureName, bool events = false) {
        start(fixtureWorld(fixtureName), events);
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
    // One display's entry of the status file, and of the simulated hardware's state.
    nlohmann::json statusOf(DisplayID id) { return withId(status()["displays"], id); }
    nlohmann::json stateOf(DisplayID id) { return withId(machine->state()["displays"], id); }
    // (display, value) of each DDC write of `vcp` on the wire; every write goes out twice, so
    // one entry per pair of transmissions.
    DdcWrites ddcWrites(std::uint8_t vcp) {
        DdcWrites out;
        bool second = false;
        for (const auto& e : machine->wire()) {
            if (e.kind != sim::WireEvent::Kind::write || e.bytes.size() != 6) continue;
            if (e.bytes[1] != kSetVcpOpcode || e.bytes[2] != vcp) continue;
            if (!std::exchange(second, !second))
                out.emplace_back(e.display, e.bytes[3] << 8 | e.bytes[4]);
        }
        return out;
    }
    static nlohmann::json withId(const nlohmann::json& displays, DisplayID id) {
        for (const auto& d : displays)
            if (d["id"] == id) return d;
        return nullptr;
    }

    TempDir dir;
    Log log{Log::Options{dir / "Lumora.log", fixedLocalTime, nullptr}};
    sim::VirtualScheduler clock;
    MemoryDefaults defaults;
    sim::SimSession session{dir.path() / "home", "0.1.0"};
    std::unique_ptr<sim::SimMachine> machine;
    std::unique_ptr<EventServer> eventServer;
    std::unique_ptr<ServerSwap> platform;
    std::unique_ptr<Displays> displays;
    std::shared_ptr<AppModel> model;
};

}  // namespace lumora::test
