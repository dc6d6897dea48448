#include <algorithm>

#include "sim/SimPorts.h"

namespace lumora::sim {

namespace {

// Virtual displays get identifiers above those of any plausible physical display.
constexpr DisplayID kFirstVirtualID = 100;
// A HiDPI virtual display renders every point as 2x2 pixels.
constexpr std::int64_t kHiDPIScale = 2;

SimDisplay displayFor(const VirtualDisplayDescriptor& descriptor, DisplayID id) {
    SimDisplay d;
    d.id = id;
    d.name = descriptor.name;
    d.vendor = descriptor.vendor;
    d.model = descriptor.product;
    d.serial = descriptor.serial;
    d.sizeMM = descriptor.sizeMillimeters;
    const std::int64_t scale = descriptor.hiDPI ? kHiDPIScale : 1;
    std::int32_t modeID = 1;
    for (const auto& [width, height] : descriptor.modes) {
        d.modes.push_back(PlatformMode{modeID++, width, height, width * scale, height * scale,
                                       descriptor.refresh, true});
    }
    d.mode = d.modes.front().id;
    return d;
}

class SimVirtualHandle final : public VirtualDisplayHandle {
  public:
    SimVirtualHandle(std::weak_ptr<SimCore> core, DisplayID id) : core_(std::move(core)), id_(id) {}

    ~SimVirtualHandle() override {
        auto core = core_.lock();
        if (!core) return;
        core->change([&](SimData& data) {
            std::erase_if(data.displays, [&](const SimDisplay& d) { return d.id == id_; });
            std::erase_if(data.virtuals, [&](const SimVirtual& v) { return v.id == id_; });
            // Mirroring a display that no longer exists ends by itself.
            for (auto& d : data.displays) {
                if (d.mirrorOf == id_) d.mirrorOf = 0;
            }
        });
    }
    SimVirtualHandle(const SimVirtualHandle&) = delete;
    SimVirtualHandle& operator=(const SimVirtualHandle&) = delete;

    [[nodiscard]] DisplayID displayID() const override { return id_; }

  private:
    std::weak_ptr<SimCore> core_;
    DisplayID id_;
};

class SimVirtualDisplays final : public VirtualDisplays {
  public:
    explicit SimVirtualDisplays(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}

    [[nodiscard]] bool available() const override {
        return core_->read([](const SimData& d) { return d.virtualDisplaysAvailable; });
    }

    std::unique_ptr<VirtualDisplayHandle> create(
        const VirtualDisplayDescriptor& descriptor) override {
        if (descriptor.modes.empty() || descriptor.maxPixelsWide == 0 ||
            descriptor.maxPixelsHigh == 0 || !available()) {
            return nullptr;
        }
        const DisplayID id = core_->change([&](SimData& data) {
            DisplayID next = kFirstVirtualID;
            for (const auto& d : data.displays)
                next = std::max(next, d.id + 1);
            SimDisplay display = displayFor(descriptor, next);
            display.origin = Point{data.rightEdge(), 0};
            data.displays.push_back(std::move(display));
            data.virtuals.push_back(SimVirtual{next, descriptor.name, descriptor.product,
                                               descriptor.serial, descriptor.hiDPI});
            return next;
        });
        return std::make_unique<SimVirtualHandle>(core_, id);
    }

  private:
    std::shared_ptr<SimCore> core_;
};

}  // namespace

std::unique_ptr<VirtualDisplays> makeSimVirtualDisplays(std::shared_ptr<SimCore> core) {
    return std::make_unique<SimVirtualDisplays>(std::move(core));
}

}  // namespace lumora::sim
