#include "hw/IioLightSensor.h"

#include <charconv>
#include <cmath>
#include <map>
#include <string>
#include <system_error>

namespace lumora::lx {

namespace {

constexpr std::string_view kDevicePrefix = "iio:device";

std::optional<double> readNumber(const std::filesystem::path& file) {
    const auto text = readAttribute(file);
    if (!text || text->empty()) return std::nullopt;
    double value = 0;
    const char* end = text->data() + text->size();
    const auto [rest, error] = std::from_chars(text->data(), end, value);
    if (error != std::errc{} || rest != end || !std::isfinite(value)) return std::nullopt;
    return value;
}

// The channel's own attribute, else the device-wide one, else `fallback`.
double factor(const std::filesystem::path& device, const char* channel, const char* shared,
              double fallback) {
    if (auto v = readNumber(device / channel)) return *v;
    if (auto v = readNumber(device / shared)) return *v;
    return fallback;
}

}  // namespace

IioLightSensor::IioLightSensor(const std::filesystem::path& sysfsRoot) {
    std::error_code error;
    std::map<std::uint32_t, std::filesystem::path> devices;
    for (const auto& entry :
         std::filesystem::directory_iterator(sysfsRoot / "bus/iio/devices", error)) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with(kDevicePrefix)) continue;
        if (auto n = parseCount(std::string_view(name).substr(kDevicePrefix.size())))
            devices.emplace(*n, entry.path());
    }
    for (const auto& [n, path] : devices) {
        if (std::filesystem::exists(path / "in_illuminance_input", error) ||
            std::filesystem::exists(path / "in_illuminance_raw", error)) {
            device_ = path;
            return;
        }
    }
}

std::optional<double> IioLightSensor::lux() {
    if (!device_) return std::nullopt;
    std::optional<double> lux = readNumber(*device_ / "in_illuminance_input");
    if (!lux) {
        const auto raw = readNumber(*device_ / "in_illuminance_raw");
        if (!raw) return std::nullopt;
        lux = (*raw + factor(*device_, "in_illuminance_offset", "in_offset", 0.0)) *
              factor(*device_, "in_illuminance_scale", "in_scale", 1.0);
    }
    if (*lux < 0) return std::nullopt;
    return lux;
}

}  // namespace lumora::lx
