#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/VirtualDisplays.h"

namespace lumora {

// Whether the platform can create virtual displays at all.
bool LMVirtualScreensAvailable(const VirtualDisplays& platform);

// One live virtual display of the program's own. It exists exactly as long as this object:
// destroying it removes the display from the system. Either fully created or not at all;
// failures give nothing and say nothing, the callers log.
class LMVirtualScreen {
  public:
    // The display as described, under the program's vendor number. Nothing when the facility
    // is missing, a maximum pixel count is 0, the mode list is empty or the system refuses.
    static std::unique_ptr<LMVirtualScreen> create(VirtualDisplays& platform,
                                                   const VirtualDisplayDescriptor& descriptor);
    // A user's screen of width x height points (see planVirtualScreen). Also nothing for a
    // zero side.
    static std::unique_ptr<LMVirtualScreen> createConvenience(VirtualDisplays& platform,
                                                              const std::string& name,
                                                              std::uint32_t width,
                                                              std::uint32_t height, double refresh,
                                                              bool hiDPI, std::uint32_t serial);

    LMVirtualScreen(const LMVirtualScreen&) = delete;
    LMVirtualScreen& operator=(const LMVirtualScreen&) = delete;

    [[nodiscard]] DisplayID displayID() const { return display_->displayID(); }

  private:
    explicit LMVirtualScreen(std::unique_ptr<VirtualDisplayHandle> display)
        : display_(std::move(display)) {}

    std::unique_ptr<VirtualDisplayHandle> display_;  // never null
};

}  // namespace lumora
