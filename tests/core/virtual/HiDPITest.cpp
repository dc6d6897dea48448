#include <gtest/gtest.h>

#include "core/display/DisplayScenario.h"
#include "virtual/HiDPI.h"

namespace lumora {
namespace {

using nlohmann::json;
using Lines = std::vector<std::string>;
using Sizes = std::vector<HiDPI::PixelSize>;

constexpr const char* kOfficeKey = "4268-41234-12345";

// "1920x1080 1728x972 ..." for a compact table.
std::string text(const Sizes& sizes) {
    std::string out;
    for (const auto& [width, height] : sizes)
        out += (out.empty() ? "" : " ") + std::to_string(width) + "x" + std::to_string(height);
    return out;
}

TEST(HiDPIModesTest, PointSizesFromTheNativeResolution) {
    const std::pair<HiDPI::PixelSize, const char*> cases[] = {
        {{1920, 1080},
         "1920x1080 1728x972 1536x864 1440x810 1280x720 1200x674 1152x648 "
         "1080x608 960x540"},
        // 3840 doubled is exactly the 8K bound, so it stays.
        {{3840, 2160},
         "3840x2160 3456x1944 3072x1728 2880x1620 2560x1440 2400x1350 2304x1296 "
         "2160x1214 1920x1080"},
        // 0.6 and below fall under the 800-point floor.
        {{1280, 1024}, "1280x1024 1152x922 1024x818 960x768 852x682 800x640"},
        // Only the halves of an 8K-wide panel fit; nonsense sizes give nothing.
        {{7680, 4320}, "3840x2160"},
        {{640, 480}, ""},
        {{INT64_MAX, INT64_MIN}, ""},
        {{1920, -1080}, ""}};
    for (const auto& [native, sizes] : cases)
        EXPECT_EQ(text(HiDPI::pointModes(native)), sizes) << native.first << "x" << native.second;
}

class HiDPITest : public test::DisplayScenario {
  protected:
    void startHiDPI() {
        hidpi = std::make_unique<HiDPI>(*displays, machine->virtualDisplays(), scheduler, defaults,
                                        log);
    }
    std::optional<std::vector<std::string>> storedKeys() const {
        return defaults.stringArray(HiDPI::kEnabledKey);
    }
    DisplayServer& server() { return machine->displayServer(); }

    std::unique_ptr<HiDPI> hidpi;
};

TEST_F(HiDPITest, KeyAndNativeSize) {
    start(R"({ "displays": [
      { "id": 6, "vendor": 1, "model": 2, "serial": 4294967295, "modes": [
          { "id": 60, "width": 1600, "height": 900 }, { "id": 61, "width": 1200, "height": 1200 },
          { "id": 62, "width": 1280, "height": 720, "pixelWidth": 2560, "pixelHeight": 1440,
            "usable": false } ] },
      { "id": 7, "modes": [
          { "id": 70, "width": 1200, "height": 1200 }, { "id": 71, "width": 1600, "height": 900 } ] } ] })");
    EXPECT_EQ(HiDPI::key(server(), 6), "1-2-4294967295");
    // Unusable modes count; of two equal areas the earlier wins.
    EXPECT_EQ(HiDPI::nativeSize(server(), 6), (HiDPI::PixelSize{2560, 1440}));
    EXPECT_EQ(HiDPI::nativeSize(server(), 7), (HiDPI::PixelSize{1200, 1200}));
    EXPECT_EQ(HiDPI::nativeSize(server(), 8), std::nullopt);
}

