#include "logind/HingeSensor.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <system_error>
#include <vector>

#include "logind/SysfsText.h"

namespace lumora::lx {

namespace {

namespace fs = std::filesystem;

// Intel's HID hinge sensor names its device and labels its hinge channel this way (its other
// two channels measure the keyboard and the screen against the ground).
constexpr const char* kHingeName = "hinge";
constexpr std::string_view kAnglePrefix = "in_angl";
constexpr std::string_view kLabelSuffix = "_label";
// A hinge turns at most all the way round; anything else is a broken reading.
constexpr double kMaxHingeDegrees = 360.0;

bool present(const fs::path& file) {
    std::error_code ec;
    return fs::exists(file, ec);
}

std::vector<fs::path> sortedEntries(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        entries.push_back(it->path());
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

// The index of the channel labelled "hinge" ("" for an unindexed one), or nothing.
std::optional<std::string> labelledHingeChannel(const fs::path& device) {
    for (const fs::path& entry : sortedEntries(device)) {
        const std::string name = entry.filename().string();
        if (!name.starts_with(kAnglePrefix) || !name.ends_with(kLabelSuffix)) continue;
        if (readSysfsText(entry) != kHingeName) continue;
        return name.substr(kAnglePrefix.size(),
                           name.size() - kAnglePrefix.size() - kLabelSuffix.size());
    }
    return std::nullopt;
}

// A per-channel attribute, else the one the channels of this type share, else none.
fs::path attribute(const fs::path& device, const std::string& index, const std::string& what) {
    const fs::path own = device / ("in_angl" + index + "_" + what);
    if (present(own)) return own;
    const fs::path shared = device / ("in_angl_" + what);
    return present(shared) ? shared : fs::path();
}

std::optional<HingeChannel> hingeChannelOf(const fs::path& device) {
    std::optional<std::string> index = labelledHingeChannel(device);
    const bool namedHinge = readSysfsText(device / "name") == kHingeName;
    if (!index && present(device / "in_angl_raw") &&
        (namedHinge || present(device / "in_angl_scale"))) {
        index = "";
    }
    // Without labels the hinge sensor's first channel is the hinge.
    if (!index && namedHinge && present(device / "in_angl0_raw")) index = "0";
    if (!index) return std::nullopt;
    const fs::path raw = device / ("in_angl" + *index + "_raw");
    if (!present(raw)) return std::nullopt;
    return HingeChannel{device, raw, attribute(device, *index, "scale"),
                        attribute(device, *index, "offset")};
}

std::optional<double> decimalIn(const fs::path& file, double absent) {
    if (file.empty()) return absent;
    const auto text = readSysfsText(file);
    return text ? parseDecimal(*text) : std::nullopt;
}

}  // namespace

std::optional<HingeChannel> findHingeSensor(const fs::path& iioDevices) {
    for (const fs::path& device : sortedEntries(iioDevices)) {
        if (!device.filename().string().starts_with("iio:device")) continue;
        if (auto channel = hingeChannelOf(device)) return channel;
    }
    return std::nullopt;
}

// IIO angles are radians once offset and scale are applied: (raw + offset) × scale.
std::optional<std::int64_t> readHingeDegrees(const HingeChannel& channel) {
    const auto rawText = readSysfsText(channel.raw);
    const auto raw = rawText ? parseInteger(*rawText) : std::nullopt;
    const auto scale = decimalIn(channel.scale, 1.0);
    const auto offset = decimalIn(channel.offset, 0.0);
    if (!raw || !scale || !offset) return std::nullopt;
    const double degrees =
        (static_cast<double>(*raw) + *offset) * *scale * 180.0 / std::numbers::pi;
    if (!std::isfinite(degrees) || degrees < 0.0 || degrees > kMaxHingeDegrees) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(std::lround(degrees));
}

}  // namespace lumora::lx
