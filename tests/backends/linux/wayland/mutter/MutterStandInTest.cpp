#include <gtest/gtest.h>

#include <QCoreApplication>
#include <regex>
#include <string>
#include <vector>

#include "backends/linux/wayland/mutter/MutterSession.h"
#include "edid/StableDisplayID.h"
#include "wayland/mutter/MutterDisplayServer.h"

namespace lumora::wl {
namespace {

using wltest::MutterSession;

// What headless Mutter cannot show, against a stand-in of DisplayConfig: a monitor with an
// EDID and a CRTC with four-entry gamma ramps, and configurations refused for a stale serial.
class MutterStandInTest : public ::testing::Test {
  protected:
    void start(const std::string& parameters) {
        standIn_.emplace(MutterSession::Kind::standIn, parameters);
        if (!standIn_->problem().empty()) GTEST_SKIP() << standIn_->problem();
        server_ = MutterDisplayServer::create(
            standIn_->connect(kBusName), [this](const std::string& line) { log_.push_back(line); });
        ASSERT_NE(server_, nullptr);
        ASSERT_EQ(server_->onlineIDs().size(), 1u);
        id_ = server_->onlineIDs()[0];
    }

    void TearDown() override {
        server_.reset();
        QDBusConnection::disconnectFromBus(kBusName);
    }

    // The calls that changed something, as the stand-in saw them.
    std::vector<std::string> calls() const {
        const std::string out = standIn_->gdbus("org.freedesktop.DBus.Mock.GetTestLog");
        static const std::regex entry("'([^']*)'");
        std::vector<std::string> result;
        for (auto it = std::sregex_iterator(out.begin(), out.end(), entry);
             it != std::sregex_iterator(); ++it)
            result.push_back((*it)[1]);
        return result;
    }

    const QString kBusName = QStringLiteral("lumora-test-standin");
    std::optional<MutterSession> standIn_;
    std::unique_ptr<MutterDisplayServer> server_;
    std::vector<std::string> log_;
    DisplayID id_ = 0;
};

TEST_F(MutterStandInTest, IdentityFromTheEdidAndGammaOnTheCrtc) {
    start("{}");
    // The EDID's numbers, not the texts ("DELL U2415", "ABC123"), name the monitor.
    EXPECT_EQ((std::vector<std::uint32_t>{server_->vendor(id_), server_->model(id_),
                                          server_->serial(id_)}),
              (std::vector<std::uint32_t>{0x10AC, 0xA0C4, 0x01020304}));
    // The ID the X11 backend gives the same monitor on any port.
    EXPECT_EQ(id_, lx::stableDisplayID(
                       {"HDMI-A-2",
                        lx::EdidInfo{.vendor = 0x10AC, .product = 0xA0C4, .serial = 0x01020304}}));
    EXPECT_EQ(server_->screens().at(0).localizedName, "Dell 24\"");

    ASSERT_EQ(server_->gammaRampSize(id_), 4u);
    const GammaRamps ramps{
        {0.0f, 0.5f, 1.0f, 0.25f}, {0.0f, 0.0f, 0.0f, 0.0f}, {1.0f, 1.5f, -1.0f, 1.0f}};
    EXPECT_EQ(server_->setGamma(id_, ramps), kConfigOK);
    EXPECT_EQ(server_->setGamma(id_, GammaRamps{{1.0f}, {1.0f}, {1.0f}}), kConfigIllegalArgument);
    server_->resetGamma(id_);
    server_->resetGamma(id_);  // nothing left to restore: no call
    EXPECT_EQ(calls(), (std::vector<std::string>{
                           "gamma crtc=7 r=0,32768,65535,16384 g=0,0,0,0 b=65535,65535,0,65535",
                           "gamma crtc=7 r=0,21845,43690,65535 g=0,21845,43690,65535 "
                           "b=0,21845,43690,65535"}));
    EXPECT_TRUE(log_.empty());
}

TEST_F(MutterStandInTest, AStaleSerialIsReadAgainAndTriedOnce) {
    struct Case {
        int staleAnswers;
        ConfigStatus status;
        std::vector<std::string> calls;
        std::vector<std::string> log;
    };
    const std::string apply1 = "apply serial=1 method=2 0,0*:DP-1=1920x1200@59.950";
    const std::string apply2 = "apply serial=2 method=2 0,0*:DP-1=1920x1200@59.950";
    const std::vector<Case> cases = {
        {0, kConfigOK, {apply1}, {}},
        {1, kConfigOK, {apply1, apply2}, {}},
        {2,
         kConfigRefused,
         {apply1, apply2},
         {"mutter: ApplyMonitorsConfig failed (org.freedesktop.DBus.Error.AccessDenied: The "
          "requested configuration is based on stale information)"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.staleAnswers);
        TearDown();
        log_.clear();
        start("{\"stale\": " + std::to_string(c.staleAnswers) + "}");
        if (IsSkipped()) return;
        auto config = server_->beginConfiguration();
        ASSERT_NE(config, nullptr);
        ASSERT_EQ(config->setMain(id_), kConfigOK);
        EXPECT_EQ(config->complete(ConfigureOption::permanently), c.status);
        EXPECT_EQ(calls(), c.calls);
        EXPECT_EQ(log_, c.log);
    }
}

// gnome-shell restarts and DisplayConfig leaves the bus for a moment: meanwhile nothing can be
// configured; when it is back the displays are read again and configuring works again.
TEST_F(MutterStandInTest, DisplayConfigLeavingAndComingBackIsFollowed) {
    start("{}");
    if (IsSkipped()) return;
    int changes = 0;
    server_->addReconfigurationHandler([&](DisplayID, DisplayChange) { ++changes; });
    standIn_->kill();
    ASSERT_TRUE(wltest::waitFor(
        [&] {
            QCoreApplication::processEvents();
            return !server_->present();
        },
        5));
    EXPECT_EQ(server_->beginConfiguration(), nullptr);

    ASSERT_TRUE(standIn_->restartStandIn());
    ASSERT_TRUE(wltest::waitFor(
        [&] {
            QCoreApplication::processEvents();
            return server_->present();
        },
        5));
    EXPECT_EQ(server_->onlineIDs(), std::vector<DisplayID>{id_});
    auto config = server_->beginConfiguration();
    ASSERT_NE(config, nullptr);
    ASSERT_EQ(config->setMain(id_), kConfigOK);
    EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
    EXPECT_EQ(calls(),
              (std::vector<std::string>{"apply serial=1 method=2 0,0*:DP-1=1920x1200@59.950"}))
        << "the new DisplayConfig's serial, read after it came back";
    EXPECT_EQ(log_, (std::vector<std::string>{
                        "mutter: DisplayConfig left the bus; displays cannot be configured "
                        "until it returns",
                        "mutter: DisplayConfig is back; reading the displays again"}));
    EXPECT_EQ(changes, 0) << "the same monitor as before";
}

}  // namespace
}  // namespace lumora::wl
