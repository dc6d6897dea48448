#include "x11/X11DisplayServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

#include "X11Fixture.h"
#include "backends/linux/edid/EdidBuilder.h"
#include "edid/StableDisplayID.h"
#include "x11/X11DisplaySleep.h"
#include "x11/X11Input.h"

namespace lumora::lx {
namespace {

using test::EdidSpec;
using test::makeEdid;

const EdidSpec kOffice{.vendor = 0x10AC,
                       .product = 0xA0C3,
                       .serial = 12345,
                       .name = "Office",
                       .widthCm = 60,
                       .heightCm = 34};

std::int32_t modeId(const std::string& hex) {
    return static_cast<std::int32_t>(std::stol(hex, nullptr, 16));
}

using Events = std::vector<std::pair<DisplayID, DisplayChange>>;

// Identifiers are hashes: compare changes in their order.
Events sorted(Events events) {
    std::sort(events.begin(), events.end());
    return events;
}

class X11DisplayServerTest : public test::X11Fixture {
  protected:
    // DUMMY0 alone, or with DUMMY1 at 1920x1080 to its right as the "Office" monitor.
    void openBackend(bool withOffice = true) {
        if (withOffice) {
            light("DUMMY1", "1920x1080", {"--right-of", "DUMMY0"});
            witness->setEdid("DUMMY1", makeEdid(kOffice));
        }
        ds = X11DisplayServer::open(display());
        ASSERT_TRUE(ds);
        dummy0 = stableDisplayID({"DUMMY0", std::nullopt});
        office = stableDisplayID({"DUMMY1", parseEdid(makeEdid(kOffice))});
    }

    ConfigStatus configure(const std::function<void(DisplayConfiguration&)>& changes) {
        auto config = ds->beginConfiguration();
        if (!config) return -1;
        changes(*config);
        return config->complete(ConfigureOption::permanently);
    }

    test::XrandrOutput output(const std::string& name) {
        return test::xrandr(display()).outputs[name];
    }

