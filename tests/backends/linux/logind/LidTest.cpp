#include <QDBusVariant>
#include <QVariantMap>
#include <filesystem>
#include <map>

#include "LogindBus.h"
#include "logind/HingeSensor.h"
#include "logind/LidSwitchInhibitor.h"
#include "logind/LinuxLidSensor.h"
#include "logind/LogindPower.h"
#include "logind/LogindSystemEvents.h"

namespace lumora::test {
namespace {

namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;

void plant(const fs::path& root, const Files& files) {
    for (const auto& [name, text] : files) {
        fs::create_directories((root / name).parent_path());
        writeFile(root / name, text);
    }
}

// 1° in radians, as the HID hinge sensor states its scale.
const std::string kDegree = "0.017453293\n";

TEST(HingeSensor, FindsTheHingeAndRejectsJunk) {
    const auto hinge = [](const std::string& raw, const std::string& scale = kDegree) {
        return Files{{"name", "hinge\n"}, {"in_angl_raw", raw}, {"in_angl_scale", scale}};
    };
    struct Case {
        const char* what;
        Files files;  // of iio:device0
        bool found;
        std::optional<std::int64_t> degrees;
    };
    const std::vector<Case> cases = {
        {"named hinge, first channel, shared scale",
         {{"name", "hinge"},
          {"in_angl0_raw", "110\n"},
          {"in_angl1_raw", "5"},
          {"in_angl_scale", kDegree}},
         true,
         110},
        {"labelled channel, own scale",
         {{"in_angl0_label", "keyboard"},
          {"in_angl0_raw", "10"},
          {"in_angl1_label", "hinge\n"},
          {"in_angl1_raw", "95"},
          {"in_angl1_scale", kDegree}},
         true,
         95},
        {"raw and scale with offset",
         {{"in_angl_raw", "80"}, {"in_angl_scale", kDegree}, {"in_angl_offset", "10"}},
         true,
         90},
        {"no scale: radians", {{"name", "hinge"}, {"in_angl_raw", "2"}}, true, 115},
        {"junk raw", hinge("abc"), true, std::nullopt},
        {"trailing junk", hinge("110x"), true, std::nullopt},
        {"scale not a number", hinge("110", "nan"), true, std::nullopt},
        {"more than a turn", hinge("1000"), true, std::nullopt},
        {"negative", hinge("-5"), true, std::nullopt},
        {"unscaled angle of another device",
         {{"name", "resolver"}, {"in_angl_raw", "3"}},
         false,
         std::nullopt},
        {"hinge without an angle",
         {{"name", "hinge"}, {"in_accel_x_raw", "3"}},
         false,
         std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const TempDir sys;
        plant(sys / "iio:device0", c.files);
        const auto channel = lx::findHingeSensor(sys.path());
        ASSERT_EQ(channel.has_value(), c.found);
        if (channel) {
            EXPECT_EQ(lx::readHingeDegrees(*channel), c.degrees);
        }
    }
}

TEST(HingeSensor, LidSensorKeepsTheLastGoodAngle) {
    const TempDir sys;
    const fs::path device = sys / "iio" / "iio:device2";
    plant(device, {{"name", "hinge"}, {"in_angl0_raw", "110"}, {"in_angl_scale", kDegree}});
    Lines log;
    lx::LinuxLidSensor lid(offlineClient(log), {sys / "iio", sys / "input"});
    EXPECT_TRUE(lid.hasHingeSensor() && !lid.hasLidSwitch());
    EXPECT_EQ(lid.open({}), 0);
    EXPECT_EQ(lid.read(/*fresh=*/false), (LidReading{110, std::nullopt}));

    writeFile(device / "in_angl0_raw", "30");
    EXPECT_EQ(lid.read(/*fresh=*/true), (LidReading{30, std::nullopt}));
    writeFile(device / "in_angl0_raw", "garbage");
    EXPECT_EQ(lid.read(/*fresh=*/true), (LidReading{30, std::nullopt}));
    fs::remove(device / "in_angl0_raw");
    EXPECT_EQ(lid.read(/*fresh=*/true), (LidReading{30, std::nullopt}));
    EXPECT_EQ(log, (Lines{"logind: not available (Not connected to D-Bus server)",
                          "lid sensor: hinge angle from " + device.string()}));
}

// Closed or open from logind, but only on a machine whose input devices have a lid switch;
// beside it the hinge angle where there is a sensor too.
TEST_F(LogindTest, LidSwitchReadsAndReportsLidClosed) {
    const TempDir sys;
    plant(sys / "iio" / "iio:device0",
          {{"name", "hinge"}, {"in_angl_raw", "100"}, {"in_angl_scale", kDegree}});
    plant(sys / "input", {{"input0/capabilities/sw", "zz"}, {"input5/capabilities/sw", "0 1\n"}});
    plant(sys / "nolid", {{"input0/capabilities/sw", "2"}, {"input1/capabilities/sw", "junk"}});
    auto logind = bus_->client(log_);
    lx::LinuxLidSensor lid(logind, {sys / "iio", sys / "input"});
    lx::LinuxLidSensor noLid(logind, {sys / "none", sys / "nolid"});
    EXPECT_TRUE(lid.hasLidSwitch());
    EXPECT_FALSE(noLid.available());
    // The mock has no LidClosed yet: not read, one line however often it is polled.
    EXPECT_EQ(lid.read(/*fresh=*/true), (LidReading{100, std::nullopt}));
    EXPECT_EQ(lid.read(/*fresh=*/true), (LidReading{100, std::nullopt}));

    bus_->call(kLogindPath, "AddProperty",
               {kManager, "LidClosed", QVariant::fromValue(QDBusVariant(true))});
    std::vector<LidReading> reports;
    ASSERT_EQ(lid.open([&](const LidReading& r) { reports.push_back(r); }), 0);
    EXPECT_EQ(lid.read(/*fresh=*/false), (LidReading{100, true}));
    bus_->call(kLogindPath, "UpdateProperties", {kManager, QVariantMap{{"LidClosed", false}}});
    EXPECT_TRUE(spinUntil([&] { return !reports.empty(); }));
    EXPECT_EQ(reports, (std::vector<LidReading>{{100, false}}));
    EXPECT_EQ(lid.read(/*fresh=*/true), (LidReading{100, false}));

    // logind without a lid switch: a facility, but nothing to read.
    EXPECT_EQ(noLid.open({}), 0);
    EXPECT_EQ(noLid.read(/*fresh=*/true), LidReading{});
    EXPECT_EQ(log_,
              (Lines{"lid sensor: LidClosed unreadable (no such property LidClosed)",
                     "lid sensor: hinge angle from " + (sys / "iio" / "iio:device0").string() +
                         ", lid switch through logind",
                     "lid sensor: logind, but no lid switch"}));
}

}  // namespace
// logind restarts (an update): meanwhile it is reported absent, and when it is back the lid
// switch and idle sleep are inhibited again and its signals are heard again.
TEST_F(LogindTest, ARestartedLogindGetsTheInhibitorsAgainAndIsHeardAgain) {
    auto logind = bus_->client(log_);
    lx::LidSwitchInhibitor lidSwitch(logind);
    lx::LogindPower power(logind);
    auto idle = power.inhibitIdleSleep("external display");
    ASSERT_NE(idle, nullptr);
    lx::LogindSystemEvents events(logind);
    int wakes = 0;
    events.addObserver(SystemEvent::didWake, [&] { ++wakes; });
    ASSERT_TRUE(lidSwitch.take());
    ASSERT_EQ(bus_->inhibitors(), 2);

    bus_->restartLogind();
    ASSERT_EQ(bus_->failure, "");
    EXPECT_TRUE(spinUntil([&] { return bus_->inhibitors() == 2; }))
        << "both taken from the new logind";
    EXPECT_TRUE(logind->available());
    EXPECT_EQ(log_, (Lines{"logind: gone from the bus; waiting for it to come back",
                           "logind: back on the bus"}));
    bus_->call(kLogindPath, "EmitSignal", {kManager, "PrepareForSleep", "b", QVariantList{false}});
    EXPECT_TRUE(spinUntil([&] { return wakes == 1; }));

    lidSwitch.release();
    idle.reset();
    bus_->restartLogind();
    EXPECT_TRUE(spinUntil([&] { return logind->available(); }));
    EXPECT_FALSE(bus_->inhibited()) << "given back, so not taken again";
}

}  // namespace lumora::test
