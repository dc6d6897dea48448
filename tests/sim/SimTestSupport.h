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
