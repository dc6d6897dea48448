#include "sim/World.h"

#include <array>
#include <charconv>
#include <fstream>
#include <limits>
#include <set>
#include <sstream>

#include <nlohmann/json.hpp>

#include "base/JsonRead.h"
#include "sim/WorldFields.h"
#include "sim/WorldResolve.h"

namespace lumora::sim {

namespace {

using nlohmann::json;
using namespace fields;

// Coordinates and sizes are limited to what a desktop could hold.
constexpr std::int64_t kCoordinateLimit = 1'000'000;
constexpr double kSizeLimitMM = 100'000;
constexpr std::int64_t kPixelLimit = 100'000;
constexpr double kRefreshLimit = 1000;
constexpr std::int64_t kAngleLimit = 360;
// Full sunlight is about 100,000 lux.
constexpr double kMostLux = 1'000'000;

Point readOrigin(const json& value, const std::string& path) {
    auto [x, y] = readPair(value, path, "[x, y]");
    return Point{static_cast<double>(
                     readInteger(*x, indexPath(path, 0), -kCoordinateLimit, kCoordinateLimit)),
                 static_cast<double>(
                     readInteger(*y, indexPath(path, 1), -kCoordinateLimit, kCoordinateLimit))};
}

Point readCursor(const json& value, const std::string& path) {
    auto [x, y] = readPair(value, path, "[x, y]");
    const double limit = static_cast<double>(kCoordinateLimit);
    return Point{readNumber(*x, indexPath(path, 0), -limit, limit),
                 readNumber(*y, indexPath(path, 1), -limit, limit)};
}

// "0x10" or "0XD6": one or two hex digits after the prefix.
std::optional<std::uint8_t> vcpCode(std::string_view key) {
    if (key.size() < 3 || key.size() > 4 || key[0] != '0' || (key[1] != 'x' && key[1] != 'X')) {
        return std::nullopt;
    }
    const std::string_view digits = key.substr(2);
    unsigned code = 0;
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    if (error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
    return checked<std::uint8_t>(code);
}

constexpr std::int64_t kVcpValueLimit = 0xFFFF;
// More failures than any host would retry: every read of the run fails.
constexpr std::int64_t kFailFirstLimit = 1000;
// An hour: longer than any host keeps retrying.
constexpr double kDeafLimit = 3600;
// A monitor slower than a second to answer or to listen again is broken, not slow.
constexpr double kSlowestReply = 1.0;

WorldDdc readDdc(const json& value, const std::string& path) {
    expectObject(value, path);
    onlyKeys(value, path,
             {"answers", "edid", "failFirst", "forgetsOnWake", "wakeDeafSeconds", "replyDelay",
              "quietTime", "corruptReplies", "capabilities", "vcp"});
    WorldDdc ddc;
    if (auto* v = optionalKey(value, "answers"))
        ddc.answers = readBool(*v, keyPath(path, "answers"));
    if (auto* v = optionalKey(value, "edid")) ddc.edid = readBool(*v, keyPath(path, "edid"));
    if (auto* v = optionalKey(value, "failFirst")) {
        ddc.failFirst = readInteger<int>(*v, keyPath(path, "failFirst"), 0, kFailFirstLimit);
    }
    if (auto* v = optionalKey(value, "forgetsOnWake"))
        ddc.forgetsOnWake = readBool(*v, keyPath(path, "forgetsOnWake"));
    if (auto* v = optionalKey(value, "wakeDeafSeconds")) {
        ddc.wakeDeafSeconds = readNumber(*v, keyPath(path, "wakeDeafSeconds"), 0, kDeafLimit);
    }
    if (auto* v = optionalKey(value, "replyDelay"))
        ddc.replyDelay = readNumber(*v, keyPath(path, "replyDelay"), 0, kSlowestReply);
    if (auto* v = optionalKey(value, "quietTime"))
        ddc.quietTime = readNumber(*v, keyPath(path, "quietTime"), 0, kSlowestReply);
    if (auto* v = optionalKey(value, "corruptReplies")) {
        ddc.corruptReplies =
            readInteger<int>(*v, keyPath(path, "corruptReplies"), 0, kFailFirstLimit);
    }
    if (auto* v = optionalKey(value, "capabilities")) {
        if (!v->is_string()) fail(keyPath(path, "capabilities"), "expected a string");
        ddc.capabilities = v->get<std::string>();
    }
    if (auto* v = optionalKey(value, "vcp")) {
        const std::string vcpPath = keyPath(path, "vcp");
        expectObject(*v, vcpPath);
        ddc.vcp.clear();
        for (const auto& [key, entry] : v->items()) {
            const std::string entryPath = keyPath(vcpPath, printable(key));
            auto code = vcpCode(key);
            if (!code) fail(entryPath, "expected a code like \"0x10\"");
            auto [current, maximum] = readPair(entry, entryPath, "[current, maximum]");
            ddc.vcp[*code] = {
                readInteger<std::uint16_t>(*current, indexPath(entryPath, 0), 0, kVcpValueLimit),
                readInteger<std::uint16_t>(*maximum, indexPath(entryPath, 1), 0, kVcpValueLimit)};
        }
    }
    return ddc;
}

WorldMode readMode(const json& value, const std::string& path) {
    expectObject(value, path);
    onlyKeys(value, path,
             {"id", "width", "height", "pixelWidth", "pixelHeight", "refresh", "usable"});
    WorldMode mode;
    mode.id = readInteger<std::int32_t>(required(value, path, "id"), keyPath(path, "id"));
    mode.width =
        readInteger(required(value, path, "width"), keyPath(path, "width"), 1, kPixelLimit);
    mode.height =
        readInteger(required(value, path, "height"), keyPath(path, "height"), 1, kPixelLimit);
    // A mode without pixel sizes draws one pixel per point.
    mode.pixelWidth = mode.width;
    mode.pixelHeight = mode.height;
    if (auto* v = optionalKey(value, "pixelWidth")) {
        mode.pixelWidth = readInteger(*v, keyPath(path, "pixelWidth"), 1, kPixelLimit);
    }
    if (auto* v = optionalKey(value, "pixelHeight")) {
        mode.pixelHeight = readInteger(*v, keyPath(path, "pixelHeight"), 1, kPixelLimit);
    }
    if (auto* v = optionalKey(value, "refresh")) {
        mode.refresh = readNumber(*v, keyPath(path, "refresh"), 0, kRefreshLimit);
    }
    if (auto* v = optionalKey(value, "usable")) mode.usable = readBool(*v, keyPath(path, "usable"));
    return mode;
}

WorldDisplay readDisplay(const json& value, const std::string& path) {
    expectObject(value, path);
    onlyKeys(value, path,
             {"id", "name", "builtin", "vendor", "model", "serial", "online", "asleep", "origin",
              "rotation", "sizeMM", "modes", "mode", "backlight", "ddc"});
    WorldDisplay d;
    // 0 is no display at all on every display server.
    d.id = readInteger<DisplayID>(required(value, path, "id"), keyPath(path, "id"), 1);
    if (auto* v = optionalKey(value, "name")) d.name = readString(*v, keyPath(path, "name"));
    if (auto* v = optionalKey(value, "builtin")) d.builtin = readBool(*v, keyPath(path, "builtin"));
    if (auto* v = optionalKey(value, "vendor"))
        d.vendor = readInteger<std::uint32_t>(*v, keyPath(path, "vendor"));
    if (auto* v = optionalKey(value, "model"))
        d.model = readInteger<std::uint32_t>(*v, keyPath(path, "model"));
    if (auto* v = optionalKey(value, "serial"))
        d.serial = readInteger<std::uint32_t>(*v, keyPath(path, "serial"));
    if (auto* v = optionalKey(value, "online")) d.online = readBool(*v, keyPath(path, "online"));
    if (auto* v = optionalKey(value, "asleep")) d.asleep = readBool(*v, keyPath(path, "asleep"));
    if (auto* v = optionalKey(value, "origin")) d.origin = readOrigin(*v, keyPath(path, "origin"));
    if (auto* v = optionalKey(value, "rotation")) {
        const std::string p = keyPath(path, "rotation");
        const auto r = jsonread::integer<int>(*v);
        if (!r && !v->is_number_integer()) fail(p, "expected an integer");
        if (!r || (*r != 0 && *r != 90 && *r != 180 && *r != 270)) {
            fail(p, "expected 0, 90, 180 or 270");
        }
        d.rotation = *r;
    }
    if (auto* v = optionalKey(value, "sizeMM")) {
        const std::string p = keyPath(path, "sizeMM");
        auto [w, h] = readPair(*v, p, "[width, height]");
        d.sizeMM = Size{readNumber(*w, indexPath(p, 0), 0, kSizeLimitMM),
                        readNumber(*h, indexPath(p, 1), 0, kSizeLimitMM)};
    }

    const std::string modesPath = keyPath(path, "modes");
    const json& modes = required(value, path, "modes");
    if (!modes.is_array() || modes.empty()) fail(modesPath, "expected a non-empty array");
    std::set<std::int32_t> modeIDs;
    for (std::size_t i = 0; i < modes.size(); ++i) {
        d.modes.push_back(readMode(modes[i], indexPath(modesPath, i)));
        if (!modeIDs.insert(d.modes.back().id).second) {
            fail(keyPath(indexPath(modesPath, i), "id"), "repeats an earlier mode's id");
        }
    }
    if (auto* v = optionalKey(value, "mode")) {
        const std::string p = keyPath(path, "mode");
        const auto id = readInteger<std::int32_t>(*v, p);
        if (!modeIDs.contains(id)) fail(p, "no mode with id " + std::to_string(id));
        d.mode = id;
    }
    if (auto* v = optionalKey(value, "backlight"))
        d.backlight = readNumber(*v, keyPath(path, "backlight"), 0, 1);
    if (auto* v = optionalKey(value, "ddc")) d.ddc = readDdc(*v, keyPath(path, "ddc"));
    return d;
}

WorldLid readLid(const json& value, const std::string& path) {
    expectObject(value, path);
    onlyKeys(value, path, {"sensor", "device", "angle"});
    WorldLid lid;
    if (auto* v = optionalKey(value, "sensor")) lid.sensor = readBool(*v, keyPath(path, "sensor"));
    if (auto* v = optionalKey(value, "device")) lid.device = readBool(*v, keyPath(path, "device"));
    if (auto* v = optionalKey(value, "angle")) {
        lid.angle = readInteger(*v, keyPath(path, "angle"), -kAngleLimit, kAngleLimit);
    }
    return lid;
}

World readWorld(const json& root) {
    if (!root.is_object()) fail("", "expected a JSON object at the top");
    onlyKeys(root, "",
             {"main", "cursor", "lid", "virtualDisplays", "disconnect", "backlightControl",
              "accessibility", "wakes", "gammaResetOnWake", "lightSensor", "clock", "displays"});
    World world;
    const json& displays = required(root, "", "displays");
    if (!displays.is_array()) fail("displays", "expected an array");
    std::set<DisplayID> ids;
    for (std::size_t i = 0; i < displays.size(); ++i) {
        const std::string p = indexPath("displays", i);
        world.displays.push_back(readDisplay(displays[i], p));
        if (!ids.insert(world.displays.back().id).second) {
            fail(keyPath(p, "id"), "repeats an earlier display's id");
        }
    }
    if (auto* v = optionalKey(root, "main")) {
        const auto id = readInteger<DisplayID>(*v, "main", 1);
        if (!ids.contains(id)) fail("main", "no display with id " + std::to_string(id));
        world.main = id;
    }
    if (auto* v = optionalKey(root, "cursor")) world.cursor = readCursor(*v, "cursor");
    if (auto* v = optionalKey(root, "lid")) world.lid = readLid(*v, "lid");
    if (auto* v = optionalKey(root, "virtualDisplays"))
        world.virtualDisplays = readBool(*v, "virtualDisplays");
    if (auto* v = optionalKey(root, "disconnect")) world.disconnect = readBool(*v, "disconnect");
    if (auto* v = optionalKey(root, "backlightControl")) {
        world.backlightControl = readBool(*v, "backlightControl");
    }
    if (auto* v = optionalKey(root, "accessibility"))
        world.accessibility = readBool(*v, "accessibility");
    if (auto* v = optionalKey(root, "wakes")) {
        world.wakes = readInteger(*v, "wakes", 0, std::numeric_limits<std::int64_t>::max());
    }
    if (auto* v = optionalKey(root, "gammaResetOnWake"))
        world.gammaResetOnWake = readBool(*v, "gammaResetOnWake");
    if (auto* v = optionalKey(root, "lightSensor")) {
        expectObject(*v, "lightSensor");
        onlyKeys(*v, "lightSensor", {"lux"});
        world.lightLux =
            readNumber(required(*v, "lightSensor", "lux"), "lightSensor.lux", 0, kMostLux);
    }
    if (auto* v = optionalKey(root, "clock")) {
        world.clock = v->is_string() ? parseUtcTime(v->get<std::string>()) : std::nullopt;
        if (!world.clock) fail("clock", "expected a time like \"2026-06-21T12:00:00Z\"");
    }
    resolveWorld(world);
    return world;
}

// nlohmann's messages start with an "[json.exception...]" tag that means nothing to a reader.
std::string syntaxMessage(const json::parse_error& error) {
    std::string_view what = error.what();
    if (auto close = what.find("] "); what.starts_with("[") && close != std::string_view::npos) {
        what.remove_prefix(close + 2);
    }
    return "not valid JSON: " + printable(what);
}

}  // namespace

std::optional<double> parseUtcTime(std::string_view text) {
    // Exactly "YYYY-MM-DDTHH:MM:SSZ".
    constexpr std::string_view kShape = "dddd-dd-ddTdd:dd:ddZ";
    if (text.size() != kShape.size()) return std::nullopt;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (kShape[i] == 'd' ? !digit : text[i] != kShape[i]) return std::nullopt;
    }
    auto number = [&](std::size_t at, std::size_t length) {
        std::int64_t n = 0;
        for (std::size_t i = at; i < at + length; ++i)
            n = n * 10 + (text[i] - '0');
        return n;
    };
    const std::int64_t year = number(0, 4);
    const std::int64_t month = number(5, 2);
    const std::int64_t day = number(8, 2);
    const std::int64_t hour = number(11, 2);
    const std::int64_t minute = number(14, 2);
    const std::int64_t second = number(17, 2);
    constexpr std::array<std::int64_t, 12> kDays = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    if (month < 1 || month > 12 || day < 1 || day > kDays[month - 1] ||
        (month == 2 && day == 29 && !leap) || hour > 23 || minute > 59 || second > 59) {
        return std::nullopt;
    }
    // Days from 1970-01-01 in the proleptic Gregorian calendar (March-based years).
    const std::int64_t y = month <= 2 ? year - 1 : year;
    const std::int64_t era = y / 400;
    const std::int64_t yearOfEra = y - era * 400;
    const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    const std::int64_t days = era * 146097 + dayOfEra - 719468;
    return static_cast<double>(days * 86400 + hour * 3600 + minute * 60 + second);
}

WorldResult parseWorld(std::string_view jsonText) {
    json root;
    try {
        root = json::parse(jsonText.begin(), jsonText.end());
    } catch (const json::parse_error& error) {
        return {std::nullopt, syntaxMessage(error)};
    }
    try {
        return {readWorld(root), {}};
    } catch (const fields::WorldFieldError& error) {
        return {std::nullopt, error.message};
    }
}

WorldResult loadWorldFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return {std::nullopt, file.string() + ": cannot be opened"};
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad()) return {std::nullopt, file.string() + ": cannot be read"};
    WorldResult result = parseWorld(text.str());
    if (!result.world) result.error = file.string() + ": " + result.error;
    return result;
}

}  // namespace lumora::sim