TEST_F(HiDPITest, MonitorMirrorsItsVirtualDisplayOneSecondLater) {
    startFixture(kMonitors);
    startHiDPI();
    ASSERT_TRUE(hidpi->enable(2));
    EXPECT_EQ(hidpi->virtualByExternal(), (std::map<DisplayID, DisplayID>{{2, 100}}));
    EXPECT_EQ(displays->virtualIDs(), (std::set<DisplayID>{100}));
    EXPECT_EQ(storedKeys(), (std::vector<std::string>{kOfficeKey}));
    EXPECT_EQ(state()["virtualDisplays"],
              json::parse(R"([{"id": 100, "name": "Office Monitor HiDPI", "product": 2,
                               "serial": 31860, "hiDPI": true}])"));  // 12345 ^ 0x4C4D
    EXPECT_EQ(server().physicalSize(100), (Size{597, 336}));
    EXPECT_EQ(server().allModes(100).at(0), (PlatformMode{1, 2560, 1440, 5120, 2880, 60, true}));

    // A second later the monitor goes to its native size at 1x; the virtual display takes the
    // point size nearest to the 1920 the monitor had.
    scheduler.advance(1.0);
    EXPECT_EQ(stateOf(2)["mirrorOf"], 100);
    EXPECT_EQ(stateOf(2)["mode"], 20);
    EXPECT_EQ(stateOf(100)["mode"], 4);
    EXPECT_EQ(logged(), (Lines{"display 2: mode 2560×1440 · 60 Hz -> ok",
                               "display 100: mode 1920×1080 HiDPI · 60 Hz -> ok",
                               "hidpi: display 2 now mirrors HiDPI virtual 100 (9 sizes)"}));

    // A second switch-on finds the session.
    EXPECT_TRUE(hidpi->enable(2));
    EXPECT_EQ(state()["virtualDisplays"].size(), 1u);
    EXPECT_EQ(scheduler.pendingCount(), 0u);

    // Switching off ends the mirror and releases the display, but the choice is kept.
    hidpi->disable(2, /*remember=*/false);
    EXPECT_EQ(stateOf(2)["mirrorOf"], 0);
    EXPECT_TRUE(state()["virtualDisplays"].empty());
    EXPECT_TRUE(displays->virtualIDs().empty());
    EXPECT_FALSE(hidpi->isOn(2));
    EXPECT_EQ(storedKeys(), (std::vector<std::string>{kOfficeKey}));
    // Forgetting the choice also works without a session; only a session logs.
    hidpi->disable(2, /*remember=*/true);
    EXPECT_EQ(storedKeys(), std::vector<std::string>{});
    EXPECT_EQ(logged(), (Lines{"hidpi: display 2 back to 1×"}));
}

TEST_F(HiDPITest, UnmeasuredSlowProjectorAndATieBetweenSizes) {
    startFixture(kMonitors);
    startHiDPI();
    ASSERT_TRUE(hidpi->enable(3));
    // No physical size: 110 pixels per inch. At least 30 Hz whatever the projector runs.
    EXPECT_NEAR(server().physicalSize(100).width, 1920 * 25.4 / 110, 1e-9);
    EXPECT_EQ(server().allModes(100).at(0).refresh, 30);

    // 1632 lies halfway between 1728 and 1536: the larger, earlier size wins.
    scheduler.advance(1.0);
    EXPECT_EQ(logged(), (Lines{"display 3: mode 1920×1080 · 24 Hz -> ok",
                               "display 100: mode 1728×972 HiDPI · 30 Hz -> ok",
                               "hidpi: display 3 now mirrors HiDPI virtual 100 (9 sizes)"}));
}

TEST_F(HiDPITest, DisplaysThatCannotHaveASession) {
    startFixture(kMonitors);
    startHiDPI();
    EXPECT_FALSE(hidpi->enable(1));   // built in
    EXPECT_FALSE(hidpi->enable(77));  // not there
    EXPECT_FALSE(hidpi->enable(4));
    EXPECT_EQ(logged(), (Lines{"hidpi: display 4 640×480: no usable HiDPI size"}));

    startFixture(kMonitors, /*virtualDisplays=*/false);
    startHiDPI();
    EXPECT_FALSE(hidpi->enable(2));
    EXPECT_EQ(logged(), (Lines{"hidpi: virtual screen for display 2 failed"}));
    EXPECT_EQ(hidpi->virtualFor(2), std::nullopt);
    EXPECT_FALSE(storedKeys());
    EXPECT_EQ(scheduler.pendingCount(), 0u);
}

