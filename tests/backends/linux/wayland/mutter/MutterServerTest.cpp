#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "backends/linux/wayland/mutter/MutterSession.h"
#include "wayland/mutter/MutterDisplayServer.h"

namespace lumora::wl {
namespace {

using wltest::MutterSession;
using Events = std::vector<std::pair<DisplayID, DisplayChange>>;

class MutterServerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!mutter_.problem().empty()) GTEST_SKIP() << mutter_.problem();
        static std::atomic<int> connections{0};
        busName_ = QStringLiteral("lumora-test-%1").arg(++connections);
        server_ = MutterDisplayServer::create(
            mutter_.connect(busName_), [this](const std::string& line) { log_.push_back(line); });
        ASSERT_NE(server_, nullptr);
        server_->addReconfigurationHandler(
            [this](DisplayID id, DisplayChange change) { events_.emplace_back(id, change); });
        ASSERT_EQ(server_->onlineIDs().size(), 2u);
        first_ = idAt(0);
        second_ = idAt(1920);
        ASSERT_NE(first_, 0u);
        ASSERT_NE(second_, 0u);
    }

    void TearDown() override {
        server_.reset();
        QDBusConnection::disconnectFromBus(busName_);
    }

    DisplayID idAt(double x) const {
        for (DisplayID id : server_->onlineIDs()) {
            if (server_->bounds(id).origin == Point{x, 0}) return id;
        }
        return 0;
    }

    ConfigStatus configure(const std::function<void(DisplayConfiguration&)>& changes,
                           ConfigureOption option = ConfigureOption::permanently) {
        auto config = server_->beginConfiguration();
        if (!config) return -1;
        changes(*config);
        return config->complete(option);
    }

    MutterSession mutter_;
    QString busName_;
    std::unique_ptr<MutterDisplayServer> server_;
    std::vector<std::string> log_;
    Events events_;
    DisplayID first_ = 0;   // Meta-0, primary at the origin
    DisplayID second_ = 0;  // Meta-1, right of it
};

TEST_F(MutterServerTest, ListsTheVirtualMonitors) {
    EXPECT_EQ(server_->mainDisplay(), first_);
    EXPECT_EQ(server_->bounds(second_), (Rect{{1920, 0}, {1920, 1080}}));
    const auto mode = server_->currentMode(first_);
    ASSERT_TRUE(mode.has_value());
    EXPECT_EQ(
        (std::vector<std::int64_t>{mode->width, mode->height, mode->pixelWidth, mode->pixelHeight}),
        (std::vector<std::int64_t>{1920, 1080, 1920, 1080}));
    EXPECT_DOUBLE_EQ(mode->refresh, 60.0);
    EXPECT_EQ(server_->allModes(first_), std::vector<PlatformMode>{*mode});
    EXPECT_EQ(server_->persistentKey(second_), "monitor:MetaVendor/MetaVirtualMonitor/0x01");
    ASSERT_EQ(server_->screens().size(), 2u);
    EXPECT_EQ(server_->screens()[0].localizedName, "MetaVendor");
    EXPECT_EQ(server_->bounds(12345), Rect{});
    EXPECT_TRUE(log_.empty());
}

TEST_F(MutterServerTest, MovesTheMainDisplayAndPositions) {
    ASSERT_EQ(configure([&](auto& c) { ASSERT_EQ(c.setMain(second_), kConfigOK); }), kConfigOK);
    EXPECT_TRUE(mutter_.logicalOf("Meta-1")->primary);
    EXPECT_EQ(server_->mainDisplay(), second_);
    EXPECT_EQ(events_,
              (Events{{first_, DisplayChange::changed}, {second_, DisplayChange::changed}}));

    // Above instead of beside: the layout is moved back to start at (0, 0), as Mutter wants.
    ASSERT_EQ(configure([&](auto& c) { c.setOrigin(second_, 0, -1080); }), kConfigOK);
    EXPECT_EQ(server_->bounds(second_).origin, (Point{0, 0}));
    EXPECT_EQ(server_->bounds(first_).origin, (Point{0, 1080}));
    EXPECT_EQ(mutter_.logicalOf("Meta-0")->y, 1080);
    EXPECT_TRUE(log_.empty());
}

TEST_F(MutterServerTest, SwitchesAMonitorOffAndBackOn) {
    ASSERT_EQ(configure([&](auto& c) { ASSERT_EQ(c.setEnabled(second_, false), kConfigOK); },
                        ConfigureOption::forSession),
              kConfigOK);
    EXPECT_FALSE(mutter_.logicalOf("Meta-1").has_value());
    EXPECT_EQ(server_->onlineIDs(), std::vector<DisplayID>{first_});
    EXPECT_EQ(events_, (Events{{second_, DisplayChange::removed}}));

    events_.clear();
    ASSERT_EQ(configure([&](auto& c) { ASSERT_EQ(c.setEnabled(second_, true), kConfigOK); },
                        ConfigureOption::forSession),
              kConfigOK);
    ASSERT_TRUE(mutter_.logicalOf("Meta-1").has_value());
    EXPECT_EQ(mutter_.logicalOf("Meta-1")->x, 1920);
    EXPECT_EQ(server_->bounds(second_).origin, (Point{1920, 0}));
    EXPECT_EQ(events_, (Events{{second_, DisplayChange::added}}));
    EXPECT_TRUE(log_.empty());
}

