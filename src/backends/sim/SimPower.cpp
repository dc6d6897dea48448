#include "sim/SimPorts.h"

namespace lumora::sim {

namespace {

// How long a display sleep seems to take: long enough that a second request can overlap it.
constexpr double kDisplaySleepSeconds = 2.0;

class SimInhibition final : public SleepInhibition {
  public:
    SimInhibition(std::weak_ptr<SimCore> core, std::uint64_t number)
        : core_(std::move(core)), number_(number) {}
    ~SimInhibition() override {
        if (auto core = core_.lock()) {
            core->update([&](SimData& data) { return data.power.assertions.erase(number_) > 0; });
        }
    }
    SimInhibition(const SimInhibition&) = delete;
    SimInhibition& operator=(const SimInhibition&) = delete;

  private:
    std::weak_ptr<SimCore> core_;
    std::uint64_t number_;
};

class SimPower final : public Power {
  public:
    explicit SimPower(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}

    std::unique_ptr<SleepInhibition> inhibitIdleSleep(const std::string& reason) override {
        std::uint64_t number = 0;
        core_->update([&](SimData& data) {
            number = data.power.nextAssertion++;
            data.power.assertions.emplace(number, reason);
            return true;
        });
        return std::make_unique<SimInhibition>(core_, number);
    }

    PowerRequest sleepDisplays() override {
        const double now = core_->scheduler().uptime();
        core_->update([&](SimData& data) {
            // Still on the way down from the last request: nothing more to do.
            if (now < data.power.displaySleepEndsAt) return false;
            data.power.displaySleepEndsAt = now + kDisplaySleepSeconds;
            ++data.power.displaySleeps;
            for (auto& d : data.displays) {
                if (d.online()) d.asleep = true;
            }
            return true;
        });
        return {true, {}};
    }

    PowerRequest sleepSystem() override {
        core_->update([](SimData& data) {
            ++data.power.systemSleeps;
            return true;
        });
        return {true, {}};
    }

    void declareUserActivity(const std::string& /*reason*/) override {
        core_->update([](SimData& data) {
            ++data.power.userActivity;
            for (auto& d : data.displays)
                d.asleep = false;
            return true;
        });
    }

  private:
    std::shared_ptr<SimCore> core_;
};

}  // namespace

std::unique_ptr<Power> makeSimPower(std::shared_ptr<SimCore> core) {
    return std::make_unique<SimPower>(std::move(core));
}

}  // namespace lumora::sim
