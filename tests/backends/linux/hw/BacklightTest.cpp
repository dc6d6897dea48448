// The sysfs backlight over temporary trees: which device, what it reads, what it writes.
#include <gtest/gtest.h>

#include <cmath>

#include "SysfsTree.h"
#include "hw/SysfsBacklight.h"

namespace lumora::lx {
namespace {

using Device = std::pair<std::string, std::optional<std::string>>;  // name, type

void addDevice(test::SysfsTree& tree, const Device& device) {
    const auto dir = "class/backlight/" + device.first;
    tree.file(dir + "/max_brightness", "100\n");
    if (device.second) tree.file(dir + "/type", *device.second + "\n");
}

TEST(SysfsBacklightTest, ChoosesFirmwareThenPlatformThenRawThenByName) {
    const std::vector<std::pair<std::vector<Device>, std::string>> cases = {
        {{{"intel_backlight", "raw"}, {"acpi_video0", "firmware"}, {"dell_uart", "platform"}},
         "acpi_video0"},
        {{{"intel_backlight", "raw"}, {"thinkpad_screen", "platform"}}, "thinkpad_screen"},
        {{{"nv_backlight", "raw"}, {"amdgpu_bl1", "raw"}, {"odd", "sideways"}}, "amdgpu_bl1"},
        {{{"odd", "sideways"}, {"notype", std::nullopt}}, "notype"},
    };
    for (const auto& [devices, chosen] : cases) {
        test::SysfsTree tree;
        for (const auto& d : devices)
            addDevice(tree, d);
        SysfsBacklight backlight({.sysfsRoot = tree.root(), .setter = nullptr});
        EXPECT_EQ(backlight.device(), chosen);
        EXPECT_TRUE(backlight.hasGet() && backlight.hasCanChange()) << chosen;
    }
}

TEST(SysfsBacklightTest, NoDeviceMeansNoEntryPoints) {
    test::SysfsTree tree;
    SysfsBacklight backlight({.sysfsRoot = tree.root(),
                              .setter = [](const std::string&, std::uint32_t) { return true; }});
    float level = 0.3f;
    EXPECT_EQ(backlight.device(), std::nullopt);
    EXPECT_FALSE(backlight.hasGet() || backlight.hasSet() || backlight.hasCanChange());
    EXPECT_EQ(backlight.get(1, level), SysfsBacklight::kNoDevice);
    EXPECT_EQ(backlight.set(1, 0.5f), SysfsBacklight::kNoDevice);
    EXPECT_FALSE(backlight.canChange(1));
    EXPECT_EQ(level, 0.3f);
}

TEST(SysfsBacklightTest, ReadsTheLevelAndCallsJunkUnreadable) {
    struct Case {
        std::optional<std::string> actual, brightness, max;
        std::optional<float> level;  // nothing: unreadable
    };
    const std::optional<std::string> none;
    const std::vector<Case> cases = {
        {"50\n", "10\n", "100\n", 0.5f},
        {none, "30\n", "60\n", 0.5f},       // no actual_brightness: the requested level
        {"junk", "25\n", "100\n", 0.25f},   // a driver that cannot read back
        {"150\n", "100\n", "100\n", 1.0f},  // above the maximum: not believed
        {"abc", "-1\n", "100\n", std::nullopt},
        {"50\n", "50\n", "0\n", std::nullopt},
        {"50\n", "50\n", "-100\n", std::nullopt},
        {"50\n", "50\n", "2147483648\n", std::nullopt},
        {"50\n", "50\n", none, std::nullopt},
        {std::string(10000, '7'), " 50", "100\n", std::nullopt},
    };
    for (const auto& c : cases) {
        test::SysfsTree tree;
        const std::string dir = "class/backlight/intel_backlight/";
        tree.file(dir + "type", "raw\n");
        if (c.actual) tree.file(dir + "actual_brightness", *c.actual);
        if (c.brightness) tree.file(dir + "brightness", *c.brightness);
        if (c.max) tree.file(dir + "max_brightness", *c.max);
        SysfsBacklight backlight({.sysfsRoot = tree.root(), .setter = nullptr});
        float level = -1;
        const auto status = backlight.get(1, level);
        const auto label = c.actual.value_or("-").substr(0, 8) + " / " + c.max.value_or("-");
        if (c.level) {
            EXPECT_EQ(status, 0) << label;
            EXPECT_FLOAT_EQ(level, *c.level) << label;
        } else {
            EXPECT_EQ(status, SysfsBacklight::kUnreadable) << label;
            EXPECT_EQ(level, -1) << label;
        }
    }
}

class SysfsBacklightSetTest : public ::testing::Test {
  protected:
    void SetUp() override {
        tree.file(dir + "type", "raw\n");
        tree.file(dir + "max_brightness", "937\n");
        tree.file(dir + "actual_brightness", "100\n");
        tree.file(dir + "brightness", "100\n");
    }
    std::string brightnessFile() const {
        return readAttribute(tree.root() / dir / "brightness").value_or("(missing)");
    }

    test::SysfsTree tree;
    const std::string dir = "class/backlight/intel_backlight/";
};

TEST_F(SysfsBacklightSetTest, LevelsBecomeRawValuesForTheSetter) {
    std::vector<std::pair<std::string, std::uint32_t>> sent;
    bool accept = true;
    SysfsBacklight backlight(
        {.sysfsRoot = tree.root(), .setter = [&](const std::string& device, std::uint32_t raw) {
             sent.emplace_back(device, raw);
             return accept;
         }});
    for (float level : {0.5f, 0.0001f, 0.0f, 1.7f, -0.2f, std::nanf("")})
        EXPECT_EQ(backlight.set(1, level), 0) << level;
    accept = false;
    EXPECT_EQ(backlight.set(1, 1.0f), SysfsBacklight::kNotWritten);
    const std::string d = "intel_backlight";
    // 468.5 rounds up; a tiny level keeps the panel lit at 1.
    EXPECT_EQ(sent, (decltype(sent){{d, 469}, {d, 1}, {d, 0}, {d, 937}, {d, 0}, {d, 0}, {d, 937}}));
    EXPECT_EQ(brightnessFile(), "100") << "the setter alone writes";
}

TEST_F(SysfsBacklightSetTest, WithoutSetterTheBrightnessFileIsWritten) {
    SysfsBacklight backlight({.sysfsRoot = tree.root(), .setter = nullptr});
    EXPECT_TRUE(backlight.hasSet() && backlight.canChange(1));
    EXPECT_EQ(backlight.set(1, 0.25f), 0);
    EXPECT_EQ(brightnessFile(), "234");

    std::filesystem::remove(tree.root() / dir / "brightness");
    EXPECT_FALSE(backlight.hasSet() || backlight.canChange(1));
    EXPECT_EQ(backlight.set(1, 0.25f), SysfsBacklight::kNotWritten);
    EXPECT_EQ(brightnessFile(), "(missing)") << "never created";

    tree.file(dir + "brightness", "100\n");
    tree.file(dir + "max_brightness", "garbage\n");
    EXPECT_FALSE(backlight.canChange(1));
    EXPECT_EQ(backlight.set(1, 0.25f), SysfsBacklight::kUnreadable);
    EXPECT_EQ(brightnessFile(), "100");
}

}  // namespace
}  // namespace lumora::lx
