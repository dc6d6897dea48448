#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "display/Displays.h"
#include "log/Log.h"
#include "sim/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"
#include "support/TestSupport.h"

namespace lumora::test {

// The simulated display server with faults that the simulated hardware cannot produce:
// transactions that cannot begin, completions that fail, origins far off the desktop. It
// also records every configuration call, so tests can assert exactly what was issued.
class FaultyServer final : public DisplayServer {
  public:
    explicit FaultyServer(DisplayServer& inner) : inner_(inner) {}

    bool failBegin = false;
    std::optional<ConfigStatus> failComplete;
    std::map<DisplayID, Point> originOverride;
    std::vector<std::string> calls;

    std::vector<DisplayID> onlineIDs() const override { return inner_.onlineIDs(); }
    DisplayID mainDisplay() const override { return inner_.mainDisplay(); }
    bool isBuiltin(DisplayID id) const override { return inner_.isBuiltin(id); }
    bool isAsleep(DisplayID id) const override { return inner_.isAsleep(id); }
    std::uint32_t vendor(DisplayID id) const override { return inner_.vendor(id); }
    std::uint32_t model(DisplayID id) const override { return inner_.model(id); }
    std::uint32_t serial(DisplayID id) const override { return inner_.serial(id); }
    double rotation(DisplayID id) const override { return inner_.rotation(id); }
    Rect bounds(DisplayID id) const override {
        Rect r = inner_.bounds(id);
        if (auto it = originOverride.find(id); it != originOverride.end()) r.origin = it->second;
        return r;
    }
    Size physicalSize(DisplayID id) const override { return inner_.physicalSize(id); }
    std::optional<PlatformMode> currentMode(DisplayID id) const override {
        return inner_.currentMode(id);
    }
    std::vector<PlatformMode> allModes(DisplayID id) const override { return inner_.allModes(id); }
    DisplayID mirrorSource(DisplayID id) const override { return inner_.mirrorSource(id); }
    bool canEnableDisable() const override { return inner_.canEnableDisable(); }
    void restoreColorProfiles() override { inner_.restoreColorProfiles(); }
    ConfigStatus setTransferTable(DisplayID id, const GammaTable& table) override {
        return inner_.setTransferTable(id, table);
    }
    std::vector<Screen> screens() const override { return inner_.screens(); }
    Point pointerLocation() const override { return inner_.pointerLocation(); }
    int addReconfigurationHandler(ReconfigurationHandler handler) override {
        return inner_.addReconfigurationHandler(std::move(handler));
    }
    void removeReconfigurationHandler(int registration) override {
        inner_.removeReconfigurationHandler(registration);
    }

    std::unique_ptr<DisplayConfiguration> beginConfiguration() override {
        calls.emplace_back("begin");
        if (failBegin) return nullptr;
        auto inner = inner_.beginConfiguration();
        if (!inner) return nullptr;
        return std::make_unique<Recorder>(*this, std::move(inner));
    }

  private:
    class Recorder final : public DisplayConfiguration {
      public:
        Recorder(FaultyServer& owner, std::unique_ptr<DisplayConfiguration> inner)
            : owner_(owner), inner_(std::move(inner)) {}
        ConfigStatus setMode(DisplayID id, std::int32_t modeID) override {
            note("mode " + std::to_string(id) + " " + std::to_string(modeID));
            return inner_->setMode(id, modeID);
        }
        ConfigStatus setOrigin(DisplayID id, std::int32_t x, std::int32_t y) override {
            note("origin " + std::to_string(id) + " " + std::to_string(x) + " " +
                 std::to_string(y));
            return inner_->setOrigin(id, x, y);
        }
        ConfigStatus setMirror(DisplayID id, DisplayID target) override {
            note("mirror " + std::to_string(id) + " " + std::to_string(target));
            return inner_->setMirror(id, target);
        }
        ConfigStatus setEnabled(DisplayID id, bool enabled) override {
            note("enable " + std::to_string(id) + (enabled ? " on" : " off"));
            return inner_->setEnabled(id, enabled);
        }
        ConfigStatus complete(ConfigureOption option) override {
            note(option == ConfigureOption::permanently ? "complete permanently"
                                                        : "complete for session");
            if (owner_.failComplete) {
                inner_->cancel();
                return *owner_.failComplete;
            }
            return inner_->complete(option);
        }
        void cancel() override {
            note("cancel");
            inner_->cancel();
        }

      private:
        void note(std::string call) { owner_.calls.push_back(std::move(call)); }
        FaultyServer& owner_;
        std::unique_ptr<DisplayConfiguration> inner_;
    };

    DisplayServer& inner_;
};

// A simulated machine, an in-memory defaults store, a log in a temporary folder and the
// Displays under test, built from a world in JSON.
class DisplayScenario : public ::testing::Test {
  protected:
    DisplayScenario()
        : log_(std::make_unique<Log>(Log::Options{dir_ / "Lumora.log", fixedLocalTime, {}})) {}

    // Defaults must be seeded before start: Displays reads them once, when it is built.
    // A world that cannot be read fails the test and leaves an empty machine, so the rest of
    // the test fails on its expectations instead of crashing.
    void start(const std::string& worldJson) {
        auto parsed = sim::parseWorld(worldJson);
        if (!parsed.world) ADD_FAILURE() << parsed.error;
        startWorld(parsed.world.value_or(sim::World{}));
    }
    void startFixture(const std::string& name) {
        const char* folder = std::getenv("LUMORA_FIXTURES");
        if (folder == nullptr) ADD_FAILURE() << "LUMORA_FIXTURES is not set";
        auto loaded = sim::loadWorldFile(std::filesystem::path(folder ? folder : "") / name);
        if (!loaded.world) ADD_FAILURE() << loaded.error;
        startWorld(loaded.world.value_or(sim::World{}));
    }
    void startWorld(const sim::World& world) {
        machine = std::make_unique<sim::SimMachine>(world, scheduler);
        server = std::make_unique<FaultyServer>(machine->displayServer());
        displays = std::make_unique<Displays>(*server, defaults, *log_);
    }

    // Every line logged so far, without its time stamp.
    std::vector<std::string> logged() {
        log_->flush();
        std::vector<std::string> lines;
        const std::string stamp = std::string(kFixedStamp) + " ";
        for (auto& line : log_->tail(1000)) {
            EXPECT_EQ(line.rfind(stamp, 0), 0u) << line;
            lines.push_back(line.substr(stamp.size()));
        }
        return lines;
    }

    // The stored disconnected dictionary, or nothing when the key was never written.
    std::optional<nlohmann::json> storedDisconnected() const {
        return defaults.object(Displays::kDisconnectedKey);
    }

    TempDir dir_;
    std::unique_ptr<Log> log_;
    sim::VirtualScheduler scheduler;
    sim::MemoryDefaults defaults;
    std::unique_ptr<sim::SimMachine> machine;
    std::unique_ptr<FaultyServer> server;
    std::unique_ptr<Displays> displays;
};

}  // namespace lumora::test
