#include "hw/SysfsBacklight.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <string_view>
#include <system_error>
#include <vector>

namespace lumora::lx {

namespace {

namespace fs = std::filesystem;

// The kernel's ranking of backlight interfaces: firmware (ACPI) knows the panel best, a
// platform driver next, raw hardware registers last. Unknown types come after all of them.
constexpr std::array<std::string_view, 3> kTypeOrder = {"firmware", "platform", "raw"};

std::size_t typeRank(const std::optional<std::string>& type) {
    for (std::size_t i = 0; i < kTypeOrder.size(); ++i) {
        if (type == kTypeOrder[i]) return i;
    }
    return kTypeOrder.size();
}

std::optional<std::string> chooseDevice(const fs::path& sysfsRoot) {
    const auto dir = sysfsRoot / "class" / "backlight";
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator it(dir, error), end; !error && it != end; it.increment(error))
        names.push_back(it->path().filename().string());
    std::sort(names.begin(), names.end());
    std::optional<std::string> best;
    std::size_t bestRank = 0;
    for (const auto& name : names) {
        const auto rank = typeRank(readAttribute(dir / name / "type"));
        if (!best || rank < bestRank) {
            best = name;
            bestRank = rank;
        }
    }
    return best;
}

// The file is written, never created: a missing attribute is a failure, not a new file.
bool writeCount(const fs::path& file, std::uint32_t value) {
    const int fd = ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) return false;
    const std::string text = std::to_string(value) + "\n";
    ssize_t sent = 0;
    do {
        sent = ::write(fd, text.data(), text.size());
    } while (sent < 0 && errno == EINTR);
    const bool closed = ::close(fd) == 0;
    return sent == static_cast<ssize_t>(text.size()) && closed;
}

}  // namespace

SysfsBacklight::SysfsBacklight(Options options)
    : options_(std::move(options)), device_(chooseDevice(options_.sysfsRoot)) {}

fs::path SysfsBacklight::file(const char* name) const {
    return options_.sysfsRoot / "class" / "backlight" / device_.value_or("") / name;
}

std::optional<std::uint32_t> SysfsBacklight::maximum() const {
    const auto text = readAttribute(file("max_brightness"));
    const auto value = text ? parseCount(*text) : std::nullopt;
    if (!value || *value == 0) return std::nullopt;
    return value;
}

bool SysfsBacklight::hasSet() const {
    if (!device_) return false;
    return options_.setter || ::access(file("brightness").c_str(), W_OK) == 0;
}

std::int32_t SysfsBacklight::get(DisplayID /*id*/, float& level) {
    if (!device_) return kNoDevice;
    const auto max = maximum();
    if (!max) return kUnreadable;
    // actual_brightness is what the hardware has; some drivers fail to read it back, and
    // then the last requested level is the best answer.
    for (const char* name : {"actual_brightness", "brightness"}) {
        const auto text = readAttribute(file(name));
        const auto value = text ? parseCount(*text) : std::nullopt;
        if (value && *value <= *max) {
            level = static_cast<float>(static_cast<double>(*value) / *max);
            return 0;
        }
    }
    return kUnreadable;
}

std::int32_t SysfsBacklight::set(DisplayID /*id*/, float level) {
    if (!device_) return kNoDevice;
    const auto max = maximum();
    if (!max) return kUnreadable;
    const double clamped = !(level > 0) ? 0.0 : (level > 1 ? 1.0 : static_cast<double>(level));
    auto raw = static_cast<std::uint32_t>(std::lround(clamped * *max));
    // Raw 0 switches some panels off entirely: only level 0 may ask for that.
    if (clamped > 0 && raw == 0) raw = 1;
    const bool written =
        options_.setter ? options_.setter(*device_, raw) : writeCount(file("brightness"), raw);
    return written ? 0 : kNotWritten;
}

bool SysfsBacklight::canChange(DisplayID /*id*/) {
    return maximum().has_value() && hasSet();
}

}  // namespace lumora::lx
