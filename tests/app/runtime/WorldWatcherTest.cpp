#include <gtest/gtest.h>

#include <cstdlib>
#include <mutex>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "RuntimeTestSupport.h"
#include "log/Log.h"
#include "runtime/QtScheduler.h"
#include "sim/SimMachine.h"
#include "sim/agent/WorldWatcher.h"
#include "support/TestSupport.h"

namespace lumora::app {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;
using namespace std::chrono_literals;

std::string fixture(const char* name) {
    const char* folder = std::getenv("LUMORA_FIXTURES");
    return test::readFile(fs::path(folder ? folder : "tests/fixtures") / name);
}

class WorldWatcherTest : public test::QtAppTest {
  protected:
    WorldWatcherTest() {
        test::writeFile(worldFile, worldText.dump(2));
        machine.displayServer().addReconfigurationHandler(
            [this](DisplayID id, DisplayChange flags) {
                std::lock_guard lock(mutex);
                events.emplace_back(id, flags);
            });
    }

    // As editors save: a new file renamed over the old one.
    void save(const std::string& text) {
        test::writeFile(dir / "world.json.tmp", text);
        fs::rename(dir / "world.json.tmp", worldFile);
    }

    [[nodiscard]] bool sawEvent(DisplayID id, DisplayChange flags) {
        std::lock_guard lock(mutex);
        for (const auto& [eventId, eventFlags] : events) {
            if (eventId == id && eventFlags == flags) return true;
        }
        return false;
    }

    [[nodiscard]] bool online(DisplayID id) const {
        const json state = machine.state();
        for (const auto& d : state["displays"]) {
            if (d["id"] == id) return d["online"].get<bool>();
        }
        return false;
    }

    [[nodiscard]] std::vector<std::string> ignoredLines() {
        log.flush();
        std::vector<std::string> out;
        for (auto& line : log.tail(100)) {
            if (line.find("sim: world file ignored: ") != std::string::npos) out.push_back(line);
        }
        return out;
    }

    test::TempDir dir;
    fs::path worldFile = dir / "world.json";
    json worldText = json::parse(fixture("laptopAndExternal.json"));
    sim::World world = *sim::parseWorld(worldText.dump()).world;
    QtScheduler scheduler;
    sim::SimMachine machine{world, scheduler};
    Log log{Log::Options{dir / "Lumora.log", test::fixedLocalTime, nullptr}};
    std::mutex mutex;
    std::vector<std::pair<DisplayID, DisplayChange>> events;
};

TEST_F(WorldWatcherTest, AnEditedWorldFileIsAHardwareChange) {
    sim::WorldWatcher watcher(worldFile, world, machine, log);
    ASSERT_TRUE(online(2));

    json next = worldText;
    next["displays"][1]["online"] = false;
    next["cursor"] = json::array({100, 200});
    save(next.dump(2));

    ASSERT_TRUE(spinUntil([&] { return sawEvent(2, DisplayChange::removed); }));
    EXPECT_FALSE(online(2));
    EXPECT_EQ(machine.displayServer().pointerLocation(), (Point{100, 200}));

    // The watch survives the replacement: plugging back in is seen too.
    {
        std::lock_guard lock(mutex);
        events.clear();
    }
    save(worldText.dump(2));
    ASSERT_TRUE(spinUntil([&] { return sawEvent(2, DisplayChange::added); }));
    EXPECT_TRUE(online(2));

    // Written in place rather than replaced.
    json moved = worldText;
    moved["cursor"] = json::array({300, 400});
    test::writeFile(worldFile, moved.dump(2));
    ASSERT_TRUE(spinUntil([&] {
        return machine.displayServer().pointerLocation() == Point{300, 400};
    }));
    EXPECT_TRUE(ignoredLines().empty());
}

TEST_F(WorldWatcherTest, ABrokenWorldFileIsLoggedOnceAndTheMachineStaysAsItWas) {
    sim::WorldWatcher watcher(worldFile, world, machine, log);
    const json before = machine.state();

    save("{ \"displays\": [ {");
    const std::string error = sim::loadWorldFile(worldFile).error;
    ASSERT_FALSE(error.empty());
    ASSERT_TRUE(spinUntil([&] { return !ignoredLines().empty(); }));
    // Saved again, still broken the same way: no second line.
    save("{ \"displays\": [ {");
    spinFor(std::chrono::milliseconds(sim::WorldWatcher::kSettleMilliseconds * 4));
    EXPECT_EQ(ignoredLines(), std::vector<std::string>{std::string(test::kFixedStamp) +
                                                       " sim: world file ignored: " + error});
    EXPECT_EQ(machine.state(), before);
    {
        std::lock_guard lock(mutex);
        EXPECT_TRUE(events.empty());
    }

    json next = worldText;
    next["displays"][2]["online"] = false;
    save(next.dump());
    ASSERT_TRUE(spinUntil([&] { return sawEvent(3, DisplayChange::removed); }));
    EXPECT_FALSE(online(3));
    EXPECT_TRUE(online(2));
}

}  // namespace
}  // namespace lumora::app