    std::unique_ptr<X11DisplayServer> ds;
    DisplayID dummy0 = 0;
    DisplayID office = 0;
};

TEST_F(X11DisplayServerTest, ListsOutputsWithEdidFactsAndTheModesXrandrShows) {
    // Interlaced and double-scanned modes too: their refresh is not dot clock over frame size,
    // and xrandr's own figure for them is compared below.
    run({"xrandr", "--newmode", "1920x1080i", "74.25", "1920", "2008", "2052", "2200", "1080",
         "1084", "1094", "1125", "interlace", "+hsync", "+vsync"});
    run({"xrandr", "--newmode", "320x240d", "12.6", "320", "336", "384", "400", "240", "245", "246",
         "262", "doublescan"});
    run({"xrandr", "--addmode", "DUMMY1", "1920x1080i"});
    run({"xrandr", "--addmode", "DUMMY1", "320x240d"});
    openBackend();
    EXPECT_EQ(ds->onlineIDs(), (std::vector<DisplayID>{dummy0, office}));
    EXPECT_EQ(ds->mainDisplay(), dummy0);
    EXPECT_EQ(ds->persistentKey(office), "4268-41155-12345") << "the EDID's numbers";
    EXPECT_EQ(ds->physicalSize(office), (Size{600, 340}));
    EXPECT_FALSE(ds->isBuiltin(office));
    EXPECT_FALSE(ds->isAsleep(office));
    EXPECT_EQ(ds->bounds(office), (Rect{{2048, 0}, {1920, 1080}}));

    const auto seen = test::xrandr(display());
    const std::vector<test::XrandrMode>& modes = seen.modes.at("DUMMY1");
    const std::vector<PlatformMode> ours = ds->allModes(office);
    ASSERT_EQ(ours.size(), modes.size());
    for (std::size_t i = 0; i < modes.size(); ++i) {
        EXPECT_EQ(ours[i].id, modeId(modes[i].id));
        EXPECT_EQ(ours[i].width, modes[i].width);
        EXPECT_EQ(ours[i].height, modes[i].height);
        EXPECT_NEAR(ours[i].refresh, modes[i].refresh, 0.005) << modes[i].id;
    }
    const auto current = ds->currentMode(office);
    ASSERT_TRUE(current);
    EXPECT_EQ(current->id, modeId(seen.outputs.at("DUMMY1").mode));
    EXPECT_DOUBLE_EQ(current->refresh, 173e6 / (2576.0 * 1120.0));

    std::vector<std::pair<std::optional<DisplayID>, std::string>> screens;
    for (const Screen& s : ds->screens())
        screens.emplace_back(s.displayID, s.localizedName);
    EXPECT_EQ(screens, (decltype(screens){{dummy0, "DUMMY0"}, {office, "Office"}}));
    // The pointer shares the screens' coordinates.
    run({"xdotool", "mousemove", "3000", "200"});
    EXPECT_EQ(ds->pointerLocation(), (Point{3000, 200}));

    // Dark outputs and unknown identifiers answer with nothing.
    const DisplayID unknown = 12345;
    EXPECT_EQ(ds->bounds(unknown), Rect{});
    EXPECT_EQ(ds->currentMode(unknown), std::nullopt);
    EXPECT_TRUE(ds->allModes(unknown).empty());
    EXPECT_EQ(ds->gammaRampSize(unknown), 0u);
}

TEST_F(X11DisplayServerTest, SetsModesAndThePrimaryAndRefusesWhatItDoesNotKnow) {
    openBackend();
    const auto before = test::xrandr(display());
    const auto small =
        std::find_if(before.modes.at("DUMMY1").begin(), before.modes.at("DUMMY1").end(),
                     [](const auto& m) { return m.width == 1280 && m.height == 1024; });
    ASSERT_NE(small, before.modes.at("DUMMY1").end());

    {
        auto config = ds->beginConfiguration();
        EXPECT_EQ(config->setMode(office, 0x7FFFFFF), kConfigIllegalArgument);
        EXPECT_EQ(config->setMode(777, modeId(small->id)), kConfigIllegalArgument);
        EXPECT_EQ(config->setOrigin(777, 0, 0), kConfigIllegalArgument);
        EXPECT_EQ(config->setMain(777), kConfigIllegalArgument);
        EXPECT_EQ(config->setEnabled(777, true), kConfigIllegalArgument);
        EXPECT_EQ(config->setMode(office, modeId(small->id)), kConfigOK);
        config->cancel();
        EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
        EXPECT_EQ(output("DUMMY1").geometry, "1920x1080+2048+0") << "cancelled";
    }

    EXPECT_EQ(configure([&](auto& c) { c.setMode(office, modeId(small->id)); }), kConfigOK);
    auto seen = test::xrandr(display());
    EXPECT_EQ(seen.outputs.at("DUMMY1").geometry, "1280x1024+2048+0");
    EXPECT_EQ(seen.outputs.at("DUMMY1").mode, small->id);
    EXPECT_EQ(seen.screen, "3328 x 1536") << "the screen is the bounding box";
    EXPECT_EQ(ds->currentMode(office)->width, 1280);

    EXPECT_EQ(configure([&](auto& c) { c.setMain(office); }), kConfigOK);
    seen = test::xrandr(display());
    EXPECT_TRUE(seen.outputs.at("DUMMY1").primary);
    EXPECT_FALSE(seen.outputs.at("DUMMY0").primary);
    EXPECT_EQ(ds->mainDisplay(), office);
    EXPECT_EQ(ds->bounds(office), (Rect{{2048, 0}, {1280, 1024}})) << "nothing moves";

    // A new arrangement starts at the screen's corner, whatever the origins say.
    EXPECT_EQ(configure([&](auto& c) {
                  c.setOrigin(office, 100, 50);
                  c.setOrigin(dummy0, 1380, 150);
              }),
              kConfigOK);
    seen = test::xrandr(display());
    EXPECT_EQ(seen.outputs.at("DUMMY1").geometry, "1280x1024+0+0");
    EXPECT_EQ(seen.outputs.at("DUMMY0").geometry, "2048x1536+1280+100");
    EXPECT_EQ(ds->bounds(dummy0), (Rect{{1280, 100}, {2048, 1536}}));

    // Beyond the largest screen the server allows: refused whole, nothing moves.
    EXPECT_EQ(configure([&](auto& c) { c.setOrigin(dummy0, 40000, 0); }), kConfigIllegalArgument);
    EXPECT_EQ(test::xrandr(display()).outputs.at("DUMMY0").geometry, "2048x1536+1280+100");
}

TEST_F(X11DisplayServerTest, MirrorsAndUnmirrorsRememberingWhoMirrorsWhom) {
    openBackend();
    EXPECT_EQ(
        configure([&](auto& c) { EXPECT_EQ(c.setMirror(office, office), kConfigIllegalArgument); }),
        kConfigOK);

    // The monitor shows the primary's picture, in the primary's mode.
    EXPECT_EQ(configure([&](auto& c) { c.setMirror(office, dummy0); }), kConfigOK);
    auto seen = test::xrandr(display());
    EXPECT_EQ(seen.outputs.at("DUMMY1").geometry, "2048x1536+0+0");
    EXPECT_EQ(seen.outputs.at("DUMMY1").mode, seen.outputs.at("DUMMY0").mode);
    EXPECT_EQ(ds->mirrorSource(office), dummy0);
    EXPECT_EQ(ds->mirrorSource(dummy0), 0u);
    ASSERT_EQ(ds->screens().size(), 1u);
    EXPECT_EQ(ds->screens()[0].displayID, dummy0);
    // Another client makes the mirror primary.
    run({"xrandr", "--output", "DUMMY1", "--primary"});
    EXPECT_TRUE(test::pumpUntil(
        ds->connectionFd(), [&] { ds->dispatchPending(); },
        [&] { return ds->mainDisplay() == office; }));
    EXPECT_EQ(ds->mirrorSource(office), dummy0) << "remembered, whoever is primary";
    run({"xrandr", "--output", "DUMMY0", "--primary"});

    // Ending it puts the monitor to the right of the others.
    EXPECT_EQ(configure([&](auto& c) { c.setMirror(office, 0); }), kConfigOK);
    EXPECT_EQ(output("DUMMY1").geometry, "2048x1536+2048+0");
    EXPECT_EQ(ds->mirrorSource(office), 0u);
    EXPECT_EQ(ds->screens().size(), 2u);

    // The primary moved onto the monitor mirrors it: remembered, though RandR cannot tell.
    EXPECT_EQ(configure([&](auto& c) { c.setMirror(dummy0, office); }), kConfigOK);
    EXPECT_EQ(output("DUMMY0").geometry, "2048x1536+2048+0");
    EXPECT_EQ(ds->mirrorSource(dummy0), office);
    EXPECT_EQ(ds->mirrorSource(office), 0u);
    // Another instance remembers nothing: the non-primary output mirrors the primary.
    EXPECT_EQ(X11DisplayServer::open(display())->mirrorSource(office), dummy0);
}

// The monitor's EDID is garbled: it counts as none.
TEST_F(X11DisplayServerTest, MirrorsInTheNearestCommonModeWhenTheSourcesModeIsMissing) {
    light("DUMMY1", "1920x1080", {"--right-of", "DUMMY0"});
    std::vector<std::uint8_t> garbage = makeEdid(kOffice);
    garbage[20] ^= 0x5A;  // the checksum no longer holds
    witness->setEdid("DUMMY1", garbage);
    // A mode only DUMMY0 has, at 50 Hz: DUMMY1 takes its own 1920x1080 instead.
    run({"xrandr", "--newmode", "1920x1080_50", "141.50", "1920", "2032", "2232", "2544", "1080",
         "1083", "1088", "1114", "-hsync", "+vsync"});
    run({"xrandr", "--addmode", "DUMMY0", "1920x1080_50"});
    run({"xrandr", "--output", "DUMMY0", "--mode", "1920x1080_50"});
    openBackend(false);
    const DisplayID monitor = stableDisplayID({"DUMMY1", std::nullopt});
    EXPECT_EQ(ds->onlineIDs(), (std::vector<DisplayID>{dummy0, monitor}));
    EXPECT_EQ(ds->persistentKey(monitor), "DUMMY1") << "as good as no EDID: the connector";
    EXPECT_EQ(ds->screens().at(1).localizedName, "DUMMY1");
    const std::string sixty = output("DUMMY1").mode;
    const std::string fifty = output("DUMMY0").mode;

    EXPECT_EQ(configure([&](auto& c) { c.setMirror(monitor, dummy0); }), kConfigOK);
    const auto seen = test::xrandr(display());
    EXPECT_EQ(seen.outputs.at("DUMMY1").geometry, "1920x1080+0+0");
    EXPECT_EQ(seen.outputs.at("DUMMY1").mode, sixty);
    EXPECT_EQ(seen.outputs.at("DUMMY0").mode, fifty);
    EXPECT_EQ(ds->mirrorSource(monitor), dummy0);
}

TEST_F(X11DisplayServerTest, SwitchesOffAndBackOnExactlyWhereItWas) {
    light("DUMMY1", "1280x1024", {"--pos", "2048x100"});
    witness->setEdid("DUMMY1", makeEdid(kOffice));
    openBackend(false);
    const test::XrandrOutput lit = output("DUMMY1");
    ASSERT_EQ(lit.geometry, "1280x1024+2048+100");

    EXPECT_EQ(configure([&](auto& c) { c.setEnabled(office, false); }), kConfigOK);
    EXPECT_EQ(output("DUMMY1"), (test::XrandrOutput{true, false, "", ""}));
    EXPECT_EQ(ds->onlineIDs(), std::vector<DisplayID>{dummy0});

    EXPECT_EQ(configure([&](auto& c) { EXPECT_EQ(c.setEnabled(office, true), kConfigOK); }),
              kConfigOK);
    EXPECT_EQ(output("DUMMY1"), lit);
    EXPECT_EQ(ds->onlineIDs(), (std::vector<DisplayID>{dummy0, office}));

    // Switched off by someone else: it comes back in its preferred mode, right of the others.
    run({"xrandr", "--output", "DUMMY1", "--off"});
    EXPECT_EQ(configure([&](auto& c) { c.setEnabled(office, true); }), kConfigOK);
    EXPECT_EQ(output("DUMMY1").geometry.substr(output("DUMMY1").geometry.find('+')), "+2048+0");
    EXPECT_EQ(ds->currentMode(office)->id, ds->allModes(office).front().id);
}

TEST_F(X11DisplayServerTest, LoadsGammaRampsAndGivesBackTheCalibrationItFound) {
    openBackend();
    ASSERT_EQ(ds->gammaRampSize(dummy0), 256u);
    // Another tool's calibration, in place before Lumora touches the ramps.
    test::Witness::Ramps calibration;
    for (std::uint16_t i = 0; i < 256; ++i) {
        calibration.red.push_back(static_cast<std::uint16_t>(i * 200));
        calibration.green.push_back(static_cast<std::uint16_t>(i * 190));
        calibration.blue.push_back(static_cast<std::uint16_t>(i * 180));
    }
    witness->setGamma("DUMMY0", calibration);
    const test::Witness::Ramps otherDisplay = witness->gamma("DUMMY1");

    GammaRamps half;
    for (int i = 0; i < 256; ++i) {
        half.red.push_back(0.5f * static_cast<float>(i) / 255.0f);
        half.green.push_back(1.0f);
        half.blue.push_back(i == 0 ? -1.0f : 2.0f);  // clamped to 0…1
    }
    EXPECT_EQ(ds->setGamma(dummy0, half), kConfigOK);
    EXPECT_EQ(ds->setGamma(dummy0, half), kConfigOK) << "twice: the first original is kept";
    const test::Witness::Ramps loaded = witness->gamma("DUMMY0");
    ASSERT_EQ(loaded.red.size(), 256u);
    EXPECT_EQ(loaded.red[255], 32768);
    EXPECT_EQ(loaded.red[51], 6554);  // 0.1 of full scale
    EXPECT_EQ(loaded.green[7], 65535);
    EXPECT_EQ(loaded.blue[0], 0);
    EXPECT_EQ(loaded.blue[1], 65535);
    EXPECT_EQ(witness->gamma("DUMMY1"), otherDisplay) << "the other display is untouched";

    GammaRamps shortRamps{{0.f, 1.f}, {0.f, 1.f}, {0.f, 1.f}};
    EXPECT_EQ(ds->setGamma(dummy0, shortRamps), kConfigIllegalArgument);
    EXPECT_EQ(ds->setGamma(777, half), kConfigIllegalArgument);

    ds->resetGamma(dummy0);
    EXPECT_EQ(witness->gamma("DUMMY0"), calibration);
    ds->resetGamma(office);  // never changed: nothing to give back
    EXPECT_EQ(witness->gamma("DUMMY1"), otherDisplay);
}

TEST_F(X11DisplayServerTest, EachBurstOfEventsBecomesOneChangePerDisplay) {
    openBackend();
    run({"xrandr", "--addmode", "DUMMY2", "1024x768"});
    Events heard, alsoHeard;
    const int first = ds->addReconfigurationHandler(
        [&](DisplayID id, DisplayChange c) { heard.emplace_back(id, c); });
    ds->addReconfigurationHandler(
        [&](DisplayID id, DisplayChange c) { alsoHeard.emplace_back(id, c); });
    ds->dispatchPending();
    heard.clear();
    alsoHeard.clear();
    const DisplayID third = stableDisplayID({"DUMMY2", std::nullopt});
    auto burst = [&](const std::vector<std::string>& argv) {
        heard.clear();
        run(argv);  // every event of the burst is in the socket once xrandr is done
        EXPECT_TRUE(test::pumpUntil(
            ds->connectionFd(), [&] { ds->dispatchPending(); }, [&] { return !heard.empty(); }));
        return sorted(heard);
    };

    EXPECT_EQ(burst({"xrandr", "--output", "DUMMY1", "--mode", "1280x1024", "--output", "DUMMY2",
                     "--mode", "1024x768", "--right-of", "DUMMY1"}),
              sorted({{office, DisplayChange::changed}, {third, DisplayChange::added}}));
    EXPECT_EQ(alsoHeard.size(), 2u);
    ds->dispatchPending();
    EXPECT_EQ(heard.size(), 2u) << "nothing more for the same burst";

    EXPECT_EQ(burst({"xrandr", "--output", "DUMMY2", "--off"}),
              (Events{{third, DisplayChange::removed}}));

    // A new primary changes the old one and the new one, though nothing moves.
    EXPECT_EQ(burst({"xrandr", "--output", "DUMMY1", "--primary"}),
              sorted({{dummy0, DisplayChange::changed}, {office, DisplayChange::changed}}));

    // Another monitor on the same connector is another display.
    ds->removeReconfigurationHandler(first);
    heard.clear();
    alsoHeard.clear();
    witness->setEdid("DUMMY1", makeEdid({.serial = 999}));
    EXPECT_TRUE(test::pumpUntil(
        ds->connectionFd(), [&] { ds->dispatchPending(); }, [&] { return alsoHeard.size() >= 2; }));
    const DisplayID other = stableDisplayID({"DUMMY1", parseEdid(makeEdid({.serial = 999}))});
    EXPECT_EQ(sorted(alsoHeard),
              sorted({{office, DisplayChange::removed}, {other, DisplayChange::added}}));
    EXPECT_TRUE(heard.empty()) << "removed handlers hear nothing";
}

TEST_F(X11DisplayServerTest, ALostServerTakesEveryDisplayWithItAndNothingCrashes) {
    openBackend();
    std::set<DisplayID> removed;
    ds->addReconfigurationHandler([&](DisplayID id, DisplayChange c) {
        if (c == DisplayChange::removed) removed.insert(id);
    });
    witness.reset();  // a plain Xlib client would end the program with its server
    server->kill();
    ds->dispatchPending();
    EXPECT_EQ(removed, (std::set<DisplayID>{dummy0, office}));
    EXPECT_TRUE(ds->onlineIDs().empty());
    EXPECT_EQ(ds->mainDisplay(), 0u);
    EXPECT_EQ(ds->pointerLocation(), std::nullopt);
    EXPECT_EQ(ds->beginConfiguration(), nullptr);
    EXPECT_EQ(ds->setGamma(dummy0, GammaRamps{}), kConfigIllegalArgument);
    ds->resetGamma(dummy0);
}

TEST(X11Backend, OpensNothingWithoutAServer) {
    const std::string nowhere = ":65000";
    EXPECT_EQ(X11DisplayServer::open(nowhere), nullptr);
    EXPECT_EQ(X11Input::open(nowhere), nullptr);
    EXPECT_EQ(X11DisplaySleep::open(nowhere), nullptr);
}

}  // namespace
}  // namespace lumora::lx
