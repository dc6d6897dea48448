#include "sim/SimPorts.h"

namespace lumora::sim {

namespace {

const char* const kPowerTool = "/usr/bin/pmset";
const char* const kDisplaySleepArgument = "displaysleepnow";
const char* const kSystemSleepArgument = "sleepnow";
// How long the power tool seems to run: long enough that a second request can overlap it.
constexpr double kPowerToolRunSeconds = 2.0;
const char* const kLaunchError = "launch path not accessible";

class SimChildProcess final : public ChildProcess {
  public:
    SimChildProcess(std::weak_ptr<SimCore> core, double endsAt)
        : core_(std::move(core)), endsAt_(endsAt) {}

    [[nodiscard]] bool running() const override {
        auto core = core_.lock();
        return core && core->scheduler().uptime() < endsAt_;
    }

  private:
    std::weak_ptr<SimCore> core_;
    double endsAt_;
};

class SimPower final : public Power {
  public:
    explicit SimPower(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}

    AssertionID createAssertion(const std::string& /*type*/, const std::string& name) override {
        AssertionID id = 0;
        core_->update([&](SimData& data) {
            id = data.power.nextAssertion++;
            data.power.assertions.emplace(id, name);
            return true;
        });
        return id;
    }

    void releaseAssertion(AssertionID id) override {
        core_->update([&](SimData& data) { return data.power.assertions.erase(id) > 0; });
    }

    void declareUserActivity(const std::string& /*name*/) override {
        core_->update([](SimData& data) {
            ++data.power.userActivity;
            for (auto& d : data.displays)
                d.asleep = false;
            return true;
        });
    }

    Spawned spawn(const std::string& path, const std::vector<std::string>& arguments) override {
        if (path != kPowerTool) return Spawned{nullptr, kLaunchError};
        const bool displaySleep = arguments == std::vector<std::string>{kDisplaySleepArgument};
        const bool systemSleep = arguments == std::vector<std::string>{kSystemSleepArgument};
        core_->update([&](SimData& data) {
            if (displaySleep) {
                ++data.power.displaySleeps;
                for (auto& d : data.displays) {
                    if (d.online()) d.asleep = true;
                }
            }
            if (systemSleep) ++data.power.systemSleeps;
            return displaySleep || systemSleep;
        });
        const double endsAt = core_->scheduler().uptime() + kPowerToolRunSeconds;
        return Spawned{std::make_shared<SimChildProcess>(core_, endsAt), {}};
    }

  private:
    std::shared_ptr<SimCore> core_;
};

}  // namespace

std::unique_ptr<Power> makeSimPower(std::shared_ptr<SimCore> core) {
    return std::make_unique<SimPower>(std::move(core));
}

}  // namespace lumora::sim
