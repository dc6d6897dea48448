#include "sim/SimPorts.h"

namespace lumora::sim {

namespace {

constexpr std::int32_t kOpenOK = 0;

// An opened sensor with a device behind it.
bool reporting(const SimData& data) {
    return data.lidSensor.open && data.lid && data.lid->sensor && data.lid->device;
}

// One report of the angle, as the main run loop would hand it over.
void deliver(const std::weak_ptr<SimCore>& weak, std::int64_t angle) {
    auto core = weak.lock();
    if (!core) return;
    LidSensor::ChangeHandler handler;
    core->update([&](SimData& data) {
        if (!reporting(data)) return false;
        data.lidSensor.cached = angle;
        handler = data.lidSensor.onChange;
        return false;
    });
    if (handler) handler(LidReading{angle, std::nullopt});
}

class SimLidSensor final : public LidSensor {
  public:
    explicit SimLidSensor(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}

    std::optional<std::int32_t> open(ChangeHandler onChange) override {
        std::optional<std::int32_t> status;
        core_->update([&](SimData& data) {
            if (!data.lid || !data.lid->sensor) return false;
            data.lidSensor.open = true;
            data.lidSensor.onChange = std::move(onChange);
            // A device reports its value when the sensor is opened.
            if (data.lid->device) data.lidSensor.cached = data.lid->angle;
            status = kOpenOK;
            return false;
        });
        return status;
    }

    LidReading read(bool fresh) override {
        LidReading reading;
        core_->update([&](SimData& data) {
            if (!reporting(data)) return false;
            // Asking the device also refreshes what the sensor last reported.
            if (fresh) data.lidSensor.cached = data.lid->angle;
            reading.angle = data.lidSensor.cached;
            return false;
        });
        return reading;
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
