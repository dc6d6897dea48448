#include <gtest/gtest.h>
#include <poll.h>

#include <string>
#include <vector>

#include "backends/linux/wayland/wlroots/SwaySession.h"
#include "wayland/common/WaylandSession.h"
#include "wayland/wlroots/WlrootsDisplayServer.h"

namespace lumora::wl {
namespace {

using wltest::SwaySession;

class WlrootsServerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!sway_.problem().empty()) GTEST_SKIP() << sway_.problem();
        server_ = WlrootsDisplayServer::connect(
            sway_.waylandSocket(), [this](const std::string& line) { log_.push_back(line); });
        ASSERT_NE(server_, nullptr) << "no output management at " << sway_.waylandSocket();
        server_->addReconfigurationHandler(
            [this](DisplayID id, DisplayChange change) { events_.emplace_back(id, change); });
    }

    // What the application's event loop does: wait for the socket, then dispatch.
    bool dispatchUntil(const std::function<bool()>& condition) {
        return wltest::waitFor(
            [&] {
                pollfd fd{server_->connectionFd(), POLLIN, 0};
                if (poll(&fd, 1, 0) > 0) server_->dispatchPending();
                return condition();
            },
            5.0);
    }

    // A second headless output, right of the first.
    void addOutput() {
        sway_.swaymsg("create_output");
        ASSERT_TRUE(dispatchUntil([this] { return server_->onlineIDs().size() == 2; }));
    }

    DisplayID idOfOutputAt(double x, double y) const {
        for (DisplayID id : server_->onlineIDs()) {
            if (server_->bounds(id).origin == Point{x, y}) return id;
        }
        return 0;
    }

    SwaySession sway_;
    std::unique_ptr<WlrootsDisplayServer> server_;
    std::vector<std::string> log_;
    std::vector<std::pair<DisplayID, DisplayChange>> events_;
};

TEST_F(WlrootsServerTest, ReportsTheOutputAsSwayShowsIt) {
    const auto ids = server_->onlineIDs();
    ASSERT_EQ(ids.size(), 1u);
    const DisplayID id = ids[0];
    const auto witness = sway_.output("HEADLESS-1");
    ASSERT_TRUE(witness.is_object());
    const auto& rect = witness["rect"];
    EXPECT_EQ(server_->bounds(id),
              (Rect{{rect["x"].get<double>(), rect["y"].get<double>()},
                    {rect["width"].get<double>(), rect["height"].get<double>()}}));
    const auto mode = server_->currentMode(id);
    ASSERT_TRUE(mode.has_value());
    EXPECT_EQ(mode->pixelWidth, witness["current_mode"]["width"].get<std::int64_t>());
    EXPECT_EQ(mode->pixelHeight, witness["current_mode"]["height"].get<std::int64_t>());
    EXPECT_DOUBLE_EQ(mode->refresh, witness["current_mode"]["refresh"].get<double>() / 1000);
    EXPECT_EQ(server_->allModes(id), std::vector<PlatformMode>{*mode});
    EXPECT_EQ(server_->mainDisplay(), id);
    EXPECT_EQ(server_->persistentKey(id), "monitor:headless/headless/");
    // What wlroots has no notion of is refused before anything is sent.
    auto config = server_->beginConfiguration();
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(config->setMain(id), kConfigUnavailable);
    EXPECT_EQ(config->setMirror(id, 0), kConfigUnavailable);
    EXPECT_EQ(config->setMode(id, 9999), kConfigIllegalArgument);
    EXPECT_EQ(config->setOrigin(id + 1, 0, 0), kConfigIllegalArgument);
    EXPECT_EQ(config->setEnabled(id + 1, false), kConfigIllegalArgument);
    EXPECT_TRUE(log_.empty());

    SessionEnvironment env;
    env.waylandDisplay = sway_.waylandSocket();
    env.globals = advertisedGlobals(sway_.waylandSocket());
    EXPECT_EQ(detectWaylandSession(env), WaylandSession::wlroots);
}

TEST_F(WlrootsServerTest, ReportsAnOutputAddedLaterOnceAndAppliesPositionsAndModes) {
    addOutput();
    // Same make and model as the first: told apart by the connector.
    const DisplayID left = idOfOutputAt(0, 0);
    const DisplayID right = idOfOutputAt(1280, 0);
    ASSERT_NE(left, 0u);
    ASSERT_NE(right, 0u);
    EXPECT_EQ(events_,
              (std::vector<std::pair<DisplayID, DisplayChange>>{{right, DisplayChange::added}}));

    auto config = server_->beginConfiguration();
    ASSERT_EQ(config->setOrigin(right, 0, 720), kConfigOK);
    ASSERT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
    EXPECT_EQ(sway_.output("HEADLESS-2")["rect"]["y"], 720);
    EXPECT_EQ(sway_.output("HEADLESS-2")["rect"]["x"], 0);
    EXPECT_EQ(server_->bounds(right).origin, (Point{0, 720}));

    // Headless outputs have no mode list: a size they ran in stays selectable.
    const std::int32_t original = server_->currentMode(left)->id;
    sway_.swaymsg("output HEADLESS-1 mode 1024x768");
    ASSERT_TRUE(dispatchUntil([&] { return server_->currentMode(left)->pixelWidth == 1024; }));
    ASSERT_EQ(server_->allModes(left).size(), 2u);
    events_.clear();
    config = server_->beginConfiguration();
    ASSERT_EQ(config->setMode(left, original), kConfigOK);
    ASSERT_EQ(config->complete(ConfigureOption::forSession), kConfigOK);
    EXPECT_EQ(sway_.output("HEADLESS-1")["current_mode"]["width"], 1280);
    EXPECT_EQ(server_->currentMode(left)->id, original);
    EXPECT_NE(std::find(events_.begin(), events_.end(), std::pair{left, DisplayChange::changed}),
              events_.end());
    EXPECT_TRUE(log_.empty());
}

TEST_F(WlrootsServerTest, RefusalsAreLoggedAndChangeNothing) {
    const DisplayID id = server_->onlineIDs().at(0);
    addOutput();

    // sway's headless outputs cannot be switched off.
    auto config = server_->beginConfiguration();
    ASSERT_EQ(config->setEnabled(id, false), kConfigOK);
    EXPECT_EQ(config->complete(ConfigureOption::forSession), kConfigRefused);
    EXPECT_EQ(log_,
              std::vector<std::string>{"wlroots: output configuration refused by the compositor"});
    EXPECT_EQ(server_->onlineIDs().size(), 2u);
    EXPECT_EQ(sway_.output("HEADLESS-1")["active"], true);

    // Nor do they take gamma ramps: size 0, said once per display.
    log_.clear();
    EXPECT_EQ(server_->gammaRampSize(id), 0u);
    EXPECT_EQ(server_->gammaRampSize(id), 0u);
    EXPECT_EQ(server_->setGamma(id, GammaRamps{{0.5f}, {0.5f}, {0.5f}}), kConfigUnavailable);
    server_->resetGamma(id);
    EXPECT_EQ(log_, std::vector<std::string>{
                        "display " + std::to_string(id) +
                        ": software dimming is not available on this display (the compositor "
                        "refused gamma control)"});
}

TEST(WlrootsConnect, NothingWithoutACompositor) {
    wltest::TempDir dir;
    EXPECT_EQ(WlrootsDisplayServer::connect((dir.path() / "wayland-9").string(), nullptr), nullptr);
    EXPECT_TRUE(advertisedGlobals((dir.path() / "wayland-9").string()).empty());
}

}  // namespace
}  // namespace lumora::wl
