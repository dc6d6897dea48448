// The IIO ambient light sensor over temporary trees.
#include <gtest/gtest.h>

#include "SysfsTree.h"
#include "hw/IioLightSensor.h"

namespace lumora::lx {
namespace {

constexpr const char* kDevices = "bus/iio/devices/";

TEST(IioLightSensorTest, TheFirstDeviceWithIlluminanceGivesLux) {
    test::SysfsTree tree;
    tree.file(std::string(kDevices) + "iio:device0/in_accel_x_raw", "12\n");  // no light
    tree.file(std::string(kDevices) + "iio:device10/in_illuminance_input", "999\n");
    tree.file(std::string(kDevices) + "iio:device2/in_illuminance_raw", "150\n");
    tree.file(std::string(kDevices) + "iio:device2/in_illuminance_scale", "0.5\n");
    tree.file(std::string(kDevices) + "iio:device2/in_illuminance_offset", "10\n");
    IioLightSensor sensor(tree.root());
    ASSERT_TRUE(sensor.available());
    EXPECT_EQ(sensor.lux(), 80.0);  // device 2 before 10: (150 + 10) × 0.5

    // A processed reading wins; the device-wide scale serves a channel without its own.
    tree.file(std::string(kDevices) + "iio:device2/in_illuminance_input", "321.5\n");
    EXPECT_EQ(sensor.lux(), 321.5);
}

TEST(IioLightSensorTest, MissingOrGarbledReadingsAreNothing) {
    test::SysfsTree tree;
    EXPECT_FALSE(IioLightSensor(tree.root()).available());
    EXPECT_EQ(IioLightSensor(tree.root()).lux(), std::nullopt);

    const std::string dir = std::string(kDevices) + "iio:device0/";
    tree.file(dir + "in_illuminance_raw", "40\n");
    tree.file(dir + "in_scale", "2\n");
    IioLightSensor sensor(tree.root());
    EXPECT_EQ(sensor.lux(), 80.0);
    for (const char* bad : {"", "abc\n", "12abc\n", "-5\n", "nan\n"}) {
        tree.file(dir + "in_illuminance_raw", bad);
        EXPECT_EQ(sensor.lux(), std::nullopt) << bad;
    }
}

}  // namespace
}  // namespace lumora::lx