TEST_F(MutterServerTest, MirrorsAndStopsMirroring) {
    ASSERT_EQ(configure([&](auto& c) { ASSERT_EQ(c.setMirror(second_, first_), kConfigOK); }),
              kConfigOK);
    const auto logical = mutter_.logicalMonitors();
    ASSERT_EQ(logical.size(), 1u);
    EXPECT_EQ(logical[0].connectors, (std::vector<std::string>{"Meta-0", "Meta-1"}));
    EXPECT_EQ(server_->mirrorSource(second_), first_);
    EXPECT_EQ(server_->mirrorSource(first_), 0u);
    EXPECT_EQ(server_->bounds(second_), server_->bounds(first_));
    EXPECT_EQ(server_->screens().size(), 1u);

    ASSERT_EQ(configure([&](auto& c) { c.setMirror(second_, 0); }), kConfigOK);
    EXPECT_EQ(mutter_.logicalOf("Meta-1")->x, 1920);
    EXPECT_EQ(server_->mirrorSource(second_), 0u);
    EXPECT_TRUE(log_.empty());
}

TEST_F(MutterServerTest, RefusalIsOneLogLineAndChangesNothing) {
    // A gap between the monitors: Mutter wants them adjacent.
    EXPECT_EQ(configure([&](auto& c) { c.setOrigin(second_, 5000, 0); }), kConfigRefused);
    EXPECT_EQ(log_, std::vector<std::string>{
                        "mutter: ApplyMonitorsConfig failed (org.freedesktop.DBus.Error."
                        "InvalidArgs: Logical monitors not adjacent)"});
    EXPECT_EQ(mutter_.logicalOf("Meta-1")->x, 1920);
    EXPECT_EQ(server_->bounds(second_).origin, (Point{1920, 0}));
    EXPECT_TRUE(events_.empty());

    // Unknown displays and modes are refused before anything is sent.
    auto config = server_->beginConfiguration();
    EXPECT_EQ(config->setMode(first_, 777), kConfigIllegalArgument);
    EXPECT_EQ(config->setMain(12345), kConfigIllegalArgument);
    EXPECT_EQ(config->setMirror(first_, first_), kConfigIllegalArgument);
    EXPECT_EQ(config->setEnabled(12345, true), kConfigIllegalArgument);
    EXPECT_EQ(config->complete(ConfigureOption::forSession), kConfigOK);
}

TEST_F(MutterServerTest, NoGammaOnVirtualMonitorsButDisplaySleep) {
    EXPECT_EQ(server_->gammaRampSize(first_), 0u);
    EXPECT_EQ(server_->setGamma(first_, GammaRamps{{1.0f}, {1.0f}, {1.0f}}), kConfigUnavailable);
    server_->resetGamma(first_);
    EXPECT_EQ(log_, std::vector<std::string>{
                        "display " + std::to_string(first_) +
                        ": software dimming is not available on this display (the compositor "
                        "gives no gamma ramps for it)"});

    ASSERT_TRUE(server_->sleepDisplays());
    EXPECT_TRUE(server_->isAsleep(first_));
    EXPECT_EQ(mutter_.gdbus("org.freedesktop.DBus.Properties.Get",
                            "org.gnome.Mutter.DisplayConfig PowerSaveMode"),
              "(<3>,)\n");
    ASSERT_TRUE(server_->wakeDisplays());
    EXPECT_FALSE(server_->isAsleep(first_));
}

TEST_F(MutterServerTest, FollowsChangesMadeByOthers) {
    const std::string result = mutter_.gdbus(
        "org.gnome.Mutter.DisplayConfig.ApplyMonitorsConfig",
        "2 1 \"[(0,0,1.0,0,false,[('Meta-0','1920x1080@60.000',@a{sv} {})]),"
        "(1920,0,1.0,0,true,[('Meta-1','1920x1080@60.000',@a{sv} {})])]\" \"@a{sv} {}\"");
    ASSERT_EQ(result, "()\n");
    ASSERT_TRUE(wltest::processEventsUntil([&] { return server_->mainDisplay() == second_; }));
    EXPECT_EQ(events_,
              (Events{{first_, DisplayChange::changed}, {second_, DisplayChange::changed}}));
}

TEST(MutterServerCreate, NothingWithoutMutterOnTheBus) {
    MutterSession bus(MutterSession::Kind::emptyBus);
    if (!bus.problem().empty()) GTEST_SKIP() << bus.problem();
    std::vector<std::string> log;
    EXPECT_EQ(MutterDisplayServer::create(bus.connect(QStringLiteral("lumora-test-empty")),
                                          [&](const std::string& line) { log.push_back(line); }),
              nullptr);
    QDBusConnection::disconnectFromBus(QStringLiteral("lumora-test-empty"));
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].rfind(
                  "mutter: GetCurrentState failed (org.freedesktop.DBus.Error.ServiceUnknown", 0),
              0u)
        << log[0];
}

}  // namespace
}  // namespace lumora::wl
