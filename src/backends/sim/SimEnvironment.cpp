#include <chrono>

#include "sim/SimPorts.h"

namespace lumora::sim {

namespace {

class SimAmbientLight : public AmbientLight {
  public:
    explicit SimAmbientLight(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}
    std::optional<double> lux() override {
        return core_->read([](const SimData& data) { return data.lux; });
    }

  private:
    std::shared_ptr<SimCore> core_;
};

// A set clock runs with the scheduler, so virtual time moves the time of day too.
class SimWallClock : public WallClock {
  public:
    explicit SimWallClock(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}
    [[nodiscard]] double utcSeconds() const override {
        const double now = core_->scheduler().uptime();
        const auto set = core_->read([&](const SimData& data) {
            return data.clock ? std::optional<double>(*data.clock + now - data.clockSetAt)
                              : std::nullopt;
        });
        if (set) return *set;
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    }

  private:
    std::shared_ptr<SimCore> core_;
};

}  // namespace

std::unique_ptr<AmbientLight> makeSimAmbientLight(std::shared_ptr<SimCore> core) {
    return std::make_unique<SimAmbientLight>(std::move(core));
}

std::unique_ptr<WallClock> makeSimWallClock(std::shared_ptr<SimCore> core) {
    return std::make_unique<SimWallClock>(std::move(core));
}

}  // namespace lumora::sim
