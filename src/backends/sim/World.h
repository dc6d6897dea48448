#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Types.h"

namespace lumora::sim {

// The simulated world, as read from a world file (see docs/simulated-world.md). A parsed or
// default world comes back resolved: every default filled in, `main` at (0,0).

struct WorldMode {
    std::int32_t id = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t pixelWidth = 0;
    std::int64_t pixelHeight = 0;
    double refresh = 0;
    bool usable = true;
    friend bool operator==(const WorldMode&, const WorldMode&) = default;
};

struct WorldDdc {
    bool answers = true;         // false: DDC/CI switched off in the monitor's menu, reads fail
    bool edid = true;            // false: EDID reads fail
    int failFirst = 0;           // the first N read attempts of each request fail
    bool forgetsOnWake = false;  // each wake returns the controls to `vcp`
    double wakeDeafSeconds = 0;  // after each wake, DDC/CI is ignored this long
    double replyDelay = 0.040;   // a reply is ready this long after its request
    double quietTime = 0;        // messages sooner than this after its last reply are ignored
    int corruptReplies = 0;      // the first N replies carry a flipped bit (checksum kept)
    std::optional<std::string> capabilities;  // answered in fragments; absent: not answered
    // code -> (current, maximum); default brightness/contrast/volume 50/75/30 of 100
    std::map<std::uint8_t, std::pair<std::uint16_t, std::uint16_t>> vcp{
        {0x10, {50, 100}}, {0x12, {75, 100}}, {0x62, {30, 100}}};
    friend bool operator==(const WorldDdc&, const WorldDdc&) = default;
};

struct WorldDisplay {
    DisplayID id = 0;
    std::optional<std::string> name;  // the screen's localized name; absent = none
    bool builtin = false;
    std::uint32_t vendor = 0;
    std::uint32_t model = 0;
    std::uint32_t serial = 0;
    bool online = true;  // plugged in
    bool asleep = false;
    std::optional<Point> origin;  // absent: placed to the right of the previous display
    int rotation = 0;
    Size sizeMM;
    std::vector<WorldMode> modes;
    std::optional<std::int32_t> mode;  // absent: the first mode
    double backlight = 0.5;            // built-in only
    std::optional<WorldDdc> ddc;
    friend bool operator==(const WorldDisplay&, const WorldDisplay&) = default;
};

struct WorldLid {
    bool sensor = true;  // false: no sensor manager at all
    bool device = true;  // false: a manager but no sensor device
    std::int64_t angle = 110;
    friend bool operator==(const WorldLid&, const WorldLid&) = default;
};

struct World {
    std::optional<DisplayID> main;  // placed at (0,0) on load; default the first online display
    std::optional<Point> cursor;    // default: centre of the main display
    std::optional<WorldLid> lid;    // default: a sensor at 110° when a built-in display exists
    bool virtualDisplays = true;
    bool disconnect = true;
    bool backlightControl = true;
    bool accessibility = true;
    // Every increase while the machine runs is one sleep and wake.
    std::int64_t wakes = 0;
    bool gammaResetOnWake = false;   // each wake puts every gamma table back to identity
    std::optional<double> lightLux;  // "lightSensor": {"lux": N}; absent: no sensor
    std::optional<double> clock;     // UTC seconds since 1970; absent: the real time
    std::vector<WorldDisplay> displays;
    friend bool operator==(const World&, const World&) = default;
};

// Parsing never throws: either a world or one line saying what is wrong.
struct WorldResult {
    std::optional<World> world;
    std::string error;
};

WorldResult parseWorld(std::string_view jsonText);
// "YYYY-MM-DDTHH:MM:SSZ" as seconds since 1970-01-01T00:00:00Z; nothing for any other text.
std::optional<double> parseUtcTime(std::string_view text);
// The error line names the file.
WorldResult loadWorldFile(const std::filesystem::path& file);
// A laptop with its panel, one DDC monitor and one monitor without DDC.
World defaultWorld();

}  // namespace lumora::sim
