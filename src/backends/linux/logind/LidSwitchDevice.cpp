#include "logind/LidSwitchDevice.h"

#include <string>
#include <string_view>
#include <system_error>

#include "logind/SysfsText.h"

namespace lumora::lx {

namespace {

// SW_LID is switch 0, the lowest bit of the capability bitmap.
constexpr unsigned long long kLidSwitchBit = 1;
constexpr int kHex = 16;

// capabilities/sw is a bitmap in hexadecimal words, most significant first.
bool reportsLid(const std::filesystem::path& device) {
    const auto text = readSysfsText(device / "capabilities" / "sw");
    if (!text) return false;
    const std::string_view words(*text);
    const auto lastSpace = words.find_last_of(' ');
    const auto low = parseInteger(
        lastSpace == std::string_view::npos ? words : words.substr(lastSpace + 1), kHex);
    return low && *low >= 0 && (static_cast<unsigned long long>(*low) & kLidSwitchBit) != 0;
}

}  // namespace

bool findLidSwitch(const std::filesystem::path& inputDevices) {
    std::error_code ec;
    for (std::filesystem::directory_iterator it(inputDevices, ec), end; !ec && it != end;
         it.increment(ec)) {
        if (it->path().filename().string().starts_with("input") && reportsLid(it->path())) {
            return true;
        }
    }
    return false;
}

}  // namespace lumora::lx
