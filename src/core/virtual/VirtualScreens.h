#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "display/Displays.h"
#include "log/Log.h"
#include "platform/Defaults.h"
#include "platform/VirtualDisplays.h"
#include "virtual/LMVirtualScreen.h"
#include "virtual/VirtualScreenConfig.h"

namespace lumora {

// A size the settings offer for a new virtual screen.
struct VirtualScreenPreset {
    const char* label;
    std::int64_t width;
    std::int64_t height;
};

// The user's free-standing virtual screens: the list of definitions, persisted, and a live
// virtual display for every enabled definition. Main thread only.
class VirtualScreens {
  public:
    static constexpr const char* kStorageKey = "virtualScreens";
    // The first id; the base 0x4C4D0000 marks the program's own serial numbers, so its
    // screens never share a serial with a real monitor.
    static constexpr std::uint32_t kFirstID = 0x4C4D0001;

    static constexpr std::array<VirtualScreenPreset, 7> presets{{
        {"1920\u00D71080 (16:9)", 1920, 1080},
        {"2560\u00D71440 (16:9)", 2560, 1440},
        {"3840\u00D72160 (16:9)", 3840, 2160},
        {"2560\u00D71600 (16:10)", 2560, 1600},
        {"3440\u00D71440 (21:9)", 3440, 1440},
        {"1440\u00D7900 (16:10)", 1440, 900},
        {"1080\u00D71920 (portrait)", 1080, 1920},
    }};

    // Loads the definitions; nothing is created until startEnabled().
    VirtualScreens(Displays& displays, VirtualDisplays& virtualDisplays, Defaults& defaults,
                   Log& log);
    VirtualScreens(const VirtualScreens&) = delete;
    VirtualScreens& operator=(const VirtualScreens&) = delete;

    // A new enabled definition, created at once.
    VirtualScreenConfig add(const std::string& name, std::int64_t width, std::int64_t height,
                            double refresh, bool hiDPI);
    void remove(std::uint32_t id);
    void setEnabled(std::uint32_t id, bool on);
    // Creates the screens of all enabled definitions (at launch).
    void startEnabled();
    // Releases every live screen (at termination); the definitions stay.
    void stopAll();

    [[nodiscard]] std::optional<DisplayID> displayID(const VirtualScreenConfig& config) const;
    [[nodiscard]] const std::vector<VirtualScreenConfig>& configs() const { return configs_; }
    [[nodiscard]] bool available() const;

  private:
    void start(const VirtualScreenConfig& config);
    void save();

    Displays& displays_;
    VirtualDisplays& virtualDisplays_;
    Defaults& defaults_;
    Log& log_;
    std::vector<VirtualScreenConfig> configs_;  // creation order
    std::map<std::uint32_t, std::unique_ptr<LMVirtualScreen>> live_;
};

}  // namespace lumora
