#include "sim/SimPorts.h"

namespace lumora::sim {

namespace {

constexpr std::int32_t kOpenOK = 0;
// The sensor device's elements: the hinge angle, and its sensor state (as real sensors carry
// one), so that readers must pick the angle by its usage.
constexpr std::uint64_t kAngleElement = 1;
constexpr std::uint64_t kStateElement = 2;
constexpr std::uint32_t kSensorStateUsage = 0x201;
constexpr std::int64_t kSensorStateReady = 1;  // index of the "ready" selector

// An opened manager with a sensor device behind it.
bool reporting(const SimData& data) {
    return data.lidSensor.open && data.lid && data.lid->sensor && data.lid->device;
}

// One input report of the angle element, as the main run loop would hand it over.
void deliver(const std::weak_ptr<SimCore>& weak, std::int64_t angle) {
    auto core = weak.lock();
    if (!core) return;
    LidSensor::ValueHandler handler;
    core->update([&](SimData& data) {
        if (!reporting(data)) return false;
        data.lidSensor.cached = angle;
        handler = data.lidSensor.onValue;
        return false;
    });
    if (handler) handler(kHidSensorPage, kHidLidAngleUsage, angle);
}

class SimLidSensor final : public LidSensor {
  public:
    explicit SimLidSensor(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}

    std::optional<std::int32_t> open(ValueHandler onValue) override {
        std::optional<std::int32_t> status;
        core_->update([&](SimData& data) {
            if (!data.lid || !data.lid->sensor) return false;
            data.lidSensor.open = true;
            data.lidSensor.onValue = std::move(onValue);
            // A device reports its value when the manager opens it.
            if (data.lid->device) data.lidSensor.cached = data.lid->angle;
            status = kOpenOK;
            return false;
        });
        return status;
    }

    [[nodiscard]] std::vector<HidElement> elements() const override {
        return core_->read([](const SimData& data) {
            if (!reporting(data)) return std::vector<HidElement>{};
            return std::vector<HidElement>{{kHidSensorPage, kHidLidAngleUsage, kAngleElement},
                                           {kHidSensorPage, kSensorStateUsage, kStateElement}};
        });
    }

    std::optional<std::int64_t> getValue(const HidElement& element, bool askDevice) override {
        std::optional<std::int64_t> value;
        core_->update([&](SimData& data) {
            if (!reporting(data)) return false;
            if (element.handle == kStateElement) {
                value = kSensorStateReady;
            } else if (element.handle == kAngleElement) {
                // Asking the device also refreshes what the manager holds.
                if (askDevice) data.lidSensor.cached = data.lid->angle;
                value = data.lidSensor.cached;
            }
            return false;
        });
        return value;
    }

  private:
    std::shared_ptr<SimCore> core_;
};

}  // namespace

std::unique_ptr<LidSensor> makeSimLidSensor(std::shared_ptr<SimCore> core) {
    return std::make_unique<SimLidSensor>(std::move(core));
}

void moveSimLid(const std::shared_ptr<SimCore>& core, const WorldLid& lid, bool report) {
    bool announce = false;
    core->update([&](SimData& data) {
        const bool moved = !data.lid || data.lid->angle != lid.angle;
        data.lid = lid;
        announce = report && moved && reporting(data);
        return false;  // the state file does not show the lid
    });
    if (!announce) return;
    core->scheduler().mainQueue().post(
        [weak = std::weak_ptr<SimCore>(core), angle = lid.angle] { deliver(weak, angle); });
}

}  // namespace lumora::sim
