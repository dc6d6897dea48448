#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "platform/Defaults.h"

namespace lumora {

inline constexpr const char* kDdcValuesKey = "ddcValues";

// The last DDC value the user set per monitor and control, kept across restarts so that a
// monitor that forgets them (after sleep, after being unplugged) gets them back. Monitors are
// named by the display server's persistent key; only brightness, contrast and volume are
// kept: giving back an input or a power state would fight the user.
//
// Stored under "ddcValues" as JSON: {"<display key>": {"0x10": 70, ...}}. A stored value that
// is not such an object counts as empty; single entries that do not fit are dropped.
class DdcMemory {
  public:
    using Controls = std::map<std::uint8_t, std::uint16_t>;  // code -> raw value

    explicit DdcMemory(Defaults& defaults);

    [[nodiscard]] static bool kept(std::uint8_t code);
    // Holds the value at once (a restore under way gives back the newest); a code that is not
    // kept is ignored.
    void remember(const std::string& display, std::uint8_t code, std::uint16_t raw);
    // Stores what is held when it changed since the last store.
    void save();
    // Empty for a monitor the user never set.
    [[nodiscard]] Controls controls(const std::string& display) const;

  private:
    Defaults& defaults_;
    std::map<std::string, Controls> values_;
    bool unsaved_ = false;
};

}  // namespace lumora
