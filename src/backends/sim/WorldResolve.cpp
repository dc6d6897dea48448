#include "sim/WorldResolve.h"

#include <algorithm>

namespace lumora::sim {

namespace {

const WorldDisplay* findMain(const World& world) {
    if (world.main) {
        for (const auto& d : world.displays) {
            if (d.id == *world.main) return &d;
        }
    }
    for (const auto& d : world.displays) {
        if (d.online) return &d;
    }
    return world.displays.empty() ? nullptr : &world.displays.front();
}

}  // namespace

Size worldDisplaySize(const WorldDisplay& display) {
    auto mode = std::find_if(display.modes.begin(), display.modes.end(), [&](const WorldMode& m) {
        return display.mode && m.id == *display.mode;
    });
    if (mode == display.modes.end()) return {};
    Size size{static_cast<double>(mode->width), static_cast<double>(mode->height)};
    if (display.rotation == 90 || display.rotation == 270) std::swap(size.width, size.height);
    return size;
}

void resolveWorld(World& world) {
    for (auto& d : world.displays) {
        if (!d.mode && !d.modes.empty()) d.mode = d.modes.front().id;
    }

    // Displays without an origin continue the row to the right of the one before them.
    Point next;
    for (auto& d : world.displays) {
        if (!d.origin) d.origin = next;
        next = Point{d.origin->x + worldDisplaySize(d).width, d.origin->y};
    }

    const WorldDisplay* main = findMain(world);
    if (main) {
        world.main = main->id;
        const Point shift = *main->origin;
        for (auto& d : world.displays)
            d.origin = Point{d.origin->x - shift.x, d.origin->y - shift.y};
        if (!world.cursor) {
            Size size = worldDisplaySize(*main);
            world.cursor = Point{size.width / 2, size.height / 2};
        }
    }
    if (!world.cursor) world.cursor = Point{};

    const bool laptop = std::any_of(world.displays.begin(), world.displays.end(),
                                    [](const WorldDisplay& d) { return d.builtin; });
    if (!world.lid && laptop) world.lid = WorldLid{};
}

}  // namespace lumora::sim
