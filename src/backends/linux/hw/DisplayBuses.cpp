#include "hw/DisplayBuses.h"

#include <algorithm>
#include <array>
#include <set>
#include <span>
#include <string_view>
#include <system_error>

#include "hw/SysfsFiles.h"

namespace lumora::lx {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kCardPrefix = "card";
constexpr std::string_view kBusPrefix = "i2c-";
constexpr std::string_view kDisconnected = "disconnected";

// Connector types of panels built into the machine.
constexpr std::array<std::string_view, 3> kBuiltInConnectors = {"eDP", "LVDS", "DSI"};
// Adapter names that display drivers choose (lower case): Intel's GMBUS and DP-AUX,
// AMD's, Radeon's, nouveau's, NVIDIA's own driver, and the generic DP-AUX and MST names.
constexpr std::array<std::string_view, 9> kDisplayAdapterNames = {
    "gmbus",  "dpddc", "dpmst", "amdgpu", "radeon", "nvkm-", "nvidia i2c adapter",
    "dp-aux", "dp aux"};
// Adapter names of a built-in panel's bus (lower case).
constexpr std::array<std::string_view, 4> kBuiltInAdapterNames = {"panel", "edp", "lvds", "dsi"};

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
}

bool containsAny(const std::string& text, std::span<const std::string_view> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](std::string_view word) { return text.find(word) != std::string::npos; });
}

// Sorted names in a directory; empty when it cannot be listed. Never throws.
std::vector<std::string> listNames(const fs::path& dir) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator it(dir, error), end; !error && it != end; it.increment(error))
        names.push_back(it->path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// "card0-HDMI-A-1" -> ("card0", "HDMI-A-1").
std::optional<std::pair<std::string, std::string>> splitConnectorDir(const std::string& name) {
    if (!name.starts_with(kCardPrefix)) return std::nullopt;
    std::size_t dash = kCardPrefix.size();
    while (dash < name.size() && name[dash] >= '0' && name[dash] <= '9')
        ++dash;
    if (dash == kCardPrefix.size() || dash + 1 >= name.size() || name[dash] != '-')
        return std::nullopt;
    return std::pair{name.substr(0, dash), name.substr(dash + 1)};
}

// "i2c-7" -> 7.
std::optional<unsigned> busNumber(const std::string& name) {
    if (!name.starts_with(kBusPrefix)) return std::nullopt;
    return parseCount(std::string_view(name).substr(kBusPrefix.size()));
}

// The connector's "ddc" link, else a DP-AUX adapter that the driver registered under it.
std::optional<unsigned> connectorBus(const fs::path& dir) {
    std::error_code error;
    const auto link = fs::read_symlink(dir / "ddc", error);
    if (!error) return busNumber(link.filename().string());
    for (const auto& child : listNames(dir)) {
        if (auto number = busNumber(child)) return number;
    }
    return std::nullopt;
}

// The device a sysfs entry resolves to, as a path prefix of its children.
std::optional<std::string> resolvedPrefix(const fs::path& entry) {
    std::error_code error;
    const auto resolved = fs::canonical(entry, error);
    if (error) return std::nullopt;
    return resolved.string() + "/";
}

// eDP-1, LVDS-1, DSI-1: panels built into the machine.
bool isBuiltInConnector(const std::string& connector) {
    const auto type = std::string_view(connector).substr(0, connector.find('-'));
    return std::find(kBuiltInConnectors.begin(), kBuiltInConnectors.end(), type) !=
           kBuiltInConnectors.end();
}

// Names that display drivers give their DDC and DP-AUX buses.
bool isDisplayAdapterName(const std::string& name) {
    return containsAny(lowerCase(name), kDisplayAdapterNames);
}

}  // namespace

std::vector<DisplayBus> findDisplayBuses(const fs::path& sysfsRoot) {
    const auto drm = sysfsRoot / "class" / "drm";
    std::vector<DisplayBus> buses;
    // Every bus a connector names, connected or not, so the adapter scan cannot bring back
    // the bus of a disconnected connector.
    std::set<unsigned> claimed;
    // The graphics devices whose connectors link their buses: their other adapters are
    // not DDC lines of a display (Intel's GMBUS of a port driven over DP-AUX, for one).
    std::vector<std::string> linkedDevices;

    for (const auto& name : listNames(drm)) {
        const auto parts = splitConnectorDir(name);
        if (!parts) continue;
        const auto number = connectorBus(drm / name);
        if (!number) continue;
        claimed.insert(*number);
        if (auto device = resolvedPrefix(drm / parts->first / "device")) {
            linkedDevices.push_back(*device);
        }
        if (readAttribute(drm / name / "status") == kDisconnected) continue;
        buses.push_back({*number, parts->second, !isBuiltInConnector(parts->second)});
    }

    const auto adapters = sysfsRoot / "bus" / "i2c" / "devices";
    for (const auto& name : listNames(adapters)) {
        const auto number = busNumber(name);
        if (!number || claimed.contains(*number)) continue;
        const auto adapterName = readAttribute(adapters / name / "name");
        if (!adapterName || !isDisplayAdapterName(*adapterName)) continue;
        const auto where = resolvedPrefix(adapters / name);
        const bool onLinkedDevice =
            where && std::any_of(linkedDevices.begin(), linkedDevices.end(),
                                 [&](const std::string& d) { return where->starts_with(d); });
        if (onLinkedDevice) continue;
        claimed.insert(*number);
        buses.push_back(
            {*number, std::nullopt, !containsAny(lowerCase(*adapterName), kBuiltInAdapterNames)});
    }

    std::stable_sort(buses.begin(), buses.end(),
                     [](const DisplayBus& a, const DisplayBus& b) { return a.number < b.number; });
    // Two connectors may share one bus (DVI-I's digital and analogue halves): one channel.
    buses.erase(
        std::unique(buses.begin(), buses.end(),
                    [](const DisplayBus& a, const DisplayBus& b) { return a.number == b.number; }),
        buses.end());
    return buses;
}

}  // namespace lumora::lx
