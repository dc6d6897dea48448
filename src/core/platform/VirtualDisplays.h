#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/Types.h"

namespace lumora {

// Everything the platform needs to create a virtual display.
struct VirtualDisplayDescriptor {
    std::string name;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> modes;  // (width, height), first = initial
    std::uint32_t maxPixelsWide = 0;
    std::uint32_t maxPixelsHigh = 0;
    Size sizeMillimeters;
    double refresh = 60;
    bool hiDPI = false;
    std::uint32_t vendor = kVirtualVendor;
    std::uint32_t product = 0;
    std::uint32_t serial = 0;
};

// A live virtual display; destroying the handle removes the display from the system.
class VirtualDisplayHandle {
  public:
    virtual ~VirtualDisplayHandle() = default;
    [[nodiscard]] virtual DisplayID displayID() const = 0;
};

class VirtualDisplays {
  public:
    virtual ~VirtualDisplays() = default;
    [[nodiscard]] virtual bool available() const = 0;
    // Nothing when the facility is missing or the system refuses the descriptor.
    virtual std::unique_ptr<VirtualDisplayHandle> create(const VirtualDisplayDescriptor& d) = 0;
};

}  // namespace lumora
