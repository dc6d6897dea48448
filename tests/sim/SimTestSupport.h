#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"

namespace lumora::sim::test {

// The example world of the simulated-world description.
inline constexpr std::string_view kExampleWorld = R"({
  "main": 1,
  "cursor": [2000, 300],
  "lid": { "sensor": true, "angle": 110 },
  "displays": [
    { "id": 1, "name": "Built-in Retina Display", "builtin": true, "vendor": 1552, "model": 41240,
      "origin": [0, 0], "sizeMM": [302, 196], "backlight": 0.7, "mode": 10,
      "modes": [ { "id": 10, "width": 1512, "height": 982, "pixelWidth": 3024, "pixelHeight": 1964, "refresh": 120 } ] },
    { "id": 2, "name": "Office Monitor", "vendor": 4268, "model": 41234, "serial": 12345,
      "origin": [1512, 0], "sizeMM": [597, 336], "mode": 20,
      "modes": [ { "id": 20, "width": 2560, "height": 1440, "pixelWidth": 2560, "pixelHeight": 1440, "refresh": 60 } ],
      "ddc": { "vcp": { "0x10": [50, 100], "0x12": [75, 100], "0x62": [30, 100], "0x60": [15, 255], "0xD6": [1, 5] } } },
    { "id": 3, "name": "Projector", "vendor": 9999, "model": 7, "origin": [4072, 0], "mode": 30,
      "modes": [ { "id": 30, "width": 1920, "height": 1080, "pixelWidth": 1920, "pixelHeight": 1080, "refresh": 60 } ] }
  ]
})";

inline World worldFrom(std::string_view text) {
    WorldResult result = parseWorld(text);
    EXPECT_TRUE(result.world.has_value()) << result.error;
    return result.world.value_or(World{});
}

// A virtual display of two modes at 50 Hz; HiDPI doubles its pixels.
inline VirtualDisplayDescriptor descriptor(bool hiDPI) {
    VirtualDisplayDescriptor d;
    d.name = hiDPI ? "Lumora HiDPI" : "Lumora 1920×1080";
    d.modes = {{1920, 1080}, {1280, 720}};
    d.maxPixelsWide = hiDPI ? 3840 : 1920;
    d.maxPixelsHigh = hiDPI ? 2160 : 1080;
    d.sizeMillimeters = Size{600, 340};
    d.refresh = 50;
    d.hiDPI = hiDPI;
    d.product = hiDPI ? 2 : 1;
    d.serial = 77;
    return d;
}

// Every reconfiguration event the machine delivers, in order.
struct EventLog {
    std::vector<std::pair<DisplayID, DisplayChange>> events;
    void attach(DisplayServer& server) {
        server.addReconfigurationHandler(
            [this](DisplayID id, DisplayChange change) { events.emplace_back(id, change); });
    }
};

// A machine on virtual time, built per test.
struct Bench {
    explicit Bench(World world) : machine(std::move(world), scheduler) {}
    VirtualScheduler scheduler;
    SimMachine machine;
};

}  // namespace lumora::sim::test