TEST_F(HiDPITest, MirroringStepSkipsAnEndedSessionOrAGoneManager) {
    startFixture(kMonitors);
    startHiDPI();
    hidpi->enable(2);
    scheduler.advance(0.5);
    hidpi->disable(2, true);
    // The new session gets the same virtual display id; the old step must not serve it.
    hidpi->enable(2);
    scheduler.advance(0.6);
    EXPECT_EQ(stateOf(2)["mirrorOf"], 0);
    EXPECT_EQ(logged(), (Lines{"hidpi: display 2 back to 1×"}));
    scheduler.advance(0.4);
    EXPECT_EQ(stateOf(2)["mirrorOf"], 100);

    hidpi->enable(3);
    hidpi.reset();  // releases every virtual display before the projector's step is due
    scheduler.advance(1.0);
    EXPECT_EQ(stateOf(3)["mode"], 31);
    EXPECT_EQ(stateOf(2)["mirrorOf"], 0);
    EXPECT_TRUE(state()["virtualDisplays"].empty());
    EXPECT_EQ(logged().back(), "hidpi: display 2 now mirrors HiDPI virtual 100 (9 sizes)");
}

TEST_F(HiDPITest, RememberedMonitorReturnsWhenPluggedInAndReconciled) {
    defaults.setStringArray(HiDPI::kEnabledKey, {kOfficeKey});
    startFixture(kMonitors);
    machine->setOnline(2, false);
    startHiDPI();
    hidpi->reconcile();
    EXPECT_FALSE(hidpi->isOn(2));
    EXPECT_TRUE(state()["virtualDisplays"].empty());

    machine->setOnline(2, true);
    hidpi->reconcile();
    EXPECT_EQ(hidpi->virtualFor(2), 100u);
    scheduler.advance(1.0);
    EXPECT_EQ(stateOf(2)["mirrorOf"], 100);

    machine->setOnline(2, false);
    hidpi->reconcile();
    EXPECT_FALSE(hidpi->isOn(2));
    EXPECT_TRUE(state()["virtualDisplays"].empty());
    EXPECT_EQ(storedKeys(), (std::vector<std::string>{kOfficeKey}));
    EXPECT_EQ(logged().back(), "hidpi: display 2 gone, its virtual screen released");

    // Stopping everything at quit keeps the choice for the next start, silently.
    machine->setOnline(2, true);
    hidpi->enable(3);
    hidpi->reconcile();
    scheduler.advance(1.0);
    logged();
    hidpi->stopAll();
    EXPECT_EQ(stateOf(2)["mirrorOf"], 0);
    EXPECT_EQ(stateOf(3)["mirrorOf"], 0);
    EXPECT_TRUE(state()["virtualDisplays"].empty());
    EXPECT_TRUE(hidpi->virtualByExternal().empty());
    EXPECT_TRUE(logged().empty());
    startHiDPI();
    hidpi->reconcile();
    EXPECT_TRUE(hidpi->isOn(2) && hidpi->isOn(3));
}

TEST_F(HiDPITest, UndecodableStoredChoiceCountsAsNoneAndIsOverwritten) {
    for (const json& stored : {json{kOfficeKey, 7}, json(kOfficeKey), json::object()}) {
        SCOPED_TRACE(stored.dump());
        defaults.set(HiDPI::kEnabledKey, stored);
        startFixture(kMonitors);
        startHiDPI();
        hidpi->reconcile();
        EXPECT_FALSE(hidpi->isOn(2));
        hidpi->enable(3);
        EXPECT_EQ(storedKeys(), (std::vector<std::string>{"9999-7-0"}));
        hidpi.reset();
    }
}

}  // namespace
}  // namespace lumora
