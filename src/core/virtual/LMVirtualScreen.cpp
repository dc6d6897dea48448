#include "virtual/LMVirtualScreen.h"

#include "virtual/VirtualScreenPlan.h"

namespace lumora {

bool LMVirtualScreensAvailable(const VirtualDisplays& platform) {
    return platform.available();
}

std::unique_ptr<LMVirtualScreen> LMVirtualScreen::create(
    VirtualDisplays& platform, const VirtualDisplayDescriptor& descriptor) {
    if (!LMVirtualScreensAvailable(platform) || !isCreatable(descriptor)) return nullptr;
    VirtualDisplayDescriptor own = descriptor;
    own.vendor = kVirtualVendor;
    auto display = platform.create(own);
    if (!display) return nullptr;
    return std::unique_ptr<LMVirtualScreen>(new LMVirtualScreen(std::move(display)));
}

std::unique_ptr<LMVirtualScreen> LMVirtualScreen::createConvenience(
    VirtualDisplays& platform, const std::string& name, std::uint32_t width, std::uint32_t height,
    double refresh, bool hiDPI, std::uint32_t serial) {
    auto descriptor = planVirtualScreen(name, width, height, refresh, hiDPI, serial);
    if (!descriptor) return nullptr;
    return create(platform, *descriptor);
}

}  // namespace lumora
