#include <gtest/gtest.h>

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
using Event = std::pair<DisplayID, DisplayChange>;

class WorldWatcherTest : public test::QtAppTest {
  protected:
    WorldWatcherTest() {
        test::writeFile(worldFile, worldText.dump(2));
        machine.displayServer().addReconfigurationHandler([this](DisplayID id, DisplayChange c) {
            std::lock_guard lock(mutex);
            events.emplace_back(id, c);
        });
    }

    // As editors save: a new file renamed over the old one.
    void save(const std::string& text) {
        test::writeFile(dir / "world.json.tmp", text);
        fs::rename(dir / "world.json.tmp", worldFile);
    }
    bool heard(Event event) {
        return spinUntil([&] {
            std::lock_guard lock(mutex);
            return std::find(events.begin(), events.end(), event) != events.end();
        });
    }
    std::vector<std::string> ignoredLines() {
        log.flush();
        std::vector<std::string> out;
        for (auto& line : log.tail(100))
            if (line.find("sim: world file ignored: ") != std::string::npos) out.push_back(line);
        return out;
    }

    test::TempDir dir;
    fs::path worldFile = dir / "world.json";
    json worldText = json::parse(test::readFile(test::fixture("laptopAndExternal.json")));
    sim::World world = *sim::parseWorld(worldText.dump()).world;
    QtScheduler scheduler;
    sim::SimMachine machine{world, scheduler};
    Log log{Log::Options{dir / "Lumora.log", test::fixedLocalTime, nullptr}};
    std::mutex mutex;
    std::vector<Event> events;
};

TEST_F(WorldWatcherTest, AnEditedWorldFileIsAHardwareChangeAndABrokenOneIsLoggedOnce) {
    sim::WorldWatcher watcher(worldFile, world, machine, log);
    const json before = machine.state();

    save("{ \"displays\": [ {");
    const std::string error = sim::loadWorldFile(worldFile).error;
    ASSERT_FALSE(error.empty());
    ASSERT_TRUE(spinUntil([&] { return !ignoredLines().empty(); }));
    save("{ \"displays\": [ {");  // still broken the same way: no second line
    spinFor(std::chrono::milliseconds(sim::WorldWatcher::kSettleMilliseconds * 4));
    EXPECT_EQ(ignoredLines(), std::vector<std::string>{std::string(test::kFixedStamp) +
                                                       " sim: world file ignored: " + error});
    EXPECT_EQ(machine.state(), before);
    {
        std::lock_guard lock(mutex);
        EXPECT_TRUE(events.empty());
    }

    json next = worldText;
    next["displays"][1]["online"] = false;
    next["cursor"] = json::array({100, 200});
    save(next.dump(2));
    ASSERT_TRUE(heard({2, DisplayChange::removed}));
    EXPECT_EQ(machine.state()["displays"][1]["online"], false);
    EXPECT_EQ(machine.displayServer().pointerLocation(), (Point{100, 200}));

    // The watch survives the replacement: plugging back in is seen too, and so is a file
    // written in place rather than replaced.
    save(worldText.dump(2));
    ASSERT_TRUE(heard({2, DisplayChange::added}));
    next = worldText;
    next["cursor"] = json::array({300, 400});
    test::writeFile(worldFile, next.dump(2));
    EXPECT_TRUE(spinUntil([&] {
        return machine.displayServer().pointerLocation() == Point{300, 400};
    }));
    EXPECT_EQ(ignoredLines().size(), 1u);
}

}  // namespace
}  // namespace lumora::app
